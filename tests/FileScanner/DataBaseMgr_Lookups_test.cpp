#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <memory>
#include <string>
#include <vector>

#include "FileScanner/DataBaseMgr.h"
#include "OSAL/ORXMemory.h"
#include "support/FakePlatform.h"
#include "support/TestDatabase.h"

namespace {

using orx_test::FakePlatform;
using orx_test::TestDatabase;
using testing::ElementsAre;
using testing::IsEmpty;

// The text of a lookup, or "(null)"; releases it.
std::string Taken(TChar* text) {
  const std::string copy = text != nullptr ? text : "(null)";
  ORXMemory::Free(text);
  return copy;
}

struct PathTable {
  char** cells = nullptr;
  int count = -1;
  int code = -1;
  explicit PathTable(const char* parentId) {
    code = DataBaseMgr::GetInstance()->GetArrayOfFullPathInDB(parentId, &cells, &count);
  }
  ~PathTable() { sqlite3_free_table(cells); }
  std::vector<std::string> All() const {
    std::vector<std::string> all;
    for (int i = 0; cells != nullptr && i <= count; ++i) all.emplace_back(cells[i]);
    return all;
  }
};

// One directory with a picture, a film and a song; every table gives other values.
class Lookups : public testing::Test {
 protected:
  Lookups() {
    database.Run(
        "insert into ObjectTable values (1,0,'','','/card',0,0,0),(2,1,'2026-11-21','1','/card/"
        "a.JPG',0,0,0),(3,3,'','1','/card/b.MP4',0,0,0),(4,2,'','1','/card/c.aac',0,0,0);"
        "insert into ImageTable (id,Title,class,date,size,FullPath,DLNAProfile) values "
        "('2','a',1,'d',10,'/card/a.JPG','JPEG_SM');"
        "insert into VideoTable (id,Title,class,date,size,FullPath,DLNAProfile) values "
        "('3','b',3,'d',30,'/card/b.MP4','AVC_MP4');"
        "insert into AudioTable (id,Title,class,date,size,FullPath,DLNAProfile) values "
        "('4','c',2,'d',20,'/card/c.aac','AAC_ADTS');");
  }
  TestDatabase database;
};

TEST_F(Lookups, ReadOneColumnOfTheObjectTable) {
  EXPECT_EQ(Taken(database->GetImageElementForPathFromObjTable("/card/a.JPG", "date")),
            "2026-11-21");
  EXPECT_EQ(Taken(database->GetVideoElementForPathFromObjTable("/card/b.MP4", "id")), "3");
  EXPECT_EQ(Taken(database->GetClassElementForPath("/card/c.aac", "class")), "2");
}

TEST_F(Lookups, ReadOneColumnOfTheMediaTables) {
  EXPECT_EQ(Taken(database->GetImageElementForPath("/card/a.JPG", "size")), "10");
  EXPECT_EQ(Taken(database->GetVideoElementForPath("/card/b.MP4", "size")), "30");
}

TEST_F(Lookups, ReadTheProfileOfEachKindFromItsOwnTable) {
  EXPECT_EQ(Taken(database->GetImageDLNAProfileForPath("/card/a.JPG")), "JPEG_SM");
  EXPECT_EQ(Taken(database->GetAudioDLNAProfileForPath("/card/c.aac")), "AAC_ADTS");
  EXPECT_EQ(Taken(database->GetVideoDLNAProfileForPath("/card/b.MP4")), "AVC_MP4");
  EXPECT_EQ(Taken(database->GetImageDLNAProfileForPath("/card/b.MP4")), "(null)");
  EXPECT_EQ(Taken(database->GetAudioDLNAProfileForPath("/card/a.JPG")), "(null)");
  EXPECT_EQ(Taken(database->GetVideoDLNAProfileForPath("/card/c.aac")), "(null)");
}

TEST_F(Lookups, ReadClassParentAndId) {
  EXPECT_EQ(Taken(database->GetClassForPath("/card/b.MP4")), "3");
  EXPECT_EQ(Taken(database->GetParentIdForPath("/card/b.MP4")), "1");
  EXPECT_EQ(Taken(database->GetUniqueIdForPath("/card/b.MP4")), "3");
}

TEST_F(Lookups, AnswerNullForAPathThatIsNotThere) {
  EXPECT_EQ(database->GetImageElementForPathFromObjTable("/x", "id"), nullptr);
  EXPECT_EQ(database->GetVideoElementForPathFromObjTable("/x", "id"), nullptr);
  EXPECT_EQ(database->GetClassElementForPath("/x", "id"), nullptr);
  EXPECT_EQ(database->GetImageElementForPath("/x", "id"), nullptr);
  EXPECT_EQ(database->GetVideoElementForPath("/x", "id"), nullptr);
  EXPECT_EQ(database->GetImageDLNAProfileForPath("/x"), nullptr);
  EXPECT_EQ(database->GetAudioDLNAProfileForPath("/x"), nullptr);
  EXPECT_EQ(database->GetVideoDLNAProfileForPath("/x"), nullptr);
  EXPECT_EQ(database->GetClassForPath("/x"), nullptr);
  EXPECT_EQ(database->GetParentIdForPath("/x"), nullptr);
  EXPECT_EQ(database->GetUniqueIdForPath("/x"), nullptr);
}

TEST_F(Lookups, LeaveTheResultListEmptyAndTheCountsOfTheirQuery) {
  Taken(database->GetUniqueIdForPath("/card/b.MP4"));
  EXPECT_THAT(DataBaseMgr::vdata, IsEmpty());
  EXPECT_EQ(database->nLastResult, SQLITE_OK);
  EXPECT_EQ(database->nRows, 1);
  EXPECT_EQ(database->nColumns, 1);
}

TEST_F(Lookups, AnswerTheFirstRowWhenSeveralHaveThePath) {
  database.Run("insert into ObjectTable values (9,1,'','7','/card/b.MP4',0,0,0)");
  EXPECT_EQ(Taken(database->GetUniqueIdForPath("/card/b.MP4")), "3");
}

TEST_F(Lookups, GiveNullCellsAsEmptyText) {
  database.Run("update ImageTable set Title = null");
  EXPECT_EQ(Taken(database->GetImageElementForPath("/card/a.JPG", "Title")), "");
}

TEST_F(Lookups, AnswerNullAndStaySilentWhenTheQueryFails) {
  EXPECT_EQ(database->GetImageElementForPath("/card/a.JPG", "NoSuchColumn"), nullptr);
  database.Run("drop table AudioTable");
  EXPECT_EQ(database->GetAudioDLNAProfileForPath("/card/c.aac"), nullptr);
  EXPECT_THAT(DataBaseMgr::vdata, IsEmpty());
  EXPECT_THAT(FakePlatform::Get().log, IsEmpty());
}

TEST_F(Lookups, RefuseAPathWithADoubleQuoteEvenWhenARowHasIt) {
  database.Run("insert into ObjectTable values (9,1,'','1','/card/a\"b',0,0,0)");
  EXPECT_EQ(database->GetUniqueIdForPath("/card/a\"b"), nullptr);
  EXPECT_EQ(database->GetUniqueIdForPath("/card/a\"\"b"), nullptr);
  EXPECT_EQ(database->GetUniqueIdForPath("x\" or \"1\"=\"1"), nullptr);
  EXPECT_EQ(database->GetClassForPath("x\"; drop table ObjectTable; --"), nullptr);
  EXPECT_EQ(database.Cell("select count(*) from ObjectTable"), "5");
}

TEST_F(Lookups, FindAPathWithASingleQuote) {
  database.Run("insert into ObjectTable values (9,1,'','1','/card/it''s.JPG',0,0,0)");
  EXPECT_EQ(Taken(database->GetUniqueIdForPath("/card/it's.JPG")), "9");
}

TEST_F(Lookups, TakeThePathForATextEvenWhenItNamesAColumn) {
  EXPECT_EQ(database->GetUniqueIdForPath("FullPath"), nullptr);
  database.Run("insert into ObjectTable values (9,1,'','1','FullPath',0,0,0)");
  EXPECT_EQ(Taken(database->GetUniqueIdForPath("FullPath")), "9");
}

TEST_F(Lookups, AcceptOnlyAPlainColumnName) {
  EXPECT_EQ(database->GetClassElementForPath("/card/a.JPG", "id,class"), nullptr);
  EXPECT_EQ(database->GetClassElementForPath("/card/a.JPG", "count(*)"), nullptr);
  EXPECT_EQ(database->GetClassElementForPath("/card/a.JPG", "1; drop table ObjectTable; --"),
            nullptr);
  EXPECT_EQ(database->GetImageElementForPath("/card/a.JPG", ""), nullptr);
  EXPECT_EQ(database.Cell("select count(*) from ObjectTable"), "4");
}

TEST_F(Lookups, AnswerNullForANullPathOrColumn) {
  EXPECT_EQ(database->GetUniqueIdForPath(nullptr), nullptr);
  EXPECT_EQ(database->GetImageElementForPath(nullptr, "id"), nullptr);
  EXPECT_EQ(database->GetImageElementForPath("/card/a.JPG", nullptr), nullptr);
}

TEST_F(Lookups, AnswerNullWithoutADatabase) {
  DataBaseMgr::DestroyInstance();
  EXPECT_EQ(DataBaseMgr::GetInstance()->GetUniqueIdForPath("/card"), nullptr);
  char** cells = nullptr;
  int count = 5;
  EXPECT_NE(DataBaseMgr::GetInstance()->GetArrayOfFullPathInDB("1", &cells, &count), SQLITE_OK);
  EXPECT_EQ(cells, nullptr);
  EXPECT_EQ(count, 0);
}

TEST_F(Lookups, FindAPathLongerThanAnyOldBuffer) {
  const std::string path = "/card/" + std::string(3000, 'p');
  database.Run("insert into ObjectTable values (9,1,'','1','" + path + "',0,0,0)");
  EXPECT_EQ(Taken(database->GetUniqueIdForPath(path.c_str())), "9");
}

TEST_F(Lookups, SearchByPathThroughAnIndex) {
  for (const std::string table : {"ObjectTable", "ImageTable", "AudioTable", "VideoTable"}) {
    const auto plan =
        database.Select("explain query plan select id from " + table + " where FullPath='x'");
    ASSERT_EQ(plan.size(), 1u);
    EXPECT_THAT(plan[0].back(), testing::HasSubstr(table + "_FullPath"));
  }
}

TEST_F(Lookups, SearchByParentThroughAnIndex) {
  const auto plan =
      database.Select("explain query plan select FullPath from ObjectTable where parentID='1'");
  ASSERT_EQ(plan.size(), 1u);
  EXPECT_THAT(plan[0].back(), testing::HasSubstr("ObjectTable_parentID"));
}

TEST_F(Lookups, ListThePathsUnderADirectoryAfterAHeaderCell) {
  const PathTable table("1");
  EXPECT_EQ(table.code, SQLITE_OK);
  EXPECT_EQ(table.count, 3);
  EXPECT_THAT(table.All(), ElementsAre("FullPath", "/card/a.JPG", "/card/b.MP4", "/card/c.aac"));
  EXPECT_EQ(database->nLastResult, SQLITE_OK);
}

TEST_F(Lookups, ListNothingUnderAnEmptyDirectory) {
  const PathTable table("77");
  EXPECT_EQ(table.code, SQLITE_OK);
  EXPECT_EQ(table.count, 0);
}

TEST_F(Lookups, LeaveTheResultListAloneWhenPathsAreListed) {
  database->ExecSqlStatment("select id from ObjectTable");
  const PathTable table("1");
  EXPECT_THAT(DataBaseMgr::vdata, ElementsAre("1", "2", "3", "4"));
}

TEST_F(Lookups, RefuseToListPathsUnderAnIdWithADoubleQuote) {
  database.Run("insert into ObjectTable values (9,1,'','1\"2','/card/q',0,0,0)");
  for (const char* id : {"1\"2", "x\" or \"1\"=\"1", "1\"; drop table ObjectTable; --"}) {
    const PathTable table(id);
    EXPECT_EQ(table.code, SQLITE_ERROR) << id;
    EXPECT_EQ(table.cells, nullptr) << id;
    EXPECT_EQ(table.count, 0) << id;
    EXPECT_EQ(database->nLastResult, SQLITE_ERROR) << id;
  }
  EXPECT_EQ(database.Cell("select count(*) from ObjectTable"), "5");
}

TEST_F(Lookups, TakeAnIdForATextWhenPathsAreListed) {
  database.Run("insert into ObjectTable values (9,1,'','it''s','/card/q',0,0,0)");
  EXPECT_THAT(PathTable("it's").All(), ElementsAre("FullPath", "/card/q"));
  EXPECT_EQ(PathTable("parentID").count, 0);
  EXPECT_EQ(PathTable("' or '1'='1").count, 0);
}

TEST_F(Lookups, ReportAFailingListOfPaths) {
  database.Run("drop table ObjectTable");
  const PathTable table("1");
  EXPECT_EQ(table.code, SQLITE_ERROR);
  EXPECT_EQ(table.cells, nullptr);
  EXPECT_EQ(table.count, 0);
  EXPECT_EQ(database->nLastResult, SQLITE_ERROR);
  EXPECT_THAT(FakePlatform::Get().log, IsEmpty());
}

TEST_F(Lookups, RefuseToListPathsWithoutAnIdOrAPlaceForThem) {
  char** cells = nullptr;
  int count = 5;
  EXPECT_NE(database->GetArrayOfFullPathInDB(nullptr, &cells, &count), SQLITE_OK);
  EXPECT_EQ(count, 0);
  EXPECT_NE(database->GetArrayOfFullPathInDB("1", nullptr, &count), SQLITE_OK);
  EXPECT_EQ(database->GetArrayOfFullPathInDB("1", &cells, nullptr), SQLITE_OK);
  sqlite3_free_table(cells);
}

TEST(GetTitleFromFullPath, IsWhatFollowsTheLastSlash) {
  EXPECT_EQ(Taken(DataBaseMgr::GetTitleFromFullPath("/card/100CAM/IMG_0001.JPG")), "IMG_0001.JPG");
  EXPECT_EQ(Taken(DataBaseMgr::GetTitleFromFullPath("/x")), "x");
}

TEST(GetTitleFromFullPath, IsTheWholePathWithoutASlash) {
  EXPECT_EQ(Taken(DataBaseMgr::GetTitleFromFullPath("IMG_0001.JPG")), "IMG_0001.JPG");
  EXPECT_EQ(Taken(DataBaseMgr::GetTitleFromFullPath("")), "");
}

TEST(GetTitleFromFullPath, IsNoTitleForAPathThatEndsInASlash) {
  EXPECT_EQ(Taken(DataBaseMgr::GetTitleFromFullPath("/card/")), "No Title");
  EXPECT_EQ(Taken(DataBaseMgr::GetTitleFromFullPath("/")), "No Title");
}

TEST(GetTitleFromFullPath, IsNullForNull) {
  EXPECT_EQ(DataBaseMgr::GetTitleFromFullPath(nullptr), nullptr);
}

}  // namespace
