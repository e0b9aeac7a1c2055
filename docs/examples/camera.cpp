// A camera's server in small: supplies the platform functions, brings a database in line with a
// folder or with the shared files of the card, and lists what it then offers.
//
// usage: camera MODE FOLDER DATABASE_FOLDER [SECONDS]
//   MODE 0 scans FOLDER, whatever its files are called; 1, 2, 6 and 8 scan the shared files of the
//   card, and FOLDER is "/mnt/mmc/DCIM".  After SECONDS the scan is cancelled.
#include <sqlite3.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <future>
#include <string>
#include <vector>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DcfFileInfoVector.h"
#include "FileScanner/DirectoryScanner.h"
#include "MediaReaders/exif_reader.h"
#include "MediaReaders/mp4_reader.h"
#include "Platform/CameraPlatform.h"

// ---- what this camera knows ---------------------------------------------------------------------

namespace {

struct Camera {
  int sharingMode = 0;             // does not change while a scan runs
  std::vector<std::string> files;  // URIs of the shared files, the newest first
  std::string lent;                // the copy that the library holds at the moment
};
Camera camera;

// A real camera keeps this list anyway; here it is read from the card.
void ListCard() {
  camera.files.clear();
  std::error_code failure;
  for (std::filesystem::recursive_directory_iterator entry("/mnt/mmc/DCIM", failure), end;
       !failure && entry != end; entry.increment(failure)) {
    const std::string uri = entry->path().string();  // "/mnt/mmc/DCIM/100ORXSC/ORXA0001.JPG"
    if (entry.depth() == 1 && uri.size() == 35 && entry->is_regular_file())
      camera.files.push_back(uri);
  }
  // Folder number, then file number; both descend.
  std::sort(camera.files.begin(), camera.files.end(), [](const auto& a, const auto& b) {
    const int folder = a.compare(14, 3, b, 14, 3);
    return folder != 0 ? folder > 0 : a.compare(27, 4, b, 27, 4) > 0;
  });
}

bool HasExtension(const char* path, const char* extension) {
  const size_t length = strlen(path);
  return length > 4 && strcmp(path + length - 4, extension) == 0;
}

}  // namespace

// ---- the platform functions ---------------------------------------------------------------------

// One line of the library's log; here the errors go to standard error, marked by their tag.
int __dlog_print(int /*logId*/, int priority, const char* tag, const char* format, ...) {
  constexpr int kError = 6;
  if (priority < kError) return 0;
  va_list arguments;
  va_start(arguments, format);
  fprintf(stderr, "camera log, %s: ", tag);
  vfprintf(stderr, format, arguments);
  va_end(arguments);
  return 0;
}

int GetTandemixMode(void) { return camera.sharingMode; }

int QUILWifi_getFileCount(void) { return static_cast<int>(camera.files.size()); }

int QUILWifi_getURIFromIndex(int index, char*& uri) {
  if (index < 0 || index >= QUILWifi_getFileCount()) return -1;
  camera.lent = camera.files[static_cast<size_t>(index)];
  uri = camera.lent.data();  // stays until the next call; the library may change its ending
  return 0;
}

int QUILWifi_getFileType(char* uri) {
  if (HasExtension(uri, ".MP4")) return DLNA_FILE_TYPE_VIDEO;
  if (HasExtension(uri, ".MPO")) return DLNA_FILE_TYPE_MPO;
  return DLNA_FILE_TYPE_IMAGE;
}

int QUILWifi_getFileAttribute(char* path, sFileAttribute* out) {
  int width = 0, height = 0;
  char* date = nullptr;
  const int found = exif_get_metadata(path, &out->nFileSize, &width, &height, nullptr, nullptr,
                                      nullptr, nullptr, nullptr, &date, nullptr, nullptr);
  out->nWidth = static_cast<unsigned short>(width);
  out->nHeight = static_cast<unsigned short>(height);
  if (date != nullptr) strncpy(out->szDate, date, sizeof out->szDate);
  free(date);
  return found;
}

int QUILWifi_getVideoAttribute(char* path, sVideoAttribute* out) {
  mp4_metadata_t film;
  const int found = m4a_get_metadata(path, &film);
  out->nFileSize = film.FileSize;
  out->nWidth = film.Width;
  out->nHeight = film.Height;
  if (film.Date != nullptr) strncpy(out->szDate, film.Date, sizeof out->szDate);
  out->nDuration = static_cast<int>(film.VideoDurationMs);
  out->dFrameRate = film.FrameRate;
  m4a_free_metadata(&film);
  return found;
}

