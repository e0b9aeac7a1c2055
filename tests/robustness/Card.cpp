#include "robustness/Card.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DcfFileInfoVector.h"
#include "FileScanner/DirectoryScanner.h"
#include "robustness/Injection.h"
#include "support/CardMount.h"
#include "support/JpegBuilder.h"
#include "support/Mp4Builder.h"

namespace orx_test {
namespace {

// "/orxthumb0007…" → "/orxthumb"
std::string KindOfName(const std::string& name) {
  return name.compare(0, 4, "/orx") == 0 ? name.substr(0, name.find_first_of("0123456789")) : name;
}

class Reader {
 public:
  explicit Reader(const std::string& path) {
    if (!std::filesystem::exists(path)) return;
    EXPECT_EQ(sqlite3_open_v2(path.c_str(), &database_, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
  }
  ~Reader() { sqlite3_close(database_); }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  bool open() const { return database_ != nullptr; }
  std::vector<std::string> Rows(const std::string& sql) const {
    std::vector<std::string> rows;
    sqlite3_stmt* statement = nullptr;
    EXPECT_EQ(sqlite3_prepare_v2(database_, sql.c_str(), -1, &statement, nullptr), SQLITE_OK)
        << sql << ": " << sqlite3_errmsg(database_);
    while (statement != nullptr && sqlite3_step(statement) == SQLITE_ROW)
      rows.push_back(Row(statement));
    sqlite3_finalize(statement);
    return rows;
  }

 private:
  static std::string Row(sqlite3_stmt* statement) {
    std::string row;
    for (int i = 0; i < sqlite3_column_count(statement); ++i) {
      const std::string column = sqlite3_column_name(statement, i);
      if (column == "id" || column == "parentID") continue;
      const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, i));
      const std::string cell = text != nullptr ? text : "NULL";
      row += column + "=" + KindOfName(cell) + "|";
    }
    return row;
  }

  sqlite3* database_ = nullptr;
};

}  // namespace

namespace {

constexpr char kCardRoot[] = "/mnt/mmc/DCIM";

struct ScanOfKind {
  const char* name;
  int sharingMode;
  void (DirectoryScanner::*scan)(const char* dir, const char* db, int* status);
};
const ScanOfKind kScans[] = {{"Folder", 0, &DirectoryScanner::ScanDir},
                             {"Full", 0, &DirectoryScanner::scanDcf},
                             {"ObjectOnly", 8, &DirectoryScanner::scanXQDcf},
                             {"Backup", 6, &DirectoryScanner::scanAutoBackupDcf}};
const ScanOfKind& Of(ScanKind kind) { return kScans[static_cast<size_t>(kind)]; }

// What the platform shares, the newest first.  Nothing is allocated while a scan asks.
std::vector<std::string> sharedFiles;

int SharedFile(int index, char** uri) {
  static char text[64];
  if (index < 0 || static_cast<size_t>(index) >= sharedFiles.size()) return -1;
  snprintf(text, sizeof text, "%s", sharedFiles[static_cast<size_t>(index)].c_str());
  *uri = text;
  return 0;
}

int TypeOfFile(const char* uri) {
  return strstr(uri, "IMGA0001") != nullptr ? DLNA_FILE_TYPE_IMAGE_RAW : DLNA_FILE_TYPE_IMAGE;
}

// By a call that is never made to fail.
long long SizeOfFile(const char* path) {
  struct statx status = {};
  return statx(AT_FDCWD, path, 0, STATX_SIZE, &status) == 0
             ? static_cast<long long>(status.stx_size)
             : 0;
}

// The files of the card that lie where a camera puts them, except the companions of others.
std::vector<std::string> FilesOnCard() {
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(kCardRoot)) {
    const std::string path = entry.path().string();
    constexpr size_t kShape = sizeof "/mnt/mmc/DCIM/100PHOTO/IMGA0001.JPG" - 1;
    if (path.size() == kShape && entry.path().extension() != ".KRZ") files.push_back(path);
  }
  std::sort(files.rbegin(), files.rend());
  return files;
}

}  // namespace

const char* NameOf(ScanKind kind) { return Of(kind).name; }

bool IsSoak() { return getenv("ORXSCAN_SOAK") != nullptr; }

CardTest::CardTest(ScanKind kind) : kind_(kind) {
  GiveSqliteAFaultyMachine();
  db_ = temp_.Path("media.db");
  if (kind == ScanKind::kFolder) {
    card_ = temp_.MakeDir("card");
  } else if (CardMount::Problem().empty()) {
    CardMount::Clear();
    card_ = kCardRoot;
  }
  ResetPlatform();
}

