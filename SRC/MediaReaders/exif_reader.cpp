#include "MediaReaders/exif_reader.h"

#include <sys/stat.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "MediaReaders/byte_cursor.h"
#include "MediaReaders/jpeg_segments.h"
#include "MediaReaders/tiff_types.h"
#include "MediaReaders/tiff_walk.h"
#include "OSAL/Fault.h"
#include "UpnpUtil/FileHandle.h"
#include "UpnpUtil/GmtDay.h"

namespace {

using orx::ByteCursor;
using orx::IfdEntry;
using orx::IfdHandler;

enum Tag : uint16_t {
  kImageDescription = 270,
  kOrientation = 274,
  kXResolution = 282,
  kYResolution = 283,
  kSoftware = 305,
  kDateTime = 306,
  kThumbnailOffset = 513,  // JPEGInterchangeFormat
  kThumbnailLength = 514,  // JPEGInterchangeFormatLength
  kExifIfd = 34665,
  kGpsIfd = 34853,
  kDateTimeOriginal = 36867,
  kUserComment = 37510,
  kPixelXDimension = 40962,
  kPixelYDimension = 40963,
  kInteropIfd = 40965
};

constexpr unsigned kExifChainOffset = 8;  // where the walk for Exif tags begins
constexpr unsigned kFirstIfdField = 4;    // of the TIFF header
constexpr std::string_view kAsciiComment("ASCII\0\0\0", 8);
constexpr long kNoDateUpTo = 1930;           // a clock that was never set says 0000 or 1900
constexpr size_t kDayLength = 10;            // of "2026:11:21"
constexpr int kPlatformThumbnailLength = 1;  // marks a thumbnail that the platform serves

struct CloseFile {
  void operator()(st_UPNP_FILE* file) const { upnp_file_close(file); }
};
using FilePtr = std::unique_ptr<st_UPNP_FILE, CloseFile>;

// ---- Tags ----

// The block that is walked and the records that it fills.
struct TagReader {
  const unsigned char* block;
  unsigned length;
  ExifData* data;
  exif_ifd_pointers_t* pointers;

  int Int(const IfdEntry& entry) const {
    return exif_get_int(block, length, entry.type, entry.count, entry.value);
  }
  void TakeText(const IfdEntry& entry, char** text) const {
    if (*text == nullptr)
      *text = exif_get_string(block, length, entry.type, entry.count, entry.value);
  }
  void TakeIfMissing(const IfdEntry& entry, int* number) const {
    if (*number == 0) *number = Int(entry);
  }
  void TakePointer(const IfdEntry& entry, unsigned* pointer) const {
    *pointer = static_cast<unsigned>(Int(entry));
  }
  void TakeUserComment(const IfdEntry& entry) const;
  void TakeThumbnailOffset(const IfdEntry& entry) const;
  void TakeThumbnailLength(const IfdEntry& entry) const;

