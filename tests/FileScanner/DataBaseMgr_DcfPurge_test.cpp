#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DcfFileInfoVector.h"
#include "support/FakePlatform.h"
#include "support/TempDir.h"
#include "support/TestDatabase.h"

namespace {

using orx_test::FakePlatform;
using orx_test::LogLine;
using orx_test::TempDir;
using orx_test::TestDatabase;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using Lines = std::vector<std::string>;
using Purge = void (DataBaseMgr::*)(const char*);

constexpr char kBreak[] = "break in DeleteInvalidItemsInDB";
constexpr char kWrong[] = "Error : something is wrong";

void CancelNow() { DataBaseMgr::GetInstance()->CancelInvalidateAllItems(); }

// A database whose row 1 is the root of a card, and the files that the user shares.
class DcfPurge : public testing::Test {
 protected:
  DcfPurge(int sharingMode, Purge purge, std::string name)
      : database(sharingMode), purge_(purge), name_(std::move(name)) {
    DcfFileInfoVector::DestroyInstance();
  }
  ~DcfPurge() override { DcfFileInfoVector::DestroyInstance(); }

  void Run(const std::string& path) const {
    FakePlatform::Get().log.clear();
    testing::internal::CaptureStdout();
    (database.manager()->*purge_)(path.c_str());
    testing::internal::GetCapturedStdout();
  }
  void RunRoot() const { Run(card.path()); }

  // Makes the files with these numbers in folder 100 the shared ones.
  void Share(const std::vector<int>& numbers) const {
    auto& files = FakePlatform::Get().sharedFiles;
    files.clear();
    for (const int number : numbers) {
      char uri[64];
      snprintf(uri, sizeof uri, "/mnt/mmc/DCIM/100CAMRA/DSC_%04d.JPG", number);
      files.push_back({uri});
    }
    FillList();
  }
  virtual void FillList() const { EXPECT_EQ(database->addFileUriToTable(), 1); }

  // Everything that was logged, in order; timing lines without the time, with "@" instead.
  Lines Log() const {
    Lines lines;
    for (const LogLine& line : FakePlatform::Get().log) {
      if (line.tag == "DLNA_TIME") {
        EXPECT_TRUE(line.message.front() == '[') << line.message;
        lines.push_back("@" + line.message.substr(line.message.find("\x1b[m") + 3));
      } else {
        lines.push_back(line.message);
      }
    }
    return lines;
  }
  std::string DirectoryLine(const std::string& path) const {
    return "[DataBaseMgr::" + name_ + "] pszDirPath = [" + path + "]";
  }
  std::vector<std::string> Ids(const std::string& table = "ObjectTable") const {
    std::vector<std::string> ids;
    for (const auto& row : database.Select("select id from " + table + " order by id+0"))
      ids.push_back(row[0]);
    return ids;
  }
  std::string Path(const std::string& name) const { return card.Path(name); }

  TestDatabase database;
  TempDir card;

 private:
  Purge purge_;
  std::string name_;
};

// ---- media tables ------------------------------------------------------------------------------

class MediaDcfPurge : public DcfPurge {
 protected:
  MediaDcfPurge()
      : DcfPurge(0, &DataBaseMgr::deleteInvalidItemsInDBDcf, "deleteInvalidItemsInDBDcf") {
    Container(1, " ", card.path());
  }
  void Object(int id, const std::string& parentId, int mediaClass, const std::string& path) const {
    database.Run("insert into ObjectTable (id,class,date,parentID,FullPath) values (" +
                 std::to_string(id) + "," + std::to_string(mediaClass) + ",'d','" + parentId +
                 "','" + path + "')");
  }
  void Container(int id, const std::string& parentId, const std::string& path) const {
    Object(id, parentId, 0, path);
    database.Run("insert into ContainerTable (id,class,date,FullPath) values ('" +
                 std::to_string(id) + "',0,'d','" + path + "')");
  }
  void Image(int id, const std::string& path, const std::string& size, int number) const {
    Item("ImageTable", 1, id, path, size, number);
  }
  void Video(int id, const std::string& path, const std::string& size, int number) const {
    Item("VideoTable", 3, id, path, size, number);
  }

