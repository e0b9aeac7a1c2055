#include "robustness/Injection.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <new>

namespace orx_test {
namespace {

bool armed = false;
Layer armedLayer = Layer::kMemory;
Behaviour armedBehaviour = Behaviour::kFailOnce;
long strikeAt = 0;
long calls = 0;
int armedError = 0;
bool struck = false;
bool struckAtOpening = false;
bool movesAsOnFat = false;
void (*cancelNow)() = nullptr;

}  // namespace

void Injection::Arm(Layer layer, long call, Behaviour behaviour, int error) {
  armedLayer = layer;
  armedBehaviour = behaviour;
  strikeAt = call;
  armedError = error;
  calls = 0;
  struck = struckAtOpening = false;
  armed = true;
}

void Injection::OnCancel(void (*cancel)()) { cancelNow = cancel; }

bool Injection::Disarm() {
  armed = false;
  return struck;
}

bool Injection::StruckAtOpening() { return struckAtOpening; }

long Injection::Calls() { return calls; }
int Injection::Error() { return armedError; }
void Injection::MoveAsOnFat(bool plainly) { movesAsOnFat = plainly; }
bool Injection::MovesAsOnFat() { return movesAsOnFat; }
bool Injection::Kills() { return armedBehaviour == Behaviour::kKill; }

bool Injection::Strikes(Layer layer, bool opens) {
  if (!armed || layer != armedLayer) return false;
  ++calls;
  const bool strikes =
      calls == strikeAt || (calls > strikeAt && armedBehaviour == Behaviour::kFailFromThere);
  struck = struck || strikes;
  struckAtOpening = struckAtOpening || (strikes && opens);
  if (strikes && armedBehaviour == Behaviour::kCancel) {
    cancelNow();
    return false;
  }
  return strikes;
}

namespace {

// Answers `failure` with errno set when the call is to fail.
template <typename Result, typename Call>
Result FileCall(Result failure, Call&& call, bool opens = false) {
  if (!Injection::Strikes(Layer::kFiles, opens)) return call();
  errno = Injection::Error();
  return failure;
}

template <typename Result, typename Call>
Result OpeningCall(Result failure, Call&& call) {
  return FileCall(failure, call, true);
}

// The same for what is done to the disk beside SQLite.
template <typename Call>
int DiskCall(Call&& call) {
  if (!Injection::Strikes(Layer::kDisk)) return call();
  if (Injection::Kills()) raise(SIGKILL);
  errno = Injection::Error();
  return -1;
}

// ---- SQLite's memory ----

sqlite3_mem_methods realMemory;

void* SqliteMalloc(int size) {
  return Injection::Strikes(Layer::kMemory) ? nullptr : realMemory.xMalloc(size);
}

void* SqliteRealloc(void* block, int size) {
  return Injection::Strikes(Layer::kMemory) ? nullptr : realMemory.xRealloc(block, size);
}

// ---- SQLite's files ----

struct FaultyFile {
  sqlite3_file base;
  sqlite3_file* real;  // behind this record
};

sqlite3_file* Real(sqlite3_file* file) { return reinterpret_cast<FaultyFile*>(file)->real; }

bool DiskStrikes() {
  if (!Injection::Strikes(Layer::kDisk)) return false;
  if (Injection::Kills()) raise(SIGKILL);
  return true;
}

int Close(sqlite3_file* file) { return Real(file)->pMethods->xClose(Real(file)); }

int Read(sqlite3_file* file, void* to, int size, sqlite3_int64 at) {
  if (DiskStrikes()) return SQLITE_IOERR_READ;
  return Real(file)->pMethods->xRead(Real(file), to, size, at);
}

int Write(sqlite3_file* file, const void* from, int size, sqlite3_int64 at) {
  if (Injection::Strikes(Layer::kDisk)) {
    Real(file)->pMethods->xWrite(Real(file), from, size / 2, at);  // half of it got there
    if (Injection::Kills()) raise(SIGKILL);
    return Injection::Error() == ENOSPC ? SQLITE_FULL : SQLITE_IOERR_WRITE;
  }
  return Real(file)->pMethods->xWrite(Real(file), from, size, at);
}

int Truncate(sqlite3_file* file, sqlite3_int64 size) {
  if (DiskStrikes()) return SQLITE_IOERR_TRUNCATE;
  return Real(file)->pMethods->xTruncate(Real(file), size);
}

// A killed process leaves its writes with the system, so nothing needs to reach a disk.
int Sync(sqlite3_file* /*file*/, int /*flags*/) {
  return DiskStrikes() ? SQLITE_IOERR_FSYNC : SQLITE_OK;
}

int FileSize(sqlite3_file* file, sqlite3_int64* size) {
  return Real(file)->pMethods->xFileSize(Real(file), size);
}
int Lock(sqlite3_file* file, int level) { return Real(file)->pMethods->xLock(Real(file), level); }
int Unlock(sqlite3_file* file, int level) {
  return Real(file)->pMethods->xUnlock(Real(file), level);
}
int CheckReservedLock(sqlite3_file* file, int* result) {
  return Real(file)->pMethods->xCheckReservedLock(Real(file), result);
}
int FileControl(sqlite3_file* file, int operation, void* argument) {
  return Real(file)->pMethods->xFileControl(Real(file), operation, argument);
}
int SectorSize(sqlite3_file* file) { return Real(file)->pMethods->xSectorSize(Real(file)); }
int DeviceCharacteristics(sqlite3_file* file) {
  return Real(file)->pMethods->xDeviceCharacteristics(Real(file));
}

sqlite3_vfs* realSystem = nullptr;
int (*realDelete)(sqlite3_vfs*, const char*, int) = nullptr;

sqlite3_io_methods FaultyMethods() {
  sqlite3_io_methods methods = {};
  methods.iVersion = 1;
  methods.xClose = Close;
  methods.xRead = Read;
  methods.xWrite = Write;
  methods.xTruncate = Truncate;
  methods.xSync = Sync;
  methods.xFileSize = FileSize;
  methods.xLock = Lock;
  methods.xUnlock = Unlock;
  methods.xCheckReservedLock = CheckReservedLock;
  methods.xFileControl = FileControl;
  methods.xSectorSize = SectorSize;
  methods.xDeviceCharacteristics = DeviceCharacteristics;
  return methods;
}

int Open(sqlite3_vfs* /*system*/, sqlite3_filename name, sqlite3_file* file, int flags,
         int* outFlags) {
  static const sqlite3_io_methods methods = FaultyMethods();
  file->pMethods = nullptr;
  if (DiskStrikes()) return SQLITE_CANTOPEN;
  auto* faulty = reinterpret_cast<FaultyFile*>(file);
  faulty->real = reinterpret_cast<sqlite3_file*>(faulty + 1);
  const int code = realSystem->xOpen(realSystem, name, faulty->real, flags, outFlags);
  if (code == SQLITE_OK) file->pMethods = &methods;
  return code;
}

int Delete(sqlite3_vfs* /*system*/, const char* name, int /*syncDirectory*/) {
  return DiskStrikes() ? SQLITE_IOERR_DELETE : realDelete(realSystem, name, 0);
}

}  // namespace

void GiveSqliteAFaultyMachine() {
  if (realSystem != nullptr) return;
  sqlite3_config(SQLITE_CONFIG_GETMALLOC, &realMemory);
  sqlite3_mem_methods memory = realMemory;
  memory.xMalloc = SqliteMalloc;
  memory.xRealloc = SqliteRealloc;
  sqlite3_config(SQLITE_CONFIG_MALLOC, &memory);
  // Small pieces would come from a block of SQLite's own.
  sqlite3_config(SQLITE_CONFIG_LOOKASIDE, 0, 0);

  realSystem = sqlite3_vfs_find(nullptr);
  static sqlite3_vfs faulty = *realSystem;
  realDelete = realSystem->xDelete;
  faulty.pNext = nullptr;
  faulty.zName = "faulty";
  faulty.szOsFile = static_cast<int>(sizeof(FaultyFile)) + realSystem->szOsFile;
  faulty.xOpen = Open;
  faulty.xDelete = Delete;
  sqlite3_vfs_register(&faulty, 1);
}

}  // namespace orx_test

