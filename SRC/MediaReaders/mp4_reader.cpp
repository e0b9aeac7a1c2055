#include "MediaReaders/mp4_reader.h"

#include <sys/stat.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>

#include "MediaReaders/byte_cursor.h"
#include "MediaReaders/mp4_boxes.h"
#include "MediaReaders/mp4_walk.h"
#include "OSAL/Fault.h"
#include "OSAL/LocalTimeScope.h"
#include "UpnpUtil/FileHandle.h"

namespace {

struct CloseFile {
  void operator()(st_UPNP_FILE* file) const { upnp_file_close(file); }
};
using File = std::unique_ptr<st_UPNP_FILE, CloseFile>;

// Local time; null when the moment has no date.
char* DateText(time_t moment) {
  const orx::LocalTimeScope zone;
  struct tm date = {};
  char text[15];
  if (localtime_r(&moment, &date) == nullptr) return nullptr;
  if (strftime(text, sizeof text, "%Y-%m-%d", &date) == 0) return nullptr;
  return orx::Noted(strdup(text), __func__);
}

// Also takes what is known of a file that cannot be opened.
File Open(const char* path, mp4_metadata_t* meta) {
  struct stat64 status = {};
  File file(orx::OpenHandle(path, &status));
  if (status.st_mode == 0) return nullptr;
  meta->FileSize = status.st_size;
  meta->Date = DateText(status.st_mtime);
  return file;
}

// The file begins with the sync word of an ADTS header.  The position is at the start again.
bool BeginsWithAdts(st_UPNP_FILE* file) {
  uint8_t start[16] = {};
  upnp_file_read(file, start, sizeof start);
  upnp_file_seek(file, 0, SEEK_SET);
  return orx::ByteCursor(start, sizeof start).U16() >> 4 == 0xFFF;
}

void ConfirmVideo(mp4_metadata_t* meta) {
  if (meta->VideoDurationMs > 0 && meta->VideoFrameCount > 0)
    meta->FrameRate = meta->VideoFrameCount / meta->VideoDurationMs * 1000.0;
  mp4_confirm_mpeg4_video(meta);
}

}  // namespace

int m4a_get_metadata(const char* path, mp4_metadata_t* meta) {
  if (meta == nullptr) return 0;
  *meta = {};
  const File file = Open(path, meta);
  if (file == nullptr) return 0;
  const bool adts = BeginsWithAdts(file.get());
  const auto walk = adts ? aac_adts_get_metadata : m4a_atom_get_metadata;
  meta->HasTracks = walk(file.get(), meta->FileSize, meta);
  if (meta->HasTracks == 0) return 0;
  if (meta->HasVideo != 0) ConfirmVideo(meta);
  if (adts)
    mp4_confirm_mpeg2_audio(meta);
  else
    mp4_confirm_mpeg4_audio(meta);
  return 1;
}

int m4a_atom_get_metadata(st_UPNP_FILE* file, long long limit, mp4_metadata_t* meta) {
  if (file == nullptr || meta == nullptr) return 0;
  orx::Guarded(__func__, [=] { orx::Mp4Walk(file, meta, orx::FindBoxReader).Run(limit); });
  return meta->HasVideo != 0 || meta->HasAudio != 0 ? 1 : 0;
}

void m4a_free_metadata(mp4_metadata_t* meta) {
  if (meta == nullptr) return;
  for (char* text : {meta->Date, meta->Title, meta->Artist, meta->AlbumTitle, meta->Genre,
                     meta->Year, meta->DurationText, meta->CompatibleBrands})
    free(text);
  *meta = {};
}
