#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "FileScanner/DataBaseMgr.h"
#include "support/FakePlatform.h"
#include "support/TempDir.h"
#include "support/TestDatabase.h"

namespace {

using orx_test::FakePlatform;
using orx_test::LogLine;
using orx_test::TempDir;
using orx_test::TestDatabase;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

std::string Quoted(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? std::string("''") : std::string(1, c);
  return quoted + "'";
}

// A database and the card that it describes.
class Reconcile : public testing::Test {
 protected:
  explicit Reconcile(int sharingMode = 0) : database(sharingMode) {}

  void Object(int id, const std::string& parentId, int mediaClass, const std::string& path,
              int valid = 0) const {
    database.Run("insert into ObjectTable (id,class,date,parentID,FullPath,Valid) values (" +
                 std::to_string(id) + "," + std::to_string(mediaClass) + ",'d'," +
                 Quoted(parentId) + "," + Quoted(path) + "," + std::to_string(valid) + ")");
  }
  void Container(int id, const std::string& parentId, const std::string& path) const {
    Object(id, parentId, 0, path);
    database.Run("insert into ContainerTable (id,class,date,FullPath) values ('" +
                 std::to_string(id) + "',0,'d'," + Quoted(path) + ")");
  }
  void Image(int id, const std::string& parentId, const std::string& path,
             const std::string& size) const {
    Item("ImageTable", 1, id, parentId, path, size);
  }
  void Video(int id, const std::string& parentId, const std::string& path,
             const std::string& size) const {
    Item("VideoTable", 3, id, parentId, path, size);
  }

  // The one column of a query.
  std::vector<std::string> Column(const std::string& sql) const {
    std::vector<std::string> cells;
    for (const auto& row : database.Select(sql)) cells.push_back(row[0]);
    return cells;
  }
  std::vector<std::string> Ids(const std::string& table = "ObjectTable") const {
    return Column("select id from " + table + " order by cast(id as integer)");
  }
  std::vector<std::string> StaleIds() const {
    return Column("select id from ObjectTable where Valid=1 order by id");
  }
  std::string Path(const std::string& name) const { return card.Path(name); }

  TestDatabase database;
  TempDir card;

