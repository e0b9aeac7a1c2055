// Texts that are SQL, given to every operation that takes a text: each changes what a harmless text
// changes in its place, or nothing.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DcfFileInfoVector.h"
#include "FileScanner/DirectoryScanner.h"
#include "FileScanner/MediaFileInfos.h"
#include "FileScanner/MultimediaQueryMgr.h"
#include "OSAL/ORXMemory.h"
#include "support/FakePlatform.h"
#include "support/JpegBuilder.h"
#include "support/Mp4Builder.h"
#include "support/RecordBuilder.h"
#include "support/TempDir.h"
#include "support/TestDatabase.h"

namespace {

using namespace orx_test;

const std::vector<std::string>& HostileTexts() {
  static const std::vector<std::string> texts = {
      "a\" or \"1\"=\"1",
      "a\"\"b",
      "x\"); drop table ObjectTable; --",
      "' or 1=1 --",
      "x'); delete from ImageTable; --",
      "FullPath",
      "ID",
      "1 or 1=1",
      "1; delete from ObjectTable",
      "ObjectTable; drop table ImageTable",
      "ObjectTable where 1=1; delete from ObjectTable",
      "%s%n%1000d",
      "one\ntwo",
      "\xFF\xFE\xC0\x80",
      std::string(60000, 'x') + "\" or 1=1 --",
  };
  return texts;
}
const char* const kHarmlessTexts[] = {"harmless", "999999"};

// A card that was registered, and the text that an operation is to be given.
struct Given {
  std::string text;
  std::string folder;     // of the card
  std::string picture;    // in the database
  std::string other;      // not in it, but on the card
  std::string directory;  // for databases
  std::string database;

  const char* t() const { return text.c_str(); }
};

void Release(char* text) { ORXMemory::Free(text); }

DataBaseMgr* Manager() { return DataBaseMgr::GetInstance(); }
DirectoryScanner* Scanner() { return DirectoryScanner::GetInstance(); }

// A record whose texts are all the given one.
std::unique_ptr<MediaMetaData> RecordOf(unsigned type, const Given& given) {
  RecordValues values = {};
  values.name = "hostile";
  values.text = given.text;
  return MakeRecord(type, values);
}

template <typename Write>
void WriteRecords(const Given& given, Write write) {
  for (const unsigned type : {0u, 1u, 2u, 3u}) write(RecordOf(type, given).get());
}

struct Operation {
  const char* name;  // "Class::Operation"
  void (*run)(const Given& given);
};

#define MANAGER(operation, ...)                      \
  {                                                  \
    "DataBaseMgr::" #operation, [](const Given& g) { \
      (void)g;                                       \
      Manager()->operation(__VA_ARGS__);             \
    }                                                \
  }
#define MANAGER_TEXT(operation, ...)                                                               \
  {                                                                                                \
    "DataBaseMgr::" #operation, [](const Given& g) { Release(Manager()->operation(__VA_ARGS__)); } \
  }
#define MANAGER_RECORDS(operation)                                                  \
  {                                                                                 \
    "DataBaseMgr::" #operation, [](const Given& g) {                                \
      WriteRecords(g, [](MediaMetaData* record) { Manager()->operation(record); }); \
    }                                                                               \
  }
#define MANAGER_RECORDS_AND_ID(operation)            \
  {                                                  \
    "DataBaseMgr::" #operation, [](const Given& g) { \
      WriteRecords(g, [&](MediaMetaData* record) {   \
        Manager()->operation(record, "2");           \
        Manager()->operation(record, g.t());         \
      });                                            \
    }                                                \
  }
#define SCANNER(operation, ...)                           \
  {                                                       \
    "DirectoryScanner::" #operation, [](const Given& g) { \
      (void)g;                                            \
      Scanner()->operation(__VA_ARGS__);                  \
    }                                                     \
  }
#define SCANNER_TEXT(operation, ...)                                       \
  {                                                                        \
    "DirectoryScanner::" #operation,                                       \
        [](const Given& g) { Release(Scanner()->operation(__VA_ARGS__)); } \
  }
#define SCANNER_RECORDS(operation)                                                  \
  {                                                                                 \
    "DirectoryScanner::" #operation, [](const Given& g) {                           \
      WriteRecords(g, [](MediaMetaData* record) { Scanner()->operation(record); }); \
    }                                                                               \
  }

