// What a server remembers beyond the media database: its UUID, the ids that it gave, and how far it
// has counted changes.  Kept in a file of its own, so that ids outlive rows and whole databases.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "Sqlite.h"

namespace orxserve {

// What an id is given to: a file by path, size and date, or a container by its name.
struct ObjectKey {
  uint64_t high = 0;
  uint64_t low = 0;

  static ObjectKey OfFile(std::string_view path, uint64_t size, uint64_t date);
  static ObjectKey OfContainer(std::string_view name);
};

struct ImageSize {
  uint16_t width = 0;  // pixels, 0 when not known
  uint16_t height = 0;
};

// What was found in a file when it was first met.
struct PieceFacts {
  uint8_t sound = 0;  // bits, by Piece, of those that begin as a JPEG does
  ImageSize cover;    // of the cover art
};

struct KnownObject {
  uint32_t id = 0;  // 0: not known
  PieceFacts pieces;
};

// How a container was last: a digest of what it holds, and the update id of its last change.
struct ContainerState {
  uint64_t digest = 0;
  uint32_t updateId = 0;
};
using ContainerStates = std::unordered_map<uint32_t, ContainerState>;  // by id

// One for a process: the folder is locked while it lives.  Used by one thread at a time.  What
// fails is thrown as a Failure; what was not committed is undone.
class StateStore {
 public:
  explicit StateStore(const std::string& folder);  // made when it is not there
  ~StateStore();
  StateStore(const StateStore&) = delete;
  StateStore& operator=(const StateStore&) = delete;

  const std::string& folder() const { return folder_; }
  const std::string& uuid() const { return uuid_; }  // 36 characters
  uint32_t updateId() const { return updateId_; }    // of the whole catalogue

  void Begin();  // what follows stands between the two
  void Commit();
  KnownObject Find(const ObjectKey& key);
  uint32_t Add(const ObjectKey& key, const PieceFacts& pieces);  // an id that none ever had
  ContainerStates Containers();
  void SetContainers(const ContainerStates& containers, uint32_t updateId);

 private:
  struct Statements;
  void Lock();
  void ReadMeta();
  void SetMeta(const char* name, int64_t value);

  std::string folder_;
  int lock_ = -1;
  std::unique_ptr<Database> database_;
  std::unique_ptr<Statements> statements_;
  std::unique_ptr<Transaction> transaction_;
  std::string uuid_;
  uint32_t updateId_ = 0;
  uint32_t nextId_ = 0;
  bool changed_ = false;  // since Begin
};

std::string RandomUuid();

}  // namespace orxserve
