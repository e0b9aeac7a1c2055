#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "FileScanner/DataBaseMgr.h"
#include "support/FakePlatform.h"
#include "support/TestDatabase.h"

namespace {

using orx_test::FakePlatform;
using orx_test::LogLine;
using orx_test::TestDatabase;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

void AddObject(const TestDatabase& database, int id, int mediaClass, const std::string& path,
               int isBackup = 0) {
  database.Run("insert into ObjectTable values (" + std::to_string(id) + "," +
               std::to_string(mediaClass) + ",'d','1','" + path + "',0,0," +
               std::to_string(isBackup) + ")");
}

// ---- the backup list ---------------------------------------------------------------------------

struct BackupList {
  int count = -1;
  BackupClassElement* head = nullptr;
  int result;
  BackupList() : result(DataBaseMgr::GetInstance()->GetClassElementListForBackup(&count, &head)) {}
  ~BackupList() {
    while (head != nullptr) {
      BackupClassElement* next = head->pNext;
      free(head);
      head = next;
    }
  }
  std::vector<std::string> Paths() const {
    std::vector<std::string> paths;
    for (const BackupClassElement* p = head; p != nullptr; p = p->pNext)
      paths.emplace_back(p->szFullPath);
    return paths;
  }
};

TEST(BackupList, HoldsFilesThatAreNoBackupInDescendingPathOrder) {
  TestDatabase database;
  AddObject(database, 1, 0, "/card");
  AddObject(database, 2, 1, "/card/a.JPG");
  AddObject(database, 3, 3, "/card/c.MP4");
  AddObject(database, 4, 1, "/card/d.JPG", 1);
  AddObject(database, 5, 2, "/card/b.aac");
  const BackupList list;
  EXPECT_EQ(list.result, 1);
  EXPECT_EQ(list.count, 3);
  EXPECT_THAT(list.Paths(), ElementsAre("/card/c.MP4", "/card/b.aac", "/card/a.JPG"));
  EXPECT_STREQ(list.head->szTitle, "c.MP4");
  EXPECT_THAT(DataBaseMgr::vdata, IsEmpty());
  EXPECT_THAT(FakePlatform::Get().Messages(), ElementsAre("NumOfRows : 3, NumOfColumns: 1"));
  EXPECT_EQ(FakePlatform::Get().log[0].priority, 4);
}

TEST(BackupList, IsThereInTheBackupLayoutToo) {
  TestDatabase database(6);
  database.Run(
      "insert into ObjectTable (Title,class,date,size,parentID,FullPath,IsBackup) values "
      "('a',1,'d',1,'1','/card/a.JPG',0),('b',1,'d',1,'1','/card/b.JPG',1)");
  EXPECT_THAT(BackupList().Paths(), ElementsAre("/card/a.JPG"));
}

TEST(BackupList, LeavesItsResultsAloneWhenThereIsNothing) {
  TestDatabase database;
  AddObject(database, 1, 0, "/card");
  AddObject(database, 2, 1, "/card/a.JPG", 1);
  const BackupList list;
  EXPECT_EQ(list.result, 0);
  EXPECT_EQ(list.count, -1);
  EXPECT_EQ(list.head, nullptr);
  EXPECT_THAT(FakePlatform::Get().log, IsEmpty());
}

TEST(BackupList, IsNothingWhenTheQueryFails) {
  TestDatabase database(8);  // no IsBackup column
  const BackupList list;
  EXPECT_EQ(list.result, 0);
  EXPECT_EQ(list.count, -1);
  EXPECT_THAT(FakePlatform::Get().log, IsEmpty());
}

TEST(BackupList, IsNothingWithoutAPlaceForIt) {
  TestDatabase database;
  AddObject(database, 2, 1, "/card/a.JPG");
  int count = 0;
  BackupClassElement* head = nullptr;
  EXPECT_EQ(database->GetClassElementListForBackup(nullptr, &head), 0);
  EXPECT_EQ(database->GetClassElementListForBackup(&count, nullptr), 0);
}

TEST(BackupList, EndsAfterAThousandFiles) {
  TestDatabase database;
  database.Run("begin");
  char path[32];
  for (int i = 0; i < 1500; ++i) {
    snprintf(path, sizeof path, "/card/IMG_%04d.JPG", i);
    AddObject(database, i + 1, 1, path);
  }
  database.Run("commit");
  const BackupList list;
  EXPECT_EQ(list.result, 1);
  EXPECT_EQ(list.count, 1000);
  EXPECT_EQ(database->nRows, 1000);
  EXPECT_TRUE(FakePlatform::Get().Logged("NumOfRows : 1500, NumOfColumns: 1"));
  const std::vector<std::string> paths = list.Paths();
  ASSERT_EQ(paths.size(), 1000u);
  for (int i = 0; i < 1000; ++i) {
    snprintf(path, sizeof path, "/card/IMG_%04d.JPG", 1499 - i);
    EXPECT_EQ(paths[static_cast<size_t>(i)], path);
  }
}

TEST(BackupList, HoldsExactlyAThousandFilesWhenThereAreSoMany) {
  TestDatabase database;
  database.Run("begin");
  for (int i = 0; i < 1000; ++i) AddObject(database, i + 1, 1, "/card/" + std::to_string(i));
  database.Run("commit");
  EXPECT_EQ(BackupList().count, 1000);
}

TEST(BackupList, CutsTitleAndPathToTheirFieldsAndEndsThem) {
  TestDatabase database;
  const std::string name(300, 'n');
  AddObject(database, 2, 1, "/card/" + name);
  const BackupList list;
  ASSERT_EQ(list.result, 1);
  EXPECT_EQ(std::string(list.head->szTitle), name.substr(0, 127));
  EXPECT_EQ(std::string(list.head->szFullPath), ("/card/" + name).substr(0, 255));
}

TEST(BackupList, KeepsTextsThatJustFit) {
  TestDatabase database;
  const std::string name(127, 'n');
  const std::string path = "/" + std::string(126, 'd') + "/" + name;
  ASSERT_EQ(path.size(), 255u);
  AddObject(database, 2, 1, path);
  const BackupList list;
  EXPECT_EQ(std::string(list.head->szTitle), name);
  EXPECT_EQ(std::string(list.head->szFullPath), path);
}

TEST(BackupList, CallsAPathThatEndsInASlashNoTitle) {
  TestDatabase database;
  AddObject(database, 2, 1, "/card/");
  EXPECT_STREQ(BackupList().head->szTitle, "No Title");
}

// ---- sharing -----------------------------------------------------------------------------------

// Two pictures, a multi-picture file and two films; of each kind one is shared.
class UpdateShareStatus : public testing::Test {
 protected:
  UpdateShareStatus() {
    database.Run(
        "insert into ImageTable (id,Title,class,date,size,FullPath,Share) values "
        "('1','a',1,'d',10,'/card/a.JPG',1),('2','b',1,'d',10,'/card/b.JPG',0),"
        "('3','c',1,'d',10,'/card/c.MPO',0),('9','z',1,'d',10,'/card/z.jpg',0);"
        "insert into VideoTable (id,Title,class,date,size,FullPath,Share) values "
        "('4','e',3,'d',10,'/card/e.MP4',1),('5','f',3,'d',10,'/card/f.MP4',0);");
  }
  int Update(std::vector<std::string> paths, int mode = 0) {
    std::vector<char*> list;
    for (std::string& path : paths) list.push_back(path.data());
    list.push_back(nullptr);
    return database->UpdateShareStatus(list.data(), mode);
  }
  std::vector<std::string> Shared() const {
    std::vector<std::string> names;
    for (const auto& row :
         database.Select("select FullPath from ImageTable where Share=1 union all "
                         "select FullPath from VideoTable where Share=1"))
      names.push_back(row[0].substr(6));
    return names;
  }
  TestDatabase database;
};

TEST_F(UpdateShareStatus, ChangesNothingInTheModeWithoutMediaTables) {
  EXPECT_EQ(Update({"/card/b.JPG"}, 8), 1);
  EXPECT_EQ(database->UpdateShareStatus(nullptr, 8), 1);
  EXPECT_THAT(Shared(), ElementsAre("a.JPG", "e.MP4"));
  EXPECT_THAT(FakePlatform::Get().log, IsEmpty());
}

TEST_F(UpdateShareStatus, WorksInEveryOtherMode) {
  for (const int mode : {-1, 0, 1, 2, 3, 6, 7, 9}) {
    SCOPED_TRACE(mode);
    EXPECT_EQ(Update({"/card/b.JPG"}, mode), 1);
    EXPECT_THAT(Shared(), ElementsAre("b.JPG"));
    EXPECT_EQ(Update({"/card/f.MP4"}, mode), 1);
    EXPECT_THAT(Shared(), ElementsAre("f.MP4"));
  }
}

TEST_F(UpdateShareStatus, SharesEverythingForANullList) {
  EXPECT_EQ(database->UpdateShareStatus(nullptr, 0), 1);
  EXPECT_THAT(Shared(), ElementsAre("a.JPG", "b.JPG", "c.MPO", "z.jpg", "e.MP4", "f.MP4"));
  EXPECT_THAT(FakePlatform::Get().Messages(),
              ElementsAre("[UpdateShareStatus] pShareItem is NULL!!"));
  EXPECT_EQ(FakePlatform::Get().log[0].priority, 4);
}

TEST_F(UpdateShareStatus, HidesEverythingForAnEmptyList) {
  EXPECT_EQ(Update({}), 1);
  EXPECT_THAT(Shared(), IsEmpty());
}

TEST_F(UpdateShareStatus, SharesTheListedFilesAlone) {
  EXPECT_EQ(Update({"/card/b.JPG", "/card/f.MP4", "/card/c.MPO"}), 1);
  EXPECT_THAT(Shared(), ElementsAre("b.JPG", "c.MPO", "f.MP4"));
  EXPECT_THAT(FakePlatform::Get().log, IsEmpty());
}

TEST_F(UpdateShareStatus, PassesOverAPathThatIsNotThere) {
  EXPECT_EQ(Update({"/card/none.JPG", "/card/b.JPG"}), 1);
  EXPECT_THAT(Shared(), ElementsAre("b.JPG"));
}

TEST_F(UpdateShareStatus, DoesNotShareAnExtensionInLowerCase) {
  EXPECT_EQ(Update({"/card/z.jpg", "/card/b.JPG"}), 1);
  EXPECT_THAT(Shared(), ElementsAre("b.JPG"));
  EXPECT_THAT(FakePlatform::Get().Messages(),
              ElementsAre("[UpdateShareStatus] Invalid filetype[.jpg]"));
  EXPECT_EQ(FakePlatform::Get().log[0].priority, 4);
}

TEST_F(UpdateShareStatus, NamesEachUnknownExtension) {
  EXPECT_EQ(Update({"/card/x.MP3", "/card/y.", "/card.d/z", "/card/w.JPG.bak"}), 1);
  EXPECT_THAT(FakePlatform::Get().Messages(),
              ElementsAre("[UpdateShareStatus] Invalid filetype[.MP3]",
                          "[UpdateShareStatus] Invalid filetype[.]",
                          "[UpdateShareStatus] Invalid filetype[.d/z]",
                          "[UpdateShareStatus] Invalid filetype[.bak]"));
  EXPECT_THAT(Shared(), IsEmpty());
}

TEST_F(UpdateShareStatus, RunsTheStatementBeforeAnUnknownExtensionOnceMore) {
  EXPECT_EQ(Update({"/card/b.JPG", "/card/it's.JPG", "/card/x.txt"}), 1);
  EXPECT_THAT(Shared(), ElementsAre("b.JPG"));
  const std::string failed =
      "query : update ImageTable SET Share = 1 WHERE FullPath = '/card/it's.JPG'";
  EXPECT_THAT(FakePlatform::Get().Messages(),
              ElementsAre(HasSubstr(failed), "[UpdateShareStatus] Invalid filetype[.txt]",
                          HasSubstr(failed)));
}

TEST_F(UpdateShareStatus, HidesFilmsOnceMoreForAnUnknownExtensionAtTheFront) {
  // A trigger counts how often films are hidden: a row that hiding does not change is found again.
  database.AllowTriggers();
  database.Run(
      "create table Hidden (n INTEGER); create trigger Again after update on VideoTable when "
      "new.Share=0 begin insert into Hidden values (1); update VideoTable set Share=1 where "
      "id=new.id and (select count(*) from Hidden)<2; end;");
  EXPECT_EQ(Update({"/card/x.txt"}), 1);
  EXPECT_EQ(database.Cell("select count(*) from Hidden"), "2");
}

TEST_F(UpdateShareStatus, StopsAtAPathWithoutADot) {
  EXPECT_EQ(Update({"/card/b.JPG", "/card/none", "/card/c.MPO"}), 0);
  EXPECT_THAT(Shared(), ElementsAre("b.JPG"));
}

TEST_F(UpdateShareStatus, RefusesAPathWithASingleQuoteAndGoesOn) {
  database.Run("update ImageTable set FullPath='/card/x'' or ''1''=''1.JPG' where id='2'");
  EXPECT_EQ(Update({"/card/x' or '1'='1.JPG", "/card/c.MPO", "/card/' or 1=1 --.MP4"}), 1);
  EXPECT_THAT(Shared(), ElementsAre("c.MPO"));
  const auto messages = FakePlatform::Get().Messages();
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_THAT(messages[0], HasSubstr("\tquery : update ImageTable SET Share = 1 WHERE FullPath = "
                                     "'/card/x' or '1'='1.JPG'\n"));
  EXPECT_THAT(messages[1], HasSubstr("\tquery : update VideoTable SET Share = '1' WHERE FullPath "
                                     "= '/card/' or 1=1 --.MP4'\n"));
}

TEST_F(UpdateShareStatus, TakesADoubleQuoteForText) {
  database.Run("update ImageTable set FullPath='/card/a\"b.JPG' where id='2'");
  EXPECT_EQ(Update({"/card/a\"b.JPG"}), 1);
  EXPECT_THAT(Shared(), ElementsAre("a\"b.JPG"));
}

TEST_F(UpdateShareStatus, HidesAllAndSharesNothingWhenCancelledBefore) {
  database->CancelInvalidateAllItems();
  EXPECT_EQ(Update({"/card/b.JPG"}), 1);
  EXPECT_THAT(Shared(), IsEmpty());
  EXPECT_THAT(FakePlatform::Get().Messages(), ElementsAre("break in DeleteInvalidItemsInDB"));
  EXPECT_EQ(FakePlatform::Get().log[0].priority, 4);
}

TEST_F(UpdateShareStatus, SaysNothingOfACancelWhenTheListIsOver) {
  database->CancelInvalidateAllItems();
  EXPECT_EQ(Update({}), 1);
  EXPECT_THAT(FakePlatform::Get().log, IsEmpty());
}

TEST_F(UpdateShareStatus, StopsBeforeThePathAfterACancel) {
  FakePlatform::Get().onLog = [](const LogLine& line) {
    if (line.message == "[UpdateShareStatus] Invalid filetype[.txt]")
      DataBaseMgr::GetInstance()->CancelInvalidateAllItems();
  };
  EXPECT_EQ(Update({"/card/b.JPG", "/card/x.txt", "/card/c.MPO"}), 1);
  EXPECT_THAT(Shared(), ElementsAre("b.JPG"));
  EXPECT_TRUE(FakePlatform::Get().Logged("break in DeleteInvalidItemsInDB"));
}

TEST_F(UpdateShareStatus, FailsWhenPicturesCannotBeChanged) {
  database.Run("drop table ImageTable");
  EXPECT_EQ(Update({"/card/f.MP4"}), 0);
  EXPECT_EQ(database->UpdateShareStatus(nullptr, 0), 0);
  EXPECT_EQ(database.Cell("select Share from VideoTable where id='4'"), "1");
  EXPECT_EQ(database.Cell("select Share from VideoTable where id='5'"), "0");
}

TEST_F(UpdateShareStatus, FailsHalfDoneWhenFilmsCannotBeChanged) {
  database.Run("drop table VideoTable");
  EXPECT_EQ(Update({"/card/b.JPG"}), 0);
  EXPECT_EQ(database.Cell("select count(*) from ImageTable where Share=1"), "0");
  EXPECT_EQ(database->UpdateShareStatus(nullptr, 0), 0);
  EXPECT_EQ(database.Cell("select count(*) from ImageTable where Share=1"), "4");
}

TEST_F(UpdateShareStatus, FailsWithoutADatabase) {
  DataBaseMgr::DestroyInstance();
  EXPECT_EQ(DataBaseMgr::GetInstance()->UpdateShareStatus(nullptr, 0), 0);
}

}  // namespace
