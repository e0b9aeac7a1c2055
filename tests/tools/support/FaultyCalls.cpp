// A library to be loaded before all others: lets calls of a program into the system fail.
//
// FAULTY_CALLS names them, between commas: open, opendir, read, write (pwrite, ftruncate and
// fallocate, too), sync, stat.  FAULTY_PATH: only of files whose path has this in it. FAULTY_FIRST:
// the first call that fails, from 1; FAULTY_LAST: the last one, without it all further ones.
// FAULTY_ERROR: the error.
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

long Number(const char* name, long otherwise) {
  const char* text = getenv(name);
  return text != nullptr ? atol(text) : otherwise;
}

bool IsNamed(const char* call) {
  const char* calls = getenv("FAULTY_CALLS");
  if (calls == nullptr) return false;
  const size_t length = strlen(call);
  for (const char* at = calls; (at = strstr(at, call)) != nullptr; at += length)
    if ((at == calls || at[-1] == ',') && (at[length] == ',' || at[length] == '\0')) return true;
  return false;
}

// Whether this call fails; errno says how.
bool Fails(const char* call, const char* path) {
  static std::atomic<long> calls{0};
  if (!IsNamed(call)) return false;
  const char* part = getenv("FAULTY_PATH");
  if (part != nullptr && (path == nullptr || strstr(path, part) == nullptr)) return false;
  const long number = ++calls;
  if (number < Number("FAULTY_FIRST", 1) || number > Number("FAULTY_LAST", LONG_MAX)) return false;
  errno = static_cast<int>(Number("FAULTY_ERROR", EIO));
  return true;
}

bool Fails(const char* call, int descriptor) {
  if (!IsNamed(call)) return false;
  char link[64];
  char path[PATH_MAX];
  snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
  const ssize_t length = readlink(link, path, sizeof path - 1);
  path[length > 0 ? length : 0] = '\0';
  return Fails(call, path);
}

template <typename Function>
Function Next(Function, const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}
#define NEXT(name) Next(&name, #name)

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = flags & O_CREAT ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return Fails("open", path) ? -1 : NEXT(open)(path, flags, mode);
}
int open64(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = flags & O_CREAT ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return Fails("open", path) ? -1 : NEXT(open64)(path, flags, mode);
}
DIR* opendir(const char* path) { return Fails("opendir", path) ? nullptr : NEXT(opendir)(path); }
ssize_t read(int descriptor, void* to, size_t size) {
  return Fails("read", descriptor) ? -1 : NEXT(read)(descriptor, to, size);
}
ssize_t pread64(int descriptor, void* to, size_t size, off64_t at) {
  return Fails("read", descriptor) ? -1 : NEXT(pread64)(descriptor, to, size, at);
}
ssize_t write(int descriptor, const void* from, size_t size) {
  return Fails("write", descriptor) ? -1 : NEXT(write)(descriptor, from, size);
}
ssize_t pwrite64(int descriptor, const void* from, size_t size, off64_t at) {
  return Fails("write", descriptor) ? -1 : NEXT(pwrite64)(descriptor, from, size, at);
}
int ftruncate64(int descriptor, off64_t size) {
  return Fails("write", descriptor) ? -1 : NEXT(ftruncate64)(descriptor, size);
}
int fallocate64(int descriptor, int mode, off64_t at, off64_t size) {
  return Fails("write", descriptor) ? -1 : NEXT(fallocate64)(descriptor, mode, at, size);
}
int fsync(int descriptor) { return Fails("sync", descriptor) ? -1 : NEXT(fsync)(descriptor); }
int fdatasync(int descriptor) {
  return Fails("sync", descriptor) ? -1 : NEXT(fdatasync)(descriptor);
}
int stat64(const char* path, struct stat64* status) {
  return Fails("stat", path) ? -1 : NEXT(stat64)(path, status);
}

}  // extern "C"
