// orxserve: serves a folder, or a camera's card, to DLNA clients and browsers.
#include <fcntl.h>
#include <malloc.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>

#include "Card.h"
#include "Failure.h"
#include "HttpServer.h"
#include "Interfaces.h"
#include "Librarian.h"
#include "Log.h"
#include "Options.h"
#include "Site.h"
#include "Ssdp.h"
#include "Texts.h"

namespace {

using namespace orxserve;

constexpr int kTick = 15000;             // milliseconds between signs of life to open pages
constexpr unsigned kStopPatience = 500;  // for a scan under way

// Signals come through a descriptor; every thread that is started later has them blocked, too.
Descriptor BlockSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&signals, signal);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  signal(SIGPIPE, SIG_IGN);
  return Descriptor(signalfd(-1, &signals, SFD_CLOEXEC));
}

// The library prints on its own account; its words come through the log.
void SilenceStreams() {
  FILE* nowhere = fopen("/dev/null", "we");
  if (nowhere == nullptr) return;
  stdout = nowhere;
  stderr = nowhere;
}

std::unique_ptr<HttpServer> StartHttp(Site* site, const AccessList& access,
                                      const Options& options) {
  const auto port = static_cast<uint16_t>(options.port);
  try {
    return std::make_unique<HttpServer>(site, access, port);
  } catch (const Failure&) {
    if (options.portIsGiven) throw;
    return std::make_unique<HttpServer>(site, access, uint16_t{0});
  }
}

// Until the end is asked for.
void FollowSignals(const Descriptor& signals, Librarian* librarian, EventStreams* streams) {
  for (;;) {
    pollfd waiting{signals.get(), POLLIN, 0};
    if (poll(&waiting, 1, kTick) == 0) {
      streams->KeepAlive();
      continue;
    }
    signalfd_siginfo info{};
    if (read(signals.get(), &info, sizeof info) != sizeof info) continue;
    if (info.ssi_signo != SIGHUP) return;
    librarian->Rescan();
  }
}

Librarian::Settings LibrarianSettings(const Options& options) {
  Librarian::Settings settings;
  settings.index.folder = options.folder;
  settings.index.database = options.database;
  settings.index.profiles = options.profiles;
  settings.index.cardMode = options.cardMode;
  settings.rescanMinutes = options.rescanMinutes;
  settings.watch = options.watch;
  return settings;
}

int Serve(Options options) {
  const Descriptor signals = BlockSignals();
  Log log(options.log, options.verbose);
  if (options.cardMode != Indexer::kNoCard) MountCard(&options);
  StateStore state(options.state);
  SilenceStreams();
  CatalogueHolder catalogues(state.updateId());
  AccessList access(options.allowed);
  access.SetInterfaces(ListInterfaces(options.interfaces));
  Site site(catalogues, access, {options.name, state.uuid(), MachineName()});
  const std::unique_ptr<HttpServer> http = StartHttp(&site, access, options);
  log.Info("serving {} as \"{}\" on port {}", options.folder, options.name, http->port());
  auto discovery = std::make_unique<Ssdp>(
      Ssdp::Settings{options.interfaces, http->port(), state.uuid(), options.maxAge}, &access,
      &log);
  Librarian librarian(LibrarianSettings(options), &state, &catalogues, &log,
                      [&](const Catalogue& catalogue) {
                        site.events().Publish(catalogue);
                        http->streams().Changed(catalogue.updateId());
                      });
  FollowSignals(signals, &librarian, &http->streams());
  log.Detail("ending");
  discovery.reset();  // says byebye
  // A scan that does not end is left: what it wrote is undone by the next one that opens the file.
  if (!librarian.Stop(kStopPatience)) _exit(0);
  return 0;
}

int Fail(const std::string& message) {
  const std::string line = "orxserve: " + CleanText(message) + "\n";
  return write(STDERR_FILENO, line.data(), line.size()) < 0 ? 2 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    mallopt(M_ARENA_MAX, 2);  // memory before speed that nobody needs
    Options options;
    return ParseOptions(argc, argv, &options) ? Serve(std::move(options)) : 0;
  } catch (const std::exception& failure) {
    return Fail(failure.what());
  }
}
