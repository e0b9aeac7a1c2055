// What the host does beside scans, with every call failing once or from then on: the process
// survives, the database is sound, and no item stands in one of its two tables alone.
#include <sqlite3.h>
#include <stdlib.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DirectoryScanner.h"
#include "FileScanner/MediaFileInfos.h"
#include "FileScanner/MultimediaQueryMgr.h"
#include "robustness/Card.h"
#include "robustness/Injection.h"
#include "support/JpegBuilder.h"

namespace orx_test {
namespace {

struct Operation {
  const char* name;
  void (*run)(DirectoryScanner* scanner, DataBaseMgr* database, const std::string& card,
              const std::string& db);
};

void FreeBackupList(BackupClassElement* head) {
  while (head != nullptr) {
    BackupClassElement* next = head->pNext;
    free(head);
    head = next;
  }
}

const Operation kOperations[] = {
    {"InsertMetaData",
     [](DirectoryScanner* scanner, DataBaseMgr* database, const std::string& card,
        const std::string& db) {
       if (database->OpenDB(db.c_str()) == 0) return;
       scanner->HandleFile((card + "/102PHOTO").c_str(), "1", "NEW.JPG",
                           (card + "/102PHOTO/NEW.JPG").c_str());
     }},
    {"ParseAndRegisterFile",
     [](DirectoryScanner* scanner, DataBaseMgr* /*database*/, const std::string& card,
        const std::string& db) {
       scanner->ParseAndRegisterFile(db.c_str(), (card + "/102PHOTO/NEW.JPG").c_str(), nullptr);
     }},
    {"ParseAndRegisterFileUnderAnId",
     [](DirectoryScanner* scanner, DataBaseMgr* /*database*/, const std::string& card,
        const std::string& db) {
       scanner->ParseAndRegisterFile(db.c_str(), (card + "/102PHOTO/NEW.JPG").c_str(), "3");
     }},
    {"DeleteItem",
     [](DirectoryScanner* /*scanner*/, DataBaseMgr* database, const std::string& card,
        const std::string& db) {
       if (database->OpenDB(db.c_str()) == 0) return;
       database->DeleteItemFromDB((card + "/100PHOTO/IMGA0002.JPG").c_str());
       database->DeleteItemFromDBWithId("3");
     }},
    {"InvalidateDirectory",
     [](DirectoryScanner* scanner, DataBaseMgr* /*database*/, const std::string& card,
        const std::string& db) {
       int status = 0;
       scanner->InvalidateDirectory(db.c_str(), (card + "/101PHOTO").c_str(), &status);
     }},
    {"Purge",
     [](DirectoryScanner* /*scanner*/, DataBaseMgr* database, const std::string& card,
        const std::string& db) {
       if (database->OpenDB(db.c_str()) != 0) database->DeleteInvalidItemsInDB(card.c_str());
     }},
    {"UpdateShareStatus",
     [](DirectoryScanner* /*scanner*/, DataBaseMgr* database, const std::string& card,
        const std::string& db) {
       if (database->OpenDB(db.c_str()) == 0) return;
       char path[600];
       snprintf(path, sizeof path, "%s/100PHOTO/IMGA0002.JPG", card.c_str());
       char* paths[] = {path, nullptr};
       database->UpdateShareStatus(paths, 0);
       database->UpdateShareStatus(nullptr, 0);
     }},
    {"BackupList",
     [](DirectoryScanner* /*scanner*/, DataBaseMgr* database, const std::string& /*card*/,
        const std::string& db) {
       if (database->OpenDB(db.c_str()) == 0) return;
       int count = 0;
       BackupClassElement* head = nullptr;
       database->GetClassElementListForBackup(&count, &head);
       FreeBackupList(head);
     }},
    {"Query",
     [](DirectoryScanner* /*scanner*/, DataBaseMgr* /*database*/, const std::string& /*card*/,
        const std::string& db) {
       MultimediaQueryMgr query;
       query.ConnectDB(db.c_str());
       bool thrown = false;
       try {
         query.ExecSqlStatment("select * from ObjectTable");
       } catch (const std::bad_alloc&) {
         thrown = true;
       }
       EXPECT_FALSE(thrown);
       EXPECT_EQ(MultimediaQueryMgr::vdata.size(),
                 static_cast<size_t>(query.nRows) * static_cast<size_t>(query.nColumns));
       query.DisconnectDB();
     }},
};

void PrintTo(const Operation& operation, std::ostream* out) { *out << operation.name; }

class OperationTest : public CardTest, public testing::WithParamInterface<Operation> {
 protected:
  void Run() const {
    const std::string card = card_, db = db_;
    DirectoryScanner* scanner = DirectoryScanner::GetInstance();
    if (scanner == nullptr) return;
    scanner->SetDlnaProfiles(pProfiles);
    const long call = next_;
    Injection::Arm(layer_, call, behaviour_, EIO);
    if (DataBaseMgr* database = DataBaseMgr::GetInstance(); database != nullptr) {
      try {
        GetParam().run(scanner, database, card, db);
      } catch (const std::bad_alloc&) {
        // a text of the test's own
      }
    }
    struck_ = Injection::Disarm();
    DataBaseMgr::DestroyInstance();
    DirectoryScanner::DestroyInstance();
  }

