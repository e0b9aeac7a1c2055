#include "Interrupt.h"

#include <atomic>

#include "FileScanner/DirectoryScanner.h"

namespace orxscan {
namespace {

std::atomic<DirectoryScanner*> running{nullptr};
static_assert(std::atomic<DirectoryScanner*>::is_always_lock_free, "read in a signal handler");
static_assert(std::atomic<bool>::is_always_lock_free, "the cancel flag is set in one");

void Cancel(int) {
  DirectoryScanner* scanner = running.load();
  if (scanner != nullptr) scanner->CancelScanDirectory();
}

}  // namespace

CancelOnSignal::CancelOnSignal(DirectoryScanner* scanner) {
  running = scanner;
  struct sigaction action = {};
  action.sa_handler = Cancel;
  action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
  sigaction(SIGINT, &action, &oldInterrupt_);
  sigaction(SIGTERM, &action, &oldTerminate_);
}

CancelOnSignal::~CancelOnSignal() {
  sigaction(SIGINT, &oldInterrupt_, nullptr);
  sigaction(SIGTERM, &oldTerminate_, nullptr);
  running = nullptr;
}

}  // namespace orxscan
