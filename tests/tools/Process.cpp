#include "tools/Process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace orx_test {
namespace {

[[noreturn]] void Execute(const std::vector<std::string>& arguments) {
  std::vector<char*> argv;
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  execv(argv[0], argv.data());
  _exit(127);
}

int Wait(pid_t process) {
  int status = 0;
  while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// Adds what can be read; false at the end.
bool ReadSome(int descriptor, std::string* text) {
  char buffer[4096];
  ssize_t count = 0;
  while ((count = read(descriptor, buffer, sizeof buffer)) < 0 && errno == EINTR) {
  }
  if (count > 0) text->append(buffer, static_cast<size_t>(count));
  return count > 0;  // a terminal whose program has ended gives an error
}

}  // namespace

ProcessResult RunProcess(const std::vector<std::string>& arguments,
                         const std::vector<std::string>& environment,
                         const std::function<void()>& prepare) {
  ProcessResult result;
  int out[2], err[2];
  if (pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0) {
    ADD_FAILURE() << "pipe2 failed";
    return result;
  }
  const pid_t process = fork();
  if (process == 0) {
    dup2(out[1], STDOUT_FILENO);
    dup2(err[1], STDERR_FILENO);
    for (const std::string& entry : environment) putenv(const_cast<char*>(entry.c_str()));
    if (prepare) prepare();
    Execute(arguments);
  }
  close(out[1]);
  close(err[1]);
  pollfd ends[] = {{out[0], POLLIN, 0}, {err[0], POLLIN, 0}};
  std::string* const texts[] = {&result.output, &result.errors};
  while (ends[0].fd >= 0 || ends[1].fd >= 0) {
    if (poll(ends, 2, -1) < 0 && errno != EINTR) break;
    for (size_t i = 0; i < 2; ++i)
      if (ends[i].fd >= 0 && ends[i].revents != 0 && !ReadSome(ends[i].fd, texts[i]))
        ends[i].fd = -1;
  }
  close(out[0]);
  close(err[0]);
  result.status = Wait(process);
  return result;
}

ProcessResult RunOnTerminal(const std::vector<std::string>& arguments,
                            const std::function<void(const std::string&, Terminal)>& onOutput) {
  ProcessResult result;
  winsize size = {};
  size.ws_row = 24;
  size.ws_col = 100;
  int terminal = -1;
  const pid_t process = forkpty(&terminal, nullptr, nullptr, &size);
  if (process == 0) Execute(arguments);
  if (process < 0) {
    ADD_FAILURE() << "forkpty failed";
    return result;
  }
  while (ReadSome(terminal, &result.output))
    if (onOutput) onOutput(result.output, {process, terminal});
  close(terminal);
  result.status = Wait(process);
  return result;
}

}  // namespace orx_test
