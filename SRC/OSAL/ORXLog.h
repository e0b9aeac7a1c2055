// The one way in which the library writes to the platform's log.
//
// A line carries the source file, the function, the line number and the message, coloured and ended
// by a newline.  The message is cut at 247 bytes (info) or 245 bytes (error); one trailing newline
// of it is dropped.  Error lines go to standard error as well.  Timing lines, under a tag of their
// own, begin with the monotonic clock and come in start/stop pairs around a long operation.
#pragma once

#include "Platform/Export.h"

namespace orx {

enum class LogLevel { kInfo, kError };

// The part of `path` after its last '/'.
constexpr const char* SourceName(const char* path) {
  const char* name = path;
  for (const char* p = path; *p != '\0'; ++p)
    if (*p == '/') name = p + 1;
  return name;
}

// Writes one line.  Use the macros below, which fill in the call site.
ORX_API void WriteLogLine(LogLevel level, const char* source, const char* function, int line,
                          const char* format, ...) __attribute__((format(printf, 5, 6)));
ORX_API void WriteTimingLine(const char* source, const char* function, int line, const char* label);

}  // namespace orx

#define ORX_LOG_INFO(...)                                                                      \
  ::orx::WriteLogLine(::orx::LogLevel::kInfo, ::orx::SourceName(__FILE__), __func__, __LINE__, \
                      __VA_ARGS__)
#define ORX_LOG_ERROR(...)                                                                      \
  ::orx::WriteLogLine(::orx::LogLevel::kError, ::orx::SourceName(__FILE__), __func__, __LINE__, \
                      __VA_ARGS__)
// `label` is the whole text after the time stamp, e.g. ">>>> FILE_URI start".
#define ORX_LOG_TIME(label) \
  ::orx::WriteTimingLine(::orx::SourceName(__FILE__), __func__, __LINE__, label)
