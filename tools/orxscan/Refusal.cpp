#include "Refusal.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "FileScanner/AudioMetaData.h"
#include "FileScanner/DirectoryScanner.h"
#include "FileScanner/FileInfomation.h"
#include "FileScanner/FileParserFramework.h"
#include "FileScanner/ImageMetaData.h"
#include "FileScanner/MediaMetaData.h"
#include "FileScanner/VideoMetaData.h"
#include "Library.h"
#include "MediaReaders/exif_reader.h"
#include "Output.h"

namespace orxscan {
namespace {

constexpr const char* kPictures[] = {"jpg", "jpeg", "mpo", "krz"};
constexpr const char* kFilmsAndSounds[] = {"m4a", "adts", "m4b", "mp4", "3gp",
                                           "aac", "ac3",  "m4v", "mov", "avi"};
constexpr const char* kWithoutReader[] = {"mp3", "wmv", "wma", "wav", "mpeg", "mpg"};

constexpr size_t kMostRefusalsPrinted = 100;  // a terminal's worth; --json has them all

template <size_t kCount>
bool IsOneOf(const std::string& extension, const char* const (&list)[kCount]) {
  return std::find(std::begin(list), std::end(list), extension) != std::end(list);
}

// In lower case, empty when there is none.
std::string Extension(const std::string& path) {
  const size_t at = path.find_last_of("./");
  if (at == std::string::npos || path[at] == '/') return "";
  std::string extension = path.substr(at + 1);
  for (char& c : extension) c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
  return extension;
}

bool BeginsLikeAJpeg(const std::string& path) {
  std::array<unsigned char, 3> start = {};
  FILE* file = fopen(path.c_str(), "re");
  if (file == nullptr) return false;
  const size_t count = fread(start.data(), 1, start.size(), file);
  fclose(file);
  return count == start.size() && start[0] == 0xFF && start[1] == 0xD8 && start[2] == 0xFF;
}

std::string WhyNoPicture(const std::string& path) {
  if (!BeginsLikeAJpeg(path)) return "not a JPEG picture";
  ExifData data = {};
  const bool readable = exif_get_metadata_orig(path.c_str(), &data) == 1;
  const bool markedThumbnail = readable && data.ThumbnailLength == 1;
  exif_free_metadata(&data);
  free(data.UserComment);
  if (markedThumbnail) return "its thumbnail is one byte long";
  return readable ? "the picture cannot be read" : "no readable EXIF block";
}

std::string WhyNotParsed(const std::string& path) {
  const std::string extension = Extension(path);
  if (IsOneOf(extension, kPictures)) return WhyNoPicture(path);
  if (IsOneOf(extension, kFilmsAndSounds)) return "no film or sound track found in it";
  if (IsOneOf(extension, kWithoutReader)) return fmt::format("no reader for .{} files", extension);
  return "not recognised as a picture, film or sound";
}

bool HasDoubleQuote(const char* text) { return text != nullptr && strchr(text, '"') != nullptr; }

// The database takes no text with a double quote in it.
std::string WhyNotStored(const MediaMetaData& record, const std::string& path) {
  if (HasDoubleQuote(path.c_str())) return "its path has a double quote in it";
  const auto* picture = dynamic_cast<const ImageMetaData*>(&record);
  if (picture != nullptr && HasDoubleQuote(picture->GetDescription()))
    return "its description has a double quote in it";
  const auto* film = dynamic_cast<const VideoMetaData*>(&record);
  const auto* sound =
      film != nullptr ? film->GetAudioData() : dynamic_cast<const AudioMetaData*>(&record);
  if (sound != nullptr &&
      (HasDoubleQuote(sound->GetArtist()) || HasDoubleQuote(sound->GetAlbumTitle())))
    return "its artist or album has a double quote in it";
  return "";
}

bool IsGone(int error) { return error == ENOENT || error == ENOTDIR || error == ELOOP; }

// Nobody can say what is in a file that cannot be read, unless its kind has no reader anyway.
Reason Unreadable(const std::string& path, int error) {
  return {fmt::format("cannot be read: {}", strerror(error)),
          !IsOneOf(Extension(path), kWithoutReader)};
}

struct CloseDescriptor {
  int descriptor;
  ~CloseDescriptor() { close(descriptor); }
};

// What the file system has against it; nothing for a readable file with content.
Reason WhyNotReadable(const std::string& path) {
  struct stat64 status = {};
  if (stat64(path.c_str(), &status) != 0)
    return IsGone(errno) ? Reason{strerror(errno)} : Unreadable(path, errno);
  if (!S_ISREG(status.st_mode)) return {"not a regular file"};
  const int descriptor = open64(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (descriptor < 0) return IsGone(errno) ? Reason{strerror(errno)} : Unreadable(path, errno);
  const CloseDescriptor end{descriptor};
  if (status.st_size == 0) return {"the file is empty"};
  char first = 0;
  if (pread64(descriptor, &first, 1, 0) < 0) return Unreadable(path, errno);
  return {};
}

std::string WhyNotServed(DirectoryScanner* scanner, MediaMetaData* record) {
  if (scanner->CheckMediaFileForDLNAContent(record) != 0) return "";
  const char* mimeType = record->GetMimeType();
  return mimeType != nullptr ? fmt::format("its MIME type, {}, is not served", mimeType)
                             : "it has no MIME type to be served by";
}

// What the machine failed in while a file was looked at; empty: nothing.
std::string FailureAt(const LibraryErrors& errors, const std::string& path) {
  const auto found = errors.failures().find(path);
  if (found != errors.failures().end()) return "cannot be read: " + found->second;
  return errors.outOfMemory() ? "out of memory" : "";
}

}  // namespace

Reason ReasonToRefuse(DirectoryScanner* scanner, const std::string& path,
                      const QuietLibrary& library) {
  Reason unreadable = WhyNotReadable(path);
  if (!unreadable.text.empty()) return unreadable;
  const size_t slash = path.rfind('/');
  const FileInfomation file(path.substr(0, slash).c_str(), path.c_str() + slash + 1, path.c_str());
  const std::unique_ptr<MediaMetaData> record(scanner->_GetFMParserFramework()->HandleFile(&file));
  const std::string failure = FailureAt(library.errors(), path);
  if (!failure.empty()) return {failure, true};
  if (record == nullptr) return {WhyNotParsed(path)};
  const std::string unserved = WhyNotServed(scanner, record.get());
  return {!unserved.empty() ? unserved : WhyNotStored(*record, path)};
}

Reason WithScanErrors(Reason reason, const std::string& path, const LibraryErrors& errors) {
  if (!reason.text.empty()) return reason;
  const std::string failure = FailureAt(errors, path);
  return {!failure.empty() ? failure : "the database did not take it", true};
}

LeftOut FilesLeftOut(DirectoryScanner* scanner, const FolderTree& tree,
                     const std::set<std::string>& registered, const LibraryErrors& errors) {
  LeftOut leftOut;
  for (const UnreadEntry& entry : tree.unread)
    leftOut.missing.push_back({entry.path, entry.reason});
  for (const FoundFile& file : tree.files) {
    if (registered.count(file.path) != 0) continue;
    const QuietLibrary library;
    const Reason reason =
        !file.reachable
            ? Reason{"its path is too long"}
            : WithScanErrors(ReasonToRefuse(scanner, file.path, library), file.path, errors);
    (reason.missing ? leftOut.missing : leftOut.refused).push_back({file.path, reason.text});
  }
  return leftOut;
}

void AddFailures(const LibraryErrors& errors, std::vector<Refusal>* missing) {
  std::set<std::string> told;
  for (const Refusal& refusal : *missing) told.insert(refusal.path);
  for (const auto& [path, reason] : errors.failures())
    if (told.count(path) == 0) missing->push_back({path.empty() ? "the database" : path, reason});
  if (errors.furtherFailures() > 0)
    missing->push_back({fmt::format("{} more", errors.furtherFailures()), "cannot be read"});
  if (errors.outOfMemory() && missing->empty()) missing->push_back({"the scan", "out of memory"});
}

void PrintRefusals(const std::vector<Refusal>& refused) {
  if (refused.empty()) return;
  fmt::print("Refused:\n");
  const size_t printed = std::min(refused.size(), kMostRefusalsPrinted);
  for (size_t i = 0; i < printed; ++i)
    fmt::print("  {}: {}\n", Printable(refused[i].path), Printable(refused[i].reason));
  if (printed < refused.size())
    fmt::print("  and {} more (--json lists them all)\n", refused.size() - printed);
  fmt::print("\n");
}

void TellMissing(const std::vector<Refusal>& missing) {
  const size_t told = std::min(missing.size(), kMostRefusalsPrinted);
  for (size_t i = 0; i < told; ++i) Complain(missing[i].path + ": " + missing[i].reason);
  if (told < missing.size())
    Complain(fmt::format("and {} more (--json lists them all)", missing.size() - told));
}

nlohmann::ordered_json RefusalsAsJson(const std::vector<Refusal>& refused) {
  nlohmann::ordered_json json = nlohmann::ordered_json::array();
  for (const Refusal& refusal : refused)
    json.push_back({{"path", refusal.path}, {"reason", refusal.reason}});
  return json;
}

}  // namespace orxscan
