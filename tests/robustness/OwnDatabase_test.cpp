// A scan that meets its own database, under whatever name, leaves SQLite's locks on it alone.
#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/MultimediaQueryMgr.h"
#include "OSAL/ORXFSHandler.h"
#include "UpnpUtil/upnp_file.h"
#include "robustness/Card.h"
#include "support/JpegBuilder.h"

namespace orx_test {
namespace {

namespace fs = std::filesystem;

constexpr int kPictures = 40;
constexpr useconds_t kPause = 300;  // microseconds between two selects
constexpr int kMaxQuestions = 30;

// Another process, begun before this one opens a database: a child made later would take over what
// SQLite knows of this one's locks.
class OtherProcess {
 public:
  explicit OtherProcess(const std::string& database) {
    EXPECT_EQ(pipe(questions_), 0);
    EXPECT_EQ(pipe(answers_), 0);
    child_ = fork();
    if (child_ == 0) Answer(database);
  }
  ~OtherProcess() {
    kill(child_, SIGKILL);
    waitpid(child_, nullptr, 0);
    for (const int end : {questions_[0], questions_[1], answers_[0], answers_[1]}) close(end);
  }
  OtherProcess(const OtherProcess&) = delete;
  OtherProcess& operator=(const OtherProcess&) = delete;

  // What SQLite answers it when it tries to begin writing.
  int TryToWrite() const {
    char code = -1;
    const bool answered = write(questions_[1], "", 1) == 1 && read(answers_[0], &code, 1) == 1;
    return answered ? code : -1;
  }

 private:
  [[noreturn]] void Answer(const std::string& database) const {
    char question = 0;
    while (read(questions_[0], &question, 1) == 1) {
      sqlite3* writer = nullptr;
      sqlite3_open(database.c_str(), &writer);
      const char code =
          static_cast<char>(sqlite3_exec(writer, "begin immediate", nullptr, nullptr, nullptr));
      sqlite3_close(writer);
      if (write(answers_[1], &code, 1) != 1) break;
    }
    _exit(0);
  }

  int questions_[2] = {};
  int answers_[2] = {};
  pid_t child_ = -1;
};

// A process that only selects, all the time.
class Reader {
 public:
  explicit Reader(const std::string& database) : child_(fork()) {
    if (child_ == 0) Select(database);
  }
  ~Reader() {
    kill(child_, SIGKILL);
    waitpid(child_, nullptr, 0);
  }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

 private:
  [[noreturn]] static void Select(const std::string& database) {
    sqlite3* reader = nullptr;
    sqlite3_open_v2(database.c_str(), &reader, SQLITE_OPEN_READWRITE, nullptr);
    for (;;) {
      sqlite3_exec(reader, "select count(*), max(FullPath) from ObjectTable", nullptr, nullptr,
                   nullptr);
      usleep(kPause);
    }
  }

  pid_t child_;
};

// Lets every connection made meanwhile write to the disk in the middle of a transaction, as a large
// one does: a reader that finds the journal then, and no lock, plays it back.
class SmallCache {
 public:
  SmallCache() { sqlite3_auto_extension(reinterpret_cast<void (*)()>(Set)); }
  ~SmallCache() { sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(Set)); }
  SmallCache(const SmallCache&) = delete;
  SmallCache& operator=(const SmallCache&) = delete;

 private:
  static int Set(sqlite3* connection, char** /*message*/, const void* /*routines*/) {
    return sqlite3_exec(connection, "pragma cache_size=2", nullptr, nullptr, nullptr);
  }
};

// The first line of a scan about an entry that is its database, and some behind it.
const OtherProcess* other = nullptr;
int questions = 0;
int refused = 0;
void AskBehindOwnEntries(const char* line) {
  if (questions == 0 && strstr(line, "OWN") == nullptr) return;
  if (questions == kMaxQuestions) return;
  ++questions;
  if (other->TryToWrite() == SQLITE_BUSY) ++refused;
}

class OwnDatabaseTest : public CardTest {
 protected:
  static int rounds() { return IsSoak() ? 40 : 5; }

