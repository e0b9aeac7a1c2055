#include "OSAL/UniqueValueGenerator.h"

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <limits>

#include "OSAL/Fault.h"
#include "OSAL/StringUtiltiy.h"

UniqueValueGenerator* UniqueValueGenerator::instance_ = nullptr;

namespace {

constexpr size_t kNameSize = 512;  // bytes, terminator included
constexpr char kItem[] = "/orx";
constexpr char kThumbnail[] = "/orxthumb";
constexpr char kScreennail[] = "/orxscreen";
constexpr char kVideoThumbnail[] = "/orxthumbvideo";

constexpr int64_t kNanoseconds = 1000000000;  // in a second
constexpr int64_t kClockTolerance = 64;       // the clocks differ by less than a 64th

int64_t Now(clockid_t clock) {
  timespec now = {};
  clock_gettime(clock, &now);
  return now.tv_sec * kNanoseconds + now.tv_nsec;
}

// Whole seconds of processor time.  Asking for it is a system call, three for every picture; the
// time of day is not.  Processors together use up their time no faster than it passes for each, so
// until then the second that was read is still running.
int64_t ProcessorSeconds() {
  static const int64_t processors = std::max(sysconf(_SC_NPROCESSORS_CONF), 1L);
  static thread_local int64_t seconds = 0, readAgain = 0;
  const int64_t now = Now(CLOCK_MONOTONIC);
  if (now >= readAgain) {
    const int64_t used = Now(CLOCK_PROCESS_CPUTIME_ID);
    seconds = used / kNanoseconds;
    const int64_t left = kNanoseconds - used % kNanoseconds;
    readAgain = now + left / processors - left / processors / kClockTolerance;
  }
  return seconds;
}

// In milliseconds.  Not from clock(), whose microseconds wrap after 36 minutes where `long` has 32
// bits; the milliseconds start again at 0 before they would.
long CoarseTime() {
  constexpr int64_t kSecondsInLong = std::numeric_limits<int32_t>::max() / 1000;
  return static_cast<long>(ProcessorSeconds() % kSecondsInLong) * 1000;
}

const char* OrDefault(const char* text, const char* fallback) {
  return text != nullptr ? text : fallback;
}

}  // namespace

UniqueValueGenerator* UniqueValueGenerator::GetInstance() {
  if (instance_ == nullptr)
    instance_ = orx::Noted(new (std::nothrow) UniqueValueGenerator, __func__);
  return instance_;
}

void UniqueValueGenerator::DestroyInstance() {
  delete instance_;
  instance_ = nullptr;
}

char* UniqueValueGenerator::MakeName(const char* start, const char* ext) {
  char name[kNameSize] = {};
  ++counter_;
  snprintf(name, sizeof name, "%s%04d%ld.%s", start, counter_, CoarseTime(), OrDefault(ext, "bin"));
  return StringUtiltiy::GetUtf8FromTChar(name);
}

char* UniqueValueGenerator::MakeName(const char* start, const char* ext, const char* suffix) {
  char name[kNameSize] = {};
  ++counter_;
  snprintf(name, sizeof name, "%s%04d%06ld%s.%s", start, counter_, CoarseTime(),
           OrDefault(suffix, "0000000"), OrDefault(ext, "bin"));
  return StringUtiltiy::GetUtf8FromTChar(name);
}

char* UniqueValueGenerator::GetUniqueURIMA(const char* ext) { return MakeName(kItem, ext); }

char* UniqueValueGenerator::GetUniqueURIMA(const char* ext, const char* suffix) {
  return MakeName(kItem, ext, suffix);
}

char* UniqueValueGenerator::GetUniqueThumbnailURIMA(const char* ext) {
  return MakeName(kThumbnail, ext);
}

char* UniqueValueGenerator::GetUniqueThumbnailURIMA(const char* ext, const char* suffix) {
  return MakeName(kThumbnail, ext, suffix);
}

char* UniqueValueGenerator::GetUniqueThumbnailURIMAWithPrefix(const char* ext, const char* prefix) {
  return MakeName(OrDefault(prefix, kThumbnail), ext);
}

char* UniqueValueGenerator::GetUniqueScreennailURIMA(const char* ext) {
  return MakeName(kScreennail, ext);
}

char* UniqueValueGenerator::GetUniqueScreennailURIMA(const char* ext, const char* suffix) {
  return MakeName(kScreennail, ext, suffix);
}

char* UniqueValueGenerator::GetUniqueScreennailURIMAWithPrefix(const char* ext,
                                                               const char* prefix) {
  return MakeName(OrDefault(prefix, kScreennail), ext);
}

char* UniqueValueGenerator::GetUniqueVideoThumbnailURIMA(const char* ext) {
  return MakeName(kVideoThumbnail, ext);
}

char* UniqueValueGenerator::GetUniqueVideoThumbnailURIMA(const char* ext, const char* suffix) {
  return MakeName(kVideoThumbnail, ext, suffix);
}