  // Items of which one of the two rows is missing.
  int HalfItems() const {
    sqlite3* database = nullptr;
    sqlite3_open(db_.c_str(), &database);
    sqlite3_stmt* statement = nullptr;
    EXPECT_EQ(
        sqlite3_prepare_v2(
            database,
            "with Media(id) as (select id from ImageTable union all select id from AudioTable "
            "union "
            "all select id from VideoTable) select (select count(*) from ObjectTable where class "
            "!= 0 and id not in (select id from Media)) + (select count(*) from Media where id not "
            "in (select id from ObjectTable))",
            -1, &statement, nullptr),
        SQLITE_OK);
    sqlite3_step(statement);
    const int count = sqlite3_column_int(statement, 0);
    sqlite3_finalize(statement);
    sqlite3_close(database);
    return count;
  }

  Layer layer_ = Layer::kMemory;
  Behaviour behaviour_ = Behaviour::kFailOnce;
  long next_ = 0;
  mutable bool struck_ = false;
};

TEST_P(OperationTest, LeavesWholeItemsWhateverFails) {
  WriteSmallCard();
  Scan();
  Write("102PHOTO/NEW.JPG", MakeJpeg(1000, 700));
  const std::string bytes = DatabaseBytes();
  ASSERT_EQ(HalfItems(), 0);
  for (const Layer layer : {Layer::kMemory, Layer::kFiles, Layer::kDisk})
    for (const Behaviour behaviour : {Behaviour::kFailOnce, Behaviour::kFailFromThere}) {
      layer_ = layer;
      behaviour_ = behaviour;
      const long step = layer == Layer::kMemory && !IsSoak() ? 3 : 1;
      struck_ = true;
      for (next_ = 1; struck_; next_ += step) {
        SCOPED_TRACE("layer " + std::to_string(static_cast<int>(layer)) + ", call " +
                     std::to_string(next_));
        RestoreDatabase(bytes);
        Run();
        EXPECT_EQ(HalfItems(), 0);
        Contents();  // checks the integrity
        if (HasFailure()) return;
      }
    }
}

INSTANTIATE_TEST_SUITE_P(Host, OperationTest, testing::ValuesIn(kOperations),
                         [](const auto& test) { return std::string(test.param.name); });

// ---- the texts that missing memory has of its own ----

const char* expectedText = nullptr;
bool textSeen = false;
void LookForText(const char* line) {
  if (strstr(line, expectedText) != nullptr) textSeen = true;
}

class MissingMemoryTest : public CardTest {
 protected:
  // Whether `operation` logs the text when one or another block of memory is missing.
  template <typename Operation>
  static bool Logs(const char* text, Operation&& operation) {
    expectedText = text;
    textSeen = false;
    DirectoryScanner* scanner = DirectoryScanner::GetInstance();
    scanner->SetDlnaProfiles(pProfiles);
    QuietPlatform::Get().onLine = LookForText;
    bool struck = true;
    for (long call = 1; struck && !textSeen; ++call) {
      MediaFileInfos::DestroyInstance();
      Injection::Arm(Layer::kMemory, call, Behaviour::kFailOnce, ENOMEM);
      operation(scanner);
      struck = Injection::Disarm();
    }
    return textSeen;
  }
};

TEST_F(MissingMemoryTest, IsSaidWhereAFilesRecordCannotBeMade) {
  const std::string path = Write("100PHOTO/IMGA0001.JPG", MakeJpeg());
  const auto backup = [&](DirectoryScanner* scanner) {
    scanner->HandleFileAutoBackup("/d", "1", "IMGA0001.JPG", path.c_str(), 0, 1, 1);
  };
  EXPECT_TRUE(
      Logs("[DirectoryScanner::HandleFileAutoBackup] Failed to create FileInfo instance "
           "[IMGA0001.JPG]",
           backup));
  EXPECT_TRUE(
      Logs("[DirectoryScanner::HandleFileAutoBackup] Media file [IMGA0001.JPG] parsing "
           "failed.",
           backup));
  EXPECT_TRUE(Logs("[DirectoryScanner::HandleFileXQ] Media file [IMGA0001.JPG] parsing failed.",
                   [&](DirectoryScanner* scanner) {
                     scanner->HandleFileXQ("/d", "1", "IMGA0001.JPG", path.c_str(), 0, 1, 1);
                   }));
  EXPECT_TRUE(Logs("[DirectoryScanner::HandleFile] Media file [IMGA0001.JPG] parsing failed.",
                   [&](DirectoryScanner* scanner) {
                     scanner->HandleFile2("/d", "1", "IMGA0001.JPG", path.c_str(), 0, 1, 1);
                   }));
}

TEST_F(MissingMemoryTest, IsSaidWhereADisplayRecordCannotBeMade) {
  const std::string path = Write("100PHOTO/IMGA0001.JPG", MakeJpeg());
  EXPECT_TRUE(Logs("[ExtractMetadata] Memory Alocation failed. [", [&](DirectoryScanner* scanner) {
    FreeMediaFileDisplayInfo(scanner->ParseAndGetFileInfo(path.c_str()));
  }));
  const auto describe = [&](DirectoryScanner* scanner) {
    scanner->ParseAndGetMediaFileInfo(path.c_str());
  };
  EXPECT_TRUE(
      Logs("[DirectoryScanner::ParseAndGetMediaFileInfo] Memory Alocation failed. [", describe));
  EXPECT_TRUE(
      Logs("[DirectoryScanner::ParseAndGetMediaFileInfo] Media file [IMGA0001.JPG] parsing failed.",
           describe));
  MediaFileInfos::DestroyInstance();
}

}  // namespace
}  // namespace orx_test