  // Pictures of other sizes than before: all their rows are to be removed and written anew.  Some
  // stand before the links in the folder's order, some behind.
  void WritePictures(int round) const {
    for (int i = 0; i < (round == 0 ? kPictures : 2 * kPictures); ++i)
      Write("IMGA" + std::to_string(1000 + i) + ".JPG",
            JpegBuilder().Padding(10u + static_cast<unsigned>(round)).Build());
  }
  void LinkDatabase() const {
    for (const char* name : {"OWN1.JPG", "IMGA1020OWN.MP4", "ZOWN.m4a"})
      fs::create_symlink(db_, InCard(name));
    for (const char* name : {"OWN2.JPG", "IMGA1030OWN.JPG"})
      fs::create_hard_link(db_, InCard(name));
  }
  // The database of a scan, with the names of it that the next scan meets.
  void Prepare(const std::string& database) {
    db_ = database;
    WritePictures(0);
    Scan();
    LinkDatabase();
  }
  void RescanBesideAReader() {
    const SmallCache cache;
    const Reader reader(db_);
    for (int round = 1; round <= rounds(); ++round) {
      WritePictures(round);
      Scan();
      const auto contents = Contents();  // and whether it is intact
      if (HasFailure()) FAIL() << "round " << round;
      EXPECT_FALSE(contents.empty());
    }
  }
  void OpenAndBegin() const {
    ASSERT_EQ(DataBaseMgr::GetInstance()->OpenDB(db_.c_str()), 1);
    ASSERT_EQ(DataBaseMgr::GetInstance()->ExecSqlStatmentNoValueReturn("begin immediate"), 1);
  }
};

// What every way to read a file answers.
bool CanBeRead(const std::string& path) {
  st_UPNP_FILE* file = upnp_file_open_read(path.c_str());
  upnp_file_close(file);
  const int descriptor = open_read(path.c_str());
  if (descriptor >= 0) close_file(descriptor);
  ORXFSHandler handler;
  const bool valid = handler.IsValidFile(path.c_str());
  EXPECT_EQ(file != nullptr, valid);
  EXPECT_EQ(descriptor >= 0, valid);
  return valid;
}

TEST_F(OwnDatabaseTest, StaysIntactInTheScannedFolderBesideAReader) {
  Prepare(InCard("media.db"));
  RescanBesideAReader();
}

TEST_F(OwnDatabaseTest, StaysIntactBehindLinksBesideAReader) {
  Prepare(db_);
  RescanBesideAReader();
}

TEST_F(OwnDatabaseTest, StaysLockedWhenAScanHasMetIt) {
  Prepare(db_);
  WritePictures(1);
  const OtherProcess process(db_);
  other = &process;
  questions = refused = 0;
  QuietPlatform::Get().onLine = AskBehindOwnEntries;
  Scan();
  QuietPlatform::Get().onLine = nullptr;
  EXPECT_GT(questions, 5);
  EXPECT_EQ(refused, questions);
  EXPECT_EQ(process.TryToWrite(), SQLITE_OK);
}

TEST_F(OwnDatabaseTest, IsNoMediaFileAndLeavesNoRow) {
  Prepare(db_);
  Scan();
  for (const std::string& row : Contents()) EXPECT_EQ(row.find("OWN"), std::string::npos) << row;
}

TEST_F(OwnDatabaseTest, CannotBeReadAsAFileWhileItIsOpen) {
  Prepare(db_);
  const OtherProcess process(db_);
  OpenAndBegin();
  for (const std::string& name : {db_, InCard("OWN1.JPG"), InCard("OWN2.JPG"), db_ + "-journal"})
    EXPECT_FALSE(CanBeRead(name)) << name;
  EXPECT_TRUE(CanBeRead(InCard("IMGA1000.JPG")));
  EXPECT_EQ(process.TryToWrite(), SQLITE_BUSY);
  DataBaseMgr::DestroyInstance();
  EXPECT_TRUE(CanBeRead(db_));
  EXPECT_EQ(process.TryToWrite(), SQLITE_OK);
}

// The file system with faults has no shared memory.
class RealFileSystem {
 public:
  RealFileSystem() : before_(sqlite3_vfs_find(nullptr)) {
    sqlite3_vfs_register(sqlite3_vfs_find("unix"), 1);
  }
  ~RealFileSystem() { sqlite3_vfs_register(before_, 1); }
  RealFileSystem(const RealFileSystem&) = delete;
  RealFileSystem& operator=(const RealFileSystem&) = delete;

 private:
  sqlite3_vfs* before_;
};

TEST_F(OwnDatabaseTest, KeepsTheLocksOfItsWriteAheadLog) {
  const RealFileSystem real;
  Prepare(db_);
  const OtherProcess process(db_);
  ASSERT_EQ(DataBaseMgr::GetInstance()->OpenDB(db_.c_str()), 1);
  DataBaseMgr::GetInstance()->ExecSqlStatment("pragma journal_mode=wal");
  ASSERT_EQ(DataBaseMgr::vdata, std::vector<std::string>{"wal"});
  ASSERT_EQ(DataBaseMgr::GetInstance()->ExecSqlStatmentNoValueReturn("begin immediate"), 1);
  fs::create_symlink(db_ + "-shm", InCard("SHM.JPG"));
  for (const std::string& name : {db_ + "-wal", db_ + "-shm", InCard("SHM.JPG")}) {
    EXPECT_TRUE(fs::exists(name)) << name;
    EXPECT_FALSE(CanBeRead(name)) << name;
  }
  EXPECT_EQ(process.TryToWrite(), SQLITE_BUSY);
  DataBaseMgr::DestroyInstance();
}

TEST_F(OwnDatabaseTest, IsKnownUnderAHandleThatTheHostOpened) {
  Prepare(db_);
  const OtherProcess process(db_);
  sqlite3* handle = nullptr;
  ASSERT_EQ(sqlite3_open(db_.c_str(), &handle), SQLITE_OK);
  DataBaseMgr::GetInstance()->setPpDataBase(&handle);
  OpenAndBegin();
  EXPECT_FALSE(CanBeRead(InCard("OWN2.JPG")));
  EXPECT_EQ(process.TryToWrite(), SQLITE_BUSY);
}

TEST_F(OwnDatabaseTest, IsKnownAsLongAsTheReaderOrTheManagerHasIt) {
  Prepare(db_);
  MultimediaQueryMgr reader;
  ASSERT_EQ(reader.ConnectDB(db_.c_str()), 1);
  EXPECT_FALSE(CanBeRead(db_));
  OpenAndBegin();
  reader.DisconnectDB();
  EXPECT_FALSE(CanBeRead(db_));
  DataBaseMgr::DestroyInstance();
  EXPECT_TRUE(CanBeRead(db_));
}

}  // namespace
}  // namespace orx_test
