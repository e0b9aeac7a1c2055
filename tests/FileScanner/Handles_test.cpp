// The connection in the host's hands: closed and replaced between operations, hooked during them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DirectoryScanner.h"
#include "FileScanner/ImageMetaData.h"
#include "support/FakePlatform.h"
#include "support/JpegBuilder.h"
#include "support/Mp4Builder.h"
#include "support/RecordBuilder.h"
#include "support/ScannerFixture.h"

namespace {

using orx_test::MakeImageAt;
using orx_test::Rows;
using orx_test::ScannerTest;
using testing::ElementsAre;

DataBaseMgr* Manager() { return DataBaseMgr::GetInstance(); }
void Forget(char* text) { free(text); }

class HandlesTest : public ScannerTest {
 protected:
  HandlesTest() {
    WriteCard();
    Scan();
  }
  void WriteCard() const {
    Write("100PHOTO/IMGA0001.JPG", orx_test::MakeJpeg());
    Write("100PHOTO/IMGA0002.JPG", orx_test::MakeJpeg());
    Write("101PHOTO/MAHA0001.MP4", orx_test::SmallFilm());
    Write("101PHOTO/SONG0001.m4a", orx_test::SmallSong());
  }
};

TEST_F(HandlesTest, CanBeClosedBetweenOperations) {
  const std::string picture = InCard("100PHOTO/IMGA0001.JPG");
  const struct {
    const char* name;
    std::function<void()> run;
  } operations[] = {
      {"IsInDB", [&] { Manager()->IsInDB(picture.c_str()); }},
      {"GetUniqueIdForPath", [&] { Forget(Manager()->GetUniqueIdForPath(picture.c_str())); }},
      {"ExecSqlStatment", [] { Manager()->ExecSqlStatment("select * from ObjectTable"); }},
      {"NeedToDeleteDB", [&] { Manager()->NeedToDeleteDB(card_.c_str()); }},
      {"InsertMetaData", [] { Manager()->InsertMetaData(MakeImageAt("/card/a.JPG").get()); }},
      {"ValidateItemInDB", [&] { Manager()->ValidateItemInDB(picture.c_str()); }},
      {"RemoveIdFromTables", [] { Manager()->RemoveIdFromTables("4", 1); }},
      {"InvalidateAllItemsInDB", [&] { Manager()->InvalidateAllItemsInDB(card_.c_str()); }},
      {"DeleteInvalidItemsInDB", [&] { Manager()->DeleteInvalidItemsInDB(card_.c_str()); }},
      {"deleteInvalidItemsInDBDcf", [&] { Manager()->deleteInvalidItemsInDBDcf(card_.c_str()); }},
      {"DeleteInvalidatedItemInDB", [] { Manager()->DeleteInvalidatedItemInDB(nullptr); }},
      {"DisplayDatabase", [] { Manager()->DisplayDatabase(); }},
      {"HandleFile",
       [&] {
         scanner()->HandleFile(InCard("100PHOTO").c_str(), "2", "IMGA0001.JPG", picture.c_str());
       }},
      {"UpdateShareStatus", [] { Manager()->UpdateShareStatus(nullptr, 0); }},
  };
  for (const auto& operation : operations) {
    SCOPED_TRACE(operation.name);
    Open();
    operation.run();
    sqlite3** handle = Manager()->getPpDataBase();
    EXPECT_EQ(sqlite3_close(*handle), SQLITE_OK);
    *handle = nullptr;
  }
}

TEST_F(HandlesTest, CanBeReplacedBetweenOperations) {
  const std::string otherPath = temp_.Path("other.db");
  Open();
  DataBaseMgr::DestroyInstance();
  Manager()->OpenDB(otherPath.c_str());
  DataBaseMgr::DestroyInstance();

  Open();
  EXPECT_TRUE(Manager()->IsInDB(card_.c_str()));
  sqlite3* first = *Manager()->getPpDataBase();
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(otherPath.c_str(), &other), SQLITE_OK);
  Manager()->setPpDataBase(&other);
  EXPECT_FALSE(Manager()->IsInDB(card_.c_str()));
  Manager()->InsertMetaData(MakeImageAt("/card/a.JPG").get());
  EXPECT_TRUE(Manager()->IsInDB("/card/a.JPG"));
  *Manager()->getPpDataBase() = first;
  EXPECT_FALSE(Manager()->IsInDB("/card/a.JPG"));
  EXPECT_EQ(sqlite3_close(other), SQLITE_OK);
  int status = 0;
  scanner()->ScanDir(card_.c_str(), db_.c_str(), &status);
  EXPECT_EQ(Cell("select count(*) from ObjectTable"), "7");
}