using orx_test::Injection;
using orx_test::Layer;

// ---- the library's calls, redirected by the linker ----

#ifdef __USE_TIME_BITS64  // the C library's names where numbers have 32 bits and times 64
#define __wrap_fstat64 __wrap___fstat64_time64
#define __real_fstat64 __real___fstat64_time64
#define __wrap_stat64 __wrap___stat64_time64
#define __real_stat64 __real___stat64_time64
#define __wrap_lstat64 __wrap___lstat64_time64
#define __real_lstat64 __real___lstat64_time64
#define __wrap_fstatat64 __wrap___fstatat64_time64
#define __real_fstatat64 __real___fstatat64_time64
#endif

extern "C" {

// NOLINTBEGIN: the names are the linker's
void* __real_malloc(size_t size);
void* __real_calloc(size_t count, size_t size);
char* __real_strdup(const char* text);
char* __real_strndup(const char* text, size_t size);
int __real_open64(const char* path, int flags, ...);
ssize_t __real_read(int descriptor, void* to, size_t size);
ssize_t __real_pread64(int descriptor, void* to, size_t size, off64_t at);
int __real_fstat64(int descriptor, struct stat64* status);
int __real_stat64(const char* path, struct stat64* status);
int __real_lstat64(const char* path, struct stat64* status);
int __real_fstatat64(int directory, const char* name, struct stat64* status, int flags);
off64_t __real_lseek64(int descriptor, off64_t offset, int whence);
DIR* __real_opendir(const char* path);
int __real_renameat2(int from, const char* path, int to, const char* newPath, unsigned flags);
int __real_link(const char* path, const char* newPath);
int __real_rename(const char* path, const char* newPath);
int __real_unlink(const char* path);
int __real_fsync(int descriptor);
int __real_flock(int descriptor, int operation);
struct dirent64* __real_readdir64(DIR* directory);

void* __wrap_malloc(size_t size) {
  return Injection::Strikes(Layer::kMemory) ? nullptr : __real_malloc(size);
}
void* __wrap_calloc(size_t count, size_t size) {
  return Injection::Strikes(Layer::kMemory) ? nullptr : __real_calloc(count, size);
}
char* __wrap_strdup(const char* text) {
  return Injection::Strikes(Layer::kMemory) ? nullptr : __real_strdup(text);
}
char* __wrap_strndup(const char* text, size_t size) {
  return Injection::Strikes(Layer::kMemory) ? nullptr : __real_strndup(text, size);
}

int __wrap_open64(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = flags & O_CREAT ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return orx_test::OpeningCall(-1, [&] { return __real_open64(path, flags, mode); });
}
ssize_t __wrap_read(int descriptor, void* to, size_t size) {
  return orx_test::FileCall(ssize_t{-1}, [&] { return __real_read(descriptor, to, size); });
}
ssize_t __wrap_pread64(int descriptor, void* to, size_t size, off64_t at) {
  return orx_test::FileCall(ssize_t{-1}, [&] { return __real_pread64(descriptor, to, size, at); });
}
int __wrap_fstat64(int descriptor, struct stat64* status) {
  return orx_test::FileCall(-1, [&] { return __real_fstat64(descriptor, status); });
}
int __wrap_stat64(const char* path, struct stat64* status) {
  return orx_test::OpeningCall(-1, [&] { return __real_stat64(path, status); });
}
int __wrap_lstat64(const char* path, struct stat64* status) {
  return orx_test::OpeningCall(-1, [&] { return __real_lstat64(path, status); });
}
int __wrap_fstatat64(int directory, const char* name, struct stat64* status, int flags) {
  return orx_test::OpeningCall(-1,
                               [&] { return __real_fstatat64(directory, name, status, flags); });
}
off64_t __wrap_lseek64(int descriptor, off64_t offset, int whence) {
  return orx_test::FileCall(off64_t{-1},
                            [&] { return __real_lseek64(descriptor, offset, whence); });
}
DIR* __wrap_opendir(const char* path) {
  return orx_test::OpeningCall(static_cast<DIR*>(nullptr), [&] { return __real_opendir(path); });
}
struct dirent64* __wrap_readdir64(DIR* directory) {
  return orx_test::FileCall(static_cast<struct dirent64*>(nullptr),
                            [&] { return __real_readdir64(directory); });
}
int __wrap_renameat2(int from, const char* path, int to, const char* newPath, unsigned flags) {
  if (Injection::MovesAsOnFat()) {
    errno = EINVAL;
    return -1;
  }
  return orx_test::DiskCall([&] { return __real_renameat2(from, path, to, newPath, flags); });
}
int __wrap_link(const char* path, const char* newPath) {
  if (Injection::MovesAsOnFat()) {
    errno = EPERM;
    return -1;
  }
  return orx_test::DiskCall([&] { return __real_link(path, newPath); });
}
int __wrap_rename(const char* path, const char* newPath) {
  return orx_test::DiskCall([&] { return __real_rename(path, newPath); });
}
int __wrap_unlink(const char* path) {
  return orx_test::DiskCall([&] { return __real_unlink(path); });
}
int __wrap_fsync(int descriptor) {
  return orx_test::DiskCall([&] { return __real_fsync(descriptor); });
}
int __wrap_flock(int descriptor, int operation) {
  return orx_test::DiskCall([&] { return __real_flock(descriptor, operation); });
}
// NOLINTEND

}  // extern "C"

void* operator new(size_t size) {
  if (void* block = malloc(size != 0 ? size : 1); block != nullptr) return block;
  throw std::bad_alloc();
}
void* operator new[](size_t size) { return operator new(size); }
void* operator new(size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return malloc(size != 0 ? size : 1);
}
void* operator new[](size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return malloc(size != 0 ? size : 1);
}
void operator delete(void* block) noexcept { free(block); }
void operator delete[](void* block) noexcept { free(block); }
void operator delete(void* block, size_t /*size*/) noexcept { free(block); }
void operator delete[](void* block, size_t /*size*/) noexcept { free(block); }
void operator delete(void* block, const std::nothrow_t& /*tag*/) noexcept { free(block); }
void operator delete[](void* block, const std::nothrow_t& /*tag*/) noexcept { free(block); }
