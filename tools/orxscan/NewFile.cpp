#include "NewFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "Output.h"

namespace orxscan {
namespace {

// What a new file may be for others; asking for it means setting it.
mode_t UsualMode() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

// The names of the unfinished files: a page and one of its thumbnails at most.
std::atomic<const char*> unfinishedNames[2];
static_assert(std::atomic<const char*>::is_always_lock_free, "read in a signal handler");

void RemoveUnfinished(int signal) {
  for (const auto& entry : unfinishedNames) {
    const char* const name = entry.load();
    if (name != nullptr) unlink(name);
  }
  raise(signal);  // as it would have ended the process
}

// From the first file on, a signal that ends the command removes what is unfinished.
void HandleSignals() {
  static const bool handled = [] {
    for (const int number : {SIGHUP, SIGINT, SIGTERM}) {
      struct sigaction action = {};
      if (sigaction(number, nullptr, &action) != 0 || action.sa_handler != SIG_DFL) continue;
      action.sa_handler = RemoveUnfinished;
      action.sa_flags = static_cast<int>(SA_RESETHAND);
      sigaction(number, &action, nullptr);
    }
    return signal(SIGXFSZ, SIG_IGN) != SIG_ERR;  // a file too large is a failed write
  }();
  static_cast<void>(handled);
}

// While it lives, signals wait: a file and the record of its name change together.
class HoldSignals {
 public:
  HoldSignals() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~HoldSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  HoldSignals(const HoldSignals&) = delete;
  HoldSignals& operator=(const HoldSignals&) = delete;

 private:
  sigset_t before_;
};

void Remember(const char* name) {
  for (auto& entry : unfinishedNames) {
    const char* none = nullptr;
    if (entry.compare_exchange_strong(none, name)) return;
  }
}

void Forget(const char* name) {
  for (auto& entry : unfinishedNames) {
    const char* remembered = name;
    if (entry.compare_exchange_strong(remembered, nullptr)) return;
  }
}

}  // namespace

NewFile::NewFile(const char* kind, const std::string& path)
    : kind_(kind), path_(path), unfinished_(path + ".XXXXXX") {
  HandleSignals();
  const HoldSignals hold;
  const int descriptor = mkostemp(&unfinished_[0], O_CLOEXEC);
  if (descriptor < 0) {
    unfinished_.clear();
    Fail(errno);
  }
  fchmod(descriptor, UsualMode());
  file_ = fdopen(descriptor, "w");
  if (file_ != nullptr) {
    Remember(unfinished_.c_str());
    return;
  }
  const int error = errno;
  close(descriptor);
  unlink(unfinished_.c_str());
  Fail(error);
}

NewFile::~NewFile() {
  if (file_ != nullptr) fclose(file_);
  if (unfinished_.empty()) return;
  const HoldSignals hold;
  unlink(unfinished_.c_str());
  Forget(unfinished_.c_str());
}

void NewFile::Write(std::string_view text) {
  if (fwrite(text.data(), 1, text.size(), file_) != text.size()) Fail(errno);
}

void NewFile::Finish() {
  FILE* const file = file_;
  file_ = nullptr;
  if (fclose(file) != 0) Fail(errno);
  const HoldSignals hold;
  if (rename(unfinished_.c_str(), path_.c_str()) != 0) Fail(errno);
  Forget(unfinished_.c_str());
  unfinished_.clear();
}

void NewFile::Fail(int error) const {
  throw Failure("{} {}: {}", kind_, Quoted(path_), strerror(error));
}

}  // namespace orxscan
