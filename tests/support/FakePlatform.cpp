#include "support/FakePlatform.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace orx_test {
namespace {

// What stands between the colour prefix and the suffix of a line.
std::string Uncoloured(const std::string& buffer) {
  const std::string suffix = "\x1b[m\n";
  std::string text = buffer;
  for (const std::string prefix : {"\x1b[31m", "\x1b[m"})
    if (text.compare(0, prefix.size(), prefix) == 0) {
      text.erase(0, prefix.size());
      break;
    }
  if (text.size() >= suffix.size() &&
      text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0)
    text.erase(text.size() - suffix.size());
  return text;
}

std::vector<char> uriBuffer;

bool SizeOnDisk(const char* path, long long* size) {
  struct stat64 status = {};
  if (stat64(path, &status) != 0) return false;
  *size = status.st_size;
  return true;
}

// The answer of a call that fails half way: what it left in the record is nobody's attributes.
template <typename Attributes>
int FailTo(Attributes* out) {
  memset(out, 'Z', sizeof *out);
  return 0;
}

}  // namespace

FakePlatform& FakePlatform::Get() {
  static FakePlatform platform;
  return platform;
}

FakePlatform& FakePlatform::Reset() {
  Get() = FakePlatform();
  return Get();
}

std::vector<std::string> FakePlatform::Messages(const std::string& tag) const {
  std::vector<std::string> messages;
  for (const LogLine& line : log)
    if (tag.empty() || line.tag == tag) messages.push_back(line.message);
  return messages;
}

bool FakePlatform::Logged(const std::string& message) const { return Find(message) != nullptr; }

int FakePlatform::CountLogged(const std::string& message) const {
  return static_cast<int>(std::count_if(
      log.begin(), log.end(), [&](const LogLine& line) { return line.message == message; }));
}

const LogLine* FakePlatform::Find(const std::string& message) const {
  for (const LogLine& line : log)
    if (line.message == message) return &line;
  return nullptr;
}

}  // namespace orx_test

using orx_test::FakePlatform;

extern "C" {

int __dlog_print(int logId, int priority, const char* tag, const char* format, ...) {
  if (strcmp(format, "%s: %s(%d) > %s") != 0) abort();
  va_list arguments;
  va_start(arguments, format);
  orx_test::LogLine line;
  line.logId = logId;
  line.priority = priority;
  line.tag = tag;
  line.source = va_arg(arguments, const char*);
  line.function = va_arg(arguments, const char*);
  line.line = va_arg(arguments, int);
  line.buffer = va_arg(arguments, const char*);
  va_end(arguments);
  line.message = orx_test::Uncoloured(line.buffer);
  FakePlatform& platform = FakePlatform::Get();
  platform.log.push_back(line);
  if (platform.onLog != nullptr) platform.onLog(line);
  return 0;
}

int GetTandemixMode(void) { return FakePlatform::Get().sharingMode; }

int QUILWifi_getFileCount(void) { return static_cast<int>(FakePlatform::Get().sharedFiles.size()); }

int QUILWifi_getURIFromIndex(int index, char*& uri) {
  FakePlatform& platform = FakePlatform::Get();
  if (platform.onUri != nullptr) platform.onUri(index);
  uri = nullptr;
  const auto& file = platform.sharedFiles.at(static_cast<size_t>(index));
  if (file.fails) return platform.uriFailure;
  if (file.null) return 0;
  orx_test::uriBuffer.assign(file.uri.c_str(), file.uri.c_str() + file.uri.size() + 1);
  uri = orx_test::uriBuffer.data();
  return 0;
}

int QUILWifi_getFileType(char* uri) {
  for (const auto& file : FakePlatform::Get().sharedFiles)
    if (file.uri == uri) return file.type;
  return 1;
}

int QUILWifi_getFileAttribute(char* path, sFileAttribute* out) {
  FakePlatform& platform = FakePlatform::Get();
  platform.attributePaths.emplace_back(path);
  if (!platform.fileAttributeSucceeds && !platform.attributesFromDisk) return orx_test::FailTo(out);
  *out = platform.fileAttribute;
  if (platform.attributesFromDisk) return orx_test::SizeOnDisk(path, &out->nFileSize) ? 1 : 0;
  return 1;
}

int QUILWifi_getVideoAttribute(char* path, sVideoAttribute* out) {
  FakePlatform& platform = FakePlatform::Get();
  platform.videoPaths.emplace_back(path);
  if (!platform.videoAttributeSucceeds && !platform.attributesFromDisk)
    return orx_test::FailTo(out);
  *out = platform.videoAttribute;
  if (platform.attributesFromDisk) return orx_test::SizeOnDisk(path, &out->nFileSize) ? 1 : 0;
  return 1;
}

int QUILWifi_getJpegScreennailInfo(char* path, int* width, int* height, int* offset, int* length) {
  FakePlatform& platform = FakePlatform::Get();
  platform.screennailPaths.emplace_back(path);
  *width = platform.screennailWidth;
  *height = platform.screennailHeight;
  *offset = platform.screennailOffset;
  *length = platform.screennailLength;
  return platform.screennailResult;
}

long long ORXGetFileSize(const char* path) {
  FakePlatform& platform = FakePlatform::Get();
  if (!platform.fileSizeFromDisk) return platform.fileSize;
  long long size = 0;
  return orx_test::SizeOnDisk(path, &size) ? size : 0;
}

int ORXGetDlnaCertificationState(void) { return FakePlatform::Get().certificationState; }

}  // extern "C"
