// The subcommands.  Each adds itself to the command line and returns what is to be run when it was
// chosen; that returns the exit status.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace orxscan {

struct Command {
  CLI::App* app;
  std::function<int()> run;
  int failed = 1;  // the exit status when it could not run
};

Command AddScanCommand(CLI::App* parent);
Command AddCardCommand(CLI::App* parent);
Command AddRegisterCommand(CLI::App* parent);
Command AddInfoCommand(CLI::App* parent);
Command AddShowCommand(CLI::App* parent);
Command AddQueryCommand(CLI::App* parent);
Command AddShareCommand(CLI::App* parent);
Command AddBackupListCommand(CLI::App* parent);
Command AddDumpCommand(CLI::App* parent);
Command AddCheckCommand(CLI::App* parent);
Command AddDiffCommand(CLI::App* parent);
Command AddSheetCommand(CLI::App* parent);

}  // namespace orxscan