// This camera's pictures have no screen-size preview in them.
int QUILWifi_getJpegScreennailInfo(char*, int*, int*, int*, int*) { return 0; }

long long ORXGetFileSize(const char* path) {
  struct stat status = {};
  return stat(path, &status) == 0 ? status.st_size : 0;
}

int ORXGetDlnaCertificationState(void) { return 0; }

// ---- the server ---------------------------------------------------------------------------------

namespace {

// One file for each layout: a layout never changes once its file is made.
std::string DatabaseOf(int mode, const std::string& folder) {
  return folder + (mode == 8 ? "/photos.db" : mode == 6 ? "/backup.db" : "/media.db");
}

// A database of another card, or from before there were columns to sort by, is made anew.
void RemoveForeignDatabase(const std::string& database, const char* folder) {
  if (!std::filesystem::exists(database)) return;
  DataBaseMgr* manager = DataBaseMgr::GetInstance();
  const bool opened = manager->OpenDB(database.c_str()) == 1;
  const bool full = camera.sharingMode != 8 && camera.sharingMode != 6;
  const bool foreign = !opened || manager->NeedToDeleteDB(folder) ||
                       (full && manager->NeedToDeleteDBforSorting() == 0);
  DataBaseMgr::DestroyInstance();  // closes it
  if (!foreign) return;
  std::filesystem::remove(database);
  std::filesystem::remove(database + "-journal");
}

// Runs on a thread of its own: the whole scan, the platform functions included.
void Scan(DirectoryScanner* scanner, const char* folder, const std::string& database) {
  int added = 0;
  switch (camera.sharingMode) {
    case 0:
      scanner->ScanDir(folder, database.c_str(), &added);
      break;
    case 6:
      scanner->scanAutoBackupDcf(folder, database.c_str(), &added);
      break;
    case 8:
      scanner->scanXQDcf(folder, database.c_str(), &added);
      break;
    default:
      scanner->scanDcf(folder, database.c_str(), &added);
  }
}

// The server's own connection, for reading.
int ListDatabase(const std::string& database) {
  sqlite3* connection = nullptr;
  int code = sqlite3_open_v2(database.c_str(), &connection, SQLITE_OPEN_READONLY, nullptr);
  sqlite3_busy_timeout(connection, 1000);  // a scan may be about to commit
  sqlite3_stmt* statement = nullptr;
  if (code == SQLITE_OK)
    code = sqlite3_prepare_v2(connection, "select id, class, FullPath from ObjectTable order by id",
                              -1, &statement, nullptr);
  const char* const kinds[] = {"folder", "picture", "sound", "film"};
  while (code == SQLITE_OK && sqlite3_step(statement) == SQLITE_ROW)
    printf("%s %s %s\n", sqlite3_column_text(statement, 0),
           kinds[sqlite3_column_int(statement, 1) & 3], sqlite3_column_text(statement, 2));
  sqlite3_finalize(statement);
  sqlite3_close(connection);
  return code == SQLITE_OK ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) {
    fprintf(stderr, "usage: %s MODE FOLDER DATABASE_FOLDER [SECONDS]\n", argv[0]);
    return 2;
  }
  camera.sharingMode = atoi(argv[1]);
  const char* folder = argv[2];
  const std::string database = DatabaseOf(camera.sharingMode, argv[3]);
  if (camera.sharingMode != 0) ListCard();
  RemoveForeignDatabase(database, folder);

  DirectoryScanner* scanner = DirectoryScanner::GetInstance();
  scanner->SetDlnaProfiles(pProfiles);
  auto scan = std::async(std::launch::async, Scan, scanner, folder, database);
  if (argc > 4 &&
      scan.wait_for(std::chrono::duration<double>(atof(argv[4]))) != std::future_status::ready)
    scanner->CancelScanDirectory();
  scan.wait();
  DirectoryScanner::DestroyInstance();  // also takes the cancel back

  const int status = ListDatabase(database);
  DcfFileInfoVector::DestroyInstance();  // when the card goes; kept, the next scan is quicker
  return status;
}
