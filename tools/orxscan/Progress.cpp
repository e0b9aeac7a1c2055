#include "Progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>

#include "Output.h"

namespace orxscan {
namespace {

constexpr auto kDrawInterval = std::chrono::milliseconds(80);
constexpr size_t kUsualColumns = 80;
constexpr size_t kFewestColumns = 20;

size_t TerminalColumns() {
  winsize size = {};
  const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return std::max<size_t>(known ? size.ws_col : kUsualColumns, kFewestColumns);
}

bool ContinuesCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

size_t Columns(const std::string& text) {
  return text.size() -
         static_cast<size_t>(std::count_if(text.begin(), text.end(), ContinuesCharacter));
}

// The last `columns` characters of a text that is too long, with "..." before them.
std::string Ending(const std::string& text, size_t columns) {
  if (Columns(text) <= columns) return text;
  if (columns <= 3) return "";
  size_t at = text.size();
  for (size_t left = columns - 3; left > 0; --left) do
      --at;
    while (ContinuesCharacter(text[at]));
  return "..." + text.substr(at);
}

bool StartsWith(const std::string& text, const std::string& start) {
  return text.compare(0, start.size(), start) == 0;
}

// The text between `start` and the last `end`; false when `text` does not begin with `start`.  The
// library cuts long lines, so the end may be missing.
bool Between(const std::string& text, const std::string& start, const std::string& end,
             std::string* found) {
  if (!StartsWith(text, start)) return false;
  const size_t last = text.rfind(end);
  const bool whole = last != std::string::npos && last >= start.size();
  *found = text.substr(start.size(), whole ? last - start.size() : std::string::npos);
  return true;
}

}  // namespace

Progress::Progress(bool wanted, const std::string& folder, size_t found, size_t known)
    : active_(wanted && isatty(STDOUT_FILENO) == 1), folder_(folder), found_(found), done_(known) {
  if (active_) Draw();
}

void Progress::Follow(const LogLine& line) {
  if (!active_) return;
  std::string text;
  if (Between(line.message, "[DirectoryScanner::_ScanDir] DIRECTORY '", "'", &text)) {
    FileEnded();
    folder_ = text;
  } else if (StartsWith(line.message, "[DirectoryScanner::HandleFile] ")) {  // refused
    if (current_.empty()) ++done_;
    FileEnded();
  } else if (Between(line.message, "[FileParser_MP4::__ExtractMetadata] Parsing [", "]", &text) ||
             Between(line.message, "[FileParser_JPEG::__ExtractMetadata] Parsing [", "]", &text)) {
    if (text == current_) return;  // a second parser tries it, or it failed
    FileEnded();
    current_ = text;
    const size_t slash = text.rfind('/');
    if (slash != std::string::npos && slash > 0) folder_ = text.substr(0, slash);
  } else {
    return;
  }
  if (std::chrono::steady_clock::now() - lastDraw_ >= kDrawInterval) Draw();
}

void Progress::FileAdded() {
  ++done_;
  if (active_ && std::chrono::steady_clock::now() - lastDraw_ >= kDrawInterval) Draw();
}

void Progress::Finish() {
  if (!active_) return;
  FileEnded();
  Draw();
  Write("");
  Write("");  // leaves the cursor at the start of an empty line
  active_ = false;
}

void Progress::FileEnded() {
  if (!current_.empty()) ++done_;
  current_.clear();
}

void Progress::Draw() {
  lastDraw_ = std::chrono::steady_clock::now();
  const std::string count = fmt::format("{} of {} files  ", std::min(done_, found_), found_);
  const size_t columns = TerminalColumns() - 1;
  Write(count + Ending(Printable(folder_), columns - std::min(columns, count.size())));
}

void Progress::Write(const std::string& line) {
  const size_t columns = Columns(line);
  std::string text = "\r" + line;
  if (columns < drawn_) text.append(drawn_ - columns, ' ');
  drawn_ = columns;
  // A terminal that takes no more misses this line; the next one comes.
  if (write(STDOUT_FILENO, text.data(), text.size()) < 0) return;
}

}  // namespace orxscan