 private:
  void Item(const std::string& table, int mediaClass, int id, const std::string& parentId,
            const std::string& path, const std::string& size) const {
    Object(id, parentId, mediaClass, path);
    database.Run("insert into " + table + " (id,Title,class,date,size,FullPath) values ('" +
                 std::to_string(id) + "','t'," + std::to_string(mediaClass) + ",'d'," + size + "," +
                 Quoted(path) + ")");
  }
};

void CancelNow() { DataBaseMgr::GetInstance()->CancelInvalidateAllItems(); }

// ---- marking -----------------------------------------------------------------------------------

class InvalidateAllItems : public Reconcile {
 protected:
  // 1 /card { 2 /card/a.JPG, 3 /card/sub { 4 b.JPG, 5 deep { 6 c.MP4 } }, 7 d.JPG }, 8 /other
  void FillTree() const {
    Object(1, " ", 0, "/card");
    Object(2, "1", 1, "/card/a.JPG");
    Object(3, "1", 0, "/card/sub");
    Object(4, "3", 1, "/card/sub/b.JPG");
    Object(5, "3", 0, "/card/sub/deep");
    Object(6, "5", 3, "/card/sub/deep/c.MP4");
    Object(7, "1", 1, "/card/d.JPG");
    Object(8, " ", 0, "/other");
  }
  int Starts() const {
    return FakePlatform::Get().CountLogged("InvalidateAllItemsInDB() Start!!!");
  }
};

TEST_F(InvalidateAllItems, MarksADirectoryAndAllUnderIt) {
  FillTree();
  database->InvalidateAllItemsInDB("/card");
  EXPECT_THAT(StaleIds(), ElementsAre("1", "2", "3", "4", "5", "6", "7"));
  EXPECT_THAT(DataBaseMgr::vdata, IsEmpty());
}

TEST_F(InvalidateAllItems, MarksOnlyTheSubtree) {
  FillTree();
  database->InvalidateAllItemsInDB("/card/sub");
  EXPECT_THAT(StaleIds(), ElementsAre("3", "4", "5", "6"));
}

TEST_F(InvalidateAllItems, LogsAStartForEveryContainer) {
  FillTree();
  database->InvalidateAllItemsInDB("/card");
  EXPECT_THAT(FakePlatform::Get().Messages(),
              ElementsAre("InvalidateAllItemsInDB() Start!!!", "InvalidateAllItemsInDB() Start!!!",
                          "InvalidateAllItemsInDB() Start!!!"));
  EXPECT_EQ(FakePlatform::Get().log[0].tag, "DLNA");
  EXPECT_EQ(FakePlatform::Get().log[0].priority, 4);
}

TEST_F(InvalidateAllItems, GoesDepthFirstInRowOrder) {
  FillTree();
  database.AllowTriggers();
  database.Run(
      "create table Marked (id INTEGER); create trigger Note after update on ObjectTable begin "
      "insert into Marked values (new.id); end;");
  database->InvalidateAllItemsInDB("/card");
  EXPECT_THAT(Column("select id from Marked order by rowid"),
              ElementsAre("1", "2", "3", "4", "5", "6", "7"));
}

TEST_F(InvalidateAllItems, FollowsParentsAndNotPaths) {
  Object(1, " ", 0, "/card");
  Object(2, "9", 1, "/card/a.JPG");
  Object(3, "1", 1, "/elsewhere/b.JPG");
  database->InvalidateAllItemsInDB("/card");
  EXPECT_THAT(StaleIds(), ElementsAre("1", "3"));
}

TEST_F(InvalidateAllItems, LogsAStartForAnEmptyDirectory) {
  FillTree();
  database->InvalidateAllItemsInDB("/other");
  EXPECT_THAT(StaleIds(), ElementsAre("8"));
  EXPECT_EQ(Starts(), 1);
}

TEST_F(InvalidateAllItems, IsSilentForAnUnknownOrNullPath) {
  FillTree();
  database->InvalidateAllItemsInDB("/card/none");
  database->InvalidateAllItemsInDB(nullptr);
  EXPECT_THAT(StaleIds(), IsEmpty());
  EXPECT_THAT(FakePlatform::Get().log, IsEmpty());
}

TEST_F(InvalidateAllItems, MarksTheDirectoryAloneWhenCancelledBefore) {
  FillTree();
  CancelNow();
  database->InvalidateAllItemsInDB("/card");
  EXPECT_THAT(StaleIds(), ElementsAre("1"));
  EXPECT_THAT(FakePlatform::Get().Messages(), ElementsAre("InvalidateAllItemsInDB() Start!!!"));
}

TEST_F(InvalidateAllItems, StopsAtEveryLevelAfterACancel) {
  FillTree();
  FakePlatform::Get().onLog = [](const LogLine&) {
    if (FakePlatform::Get().log.size() == 3) CancelNow();  // inside /card/sub/deep
  };
  database->InvalidateAllItemsInDB("/card");
  EXPECT_THAT(StaleIds(), ElementsAre("1", "2", "3", "4", "5"));
  EXPECT_EQ(Starts(), 3);
}

TEST_F(InvalidateAllItems, MarksTheRestWhenRunAgainByANewInstance) {
  FillTree();
  CancelNow();
  database->InvalidateAllItemsInDB("/card");
  DataBaseMgr::DestroyInstance();
  ASSERT_EQ(database->OpenDB(database.path().c_str()), 1);
  database->InvalidateAllItemsInDB("/card");
  EXPECT_THAT(StaleIds(), SizeIs(7));
}

TEST_F(InvalidateAllItems, EndsAtAContainerThatIsItsOwnChild) {
  Object(1, "1", 0, "/card");
  Object(2, "1", 1, "/card/a.JPG");
  database->InvalidateAllItemsInDB("/card");
  EXPECT_THAT(StaleIds(), ElementsAre("1", "2"));
  EXPECT_EQ(Starts(), 1);
}

TEST_F(InvalidateAllItems, EndsAtAContainerUnderItsOwnGrandchild) {
  Object(1, "3", 0, "/card");
  Object(2, "1", 0, "/card/a");
  Object(3, "2", 0, "/card/a/b");
  Object(4, "3", 1, "/card/a/b/c.JPG");
  database->InvalidateAllItemsInDB("/card");
  EXPECT_THAT(StaleIds(), ElementsAre("1", "2", "3", "4"));
  EXPECT_EQ(Starts(), 3);
}

TEST_F(InvalidateAllItems, DoesNotMultiplyWhenEveryContainerHasTwoRows) {
  database.Run("begin");
  for (int level = 0; level < 60; ++level)
    for (int twin = 0; twin < 2; ++twin)
      Object(2 * level + twin + 1, level == 0 ? " " : std::to_string(2 * level - 1), 0,
             "/d" + std::to_string(level));
  database.Run("commit");
  database->InvalidateAllItemsInDB("/d0");
  EXPECT_THAT(StaleIds(), SizeIs(120));
}

TEST_F(InvalidateAllItems, GoesDownThousandsOfLevels) {
  constexpr int kLevels = 20000;
  database.Run("begin");
  for (int i = 1; i <= kLevels; ++i) Object(i, std::to_string(i - 1), 0, "/d" + std::to_string(i));
  database.Run("commit; begin");
  database->InvalidateAllItemsInDB("/d1");
  database.Run("commit");
  EXPECT_EQ(database.Cell("select count(*) from ObjectTable where Valid=1"),
            std::to_string(kLevels));
  EXPECT_EQ(Starts(), kLevels);
}

TEST_F(InvalidateAllItems, PassesOverARowWithADoubleQuoteInItsPath) {
  Object(1, " ", 0, "/card");
  Object(2, "1", 1, "/card/a\"b.JPG");
  Object(3, "1", 0, "/card/x\" or \"1\"=\"1");
  Object(4, "1", 1, "/card/it's.JPG");
  database->InvalidateAllItemsInDB("/card");
  EXPECT_THAT(StaleIds(), ElementsAre("1", "4"));
  EXPECT_THAT(FakePlatform::Get().Messages(),
              ElementsAre("InvalidateAllItemsInDB() Start!!!",
                          HasSubstr("\tquery : update ObjectTable set Valid = 1 where "
                                    "FullPath=\"/card/a\"b.JPG\"\n"),
                          HasSubstr("FullPath=\"/card/x\" or \"1\"=\"1\"\n")));
}

TEST_F(InvalidateAllItems, TakesAPathForATextEvenWhenItNamesAColumn) {
  FillTree();
  database->InvalidateAllItemsInDB("FullPath");
  EXPECT_THAT(StaleIds(), IsEmpty());
}

TEST_F(InvalidateAllItems, IsSilentWhenTheChildrenCannotBeRead) {
  database.Run(
      "drop table ObjectTable; create table ObjectTable (id INTEGER PRIMARY KEY, FullPath, Valid);"
      "insert into ObjectTable values (1,'/card',0)");
  database->InvalidateAllItemsInDB("/card");
  EXPECT_THAT(StaleIds(), ElementsAre("1"));
  EXPECT_EQ(Starts(), 0);
  EXPECT_NE(database->nLastResult, 0);
}

TEST_F(InvalidateAllItems, ReadsEmptyClassesAsContainers) {
  database.Run(
      "drop table ObjectTable; create table ObjectTable (id INTEGER PRIMARY KEY, class, parentID,"
      "FullPath, Valid); insert into ObjectTable values (1,0,' ','/card',0),(2,null,'1','/card/a',"
      "0),(3,1,'2','/card/a/b',0),(4,1,'1',null,0)");
  database->InvalidateAllItemsInDB("/card");
  EXPECT_THAT(StaleIds(), ElementsAre("1", "2", "3"));
}

// ---- removing what is marked -------------------------------------------------------------------

class DeleteInvalidated : public Reconcile {};

TEST_F(DeleteInvalidated, RemovesMarkedRowsWithTheirMediaRows) {
  Container(1, " ", "/card");
  Image(2, "1", "/card/a.JPG", "1");
  Video(3, "1", "/card/b.MP4", "1");
  Object(4, "1", 2, "/card/c.aac");
  database.Run(
      "insert into AudioTable (id,Title,class,date,size,FullPath) values "
      "('4','c',2,'d',1,'/card/c.aac')");
  Image(5, "1", "/card/kept.JPG", "1");
  database.Run("update ObjectTable set Valid=1 where id<5");
  int found = 7;
  database->DeleteInvalidatedItemInDB(&found);
  EXPECT_EQ(found, 1);
  EXPECT_THAT(Ids(), ElementsAre("5"));
  EXPECT_THAT(Ids("ImageTable"), ElementsAre("5"));
  EXPECT_THAT(Ids("VideoTable"), IsEmpty());
  EXPECT_THAT(Ids("AudioTable"), IsEmpty());
  EXPECT_THAT(Ids("ContainerTable"), IsEmpty());
  EXPECT_THAT(DataBaseMgr::vdata, IsEmpty());
  EXPECT_THAT(FakePlatform::Get().log, IsEmpty());
}

TEST_F(DeleteInvalidated, LeavesItsResultAloneWhenNothingIsMarked) {
  Object(1, " ", 0, "/card");
  int found = 7;
  database->DeleteInvalidatedItemInDB(&found);
  EXPECT_EQ(found, 7);
  EXPECT_THAT(Ids(), ElementsAre("1"));
}

TEST_F(DeleteInvalidated, NeedsNoPlaceForItsResult) {
  Object(1, " ", 1, "/card/a.JPG", 1);
  database->DeleteInvalidatedItemInDB(nullptr);
  EXPECT_THAT(Ids(), IsEmpty());
}

TEST_F(DeleteInvalidated, ReportsButRemovesNothingWhenCancelledBefore) {
  Object(1, " ", 1, "/card/a.JPG", 1);
  CancelNow();
  int found = 0;
  database->DeleteInvalidatedItemInDB(&found);
  EXPECT_EQ(found, 1);
  EXPECT_THAT(Ids(), ElementsAre("1"));
  EXPECT_THAT(DataBaseMgr::vdata, IsEmpty());
  EXPECT_THAT(FakePlatform::Get().log, IsEmpty());
}

TEST_F(DeleteInvalidated, StopsBeforeTheRowAfterACancel) {
  database.Run("drop table ContainerTable");  // so that removing a container logs a line
  Object(1, " ", 1, "/card/a.JPG", 1);
  Object(2, " ", 0, "/card/b", 1);
  Object(3, " ", 1, "/card/c.JPG", 1);
  FakePlatform::Get().onLog = [](const LogLine&) { CancelNow(); };
  int found = 0;
  database->DeleteInvalidatedItemInDB(&found);
  EXPECT_EQ(found, 1);
  EXPECT_THAT(Ids(), ElementsAre("3"));
}

TEST_F(DeleteInvalidated, LeavesAnUnknownClassInPlace) {
  Object(1, " ", 4, "/card/a", 1);
  Object(2, " ", -1, "/card/b", 1);
  Object(3, " ", 1, "/card/c", 1);
  int found = 0;
  database->DeleteInvalidatedItemInDB(&found);
  EXPECT_EQ(found, 1);
  EXPECT_THAT(Ids(), ElementsAre("1", "2"));
}

TEST_F(DeleteInvalidated, DoesNothingWhenTheQueryFails) {
  database.Run("drop table ObjectTable");
  int found = 7;
  database->DeleteInvalidatedItemInDB(&found);
  EXPECT_EQ(found, 7);
  EXPECT_THAT(FakePlatform::Get().log, IsEmpty());
}

TEST_F(DeleteInvalidated, EndsWhereARowHasNoSecondColumn) {
  Image(1, " ", "/card/a.JPG", "1");
  Image(2, " ", "/card/b.JPG", "1");
  database.Run(
      "drop table ObjectTable; create table ObjectTable (Valid INTEGER);"
      "insert into ObjectTable values (1),(1)");
  int found = 0;
  EXPECT_NO_THROW(database->DeleteInvalidatedItemInDB(&found));
  EXPECT_EQ(found, 1);
  EXPECT_THAT(Ids("ImageTable"), ElementsAre("2"));
  EXPECT_THAT(DataBaseMgr::vdata, IsEmpty());
}

class DeleteInvalidatedBackup : public Reconcile {
 protected:
  DeleteInvalidatedBackup() : Reconcile(6) {}
};

TEST_F(DeleteInvalidatedBackup, TakesTheTitleForTheClass) {
  database.Run(
      "insert into ObjectTable (Title,class,date,size,parentID,FullPath,Valid) values "
      "('DSC_0001.JPG',1,'d',1,'1','/a',1),('7up.JPG',1,'d',1,'1','/b',1),"
      "('3.MP4',3,'d',1,'1','/c',1)");
  int found = 0;
  database->DeleteInvalidatedItemInDB(&found);
  EXPECT_EQ(found, 1);
  EXPECT_THAT(Ids(), ElementsAre("2"));
  EXPECT_THAT(FakePlatform::Get().Messages(),
              ElementsAre(HasSubstr("query : delete from ContainerTable where id=1\n"),
                          HasSubstr("query : delete from VideoTable where id=3\n")));
}

TEST_F(DeleteInvalidated, RemovesWhatIsNotSeenAgainAfterAMark) {
  Container(1, " ", "/card");
  Image(2, "1", "/card/a.JPG", "1");
  Image(3, "1", "/card/b.JPG", "1");
  database->InvalidateAllItemsInDB("/card");
  database->ValidateItemInDB("/card");
  database->ValidateItemInDB("/card/b.JPG");
  int found = 0;
  database->DeleteInvalidatedItemInDB(&found);
  EXPECT_EQ(found, 1);
  EXPECT_THAT(Ids(), ElementsAre("1", "3"));
}

TEST_F(DeleteInvalidated, RemovesAWholeSubtreeWithTheDirectory) {
  Container(1, " ", "/card");
  Container(2, "1", "/card/sub");
  Image(3, "2", "/card/sub/a.JPG", "1");
  Container(4, "2", "/card/sub/deep");
  Video(5, "4", "/card/sub/deep/b.MP4", "1");
  Image(6, "1", "/card/c.JPG", "1");
  int found = 0;
  database->RemoveDIRfromDB("/card/sub", &found);
  EXPECT_EQ(found, 1);
  EXPECT_THAT(Ids(), ElementsAre("1", "6"));
  EXPECT_THAT(Ids("ContainerTable"), ElementsAre("1"));
  EXPECT_THAT(Ids("ImageTable"), ElementsAre("6"));
  EXPECT_THAT(Ids("VideoTable"), IsEmpty());
}

TEST_F(DeleteInvalidated, FindsNothingUnderAnUnknownDirectory) {
  Container(1, " ", "/card");
  int found = 0;
  database->RemoveDIRfromDB("/card/none", &found);
  EXPECT_EQ(found, 0);
  EXPECT_THAT(Ids(), ElementsAre("1"));
}

// ---- the purge of a directory tree -------------------------------------------------------------

constexpr char kBreak[] = "[DataBaseMgr::DeleteInvalidItemsInDB] break in DeleteInvalidItemsInDB";

class DeleteInvalidItems : public Reconcile {
 protected:
  DeleteInvalidItems() { Container(1, " ", card.path()); }
  void Purge() const { database->DeleteInvalidItemsInDB(card.path().c_str()); }
  int Breaks() const { return FakePlatform::Get().CountLogged(kBreak); }
};

TEST_F(DeleteInvalidItems, KeepsFilesThatAreThereWithTheirSize) {
  Image(2, "1", card.Write("a.JPG", "12345"), "5");
  Video(3, "1", card.Write("b.MP4", "123"), "3");
  Purge();
  EXPECT_THAT(Ids(), ElementsAre("1", "2", "3"));
  EXPECT_THAT(FakePlatform::Get().log, IsEmpty());
  EXPECT_THAT(DataBaseMgr::vdata, IsEmpty());
}

TEST_F(DeleteInvalidItems, RemovesFilesThatAreGone) {
  Image(2, "1", Path("a.JPG"), "5");
  Video(3, "1", Path("b.MP4"), "3");
  Image(4, "1", card.Write("c.JPG", "1"), "1");
  Purge();
  EXPECT_THAT(Ids(), ElementsAre("1", "4"));
  EXPECT_THAT(Ids("ImageTable"), ElementsAre("4"));
  EXPECT_THAT(Ids("VideoTable"), IsEmpty());
}

TEST_F(DeleteInvalidItems, RemovesFilesOfAnotherSizeAndLogsTheDifference) {
  const std::string image = card.Write("a.JPG", "12345");
  Image(2, "1", image, "6");
  Video(3, "1", card.Write("b.MP4", "123"), "2");
  Purge();
  EXPECT_THAT(Ids(), ElementsAre("1"));
  EXPECT_THAT(
      FakePlatform::Get().Messages(),
      ElementsAre("[ORXFSHandler::IsValidFile] file[" + image + "] size different! db[6] stat[5]",
                  HasSubstr("b.MP4] size different! db[2] stat[3]")));
}

TEST_F(DeleteInvalidItems, GoesDownIntoDirectories) {
  Container(2, "1", card.MakeDir("sub"));
  Image(3, "2", card.Write("sub/a.JPG", "1"), "1");
  Image(4, "2", Path("sub/gone.JPG"), "1");
  Container(5, "2", card.MakeDir("sub/deep"));
  Video(6, "5", Path("sub/deep/gone.MP4"), "1");
  Image(7, "1", Path("gone.JPG"), "1");
  Purge();
  EXPECT_THAT(Ids(), ElementsAre("1", "2", "3", "5"));
}

TEST_F(DeleteInvalidItems, RemovesADirectoryThatIsGoneAndWhatWasInIt) {
  Container(2, "1", Path("sub"));
  Image(3, "2", Path("sub/a.JPG"), "1");
  Container(4, "2", Path("sub/deep"));
  Video(5, "4", Path("sub/deep/b.MP4"), "1");
  Image(6, "1", card.Write("c.JPG", "1"), "1");
  Purge();
  EXPECT_THAT(Ids(), ElementsAre("1", "6"));
  EXPECT_THAT(Ids("ContainerTable"), ElementsAre("1"));
  EXPECT_THAT(Ids("ImageTable"), ElementsAre("6"));
  EXPECT_THAT(Ids("VideoTable"), IsEmpty());
}

TEST_F(DeleteInvalidItems, RemovesATopDirectoryThatIsGone) {
  Container(2, " ", "/nowhere/at/all");
  database->DeleteInvalidItemsInDB("/nowhere/at/all");
  EXPECT_THAT(Ids(), ElementsAre("1"));
  EXPECT_THAT(Ids("ContainerTable"), ElementsAre("1"));
}

TEST_F(DeleteInvalidItems, TouchesNothingOutsideTheDirectory) {
  Container(2, "1", card.MakeDir("sub"));
  Image(3, "2", Path("sub/gone.JPG"), "1");
  Image(4, "1", Path("gone.JPG"), "1");
  database->DeleteInvalidItemsInDB(Path("sub").c_str());
  EXPECT_THAT(Ids(), ElementsAre("1", "2", "4"));
}

TEST_F(DeleteInvalidItems, RemovesAFileThatLiesInAnotherDirectory) {
  card.MakeDir("sub");
  Image(2, "1", card.Write("sub/a.JPG", "1"), "1");
  Image(3, "1", card.Write("b.JPG", "1"), "1");
  Image(4, "1", "//" + card.Write("c.JPG", "1").substr(1), "1");
  Purge();
  EXPECT_THAT(Ids(), ElementsAre("1", "3"));
  EXPECT_THAT(Ids("ImageTable"), ElementsAre("3"));
}

TEST_F(DeleteInvalidItems, RemovesAFileWithoutAnyDirectory) {
  const std::filesystem::path before = std::filesystem::current_path();
  card.Write("a.JPG", "1");
  std::filesystem::current_path(card.path());
  Image(2, "1", "a.JPG", "1");
  Purge();
  std::filesystem::current_path(before);
  EXPECT_THAT(Ids(), ElementsAre("1"));
}

TEST_F(DeleteInvalidItems, TakesOtherClassesForEmptyFiles) {
  Object(2, "1", 2, card.Write("a.aac", "1"));
  Object(3, "1", 2, card.Write("empty.aac", ""));
  Object(4, "1", 5, card.Write("b.bin", "1"));  // a class that nothing removes
  Purge();
  EXPECT_THAT(Ids(), ElementsAre("1", "3", "4"));
}

TEST_F(DeleteInvalidItems, KeepsAFileWithoutMediaRowOnlyWhenItIsEmpty) {
  Object(2, "1", 1, card.Write("a.JPG", "1"));
  Object(3, "1", 1, card.Write("empty.JPG", ""));
  Object(4, "1", 3, card.Write("b.MP4", "1"));
  Object(5, "1", 3, card.Write("empty.MP4", ""));
  Object(6, "1", 1, Path("gone.JPG"));
  Purge();
  EXPECT_THAT(Ids(), ElementsAre("1", "3", "5"));
}

TEST_F(DeleteInvalidItems, NeverKeepsWhatIsNoFileOfBytes) {
  ASSERT_EQ(mkfifo(Path("pipe.JPG").c_str(), 0600), 0);
  Image(2, "1", Path("pipe.JPG"), "0");
  Image(3, "1", "/dev/null", "0");
  Purge();
  EXPECT_THAT(Ids(), ElementsAre("1"));
}

TEST_F(DeleteInvalidItems, ComparesSizesAsUnsignedNumbers) {
  if (sizeof(long) == 4) GTEST_SKIP() << "a picture's size ends at 2 GiB where long has 32 bits";
  for (const std::string name : {"a.JPG", "b.MP4"})
    ASSERT_EQ(truncate64(card.Write(name, "").c_str(), 3000000000), 0);
  Image(2, "1", Path("a.JPG"), "3000000000");
  Video(3, "1", Path("b.MP4"), "3000000000");
  Purge();
  EXPECT_THAT(Ids(), ElementsAre("1", "2", "3"));
}

TEST_F(DeleteInvalidItems, NeverKeepsFilesPast4GiB) {
  ASSERT_EQ(truncate64(card.Write("b.MP4", "").c_str(), 4294967301), 0);
  Video(2, "1", Path("b.MP4"), "4294967301");
  Video(3, "1", card.Write("c.MP4", "12345"), "4294967301");  // the low 32 bits alone are equal
  Purge();
  EXPECT_THAT(Ids(), ElementsAre("1"));
}

TEST_F(DeleteInvalidItems, ReadsTheSizeByPathFromTheFirstMediaRow) {
  const std::string path = card.Write("a.JPG", "12345");
  Image(2, "1", path, "5");
  database.Run(
      "insert into ImageTable (id,Title,class,date,size,FullPath) values ('1','t',1,'d',9," +
      Quoted(path) + ")");
  Purge();
  EXPECT_THAT(Ids(), ElementsAre("1", "2"));
}

TEST_F(DeleteInvalidItems, IsSilentForAnUnknownOrNullPath) {
  Image(2, "1", Path("gone.JPG"), "1");
  database->DeleteInvalidItemsInDB("/card/none");
  database->DeleteInvalidItemsInDB(nullptr);
  EXPECT_THAT(Ids(), ElementsAre("1", "2"));
  EXPECT_THAT(FakePlatform::Get().log, IsEmpty());
}

TEST_F(DeleteInvalidItems, IsSilentForAnEmptyDirectoryEvenWhenCancelled) {
  CancelNow();
  Purge();
  EXPECT_THAT(Ids(), ElementsAre("1"));
  EXPECT_THAT(FakePlatform::Get().log, IsEmpty());
}

TEST_F(DeleteInvalidItems, LeavesADirectoryAtOnceWhenASizeCannotBeRead) {
  Container(2, "1", card.MakeDir("sub"));
  Object(3, "2", 1, Path("sub/gone.JPG"));
  Video(4, "2", Path("sub/gone.MP4"), "1");
  Video(5, "1", Path("gone.MP4"), "1");
  database.Run("drop table ImageTable");
  Purge();
  EXPECT_THAT(Ids(), ElementsAre("1", "2", "3", "4"));
  EXPECT_THAT(FakePlatform::Get().log, IsEmpty());
}

TEST_F(DeleteInvalidItems, LeavesADirectoryAtOnceAtAFilmWhoseSizeCannotBeRead) {
  Object(2, "1", 3, Path("gone.MP4"));
  Image(3, "1", Path("gone.JPG"), "1");
  database.Run("drop table VideoTable");
  Purge();
  EXPECT_THAT(Ids(), ElementsAre("1", "2", "3"));
}

TEST_F(DeleteInvalidItems, LeavesADirectoryAtOnceAtAPathWithADoubleQuote) {
  Image(2, "1", Path("gone1.JPG"), "1");
  Image(3, "1", Path("a\"b.JPG"), "1");
  Image(4, "1", Path("gone2.JPG"), "1");
  Purge();
  EXPECT_THAT(Ids(), ElementsAre("1", "3", "4"));
  EXPECT_THAT(FakePlatform::Get().log, IsEmpty());
}

TEST_F(DeleteInvalidItems, TakesPathsForTexts) {
  Image(2, "1", card.Write("it's.JPG", "1"), "1");
  Image(3, "1", "FullPath", "1");
  Image(4, "1", Path("'; drop table ObjectTable; --.JPG"), "1");
  Purge();
  EXPECT_THAT(Ids(), ElementsAre("1", "2"));
}

TEST_F(DeleteInvalidItems, LogsABreakAndRemovesNothingWhenCancelledBefore) {
  Image(2, "1", Path("gone.JPG"), "1");
  CancelNow();
  Purge();
  EXPECT_THAT(Ids(), ElementsAre("1", "2"));
  EXPECT_THAT(FakePlatform::Get().Messages(), ElementsAre(kBreak));
  EXPECT_EQ(FakePlatform::Get().log[0].priority, 4);
}

TEST_F(DeleteInvalidItems, RemovesAGoneTopDirectoryEvenWhenCancelled) {
  Container(2, " ", "/nowhere/at/all");
  Image(3, "2", "/nowhere/at/all/a.JPG", "1");
  CancelNow();
  database->DeleteInvalidItemsInDB("/nowhere/at/all");
  EXPECT_THAT(Ids(), ElementsAre("1", "3"));
  EXPECT_EQ(Breaks(), 1);
}

TEST_F(DeleteInvalidItems, StopsBeforeTheRowAfterACancel) {
  Image(2, "1", Path("gone.JPG"), "1");
  Image(3, "1", card.Write("a.JPG", "1"), "2");
  Image(4, "1", Path("gone2.JPG"), "1");
  FakePlatform::Get().onLog = [](const LogLine&) { CancelNow(); };
  Purge();
  EXPECT_THAT(Ids(), ElementsAre("1", "4"));
  EXPECT_EQ(Breaks(), 1);
}

TEST_F(DeleteInvalidItems, SaysNothingOfACancelAfterTheLastRow) {
  Image(2, "1", card.Write("a.JPG", "1"), "2");
  FakePlatform::Get().onLog = [](const LogLine&) { CancelNow(); };
  Purge();
  EXPECT_THAT(Ids(), ElementsAre("1"));
  EXPECT_EQ(Breaks(), 0);
}

TEST_F(DeleteInvalidItems, LogsABreakAtEveryLevelWithRowsLeft) {
  Container(2, "1", card.MakeDir("sub"));
  Image(3, "2", card.Write("sub/a.JPG", "1"), "2");
  Image(4, "2", Path("sub/gone.JPG"), "1");
  Image(5, "1", Path("gone.JPG"), "1");
  FakePlatform::Get().onLog = [](const LogLine&) { CancelNow(); };
  Purge();
  EXPECT_THAT(Ids(), ElementsAre("1", "2", "4", "5"));
  EXPECT_EQ(Breaks(), 2);
}

TEST_F(DeleteInvalidItems, EndsAtAContainerThatIsItsOwnAncestor) {
  Container(2, "1", card.MakeDir("sub"));
  database.Run("update ObjectTable set parentID='2' where id=1");
  Object(3, "2", 0, Path("sub"));  // resolves to container 2
  Image(4, "2", Path("sub/gone.JPG"), "1");
  Image(5, "1", Path("gone.JPG"), "1");
  Purge();
  EXPECT_THAT(Ids(), ElementsAre("1", "2", "3"));
}

TEST_F(DeleteInvalidItems, RemovesEveryRowOfADirectoryThatIsGone) {
  Container(2, "1", Path("sub"));
  Container(3, "1", Path("sub"));
  Image(4, "3", Path("sub/gone.JPG"), "1");
  Purge();
  EXPECT_THAT(Ids(), ElementsAre("1"));
}

TEST_F(DeleteInvalidItems, GoesDownThousandsOfLevels) {
  constexpr int kLevels = 20000;
  database.Run("begin");
  for (int i = 2; i <= kLevels; ++i)
    Object(i, std::to_string(i - 1), 0, "/nowhere/" + std::to_string(i));
  Purge();
  database.Run("commit");
  EXPECT_THAT(Ids(), ElementsAre("1"));
}

TEST_F(DeleteInvalidItems, HoldsNoDirectoryOpenWhileItGoesDown) {
  std::string path = card.path();
  std::string name;
  for (int i = 2; i <= 60; ++i) {
    name += name.empty() ? "d" : "/d";
    Container(i, std::to_string(i - 1), card.MakeDir(name));
  }
  Image(100, "60", card.Write(name + "/a.JPG", "1"), "2");
  static std::ptrdiff_t openFiles;
  const auto countOpenFiles = [](const LogLine&) {
    using Entries = std::filesystem::directory_iterator;
    openFiles = std::distance(Entries("/proc/self/fd"), Entries());
  };
  countOpenFiles(LogLine());
  const std::ptrdiff_t before = openFiles;
  openFiles = 0;
  FakePlatform::Get().onLog = countOpenFiles;
  Purge();
  EXPECT_THAT(Ids(), SizeIs(60));
  ASSERT_GT(openFiles, 0);
  EXPECT_LT(openFiles, before + 10);
}

TEST_F(DeleteInvalidItems, IsSilentWithoutADatabase) {
  DataBaseMgr::DestroyInstance();
  FakePlatform::Get().log.clear();
  DataBaseMgr::GetInstance()->DeleteInvalidItemsInDB("/card");
  EXPECT_THAT(FakePlatform::Get().log, IsEmpty());
}

class DeleteInvalidItemsBackup : public Reconcile {
 protected:
  DeleteInvalidItemsBackup() : Reconcile(6) {}
};

TEST_F(DeleteInvalidItemsBackup, CannotCheckPicturesWithoutTheirTable) {
  database.Run(
      "insert into ObjectTable (id,Title,class,date,size,parentID,FullPath) values "
      "(1,'r',0,'d',0,' '," +
      Quoted(card.path()) + "),(2,'a',1,'d',1,'1','/gone.JPG')");
  database->DeleteInvalidItemsInDB(card.path().c_str());
  EXPECT_THAT(Ids(), ElementsAre("1", "2"));
}

}  // namespace