  void TiffTag(const IfdEntry& entry) const;
  void ExifTag(const IfdEntry& entry) const;
};

// The text follows the eight characters that name its code.
void TagReader::TakeUserComment(const IfdEntry& entry) const {
  if (data->UserComment != nullptr || entry.type != orx::kTiffUndefined ||
      entry.count <= kAsciiComment.size() ||
      !check_type("UNDEFINED", length, entry.value, entry.count, 1))
    return;
  ByteCursor value = ByteCursor(block, length).At(entry.value);
  if (value.Text(kAsciiComment.size()) != kAsciiComment) return;
  const std::string_view text = value.Text(entry.count - kAsciiComment.size());
  data->UserComment = static_cast<char*>(orx::Noted(calloc(text.size() + 1, 1), __func__));
  if (data->UserComment != nullptr) memcpy(data->UserComment, text.data(), text.size());
}

void TagReader::TakeThumbnailOffset(const IfdEntry& entry) const {
  const int offset = Int(entry);
  if (offset >= 0 && static_cast<unsigned>(offset) < length) data->ThumbnailOffset = offset;
}

void TagReader::TakeThumbnailLength(const IfdEntry& entry) const {
  const int64_t room = int64_t{length} - data->ThumbnailOffset;
  const int64_t bytes = std::min<int64_t>(Int(entry), room);
  if (bytes > 0) data->ThumbnailLength = static_cast<int>(bytes);
}

void TagReader::TiffTag(const IfdEntry& entry) const {
  switch (entry.tag) {
    case kImageDescription:
      return TakeText(entry, &data->Description);
    case kOrientation:
      data->Orientation = Int(entry);
      return;
    case kXResolution:
      data->XResolution = Int(entry);
      return;
    case kYResolution:
      data->YResolution = Int(entry);
      return;
    case kSoftware:
      return TakeText(entry, &data->Software);
    case kDateTime:
      return TakeText(entry, &data->DateTime);
    case kThumbnailOffset:
      data->ThumbnailOffset = Int(entry);
      return;
    case kThumbnailLength:
      data->ThumbnailLength = Int(entry);
      return;
    case kExifIfd:
      return TakePointer(entry, &pointers->Exif);
    case kGpsIfd:
      return TakePointer(entry, &pointers->Gps);
    default:
      return;
  }
}

void TagReader::ExifTag(const IfdEntry& entry) const {
  switch (entry.tag) {
    case kDateTimeOriginal:
      return TakeText(entry, &data->Date);
    case kUserComment:
      return TakeUserComment(entry);
    case kPixelXDimension:
      return TakeIfMissing(entry, &data->Width);
    case kPixelYDimension:
      return TakeIfMissing(entry, &data->Height);
    case kInteropIfd:
      return TakePointer(entry, &pointers->Interop);
    case kThumbnailOffset:
      return TakeThumbnailOffset(entry);
    case kThumbnailLength:
      return TakeThumbnailLength(entry);
    default:
      return;
  }
}

// Walks `block` in one of three ways and takes tags in one of two; a null `take` takes none.
using TakeTag = void (TagReader::*)(const IfdEntry&) const;
using Walk = void (*)(const ByteCursor&, uint64_t, const IfdHandler&);

void WalkTags(Walk walk, TakeTag take, const unsigned char* block, unsigned length, unsigned offset,
              int bigEndian, ExifData* data, exif_ifd_pointers_t* pointers) {
  if (block == nullptr || data == nullptr || pointers == nullptr) return;
  const TagReader reader{block, length, data, pointers};
  walk(ByteCursor(block, length, orx::TiffOrder(bigEndian)), offset,
       [&reader, take](const IfdEntry& entry) {
         if (take != nullptr) (reader.*take)(entry);
       });
}

// ---- The TIFF block ----

struct TiffHeader {
  int bigEndian;
  unsigned firstIfd;
};

bool ReadTiffHeader(const unsigned char* block, unsigned length, TiffHeader* header) {
  const std::string_view bytes(reinterpret_cast<const char*>(block), length);
  if (bytes.substr(0, 4) == std::string_view("II*\0", 4)) {
    header->bigEndian = 0;
  } else if (bytes.substr(0, 3) == std::string_view("MM\0", 3)) {
    header->bigEndian = 1;
  } else {
    return false;
  }
  ByteCursor field =
      ByteCursor(block, length, orx::TiffOrder(header->bigEndian)).At(kFirstIfdField);
  header->firstIfd = field.U32();
  return field.ok() && header->firstIfd <= length;
}

bool ReadTiffBlock(const unsigned char* block, unsigned length, ExifData* data) {
  TiffHeader header = {};
  if (!ReadTiffHeader(block, length, &header)) return false;
  exif_ifd_pointers_t pointers = {};
  const int order = header.bigEndian;
  if (header.firstIfd != 0) do_tiff_section(block, length, header.firstIfd, order, data, &pointers);
  // The Exif directory is not looked for where the pointer leads: the chain of the main directory
  // is walked again, which brings the thumbnail's directory as well.
  if (pointers.Exif != 0) do_exif_section(block, length, kExifChainOffset, order, data, &pointers);
  if (pointers.Gps != 0) do_gps_section(block, length, pointers.Gps, order, data, &pointers);
  if (pointers.Interop != 0)
    do_interop_section(block, length, pointers.Interop, order, data, &pointers);
  return true;
}

// ---- The date ----

bool IsDate(const char* text) { return text != nullptr && strtol(text, nullptr, 10) > kNoDateUpTo; }

// "2026-11-21" of "2026:11:21 09:34:26".
std::string DayOf(const char* date) {
  std::string day(date, strnlen(date, kDayLength));
  for (const size_t place : {size_t{4}, size_t{7}})
    if (place < day.size()) day[place] = '-';
  return day;
}

std::string DayOf(time_t time) {
  char day[20] = "";
  orx::WriteGmtDay(time, day, sizeof day);
  return day;
}

void NormaliseDate(time_t modified, ExifData* data) {
  const std::string day = IsDate(data->Date)       ? DayOf(data->Date)
                          : IsDate(data->DateTime) ? DayOf(data->DateTime)
                                                   : DayOf(modified);
  free(data->Date);
  data->Date = orx::Noted(strdup(day.c_str()), __func__);
}

// ---- The file ----

// A picture file with its time, which has more bits than the record's where `long` has 32.
struct PictureFile {
  explicit PictureFile(const char* path) {
    struct stat64 status = {};
    handle.reset(orx::OpenHandle(path, &status));
    modified = status.st_mtime;
  }
  FilePtr handle;
  time_t modified;
};

bool ReadPictureUnguarded(const PictureFile& picture, ExifData* data) {
  st_UPNP_FILE* file = picture.handle.get();
  data->FileSize = file->size;
  data->FileTime = static_cast<long>(picture.modified);
  if (data->FileSize == 0) return false;
  orx::ExifBlock block;
  const bool hasExif =
      orx::ReadExifBlock(file, &block);  // first: it stands before the frame header
  orx::ReadFrameSize(file, 0, data->FileSize, &data->Width, &data->Height);
  if (!hasExif || !ReadTiffBlock(block.bytes.get(), block.length, data)) return false;
  NormaliseDate(picture.modified, data);
  return true;
}

// Fills a zeroed record; no text is left in it on failure.
bool ReadPicture(const PictureFile& file, ExifData* data) {
  if (file.handle == nullptr) return false;
  if (orx::Guarded(__func__, false, [&] { return ReadPictureUnguarded(file, data); })) return true;
  exif_free_metadata(data);
  return false;
}

// Turns the thumbnail's offset into its position in the file and finds its size in pixels.  The
// offset counts from the TIFF header, a little behind the start of the file, so the thumbnail is
// the first picture from that position on.
void LocateThumbnail(st_UPNP_FILE* file, ExifData* data, int* width, int* height) {
  if (data->ThumbnailOffset == 0) return;
  const long long found = orx::FindStartOfImage(file, data->ThumbnailOffset);
  if (found < 0 || found > INT_MAX) return;
  data->ThumbnailOffset = static_cast<int>(found);
  orx::ReadFrameSize(file, found, found + data->ThumbnailLength, width, height);
}

// A record that releases all its texts.
struct OwnedExifData {
  OwnedExifData() = default;
  OwnedExifData(const OwnedExifData&) = delete;
  OwnedExifData& operator=(const OwnedExifData&) = delete;
  ~OwnedExifData() {
    exif_free_metadata(&data);
    free(data.UserComment);
  }

