#include "StateStore.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/random.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "Failure.h"
#include "Hash.h"

namespace orxserve {
namespace {

constexpr uint32_t kFirstId = 1000;  // smaller ones are those of the views

constexpr char kTables[] =
    "CREATE TABLE IF NOT EXISTS meta (name TEXT PRIMARY KEY, value) WITHOUT ROWID";
constexpr char kIdTable[] =
    "CREATE TABLE IF NOT EXISTS ids (key BLOB PRIMARY KEY, id INTEGER, pieces INTEGER,"
    " width INTEGER, height INTEGER) WITHOUT ROWID";
constexpr char kContainerTable[] =
    "CREATE TABLE IF NOT EXISTS containers (id INTEGER PRIMARY KEY, digest INTEGER,"
    " updateId INTEGER)";

ObjectKey KeyOf(std::string_view kind, std::string_view name, uint64_t size, uint64_t date) {
  Hash high(1);
  Hash low(2);
  for (Hash* hash : {&high, &low}) hash->Add(kind).Add(name).Add(size).Add(date);
  return {high.value(), low.value()};
}

std::string_view Bytes(const ObjectKey& key) {
  return {reinterpret_cast<const char*>(&key), sizeof key};
}

}  // namespace

ObjectKey ObjectKey::OfFile(std::string_view path, uint64_t size, uint64_t date) {
  return KeyOf("file", path, size, date);
}

ObjectKey ObjectKey::OfContainer(std::string_view name) { return KeyOf("container", name, 0, 0); }

struct StateStore::Statements {
  explicit Statements(Database* database)
      : find(database->Prepare("SELECT id, pieces, width, height FROM ids WHERE key = ?")),
        add(database->Prepare("INSERT INTO ids VALUES (?, ?, ?, ?, ?)")) {}
  Statement find;
  Statement add;
};

StateStore::StateStore(const std::string& folder) : folder_(folder) {
  std::error_code problem;
  std::filesystem::create_directories(folder, problem);
  if (problem) throw Failure("state folder {}: {}", folder, problem.message());
  Lock();
  database_ = std::make_unique<Database>(folder + "/state.db", Database::Access::kMake);
  database_->Execute("PRAGMA cache_size = -256");
  for (const char* table : {kTables, kIdTable, kContainerTable}) database_->Execute(table);
  ReadMeta();
  statements_ = std::make_unique<Statements>(database_.get());
}

StateStore::~StateStore() {
  if (lock_ >= 0) close(lock_);
}

void StateStore::Lock() {
  lock_ = open((folder_ + "/lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (lock_ < 0) throw Failure("state folder {}: {}", folder_, strerror(errno));
  if (flock(lock_, LOCK_EX | LOCK_NB) != 0)
    throw Failure("state folder {} is in use by another server", folder_);
}

void StateStore::ReadMeta() {
  Statement rows = database_->Prepare("SELECT name, value FROM meta");
  while (rows.Next()) {
    const std::string_view name = rows.Text(0);
    if (name == "uuid") {
      uuid_ = rows.Text(1);
    } else if (name == "updateId") {
      updateId_ = static_cast<uint32_t>(rows.Number(1));
    } else if (name == "nextId") {
      nextId_ = static_cast<uint32_t>(rows.Number(1));
    }
  }
  if (nextId_ < kFirstId) nextId_ = kFirstId;
  if (!uuid_.empty()) return;
  uuid_ = RandomUuid();
  database_->Prepare("INSERT INTO meta VALUES ('uuid', CAST(? AS TEXT))").Bind(1, uuid_).Run();
}

void StateStore::SetMeta(const char* name, int64_t value) {
  database_->Prepare("INSERT OR REPLACE INTO meta VALUES (CAST(? AS TEXT), ?)")
      .Bind(1, std::string_view(name))
      .Bind(2, value)
      .Run();
}

void StateStore::Begin() {
  transaction_.reset();
  ReadMeta();  // as it was committed last
  transaction_ = std::make_unique<Transaction>(database_.get());
  changed_ = false;
}

// Where nothing changed, nothing is written: cards wear out.
void StateStore::Commit() {
  if (changed_) {
    SetMeta("nextId", nextId_);
    SetMeta("updateId", updateId_);
  }
  transaction_->Commit();
  transaction_.reset();
}

KnownObject StateStore::Find(const ObjectKey& key) {
  KnownObject known;
  Statement& find = statements_->find;
  find.Reset();
  if (find.Bind(1, Bytes(key)).Next()) {
    known.id = static_cast<uint32_t>(find.Number(0));
    known.pieces.sound = static_cast<uint8_t>(find.Number(1));
    known.pieces.cover = {static_cast<uint16_t>(find.Number(2)),
                          static_cast<uint16_t>(find.Number(3))};
  }
  find.Reset();
  return known;
}

uint32_t StateStore::Add(const ObjectKey& key, const PieceFacts& pieces) {
  if (nextId_ == UINT32_MAX) throw Failure("state folder {}: every id was given", folder_);
  const uint32_t id = nextId_++;
  changed_ = true;
  statements_->add.Bind(1, Bytes(key))
      .Bind(2, int64_t{id})
      .Bind(3, int64_t{pieces.sound})
      .Bind(4, int64_t{pieces.cover.width})
      .Bind(5, int64_t{pieces.cover.height})
      .Run();
  return id;
}

ContainerStates StateStore::Containers() {
  ContainerStates containers;
  Statement rows = database_->Prepare("SELECT id, digest, updateId FROM containers");
  while (rows.Next())
    containers[static_cast<uint32_t>(rows.Number(0))] = {static_cast<uint64_t>(rows.Number(1)),
                                                         static_cast<uint32_t>(rows.Number(2))};
  return containers;
}

void StateStore::SetContainers(const ContainerStates& containers, uint32_t updateId) {
  updateId_ = updateId;
  changed_ = true;
  database_->Execute("DELETE FROM containers");
  Statement insert = database_->Prepare("INSERT INTO containers VALUES (?, ?, ?)");
  for (const auto& [id, state] : containers)
    insert.Bind(1, int64_t{id})
        .Bind(2, static_cast<int64_t>(state.digest))
        .Bind(3, int64_t{state.updateId})
        .Run();
}

std::string RandomUuid() {
  std::array<unsigned char, 16> bytes{};
  if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
    throw Failure("no random numbers: {}", strerror(errno));
  bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);
  bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);
  std::string text;
  for (size_t i = 0; i < bytes.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += fmt::format("{:02x}", bytes[i]);
  }
  return text;
}

}  // namespace orxserve
