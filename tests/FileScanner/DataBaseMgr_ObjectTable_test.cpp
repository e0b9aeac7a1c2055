#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "FileScanner/DataBaseMgr.h"
#include "OSAL/UniqueValueGenerator.h"
#include "support/FailedStatement.h"
#include "support/FakePlatform.h"
#include "support/RecordBuilder.h"
#include "support/ReferenceDatabase.h"
#include "support/TestDatabase.h"

namespace {

using orx_test::FakePlatform;
using orx_test::LoggedFailureOf;
using orx_test::MakeImage;
using orx_test::MakeImageAt;
using orx_test::MakePlain;
using orx_test::MakeRecord;
using orx_test::MakeVideo;
using orx_test::OrBlank;
using orx_test::OrdinaryValues;
using orx_test::RecordValues;
using orx_test::ReferenceDatabase;
using orx_test::Rows;
using orx_test::TestDatabase;
using orx_test::TypedRows;
using testing::MatchesRegex;

const char* const kDoubleQuoted[] = {"\"",
                                     "a\"b",
                                     "a\"\"b",
                                     "a\" or \"1\"=\"1",
                                     "\" or 1=1 --",
                                     "x\"); drop table ObjectTable; --",
                                     "\"||FullPath||\""};
const char* const kNoIds[] = {"",          " ",     "abc",  "id",  "1 or 1=1", "1;drop table T",
                              "1--",       "\"1\"", "'1'",  "1.0", "+1",       "0x1",
                              "(1)",       "NULL",  "id--", " 1",  "1 ",       "-",
                              "1 or id=2", "1,2",   "%",    "*"};

RecordValues Plain() { return OrdinaryValues()[0]; }

// A database in one of the layouts; names of previews are counted from 1.
class ObjectTable : public testing::Test {
 protected:
  ObjectTable() { testing::internal::CaptureStderr(); }
  ~ObjectTable() override {
    UniqueValueGenerator::DestroyInstance();
    testing::internal::GetCapturedStderr();
  }

  void Open(int sharingMode) {
    UniqueValueGenerator::DestroyInstance();
    database_.reset();  // closes the one before
    database_ = std::make_unique<TestDatabase>(sharingMode);
  }
  DataBaseMgr* manager() const { return database_->manager(); }
  Rows Objects() const { return TypedRows(DataBaseMgr::ppDataBase, "ObjectTable"); }
  static bool Logged(const std::string& message) { return FakePlatform::Get().Logged(message); }
  static void ForgetLog() { FakePlatform::Get().log.clear(); }

  // A file with a row in the default layout.
  void AddImage(const std::string& path) { manager()->InsertMetaData(MakeImageAt(path).get()); }