  ExifData data = {};
};

template <typename T>
void Store(T* result, T value) {
  if (result != nullptr) *result = value;
}

void HandOver(char** text, char** result) {
  if (result == nullptr) return;
  *result = *text;
  *text = nullptr;
}

}  // namespace

void do_tiff_IFD(const unsigned char* block, unsigned length, unsigned offset, int bigEndian,
                 ExifData* data, exif_ifd_pointers_t* pointers) {
  WalkTags(orx::HandleIfdEntry, &TagReader::TiffTag, block, length, offset, bigEndian, data,
           pointers);
}

void do_tiff_section(const unsigned char* block, unsigned length, unsigned offset, int bigEndian,
                     ExifData* data, exif_ifd_pointers_t* pointers) {
  WalkTags(orx::WalkIfd, &TagReader::TiffTag, block, length, offset, bigEndian, data, pointers);
}

void do_exif_IFD(const unsigned char* block, unsigned length, unsigned offset, int bigEndian,
                 ExifData* data, exif_ifd_pointers_t* pointers) {
  WalkTags(orx::HandleIfdEntry, &TagReader::ExifTag, block, length, offset, bigEndian, data,
           pointers);
}

void do_exif_section(const unsigned char* block, unsigned length, unsigned offset, int bigEndian,
                     ExifData* data, exif_ifd_pointers_t* pointers) {
  WalkTags(orx::WalkIfdChain, &TagReader::ExifTag, block, length, offset, bigEndian, data,
           pointers);
}

