#include "OSAL/ORXLog.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "Platform/CameraPlatform.h"

namespace orx {
namespace {

constexpr int kLogId = 3;
constexpr int kPriorityInfo = 4;
constexpr int kPriorityError = 6;
constexpr char kTag[] = "DLNA";
constexpr char kTimeTag[] = "DLNA_TIME";
constexpr char kLineFormat[] = "%s: %s(%d) > %s";

constexpr size_t kBufferSize = 256;
constexpr size_t kInfoLimit = 248;    // bytes for the message, terminator included
constexpr size_t kErrorLimit = 246;   // likewise; the colour prefix is two bytes longer
constexpr size_t kTimingLimit = 251;  // bytes for the whole text, terminator included

constexpr char kInfoPrefix[] = "\x1b[m";
constexpr char kErrorPrefix[] = "\x1b[31m";
constexpr char kSuffix[] = "\x1b[m\n";

// Drops one trailing newline, so that messages written with and without one look alike.
void FinishLine(char* buffer) {
  size_t length = strlen(buffer);
  if (length > 0 && buffer[length - 1] == '\n') --length;
  memcpy(buffer + length, kSuffix, sizeof kSuffix);
}

}  // namespace

void WriteLogLine(LogLevel level, const char* source, const char* function, int line,
                  const char* format, ...) {
  const bool error = level == LogLevel::kError;
  const char* prefix = error ? kErrorPrefix : kInfoPrefix;
  char buffer[kBufferSize] = {};
  const size_t start = strlen(prefix);
  memcpy(buffer, prefix, start);

  va_list arguments;
  va_start(arguments, format);
  vsnprintf(buffer + start, error ? kErrorLimit : kInfoLimit, format, arguments);
  va_end(arguments);
  FinishLine(buffer);

  __dlog_print(kLogId, error ? kPriorityError : kPriorityInfo, kTag, kLineFormat, source, function,
               line, buffer);
  if (error) fprintf(stderr, "[%-10s] %s", kTag, buffer);
}

void WriteTimingLine(const char* source, const char* function, int line, const char* label) {
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  char buffer[kBufferSize] = {};
  snprintf(buffer, kTimingLimit, "[%5ld.%09ld]\x1b[m%s", static_cast<long>(now.tv_sec),
           static_cast<long>(now.tv_nsec), label);
  FinishLine(buffer);
  __dlog_print(kLogId, kPriorityInfo, kTimeTag, kLineFormat, source, function, line, buffer);
}

}  // namespace orx