  std::unique_ptr<TestDatabase> database_;
};

// ---- the three layouts, against the same values written as SQL text ----

TEST_F(ObjectTable, HoldsAnItemOfTheDefaultLayoutAsItsSqlTextDoes) {
  Open(0);
  ReferenceDatabase reference(*database_);
  for (const RecordValues& values : OrdinaryValues())
    for (unsigned type = 0; type <= 4; ++type) {
      SCOPED_TRACE(values.name);
      const auto record = MakeRecord(type, values);
      manager()->InsertMediaInObjTbl(record.get());
      reference.Exec(
          "insert into ObjectTable (\"class\",\"date\",\"parentID\",\"FullPath\",\"Valid\","
          "\"BackupID\",\"IsBackup\")\t\t\t\t\t values (%d ,\"%s\",\"%s\",\"%s\", 0, 0,%d);",
          static_cast<int>(type), OrBlank(record->GetDate()), OrBlank(record->GetDirectoryID()),
          OrBlank(record->GetFullPath()), 0);
      EXPECT_EQ(Objects(), reference.Table("ObjectTable"));
    }
  EXPECT_TRUE(FakePlatform::Get().log.empty());
}

TEST_F(ObjectTable, HoldsAnItemOfTheDefaultLayoutUnderItsOwnId) {
  Open(0);
  ReferenceDatabase reference(*database_);
  int id = 100;
  for (const RecordValues& values : OrdinaryValues()) {
    SCOPED_TRACE(values.name);
    const auto record = MakeImage(values);
    record->SetUniqueID(std::to_string(++id).c_str());
    manager()->InsertMediaInObjTbl(record.get());
    reference.Exec("insert into ObjectTable values (\"%s\",%d ,\"%s\",\"%s\",\"%s\", 0, 0, %d);",
                   record->GetUniqueID(), 1, OrBlank(record->GetDate()),
                   OrBlank(record->GetDirectoryID()), OrBlank(record->GetFullPath()), 0);
    EXPECT_EQ(Objects(), reference.Table("ObjectTable"));
  }
  EXPECT_TRUE(FakePlatform::Get().log.empty());
}

// What the layout for shared pictures and films holds beside the common values.
struct PreviewOf {
  explicit PreviewOf(const MediaMetaData& record) {
    if (const auto* image = dynamic_cast<const ImageMetaData*>(&record)) {
      thumbnail = OrBlank(image->GetThumbnailURI());
      screennail = OrBlank(image->GetScreennailURI());
    } else if (const auto* video = dynamic_cast<const VideoMetaData*>(&record)) {
      thumbnail = OrBlank(video->GetThumbnailURI());
      height = video->GetHeight();
      width = video->GetWidth();
      frameRate = video->GetVideoFrameRate();
      bitrate = video->GetVideoBitrate();
    }
  }
  std::string thumbnail = " ", screennail = " ";
  int height = 0, width = 0;
  double frameRate = 0;
  long bitrate = 0;
};

TEST_F(ObjectTable, HoldsAnItemOfTheObjectOnlyLayoutAsItsSqlTextDoes) {
  Open(8);
  ReferenceDatabase reference(*database_);
  for (const RecordValues& values : OrdinaryValues())
    for (unsigned type = 0; type <= 4; ++type) {
      SCOPED_TRACE(values.name);
      const auto r = MakeRecord(type, values);
      manager()->InsertMetaDataToObjTable(r.get());
      const PreviewOf p(*r);
      reference.Exec(
          "insert into ObjectTable (\"Title\",\"class\",\"date\",\"size\",\"parentID\","
          "\"FullPath\",\"uri\",\"Thumbnailuri\",\"Screennailuri\",\"Height\",\"Width\","
          "\"VideoFrameRate\", \"VideoBitrate\",\"SortIndex\")\t\t\t\t\t values (\"%s\",%d "
          ",\"%s\",%lld ,\"%s\",\"%s\",\"%s\",\"%s\",\"%s\", %d, %d, %f, %ld,\"%s\");",
          OrBlank(r->GetTitle()), static_cast<int>(type), OrBlank(r->GetDate()), r->GetSize(),
          OrBlank(r->GetDirectoryID()), OrBlank(r->GetFullPath()), OrBlank(r->GetURI()),
          p.thumbnail.c_str(), p.screennail.c_str(), p.height, p.width, p.frameRate, p.bitrate,
          OrBlank(r->GetSortIndex()));
      EXPECT_EQ(Objects(), reference.Table("ObjectTable"));
    }
  EXPECT_TRUE(FakePlatform::Get().log.empty());
}

TEST_F(ObjectTable, HoldsAnItemOfTheObjectOnlyLayoutUnderItsOwnId) {
  Open(8);
  ReferenceDatabase reference(*database_);
  int id = 100;
  for (const RecordValues& values : OrdinaryValues())
    for (const unsigned type : {1u, 3u}) {
      SCOPED_TRACE(values.name);
      const auto r = MakeRecord(type, values);
      r->SetUniqueID(std::to_string(++id).c_str());
      manager()->InsertXQMediaInObjectTable(r.get());
      const PreviewOf p(*r);
      reference.Exec(
          "insert into ObjectTable values (\"%s\",\"%s\",%d ,\"%s\",%lld,\"%s\",\"%s\",\"%s\","
          "\"%s\",\"%s\", %d, %d, %f, %ld, \"%s\");",
          r->GetUniqueID(), OrBlank(r->GetTitle()), static_cast<int>(type), OrBlank(r->GetDate()),
          r->GetSize(), OrBlank(r->GetDirectoryID()), OrBlank(r->GetFullPath()),
          OrBlank(r->GetURI()), p.thumbnail.c_str(), p.screennail.c_str(), p.height, p.width,
          p.frameRate, p.bitrate, OrBlank(r->GetSortIndex()));
      EXPECT_EQ(Objects(), reference.Table("ObjectTable"));
    }
  EXPECT_TRUE(FakePlatform::Get().log.empty());
}

TEST_F(ObjectTable, HoldsAnItemOfTheBackupLayoutAsItsSqlTextDoes) {
  Open(6);
  ReferenceDatabase reference(*database_);
  for (const RecordValues& values : OrdinaryValues())
    for (unsigned type = 0; type <= 4; ++type) {
      SCOPED_TRACE(values.name);
      const auto r = MakeRecord(type, values);
      manager()->InsertMetaDataToObjTable(r.get());
      reference.Exec(
          "insert into ObjectTable (\"Title\",\"class\",\"date\",\"size\",\"parentID\","
          "\"FullPath\",\"MimeType\",\"SortIndex\",\"Valid\",\"BackupID\",\"IsBackup\")"
          "\t\t\t\t\t values (\"%s\",%d ,\"%s\",%lld ,\"%s\",\"%s\",\"%s\",\"%s\", 0, 0,%d);",
          OrBlank(r->GetTitle()), static_cast<int>(type), OrBlank(r->GetDate()), r->GetSize(),
          OrBlank(r->GetDirectoryID()), OrBlank(r->GetFullPath()), OrBlank(r->GetMimeType()),
          OrBlank(r->GetSortIndex()), 0);
      EXPECT_EQ(Objects(), reference.Table("ObjectTable"));
    }
  EXPECT_TRUE(FakePlatform::Get().log.empty());
}

TEST_F(ObjectTable, HoldsAnItemOfTheBackupLayoutUnderItsOwnId) {
  Open(6);
  ReferenceDatabase reference(*database_);
  int id = 100;
  for (const RecordValues& values : OrdinaryValues()) {
    SCOPED_TRACE(values.name);
    const auto r = MakeImage(values);
    r->SetUniqueID(std::to_string(++id).c_str());
    manager()->InsertAutoBackupMediaInObjectTable(r.get());
    reference.Exec(
        "insert into ObjectTable values (\"%s\",\"%s\",%d ,\"%s\",%lld,\"%s\",\"%s\",\"%s\","
        "\"%s\", 0, 0, %d);",
        r->GetUniqueID(), OrBlank(r->GetTitle()), 1, OrBlank(r->GetDate()), r->GetSize(),
        OrBlank(r->GetDirectoryID()), OrBlank(r->GetFullPath()), OrBlank(r->GetMimeType()),
        OrBlank(r->GetSortIndex()), 0);
    EXPECT_EQ(Objects(), reference.Table("ObjectTable"));
  }
  EXPECT_TRUE(FakePlatform::Get().log.empty());
}

TEST_F(ObjectTable, KeepsTheTypesOfValues) {
  Open(8);
  RecordValues values = Plain();
  values.size = 5000000000;
  manager()->InsertMetaDataToObjTable(MakeVideo(values).get());
  values.real = 30;
  manager()->InsertMetaDataToObjTable(MakeVideo(values).get());
  EXPECT_EQ(database_->Select("select typeof(id), typeof(size), size, typeof(VideoFrameRate), "
                              "VideoFrameRate, typeof(SortIndex), SortIndex from ObjectTable"),
            (Rows{{"integer", "integer", "5000000000", "real", "29.97", "text", "0010007"},
                  {"integer", "integer", "5000000000", "integer", "30", "text", "0010007"}}));
}

TEST_F(ObjectTable, HoldsZeroAsTheTextOfABackupId) {
  for (const int mode : {0, 6}) {
    Open(mode);
    mode == 6 ? manager()->InsertMetaDataToObjTable(MakeImageAt("/a").get())
              : manager()->InsertMediaInObjTbl(MakeImageAt("/a").get());
    EXPECT_EQ(database_->Select("select typeof(BackupID), BackupID, Valid, IsBackup "
                                "from ObjectTable"),
              (Rows{{"text", "0", "0", "0"}}));
  }
}

// ---- which layout ----

TEST_F(ObjectTable, IsWrittenInTheLayoutOfTheSharingModeOfTheMoment) {
  Open(6);
  manager()->InsertMetaDataToObjTable(MakeImageAt("/a").get());
  FakePlatform::Get().sharingMode = 8;
  manager()->InsertMetaDataToObjTable(MakeImageAt("/b").get());  // not the layout of this table
  EXPECT_EQ(database_->Select("select FullPath from ObjectTable"), (Rows{{"/a"}}));
  EXPECT_TRUE(LoggedFailureOf(
      "insert into ObjectTable (\"Title\",\"class\",\"date\",\"size\",\"parentID\",\"FullPath\","
      "\"uri\",\"Thumbnailuri\",\"Screennailuri\",\"Height\",\"Width\",\"VideoFrameRate\", "
      "\"VideoBitrate\",\"SortIndex\")\t\t\t\t\t values (\" \",1 ,\" \",0 ,\" \",\"/b\""));
}

TEST_F(ObjectTable, IsWrittenInTheObjectOnlyLayoutInEveryModeButBackup) {
  Open(8);
  for (const int mode : {0, 2, 8, -1}) {
    FakePlatform::Get().sharingMode = mode;
    manager()->InsertMetaDataToObjTable(MakeImageAt("/a").get());
  }
  EXPECT_EQ(Objects().size(), 4u);
}

TEST_F(ObjectTable, TakesNoNullRecord) {
  Open(8);
  manager()->InsertMetaDataToObjTable(nullptr);
  manager()->InsertXQMediaInObjectTable(nullptr);
  manager()->InsertAutoBackupMediaInObjectTable(nullptr);
  manager()->InsertMediaInObjTbl(nullptr);
  EXPECT_TRUE(Objects().empty());
  EXPECT_TRUE(FakePlatform::Get().log.empty());
}

// ---- resource names of the object-only layout ----

TEST_F(ObjectTable, NamesThePreviewsOfAPicture) {
  Open(8);
  const auto image = MakeImage(Plain());
  manager()->InsertXQMediaInObjectTable(image.get());
  EXPECT_THAT(image->GetThumbnailURI(), MatchesRegex("/orxthumb0001[0-9]{3,}0000010007\\.JPG"));
  EXPECT_THAT(image->GetScreennailURI(), MatchesRegex("/orxscreen0002[0-9]{3,}0000010007\\.JPG"));
  EXPECT_EQ(database_->Select("select Thumbnailuri, Screennailuri, Height, Width, VideoFrameRate, "
                              "VideoBitrate from ObjectTable"),
            (Rows{{image->GetThumbnailURI(), image->GetScreennailURI(), "0", "0", "0", "0"}}));
}

TEST_F(ObjectTable, NamesTheThumbnailOfAFilm) {
  Open(8);
  const auto video = MakeVideo(Plain());
  manager()->InsertXQMediaInObjectTable(video.get());
  EXPECT_THAT(video->GetThumbnailURI(),
              MatchesRegex("/orxthumbvideo0001[0-9]{3,}0000010007\\.jpg"));
  EXPECT_EQ(database_->Select("select Thumbnailuri, Screennailuri, Height, Width, VideoFrameRate, "
                              "VideoBitrate from ObjectTable"),
            (Rows{{video->GetThumbnailURI(), " ", "11", "12", "29.97", "4000000"}}));
}

TEST_F(ObjectTable, NamesNoPreviewOfOtherItems) {
  Open(8);
  for (const unsigned type : {0u, 2u, 4u}) {
    const auto record = MakeRecord(type, Plain());
    manager()->InsertXQMediaInObjectTable(record.get());
  }
  EXPECT_EQ(
      database_->Select("select class, Thumbnailuri, Screennailuri, Height, VideoBitrate "
                        "from ObjectTable"),
      (Rows{{"0", " ", " ", "0", "0"}, {"2", " ", " ", "0", "0"}, {"4", " ", " ", "0", "0"}}));
}

TEST_F(ObjectTable, NamesNoPreviewInTheBackupLayout) {
  Open(6);
  const auto image = MakeImage(Plain());
  manager()->InsertMetaDataToObjTable(image.get());
  EXPECT_EQ(image->GetThumbnailURI(), nullptr);
}

TEST_F(ObjectTable, HoldsWhatAPlainRecordHas) {
  Open(8);
  for (const unsigned type : {1u, 3u})
    manager()->InsertXQMediaInObjectTable(MakePlain(type, Plain()).get());
  EXPECT_EQ(database_->Select("select class, Title, Thumbnailuri, Screennailuri, Height, Width, "
                              "VideoFrameRate, VideoBitrate, SortIndex from ObjectTable"),
            (Rows{{"1", "title", " ", " ", "0", "0", "0", "0", "0010007"},
                  {"3", "title", " ", " ", "0", "0", "0", "0", "0010007"}}));
}

TEST_F(ObjectTable, HoldsWhatARecordOfAnotherClassHas) {
  Open(8);
  const auto image = MakeImage(Plain());
  image->SetType(3);
  manager()->InsertXQMediaInObjectTable(image.get());
  const auto video = MakeVideo(Plain());
  video->SetType(1);
  manager()->InsertXQMediaInObjectTable(video.get());
  EXPECT_EQ(database_->Select("select class, Title, Thumbnailuri, Height from ObjectTable"),
            (Rows{{"3", "title", " ", "0"}, {"1", "title", " ", "0"}}));
}

// ---- ids ----

void InsertInLayout(DataBaseMgr* manager, int mode, MediaMetaData* record) {
  if (mode == 0) {
    manager->InsertMediaInObjTbl(record);
  } else {
    manager->InsertMetaDataToObjTable(record);
  }
}

TEST_F(ObjectTable, GivesARecordTheIdOfItsRow) {
  for (const int mode : {0, 6, 8}) {
    Open(mode);
    for (const char* id : {"1", "2", "3"}) {
      const auto image = MakeImageAt(std::string("/") + id);
      InsertInLayout(manager(), mode, image.get());
      EXPECT_STREQ(image->GetUniqueID(), id);
      EXPECT_TRUE(DataBaseMgr::vdata.empty());
    }
  }
}

TEST_F(ObjectTable, GivesARecordTheIdOfTheLaterOfTwoRowsWithItsPath) {
  for (const int mode : {0, 6, 8}) {
    Open(mode);
    const auto first = MakeImageAt("/same"), second = MakeImageAt("/same");
    InsertInLayout(manager(), mode, first.get());
    InsertInLayout(manager(), mode, second.get());
    EXPECT_STREQ(first->GetUniqueID(), "1");
    EXPECT_STREQ(second->GetUniqueID(), "2");
    EXPECT_EQ(database_->Select("select id, FullPath from ObjectTable"),
              (Rows{{"1", "/same"}, {"2", "/same"}}));
  }
}

TEST_F(ObjectTable, GivesARecordWithoutPathAnIdToo) {
  Open(0);
  ImageMetaData image;
  manager()->InsertMediaInObjTbl(&image);
  EXPECT_STREQ(image.GetUniqueID(), "1");
  EXPECT_EQ(database_->Cell("select FullPath from ObjectTable"), " ");
}

TEST_F(ObjectTable, GivesARecordThatWasNotInsertedNoId) {
  for (const int mode : {0, 6, 8}) {
    Open(mode);
    const auto there = MakeImageAt("/same");
    InsertInLayout(manager(), mode, there.get());
    const auto image = MakeImageAt("/same");
    image->SetDate("\"");
    InsertInLayout(manager(), mode, image.get());
    EXPECT_EQ(image->GetUniqueID(), nullptr);
    EXPECT_EQ(Objects().size(), 1u);
    EXPECT_EQ(FakePlatform::Get().log.size(), 1u);  // of the statement alone
  }
}

TEST_F(ObjectTable, RefusesAnIdThatIsTaken) {
  struct {
    int mode;
    const char* writer;
  } const layouts[] = {{0, "InsertMediaInObjTbl"},
                       {6, "InsertAutoBackupMediaInObjectTable"},
                       {8, "InsertXQMediaInObjectTable"}};
  for (const auto& layout : layouts) {
    Open(layout.mode);
    InsertInLayout(manager(), layout.mode, MakeImageAt("/a").get());
    const auto image = MakeImageAt("/b");
    image->SetUniqueID("1");
    InsertInLayout(manager(), layout.mode, image.get());
    EXPECT_EQ(database_->Select("select id, FullPath from ObjectTable"), (Rows{{"1", "/a"}}));
    EXPECT_STREQ(image->GetUniqueID(), "1");
    const auto& log = FakePlatform::Get().log;
    ASSERT_EQ(log.size(), 2u);
    EXPECT_EQ(log[1].message,
              std::string("[DataBaseMgr::") + layout.writer + "] Object insertion [/b] failed");
    EXPECT_EQ(log[1].priority, 4);
  }
}

TEST_F(ObjectTable, RefusesAnIdThatIsNoNumber) {
  Open(0);
  const auto image = MakeImageAt("/a");
  image->SetUniqueID("first");
  manager()->InsertMediaInObjTbl(image.get());
  EXPECT_TRUE(Objects().empty());
  EXPECT_EQ(FakePlatform::Get().Messages(),
            (std::vector<std::string>{
                "[DataBaseMgr::ExecSqlStatmentNoValueReturn]\n\tquery : insert into ObjectTable "
                "values (\"first\",1 ,\" \",\" \",\"/a\", 0, 0, 0);\n\texec failed [20]\n\terrmsg "
                ": [datatype mismatch]",
                "[DataBaseMgr::InsertMediaInObjTbl] Object insertion [/a] failed"}));
}

TEST_F(ObjectTable, HoldsTheItemsOfATransactionThatIsCommitted) {
  Open(0);
  manager()->ExecSqlStatmentNoValueReturn("BEGIN;");
  AddImage("/a");
  EXPECT_TRUE(database_->Select("select id from ObjectTable").empty());
  EXPECT_EQ(manager()->ExecSqlStatmentNoValueReturn("COMMIT;"), 1);
  EXPECT_EQ(database_->Select("select id from ObjectTable").size(), 1u);
}

// ---- the statements as logged ----

TEST_F(ObjectTable, LogsTheInsertOfTheDefaultLayout) {
  Open(0);
  database_->Run("drop table ObjectTable");
  manager()->InsertMediaInObjTbl(MakeImageAt("/a").get());
  EXPECT_EQ(FakePlatform::Get().Messages(),
            (std::vector<std::string>{
                "[DataBaseMgr::ExecSqlStatmentNoValueReturn]\n\tquery : insert into ObjectTable "
                "(\"class\",\"date\",\"parentID\",\"FullPath\",\"Valid\",\"BackupID\",\"IsBackup\")"
                "\t\t\t\t\t values (1 ,\" \",\" \",\"/a\", 0, 0,0);\n\texec failed [1]\n\terrmsg : "
                "[no such table: ObjectTable]"}));
}

TEST_F(ObjectTable, LogsTheInsertOfTheBackupLayout) {
  Open(6);
  database_->Run("drop table ObjectTable");
  manager()->InsertMetaDataToObjTable(MakeImageAt("/a").get());
  EXPECT_TRUE(LoggedFailureOf(
      "insert into ObjectTable (\"Title\",\"class\",\"date\",\"size\",\"parentID\",\"FullPath\","
      "\"MimeType\",\"SortIndex\",\"Valid\",\"BackupID\",\"IsBackup\")\t\t\t\t\t values "
      "(\" \",1 ,\" \",0 ,\" \",\"/a\",\" \",\" \", 0, 0,0);"));
  ForgetLog();
  const auto image = MakeImageAt("/a");
  image->SetUniqueID("5");
  manager()->InsertMetaDataToObjTable(image.get());
  EXPECT_TRUE(
      LoggedFailureOf("insert into ObjectTable values (\"5\",\" \",1 ,\" \",0,\" \",\"/a\","
                      "\" \",\" \", 0, 0, 0);\n\texec failed [1]\n\terrmsg : [no such "
                      "table: ObjectTable]"));
}

TEST_F(ObjectTable, LogsTheInsertOfTheObjectOnlyLayout) {
  Open(8);
  database_->Run("drop table ObjectTable");
  const auto record = MakePlain(2, {"missing", true, "", -3, 0, 0, 0, false});
  record->SetUniqueID("5");
  manager()->InsertMetaDataToObjTable(record.get());
  EXPECT_TRUE(LoggedFailureOf(
      "insert into ObjectTable values (\"5\",\" \",2 ,\" \",-3,\" \",\" \",\" \",\" \",\" \", 0, "
      "0, "
      "0.000000, 0, \" \");\n\texec failed [1]\n\terrmsg : [no such table: ObjectTable]"));
}

// ---- presence ----

TEST_F(ObjectTable, ConfirmsTheRowsOfAPathAlone) {
  Open(0);
  for (const char* path : {"/a", "/b", "/a"}) AddImage(path);
  database_->Run("update ObjectTable set Valid = 1");
  EXPECT_EQ(manager()->ValidateItemInDB("/a"), 1);
  EXPECT_EQ(database_->Select("select FullPath, Valid from ObjectTable"),
            (Rows{{"/a", "0"}, {"/b", "1"}, {"/a", "0"}}));
  EXPECT_EQ(manager()->ValidateItemInDB("/unknown"), 1);
  EXPECT_EQ(manager()->ValidateItemInDB("FullPath"), 1);
  EXPECT_EQ(database_->Cell("select count(*) from ObjectTable where Valid = 1"), "1");
}

TEST_F(ObjectTable, ConfirmsNothingForAPathWithADoubleQuote) {
  Open(0);
  AddImage("/a");
  database_->Run("update ObjectTable set Valid = 1");
  for (const char* path : kDoubleQuoted) {
    ForgetLog();
    EXPECT_EQ(manager()->ValidateItemInDB(path), 0) << path;
    EXPECT_TRUE(LoggedFailureOf(std::string("update ObjectTable set Valid = 0 where FullPath=\"") +
                                path + "\""));
  }
  EXPECT_EQ(manager()->ValidateItemInDB(nullptr), 0);
  EXPECT_EQ(database_->Cell("select Valid from ObjectTable"), "1");
}

TEST_F(ObjectTable, LogsWhatSqliteSaysOfARefusedPath) {
  Open(0);
  manager()->ValidateItemInDB("a\"b");
  EXPECT_EQ(FakePlatform::Get().Messages(),
            (std::vector<std::string>{
                "[DataBaseMgr::ExecSqlStatmentNoValueReturn]\n\tquery : update ObjectTable set "
                "Valid = 0 where FullPath=\"a\"b\"\n\texec failed [1]\n\terrmsg : [near \"b\": "
                "syntax error]"}));
}

TEST_F(ObjectTable, ConfirmsNothingInTheObjectOnlyLayout) {
  Open(8);
  EXPECT_EQ(manager()->ValidateItemInDB("/a"), 0);
}

TEST_F(ObjectTable, KnowsThePathsOfItsRows) {
  Open(0);
  AddImage("/it's a %path_");
  EXPECT_TRUE(manager()->IsInDB("/it's a %path_"));
  EXPECT_FALSE(manager()->IsInDB("/it's a %path"));
  EXPECT_FALSE(manager()->IsInDB("/it's a %pathx"));
  EXPECT_FALSE(manager()->IsInDB(""));
  EXPECT_FALSE(manager()->IsInDB("FullPath"));
  EXPECT_FALSE(manager()->IsInDB(nullptr));
}

TEST_F(ObjectTable, LeavesTheFoundRowsInTheResult) {
  Open(0);
  AddImage("/a");
  AddImage("/a");
  EXPECT_TRUE(manager()->IsInDB("/a"));
  EXPECT_EQ(DataBaseMgr::vdata.size(), 16u);
  EXPECT_EQ(DataBaseMgr::vdata[4], "/a");
  EXPECT_EQ(DataBaseMgr::vcol_head.size(), 8u);
  EXPECT_EQ(manager()->nRows, 2);
  EXPECT_EQ(manager()->nColumns, 8);
}

TEST_F(ObjectTable, KnowsNoPathWithADoubleQuote) {
  Open(0);
  AddImage("/a");
  for (const char* path : kDoubleQuoted) {
    EXPECT_FALSE(manager()->IsInDB(path)) << path;
    EXPECT_TRUE(DataBaseMgr::vdata.empty());
  }
  EXPECT_TRUE(FakePlatform::Get().log.empty());
}

// ---- removal ----

// One row of each class in both tables, id and class being the same, and another of class 4.
class ObjectTableRemoval : public ObjectTable {
 protected:
  ObjectTableRemoval() {
    Open(0);
    database_->Run(
        "insert into ObjectTable (id, class, date, parentID, FullPath) values "
        "(10, 0, 'd', '0', '/dir'), (11, 1, 'd', '10', '/dir/i'), (12, 2, 'd', '10', '/dir/a'), "
        "(13, 3, 'd', '10', '/dir/v'), (14, 4, 'd', '10', '/dir/x')");
    database_->Run(
        "insert into ContainerTable (id, class, date, FullPath) "
        "values ('10', 0, 'd', '/dir'), ('99', 0, 'd', '/other')");
    for (const char* table : {"ImageTable", "AudioTable", "VideoTable"})
      database_->Run(std::string("insert into ") + table +
                     " (id, class, date, size, FullPath) values ('10', 1, 'd', 1, 'p'), "
                     "('11', 1, 'd', 1, 'p'), ('12', 1, 'd', 1, 'p'), ('13', 1, 'd', 1, 'p'), "
                     "('14', 1, 'd', 1, 'p')");
  }

