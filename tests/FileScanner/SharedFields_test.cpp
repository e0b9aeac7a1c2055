// The members that a query leaves its result in, after each operation that is made of several.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>
#include <vector>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/ImageMetaData.h"
#include "support/RecordBuilder.h"
#include "support/TempDir.h"
#include "support/TestDatabase.h"

namespace {

using orx_test::MakeImageAt;
using orx_test::TempDir;
using orx_test::TestDatabase;
using testing::ElementsAre;
using testing::IsEmpty;
using Cells = std::vector<std::string>;

struct Fields {
  int code, rows, columns;
  Cells names, cells;
};

bool operator==(const Fields& a, const Fields& b) {
  return a.code == b.code && a.rows == b.rows && a.columns == b.columns && a.names == b.names &&
         a.cells == b.cells;
}

void PrintTo(const Fields& fields, std::ostream* out) {
  *out << "code " << fields.code << ", " << fields.rows << " rows, " << fields.columns
       << " columns, names " << testing::PrintToString(fields.names) << ", cells "
       << testing::PrintToString(fields.cells);
}

// 1 card { 2 a.JPG (there), 3 gone.JPG, 4 sub { 5 b.JPG (gone) } }
class SharedFieldsTest : public testing::Test {
 protected:
  explicit SharedFieldsTest(int mode = 0) : database_(mode) {
    card_.Write("a.JPG", "12345");
    card_.MakeDir("sub");
    Object(1, "0", 0, card_.path());
    Object(2, "1", 1, card_.Path("a.JPG"));
    Object(3, "1", 1, card_.Path("gone.JPG"));
    Object(4, "1", 0, card_.Path("sub"));
    Object(5, "4", 1, card_.Path("sub/b.JPG"));
    Mark();
  }
  void Object(int id, const std::string& parent, int mediaClass, const std::string& path) const {
    database_.Run("insert into ObjectTable (id,class,date,parentID,FullPath) values (" +
                  std::to_string(id) + "," + std::to_string(mediaClass) + ",'d','" + parent +
                  "','" + path + "')");
    if (mediaClass == 1)
      database_.Run("insert into ImageTable (id,class,date,size,FullPath) values ('" +
                    std::to_string(id) + "',1,'d',5,'" + path + "')");
  }
  static DataBaseMgr* manager() { return DataBaseMgr::GetInstance(); }
  // What no query leaves.
  static void Mark() {
    manager()->nLastResult = -1;
    manager()->nRows = 71;
    manager()->nColumns = 72;
    DataBaseMgr::vcol_head = {"marked"};
    DataBaseMgr::vdata = {"mark"};
  }
  static Fields Now() {
    return {manager()->nLastResult, manager()->nRows, manager()->nColumns, DataBaseMgr::vcol_head,
            DataBaseMgr::vdata};
  }
  // After a lookup of one path, which empties the cells.
  static Fields AfterLookup(int code) { return {code, 1, 1, {"id"}, {}}; }
  static Fields AfterLookupOfNothing() { return {SQLITE_OK, 0, 0, {}, {}}; }

