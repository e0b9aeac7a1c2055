// What one scan takes of memory: heap, and stack of the thread that scans.
//
// usage: scan_memory folder DIRECTORY DATABASE
//        scan_memory card DIRECTORY DATABASE
//
// The first scans all below DIRECTORY.  The second has DIRECTORY at "/mnt/mmc", in a mount
// namespace of its own, and scans its newest thousand pictures and films as the platform's shared
// files.
#include <dirent.h>
#include <pthread.h>
#include <sqlite3.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DcfFileInfoVector.h"
#include "FileScanner/DirectoryScanner.h"
#include "HeapCount.h"
#include "Platform/CameraPlatform.h"
#include "Usage.h"
#include "support/CardMount.h"

namespace {

constexpr char kDcim[] = "/mnt/mmc/DCIM";
constexpr int kSharedFiles = 1000;
constexpr int kUriBytes = 40;

// The platform's own list takes no heap, nor do its answers: what is counted is the library's.
char uris[kSharedFiles][kUriBytes];
int uriCount = 0;

bool Ends(const std::string& text, const char* end) {
  return text.size() > strlen(end) && text.substr(text.size() - strlen(end)) == end;
}

bool IsFilm(const std::string& path) { return Ends(path, ".MP4") || Ends(path, ".3GP"); }

// Newest first: by folder and file number, both descending.
void ShareCard() {
  std::vector<std::string> paths;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(kDcim))
    if (IsFilm(entry.path()) || Ends(entry.path(), ".JPG")) paths.push_back(entry.path());
  std::sort(paths.rbegin(), paths.rend());
  for (const std::string& path : paths)
    if (uriCount < kSharedFiles && path.size() < kUriBytes)
      snprintf(uris[uriCount++], kUriBytes, "%s", path.c_str());
}

bool MountCard(const char* directory) {
  orx_test::CardMount::Enter();
  if (!orx_test::CardMount::Problem().empty()) {
    fprintf(stderr, "scan_memory: %s\n", orx_test::CardMount::Problem().c_str());
    return false;
  }
  if (mount(directory, "/mnt/mmc", nullptr, MS_BIND, nullptr) != 0) {
    perror("scan_memory: mount");
    return false;
  }
  return true;
}

// A stack whose bytes tell whether they were written to.
class PaintedStack {
 public:
  PaintedStack()
      : bytes_(static_cast<unsigned char*>(mmap(nullptr, kSize, PROT_READ | PROT_WRITE,
                                                MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0))) {
    memset(bytes_, kPaint, kSize);
  }
  PaintedStack(const PaintedStack&) = delete;
  PaintedStack& operator=(const PaintedStack&) = delete;
  ~PaintedStack() { munmap(bytes_, kSize); }

  void Run(std::function<void()> work) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstack(&attributes, bytes_, kSize);
    pthread_t thread = {};
    pthread_create(
        &thread, &attributes,
        [](void* run) -> void* {
          (*static_cast<std::function<void()>*>(run))();
          return nullptr;
        },
        &work);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
  }
  size_t Used() const {
    size_t untouched = 0;
    while (untouched < kSize && bytes_[untouched] == kPaint) ++untouched;
    return kSize - untouched;
  }

 private:
  static constexpr size_t kSize = 1 << 20;
  static constexpr unsigned char kPaint = 0xA5;
  unsigned char* bytes_;
};

void Scan(bool card, const char* directory, const char* database) {
  DirectoryScanner* scanner = DirectoryScanner::GetInstance();
  scanner->SetDlnaProfiles(pProfiles);
  int changed = 0;
  if (card)
    scanner->scanDcf(kDcim, database, &changed);
  else
    scanner->ScanDir(directory, database, &changed);
}

void DestroyAll() {
  DirectoryScanner::DestroyInstance();
  DataBaseMgr::DestroyInstance();
  DcfFileInfoVector::DestroyInstance();
}

int Rows(const char* database) {
  sqlite3* connection = nullptr;
  sqlite3_stmt* statement = nullptr;
  int rows = -1;
  if (sqlite3_open(database, &connection) == SQLITE_OK &&
      sqlite3_prepare_v2(connection, "select count(*) from ObjectTable", -1, &statement, nullptr) ==
          SQLITE_OK &&
      sqlite3_step(statement) == SQLITE_ROW)
    rows = sqlite3_column_int(statement, 0);
  sqlite3_finalize(statement);
  sqlite3_close(connection);
  return rows;
}

// The attributes that a camera knows without opening the file.
template <typename Attributes>
int Describe(const char* path, Attributes* out) {
  struct stat64 status = {};
  if (stat64(path, &status) != 0) return 0;
  memset(out, 0, sizeof *out);
  out->nFileSize = status.st_size;
  out->nWidth = 1920;
  out->nHeight = 1080;
  memcpy(out->szDate, "2026-11-21", sizeof "2026-11-21");
  return 1;
}

}  // namespace

int __dlog_print(int, int, const char*, const char*, ...) { return 0; }
int GetTandemixMode(void) { return 0; }
int QUILWifi_getFileCount(void) { return uriCount; }
int QUILWifi_getURIFromIndex(int index, char*& uri) {
  if (index < 0 || index >= uriCount) return -1;
  uri = uris[index];
  return 0;
}
int QUILWifi_getFileType(char* uri) {
  return IsFilm(uri) ? DLNA_FILE_TYPE_VIDEO : DLNA_FILE_TYPE_IMAGE;
}
int QUILWifi_getFileAttribute(char* path, sFileAttribute* out) { return Describe(path, out); }
int QUILWifi_getVideoAttribute(char* path, sVideoAttribute* out) { return Describe(path, out); }
int QUILWifi_getJpegScreennailInfo(char*, int*, int*, int*, int*) { return 0; }
long long ORXGetFileSize(const char* path) {
  struct stat64 status = {};
  return stat64(path, &status) == 0 ? status.st_size : 0;
}
int ORXGetDlnaCertificationState(void) { return 0; }

int main(int argc, char** argv) {
  const bool card = argc == 4 && strcmp(argv[1], "card") == 0;
  if (argc != 4 || (!card && strcmp(argv[1], "folder") != 0)) {
    fprintf(stderr, "usage: scan_memory folder|card DIRECTORY DATABASE\n");
    return 2;
  }
  if (card && !MountCard(argv[2])) return 1;
  if (card) ShareCard();
  PaintedStack stack;
  const size_t before = orx_bench::HeapInUse();
  orx_bench::ForgetHeapPeak();
  stack.Run([=] { Scan(card, argv[2], argv[3]); });
  const size_t most = orx_bench::HeapPeak();
  const long long sqliteMost = sqlite3_memory_highwater(0);
  DestroyAll();
  const size_t after = orx_bench::HeapInUse();
  const long peakKilobytes = orx_bench::Usage::PeakKilobytes();
  printf("rows %d before %zu most %zu sqlite %lld after %zu stack %zu peak_kb %ld\n", Rows(argv[3]),
         before, most, sqliteMost, after, stack.Used(), peakKilobytes);
  return 0;
}
