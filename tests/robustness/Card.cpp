#include "robustness/Card.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DirectoryScanner.h"
#include "robustness/Injection.h"
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

bool IsSoak() { return getenv("ORXSCAN_SOAK") != nullptr; }

CardTest::CardTest() {
  QuietPlatform::Reset();
  GiveSqliteAFaultyMachine();
  card_ = temp_.MakeDir("card");
  db_ = temp_.Path("media.db");
}

CardTest::~CardTest() {
  Injection::Disarm();
  DataBaseMgr::DestroyInstance();
  DirectoryScanner::DestroyInstance();
}

void CardTest::WriteSmallCard() const {
  Write("100PHOTO/IMGA0001.JPG", JpegBuilder().Description("harbour").Thumbnail(160, 120).Build());
  Write("100PHOTO/IMGA0002.JPG", MakeJpeg(4000, 3000));
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

int CardTest::Scan() const {
  int status = 0;
  if (DirectoryScanner* scanner = DirectoryScanner::GetInstance(); scanner != nullptr) {
    scanner->SetDlnaProfiles(pProfiles);
    scanner->ScanDir(card_.c_str(), db_.c_str(), &status);
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
  for (const std::string table : {"ImageTable", "AudioTable", "VideoTable", "ContainerTable"})
    for (const std::string& row : reader.Rows("select m.*, o.FullPath as object from " + table +
                                              " m left join ObjectTable o on m.id = o.id"))
      contents.push_back(table + ": " + row);
  std::sort(contents.begin(), contents.end());
  return contents;
}

std::string CardTest::DatabaseBytes() const {
  std::ifstream file(db_, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void CardTest::RestoreDatabase(const std::string& bytes) const {
  for (const char* ending : {"", "-journal", "-new", "-new-journal"})
    std::filesystem::remove(db_ + ending);
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
