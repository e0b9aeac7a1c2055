#include "OSAL/UniqueValueGenerator.h"

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

// Whole seconds of processor time, in milliseconds.  Not from clock(), whose microseconds wrap
// after 36 minutes where `long` has 32 bits; the milliseconds start again at 0 before they would.
long CoarseTime() {
  constexpr long long kSecondsInLong = std::numeric_limits<int32_t>::max() / 1000;
  timespec used = {};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
  return static_cast<long>(used.tv_sec % kSecondsInLong) * 1000;
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