CardTest::~CardTest() {
  Injection::Disarm();
  DataBaseMgr::DestroyInstance();
  DirectoryScanner::DestroyInstance();
  DcfFileInfoVector::DestroyInstance();
}

QuietPlatform& CardTest::ResetPlatform() const {
  QuietPlatform& platform = QuietPlatform::Reset();
  platform.sharingMode = Of(kind_).sharingMode;
  if (card_ != kCardRoot) return platform;
  sharedFiles = FilesOnCard();
  platform.fileCount = static_cast<int>(sharedFiles.size());
  platform.uri = SharedFile;
  platform.fileType = TypeOfFile;
  platform.sizeOf = SizeOfFile;
  platform.attributesSucceed = true;
  platform.fileAttribute.nWidth = 1024;
  platform.fileAttribute.nHeight = 768;
  snprintf(platform.fileAttribute.szDate, sizeof platform.fileAttribute.szDate, "2026-11-21");
  snprintf(platform.videoAttribute.szDate, sizeof platform.videoAttribute.szDate, "2026-11-21");
  return platform;
}

std::string CardTest::Write(const std::string& name, const std::string& content) const {
  if (card_ != kCardRoot) return temp_.Write("card/" + name, content);
  CardMount::Write(name, content);
  return InCard(name);
}

void CardTest::ForgetList() const { DcfFileInfoVector::DestroyInstance(); }

void CardTest::WriteSmallCard() const {
  Write("100PHOTO/IMGA0001.JPG", JpegBuilder().Description("harbour").Thumbnail(160, 120).Build());
  Write("100PHOTO/IMGA0002.JPG", MakeJpeg(4000, 3000));
  Write("100PHOTO/IMGA0001.KRZ", MakeJpeg(320, 240));
  Write("101PHOTO/MAHA0001.MP4", SmallFilm());
  Write("101PHOTO/SONG0001.m4a", SmallSong());
  Write("102PHOTO/IMGA0005.JPG", MakeJpeg());
  Write("notes.txt", "no medium");
}

void CardTest::ChangeSmallCard() const {
  std::filesystem::remove(InCard("100PHOTO/IMGA0002.JPG"));
  std::filesystem::remove_all(InCard("102PHOTO"));
  Write("100PHOTO/IMGA0001.JPG", JpegBuilder().Size(800, 600).Padding(500).Build());
  Write("103PHOTO/IMGA0009.JPG", MakeJpeg(1000, 700));
}

int CardTest::Scan(int status) const {
  if (DirectoryScanner* scanner = DirectoryScanner::GetInstance(); scanner != nullptr) {
    scanner->SetDlnaProfiles(pProfiles);
    (scanner->*Of(kind_).scan)(card_.c_str(), db_.c_str(), &status);
  }
  DirectoryScanner::DestroyInstance();
  return status;
}

std::vector<std::string> CardTest::Contents() const {
  const Reader reader(db_);
  if (!reader.open()) return {};
  EXPECT_EQ(reader.Rows("pragma integrity_check"), std::vector<std::string>{"integrity_check=ok|"});
  std::vector<std::string> contents = reader.Rows(
      "select o.*, ifnull(p.FullPath, o.parentID) as parent from ObjectTable o left join "
      "ObjectTable p on o.parentID = p.id");
  for (const std::string table : {"ImageTable", "AudioTable", "VideoTable", "ContainerTable"}) {
    if (reader.Rows("select name from sqlite_master where name = '" + table + "'").empty())
      continue;  // not in this layout
    for (const std::string& row : reader.Rows("select m.*, o.FullPath as object from " + table +
                                              " m left join ObjectTable o on m.id = o.id"))
      contents.push_back(table + ": " + row);
  }
  std::sort(contents.begin(), contents.end());
  return contents;
}

std::string CardTest::DatabaseBytes() const {
  std::ifstream file(db_, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void CardTest::RestoreDatabase(const std::string& bytes) const {
  for (const char* ending : {"", "-journal"}) std::filesystem::remove(db_ + ending);
  for (const char* ending : {"", "-journal", "-lock"})
    std::filesystem::remove(temp_.Path(".media.db.orxscan-new") + ending);
  if (!bytes.empty()) std::ofstream(db_, std::ios::binary) << bytes;
}

std::string Difference(const std::vector<std::string>& found,
                       const std::vector<std::string>& expected) {
  std::string difference;
  const auto add = [&difference](const char* mark, const std::vector<std::string>& from,
                                 const std::vector<std::string>& to) {
    std::vector<std::string> only;
    std::set_difference(from.begin(), from.end(), to.begin(), to.end(), std::back_inserter(only));
    for (const std::string& row : only) difference += mark + row + "\n";
  };
  add("missing: ", expected, found);
  add("too many: ", found, expected);
  return difference;
}

}  // namespace orx_test
