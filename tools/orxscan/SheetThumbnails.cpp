#include "SheetThumbnails.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>

#include "CardMount.h"
#include "MediaFile.h"
#include "NewFile.h"
#include "Output.h"

namespace orxscan {
namespace {

constexpr char kMarker[] = ".orxscan-sheet";  // tells our folders of thumbnails from others

bool BeginsWith(const std::string& text, const char* start) {
  return text.compare(0, strlen(start), start) == 0;
}

const char* Extension(const std::string& bytes) {
  if (BeginsWith(bytes, "\xFF\xD8")) return ".jpg";
  if (BeginsWith(bytes, "\x89PNG")) return ".png";
  return ".bin";
}

// Tells thumbnails of one item apart, so that an old page keeps its own while a new one is written.
uint64_t Fingerprint(const std::string& bytes) {
  uint64_t sum = 14695981039346656037u;
  for (const char c : bytes) sum = (sum ^ static_cast<unsigned char>(c)) * 1099511628211u;
  return sum;
}

std::string ThumbnailName(long long id, const std::string& bytes) {
  return fmt::format("{}-{:016x}{}", static_cast<uint64_t>(id), Fingerprint(bytes),
                     Extension(bytes));
}

bool IsThumbnailName(const std::string& name) {
  const size_t dash = name.find('-');
  const size_t dot = name.find('.');
  return dash != std::string::npos && dash > 0 && dot == dash + 17 && name.size() == dot + 4 &&
         name.find_first_not_of("0123456789") == dash &&
         name.find_first_not_of("0123456789abcdef", dash + 1) == dot;
}

}  // namespace

SheetThumbnails::SheetThumbnails(std::string beside, std::string card)
    : beside_(std::move(beside)), card_(std::move(card)) {
  if (!beside_.empty()) PrepareFolder();
}

void SheetThumbnails::PrepareFolder() const {
  namespace fs = std::filesystem;
  std::error_code error;
  if (mkdir(beside_.c_str(), 0777) != 0 && errno != EEXIST)
    throw Failure("folder {}: {}", Quoted(beside_), strerror(errno));
  const std::string marker = beside_ + "/" + kMarker;
  if (fs::exists(marker, error)) return;
  const bool empty = fs::is_empty(beside_, error);
  if (error) throw Failure("folder {}: {}", Quoted(beside_), error.message());
  if (!empty) throw Failure("folder {} holds other files; it is left alone", Quoted(beside_));
  NewFile("file", marker).Finish();
}

std::string SheetThumbnails::Where(const std::string& path) const {
  const std::string mount = std::string(kCardPath) + "/";
  return !card_.empty() && BeginsWith(path, mount.c_str()) ? card_ + "/" + path.substr(mount.size())
                                                           : path;
}

bool SheetThumbnails::Examine(SheetItem* item) {
  const MediaFile file(Where(item->path));
  const PicturePlace& place = item->thumbnail;
  const auto mark = [item](Mark what) { item->marks.push_back(what); };
  if (!file.present()) {
    mark(Mark::kGone);
    return false;
  }
  if (!file.readable()) {
    mark(Mark::kUnreadable);
    return false;
  }
  if (item->size >= 0 && item->size != file.size()) mark(Mark::kSizeDiffers);
  if (place.length == 0) return false;
  if (!file.Holds(place.offset, place.length)) {
    mark(Mark::kThumbnailOutside);
    return false;
  }
  if (place.length > kLargestThumbnail) {
    mark(Mark::kThumbnailTooLarge);
    return false;
  }
  if (!beside() && bytes_ + place.length > kLargestPage) {
    mark(Mark::kThumbnailLeftOut);
    return false;
  }
  const std::string bytes = beside() ? file.Read(place.offset, place.length)
                                     : file.Read(place.offset, place.length < 4 ? place.length : 4);
  if (bytes.empty()) {
    mark(Mark::kUnreadable);
    return false;
  }
  if (strcmp(Extension(bytes), ".bin") == 0) mark(Mark::kThumbnailNoPicture);
  if (beside()) {
    item->thumbnailName = ThumbnailName(item->id, bytes);
    NewFile thumbnail("file", beside_ + "/" + item->thumbnailName);
    thumbnail.Write(bytes);
    thumbnail.Finish();
    names_.insert(item->thumbnailName);
  }
  ++count_;
  bytes_ += place.length;
  return true;
}

std::string SheetThumbnails::Cut(const SheetItem& item) const {
  return MediaFile(Where(item.path)).Read(item.thumbnail.offset, item.thumbnail.length);
}

void SheetThumbnails::RemoveOld() const {
  if (!beside()) return;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(beside_, error)) {
    const std::string name = entry.path().filename().string();
    if (IsThumbnailName(name) && names_.count(name) == 0)
      std::filesystem::remove(entry.path(), error);
  }
}

}  // namespace orxscan
