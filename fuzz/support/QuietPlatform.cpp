#include "fuzz/support/QuietPlatform.h"

#include <cstdarg>
#include <cstdio>

namespace orx_test {

QuietPlatform& QuietPlatform::Get() {
  static QuietPlatform platform;
  return platform;
}

QuietPlatform& QuietPlatform::Reset() {
  Get() = QuietPlatform();
  return Get();
}

}  // namespace orx_test

using orx_test::QuietPlatform;

extern "C" {

int __dlog_print(int /*logId*/, int priority, const char* /*tag*/, const char* format, ...) {
  constexpr int kError = 6;
  QuietPlatform& platform = QuietPlatform::Get();
  ++platform.lines;
  if (priority != kError && platform.onLine == nullptr) return 0;
  char line[sizeof platform.lastError];
  va_list arguments;
  va_start(arguments, format);
  vsnprintf(line, sizeof line, format, arguments);
  va_end(arguments);
  if (priority == kError) {
    ++platform.errorLines;
    snprintf(platform.lastError, sizeof platform.lastError, "%s", line);
  }
  if (platform.onLine != nullptr) platform.onLine(line);
  return 0;
}

int GetTandemixMode(void) { return QuietPlatform::Get().sharingMode; }

int QUILWifi_getFileCount(void) { return QuietPlatform::Get().fileCount; }

int QUILWifi_getURIFromIndex(int index, char*& uri) {
  uri = nullptr;
  const QuietPlatform& platform = QuietPlatform::Get();
  return platform.uri != nullptr ? platform.uri(index, &uri) : -1;
}

int QUILWifi_getFileType(char* uri) {
  const QuietPlatform& platform = QuietPlatform::Get();
  return platform.fileType != nullptr ? platform.fileType(uri) : 1;
}

int QUILWifi_getFileAttribute(char* path, sFileAttribute* out) {
  const QuietPlatform& platform = QuietPlatform::Get();
  *out = platform.fileAttribute;
  if (platform.sizeOf != nullptr) out->nFileSize = platform.sizeOf(path);
  return platform.attributesSucceed ? 1 : 0;
}

int QUILWifi_getVideoAttribute(char* path, sVideoAttribute* out) {
  const QuietPlatform& platform = QuietPlatform::Get();
  *out = platform.videoAttribute;
  if (platform.sizeOf != nullptr) out->nFileSize = platform.sizeOf(path);
  return platform.attributesSucceed ? 1 : 0;
}

int QUILWifi_getJpegScreennailInfo(char* path, int* width, int* height, int* offset, int* length) {
  const QuietPlatform& platform = QuietPlatform::Get();
  if (platform.findScreennail != nullptr && !platform.findScreennail(path)) return 0;
  *width = platform.screennail[0];
  *height = platform.screennail[1];
  *offset = platform.screennail[2];
  *length = platform.screennail[3];
  return platform.attributesSucceed ? 1 : 0;
}

long long ORXGetFileSize(const char* /*path*/) { return QuietPlatform::Get().fileSize; }

int ORXGetDlnaCertificationState(void) { return QuietPlatform::Get().certificationState; }

}  // extern "C"