void ListPaths(const Given& given, int (*list)(const char*, char***, int*)) {
  char** rows = nullptr;
  int count = 0;
  list(given.t(), &rows, &count);
  sqlite3_free_table(rows);
}

void ShareList(const Given& given, int mode) {
  std::string text = given.text, picture = given.picture;
  char* paths[] = {text.data(), picture.data(), nullptr};
  Manager()->UpdateShareStatus(paths, mode);
}

// A card whose platform shares files with the text for a folder, a name and an extension.
void ShareUris(const Given& given) {
  std::vector<SharedFile>& files = FakePlatform::Get().sharedFiles;
  files.clear();
  for (const std::string& uri :
       {"/mnt/mmc/DCIM/" + given.text + "/IMGA0001.JPG",
        "/mnt/mmc/DCIM/100PHOTO/" + given.text + ".JPG",
        "/mnt/mmc/DCIM/100PHOTO/IMGA0002.JPG" + given.text, "/mnt/mmc/" + given.text, given.text}) {
    files.emplace_back();
    files.back().uri = uri;
  }
}

int ignored = 0;
long long ignoredSize = 0;
char ignoredText[512];

// clang-format off
const Operation kOperations[] = {
    MANAGER(OpenDB, (g.directory + "/" + g.text).c_str()),
    MANAGER(CreateDbmsSystem, (g.directory + "/" + g.text).c_str()),
    MANAGER(CreateDB, (g.directory + "/" + g.text).c_str()),
    MANAGER(DropTable, g.t()),
    MANAGER(NeedToDeleteDB, g.t()),
    MANAGER(InsertDIRintoDB, g.t()),
    MANAGER_RECORDS(InsertMetaData), MANAGER_RECORDS(InsertMetaData2),
    MANAGER_RECORDS(InsertMediaContainer), MANAGER_RECORDS(InsertPhotoMetaData),
    MANAGER_RECORDS(InsertPhotoMetaData2), MANAGER_RECORDS(InsertAudioMetaData),
    MANAGER_RECORDS(InsertVideoMetaData),
    MANAGER_RECORDS_AND_ID(UpdateImageMetaData), MANAGER_RECORDS_AND_ID(UpdateAudioMetaData),
    MANAGER_RECORDS_AND_ID(UpdateVideoMetaData), MANAGER_RECORDS_AND_ID(UpdateDBForNewItem),
    MANAGER_RECORDS(InsertMetaDataToObjTable), MANAGER_RECORDS(InsertXQMediaInObjectTable),
    MANAGER_RECORDS(InsertAutoBackupMediaInObjectTable), MANAGER_RECORDS(InsertMediaInObjTbl),
    MANAGER(ValidateItemInDB, g.t()), MANAGER(IsInDB, g.t()), MANAGER(DeleteItemFromDB, g.t()),
    MANAGER(DeleteItemFromDBWithId, g.t()),
    {"DataBaseMgr::RemoveIdFromTables", [](const Given& g) {
       for (const int mediaClass : {0, 1, 2, 3, 4}) Manager()->RemoveIdFromTables(g.t(), mediaClass);
     }},
    MANAGER(RemoveIdFromObjectTable, g.t()), MANAGER(RemoveDIRfromObjTableInDB, g.t()),
    MANAGER(RemoveDIRfromDB, g.t(), &ignored),
    MANAGER_TEXT(GetImageElementForPathFromObjTable, g.t(), "FullPath"),
    MANAGER_TEXT(GetImageElementForPathFromObjTable, g.picture.c_str(), g.t()),
    MANAGER_TEXT(GetVideoElementForPathFromObjTable, g.t(), "FullPath"),
    MANAGER_TEXT(GetVideoElementForPathFromObjTable, g.picture.c_str(), g.t()),
    MANAGER_TEXT(GetClassElementForPath, g.t(), "FullPath"),
    MANAGER_TEXT(GetClassElementForPath, g.picture.c_str(), g.t()),
    MANAGER_TEXT(GetImageElementForPath, g.t(), "FullPath"),
    MANAGER_TEXT(GetImageElementForPath, g.picture.c_str(), g.t()),
    MANAGER_TEXT(GetVideoElementForPath, g.t(), "FullPath"),
    MANAGER_TEXT(GetVideoElementForPath, g.picture.c_str(), g.t()),
    MANAGER_TEXT(GetImageDLNAProfileForPath, g.t()), MANAGER_TEXT(GetAudioDLNAProfileForPath, g.t()),
    MANAGER_TEXT(GetVideoDLNAProfileForPath, g.t()), MANAGER_TEXT(GetClassForPath, g.t()),
    MANAGER_TEXT(GetParentIdForPath, g.t()), MANAGER_TEXT(GetUniqueIdForPath, g.t()),
    MANAGER_TEXT(GetTitleFromFullPath, g.t()),
    {"DataBaseMgr::GetArrayOfFullPathInDB", [](const Given& g) {
       ListPaths(g, [](const char* id, char*** rows, int* count) {
         return Manager()->GetArrayOfFullPathInDB(id, rows, count);
       });
     }},
    {"DataBaseMgr::UpdateShareStatus", [](const Given& g) { ShareList(g, 0); }},
    {"DataBaseMgr::UpdateShareStatus", [](const Given& g) { ShareList(g, 1); }},
    MANAGER(InvalidateAllItemsInDB, g.t()), MANAGER(DeleteInvalidItemsInDB, g.t()),
    MANAGER(deleteInvalidItemsInDBDcf, g.t()), MANAGER(deleteInvalidItemsFromAutoBackupDB, g.t()),
    MANAGER(deleteInvalidItemsInDBDcfVector, g.t()), MANAGER(DisplayTable, g.t()),
    {"MultimediaQueryMgr::ConnectDB", [](const Given& g) {
       MultimediaQueryMgr query;
       query.ConnectDB((g.directory + "/" + g.text).c_str());
       query.DisconnectDB();
     }},
    SCANNER(ScanDir, g.t(), g.database.c_str(), &ignored),
    SCANNER(ScanDir, g.folder.c_str(), (g.directory + "/" + g.text).c_str(), &ignored),
    SCANNER(_ScanDir, g.t(), "0", &ignored),
    SCANNER_TEXT(AddDirToDB, g.t(), "0"), SCANNER_TEXT(AddDirToDB, g.t(), g.t()),
    SCANNER_TEXT(AddDirToObjTableInDB, g.t(), "0"), SCANNER_TEXT(AddDirToObjTableInDB, g.t(), g.t()),
    SCANNER_TEXT(_GetDirPathFromFullPathMA, g.t()), SCANNER_TEXT(_GetFileNameFromFullPathMA, g.t()),
    SCANNER(_GetFullPathOfFile, ignoredText, g.folder.c_str(), g.t()),
    SCANNER(InvalidateAllItems, g.t()), SCANNER(DeleteInvalidItems, g.t()),
    SCANNER(deleteInvalidItemsDcf, g.t()), SCANNER(deleteInvalidItemsFromBackupDcf, g.t()),
    SCANNER(deleteInvalidItemsDcfInfo, g.t()), SCANNER(IsInDB, g.t()), SCANNER(ValidateItem, g.t()),
    SCANNER(RemoveDirFromDB, g.t(), &ignored), SCANNER(RemoveDirFromObjectTableinDB, g.t()),
    SCANNER_TEXT(GetDirUniqueId, g.t()),
    {"DirectoryScanner::GetArrayOfFullPath", [](const Given& g) {
       ListPaths(g, [](const char* id, char*** rows, int* count) {
         return Scanner()->GetArrayOfFullPath(id, rows, count);
       });
     }},
    SCANNER_RECORDS(InsertItem), SCANNER_RECORDS(InsertItem2),
    SCANNER_RECORDS(InsertItemInObjectTable),
    SCANNER(DeleteItem, g.t()), SCANNER(IsValid, g.t()),
    SCANNER(InvalidateDirectory, g.database.c_str(), g.t(), &ignored),
    SCANNER(HandleFile, g.t(), g.t(), g.t(), g.t()),
    SCANNER(HandleFile, g.folder.c_str(), g.t(), "IMGA0009.JPG", g.other.c_str()),
    SCANNER(HandleFile2, g.t(), g.t(), g.t(), g.t(), 0, 1, 1),
    SCANNER(HandleFile2, g.folder.c_str(), g.t(), "IMGA0009.JPG", g.other.c_str(), 0, 1, 1),
    SCANNER(HandleFileXQ, g.t(), g.t(), g.t(), g.t(), 0, 1, 1),
    SCANNER(HandleFileXQ, g.folder.c_str(), g.t(), "IMGA0009.JPG", g.other.c_str(), 0, 1, 1),
    SCANNER(HandleFileAutoBackup, g.t(), g.t(), g.t(), g.t(), 0, 1, 1),
    SCANNER(HandleFileAutoBackup, g.folder.c_str(), g.t(), "IMGA0009.JPG", g.other.c_str(), 0, 1, 1),
    SCANNER(ParseAndRegisterFile, g.database.c_str(), g.t(), nullptr),
    SCANNER(ParseAndRegisterFile, g.database.c_str(), g.other.c_str(), g.t()),
    {"DirectoryScanner::ParseAndGetFileInfo", [](const Given& g) {
       FreeMediaFileDisplayInfo(Scanner()->ParseAndGetFileInfo(g.t()));
     }},
    {"DirectoryScanner::ParseAndGetMediaFileInfo", [](const Given& g) {
       Scanner()->ParseAndGetMediaFileInfo(g.t());
       MediaFileInfos::DestroyInstance();
     }},
    SCANNER(__ExtractFileSizeAndDateFromName, g.t(), &ignoredSize, ignoredText),
    {"DirectoryScanner::__ExtractImageMetadata", [](const Given& g) {
       delete Scanner()->__ExtractImageMetadata(g.t());
     }},
    {"DirectoryScanner::__ExtractVideoMetadata", [](const Given& g) {
       delete Scanner()->__ExtractVideoMetadata(g.t());
     }},
    {"DirectoryScanner::SetDlnaProfiles", [](const Given& g) { Scanner()->SetDlnaProfiles(g.t()); }},
    SCANNER(_IsProfileSupported, g.t()),
    SCANNER(scanDcf, g.t(), g.database.c_str(), &ignored),
    SCANNER(scanXQDcf, g.t(), g.database.c_str(), &ignored),
    SCANNER(scanAutoBackupDcf, g.t(), g.database.c_str(), &ignored),
    {"DcfFileInfoVector::addToDCFInfoVector", [](const Given& g) {
       ShareUris(g);
       Scanner()->scanDcf(g.folder.c_str(), g.database.c_str(), &ignored);
     }},
    {"DataBaseMgr::addFileUriToTable", [](const Given& g) {
       ShareUris(g);
       Scanner()->scanXQDcf(g.folder.c_str(), g.database.c_str(), &ignored);
       Scanner()->scanAutoBackupDcf(g.folder.c_str(), g.database.c_str(), &ignored);
     }},
    SCANNER(_scanDirDcf, g.t(), g.t(), &ignored), SCANNER(_scanDirXQDcf, g.t(), g.t(), &ignored),
    SCANNER(_scanDirAutoBackupDcf, g.t(), g.t(), &ignored),
    SCANNER_TEXT(_handleDirDcf, g.t(), g.t()), SCANNER_TEXT(_handleDirXQDcf, g.t(), g.t()),
    SCANNER_TEXT(_handleDirAutoBackupDcf, g.t(), g.t()),
};
// clang-format on

