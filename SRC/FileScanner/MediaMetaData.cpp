#include "FileScanner/MediaMetaData.h"

#include <string>
#include <string_view>

#include "FileScanner/MediaRes.h"
#include "OSAL/Fault.h"
#include "OSAL/ORXCString.h"

namespace {

constexpr char kNoTitle[] = "No Title";
constexpr char kNoFileNumber[] = "0000";
constexpr size_t kFreeTextLength = 4;   // of a DCF file name, before its number
constexpr size_t kDirectoryDigits = 3;  // of a DCF folder name
constexpr size_t kLongestFileNumber = 5;

std::string_view CutAtLast(std::string_view text, char c) { return text.substr(0, text.rfind(c)); }

std::string_view AfterLast(std::string_view text, char c) {
  return text.substr(text.rfind(c) + 1);  // npos + 1 is 0: the whole text
}

char* NewText(std::string_view text, std::string_view behind = {}) {
  return orx::Guarded(__func__, static_cast<char*>(nullptr), [=] {
    return ORXCString::DupCopy(std::string(text).append(behind).c_str());
  });
}

// The number part of a DCF file name; "0000" when nothing stands before the extension.
std::string_view FileNumber(std::string_view fileName) {
  const std::string_view stem = CutAtLast(fileName, '.');
  if (stem.empty()) return kNoFileNumber;
  return stem.size() > kFreeTextLength ? stem.substr(kFreeTextLength) : std::string_view();
}

}  // namespace

MediaMetaData::~MediaMetaData() {
  delete Res_;
  delete OptionalRes_;
}

char* MediaMetaData::GetTitleFromFullPath(const char* path) {
  if (path == nullptr) return nullptr;
  const std::string_view whole(path);
  if (whole.find('/') == std::string_view::npos) return NewText(whole);
  const std::string_view stem = CutAtLast(AfterLast(whole, '/'), '.');
  return NewText(stem.empty() ? kNoTitle : stem);
}

char* MediaMetaData::GetSortIndexFromFullPath(const char* path) {
  if (path == nullptr) return nullptr;
  const std::string_view whole(path);
  if (whole.find('/') == std::string_view::npos) return NewText(whole);
  const std::string_view directory = CutAtLast(whole, '/');
  if (directory.find('/') == std::string_view::npos) return NewText(directory);

  const std::string_view fileNumber = FileNumber(AfterLast(whole, '/'));
  const std::string_view directoryNumber = AfterLast(directory, '/').substr(0, kDirectoryDigits);
  if (directoryNumber.empty() || fileNumber.empty() || fileNumber.size() > kLongestFileNumber)
    return nullptr;
  return NewText(directoryNumber, fileNumber);
}