// ---- hooks -------------------------------------------------------------------------------------

int depth = 0;
int calls = 0;
std::string knownPath;

// What a hook may ask for, not again from within.
void AskEverything() {
  if (depth > 0) return;
  ++depth;
  ++calls;
  DataBaseMgr* database = Manager();
  EXPECT_NE(*database->getPpDataBase(), nullptr);
  database->IsInDB(knownPath.c_str());
  for (auto lookup : {&DataBaseMgr::GetClassForPath, &DataBaseMgr::GetUniqueIdForPath,
                      &DataBaseMgr::GetParentIdForPath, &DataBaseMgr::GetImageDLNAProfileForPath})
    Forget((database->*lookup)(knownPath.c_str()));
  char** rows = nullptr;
  int count = 0;
  database->GetArrayOfFullPathInDB("1", &rows, &count);
  sqlite3_free_table(rows);
  database->getIsDbExists();
  --depth;
}

struct Hook {
  const char* name;
  void (*set)(sqlite3* connection);
};
const Hook kHooks[] = {
    {"Statement",
     [](sqlite3* connection) {
       sqlite3_trace_v2(
           connection, SQLITE_TRACE_STMT,
           [](unsigned, void*, void*, void*) {
             AskEverything();
             return 0;
           },
           nullptr);
     }},
    {"Profile",
     [](sqlite3* connection) {
       sqlite3_trace_v2(
           connection, SQLITE_TRACE_PROFILE,
           [](unsigned, void*, void*, void*) {
             AskEverything();
             return 0;
           },
           nullptr);
     }},
    {"Row",
     [](sqlite3* connection) {
       sqlite3_trace_v2(
           connection, SQLITE_TRACE_ROW,
           [](unsigned, void*, void*, void*) {
             AskEverything();
             return 0;
           },
           nullptr);
     }},
    {"Update",
     [](sqlite3* connection) {
       sqlite3_update_hook(
           connection, [](void*, int, const char*, const char*, sqlite3_int64) { AskEverything(); },
           nullptr);
     }},
    {"Progress",
     [](sqlite3* connection) {
       sqlite3_progress_handler(
           connection, 3,
           [](void*) {
             AskEverything();
             return 0;
           },
           nullptr);
     }},
};

class HookTest : public HandlesTest, public testing::WithParamInterface<Hook> {
 protected:
  HookTest() {
    knownPath = InCard("100PHOTO/IMGA0001.JPG");
    depth = calls = 0;
  }
  // The rows by path, each with its parent's path; names carry numbers that differ.
  Rows Contents() const {
    return Select(
        "select o.FullPath, o.class, o.Valid, ifnull(p.FullPath, o.parentID), "
        "(select count(*) from ImageTable i where i.id = o.id and i.FullPath = o.FullPath), "
        "(select count(*) from VideoTable i where i.id = o.id and i.FullPath = o.FullPath), "
        "(select count(*) from AudioTable i where i.id = o.id and i.FullPath = o.FullPath) "
        "from ObjectTable o left join ObjectTable p on o.parentID = p.id order by o.FullPath");
  }
  void OpenHooked() const {
    Open();
    GetParam().set(*Manager()->getPpDataBase());
  }
};