  // The ids that are left in a table, as "10,11".
  std::string Ids(const std::string& table) const {
    return database_->Cell("select ifnull(group_concat(id), '') from " + table);
  }
  std::string AllIds() const {
    return Ids("ObjectTable") + " " + Ids("ContainerTable") + " " + Ids("ImageTable") + " " +
           Ids("AudioTable") + " " + Ids("VideoTable");
  }
};

constexpr char kAll[] = "10,11,12,13,14 10,99 10,11,12,13,14 10,11,12,13,14 10,11,12,13,14";

TEST_F(ObjectTableRemoval, TakesTheRowOfTheClassFromItsTable) {
  EXPECT_EQ(manager()->RemoveIdFromTables("10", 0), 1);
  EXPECT_EQ(AllIds(), "11,12,13,14 99 10,11,12,13,14 10,11,12,13,14 10,11,12,13,14");
  EXPECT_EQ(manager()->RemoveIdFromTables("11", 1), 1);
  EXPECT_EQ(AllIds(), "12,13,14 99 10,12,13,14 10,11,12,13,14 10,11,12,13,14");
  EXPECT_EQ(manager()->RemoveIdFromTables("12", 2), 1);
  EXPECT_EQ(AllIds(), "13,14 99 10,12,13,14 10,11,13,14 10,11,12,13,14");
  EXPECT_EQ(manager()->RemoveIdFromTables("13", 3), 1);
  EXPECT_EQ(AllIds(), "14 99 10,12,13,14 10,11,13,14 10,11,12,14");
  EXPECT_TRUE(FakePlatform::Get().log.empty());
}

TEST_F(ObjectTableRemoval, TakesNothingForAnotherClass) {
  for (const int mediaClass : {4, -1, 100, INT32_MIN, INT32_MAX})
    EXPECT_EQ(manager()->RemoveIdFromTables("14", mediaClass), 0);
  EXPECT_EQ(AllIds(), kAll);
  EXPECT_TRUE(FakePlatform::Get().log.empty());
}

TEST_F(ObjectTableRemoval, TakesNothingForAnUnknownId) {
  EXPECT_EQ(manager()->RemoveIdFromTables("77", 1), 1);
  EXPECT_EQ(manager()->RemoveIdFromTables("-1", 1), 1);
  EXPECT_EQ(manager()->RemoveIdFromTables(nullptr, 1), 0);
  EXPECT_EQ(AllIds(), kAll);
}

TEST_F(ObjectTableRemoval, TakesAnIdByItsValue) {
  EXPECT_EQ(manager()->RemoveIdFromTables("0011", 1), 1);
  EXPECT_EQ(Ids("ObjectTable"), "10,12,13,14");
  EXPECT_EQ(Ids("ImageTable"), "10,12,13,14");
}

TEST_F(ObjectTableRemoval, TakesNothingForAnIdThatIsNoNumber) {
  for (const char* id : kNoIds) {
    for (int mediaClass = 0; mediaClass <= 3; ++mediaClass) {
      ForgetLog();
      EXPECT_EQ(manager()->RemoveIdFromTables(id, mediaClass), 0) << id;
      EXPECT_EQ(FakePlatform::Get().log.size(), 2u);
    }
    manager()->RemoveIdFromObjectTable(id);
    manager()->DeleteItemFromDBWithId(id);
    manager()->DeleteItemFromDB(id);
  }
  EXPECT_EQ(AllIds(), kAll);
}

TEST_F(ObjectTableRemoval, LogsTheDeletesThatAreRefused) {
  const char* const tables[] = {"ContainerTable", "ImageTable", "AudioTable", "VideoTable"};
  for (int mediaClass = 0; mediaClass <= 3; ++mediaClass) {
    ForgetLog();
    manager()->RemoveIdFromTables("x", mediaClass);
    const std::string before =
        "[DataBaseMgr::ExecSqlStatmentNoValueReturn]\n\tquery : delete from ";
    const std::string after = " where id=x\n\texec failed [1]\n\terrmsg : [no such column: x]";
    EXPECT_EQ(FakePlatform::Get().Messages(),
              (std::vector<std::string>{before + tables[mediaClass] + after,
                                        before + "ObjectTable" + after}));
  }
}

TEST_F(ObjectTableRemoval, LogsARefusedIdThatSqliteWouldTake) {
  manager()->RemoveIdFromTables("1 or 1=1", 1);
  EXPECT_TRUE(
      Logged("[DataBaseMgr::ExecSqlStatmentNoValueReturn]\n\tquery : delete from "
             "ImageTable where id=1 or 1=1\n\texec failed [1]\n\terrmsg : [an id is not a "
             "decimal number]"));
  EXPECT_EQ(AllIds(), kAll);
}

TEST_F(ObjectTableRemoval, TakesTheObjectRowWhenTheMediaTableIsMissing) {
  Open(8);
  manager()->InsertMetaDataToObjTable(MakeImageAt("/a").get());
  EXPECT_EQ(manager()->RemoveIdFromTables("1", 1), 1);
  EXPECT_TRUE(LoggedFailureOf(
      "delete from ImageTable where id=1\n\texec failed [1]\n\terrmsg : [no such table: "
      "ImageTable]"));
  EXPECT_TRUE(Objects().empty());
}

TEST_F(ObjectTableRemoval, TakesTheObjectRowAloneAndLogsTheStatement) {
  manager()->RemoveIdFromObjectTable("11");
  EXPECT_EQ(Ids("ObjectTable"), "10,12,13,14");
  EXPECT_EQ(Ids("ImageTable"), "10,11,12,13,14");
  EXPECT_EQ(FakePlatform::Get().Messages(),
            (std::vector<std::string>{"[DataBaseMgr::RemoveIdFromObjectTable] delete from "
                                      "ObjectTable where id=11"}));
  EXPECT_EQ(FakePlatform::Get().log[0].priority, 4);
}

TEST_F(ObjectTableRemoval, LogsTheStatementWhateverItsOutcome) {
  manager()->RemoveIdFromObjectTable("x y");
  EXPECT_EQ(FakePlatform::Get().log.size(), 2u);
  EXPECT_TRUE(
      Logged("[DataBaseMgr::RemoveIdFromObjectTable] delete from ObjectTable where id=x y"));
  ForgetLog();
  manager()->RemoveIdFromObjectTable(nullptr);
  EXPECT_TRUE(FakePlatform::Get().log.empty());
}

TEST_F(ObjectTableRemoval, TakesAnItemByItsPath) {
  manager()->DeleteItemFromDB("/dir/v");
  EXPECT_EQ(AllIds(), "10,11,12,14 10,99 10,11,12,13,14 10,11,12,13,14 10,11,12,14");
  EXPECT_TRUE(DataBaseMgr::vdata.empty());
}

TEST_F(ObjectTableRemoval, TakesEveryItemOfAPathByItsOwnClass) {
  database_->Run("update ObjectTable set FullPath = '/same' where id in (11, 12, 14)");
  manager()->DeleteItemFromDB("/same");
  EXPECT_EQ(AllIds(), "10,13,14 10,99 10,12,13,14 10,11,13,14 10,11,12,13,14");
}

TEST_F(ObjectTableRemoval, TakesNoItemForAnUnknownPath) {
  for (const char* path : {"/unknown", "", "FullPath", "/dir/%", "/DIR/V"})
    manager()->DeleteItemFromDB(path);
  manager()->DeleteItemFromDB(nullptr);
  for (const char* path : kDoubleQuoted) manager()->DeleteItemFromDB(path);
  EXPECT_EQ(AllIds(), kAll);
  EXPECT_TRUE(FakePlatform::Get().log.empty());
}

TEST_F(ObjectTableRemoval, TakesAnItemByItsId) {
  manager()->DeleteItemFromDBWithId("12");
  EXPECT_EQ(AllIds(), "10,11,13,14 10,99 10,11,12,13,14 10,11,13,14 10,11,12,13,14");
  EXPECT_TRUE(DataBaseMgr::vdata.empty());
}

TEST_F(ObjectTableRemoval, TakesAnItemWhoseIdIsACellOfTheResult) {
  manager()->ExecSqlStatment("select id from ObjectTable where id = 12");
  manager()->DeleteItemFromDBWithId(DataBaseMgr::vdata[0].c_str());
  EXPECT_EQ(Ids("AudioTable"), "10,11,13,14");
}

TEST_F(ObjectTableRemoval, TakesNoItemForAnUnknownIdOrClass) {
  manager()->DeleteItemFromDBWithId("77");
  manager()->DeleteItemFromDBWithId("14");
  manager()->DeleteItemFromDBWithId(nullptr);
  for (const char* id : kDoubleQuoted) manager()->DeleteItemFromDBWithId(id);
  EXPECT_EQ(AllIds(), kAll);
  EXPECT_TRUE(FakePlatform::Get().log.empty());
  EXPECT_TRUE(DataBaseMgr::vdata.empty());
}

TEST_F(ObjectTableRemoval, TakesTheRowOfADirectoryAlone) {
  manager()->RemoveDIRfromObjTableInDB("/dir");
  EXPECT_EQ(AllIds(), "11,12,13,14 10,99 10,11,12,13,14 10,11,12,13,14 10,11,12,13,14");
  EXPECT_EQ(FakePlatform::Get().Messages(),
            (std::vector<std::string>{
                "[DataBaseMgr::RemoveDIRfromObjTableInDB] Removing /dir directory from DB",
                "[DataBaseMgr::RemoveIdFromObjectTable] delete from ObjectTable where id=10"}));
}

TEST_F(ObjectTableRemoval, TakesNoDirectoryForAnUnknownPath) {
  manager()->RemoveDIRfromObjTableInDB("/unknown");
  EXPECT_EQ(FakePlatform::Get().Messages(),
            (std::vector<std::string>{
                "[DataBaseMgr::RemoveDIRfromObjTableInDB] Removing /unknown directory from DB"}));
  manager()->RemoveDIRfromObjTableInDB(nullptr);
  for (const char* path : kDoubleQuoted) manager()->RemoveDIRfromObjTableInDB(path);
  EXPECT_EQ(AllIds(), kAll);
}

TEST_F(ObjectTableRemoval, TakesEverythingBelowADirectory) {
  int found = 0;
  manager()->RemoveDIRfromDB("/dir", &found);
  EXPECT_EQ(found, 1);
  EXPECT_EQ(AllIds(), "14 99 10,12,13,14 10,11,13,14 10,11,12,14");
}

TEST_F(ObjectTableRemoval, FindsNothingBelowAnUnknownDirectory) {
  int found = 0;
  manager()->RemoveDIRfromDB("/unknown", &found);
  EXPECT_EQ(found, 0);
  EXPECT_EQ(AllIds(), kAll);
}

TEST_F(ObjectTableRemoval, DoesNothingWithoutADatabase) {
  DataBaseMgr::DestroyInstance();
  EXPECT_EQ(manager()->ValidateItemInDB("/dir"), 0);
  EXPECT_FALSE(manager()->IsInDB("/dir"));
  EXPECT_EQ(manager()->RemoveIdFromTables("10", 0), 0);
  manager()->RemoveIdFromObjectTable("10");
  manager()->DeleteItemFromDB("/dir");
  manager()->DeleteItemFromDBWithId("10");
  manager()->RemoveDIRfromObjTableInDB("/dir");
  manager()->InsertMetaDataToObjTable(MakeImageAt("/dir/n").get());
  EXPECT_EQ(AllIds(), kAll);
}

}  // namespace