void do_gps_IFD(const unsigned char* block, unsigned length, unsigned offset, int bigEndian,
                ExifData* data, exif_ifd_pointers_t* pointers) {
  WalkTags(orx::HandleIfdEntry, nullptr, block, length, offset, bigEndian, data, pointers);
}

void do_gps_section(const unsigned char* block, unsigned length, unsigned offset, int bigEndian,
                    ExifData* data, exif_ifd_pointers_t* pointers) {
  WalkTags(orx::WalkIfd, nullptr, block, length, offset, bigEndian, data, pointers);
}

void do_interop_IFD(const unsigned char* block, unsigned length, unsigned offset, int bigEndian,
                    ExifData* data, exif_ifd_pointers_t* pointers) {
  WalkTags(orx::HandleIfdEntry, nullptr, block, length, offset, bigEndian, data, pointers);
}

void do_interop_section(const unsigned char* block, unsigned length, unsigned offset, int bigEndian,
                        ExifData* data, exif_ifd_pointers_t* pointers) {
  WalkTags(orx::WalkIfd, nullptr, block, length, offset, bigEndian, data, pointers);
}

void exif_free_metadata(ExifData* data) {
  if (data == nullptr) return;
  for (char** text :
       {&data->Description, &data->ReservedText1, &data->ReservedText2, &data->Date,
        &data->DateTime, &data->Software, &data->ReservedText3, &data->ReservedText4}) {
    free(*text);
    *text = nullptr;
  }
}

int exif_get_metadata_orig(const char* path, ExifData* data) {
  if (data == nullptr) return 0;
  *data = {};
  return ReadPicture(PictureFile(path), data) ? 1 : 0;
}

int exif_get_metadata(const char* path, long long* size, int* width, int* height, int* thumbOffset,
                      int* thumbLength, int* thumbWidth, int* thumbHeight, int* orientation,
                      char** date, long* fileTime, char** description) {
  for (int* number :
       {width, height, thumbOffset, thumbLength, thumbWidth, thumbHeight, orientation})
    Store(number, 0);
  Store(size, 0LL);
  Store(fileTime, 0L);
  for (char** text : {date, description})
    if (text != nullptr) *text = nullptr;

  const PictureFile file(path);
  OwnedExifData picture;
  ExifData* data = &picture.data;
  if (!ReadPicture(file, data) || data->ThumbnailLength == kPlatformThumbnailLength) return 0;
  int widthOfThumbnail = 0, heightOfThumbnail = 0;
  LocateThumbnail(file.handle.get(), data, &widthOfThumbnail, &heightOfThumbnail);

  Store(size, data->FileSize);
  Store(fileTime, data->FileTime);
  Store(width, data->Width);
  Store(height, data->Height);
  Store(orientation, data->Orientation);
  Store(thumbOffset, data->ThumbnailOffset);
  Store(thumbLength, data->ThumbnailLength);
  Store(thumbWidth, widthOfThumbnail);
  Store(thumbHeight, heightOfThumbnail);
  HandOver(&data->Description, description);
  HandOver(&data->Date, date);
  return 1;
}