TEST_P(HookTest, MayAskDuringAScan) {
  std::filesystem::remove(InCard("100PHOTO/IMGA0002.JPG"));
  std::filesystem::remove_all(InCard("101PHOTO"));
  Write("102PHOTO/IMGA0003.JPG", orx_test::MakeJpeg());
  OpenHooked();
  Scan();
  EXPECT_GT(calls, 0);
  const Rows hooked = Contents();
  std::filesystem::remove(db_);
  Scan();
  EXPECT_EQ(hooked, Contents());
}

TEST_P(HookTest, MayAskDuringAFirstScan) {
  const Rows expected = Contents();
  std::filesystem::remove(db_);
  OpenHooked();
  Scan();
  EXPECT_GT(calls, 0);
  EXPECT_EQ(Contents(), expected);
}

TEST_P(HookTest, MayAskWhileADirectoryIsRemoved) {
  OpenHooked();
  int found = 0;
  Manager()->RemoveDIRfromDB(card_.c_str(), &found);
  EXPECT_EQ(found, 1);
  EXPECT_GT(calls, 0);
  DataBaseMgr::DestroyInstance();
  EXPECT_THAT(Column("select count(*) from ObjectTable"), ElementsAre("0"));
}

TEST_P(HookTest, MayAskWhileItemsAreRemoved) {
  Open();
  const std::string path = InCard("100PHOTO/IMGA0001.JPG");
  for (int i = 0; i < 3; ++i) Manager()->InsertMetaData(MakeImageAt(path).get());
  knownPath = InCard("101PHOTO/SONG0001.m4a");
  OpenHooked();
  Manager()->DeleteItemFromDB(path.c_str());
  EXPECT_GT(calls, 0);
  DataBaseMgr::DestroyInstance();
  EXPECT_THAT(Column("select count(*) from ObjectTable where FullPath = '" + path + "'"),
              ElementsAre("0"));
  EXPECT_THAT(Column("select count(*) from ObjectTable"), ElementsAre("6"));
}

TEST_P(HookTest, DoesNotChangeTheAnswerOfALookup) {
  OpenHooked();
  for (const char* name : {"", "/100PHOTO", "/100PHOTO/IMGA0002.JPG", "/101PHOTO/MAHA0001.MP4"}) {
    const std::string path = card_ + name;
    const std::unique_ptr<char, void (*)(void*)> id(Manager()->GetUniqueIdForPath(path.c_str()),
                                                    free);
    ASSERT_NE(id, nullptr);
    EXPECT_EQ(Cell("select FullPath from ObjectTable where id = " + std::string(id.get())), path);
  }
  EXPECT_FALSE(Manager()->IsInDB("/none"));
}

INSTANTIATE_TEST_SUITE_P(Hooks, HookTest, testing::ValuesIn(kHooks),
                         [](const auto& test) { return std::string(test.param.name); });

// A host's own busy handler, in place of the library's, with somebody in the way.  What it reads
// holds a lock of its own, so that the scan may have to be made once more.
TEST_F(HandlesTest, CanBeAskedForInABusyHandler) {
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(db_.c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "begin immediate", nullptr, nullptr, nullptr), SQLITE_OK);
  Open();
  knownPath = card_;
  depth = calls = 0;
  sqlite3_busy_handler(
      *Manager()->getPpDataBase(),
      [](void* blocking, int tries) {
        AskEverything();
        if (tries == 3)
          sqlite3_exec(static_cast<sqlite3*>(blocking), "commit", nullptr, nullptr, nullptr);
        return tries < 10 ? 1 : 0;
      },
      other);
  Write("103PHOTO/IMGA0009.JPG", orx_test::MakeJpeg());
  Scan();
  EXPECT_GT(calls, 0);
  sqlite3_exec(other, "commit", nullptr, nullptr, nullptr);
  EXPECT_EQ(sqlite3_close(other), SQLITE_OK);
  Scan();
  EXPECT_EQ(Column("select FullPath from ObjectTable where FullPath like '%/IMGA0009.JPG'").size(),
            1u);
}

}  // namespace
