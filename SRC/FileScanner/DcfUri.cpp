#include "FileScanner/DcfUri.h"

#include <algorithm>
#include <cstring>

#include "OSAL/ORXAString.h"
#include "OSAL/ORXLog.h"
#include "Platform/CameraPlatform.h"

namespace orx {
namespace {

struct Piece {
  size_t position;
  size_t length;
};

constexpr size_t kPathPosition = 8;
constexpr Piece kDirectoryName = {14, 8};
constexpr Piece kDirectoryNumber = {14, 3};
constexpr Piece kFileNumber = {27, 4};
constexpr size_t kExtensionPosition = 31;
constexpr size_t kFileNamePosition = 23;

constexpr int kFilesPerDirectory = 10000;

std::string_view PieceOf(std::string_view text, Piece piece) {
  if (text.size() < piece.position || text.size() - piece.position < piece.length) return {};
  return text.substr(piece.position, piece.length);
}

std::string_view Tail(std::string_view text, size_t position) {
  return text.size() > position ? text.substr(position) : std::string_view();
}

int Decimal(std::string_view digits) { return ORXAString::Integer(std::string(digits).c_str()); }

int SortNumber(std::string_view uri) {
  const std::string_view fileNumber = PieceOf(uri, kFileNumber);
  if (fileNumber.empty()) return 0;
  return Decimal(PieceOf(uri, kDirectoryNumber)) * kFilesPerDirectory + Decimal(fileNumber);
}

}  // namespace

DcfEntry ParseDcfUri(const char* uri) {
  const std::string_view text(uri);
  DcfEntry entry;
  entry.path = Tail(text, kPathPosition);
  entry.directoryName = PieceOf(text, kDirectoryName);
  entry.sortNumber = SortNumber(text);
  return entry;
}

const char* DcfUriExtension(const char* uri) {
  const size_t length = strlen(uri);
  return uri + (length < kExtensionPosition ? length : kExtensionPosition);
}

void ReplaceUriEnding(char* uri, std::string_view ending) {
  const size_t length = strlen(uri);
  if (length >= ending.size()) memcpy(uri + length - ending.size(), ending.data(), ending.size());
}

std::string_view DirectoryNameInDcfPath(std::string_view path) {
  return PieceOf(path, {kDirectoryName.position - kPathPosition, kDirectoryName.length});
}

std::string_view FileNameInDcfPath(std::string_view path) {
  return Tail(path, kFileNamePosition - kPathPosition);
}

DcfKind DcfKindOf(const char* extension) {
  const std::string_view text(extension != nullptr ? extension : "");
  if (text == ".KRZ") return DcfKind::kRaw;
  if (text == ".MPO") return DcfKind::kMultiPicture;
  if (text == ".MP4" || text == ".AVI") return DcfKind::kFilm;
  return DcfKind::kOther;
}

DLNA_FILE_TYPE FileTypeFromPlatform(int platformType) {
  constexpr int kHighestCode = 9;
  if (platformType < 0 || platformType > kHighestCode) return DLNA_FILE_TYPE_IMAGE;
  return static_cast<DLNA_FILE_TYPE>(platformType);
}

DLNA_FILE_TYPE PlatformFileType(const char* uri) {
  if (uri == nullptr) return DLNA_FILE_TYPE_IMAGE;
  return FileTypeFromPlatform(QUILWifi_getFileType(const_cast<char*>(uri)));  // it only reads
}

int SharedFileCount() { return std::max(0, QUILWifi_getFileCount()); }

char* SharedUriAt(int index) {
  char* uri = nullptr;
  const int code = QUILWifi_getURIFromIndex(index, uri);
  if (code < 0) {
    ORX_LOG_ERROR("Error : getURIFromIndex res = %d\n", code);
    return nullptr;
  }
  if (uri == nullptr) ORX_LOG_ERROR("Error : szURI is NULL !!!");
  return uri;
}

void SharedFileLists::Append(const DcfEntry& entry, int index, DLNA_FILE_TYPE type,
                             std::string* directoryName) const {
  if (entry.directoryName != *directoryName) {
    *directoryName = entry.directoryName;
    directoryNames->push_back(entry.directoryName);
  }
  AppendFile(entry, index, type);
}

void SharedFileLists::AppendFile(const DcfEntry& entry, int index, DLNA_FILE_TYPE type) const {
  paths->push_back(entry.path);
  sortNumbers->push_back(entry.sortNumber);
  platformIndexes->push_back(index);
  types->push_back(type);
}

void SharedFileLists::EraseOldest(int count) const {
  sortNumbers->erase(sortNumbers->begin(), sortNumbers->begin() + count);
  types->erase(types->begin(), types->begin() + count);
  paths->erase(paths->begin(), paths->begin() + count);
  platformIndexes->erase(platformIndexes->begin(), platformIndexes->begin() + count);
}

}  // namespace orx
