#include "Refusal.h"

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

// What the file system has against it; empty for a readable file with content.
std::string WhyNotReadable(const std::string& path) {
  struct stat64 status = {};
  if (stat64(path.c_str(), &status) != 0) return strerror(errno);
  if (!S_ISREG(status.st_mode)) return "not a regular file";
  if (access(path.c_str(), R_OK) != 0) return fmt::format("cannot be read: {}", strerror(errno));
  return status.st_size == 0 ? "the file is empty" : "";
}

}  // namespace

std::string ReasonToRefuse(DirectoryScanner* scanner, const std::string& path) {
  std::string unreadable = WhyNotReadable(path);
  if (!unreadable.empty()) return unreadable;
  const size_t slash = path.rfind('/');
  const FileInfomation file(path.substr(0, slash).c_str(), path.c_str() + slash + 1, path.c_str());
  const std::unique_ptr<MediaMetaData> record(scanner->_GetFMParserFramework()->HandleFile(&file));
  if (record == nullptr) return WhyNotParsed(path);
  if (scanner->CheckMediaFileForDLNAContent(record.get()) == 0) {
    const char* mimeType = record->GetMimeType();
    return mimeType != nullptr ? fmt::format("its MIME type, {}, is not served", mimeType)
                               : "it has no MIME type to be served by";
  }
  return WhyNotStored(*record, path);
}

std::vector<Refusal> Refusals(DirectoryScanner* scanner, const std::vector<FoundFile>& files,
                              const std::set<std::string>& registered, size_t* unexplained) {
  std::vector<Refusal> refusals;
  *unexplained = 0;
  for (const FoundFile& file : files) {
    if (registered.count(file.path) != 0) continue;
    std::string reason =
        file.reachable ? ReasonToRefuse(scanner, file.path) : "its path is too long";
    if (reason.empty()) {
      ++*unexplained;
      reason = "the database did not take it";
    }
    refusals.push_back({file.path, reason});
  }
  return refusals;
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

nlohmann::ordered_json RefusalsAsJson(const std::vector<Refusal>& refused) {
  nlohmann::ordered_json json = nlohmann::ordered_json::array();
  for (const Refusal& refusal : refused)
    json.push_back({{"path", refusal.path}, {"reason", refusal.reason}});
  return json;
}

}  // namespace orxscan
