#include "StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace orxscan {
namespace {

constexpr int kStreams[] = {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO};

bool IsClosed(int descriptor) { return fcntl(descriptor, F_GETFD) == -1 && errno == EBADF; }

}  // namespace

bool FillStandardStreams() {
  for (const int stream : kStreams) {
    if (!IsClosed(stream)) continue;
    // The lowest descriptor that is free, which is this one.
    const int opened = open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    if (opened != stream) return false;
  }
  return true;
}

}  // namespace orxscan
