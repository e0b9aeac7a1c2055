// Attributes of pictures and films, read from the files themselves.
#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <limits>
#include <memory>
#include <string>

#include "MediaReaders/exif_reader.h"
#include "MediaReaders/mp4_reader.h"
#include "Platform/CameraPlatform.h"
#include "UpnpUtil/upnp_file.h"

namespace {

constexpr size_t kDateLength = 10;  // "2026-11-21"

struct FreeText {
  void operator()(char* text) const { free(text); }
};
using Text = std::unique_ptr<char, FreeText>;

struct CloseFile {
  void operator()(st_UPNP_FILE* file) const { upnp_file_close(file); }
};
using File = std::unique_ptr<st_UPNP_FILE, CloseFile>;

// The film record, released at the end.
struct Film {
  mp4_metadata_t meta = {};
  Film() = default;
  Film(const Film&) = delete;
  Film& operator=(const Film&) = delete;
  ~Film() { m4a_free_metadata(&meta); }
};

template <size_t kSize>
void StoreDate(const char* date, char (&field)[kSize]) {
  static_assert(kSize > kDateLength, "room for the terminator");
  memset(field, 0, kSize);
  if (date != nullptr) memcpy(field, date, strnlen(date, kDateLength));
}

unsigned short Pixels(int value) {
  constexpr int kLimit = std::numeric_limits<unsigned short>::max();
  return static_cast<unsigned short>(value > 0 && value <= kLimit ? value : 0);
}

int Milliseconds(double value) {
  if (!(value > 0)) return 0;  // NaN as well
  return static_cast<int>(std::min<double>(value, std::numeric_limits<int>::max()));
}

bool ReadExifAttributes(const char* path, sFileAttribute* out) {
  long long size = 0;
  int width = 0, height = 0, orientation = 0;
  int thumbOffset = 0, thumbLength = 0, thumbWidth = 0, thumbHeight = 0;
  long fileTime = 0;
  char* date = nullptr;
  const int found =
      exif_get_metadata(path, &size, &width, &height, &thumbOffset, &thumbLength, &thumbWidth,
                        &thumbHeight, &orientation, &date, &fileTime, nullptr);
  const Text ownedDate(date);
  if (found != 1) return false;
  out->nFileSize = size;
  out->nWidth = Pixels(width);
  out->nHeight = Pixels(height);
  StoreDate(date, out->szDate);
  return true;
}

// When the machine cannot tell, the library notes it, and the file is left to the next scan.
bool ReadStatus(const char* path, sFileAttribute* out, time_t* modified) {
  struct stat64 status = {};
  if (stat64(path, &status) == 0) {
    out->nFileSize = status.st_size;
    *modified = status.st_mtime;
    return true;
  }
  st_UPNP_FILE_STAT again = {};
  if (upnp_file_stat(path, &again) != 0) return false;
  out->nFileSize = again.size;
  *modified = again.modification_time;
  return true;
}

// A JPEG without EXIF data: its frame header and the file system still know enough.
bool ReadPlainJpegAttributes(const char* path, sFileAttribute* out) {
  const File file(upnp_file_open_read(path));
  int width = 0, height = 0;
  if (file == nullptr || exif_get_jpeg_size(file.get(), file->size, &width, &height, 0) != 0)
    return false;
  time_t modified = 0;
  if (!ReadStatus(path, out, &modified)) return false;
  struct tm utc = {};
  char date[kDateLength + 1] = {};
  if (gmtime_r(&modified, &utc) != nullptr) strftime(date, sizeof date, "%Y-%m-%d", &utc);
  out->nWidth = Pixels(width);
  out->nHeight = Pixels(height);
  StoreDate(date, out->szDate);
  return true;
}

}  // namespace

int QUILWifi_getFileAttribute(char* path, sFileAttribute* out) {
  if (path == nullptr || out == nullptr) return 0;
  *out = {};
  return ReadExifAttributes(path, out) || ReadPlainJpegAttributes(path, out) ? 1 : 0;
}

int QUILWifi_getVideoAttribute(char* path, sVideoAttribute* out) {
  if (path == nullptr || out == nullptr) return 0;
  *out = {};
  Film film;
  if (m4a_get_metadata(path, &film.meta) != 1) return 0;
  out->nFileSize = film.meta.FileSize;
  out->nWidth = film.meta.Width;
  out->nHeight = film.meta.Height;
  StoreDate(film.meta.Date, out->szDate);
  out->nDuration = Milliseconds(film.meta.VideoDurationMs);
  out->dFrameRate = std::isfinite(film.meta.FrameRate) ? film.meta.FrameRate : 0;
  return 1;
}

long long ORXGetFileSize(const char* path) {
  st_UPNP_FILE_STAT status = {};  // asked for by the library, which notes a failing machine
  if (upnp_file_stat(path, &status) != 0 || !S_ISREG(status.mode)) return 0;
  return status.size;
}
