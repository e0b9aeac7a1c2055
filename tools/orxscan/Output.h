// How the command speaks: exit statuses, failures, and texts from files made fit to print.
#pragma once

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

namespace orxscan {

constexpr char kCannotWrite[] = "cannot write the output";

enum ExitStatus { kDone = 0, kFailed = 1, kCancelled = 130 };

// Ends the command with one line on standard error and the exit status kFailed.  Texts from outside
// that go into the line are made printable first.
class Failure : public std::runtime_error {
 public:
  template <typename... Arguments>
  explicit Failure(fmt::format_string<Arguments...> format, Arguments&&... arguments)
      : std::runtime_error(fmt::format(format, std::forward<Arguments>(arguments)...)) {}
};

// `text` as one line of valid UTF-8: control characters, characters that turn the direction of
// writing, and bytes that are no UTF-8 become "\x1b" or "\u202e".
std::string Printable(const std::string& text);

// Printable and in single quotes.
std::string Quoted(const std::string& text);

// The value on one line, or indented when `indent` is not negative.  Characters that Printable
// would replace are escaped, bytes that are no UTF-8 become U+FFFD.
std::string JsonText(const nlohmann::ordered_json& value, int indent = -1);
// Prints the value, indented, and a line end.
void PrintJson(const nlohmann::ordered_json& value);

// "0.012 s", "75.3 s"
std::string Seconds(double seconds);

// Writes "orxscan: " and the message, made printable, as a line on standard error.  Never throws:
// the stream may be closed.
void Complain(const std::string& message);

// Sees to it that all output has reached its place; a Failure when it has not.
void FinishOutput();

// "picture", "sound", "film", "folder" for the classes of the database.
const char* ClassName(int mediaClass);

}  // namespace orxscan