// Operations that take a text and are not given hostile ones here.
const char* const kNotTested[] = {
    // take SQL, and only from the host
    "DataBaseMgr::ExecSqlStatmentNoValueReturn",
    "DataBaseMgr::ExecSqlStatment",
    "DataBaseMgr::ExecAndPrint",
    "MultimediaQueryMgr::ExecSqlStatmentNoValueReturn",
    "MultimediaQueryMgr::ExecSqlStatment",
    // only keep a pointer, or work on lists in memory
    "DataBaseMgr::setPszDbName",
    "DataBaseMgr::setPszDirectoryPath",
    "DataBaseMgr::supportFileCheck",
    "DataBaseMgr::duplicateFileCheck",
    "DirectoryScanner::IsInArray",
    "DirectoryScanner::CheckMediaFileForDLNAContent",
    "DirectoryScanner::__GetJPEGProfile",
};

bool EndsWith(const std::string& cell, const std::string& text) {
  return cell.size() >= text.size() &&
         cell.compare(cell.size() - text.size(), text.size(), text) == 0;
}

using Snapshot = std::vector<std::string>;

class SqlTextsTest : public testing::TestWithParam<int> {  // by sharing mode
 protected:
  SqlTextsTest() {
    FakePlatform::Reset().attributesFromDisk = true;
    Reset();
    FakePlatform::Get().sharingMode = GetParam();
    card_ = temp_.MakeDir("card");
    for (const char* name : {"IMGA0001.JPG", "IMGA0002.JPG", "IMGA0009.JPG"})
      temp_.Write(std::string("card/") + name, MakeJpeg());
    temp_.Write("card/MOVA0003.mp4", SmallFilm());
    MakeDatabase();
  }
  ~SqlTextsTest() override { Reset(); }

