#include "SheetThumbnails.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>

#include "CardMount.h"
#include "NewFile.h"
#include "Output.h"

namespace orxscan {
namespace {

constexpr char kMarker[] = ".orxscan-sheet";  // tells our folders of thumbnails from others

bool BeginsWith(const std::string& text, const char* start) {
  return text.compare(0, strlen(start), start) == 0;
}

constexpr long long kJpegStart = 6;  // bytes: the first marker, the second and its length

// The start of an image, and a segment behind it that may come first.  Whatever else the bytes are,
// they are somebody's, and no picture.
bool BeginsLikeAJpeg(const std::string& bytes) {
  if (bytes.size() < kJpegStart || !BeginsWith(bytes, "\xFF\xD8\xFF")) return false;
  const auto byte = [&](size_t i) { return static_cast<unsigned char>(bytes[i]); };
  const bool segment = byte(3) >= 0xC0 && byte(3) != 0xFF && (byte(3) < 0xD0 || byte(3) > 0xD9);
  return segment && byte(4) * 256 + byte(5) >= 2;
}

// Tells thumbnails of one item apart, so that an old page keeps its own while a new one is written.
uint64_t Fingerprint(const std::string& bytes) {
  uint64_t sum = 14695981039346656037u;
  for (const char c : bytes) sum = (sum ^ static_cast<unsigned char>(c)) * 1099511628211u;
  return sum;
}

std::string ThumbnailName(long long id, const std::string& bytes) {
  return fmt::format("{}-{:016x}.jpg", static_cast<uint64_t>(id), Fingerprint(bytes));
}

bool IsThumbnailName(const std::string& name) {
  const size_t dash = name.find('-');
  const size_t dot = name.find('.');
  return dash != std::string::npos && dash > 0 && dot == dash + 17 && name.size() == dot + 4 &&
         name.find_first_not_of("0123456789") == dash &&
         name.find_first_not_of("0123456789abcdef", dash + 1) == dot;
}

}  // namespace

SheetThumbnails::SheetThumbnails(std::string beside, std::string card, SheetFolders folders)
    : beside_(std::move(beside)), card_(std::move(card)), folders_(std::move(folders)) {
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
  if (!folders_.Names(item->path)) {
    item->marks.push_back(Mark::kElsewhere);
    return false;
  }
  const MediaFile file(Where(item->path));
  if (!IsUsable(file, item)) return false;
  const PicturePlace& place = item->thumbnail;
  const std::string bytes =
      file.Read(place.offset, beside() ? place.length : std::min(place.length, kJpegStart));
  if (!BeginsLikeAJpeg(bytes)) {
    item->marks.push_back(bytes.empty() ? Mark::kUnreadable : Mark::kThumbnailNoPicture);
    return false;
  }
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

bool SheetThumbnails::IsUsable(const MediaFile& file, SheetItem* item) const {
  const PicturePlace& place = item->thumbnail;
  const auto refuse = [item](Mark mark) {
    item->marks.push_back(mark);
    return false;
  };
  if (!file.present()) return refuse(Mark::kGone);
  if (!file.readable()) return refuse(Mark::kUnreadable);
  if (!folders_.Holds(item->path, file.Place())) return refuse(Mark::kElsewhere);
  if (item->size >= 0 && item->size != file.size()) item->marks.push_back(Mark::kSizeDiffers);
  if (place.length == 0) return false;
  if (!file.Holds(place.offset, place.length)) return refuse(Mark::kThumbnailOutside);
  if (place.length > kLargestThumbnail) return refuse(Mark::kThumbnailTooLarge);
  if (!beside() && bytes_ + place.length > kLargestPage) return refuse(Mark::kThumbnailLeftOut);
  return true;
}

// The file is looked at once more: another may have taken its place.
std::string SheetThumbnails::Cut(const SheetItem& item) const {
  const MediaFile file(Where(item.path));
  if (!folders_.Holds(item.path, file.Place())) return "";
  std::string bytes = file.Read(item.thumbnail.offset, item.thumbnail.length);
  return BeginsLikeAJpeg(bytes) ? bytes : "";
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
