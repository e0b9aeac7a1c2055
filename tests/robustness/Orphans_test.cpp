// Rows that have lost the row of their folder: the next scan mends them, and touches no others.
#include <gmock/gmock.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DirectoryScanner.h"
#include "robustness/Card.h"
#include "robustness/NoPrivilege.h"
#include "robustness/Observed.h"
#include "support/CardMount.h"
#include "support/JpegBuilder.h"
#include "support/Mp4Builder.h"

namespace orx_test {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class OrphansTest : public CardTest, public testing::WithParamInterface<ScanKind> {
 protected:
  explicit OrphansTest(ScanKind kind) : CardTest(kind) {}
  OrphansTest() : CardTest(GetParam()) {}
  void SetUp() override {
    if (card_.empty()) GTEST_SKIP() << CardMount::Problem();
  }
  int ScanAnew() const {
    const auto onLine = QuietPlatform::Get().onLine;
    ForgetList();
    ResetPlatform().onLine = onLine;
    return Scan();
  }
  void Sql(const std::string& sql) const {
    const OtherConnection other(db_);
    EXPECT_EQ(other.Run(sql), SQLITE_OK) << sql << ": " << sqlite3_errmsg(other.get());
  }
  // A row of the object table in the layout of the kind.
  void AddObject(int mediaClass, const std::string& parent, const std::string& path) const {
    const bool hasSize = kind_ == ScanKind::kObjectOnly || kind_ == ScanKind::kBackup;
    Sql("insert into ObjectTable (class, date, parentID, FullPath" +
        std::string(hasSize ? ", size" : "") + ") values (" + std::to_string(mediaClass) +
        ", 'd', '" + parent + "', '" + path + "'" + (hasSize ? ", 5" : "") + ")");
  }
  std::vector<std::string> Paths() const {
    std::vector<std::string> paths;
    const OtherConnection other(db_);
    sqlite3_exec(
        other.get(), "select FullPath from ObjectTable order by FullPath, id",
        [](void* to, int, char** cells, char**) {
          static_cast<std::vector<std::string>*>(to)->emplace_back(cells[0]);
          return 0;
        },
        &paths, nullptr);
    return paths;
  }
};

TEST_P(OrphansTest, AreRegisteredAnewWhereTheirFilesAre) {
  WriteSmallCard();
  ScanAnew();
  const std::vector<std::string> expected = Contents();
  Sql("delete from ObjectTable where FullPath = '" + InCard("100PHOTO") + "'");
  const ObservedLog log;
  ScanAnew();
  EXPECT_EQ(Difference(Contents(), expected), "");
  EXPECT_THAT(log.Errors(), IsEmpty());
}

TEST_P(OrphansTest, AreRemovedWhereTheirFilesAreGone) {
  WriteSmallCard();
  ScanAnew();
  const std::string bytes = DatabaseBytes();
  std::filesystem::remove_all(InCard("100PHOTO"));
  ScanAnew();
  const std::vector<std::string> expected = Contents();
  RestoreDatabase(bytes);
  Sql("delete from ObjectTable where FullPath = '" + InCard("100PHOTO") + "'");
  ScanAnew();
  EXPECT_EQ(Difference(Contents(), expected), "");
}

TEST_P(OrphansTest, AreThoseOfFoldersInFoldersToo) {
  Write("100PHOTO/IMGA0001.JPG", MakeJpeg());
  ScanAnew();
  const std::vector<std::string> expected = Contents();
  AddObject(0, "4711", InCard("gone"));
  Sql("update ObjectTable set id = 900 where FullPath = '" + InCard("gone") + "'");
  AddObject(0, "900", InCard("gone/deep"));
  Sql("update ObjectTable set id = 901 where FullPath = '" + InCard("gone/deep") + "'");
  AddObject(1, "901", InCard("gone/deep/IMGA0009.JPG"));
  AddObject(7, "901", InCard("gone/deep/strange"));
  ScanAnew();
  EXPECT_EQ(Difference(Contents(), expected), "");
}

TEST_P(OrphansTest, AreLeftOutsideTheFolder) {
  Write("100PHOTO/IMGA0001.JPG", MakeJpeg());
  ScanAnew();
  const std::vector<std::string> inside = Paths();
  for (const char* path : {"/elsewhere", "/", ""}) AddObject(0, "4711", path);
  AddObject(0, "4711", card_ + "2");
  AddObject(0, "4711", card_ + "2/100PHOTO");
  AddObject(0, "4711", card_ + "-old/100PHOTO");
  AddObject(0, "4711", card_);
  AddObject(0, "4711", card_.substr(0, card_.size() - 1));
  const std::vector<std::string> before = Paths();
  ScanAnew();
  EXPECT_EQ(Paths(), before);
  EXPECT_EQ(before.size(), inside.size() + 8);
}

TEST_P(OrphansTest, AreNoRowsWithoutAFolder) {
  Write("100PHOTO/IMGA0001.JPG", MakeJpeg());
  ScanAnew();
  for (const char* parent : {"0", " ", "", "  "})
    AddObject(0, parent, InCard("alone" + std::string(parent)));
  const std::vector<std::string> before = Paths();
  ScanAnew();
  EXPECT_EQ(Paths(), before);
}

TEST_P(OrphansTest, AreLeftByACancelThatKeepsWhatWasRemoved) {
  WriteSmallCard();
  ScanAnew();
  const std::string away = temp_.Path("away");
  const std::vector<std::string> whole = Contents();
  std::filesystem::rename(InCard("102PHOTO"), away);
  {
    DataBaseMgr* database = DataBaseMgr::GetInstance();
    ASSERT_EQ(database->OpenDB(db_.c_str()), 1);
    // As soon as the first row has gone.
    sqlite3_update_hook(
        *database->getPpDataBase(),
        [](void*, int operation, const char*, const char* table, sqlite3_int64) {
          if (operation == SQLITE_DELETE && std::string(table) == "ObjectTable")
            DataBaseMgr::GetInstance()->CancelInvalidateAllItems();
        },
        nullptr);
    ScanAnew();
  }
  EXPECT_THAT(Paths(), Not(Contains(InCard("102PHOTO"))));
  EXPECT_THAT(Paths(), Contains(InCard("102PHOTO/IMGA0005.JPG")));
  std::filesystem::rename(away, InCard("102PHOTO"));
  ScanAnew();
  EXPECT_EQ(Difference(Contents(), whole), "");
}

TEST_P(OrphansTest, CostOneCountWithoutReadingTheWholeTable) {
  WriteSmallCard();
  ScanAnew();
  std::string count;
  {
    const ObservedStatements statements(db_);
    ScanAnew();
    ASSERT_EQ(statements.Count("with recursive"), 1);
    count = statements.all().at(1);
  }
  std::vector<std::string> plan;
  const OtherConnection other(db_);
  sqlite3_exec(
      other.get(), ("explain query plan " + count).c_str(),
      [](void* to, int, char** cells, char**) {
        static_cast<std::vector<std::string>*>(to)->emplace_back(cells[3]);
        return 0;
      },
      &plan, nullptr);
  ASSERT_THAT(plan, Contains(HasSubstr("USING INDEX ObjectTable_parentID")));
  for (const std::string& step : plan) {
    EXPECT_THAT(step, Not(HasSubstr("SCAN ObjectTable"))) << step;
    EXPECT_THAT(step, Not(HasSubstr("FullPath"))) << step;
    EXPECT_THAT(step, Not(HasSubstr("AUTOMATIC"))) << step;
  }
}

INSTANTIATE_TEST_SUITE_P(Scans, OrphansTest, testing::ValuesIn(kScanKinds),
                         [](const auto& test) { return std::string(NameOf(test.param)); });

// The two scans that fill all tables mend what the other one left.
class OrphansOfOtherScans : public OrphansTest {
 protected:
  OrphansOfOtherScans() : OrphansTest(ScanKind::kFull) {}
};

TEST_F(OrphansOfOtherScans, AreMendedByAFolderScan) {
  WriteSmallCard();
  ScanAnew();
  Sql("delete from ObjectTable where FullPath = '" + InCard("100PHOTO") + "'");
  kind_ = ScanKind::kFolder;
  ScanAnew();
  const std::vector<std::string> paths = Paths();
  for (const char* name : {"100PHOTO", "100PHOTO/IMGA0001.JPG", "100PHOTO/IMGA0002.JPG"})
    EXPECT_EQ(std::count(paths.begin(), paths.end(), InCard(name)), 1) << name;
  for (const std::string& row : Contents()) EXPECT_THAT(row, Not(HasSubstr("object=NULL")));
}

// A folder that can be entered but not read: its films can be opened and stay, without its row.
class UnreadableFolderTest : public OrphansTest {
 protected:
  UnreadableFolderTest() : OrphansTest(ScanKind::kFolder) {}
};

TEST_F(UnreadableFolderTest, LosesNoFilmAndGetsNoneTwice) {
  for (const char* film : {"FILM0001.MP4", "FILM0002.MP4", "FILM0003.MP4"})
    Write("100PHOTO/" + std::string(film), SmallFilm());
  Scan();
  const std::vector<std::string> whole = Contents();
  chmod(InCard("100PHOTO").c_str(), 0311);
  {
    const NoPrivilege noPrivilege;
    if (std::filesystem::directory_iterator(
            InCard("100PHOTO"), std::filesystem::directory_options::skip_permission_denied) !=
        std::filesystem::directory_iterator()) {
      chmod(InCard("100PHOTO").c_str(), 0755);
      GTEST_SKIP() << "this machine lets the process read everything";
    }
    Scan();
  }
  EXPECT_THAT(Paths(), Not(Contains(InCard("100PHOTO"))));
  EXPECT_EQ(Paths().size(), 4u);  // the card and the films
  chmod(InCard("100PHOTO").c_str(), 0755);
  Scan();
  EXPECT_EQ(Difference(Contents(), whole), "");
}

}  // namespace
}  // namespace orx_test