 private:
  void Item(const std::string& table, int mediaClass, int id, const std::string& path,
            const std::string& size, int number) const {
    Object(id, "2", mediaClass, path);
    database.Run("insert into " + table +
                 " (id,Title,class,date,size,FullPath,SortIndex) values ('" + std::to_string(id) +
                 "','t'," + std::to_string(mediaClass) + ",'d'," + size + ",'" + path + "','" +
                 std::to_string(number) + "')");
  }
};

TEST_F(MediaDcfPurge, KeepsSharedFilesThatAreThereWithTheirSize) {
  Container(2, "1", card.MakeDir("100CAMRA"));
  Image(3, card.Write("100CAMRA/DSC_0001.JPG", "12345"), "5", 1000001);
  Video(4, card.Write("100CAMRA/DSC_0002.MP4", "123"), "3", 1000002);
  Share({1, 2});
  RunRoot();
  EXPECT_THAT(Ids(), ElementsAre("1", "2", "3", "4"));
  EXPECT_THAT(Ids("ImageTable"), ElementsAre("3"));
  EXPECT_THAT(Ids("VideoTable"), ElementsAre("4"));
}

TEST_F(MediaDcfPurge, LogsEveryPhaseInOrder) {
  const std::string folder = card.MakeDir("100CAMRA");
  Container(2, "1", folder);
  Image(3, card.Write("100CAMRA/DSC_0001.JPG", "12345"), "5", 1000001);
  Image(4, Path("100CAMRA/DSC_0003.JPG"), "5", 1000003);
  Video(5, card.Write("100CAMRA/DSC_0002.MP4", "123"), "3", 1000002);
  Share({1, 2});
  RunRoot();
  EXPECT_THAT(Log(),
              ElementsAreArray(Lines{
                  "@>>>> Time2 start", "@>>>> ObjectTable create start", DirectoryLine(card.path()),
                  "@>>>> ObjectTable create stop", "@>>>> Time2 start", DirectoryLine(folder),
                  "@>>>> Time2 stop", "@>>>> IMAGE Time start", "@>>>> ImageTable1 create start",
                  "ImageTable nRows2 = 2, nCols2 = 4", "@>>>> ImageTable1 create stop",
                  "@>>>> ImageTables2 create start", "@>>>> ImageTables2 create stop",
                  "@>>>>>> IMAGE Time stop", "@>>>>>> VIDEO Time start",
                  "VideoTable nRows2 = 1, nCols2 = 4", "@>>>>>> VIDEO Time stop",
                  DirectoryLine(card.path()), "@>>>> Time2 stop"}));
  for (const LogLine& line : FakePlatform::Get().log) EXPECT_EQ(line.priority, 4);
}

TEST_F(MediaDcfPurge, CountsNoRowsAndNoColumnsInEmptyTables) {
  RunRoot();
  EXPECT_TRUE(FakePlatform::Get().Logged("ImageTable nRows2 = 0, nCols2 = 0"));
  EXPECT_TRUE(FakePlatform::Get().Logged("VideoTable nRows2 = 0, nCols2 = 0"));
}

TEST_F(MediaDcfPurge, RemovesFilesThatAreNotSharedWithoutLookingAtThem) {
  Image(3, card.Write("100CAMRA/DSC_0001.JPG", "12345"), "9", 1000001);
  Video(4, card.Write("100CAMRA/DSC_0002.MP4", "123"), "9", 1000002);
  Image(5, card.Write("100CAMRA/DSC_0003.JPG", "12345"), "5", 1000003);
  Share({7, 8});
  RunRoot();
  EXPECT_THAT(Ids(), ElementsAre("1"));
  EXPECT_THAT(Ids("ImageTable"), IsEmpty());
  EXPECT_THAT(Ids("VideoTable"), IsEmpty());
  EXPECT_THAT(Log(), Not(Contains(HasSubstr("size different"))));
}

TEST_F(MediaDcfPurge, RemovesSharedFilesThatAreGoneOrHaveAnotherSize) {
  Image(3, card.Write("100CAMRA/DSC_0001.JPG", "12345"), "4", 1000001);
  Image(4, Path("100CAMRA/DSC_0002.JPG"), "4", 1000002);
  Video(5, card.Write("100CAMRA/DSC_0003.MP4", "123"), "4", 1000003);
  Video(6, Path("100CAMRA/DSC_0004.MP4"), "4", 1000004);
  Share({1, 2, 3, 4});
  RunRoot();
  EXPECT_THAT(Ids(), ElementsAre("1"));
  EXPECT_THAT(Log(), Contains("[ORXFSHandler::IsValidFile] file[" + Path("100CAMRA/DSC_0001.JPG") +
                              "] size different! db[4] stat[5]"));
}

TEST_F(MediaDcfPurge, LeavesItemsThatNoMediaTableHas) {
  Object(3, "2", 1, "/gone.JPG");
  Object(4, "2", 2, "/gone.aac");
  RunRoot();
  EXPECT_THAT(Ids(), ElementsAre("1", "3", "4"));
}

TEST_F(MediaDcfPurge, RemovesFoldersThatAreGoneBeforeTheirItems) {
  Container(2, "1", Path("100CAMRA"));
  Container(5, "1", card.MakeDir("101CAMRA"));
  Image(3, Path("100CAMRA/DSC_0001.JPG"), "4", 1000001);
  Share({1});
  database.AllowTriggers();
  database.Run(
      "create table Gone (id INTEGER); create trigger Note after delete on ObjectTable begin "
      "insert into Gone values (old.id); end;");
  RunRoot();
  EXPECT_THAT(Ids(), ElementsAre("1", "5"));
  EXPECT_THAT(Ids("ContainerTable"), ElementsAre("1", "5"));
  EXPECT_THAT(database.Select("select id from Gone order by rowid"),
              ElementsAre(ElementsAre("2"), ElementsAre("3")));
}

TEST_F(MediaDcfPurge, LogsAnErrorForAnItemRightUnderTheRootAndLeavesIt) {
  Object(2, "1", 1, card.Write("a.JPG", "1"));
  RunRoot();
  EXPECT_THAT(Ids(), ElementsAre("1", "2"));
  ASSERT_NE(FakePlatform::Get().Find(kWrong), nullptr);
  EXPECT_EQ(FakePlatform::Get().Find(kWrong)->priority, 6);
  EXPECT_EQ(Log()[4], kWrong);
}

TEST_F(MediaDcfPurge, ChecksOnlyTheDirectoryItselfWhenItIsNotTheRoot) {
  Container(2, "1", card.MakeDir("100CAMRA"));
  Container(9, "2", Path("100CAMRA/gone"));
  Image(3, Path("100CAMRA/DSC_0001.JPG"), "4", 1000001);
  Run(Path("100CAMRA"));
  EXPECT_THAT(Ids(), ElementsAre("1", "2", "3", "9"));
  EXPECT_THAT(
      Log(), ElementsAre("@>>>> Time2 start", DirectoryLine(Path("100CAMRA")), "@>>>> Time2 stop"));
}

TEST_F(MediaDcfPurge, RemovesAFolderThatIsGoneAndNothingElse) {
  Container(2, "1", Path("100CAMRA"));
  Image(3, Path("100CAMRA/DSC_0001.JPG"), "4", 1000001);
  Run(Path("100CAMRA"));
  EXPECT_THAT(Ids(), ElementsAre("1", "3"));
  EXPECT_THAT(Ids("ContainerTable"), ElementsAre("1"));
  EXPECT_THAT(Ids("ImageTable"), ElementsAre("3"));
}

TEST_F(MediaDcfPurge, GoesOnWhenTheRootItselfIsGone) {
  database.Run("update ObjectTable set FullPath='/nowhere/at/all' where id=1");
  Container(2, "1", "/nowhere/at/all/100CAMRA");
  Image(3, "/nowhere/at/all/100CAMRA/DSC_0001.JPG", "4", 1000001);
  Share({1});
  Run("/nowhere/at/all");
  EXPECT_THAT(Ids(), IsEmpty());
  EXPECT_THAT(Ids("ContainerTable"), IsEmpty());
  EXPECT_EQ(Log().back(), "@>>>> Time2 stop");
}

TEST_F(MediaDcfPurge, EndsAtARootThatIsItsOwnChild) {
  database.Run("update ObjectTable set parentID='1' where id=1");
  Image(3, Path("gone.JPG"), "4", 1000001);
  RunRoot();
  EXPECT_THAT(Ids(), ElementsAre("1"));
  EXPECT_EQ(FakePlatform::Get().CountLogged(DirectoryLine(card.path())), 2);
}

TEST_F(MediaDcfPurge, IsSilentForAnUnknownOrNullPath) {
  Image(3, Path("gone.JPG"), "4", 1000001);
  Run("/nowhere");
  EXPECT_THAT(Log(), IsEmpty());
  database->deleteInvalidItemsInDBDcf(nullptr);
  EXPECT_THAT(Log(), IsEmpty());
  EXPECT_THAT(Ids(), ElementsAre("1", "3"));
}

TEST_F(MediaDcfPurge, TakesPathsForTexts) {
  Run("FullPath");
  Run("x\" or \"1\"=\"1");
  EXPECT_THAT(Log(), IsEmpty());
  Container(2, "1", "x\" or \"1\"=\"1");
  RunRoot();
  EXPECT_THAT(Ids(), ElementsAre("1", "2"));  // a folder that cannot be looked up stays
}

TEST_F(MediaDcfPurge, BreaksEveryWalkWhenCancelledBefore) {
  Container(2, "1", Path("100CAMRA"));
  Image(3, Path("a.JPG"), "4", 1000001);
  Video(4, Path("b.MP4"), "4", 1000002);
  CancelNow();
  RunRoot();
  EXPECT_THAT(Ids(), ElementsAre("1", "2", "3", "4"));
  EXPECT_THAT(Log(),
              ElementsAreArray(Lines{
                  "@>>>> Time2 start", "@>>>> ObjectTable create start", DirectoryLine(card.path()),
                  "@>>>> ObjectTable create stop", kBreak, "@>>>> IMAGE Time start",
                  "@>>>> ImageTable1 create start", "ImageTable nRows2 = 1, nCols2 = 4",
                  "@>>>> ImageTable1 create stop", "@>>>> ImageTables2 create start", kBreak,
                  "@>>>> ImageTables2 create stop", "@>>>>>> IMAGE Time stop",
                  "@>>>>>> VIDEO Time start", "VideoTable nRows2 = 1, nCols2 = 4", kBreak,
                  "@>>>>>> VIDEO Time stop", DirectoryLine(card.path()), "@>>>> Time2 stop"}));
  EXPECT_EQ(FakePlatform::Get().Find(kBreak)->priority, 4);
}

TEST_F(MediaDcfPurge, LogsNoBreakForTablesWithoutRows) {
  CancelNow();
  RunRoot();
  EXPECT_EQ(FakePlatform::Get().CountLogged(kBreak), 0);
}

TEST_F(MediaDcfPurge, RemovesAGoneDirectoryEvenWhenCancelled) {
  Container(2, "1", Path("100CAMRA"));
  CancelNow();
  Run(Path("100CAMRA"));
  EXPECT_THAT(Ids(), ElementsAre("1"));
}

TEST_F(MediaDcfPurge, StopsBeforeTheFolderAfterACancel) {
  Object(2, "1", 1, "/a.JPG");
  Container(3, "1", Path("100CAMRA"));
  FakePlatform::Get().onLog = [](const LogLine& line) {
    if (line.message == kWrong) CancelNow();
  };
  RunRoot();
  EXPECT_THAT(Ids(), ElementsAre("1", "2", "3"));
  EXPECT_EQ(FakePlatform::Get().CountLogged(kBreak), 1);
}

TEST_F(MediaDcfPurge, LogsNoBreakForACancelAfterTheLastFolder) {
  Object(2, "1", 1, "/a.JPG");
  FakePlatform::Get().onLog = [](const LogLine& line) {
    if (line.message == kWrong) CancelNow();
  };
  RunRoot();
  EXPECT_EQ(FakePlatform::Get().CountLogged(kBreak), 0);
}

TEST_F(MediaDcfPurge, StopsBeforeThePictureAfterACancel) {
  Image(3, Path("gone.JPG"), "4", 1000001);
  Image(4, card.Write("a.JPG", "1"), "4", 1000002);  // logs its size
  Image(5, Path("gone2.JPG"), "4", 1000003);
  Video(6, Path("gone.MP4"), "4", 1000004);
  Share({2});
  FakePlatform::Get().onLog = [](const LogLine& line) {
    if (line.message.find("size different") != std::string::npos) CancelNow();
  };
  RunRoot();
  EXPECT_THAT(Ids(), ElementsAre("1", "5", "6"));
  EXPECT_EQ(FakePlatform::Get().CountLogged(kBreak), 2);
}

TEST_F(MediaDcfPurge, StopsBeforeTheFilmAfterACancel) {
  Video(3, Path("gone.MP4"), "4", 1000001);
  Video(4, card.Write("a.MP4", "1"), "4", 1000002);
  Video(5, Path("gone2.MP4"), "4", 1000003);
  Share({2});
  FakePlatform::Get().onLog = [](const LogLine& line) {
    if (line.message.find("size different") != std::string::npos) CancelNow();
  };
  RunRoot();
  EXPECT_THAT(Ids(), ElementsAre("1", "5"));
  EXPECT_EQ(FakePlatform::Get().CountLogged(kBreak), 1);
}

TEST_F(MediaDcfPurge, ReadsSizesAndNumbersFromTheirTexts) {
  Image(3, card.Write("a.JPG", "12345"), "' 5x'", 1000001);
  Image(4, card.Write("b.JPG", ""), "'none'", 1000002);
  Image(5, card.Write("c.JPG", "12345"), "4294967301", 1000003);  // past the widest size
  database.Run("update ImageTable set SortIndex = ' 1000001 and more' where id='3'");
  Share({1, 2, 3});
  RunRoot();
  EXPECT_THAT(Ids(), ElementsAre("1", "3", "4"));
}

TEST_F(MediaDcfPurge, RemovesPicturesWithoutANumber) {
  Image(3, card.Write("a.JPG", "1"), "1", 0);
  database.Run("update ImageTable set SortIndex = null");
  Share({1});
  RunRoot();
  EXPECT_THAT(Ids(), ElementsAre("1"));
}

TEST_F(MediaDcfPurge, IgnoresTheOtherListsCancelFlag) {
  Image(3, Path("gone.JPG"), "4", 1000001);
  DcfFileInfoVector::GetInstance()->CancelInvalidateAllItems();
  RunRoot();
  EXPECT_THAT(Ids(), ElementsAre("1"));
}

TEST_F(MediaDcfPurge, IgnoresTheOtherList) {
  Image(3, card.Write("a.JPG", "1"), "1", 1000001);
  FakePlatform::Get().sharedFiles = {{"/mnt/mmc/DCIM/100CAMRA/DSC_0001.JPG"}};
  ASSERT_EQ(DcfFileInfoVector::GetInstance()->addToDCFInfoVector(), 1);
  RunRoot();
  EXPECT_THAT(Ids(), ElementsAre("1"));
}

TEST_F(MediaDcfPurge, PassesOverTablesThatCannotBeRead) {
  Video(3, Path("gone.MP4"), "4", 1000001);
  database.Run("drop table ImageTable");
  RunRoot();
  EXPECT_THAT(Ids(), ElementsAre("1"));
  EXPECT_TRUE(FakePlatform::Get().Logged("ImageTable nRows2 = 0, nCols2 = 0"));
}

// ---- the object table alone --------------------------------------------------------------------

class ObjectDcfPurge : public DcfPurge {
 protected:
  using DcfPurge::DcfPurge;
  void Object(int id, const std::string& parentId, int mediaClass, const std::string& path,
              const std::string& size, int number) const {
    database.Run(
        "insert into ObjectTable (id,Title,class,date,size,parentID,FullPath,SortIndex) values (" +
        std::to_string(id) + ",'t'," + std::to_string(mediaClass) + ",'d'," + size + ",'" +
        parentId + "','" + path + "','" + std::to_string(number) + "')");
  }
  void Container(int id, const std::string& parentId, const std::string& path) const {
    Object(id, parentId, 0, path, "0", 0);
  }
  std::string RemoveLine(int id) const {
    return "[DataBaseMgr::RemoveIdFromObjectTable] delete from ObjectTable where id=" +
           std::to_string(id);
  }
};

// The two object-table purges behave alike but for their list and their name.
struct BackupPurge {
  static constexpr int kMode = 6;
  static constexpr Purge kPurge = &DataBaseMgr::deleteInvalidItemsFromAutoBackupDB;
  static constexpr char kName[] = "deleteInvalidItemsFromAutoBackupDB";
  static int Fill() { return DataBaseMgr::GetInstance()->addFileUriToTable(); }
  static int FillOther() { return DcfFileInfoVector::GetInstance()->addToDCFInfoVector(); }
};
struct VectorPurge {
  static constexpr int kMode = 8;
  static constexpr Purge kPurge = &DataBaseMgr::deleteInvalidItemsInDBDcfVector;
  static constexpr char kName[] = "deleteInvalidItemsInDBDcfVector";
  static int Fill() { return DcfFileInfoVector::GetInstance()->addToDCFInfoVector(); }
  static int FillOther() { return DataBaseMgr::GetInstance()->addFileUriToTable(); }
};

template <typename Variant>
class ObjectTablePurge : public ObjectDcfPurge {
 protected:
  ObjectTablePurge() : ObjectDcfPurge(Variant::kMode, Variant::kPurge, Variant::kName) {
    Container(1, " ", card.path());
  }
  void FillList() const override { EXPECT_EQ(Variant::Fill(), 1); }
  std::string Named(const std::string& before, const std::string& after) const {
    return before + "[DataBaseMgr::" + Variant::kName + "] " + after;
  }
  std::string ItemBreak() const { return Named("", "Break in DeleteInvalidItemsInDB"); }
};

using Variants = testing::Types<BackupPurge, VectorPurge>;
TYPED_TEST_SUITE(ObjectTablePurge, Variants);

TYPED_TEST(ObjectTablePurge, KeepsSharedFilesThatAreThereWithTheirSize) {
  this->Container(2, "1", this->card.MakeDir("100CAMRA"));
  this->Object(3, "2", 1, this->card.Write("a.JPG", "12345"), "5", 1000001);
  this->Object(4, "2", 3, this->card.Write("b.MP4", "123"), "3", 1000002);
  this->Object(5, "2", 2, this->card.Write("c.aac", "1"), "1", 1000003);
  this->Share({1, 2, 3});
  this->RunRoot();
  EXPECT_THAT(this->Ids(), ElementsAre("1", "2", "3", "4", "5"));
}

TYPED_TEST(ObjectTablePurge, LogsEveryPhaseInOrder) {
  this->Container(2, "1", this->card.MakeDir("100CAMRA"));
  this->Container(3, "1", this->Path("101CAMRA"));
  this->Object(4, "2", 1, this->card.Write("a.JPG", "12345"), "5", 1000001);
  this->Object(5, "2", 1, this->Path("gone.JPG"), "5", 1000002);
  this->Object(6, "1", 1, this->Path("wrong.JPG"), "5", 1000003);
  this->Share({1});
  this->RunRoot();
  EXPECT_THAT(this->Log(),
              ElementsAreArray(
                  Lines{"@>>>> Time2 start", "@>>>> ObjectTable create start",
                        this->DirectoryLine(this->card.path()), "@>>>> ObjectTable create stop",
                        "@>>>> Time2 start", this->RemoveLine(3), "@>>>> Time2 start", kWrong,
                        "@>>>> IMAGE Time start", "@>>>> ImageTable1 create start",
                        this->Named(" ", "Object Table nRows2 = 3, nCols2 = 4"),
                        "@>>>> ImageTable1 create stop", "@>>>> ImageTables2 create start",
                        this->RemoveLine(5), this->RemoveLine(6), "@>>>>>> IMAGE Time stop"}));
  EXPECT_THAT(this->Ids(), ElementsAre("1", "2", "4"));
}

TYPED_TEST(ObjectTablePurge, RemovesFilesThatAreNotSharedGoneOrOfAnotherSize) {
  this->Object(3, "2", 1, this->card.Write("a.JPG", "12345"), "5", 1000009);
  this->Object(4, "2", 1, this->Path("gone.JPG"), "5", 1000001);
  this->Object(5, "2", 3, this->card.Write("b.MP4", "123"), "4", 1000002);
  this->Share({1, 2});
  this->RunRoot();
  EXPECT_THAT(this->Ids(), ElementsAre("1"));
  EXPECT_THAT(this->Log(), Contains(HasSubstr("b.MP4] size different! db[4] stat[3]")));
  EXPECT_THAT(this->Log(), Not(Contains(HasSubstr("a.JPG] size different!"))));
}

TYPED_TEST(ObjectTablePurge, ChecksItemsOfEveryClassButDirectories) {
  this->Container(2, "1", this->card.MakeDir("100CAMRA"));
  for (const int mediaClass : {1, 2, 3, 4, -1})
    this->Object(10 + mediaClass, "2", mediaClass, this->Path("gone"), "5", 1000001);
  this->RunRoot();
  EXPECT_THAT(this->Ids(), ElementsAre("1", "2"));
  EXPECT_TRUE(FakePlatform::Get().Logged(this->Named(" ", "Object Table nRows2 = 5, nCols2 = 4")));
}

TYPED_TEST(ObjectTablePurge, IgnoresTheOtherList) {
  this->Object(3, "2", 1, this->card.Write("a.JPG", "1"), "1", 1000001);
  FakePlatform::Get().sharedFiles = {{"/mnt/mmc/DCIM/100CAMRA/DSC_0001.JPG"}};
  ASSERT_EQ(TypeParam::FillOther(), 1);
  this->RunRoot();
  EXPECT_THAT(this->Ids(), ElementsAre("1"));
}

TYPED_TEST(ObjectTablePurge, ChecksOnlyTheDirectoryItselfWhenItIsNotTheRoot) {
  this->Container(2, "1", this->card.MakeDir("100CAMRA"));
  this->Object(3, "2", 1, this->Path("gone.JPG"), "5", 1000001);
  this->Run(this->Path("100CAMRA"));
  EXPECT_THAT(this->Ids(), ElementsAre("1", "2", "3"));
  EXPECT_THAT(this->Log(), ElementsAre("@>>>> Time2 start"));
}

TYPED_TEST(ObjectTablePurge, RemovesAFolderThatIsGoneAndNothingElse) {
  this->Container(2, "1", this->Path("100CAMRA"));
  this->Object(3, "2", 1, this->Path("gone.JPG"), "5", 1000001);
  this->Run(this->Path("100CAMRA"));
  EXPECT_THAT(this->Ids(), ElementsAre("1", "3"));
  EXPECT_THAT(this->Log(), ElementsAre(this->RemoveLine(2), "@>>>> Time2 start"));
}

TYPED_TEST(ObjectTablePurge, GoesOnWhenTheRootItselfIsGone) {
  this->database.Run("update ObjectTable set FullPath='/nowhere/at/all' where id=1");
  this->Object(3, "1", 1, "/nowhere/at/all/a.JPG", "5", 1000001);
  this->Run("/nowhere/at/all");
  EXPECT_THAT(this->Ids(), IsEmpty());
}

TYPED_TEST(ObjectTablePurge, EndsAtARootThatIsItsOwnChild) {
  this->database.Run("update ObjectTable set parentID='1' where id=1");
  this->RunRoot();
  EXPECT_THAT(this->Ids(), ElementsAre("1"));
  EXPECT_EQ(this->Log().size(), 10u);
}

TYPED_TEST(ObjectTablePurge, IsSilentForAnUnknownOrNullPath) {
  this->Run("/nowhere");
  (this->database.manager()->*TypeParam::kPurge)(nullptr);
  EXPECT_THAT(this->Log(), IsEmpty());
}

TYPED_TEST(ObjectTablePurge, BreaksBothWalksWhenCancelledBefore) {
  this->Container(2, "1", this->Path("100CAMRA"));
  this->Object(3, "2", 1, this->Path("gone.JPG"), "5", 1000001);
  CancelNow();
  this->RunRoot();
  EXPECT_THAT(this->Ids(), ElementsAre("1", "2", "3"));
  const Lines log = this->Log();
  ASSERT_EQ(log.size(), 12u);
  EXPECT_EQ(log[4], kBreak);
  EXPECT_EQ(log[10], this->ItemBreak());
  EXPECT_EQ(log[11], "@>>>>>> IMAGE Time stop");
  EXPECT_EQ(FakePlatform::Get().Find(this->ItemBreak())->priority, 4);
}

TYPED_TEST(ObjectTablePurge, LogsNoBreakForTablesWithoutRows) {
  CancelNow();
  this->RunRoot();
  EXPECT_EQ(FakePlatform::Get().CountLogged(kBreak), 0);
  EXPECT_EQ(FakePlatform::Get().CountLogged(this->ItemBreak()), 0);
  EXPECT_TRUE(FakePlatform::Get().Logged(this->Named(" ", "Object Table nRows2 = 0, nCols2 = 0")));
}

TYPED_TEST(ObjectTablePurge, StopsBeforeTheItemAfterACancel) {
  this->Object(3, "2", 1, this->Path("gone.JPG"), "5", 1000001);
  this->Object(4, "2", 1, this->Path("gone2.JPG"), "5", 1000002);
  FakePlatform::Get().onLog = [](const LogLine& line) {
    if (line.message.find("RemoveIdFromObjectTable") != std::string::npos) CancelNow();
  };
  this->RunRoot();
  EXPECT_THAT(this->Ids(), ElementsAre("1", "4"));
  EXPECT_EQ(FakePlatform::Get().CountLogged(this->ItemBreak()), 1);
}

TYPED_TEST(ObjectTablePurge, LogsNoBreakForACancelAfterTheLastItem) {
  this->Object(3, "2", 1, this->Path("gone.JPG"), "5", 1000001);
  FakePlatform::Get().onLog = [](const LogLine& line) {
    if (line.message.find("RemoveIdFromObjectTable") != std::string::npos) CancelNow();
  };
  this->RunRoot();
  EXPECT_THAT(this->Ids(), ElementsAre("1"));
  EXPECT_EQ(FakePlatform::Get().CountLogged(this->ItemBreak()), 0);
}

TYPED_TEST(ObjectTablePurge, ComparesSizesAsUnsignedNumbers) {
  ASSERT_EQ(truncate64(this->card.Write("a.MP4", "").c_str(), 3000000000), 0);
  this->Object(3, "2", 3, this->Path("a.MP4"), "3000000000", 1000001);
  ASSERT_EQ(truncate64(this->card.Write("b.MP4", "").c_str(), 4294967301), 0);
  this->Object(4, "2", 3, this->Path("b.MP4"), "4294967301", 1000002);
  this->Share({1, 2});
  this->RunRoot();
  EXPECT_THAT(this->Ids(), ElementsAre("1", "3"));
}

}  // namespace
