#include "OSAL/Fault.h"

#include <cerrno>

#include "OSAL/ORXLog.h"

namespace orx {
namespace {

thread_local Faults faults = {};

}  // namespace

void NoteOutOfMemory(const char* where) noexcept {
  ++faults.all;
  ++faults.outOfMemory;
  ORX_LOG_ERROR("Error : out of memory in %s", where);
}

bool IsMachineFailure(int error) noexcept {
  switch (error) {
    case ENOMEM:
    case EMFILE:
    case ENFILE:
    case ENOBUFS:
    case EIO:
    case EAGAIN:
    case EINTR:
      return true;
    default:
      return false;
  }
}

void NoteSystemError(const char* call, const char* path, int error) noexcept {
  if (!IsMachineFailure(error)) return;
  ++faults.all;
  ORX_LOG_ERROR("Error : %s [%s] failed, errno %d", call, path != nullptr ? path : "", error);
}

void NoteLeftOut(const char* path, const char* reason) noexcept {
  ++faults.all;
  ORX_LOG_ERROR("Error : [%s] is left to the next scan, %s", path != nullptr ? path : "", reason);
}

Faults FaultsSoFar() noexcept { return faults; }

}  // namespace orx
