#include "Log.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>

#include "Failure.h"
#include "Texts.h"

namespace orxserve {

Log::Log(const std::string& file, bool verbose) : timed_(!file.empty()), verbose_(verbose) {
  if (file.empty()) {
    file_.Reset(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3));
    return;
  }
  file_.Reset(open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644));
  if (!file_) throw Failure("log {}: {}", file, strerror(errno));
}

void Log::Write(const std::string& line) {
  std::string text = "orxserve: " + CleanText(line) + "\n";
  if (timed_) {
    const time_t now = time(nullptr);
    tm parts = {};
    std::array<char, 32> stamp{};
    if (localtime_r(&now, &parts) != nullptr)
      strftime(stamp.data(), stamp.size(), "%Y-%m-%d %H:%M:%S ", &parts);
    text.insert(0, stamp.data());
  }
  const std::lock_guard<std::mutex> lock(mutex_);
  if (write(file_.get(), text.data(), text.size()) < 0) return;  // there is nobody to tell
}

}  // namespace orxserve
