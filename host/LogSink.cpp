// The log service: every line is finished here and handed to one sink.
#include <cstdarg>
#include <cstdio>
#include <exception>
#include <memory>
#include <mutex>

#include "Platform/CameraPlatform.h"
#include "host/HostPlatform.h"

namespace {

constexpr int kLibraryId = 3;
constexpr char kLibraryTag[] = "DLNA";
constexpr int kPriorityError = 6;
constexpr char kOutOfMemory[] = "out of memory";  // short enough to need none itself

struct Sink {
  std::recursive_mutex mutex;  // recursive: a sink may log
  std::shared_ptr<const HostPlatform::LogSink> function;
};

// Never destroyed: a thread may log while the process ends.
Sink& TheSink() {
  static Sink* sink = new Sink;
  return *sink;
}

void WriteUncopiedErrors(int id, int priority, const std::string& tag, const std::string& line) {
  const bool copied = id == kLibraryId && tag == kLibraryTag;
  if (priority < kPriorityError || copied) return;
  const bool ended = !line.empty() && line.back() == '\n';
  fprintf(stderr, "[%-10s] %s%s", tag.c_str(), line.c_str(), ended ? "" : "\n");
}

void Deliver(int id, int priority, const std::string& tag, const std::string& line) {
  Sink& sink = TheSink();
  const std::lock_guard<std::recursive_mutex> lock(sink.mutex);
  const auto function = sink.function;  // survives a sink that sets another one
  if (function != nullptr) {
    (*function)(id, priority, tag, line);
  } else {
    WriteUncopiedErrors(id, priority, tag, line);
  }
}

}  // namespace

void HostPlatform::SetLogSink(LogSink function) {
  Sink& sink = TheSink();
  const std::lock_guard<std::recursive_mutex> lock(sink.mutex);
  sink.function = function ? std::make_shared<const LogSink>(std::move(function)) : nullptr;
}

int __dlog_print(int logId, int priority, const char* tag, const char* format, ...) {
  if (format == nullptr) return -1;
  va_list arguments;
  va_start(arguments, format);
  const int length = vsnprintf(nullptr, 0, format, arguments);
  va_end(arguments);
  if (length < 0) return -1;
  std::string line;
  try {
    line.resize(static_cast<size_t>(length));
    va_start(arguments, format);
    vsnprintf(line.data(), line.size() + 1, format, arguments);
    va_end(arguments);
  } catch (const std::exception&) {  // the line is lost, but not that there was one
    line = kOutOfMemory;
    priority = kPriorityError;
  }
  try {
    Deliver(logId, priority, tag != nullptr ? tag : "", line);
  } catch (...) {  // nothing may be thrown into the library
    return -1;
  }
  return 0;
}