  static void Reset() {
    DirectoryScanner::DestroyInstance();
    DataBaseMgr::DestroyInstance();
    DcfFileInfoVector::DestroyInstance();
    FakePlatform::Get().log.clear();
    FakePlatform::Get().sharedFiles.clear();
  }

  void MakeDatabase() const {
    original_ = temp_.Path("original.db");
    ASSERT_EQ(Manager()->OpenDB(original_.c_str()), 1);
    for (const char* name : {"IMGA0001.JPG", "IMGA0002.JPG", "MOVA0003.mp4"}) {
      const auto record = MakeImageAt(card_ + "/" + name);
      record->SetDirectoryID("1");
      for (auto insert : {&DataBaseMgr::InsertMetaData, &DataBaseMgr::InsertXQMediaInObjectTable,
                          &DataBaseMgr::InsertAutoBackupMediaInObjectTable})
        if (Select(original_,
                   "select * from ObjectTable where FullPath='" + card_ + "/" + name + "'")
                .empty())
          (Manager()->*insert)(record.get());
    }
    Reset();
    ASSERT_GE(Select(original_, "select * from ObjectTable").size(), 3u);
  }

  // All rows but those with a cell that ends with the text and those of the files that operations
  // register, which the database does not have at first, and the tables.  Numbers in resource names
  // count on from test to test.
  Snapshot Others(const std::string& database, const std::string& text) const {
    static const std::regex kNumber("(/orx[a-z]*)[0-9]+");
    Snapshot snapshot;
    for (const auto& table :
         Select(database, "select name, sql from sqlite_master order by name")) {
      snapshot.push_back(table[0] + ": " + table[1]);
      if (table[1].find("TABLE") == std::string::npos &&
          table[1].find("table") == std::string::npos)
        continue;
      if (table[0].rfind("sqlite_", 0) == 0) continue;
      for (const auto& row : Select(database, "select * from " + table[0] + " order by rowid")) {
        if (std::any_of(row.begin(), row.end(), [&](const std::string& cell) {
              return EndsWith(cell, text) || cell == card_ + "/IMGA0009.JPG" ||
                     cell.rfind("/mnt/mmc", 0) == 0;
            }))
          continue;
        std::string line = table[0];
        for (const std::string& cell : row) line += "|" + std::regex_replace(cell, kNumber, "$1N");
        snapshot.push_back(line);
      }
    }
    return snapshot;
  }