  TempDir card_;
  TestDatabase database_;
};

TEST_F(SharedFieldsTest, OfAPurgeAreThoseOfItsLastLookup) {
  manager()->DeleteInvalidItemsInDB(card_.path().c_str());
  EXPECT_EQ(Now(), AfterLookup(SQLITE_OK));
}

TEST_F(SharedFieldsTest, OfAPurgeHaveTheCodeOfTheLastQueryAlone) {
  database_.Run("drop table ImageTable");
  manager()->DeleteInvalidItemsInDB(card_.path().c_str());
  EXPECT_EQ(Now(), AfterLookup(SQLITE_ERROR));  // the sizes were not to be had
}

TEST_F(SharedFieldsTest, OfAPurgeOfNothingAreThoseOfTheLookup) {
  manager()->DeleteInvalidItemsInDB("/none");
  EXPECT_EQ(Now(), AfterLookupOfNothing());
  Mark();
  manager()->deleteInvalidItemsInDBDcf("/none");
  EXPECT_EQ(Now(), AfterLookupOfNothing());
}

TEST_F(SharedFieldsTest, OfTheCardPurgesAreThoseOfTheirLastLookup) {
  for (auto purge :
       {&DataBaseMgr::deleteInvalidItemsInDBDcf, &DataBaseMgr::deleteInvalidItemsFromAutoBackupDB,
        &DataBaseMgr::deleteInvalidItemsInDBDcfVector}) {
    Mark();
    (manager()->*purge)(card_.path().c_str());
    EXPECT_EQ(Now().rows, 1);
    EXPECT_EQ(Now().columns, 1);
    EXPECT_THAT(Now().names, ElementsAre("id"));
    EXPECT_THAT(Now().cells, IsEmpty());
  }
}

TEST_F(SharedFieldsTest, OfAMarkAreThoseOfItsLastLookup) {
  manager()->InvalidateAllItemsInDB(card_.path().c_str());
  EXPECT_EQ(Now(), AfterLookup(SQLITE_OK));
  Mark();
  manager()->InvalidateAllItemsInDB("/none");
  EXPECT_EQ(Now(), AfterLookupOfNothing());
}

TEST_F(SharedFieldsTest, OfASweepAreThoseOfItsQueryWithoutCells) {
  database_.Run("update ObjectTable set Valid = 1 where id in (3, 5)");
  manager()->DeleteInvalidatedItemInDB(nullptr);
  EXPECT_EQ(
      Now(),
      (Fields{SQLITE_OK,
              2,
              8,
              {"id", "class", "date", "parentID", "FullPath", "Valid", "BackupID", "IsBackup"},
              {}}));
  Mark();
  manager()->DeleteInvalidatedItemInDB(nullptr);
  EXPECT_EQ(Now(), AfterLookupOfNothing());
}

TEST_F(SharedFieldsTest, OfARemovalOfAnIdStayAsTheyAre) {
  const Fields before = Now();
  manager()->RemoveIdFromTables("3", 1);
  manager()->RemoveIdFromObjectTable("5");
  manager()->ValidateItemInDB(card_.Path("a.JPG").c_str());
  EXPECT_EQ(Now(), before);
}

TEST_F(SharedFieldsTest, OfARemovalOfAPathAreThoseOfItsQueryWithoutCells) {
  manager()->DeleteItemFromDB(card_.Path("a.JPG").c_str());
  EXPECT_EQ(Now(), (Fields{SQLITE_OK, 1, 2, {"id", "class"}, {}}));
}

TEST_F(SharedFieldsTest, OfAnInsertAreThoseOfTheSearchForItsId) {
  manager()->InsertMetaData(MakeImageAt("/card/new.JPG").get());
  EXPECT_EQ(Now(), AfterLookup(SQLITE_OK));
}

TEST_F(SharedFieldsTest, OfAFailedInsertAreWithoutCells) {
  Fields expected = Now();
  expected.cells.clear();
  manager()->InsertMetaData(MakeImageAt("/card/a\"b.JPG").get());
  EXPECT_EQ(Now(), expected);
}

TEST_F(SharedFieldsTest, OfAnInsertWithAnIdStayAsTheyAre) {
  const auto picture = MakeImageAt("/card/new.JPG");
  picture->SetUniqueID("77");
  const Fields before = Now();
  manager()->InsertMetaData(picture.get());
  EXPECT_EQ(Now(), before);
  manager()->InsertMetaData(picture.get());  // fails, as the id is taken
  EXPECT_EQ(Now(), before);
}

TEST_F(SharedFieldsTest, OfALookupOfASingleRowStay) {
  EXPECT_TRUE(manager()->IsInDB(card_.path().c_str()));
  EXPECT_EQ(Now().rows, 1);
  EXPECT_EQ(Now().columns, 8);
  EXPECT_EQ(Now().cells.size(), 8u);
}

TEST_F(SharedFieldsTest, AreEmptyInANewManager) {
  DataBaseMgr::DestroyInstance();
  DataBaseMgr::vdata = {"mark"};
  DataBaseMgr::vcol_head = {"marked"};
  EXPECT_EQ((DataBaseMgr::GetInstance(), Now()), AfterLookupOfNothing());
}

// The layout with values beside the marks.
class SharedFieldsOfBackup : public testing::Test {
 protected:
  TestDatabase database_{6};
};

TEST_F(SharedFieldsOfBackup, OfAFailedInsertAreWithoutCells) {
  DataBaseMgr::vdata = {"mark"};
  database_->InsertMetaDataToObjTable(MakeImageAt("/card/a\"b.JPG").get());
  EXPECT_THAT(DataBaseMgr::vdata, IsEmpty());
}

}  // namespace
