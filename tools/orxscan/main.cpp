// orxscan: makes and keeps a media database of a folder.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <iterator>
#include <new>
#include <string>

#include "Commands.h"
#include "Output.h"
#include "StandardStreams.h"

namespace {

using namespace orxscan;

int Fail(const std::string& message, int status = kFailed) {
  Complain(message);
  return status;
}

// An empty text for an optional argument is a mistake, not the same as leaving the argument out:
// without its list, for one, share offers everything.
void RefuseEmptyTexts(const CLI::App& command) {
  for (const CLI::Option* option : command.get_options())
    for (const std::string& text : option->results())
      if (text.empty() && !option->get_required())
        throw Failure("{}: the text is empty (see orxscan --help)", option->get_name());
}

// What is said about a failure: a stream that takes no more says so in its own way.
std::string Described(const std::exception& failure) {
  if (ferror(stdout) != 0) return kCannotWrite;
  return dynamic_cast<const std::bad_alloc*>(&failure) != nullptr ? "out of memory"
                                                                  : failure.what();
}

int RunCommand(const Command& command) {
  try {
    RefuseEmptyTexts(*command.app);
    const int status = command.run();
    FinishOutput();
    return status;
  } catch (const std::exception& failure) {
    fflush(stdout);
    return Fail(Described(failure), command.failed);
  }
}

int Run(int argc, char** argv) {
  CLI::App app("Makes and keeps a media database of a folder of pictures, films and sounds.",
               "orxscan");
  app.set_version_flag("--version", "orxscan " ORXSCAN_VERSION);
  app.require_subcommand(1);
  app.footer(
      "Exit status: 0 done, 1 could not, or something that belongs in the database is not in it, "
      "130 cancelled; diff and check tell theirs.");
  const Command commands[] = {
      AddScanCommand(&app),  AddCardCommand(&app),       AddRegisterCommand(&app),
      AddInfoCommand(&app),  AddShowCommand(&app),       AddQueryCommand(&app),
      AddShareCommand(&app), AddBackupListCommand(&app), AddDumpCommand(&app),
      AddCheckCommand(&app), AddDiffCommand(&app),       AddSheetCommand(&app)};
  const auto isFirstArgument = [&](const Command& command) {
    return command.app->get_name() == argv[1];
  };
  const Command* const named =
      argc > 1 ? std::find_if(std::begin(commands), std::end(commands), isFirstArgument)
               : std::end(commands);
  if (argc > 1 && argv[1][0] != '-' && named == std::end(commands))
    return Fail(fmt::format("there is no command '{}' (see orxscan --help)", argv[1]));
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& help) {  // --help and --version
    app.exit(help);
    FinishOutput();
    return kDone;
  } catch (const CLI::ParseError& error) {
    return Fail(std::string(error.what()) + " (see orxscan --help)",
                named != std::end(commands) ? named->failed : kFailed);
  }
  for (const Command& command : commands)
    if (command.app->parsed()) return RunCommand(command);
  return kFailed;
}

}  // namespace

int main(int argc, char** argv) {
  if (!FillStandardStreams()) return kFailed;  // and there is nowhere to say why
  signal(SIGXFSZ, SIG_IGN);                    // a file that grows too large is a failed write
  try {
    return Run(argc, argv);
  } catch (const std::exception& failure) {
    fflush(stdout);
    return Fail(failure.what());
  }
}