  // The rest of the database after the operation, with a row that has the text for a path.
  Snapshot After(const Operation& operation, const std::string& text) const {
    const std::string database = temp_.Path("media.db");
    std::filesystem::copy_file(original_, database,
                               std::filesystem::copy_options::overwrite_existing);
    AddRowOf(database, text);
    before_ = Others(database, text);
    const std::string directory = temp_.MakeDir("databases");
    EXPECT_EQ(Manager()->OpenDB(database.c_str()), 1);
    sqlite3_exec(DataBaseMgr::ppDataBase, "pragma synchronous=off", nullptr, nullptr, nullptr);
    Scanner()->SetDlnaProfiles(pProfiles);
    operation.run(
        {text, card_, card_ + "/IMGA0001.JPG", card_ + "/IMGA0009.JPG", directory, database});
    Reset();
    std::filesystem::remove_all(directory);
    return Others(database, text);
  }

  static void AddRowOf(const std::string& database, const std::string& text) {
    sqlite3* connection = nullptr;
    sqlite3_stmt* statement = nullptr;
    ASSERT_EQ(sqlite3_open(database.c_str(), &connection), SQLITE_OK);
    const char* copyRow = "create temp table row as select * from ObjectTable limit 1";
    const char* addRow = "insert into ObjectTable select * from row";
    EXPECT_EQ(sqlite3_exec(connection, copyRow, nullptr, nullptr, nullptr), SQLITE_OK);
    ASSERT_EQ(sqlite3_prepare_v2(connection, "update row set ID=777, FullPath=?", -1, &statement,
                                 nullptr),
              SQLITE_OK)
        << sqlite3_errmsg(connection);
    sqlite3_bind_text(statement, 1, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
    EXPECT_EQ(sqlite3_step(statement), SQLITE_DONE) << sqlite3_errmsg(connection);
    sqlite3_finalize(statement);
    EXPECT_EQ(sqlite3_exec(connection, addRow, nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(connection);
    sqlite3_close(connection);
  }

  TempDir temp_;
  std::string card_;
  mutable std::string original_;
  mutable Snapshot before_;  // of the last After
};

std::string Lines(const Snapshot& snapshot) {
  std::string text;
  for (const std::string& line : snapshot) text += line.substr(0, 300) + "\n";
  return text;
}

TEST_P(SqlTextsTest, ChangeNoRowButTheirOwn) {
  for (const Operation& operation : kOperations) {
    std::vector<Snapshot> allowed;
    for (const char* harmless : kHarmlessTexts) allowed.push_back(After(operation, harmless));
    allowed.push_back(before_);
    for (const std::string& text : HostileTexts()) {
      const Snapshot after = After(operation, text);
      EXPECT_NE(std::find(allowed.begin(), allowed.end(), after), allowed.end())
          << operation.name << " with " << text.substr(0, 60) << " left\n"
          << Lines(after) << "and not\n"
          << Lines(allowed[0]);
    }
  }
}
INSTANTIATE_TEST_SUITE_P(SharingModes, SqlTextsTest, testing::Values(0, 6, 8),
                         testing::PrintToStringParamName());

// ---- the list is complete ----

std::string ContentOf(const std::filesystem::path& path) {
  std::ifstream file(path);
  std::stringstream content;
  content << file.rdbuf();
  return content.str();
}

std::string WithoutComments(const std::string& text) {
  return std::regex_replace(text, std::regex("//[^\n]*"), "");
}

// The operations that a class offers with a text or a record among their parameters.
std::set<std::string> TakersOfTexts(const std::string& header, const std::string& type) {
  const std::string text = WithoutComments(ContentOf(header));
  const size_t start = text.find("class ORX_API " + type);
  std::set<std::string> names;
  if (start == std::string::npos) return names;
  const std::string body = text.substr(start, text.find("\n private:", start) - start);
  const std::regex declaration("([A-Za-z_0-9]+)\\(([^()]*)\\)");
  for (std::sregex_iterator match(body.begin(), body.end(), declaration), end; match != end;
       ++match) {
    const std::string parameters = (*match)[2];
    for (const char* kind : {"char*", "TChar*", "std::string", "MediaMetaData*", "FileInfomation*"})
      if (parameters.find(kind) != std::string::npos) names.insert(type + "::" + (*match)[1].str());
  }
  return names;
}

TEST(SqlTexts, AreGivenToEveryOperationThatTakesTexts) {
  const std::filesystem::path folder = ORXSCAN_SOURCE_DIR "/SRC/FileScanner";
  if (!std::filesystem::exists(folder)) GTEST_SKIP() << "The sources are not at " << folder;
  std::set<std::string> listed(std::begin(kNotTested), std::end(kNotTested));
  for (const Operation& operation : kOperations) listed.insert(operation.name);
  for (const char* type : {"DataBaseMgr", "DirectoryScanner", "MultimediaQueryMgr"}) {
    const auto takers = TakersOfTexts((folder / (std::string(type) + ".h")).string(), type);
    EXPECT_FALSE(takers.empty()) << type;
    for (const std::string& name : takers) EXPECT_EQ(listed.count(name), 1u) << name;
  }
}

// Only these classes see the database; what other classes do with texts is no matter here.
TEST(SqlTexts, ReachTheDatabaseThroughThoseClassesAlone) {
  const std::filesystem::path sources = ORXSCAN_SOURCE_DIR "/SRC";
  if (!std::filesystem::exists(sources)) GTEST_SKIP() << "The sources are not at " << sources;
  const std::set<std::string> expected = {
      "DataBaseGuard", "DataBaseMgr",  "DataBaseSchema",     "DirectoryScanner", "LockWaiting",
      "SqlConnection", "SqlStatement", "MultimediaQueryMgr", "WriteTransaction"};
  const std::regex database(
      "#include [<\"](sqlite3|FileScanner/(DataBase[A-Za-z]*|Sql[A-Za-z]*))\\.h[>\"]");
  std::set<std::string> found;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(sources)) {
    if (!entry.is_regular_file()) continue;
    const std::string name = entry.path().stem().string();
    if (std::regex_search(ContentOf(entry.path()), database))
      found.insert(name.substr(0, name.find('_')));
  }
  EXPECT_EQ(found, expected);
}

}  // namespace
