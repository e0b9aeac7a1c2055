#include "OSAL/Fault.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "OSAL/ORXLog.h"

namespace orx {
namespace {

thread_local Faults faults = {};
thread_local unsigned reported = 0;  // of the silent ones
thread_local const char* lastSilent = "";

}  // namespace

void NoteOutOfMemory(const char* where) noexcept {
  ++faults.all;
  ++faults.outOfMemory;
  reported = faults.silent;  // what this operation met on its way is told with it
  ORX_LOG_ERROR("Error : out of memory in %s", where);
}

void CountOutOfMemory(const char* where) noexcept {
  ++faults.all;
  ++faults.outOfMemory;
  ++faults.silent;
  lastSilent = where;
}

void NoteSystemError(const char* call, const char* path, int error) noexcept {
  ++faults.all;
  ORX_LOG_ERROR("Error : %s [%s] failed, errno %d", call, path != nullptr ? path : "", error);
}

void NoteDescriptorError(const char* call, int descriptor, int error) noexcept {
  char link[40], path[4096] = "";
  snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
  const ssize_t length = readlink(link, path, sizeof path - 1);
  path[std::max<ssize_t>(length, 0)] = '\0';
  NoteSystemError(call, path, error);
}

void NoteOpenError(const char* call, const char* path, int error) noexcept {
  if (!IsOrdinaryOpenAnswer(error)) NoteSystemError(call, path, error);
}

bool IsOrdinaryOpenAnswer(int error) noexcept {
  switch (error) {
    case ENOENT:
    case ENOTDIR:
    case EACCES:
    case EPERM:
    case ELOOP:
    case ENAMETOOLONG:
    case EISDIR:
      return true;
    default:
      return false;
  }
}

void NoteLeftOut(const char* path, const char* reason) noexcept {
  ++faults.all;
  ORX_LOG_ERROR("Error : [%s] is left to the next scan, %s", path != nullptr ? path : "", reason);
}

Faults FaultsSoFar() noexcept { return faults; }

void FaultWatch::Report() const noexcept {
  if (faults.silent == before_.silent || faults.silent == reported) return;
  reported = faults.silent;
  ORX_LOG_ERROR("Error : out of memory in %s (%s)", operation_, lastSilent);
}

}  // namespace orx
