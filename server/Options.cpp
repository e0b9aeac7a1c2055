#include "Options.h"

#include <net/if.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "Failure.h"
#include "Hash.h"
#include "Texts.h"

namespace orxserve {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kUsualPort = 8200;
constexpr size_t kLargestProfileList = 1 << 20;  // bytes

std::string Canonical(const std::string& folder) {
  std::error_code problem;
  std::string path = fs::canonical(folder, problem).string();
  if (problem) throw Failure("folder {}: {}", folder, problem.message());
  if (!fs::is_directory(path, problem)) throw Failure("{} is not a folder", folder);
  if (access(path.c_str(), R_OK | X_OK) != 0)
    throw Failure("folder {}: {}", folder, strerror(errno));
  return path;
}

std::string FromEnvironment(const char* name) {
  const char* value = getenv(name);
  return value == nullptr ? "" : value;
}

// Every folder has a state of its own, so that several servers get on.
std::string UsualState(const std::string& folder) {
  std::string base = FromEnvironment("STATE_DIRECTORY");  // of a systemd service
  if (base.empty() && !FromEnvironment("XDG_STATE_HOME").empty())
    base = FromEnvironment("XDG_STATE_HOME") + "/orxserve";
  if (base.empty() && !FromEnvironment("HOME").empty())
    base = FromEnvironment("HOME") + "/.local/state/orxserve";
  if (base.empty()) throw Failure("name a folder for the state: --state DIR");
  std::string name = fs::path(folder).filename().string();
  for (char& c : name)
    if (!isalnum(static_cast<unsigned char>(c)) && c != '-' && c != '_') c = '_';
  return fmt::format("{}/{}-{:08x}", base, name.empty() ? "root" : name,
                     Hash().Add(folder).value() & 0xFFFFFFFF);
}

std::string ReadProfiles(const std::string& path) {
  std::ifstream file(path);
  std::stringstream text;
  text << file.rdbuf();
  if (!file) throw Failure("file {} cannot be read", path);
  std::string list = text.str();
  if (list.size() > kLargestProfileList)
    throw Failure("{} is too large for a list of profiles", path);
  if (Trim(list).empty()) throw Failure("{} holds no profiles", path);
  return list;
}

Subnet ParseAllowed(const std::string& text) {
  const auto subnet = Subnet::Parse(text);
  if (!subnet) throw Failure("--allow {}: no network such as 192.168.2.0/24", text);
  return *subnet;
}

// Completes what was not given.
void Complete(Options* options) {
  options->folder = Canonical(options->folder);
  if (options->state.empty()) options->state = UsualState(options->folder);
  if (options->database.empty()) options->database = options->state + "/media.db";
  if (options->name.empty())
    options->name = fs::path(options->folder).filename().string() + " on " + MachineName();
  if (!options->profiles.empty()) options->profiles = ReadProfiles(options->profiles);
  if (!options->portIsGiven) options->port = kUsualPort;
  for (const std::string& interface : options->interfaces)
    if (if_nametoindex(interface.c_str()) == 0)
      throw Failure("there is no network interface {}", interface);
}

}  // namespace

std::string MachineName() {
  std::array<char, 256> name{};
  if (gethostname(name.data(), name.size() - 1) != 0 || name[0] == '\0') return "orxserve";
  return std::string(name.data()).substr(0, std::string_view(name.data()).find('.'));
}

bool ParseOptions(int argc, char** argv, Options* options) {
  CLI::App app(
      "Serves a folder of pictures, films and sounds, or a camera's card, to televisions "
      "and players in the house (DLNA), and to browsers.",
      "orxserve");
  std::vector<std::string> allowed;
  app.set_version_flag("--version", "orxserve " ORXSERVE_VERSION);
  app.add_option("DIR", options->folder, "the folder, with all that is below it")->required();
  app.add_option("--db", options->database, "the media database; made when it is not there")
      ->type_name("FILE");
  app.add_option("--state", options->state,
                 "the folder for what the server remembers: ids, its own identity, the database")
      ->type_name("DIR");
  app.add_option("--name", options->name, "what clients call the server");
  app.add_option("--interface", options->interfaces, "be seen on this network interface alone")
      ->type_name("IF");
  CLI::Option* port = app.add_option("--port", options->port,
                                     "of HTTP; 8200, or any free one when that is taken; 0: any")
                          ->check(CLI::Range(0, 65535));
  app.add_option("--allow", allowed, "answer machines in this network, too, such as 10.1.0.0/16")
      ->type_name("CIDR");
  app.add_option("--rescan", options->rescanMinutes, "look for changes every so many minutes")
      ->type_name("MINUTES")
      ->check(CLI::Range(0, 525600));
  app.add_flag("--watch", options->watch, "look for changes some seconds after they are made");
  app.add_option("--card", options->cardMode, "DIR is a camera's card; share it in this mode")
      ->type_name("MODE")
      ->check(CLI::Range(0, 255));
  app.add_option("--profiles", options->profiles, "serve the protocolInfo entries in this file")
      ->type_name("FILE");
  app.add_option("--max-age", options->maxAge, "seconds that clients believe a notice")
      ->type_name("SECONDS")
      ->check(CLI::Range(60, 86400));
  app.add_option("--log", options->log, "add the log to this file")->type_name("FILE");
  app.add_flag("--verbose", options->verbose, "log what is scanned and found");
  app.footer("Example: orxserve ~/Pictures --watch");
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& help) {
    app.exit(help);
    return false;
  } catch (const CLI::ParseError& error) {
    throw Failure("{} (see orxserve --help)", error.what());
  }
  options->portIsGiven = port->count() != 0;
  for (const std::string& text : allowed) options->allowed.push_back(ParseAllowed(text));
  Complete(options);
  return true;
}

}  // namespace orxserve
