#include "UpnpUtil/upnp_log.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "OSAL/FileOpening.h"

namespace {

constexpr int kBytesPerLine = 16;
constexpr int kHexColumn = 48;       // characters, three a byte
constexpr unsigned kLineSize = 69;   // bytes, terminator included
constexpr int kCriticalSize = 1024;  // bytes, terminator included

enum Level { kNormal = 0, kProblem = 1, kError = 2, kCritical = 3 };

struct Category {
  unsigned value;
  const char* prefix;
};

constexpr Category kCategories[] = {
    {1, "SYSTEM:"},    {2, "SSDP:"}, {4, "DB:"},       {8, "HTTP:"},   {16, "CLIENT-DB:"},
    {32, "EVENTING:"}, {64, "XML:"}, {128, "PLUGIN:"}, {256, "SCAN:"},
};

char fileName[1024];
unsigned mode = 0;
FILE* stream = nullptr;

FILE* Output() { return stream != nullptr ? stream : stdout; }

// Opens `path` for writing as fopen does, but never waits for the reader of a FIFO: one that has
// none does not open.  Lines then wait for a slow reader, so that none is lost.
FILE* OpenLog(const char* path, int flags, const char* form) {
  constexpr mode_t kEveryone = 0666;
  const int descriptor = open64(path, flags | O_CREAT | O_NONBLOCK, kEveryone);
  if (descriptor < 0) return nullptr;
  orx::LetBlock(descriptor);
  FILE* opened = fdopen(descriptor, form);
  if (opened == nullptr) close(descriptor);
  return opened;
}

void CloseFile() {
  if (stream != nullptr && stream != stdout) fclose(stream);
  stream = nullptr;
}

// Whether a message of this level and category is written.
bool Passes(int level, unsigned category) {
  return mode != 0 && (level != kNormal || upnp_log_enabled(category) != 0);
}

void WriteCritical(const char* format, va_list arguments) {
  char text[kCriticalSize];
  vsnprintf(text, sizeof text, format, arguments);
  printf("!!! CRITICAL ERROR!!!\n%s\n", text);
}

void WritePrefix(unsigned category, FILE* to) {
  for (const Category& known : kCategories)
    if (known.value == category) fputs(known.prefix, to);
}

void WriteDumpHeader(FILE* to) {
  for (int column = 0; column < kBytesPerLine; ++column) fprintf(to, "%02X ", column);
  fputs("\n      ", to);
  for (int column = 0; column < kBytesPerLine; ++column) fputs("===", to);
  fputc('\n', to);
}

}  // namespace

void upnp_log_init(const char* path) {
  fileName[0] = '\0';
  stream = stdout;
  if (path == nullptr) return;
  stream = OpenLog(path, O_RDWR | O_APPEND, "a+");
  snprintf(fileName, sizeof fileName, "%s", path);
  if (stream == nullptr) return;
  fputs("***** LOG INIT *****\n", stream);
  fflush(stream);
}

void upnp_log_set_mode(unsigned mask) { mode = mask; }

int upnp_log_enabled(unsigned mask) { return (mode & mask) == mask ? 1 : 0; }

const char* upnp_log_get_filename() { return fileName[0] != '\0' ? fileName : nullptr; }

void upnp_log_message(int level, unsigned category, const char* format, ...) {
  if (!Passes(level, category) || format == nullptr) return;
  va_list arguments;
  va_start(arguments, format);
  if (level == kProblem) fputs("[Problem]", Output());
  if (level == kError) fputs("[ERROR]", Output());
  if (level == kCritical) {
    va_list again;
    va_copy(again, arguments);
    WriteCritical(format, again);
    va_end(again);
  }
  WritePrefix(category, Output());
  vfprintf(Output(), format, arguments);
  va_end(arguments);
  if (stream != nullptr) fflush(stream);
}

void upnp_log_dump(int level, unsigned category, const char* data, int length) {
  if (data == nullptr || !Passes(level, category)) return;
  upnp_log_message(level, category, "DATA DUMP (%0d Bytes) :\n      ", length);
  WriteDumpHeader(Output());
  const auto* bytes = reinterpret_cast<const unsigned char*>(data);
  char line[kLineSize];
  for (int left = length, offset = 0; left > 0; left -= kBytesPerLine, offset += kBytesPerLine)
    fprintf(Output(), "%04X| %s", static_cast<unsigned>(offset),
            Hex_dump_line(line, bytes + offset, std::min(left, kBytesPerLine), sizeof line));
  fputc('\n', Output());
  if (stream != nullptr) fflush(stream);
}

char* Hex_dump_line(char* out, const unsigned char* data, int count, unsigned outSize) {
  if (out == nullptr) return out;
  count = data == nullptr ? 0 : std::clamp(count, 0, kBytesPerLine);

  // The first cell's terminator ends the column: readers of the logs know one value a line.
  char hex[kHexColumn + 1];
  if (count > 0)
    snprintf(hex, sizeof hex, "%02X", static_cast<unsigned>(data[0]));
  else
    snprintf(hex, sizeof hex, "%*s", kHexColumn, "");

  char text[kBytesPerLine + 1];
  memset(text, ' ', kBytesPerLine);
  text[kBytesPerLine] = '\0';
  for (int i = 0; i < count; ++i) text[i] = isprint(data[i]) ? static_cast<char>(data[i]) : '.';

  snprintf(out, outSize, "%s : %s\n", hex, text);
  return out;
}

void upnp_log_clear() {
  if (fileName[0] == '\0') return;
  CloseFile();
  stream = OpenLog(fileName, O_WRONLY | O_TRUNC, "w");
}

void upnp_log_exit() {
  if (fileName[0] == '\0') return;
  CloseFile();
  stream = stdout;
}
