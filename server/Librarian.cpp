#include "Librarian.h"

#include <malloc.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>

#include "CatalogueBuilder.h"
#include "Failure.h"
#include "MediaReader.h"

namespace orxserve {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr auto kQuiet = std::chrono::seconds(3);          // after the last change, before a scan
constexpr auto kLongestDelay = std::chrono::seconds(30);  // after the first one

Descriptor EventDescriptor() { return Descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)); }

void Signal(const Descriptor& event) {
  const uint64_t one = 1;
  if (write(event.get(), &one, sizeof one) < 0) return;  // it is signalled already
}

void Clear(const Descriptor& event) {
  uint64_t count = 0;
  if (read(event.get(), &count, sizeof count) < 0) return;
}

int MillisecondsUntil(Clock::time_point time) {
  if (time == Clock::time_point::max()) return -1;
  const auto left = std::chrono::duration_cast<milliseconds>(time - Clock::now()).count() + 1;
  return static_cast<int>(std::clamp<int64_t>(left, 0, 3600000));
}

}  // namespace

Librarian::Librarian(Settings settings, StateStore* state, CatalogueHolder* catalogues, Log* log,
                     std::function<void(const Catalogue&)> changed)
    : settings_(std::move(settings)),
      state_(state),
      catalogues_(catalogues),
      log_(log),
      changed_(std::move(changed)),
      indexer_(settings_.index, log),
      wake_(EventDescriptor()),
      stop_(EventDescriptor()),
      ended_(EventDescriptor()),
      thread_([this] {
        Run();
        Signal(ended_);
      }) {}

Librarian::~Librarian() {
  Stop(0);
  if (thread_.joinable()) thread_.join();
}

void Librarian::Rescan() { Signal(wake_); }

bool Librarian::Stop(unsigned patience) {
  Signal(stop_);
  indexer_.Stop();
  pollfd waiting{ended_.get(), POLLIN, 0};
  return poll(&waiting, 1, static_cast<int>(patience)) == 1;
}

void Librarian::ReadCatalogue() {
  const std::string& database = settings_.index.database;
  if (!std::filesystem::exists(database)) return;
  try {
    CatalogueBuilder builder(settings_.index.folder, state_, look_);
    ReadMediaRows(database, [&](const MediaRow& row) { builder.Add(row); });
    std::shared_ptr<const Catalogue> next = builder.Finish();
    log_->Detail("catalogue {}: {} items, {} containers", next->updateId(), next->items().size(),
                 next->containers().size());
    catalogues_->Set(next);
    if (!next->changedContainers().empty()) changed_(*next);
  } catch (const std::exception& failure) {
    log_->Error("{}", failure.what());
  }
  malloc_trim(0);  // what the old catalogue and the reading took
}

void Librarian::ScanOnce() {
  const auto start = Clock::now();
  try {
    AllowReadersDuringScans(settings_.index.database);
    if (!indexer_.Scan())
      log_->Error("the database could not be written; the next scan tries again");
    AllowReadersDuringScans(settings_.index.database);
  } catch (const std::exception& failure) {
    log_->Error("{}", failure.what());
  }
  const std::chrono::duration<double> seconds = Clock::now() - start;
  log_->Detail("scanned in {:.3f} s", seconds.count());
}

void Librarian::Run() {
  const auto nameOf = [](const std::string& path) {
    return std::filesystem::path(path).filename().string();
  };
  if (settings_.watch)
    watch_ = std::make_unique<Watch>(
        settings_.index.folder,
        std::vector<std::string>{nameOf(settings_.index.database), "state.db"});
  if (watch_ != nullptr && !watch_->complete())
    log_->Error("not every folder can be watched; changes there are found by --rescan alone");
  ReadCatalogue();
  do {
    ScanOnce();
    ReadCatalogue();
    const auto& catalogue = catalogues_->Get();
    log_->Detail("serving {} items", catalogue->items().size());
  } while (Wait());
}

bool Librarian::Wait() {
  auto due = Clock::time_point::max();
  auto latest = Clock::time_point::max();
  if (settings_.rescanMinutes != 0)
    due = Clock::now() + std::chrono::minutes(settings_.rescanMinutes);
  std::array<pollfd, 3> waiting = {{{stop_.get(), POLLIN, 0},
                                    {wake_.get(), POLLIN, 0},
                                    {watch_ == nullptr ? -1 : watch_->descriptor(), POLLIN, 0}}};
  for (;;) {
    const int count = poll(waiting.data(), waiting.size(), MillisecondsUntil(due));
    if (waiting[0].revents != 0) return false;
    if (waiting[1].revents != 0) {
      Clear(wake_);
      return true;
    }
    if (waiting[2].revents != 0 && watch_->Take()) {
      const auto now = Clock::now();
      if (latest == Clock::time_point::max()) latest = now + kLongestDelay;
      due = std::min(now + kQuiet, latest);
    }
    if (count == 0 && Clock::now() >= due) return true;
  }
}

}  // namespace orxserve
