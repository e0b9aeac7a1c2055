// The three scans of the shared files, end to end: a card, the platform's list, and the database.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "FileScanner/DataBaseMgr.h"
#include "FileScanner/DcfFileInfoVector.h"
#include "FileScanner/DirectoryScanner.h"
#include "OSAL/ORXMemory.h"
#include "support/CardMount.h"
#include "support/SharedFiles.h"
#include "support/TempDir.h"
#include "support/TestDatabase.h"

namespace {

using orx_test::CardMount;
using orx_test::Described;
using orx_test::Error;
using orx_test::FakePlatform;
using orx_test::Info;
using orx_test::LogLine;
using orx_test::Rows;
using orx_test::Shared;
using orx_test::SharedFile;
using orx_test::Timing;
using Lines = std::vector<std::string>;

constexpr char kRoot[] = "/mnt/mmc/DCIM";

struct Mode {
  const char* name;
  int sharingMode;
  void (DirectoryScanner::*scan)(const char*, const char*, int*);
  void (DirectoryScanner::*worker)(const char*, const char*, int*);
  char* (DirectoryScanner::*handleDirectory)(const char*, const char*);
  bool incremental;            // the list is kept from scan to scan
  bool registersMissingFiles;  // files are not opened, the platform's word counts
  bool removesTrees;           // a directory that is gone takes what is under it along

  size_t bannerLength;
  const char* banner;
  const char* openFailure;
  const char* listFailure;
  const char* beforePurge;
  const char* scanLabel;
  const char* cancelled1;
  const char* cancelled2;
};

void PrintTo(const Mode* mode, std::ostream* out) { *out << mode->name; }

const Mode kFull = {"Full",
                    0,
                    &DirectoryScanner::scanDcf,
                    &DirectoryScanner::_scanDirDcf,
                    &DirectoryScanner::_handleDirDcf,
                    false,
                    true,
                    true,
                    45,
                    "Scanning Directory is [%s], to db (%s) ",
                    "Error : OpenDB fail'",
                    "addFileUriToTable is error.. ",
                    "[DirectoryScanner::ScanDir] Before Invalidate'",
                    ">> scanDcf Time!! ",
                    "[DirectoryScanner::_scanDirDcf] ... bDirectoryScanCancelFlag 1",
                    "[DirectoryScanner::_scanDirDcf] ... bDirectoryScanCancelFlag 2"};

const Mode kObjectOnly = {"ObjectOnly",
                          8,
                          &DirectoryScanner::scanXQDcf,
                          &DirectoryScanner::_scanDirXQDcf,
                          &DirectoryScanner::_handleDirXQDcf,
                          true,
                          false,
                          false,
                          70,
                          "[DirectoryScanner::scanXQDcf]Scanning Directory is [%s], to db (%s) ",
                          "[DirectoryScanner::scanXQDcf]Error : OpenDB fail'",
                          "[DirectoryScanner::scanXQDcf] addToDCFInfoVector is error.. ",
                          "[DirectoryScanner::scanXQDcf] Before Invalidate'",
                          ">> scanDcf Time!! ",
                          "[ DirectoryScanner::_scanDirXQDcf] ... bDirectoryScanCancelFlag is set",
                          "[DirectoryScanner::_scanDirXQDcf] ... bDirectoryScanCancelFlag 2"};

const Mode kBackup = {"Backup",
                      6,
                      &DirectoryScanner::scanAutoBackupDcf,
                      &DirectoryScanner::_scanDirAutoBackupDcf,
                      &DirectoryScanner::_handleDirAutoBackupDcf,
                      false,
                      false,
                      true,
                      45,
                      "Scanning Directory for Autobackup is [%s], to db (%s) ",
                      "[DirectoryScanner::scanAutoBackupDcf]Error : OpenDB fail'",
                      "[DirectoryScanner::scanAutoBackupDcf]addFileUriToTable is error.. ",
                      "[DirectoryScanner::scanAutoBackupDcf] Before Invalidate'",
                      ">> _scanAutoBackupDcf Time!! ",
                      "[DirectoryScanner::_scanDirAutoBackupDcf] ... bDirectoryScanCancelFlag 1",
                      "[DirectoryScanner::_scanDirAutoBackupDcf] ... bDirectoryScanCancelFlag 2"};

FakePlatform& Platform() { return FakePlatform::Get(); }
DirectoryScanner* Scanner() { return DirectoryScanner::GetInstance(); }

// Called for every log line.
std::function<void(const LogLine&)> onLogLine;
void OnLog(const LogLine& line) {
  if (onLogLine) onLogLine(line);
}

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

void CancelWhenLogged(const std::string& part) {
  onLogLine = [part](const LogLine& line) {
    if (Contains(line.message, part)) Scanner()->CancelScanDirectory();
  };
}

// A text of the library's, released at the end.
struct Text {
  explicit Text(char* text) : text_(text) {}
  ~Text() { ORXMemory::Free(text_); }
  Text(const Text&) = delete;
  Text& operator=(const Text&) = delete;
  std::string Get() const { return text_ != nullptr ? text_ : "(null)"; }

 private:
  char* text_;
};

class CardTest {
 protected:
  static void BeginCard(const Mode& mode) {
    CardMount::Clear();
    onLogLine = nullptr;
    FakePlatform::Reset().sharingMode = mode.sharingMode;
    Platform().onLog = OnLog;
    Platform().attributesFromDisk = true;
    Platform().fileAttribute.nWidth = 1024;
    Platform().fileAttribute.nHeight = 768;
    std::string("2026-11-20").copy(Platform().fileAttribute.szDate, 10);
    std::string("2026-11-19").copy(Platform().videoAttribute.szDate, 10);
    NewScanner();
  }
  static void EndCard() {
    onLogLine = nullptr;
    DirectoryScanner::DestroyInstance();
    DataBaseMgr::DestroyInstance();
    DcfFileInfoVector::DestroyInstance();
  }
  static void NewScanner() {
    DirectoryScanner::DestroyInstance();
    Scanner()->SetDlnaProfiles(pProfiles);
  }

  // Puts the file of an entry on the card, dated 2026-11-21.
  static void Put(const SharedFile& file, const std::string& content = "picture") {
    CardMount::Write(file.uri.substr(14), content);
    timespec times[2] = {};
    times[0].tv_sec = times[1].tv_sec = 1795262400;  // noon, UTC
    utimensat(AT_FDCWD, file.uri.c_str(), times, 0);
  }
  static void PutAll(const std::vector<SharedFile>& files) {
    for (const SharedFile& file : files) Put(file);
  }
  // All of them listed and on the card.
  static void Share(const std::vector<SharedFile>& files) {
    Platform().sharedFiles = files;
    PutAll(files);
  }

  const std::string& db() const { return db_; }
  Rows Query(const std::string& sql) const { return orx_test::Select(db_, sql); }
  Rows Objects() const {
    return Query("select id, class, parentID, FullPath from ObjectTable order by id");
  }
  Lines Files() const {  // the paths below the root of all that is no directory, in id order
    Lines files;
    for (const auto& row : Query("select FullPath from ObjectTable where class != 0 order by id"))
      files.push_back(row[0].substr(sizeof kRoot));
    return files;
  }

 private:
  orx_test::TempDir directory_;
  std::string db_ = directory_.Path("media.db");
};

// The lines of the scan itself.
Lines ScanLog() {
  Lines lines;
  for (const LogLine& line : Platform().log)
    if (line.source == "DirectoryScanner_Dcf.cpp") lines.push_back(Described(line));
  return lines;
}

Lines ScanLogWithout(const Lines& tags) {
  Lines lines = ScanLog();
  lines.erase(std::remove_if(lines.begin(), lines.end(),
                             [&](const std::string& line) {
                               return std::any_of(
                                   tags.begin(), tags.end(),
                                   [&](const std::string& tag) { return Contains(line, tag); });
                             }),
              lines.end());
  return lines;
}

Lines operator+(Lines left, const Lines& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

class CardScanTest : public testing::TestWithParam<const Mode*>, protected CardTest {
 protected:
  void SetUp() override {
    if (!CardMount::Problem().empty()) GTEST_SKIP() << CardMount::Problem();
    BeginCard(mode());
  }
  void TearDown() override {
    if (CardMount::Problem().empty()) EndCard();
  }

  static const Mode& mode() { return *GetParam(); }

  // Scans and answers the status.
  int Scan() {
    Platform().log.clear();
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    int status = 0;
    (Scanner()->*mode().scan)(kRoot, db().c_str(), &status);
    errors_ = testing::internal::GetCapturedStderr();
    output_ = testing::internal::GetCapturedStdout();
    return status;
  }

  std::string BannerLine(const std::string& dir, const std::string& dbPath) const {
    std::string line = mode().banner;
    line.replace(line.find("%s"), 2, dir);
    return line.replace(line.find("%s"), 2, dbPath);
  }
  Lines Opening() const {
    const std::string row(mode().bannerLength, '=');
    return {Info(row), Info(BannerLine(kRoot, db())), Info(row)};
  }
  Lines Purge() const {
    return {Info(mode().beforePurge), Timing(">> Delete Time!! start"),
            Timing(">> Delete Time!! stop")};
  }
  Lines Walk(const Lines& between) const {
    return Lines{Timing(mode().scanLabel + std::string("start")),
                 Info("[DirectoryScanner::_scanDirDcf] Start Scanning Directories")} +
           between + Lines{Timing(mode().scanLabel + std::string("stop"))};
  }
  static std::string AddedText(int added, int listed) {
    return "[DirectoryScanner::_scanDirXQDcf] Add " + std::to_string(added) +
           " files to the DB , from " + std::to_string(listed) + " ";
  }
  // What the mode says at the end of a walk.
  Lines Added(int added, int listed) const {
    return mode().incremental ? Lines{Info(AddedText(added, listed))} : Lines{};
  }

  std::string errors_;  // what the last scan wrote
  std::string output_;
};

INSTANTIATE_TEST_SUITE_P(Modes, CardScanTest, testing::Values(&kFull, &kObjectOnly, &kBackup),
                         [](const auto& test) { return std::string(test.param->name); });

// Three pictures in two folders, the newest first.
std::vector<SharedFile> ThreePictures() { return {Shared(101, 3), Shared(100, 2), Shared(100, 1)}; }

const Rows kRowsOfThreePictures = {{"1", "0", "0", "/mnt/mmc/DCIM"},
                                   {"2", "0", "1", "/mnt/mmc/DCIM/100PHOTO"},
                                   {"3", "1", "2", "/mnt/mmc/DCIM/100PHOTO/IMGA0001.JPG"},
                                   {"4", "1", "2", "/mnt/mmc/DCIM/100PHOTO/IMGA0002.JPG"},
                                   {"5", "0", "1", "/mnt/mmc/DCIM/101PHOTO"},
                                   {"6", "1", "5", "/mnt/mmc/DCIM/101PHOTO/IMGA0003.JPG"}};

// ---- first and later scans ----

TEST_P(CardScanTest, FirstScanRegistersTheListedFilesUnderTheirFolders) {
  Share(ThreePictures());
  EXPECT_EQ(Scan(), 1);
  EXPECT_EQ(Objects(), kRowsOfThreePictures);
  EXPECT_EQ(ScanLog(), Opening() + Purge() + Walk(Added(3, 3)));
}

TEST_P(CardScanTest, DatabaseManagerIsGoneAfterAScan) {
  Share(ThreePictures());
  Scan();
  EXPECT_EQ(DataBaseMgr::mpThisInstance, nullptr);
  EXPECT_EQ(DataBaseMgr::ppDataBase, nullptr);
}

TEST_P(CardScanTest, OnlyTheIncrementalListOutlivesAScan) {
  Share(ThreePictures());
  Scan();
  EXPECT_EQ(DcfFileInfoVector::mpDcfFileInfoVectorInstance != nullptr, mode().incremental);
}

TEST_P(CardScanTest, ASecondScanFindsNothingNew) {
  Share(ThreePictures());
  Scan();
  EXPECT_EQ(Scan(), 0);
  EXPECT_EQ(Objects(), kRowsOfThreePictures);
  EXPECT_EQ(ScanLog(), Opening() + Purge() + Walk(Added(0, 3)));
}

TEST_P(CardScanTest, AddsTheFilesThatWereSharedSince) {
  Share(ThreePictures());
  Scan();
  std::vector<SharedFile> files = ThreePictures();
  files.insert(files.begin(), {Shared(102, 5), Shared(101, 4)});
  Share(files);
  EXPECT_EQ(Scan(), 1);
  EXPECT_EQ(Objects(), [] {
    Rows rows = kRowsOfThreePictures;
    rows.push_back({"7", "1", "5", "/mnt/mmc/DCIM/101PHOTO/IMGA0004.JPG"});
    rows.push_back({"8", "0", "1", "/mnt/mmc/DCIM/102PHOTO"});
    rows.push_back({"9", "1", "8", "/mnt/mmc/DCIM/102PHOTO/IMGA0005.JPG"});
    return rows;
  }());
  EXPECT_EQ(ScanLog(), Opening() + Purge() + Walk(Added(2, 5)));
}

TEST_P(CardScanTest, TakesOutTheFilesThatAreSharedNoLonger) {
  Share(ThreePictures());
  Scan();
  Platform().sharedFiles = {Shared(101, 3), Shared(100, 1)};
  DcfFileInfoVector::DestroyInstance();  // the platform begins a new list
  EXPECT_EQ(Scan(), 0);
  Rows expected = kRowsOfThreePictures;
  expected.erase(expected.begin() + 3);
  EXPECT_EQ(Objects(), expected);
}

TEST_P(CardScanTest, RegistersAFileAnewWhoseSizeChanged) {
  Share(ThreePictures());
  Scan();
  Put(Shared(100, 1), "another picture");
  EXPECT_EQ(Scan(), 1);
  EXPECT_EQ(Objects(), (Rows{{"1", "0", "0", "/mnt/mmc/DCIM"},
                             {"2", "0", "1", "/mnt/mmc/DCIM/100PHOTO"},
                             {"4", "1", "2", "/mnt/mmc/DCIM/100PHOTO/IMGA0002.JPG"},
                             {"5", "0", "1", "/mnt/mmc/DCIM/101PHOTO"},
                             {"6", "1", "5", "/mnt/mmc/DCIM/101PHOTO/IMGA0003.JPG"},
                             {"7", "1", "2", "/mnt/mmc/DCIM/100PHOTO/IMGA0001.JPG"}}));
}

TEST_P(CardScanTest, AFolderThatIsGoneAndSharedNoLongerLeavesTheDatabase) {
  Share(ThreePictures());
  Scan();
  CardMount::Remove("101PHOTO");
  Platform().sharedFiles = {Shared(100, 2), Shared(100, 1)};
  DcfFileInfoVector::DestroyInstance();
  EXPECT_EQ(Scan(), 0);
  Rows expected = kRowsOfThreePictures;
  expected.resize(4);
  EXPECT_EQ(Objects(), expected);
}

TEST_P(CardScanTest, FilesOfAListedFolderThatIsGoneAreHandedOnWithoutAParent) {
  Share(ThreePictures());
  CardMount::Remove("101PHOTO");
  EXPECT_EQ(Scan(), 1);
  Rows expected = kRowsOfThreePictures;
  expected.resize(4);
  if (mode().registersMissingFiles)
    expected.push_back({"5", "1", " ", "/mnt/mmc/DCIM/101PHOTO/IMGA0003.JPG"});
  EXPECT_EQ(Objects(), expected);
  EXPECT_EQ(ScanLog(),
            Opening() + Purge() +
                Walk(Lines{Info("_handleDirDcf : '/mnt/mmc/DCIM/101PHOTO' : Not Directory")} +
                     Added(2, 3)));
}

TEST_P(CardScanTest, AFileThatVanishedAfterItWasListedIsLeftToThePlatformsWord) {
  Share(ThreePictures());
  CardMount::Remove("100PHOTO/IMGA0002.JPG");
  EXPECT_EQ(Scan(), 1);
  Lines expected = {"100PHOTO/IMGA0001.JPG", "100PHOTO/IMGA0002.JPG", "101PHOTO/IMGA0003.JPG"};
  if (!mode().registersMissingFiles) expected.erase(expected.begin() + 1);
  EXPECT_EQ(Files(), expected);
}

TEST_P(CardScanTest, ARootThatIsGoneLeavesAnEmptyDatabase) {
  Share(ThreePictures());
  Scan();
  CardMount::Remove("");
  Scan();
  EXPECT_EQ(Objects(), Rows{});
  EXPECT_EQ(ScanLog(),
            Opening() + Purge() + Walk({Info("_scanDirDcf : '/mnt/mmc/DCIM' : Not Directory")}));
}

TEST_P(CardScanTest, AnEmptyListLeavesTheRootAlone) {
  EXPECT_EQ(Scan(), 1);
  EXPECT_EQ(Objects(), (Rows{{"1", "0", "0", "/mnt/mmc/DCIM"}}));
  EXPECT_EQ(ScanLog(), Opening() + Purge() + Walk({}));
  EXPECT_EQ(Scan(), 0);
}

TEST_P(CardScanTest, StatusIsNeverReset) {
  Share(ThreePictures());
  Scan();
  int status = 5;
  (Scanner()->*mode().scan)(kRoot, db().c_str(), &status);
  EXPECT_EQ(status, 5);
}

TEST_P(CardScanTest, StatusMayBeNull) {
  Share(ThreePictures());
  (Scanner()->*mode().scan)(kRoot, db().c_str(), nullptr);
  EXPECT_EQ(Objects(), kRowsOfThreePictures);
}

TEST_P(CardScanTest, AddedFilesAreReportedOnStandardOutputInTheIncrementalMode) {
  Share(ThreePictures());
  Scan();
  EXPECT_EQ(Contains(output_, AddedText(3, 3) + "\n"), mode().incremental) << output_;
  EXPECT_EQ(Contains(output_, "files to the DB"), mode().incremental);
  Scan();
  EXPECT_EQ(Contains(output_, AddedText(0, 3) + "\n"), mode().incremental) << output_;
}

TEST_P(CardScanTest, ListIsReadBeforeTheTransactionThatHoldsThePurgeAndTheWalk) {
  Share(ThreePictures());
  static Lines openAt;  // the timing lines that were written inside a transaction
  openAt.clear();
  onLogLine = [](const LogLine& line) {
    if (line.tag == "DLNA_TIME" && DataBaseMgr::ppDataBase != nullptr &&
        sqlite3_get_autocommit(DataBaseMgr::ppDataBase) == 0)
      openAt.push_back(Described(line));
  };
  Scan();
  ASSERT_FALSE(openAt.empty());
  EXPECT_EQ(openAt.front(), Timing(">> Delete Time!! start"));
  EXPECT_EQ(openAt.back(), Timing(mode().scanLabel + std::string("stop")));
}

TEST_P(CardScanTest, RootKeepsItsRowWhenTheWorkerIsCalledAgain) {
  Share(ThreePictures());
  Scan();
  EXPECT_EQ(Query("select count(*) from ObjectTable where FullPath = '/mnt/mmc/DCIM'")[0][0], "1");
  Scan();
  EXPECT_EQ(Query("select count(*) from ObjectTable where FullPath = '/mnt/mmc/DCIM'")[0][0], "1");
}

// ---- many files ----

TEST_P(CardScanTest, RegistersAThousandFilesOfAFullerCard) {
  std::vector<SharedFile> files;
  for (int i = 1200; i > 0; --i) files.push_back(Shared(100 + i / 500, i));
  Share(files);
  EXPECT_EQ(Scan(), 1);
  Lines expected;
  for (int i = 201; i <= 1200; ++i)
    expected.push_back(files[static_cast<size_t>(1200 - i)].uri.substr(14));
  EXPECT_EQ(Files(), expected);
  EXPECT_EQ(Query("select count(*) from ObjectTable where class = 0")[0][0], "4");
  EXPECT_EQ(Scan(), 0);
  EXPECT_EQ(Files(), expected);
}

TEST_P(CardScanTest, NewFilesPushTheOldestOutOfAFullList) {
  std::vector<SharedFile> files;
  for (int i = 1000; i > 0; --i) files.push_back(Shared(100, i));
  Share(files);
  Scan();
  files.insert(files.begin(), {Shared(101, 1002), Shared(101, 1001)});
  Share(files);
  EXPECT_EQ(Scan(), 1);
  Lines expected;
  for (int i = 3; i <= 1000; ++i) expected.push_back(Shared(100, i).uri.substr(14));
  expected.push_back("101PHOTO/IMGA1001.JPG");
  expected.push_back("101PHOTO/IMGA1002.JPG");
  EXPECT_EQ(Files(), expected);
}

// ---- failures ----

TEST_P(CardScanTest, ADatabaseThatCannotBeOpenedIsLoggedAndEndsTheScan) {
  Share(ThreePictures());
  const std::string nowhere = db() + "/not/there.db";
  testing::internal::CaptureStderr();
  int status = 0;
  (Scanner()->*mode().scan)(kRoot, nowhere.c_str(), &status);
  EXPECT_TRUE(Contains(testing::internal::GetCapturedStderr(), mode().openFailure));
  EXPECT_EQ(status, 0);
  const std::string row(mode().bannerLength, '=');
  EXPECT_EQ(ScanLog(), (Lines{Info(row), Info(BannerLine(kRoot, nowhere).substr(0, 247)), Info(row),
                              Error(mode().openFailure)}));
  EXPECT_EQ(DataBaseMgr::mpThisInstance, nullptr);
  EXPECT_EQ(DcfFileInfoVector::mpDcfFileInfoVectorInstance != nullptr, mode().incremental);
}

TEST_P(CardScanTest, AFailingPlatformEndsTheScanAtEveryIndex) {
  for (size_t bad = 0; bad < 3; ++bad)
    for (const bool null : {false, true}) {
      SCOPED_TRACE(std::to_string(bad) + (null ? " null" : " fails"));
      Share(ThreePictures());
      (null ? Platform().sharedFiles[bad].null : Platform().sharedFiles[bad].fails) = true;
      EXPECT_EQ(Scan(), 0);
      EXPECT_EQ(ScanLog(), Opening() + Lines{Info(mode().listFailure)});
      EXPECT_EQ(Objects(), Rows{});
      EXPECT_EQ(DataBaseMgr::mpThisInstance, nullptr);
      EXPECT_EQ(DcfFileInfoVector::mpDcfFileInfoVectorInstance, nullptr);
    }
}

TEST_P(CardScanTest, AFailedListLeavesTheDatabaseAsItWas) {
  Share(ThreePictures());
  Scan();
  std::vector<SharedFile> files = ThreePictures();
  files.insert(files.begin(), Shared(101, 4));
  Share(files);
  Platform().sharedFiles[0].fails = true;
  EXPECT_EQ(Scan(), 0);
  EXPECT_EQ(Objects(), kRowsOfThreePictures);
  Platform().sharedFiles[0].fails = false;
  EXPECT_EQ(Scan(), 1);
  EXPECT_EQ(Files().size(), 4u);
}

TEST_P(CardScanTest, NullPathsAreHarmless) {
  int status = 0;
  testing::internal::CaptureStderr();
  (Scanner()->*mode().scan)(nullptr, nullptr, &status);
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(ScanLog().back(), Error(mode().openFailure));

  Platform().log.clear();
  (Scanner()->*mode().scan)(nullptr, db().c_str(), &status);
  const std::string row(mode().bannerLength, '=');
  EXPECT_EQ(ScanLog(),
            (Lines{Info(row), Info(BannerLine("", db())), Info(row)} + Purge() + Walk({})));
  EXPECT_EQ(status, 0);
  EXPECT_EQ(Objects(), Rows{});
}

TEST_P(CardScanTest, PercentSignsInPathsArePlainText) {
  int status = 0;
  (Scanner()->*mode().scan)("/mnt/%s%n%d", db().c_str(), &status);
  EXPECT_TRUE(Platform().Logged("_scanDirDcf : '/mnt/%s%n%d' : Not Directory"));
}

// ---- cancels ----

TEST_P(CardScanTest, ACancelBeforeTheScanKeepsTheWorkerFromRunning) {
  Share(ThreePictures());
  Scanner()->CancelScanDirectory();
  EXPECT_EQ(Scan(), 0);
  EXPECT_EQ(Objects(), Rows{});
  EXPECT_EQ(ScanLog(), Opening() + Purge());
  EXPECT_EQ(DataBaseMgr::mpThisInstance, nullptr);
}

TEST_P(CardScanTest, ACancelledScanStillPurges) {
  Share(ThreePictures());
  Scan();
  CardMount::Remove("101PHOTO");
  CardMount::Remove("100PHOTO/IMGA0001.JPG");
  Scanner()->CancelScanDirectory();
  EXPECT_EQ(Scan(), 0);
  EXPECT_EQ(Objects(),
            (Rows{kRowsOfThreePictures[0], kRowsOfThreePictures[1], kRowsOfThreePictures[3]}));
}

TEST_P(CardScanTest, ACancelStaysUntilTheScannerIsDestroyed) {
  Share(ThreePictures());
  Scanner()->CancelScanDirectory();
  Scan();
  EXPECT_EQ(Scan(), 0);
  EXPECT_EQ(Objects(), Rows{});
  NewScanner();
  EXPECT_EQ(Scan(), 1);
  EXPECT_EQ(Objects(), kRowsOfThreePictures);
}

TEST_P(CardScanTest, ACancelDuringThePurgeKeepsTheWorkerFromRunning) {
  Share(ThreePictures());
  CancelWhenLogged(">> Delete Time!! stop");
  EXPECT_EQ(Scan(), 0);
  EXPECT_EQ(Objects(), Rows{});
}

TEST_P(CardScanTest, ACancelBeforeTheFirstFolderLeavesTheRootsRow) {
  Share(ThreePictures());
  CancelWhenLogged("Start Scanning Directories");
  EXPECT_EQ(Scan(), 1);
  EXPECT_EQ(Objects(), (Rows{kRowsOfThreePictures[0]}));
  EXPECT_EQ(ScanLog(), Opening() + Purge() + Walk(Lines{Info(mode().cancelled1)} + Added(0, 3)));
}

TEST_P(CardScanTest, ACancelAtAFolderRegistersNoneOfItsFiles) {
  Share(ThreePictures());
  CardMount::Remove("100PHOTO");
  CancelWhenLogged("_handleDirDcf");
  EXPECT_EQ(Scan(), 1);
  EXPECT_EQ(Objects(), (Rows{kRowsOfThreePictures[0]}));
  EXPECT_EQ(ScanLog(),
            Opening() + Purge() +
                Walk(Lines{Info("_handleDirDcf : '/mnt/mmc/DCIM/100PHOTO' : Not Directory"),
                           Info(mode().cancelled2), Info(mode().cancelled1)} +
                     Added(0, 3)));
}

TEST_P(CardScanTest, ACancelAtTheLastFolderIsLoggedOnce) {
  Share(ThreePictures());
  CardMount::Remove("101PHOTO");
  CancelWhenLogged("_handleDirDcf");
  EXPECT_EQ(Scan(), 1);
  Rows expected = kRowsOfThreePictures;
  expected.resize(4);
  EXPECT_EQ(Objects(), expected);
  EXPECT_EQ(ScanLogWithout({"Not Directory"}),
            Opening() + Purge() + Walk(Lines{Info(mode().cancelled2)} + Added(2, 3)));
}

TEST_P(CardScanTest, ACancelAtAnyFileKeepsWhatWasRegistered) {
  // The file at which the cancel comes is missing, so that every mode has something to log.
  const std::vector<SharedFile> files = {Shared(101, 5), Shared(101, 4), Shared(100, 3),
                                         Shared(100, 2), Shared(100, 1)};
  for (size_t at = 1; at <= files.size(); ++at) {
    SCOPED_TRACE(at);
    EndCard();
    std::filesystem::remove(db());
    BeginCard(mode());
    Share(files);
    const std::string missing = files[files.size() - at].uri;
    CardMount::Remove(missing.substr(14));
    CancelWhenLogged(missing);
    EXPECT_EQ(Scan(), 1);

    Lines expected;
    for (size_t i = 1; i <= at; ++i)
      if (i < at || mode().registersMissingFiles)
        expected.push_back(files[files.size() - i].uri.substr(14));
    EXPECT_EQ(Files(), expected);

    Lines messages;
    if (at < files.size()) messages.push_back(Info(mode().cancelled2));
    if (at <= 3) messages.push_back(Info(mode().cancelled1));  // another folder follows
    EXPECT_EQ(ScanLog(),
              Opening() + Purge() + Walk(messages + Added(static_cast<int>(expected.size()), 5)));
    NewScanner();
    onLogLine = nullptr;
    PutAll(files);
    EXPECT_EQ(Scan(), 1);
    EXPECT_EQ(Files().size(), files.size());
  }
}

TEST_P(CardScanTest, ACancelOfTheListIsAListFailure) {
  Share(ThreePictures());
  onLogLine = [](const LogLine& line) {
    if (!Contains(line.message, "FILE_URI start")) return;
    DataBaseMgr::GetInstance()->CancelInvalidateAllItems();
    DcfFileInfoVector::GetInstance()->CancelInvalidateAllItems();
  };
  EXPECT_EQ(Scan(), 0);
  EXPECT_EQ(ScanLog(), Opening() + Lines{Info(mode().listFailure)});
  onLogLine = nullptr;
  DcfFileInfoVector::DestroyInstance();
  EXPECT_EQ(Scan(), 1);
  EXPECT_EQ(Objects(), kRowsOfThreePictures);
}

// ---- the worker ----

class CardWorkerTest : public CardScanTest {
 protected:
  // Opens the database and fills the mode's list.
  void Open() {
    testing::internal::CaptureStdout();
    ASSERT_EQ(DataBaseMgr::GetInstance()->OpenDB(db().c_str()), 1);
    FillList();
    testing::internal::GetCapturedStdout();
    Platform().log.clear();
  }
  void FillList() {
    ASSERT_EQ(mode().incremental ? DcfFileInfoVector::GetInstance()->addToDCFInfoVector()
                                 : DataBaseMgr::GetInstance()->addFileUriToTable(),
              1);
  }
  int Work(const char* dir, const char* parentId = nullptr) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    int status = 0;
    (Scanner()->*mode().worker)(dir, parentId, &status);
    testing::internal::GetCapturedStderr();
    testing::internal::GetCapturedStdout();
    return status;
  }
  std::string& ListedDirectoryName(int index) {
    return mode().incremental ? DcfFileInfoVector::GetInstance()->getDirNameVectorAt(index)
                              : DataBaseMgr::GetInstance()->getDirNameVectorAt(index);
  }
  std::string Handle(const char* path, const char* parentId) {
    testing::internal::CaptureStderr();
    const Text id((Scanner()->*mode().handleDirectory)(path, parentId));
    testing::internal::GetCapturedStderr();
    return id.Get();
  }
};

INSTANTIATE_TEST_SUITE_P(Modes, CardWorkerTest, testing::Values(&kFull, &kObjectOnly, &kBackup),
                         [](const auto& test) { return std::string(test.param->name); });

TEST_P(CardWorkerTest, ANullDirectoryOnlyLogsTheStart) {
  Open();
  EXPECT_EQ(Work(nullptr), 0);
  EXPECT_EQ(ScanLog(), (Lines{Info("[DirectoryScanner::_scanDirDcf] Start Scanning Directories")}));
}

TEST_P(CardWorkerTest, RootHangsUnderTheParentItIsGiven) {
  Open();
  EXPECT_EQ(Work(kRoot, "77"), 1);
  EXPECT_EQ(Objects(), (Rows{{"1", "0", "77", "/mnt/mmc/DCIM"}}));
}

TEST_P(CardWorkerTest, FilesListedOutOfFolderOrderAreSkipped) {
  Share(ThreePictures());
  Open();
  ListedDirectoryName(0) = "101PHOTO";
  ListedDirectoryName(1) = "100PHOTO";
  EXPECT_EQ(Work(kRoot), 1);
  EXPECT_EQ(Files(), (Lines{"100PHOTO/IMGA0001.JPG", "100PHOTO/IMGA0002.JPG"}));
}

TEST_P(CardWorkerTest, AFolderThatComesTwiceInTheListKeepsItsRow) {
  Share({Shared(100, 3), Shared(101, 2), Shared(100, 1)});
  Open();
  EXPECT_EQ(Work(kRoot), 1);
  EXPECT_EQ(Files(),
            (Lines{"100PHOTO/IMGA0001.JPG", "101PHOTO/IMGA0002.JPG", "100PHOTO/IMGA0003.JPG"}));
  EXPECT_EQ(Query("select count(*) from ObjectTable where class = 0")[0][0], "3");
}

TEST_P(CardWorkerTest, AFileThatIsListedAgainIsKnown) {
  Share(ThreePictures());
  Open();
  if (!mode().incremental) FillList();  // every file twice
  Platform().log.clear();
  EXPECT_EQ(Work(kRoot), 1);
  EXPECT_EQ(Objects(), kRowsOfThreePictures);
  EXPECT_EQ(Work(kRoot), 0);
  EXPECT_EQ(Objects(), kRowsOfThreePictures);
}

TEST_P(CardWorkerTest, AnEntryWithoutAFolderNameHoldsUpThoseBehindIt) {
  Share(ThreePictures());
  Platform().sharedFiles.push_back(SharedFile());
  Platform().sharedFiles.back().uri = "short";
  Open();
  EXPECT_EQ(Work(kRoot), 1);
  EXPECT_EQ(Files(), Lines{});
  EXPECT_EQ(Query("select FullPath from ObjectTable order by id"),
            (Rows{{"/mnt/mmc/DCIM"}, {"/mnt/mmc/DCIM/100PHOTO"}, {"/mnt/mmc/DCIM/101PHOTO"}}));
}

TEST_P(CardWorkerTest, ARootPathOf510CharactersIsScannedAndALongerOneIsNot) {
  Share(ThreePictures());
  Open();
  orx_test::TempDir deep;
  std::string path = deep.path();
  while (path.size() < 510)
    path += "/" + std::string(std::min<size_t>(200, 509 - path.size()), 'd');
  ASSERT_EQ(path.size(), 510u);
  std::filesystem::create_directories(path);
  EXPECT_EQ(Work(path.c_str()), 1);
  EXPECT_EQ(Files().size(), 3u);

  path += "d";
  std::filesystem::create_directories(path);
  Platform().log.clear();
  EXPECT_EQ(Work(path.c_str()), 1);
  EXPECT_EQ(ScanLog(), (Lines{Info("[DirectoryScanner::_scanDirDcf] Start Scanning Directories"),
                              Info("\nDirectory path is too big.")}));
  EXPECT_EQ(Query("select count(*) from ObjectTable where FullPath = '" + path + "'")[0][0], "1");
  EXPECT_EQ(Files().size(), 3u);
}

TEST_P(CardWorkerTest, ARootThatIsGoneLosesItsRow) {
  Open();
  const std::string gone = db() + ".gone";
  const Text id(mode().sharingMode == 0 ? Scanner()->AddDirToDB(gone.c_str(), "0")
                                        : Scanner()->AddDirToObjTableInDB(gone.c_str(), "0"));
  ASSERT_EQ(Objects().size(), 1u);
  EXPECT_EQ(Work(gone.c_str()), mode().removesTrees ? 1 : 0);
  EXPECT_EQ(Objects(), Rows{});
  EXPECT_EQ(ScanLog(), (Lines{Info("[DirectoryScanner::_scanDirDcf] Start Scanning Directories"),
                              Info("_scanDirDcf : '" + gone + "' : Not Directory")}));
  EXPECT_EQ(Platform().Logged("[DataBaseMgr::RemoveDIRfromObjTableInDB] Removing " + gone +
                              " directory from DB"),
            !mode().removesTrees);
}

// ---- one folder ----

TEST_P(CardWorkerTest, AFolderIsAddedOnceAndFoundAgain) {
  Open();
  CardMount::Write("100PHOTO/IMGA0001.JPG", "picture");
  EXPECT_EQ(Handle("/mnt/mmc/DCIM/100PHOTO", "9"), "1");
  EXPECT_EQ(Handle("/mnt/mmc/DCIM/100PHOTO", "8"), "1");
  EXPECT_EQ(Objects(), (Rows{{"1", "0", "9", "/mnt/mmc/DCIM/100PHOTO"}}));
  EXPECT_EQ(Handle("/mnt/mmc/DCIM", nullptr), "2");
  EXPECT_EQ(Objects().back(), (std::vector<std::string>{"2", "0", "0", "/mnt/mmc/DCIM"}));
  EXPECT_EQ(ScanLog(), Lines{});
}

TEST_P(CardWorkerTest, ANullFolderHasNoId) {
  Open();
  EXPECT_EQ(Handle(nullptr, "1"), "(null)");
  EXPECT_EQ(Platform().log.size(), 0u);
}

TEST_P(CardWorkerTest, AFolderThatIsGoneLosesItsRowAndInSomeModesWhatIsUnderIt) {
  Share(ThreePictures());
  Open();
  Work(kRoot);
  CardMount::Remove("100PHOTO");
  Platform().log.clear();
  EXPECT_EQ(Handle("/mnt/mmc/DCIM/100PHOTO", "1"), "(null)");
  EXPECT_EQ(ScanLog(), (Lines{Info("_handleDirDcf : '/mnt/mmc/DCIM/100PHOTO' : Not Directory")}));
  Rows expected = kRowsOfThreePictures;
  if (mode().removesTrees)
    expected.erase(expected.begin() + 1, expected.begin() + 4);
  else
    expected.erase(expected.begin() + 1);
  EXPECT_EQ(Objects(), expected);
}

TEST_P(CardWorkerTest, AFileIsNoFolder) {
  Open();
  CardMount::Write("100PHOTO", "a file");
  EXPECT_EQ(Handle("/mnt/mmc/DCIM/100PHOTO", "1"), "(null)");
}

// A folder that may be entered but not listed has no id, and its files no parent.
TEST_P(CardWorkerTest, FilesOfAFolderThatCannotBeListedAreRegisteredOnce) {
  if (getuid() != 0) GTEST_SKIP() << "only root can become a user who may not list a folder";
  Share({Shared(100, 1)});
  ASSERT_EQ(chmod("/mnt/mmc/DCIM/100PHOTO", 0711), 0);
  Open();
  constexpr uid_t kNobody = 65534;
  const std::string folder = std::filesystem::path(db()).parent_path();
  if (chown(folder.c_str(), kNobody, 0) != 0 || chown(db().c_str(), kNobody, 0) != 0 ||
      seteuid(kNobody) != 0)
    GTEST_SKIP() << "this namespace has no user who may not list a folder";
  const int first = Work(kRoot);
  const int second = Work(kRoot);
  ASSERT_EQ(seteuid(0), 0);
  EXPECT_EQ(first, 1);
  EXPECT_EQ(second, 0);
  EXPECT_EQ(Objects(), (Rows{{"1", "0", "0", "/mnt/mmc/DCIM"},
                             {"2", "1", " ", "/mnt/mmc/DCIM/100PHOTO/IMGA0001.JPG"}}));
}

// ---- against a model of its own, over sequences of scans ----

// The database as sequences of scans should leave it.
struct CardModel {
  struct Row {
    int id;
    int mediaClass;
    std::string parent, path;
    uintmax_t size;
    int number;
  };
  struct Entry {
    std::string path;  // below the mount
    int number;
  };

  bool registersMissingFiles;
  std::vector<Row> rows;  // in id order

  void Scan(const Lines& directories, const std::vector<Entry>& entries) {
    Purge(entries);
    const std::string root = Container(kRoot, "0");
    size_t next = 0;
    for (const std::string& name : directories) {
      const std::string path = std::string(kRoot) + "/" + name;
      const std::string id =
          std::filesystem::is_directory(path) ? Container(path, root) : std::string(" ");
      Lines known;
      for (const Row& row : rows)
        if (row.parent == id) known.push_back(row.path);
      for (; next < entries.size() && entries[next].path.substr(6, 8) == name; ++next) {
        const std::string file = "/mnt/mmc" + entries[next].path;
        const bool there = std::filesystem::exists(file);
        if (std::count(known.begin(), known.end(), file) != 0) continue;
        if (there || registersMissingFiles)
          Add(1, id, file, there ? std::filesystem::file_size(file) : 0, entries[next].number);
      }
    }
  }

  Rows Objects() const {
    Rows all;
    for (const Row& row : rows)
      all.push_back({std::to_string(row.id), std::to_string(row.mediaClass), row.parent, row.path});
    return all;
  }

 private:
  void Purge(const std::vector<Entry>& entries) {
    rows.erase(std::remove_if(rows.begin(), rows.end(),
                              [&](const Row& row) {
                                if (row.mediaClass == 0)
                                  return !std::filesystem::is_directory(row.path);
                                const bool listed = std::any_of(
                                    entries.begin(), entries.end(),
                                    [&](const Entry& entry) { return entry.number == row.number; });
                                return !listed || !std::filesystem::exists(row.path) ||
                                       std::filesystem::file_size(row.path) != row.size;
                              }),
               rows.end());
  }
  std::string Container(const std::string& path, const std::string& parent) {
    for (const Row& row : rows)
      if (row.path == path) return std::to_string(row.id);
    return Add(0, parent, path, 0, 0);
  }
  std::string Add(int mediaClass, const std::string& parent, const std::string& path,
                  uintmax_t size, int number) {
    const int id = rows.empty() ? 1 : rows.back().id + 1;
    rows.push_back({id, mediaClass, parent, path, size, number});
    return std::to_string(id);
  }
};

class CardModelTest : public CardScanTest {
 protected:
  int Pick(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }
  bool OneIn(int n) { return Pick(1, n) == 1; }
  SharedFile& AnyOf(std::vector<SharedFile>* files) {
    return (*files)[static_cast<size_t>(Pick(0, static_cast<int>(files->size()) - 1))];
  }

  // Photographs, unsharing, deletions and edits between two scans.
  void ChangeCard(std::vector<SharedFile>* files) {
    for (int i = Pick(0, 6); i > 0; --i) {
      ++number_;
      files->insert(files->begin(), Shared(100 + number_ / 7, number_));
      Put(files->front());
    }
    if (files->empty()) return;
    if (OneIn(2)) files->erase(files->begin() + Pick(0, static_cast<int>(files->size()) - 1));
    if (files->empty()) return;
    if (OneIn(2)) Put(AnyOf(files), std::string(static_cast<size_t>(Pick(0, 20)), 'x'));
    if (OneIn(3)) CardMount::Remove(AnyOf(files).uri.substr(14));
    if (OneIn(6)) CardMount::Remove(AnyOf(files).uri.substr(14, 8));
    if (OneIn(3)) PutAll(*files);
  }

  // The list that the next scan works with, and its directory names.
  void ExpectedList(std::vector<CardModel::Entry>* entries, Lines* directories) {
    if (mode().incremental) {
      DcfFileInfoVector* list = DcfFileInfoVector::GetInstance();
      EXPECT_EQ(list->addToDCFInfoVector(), 1);  // the scan itself then finds nothing new
      for (int i = 0; i < list->getFilePathVectorSize(); ++i)
        entries->push_back({list->getFilePathVectorAt(i), list->getDirFileNumVectorAt(i)});
      for (int i = 0; i < list->getDirNameVectorSize(); ++i)
        directories->push_back(list->getDirNameVectorAt(i));
      return;
    }
    const std::vector<SharedFile>& files = Platform().sharedFiles;
    for (auto file = files.rbegin(); file != files.rend(); ++file) {
      const std::string name = file->uri.substr(14, 8);
      entries->push_back({file->uri.substr(8), std::stoi(file->uri.substr(14, 3)) * 10000 +
                                                   std::stoi(file->uri.substr(27, 4))});
      if (directories->empty() || directories->back() != name) directories->push_back(name);
    }
  }

  std::mt19937 random_;
  int number_ = 0;
};

INSTANTIATE_TEST_SUITE_P(Modes, CardModelTest, testing::Values(&kFull, &kObjectOnly, &kBackup),
                         [](const auto& test) { return std::string(test.param->name); });

TEST_P(CardModelTest, LeavesTheRowsThatTheModelExpects) {
  for (unsigned seed = 1; seed <= 25 && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    random_.seed(seed);
    number_ = 0;
    EndCard();
    std::filesystem::remove(db());
    BeginCard(mode());
    CardModel model{mode().registersMissingFiles, {}};
    std::vector<SharedFile> files;
    for (int scan = 0; scan < 8 && !HasFailure(); ++scan) {
      SCOPED_TRACE("scan " + std::to_string(scan));
      ChangeCard(&files);
      Platform().sharedFiles = files;
      std::vector<CardModel::Entry> entries;
      Lines directories;
      ExpectedList(&entries, &directories);
      if (OneIn(5)) NewScanner();
      Scan();
      model.Scan(directories, entries);
      EXPECT_EQ(Objects(), model.Objects());
    }
  }
}

// ---- what the rows hold, mode by mode ----

class OneModeTest : public testing::Test, protected CardTest {
 protected:
  void SetUp() override {
    if (!CardMount::Problem().empty()) GTEST_SKIP() << CardMount::Problem();
  }
  void TearDown() override {
    if (CardMount::Problem().empty()) EndCard();
  }
  int Scan(const Mode& mode) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    int status = 0;
    (Scanner()->*mode.scan)(kRoot, db().c_str(), &status);
    testing::internal::GetCapturedStderr();
    testing::internal::GetCapturedStdout();
    return status;
  }
};

using FullScanTest = OneModeTest;
using ObjectOnlyScanTest = OneModeTest;
using BackupScanTest = OneModeTest;

TEST_F(FullScanTest, WritesObjectAndMediaRows) {
  BeginCard(kFull);
  Share({Shared(101, 2, ".MP4", 2), Shared(100, 1)});
  Put(Shared(101, 2, ".MP4"), "a film");
  Platform().videoAttribute.nDuration = 5000;
  EXPECT_EQ(Scan(kFull), 1);
  EXPECT_EQ(
      Query("select id, class, date, parentID, FullPath, Valid, BackupID, IsBackup from "
            "ObjectTable order by id"),
      (Rows{{"1", "0", "17Nov2008", "0", "/mnt/mmc/DCIM", "0", "0", "0"},
            {"2", "0", "17Nov2008", "1", "/mnt/mmc/DCIM/100PHOTO", "0", "0", "0"},
            {"3", "1", "2026-11-20", "2", "/mnt/mmc/DCIM/100PHOTO/IMGA0001.JPG", "0", "0", "0"},
            {"4", "0", "17Nov2008", "1", "/mnt/mmc/DCIM/101PHOTO", "0", "0", "0"},
            {"5", "3", "2026-11-19", "4", "/mnt/mmc/DCIM/101PHOTO/IMGA0002.MP4", "0", "0", "0"}}));
  EXPECT_EQ(Query("select count(*) from ContainerTable")[0][0], "0");  // its insert always fails
  EXPECT_EQ(
      Query("select id, Title, class, date, size, FullPath, MimeType, DLNAProfile, Height, Width, "
            "Share, SortIndex from ImageTable"),
      (Rows{{"3", "IMGA0001", "1", "2026-11-20", "7", "/mnt/mmc/DCIM/100PHOTO/IMGA0001.JPG",
             "image/jpeg", "*", "768", "1024", "1", "1000001"}}));
  EXPECT_EQ(Query("select id, Title, class, date, size, FullPath, MimeType, Duration, Share, "
                  "SortIndex from VideoTable"),
            (Rows{{"5", "IMGA0002", "3", "2026-11-19", "6", "/mnt/mmc/DCIM/101PHOTO/IMGA0002.MP4",
                   "video/mp4", "5000", "1", "1010002"}}));
  EXPECT_EQ(Query("select count(*) from AudioTable")[0][0], "0");
}

TEST_F(FullScanTest, ResourceNamesEndWithTheSortNumberAndTheExtension) {
  BeginCard(kFull);
  Share({Shared(100, 1)});
  Scan(kFull);
  const std::string uri = Query("select uri from ImageTable").at(0).at(0);
  EXPECT_EQ(uri.substr(0, 4), "/orx");
  EXPECT_EQ(uri.substr(uri.size() - 11), "1000001.JPG");
}

TEST_F(FullScanTest, TakesMediaRowsOutWithTheirObjects) {
  BeginCard(kFull);
  Share({Shared(100, 3, ".MP4", 2), Shared(100, 2), Shared(100, 1)});
  Scan(kFull);
  EXPECT_EQ(Query("select count(*) from ImageTable")[0][0], "2");
  EXPECT_EQ(Query("select count(*) from VideoTable")[0][0], "1");
  Platform().sharedFiles = {Shared(100, 2)};
  EXPECT_EQ(Scan(kFull), 0);
  EXPECT_EQ(Query("select FullPath from ImageTable"),
            (Rows{{"/mnt/mmc/DCIM/100PHOTO/IMGA0002.JPG"}}));
  EXPECT_EQ(Query("select count(*) from VideoTable")[0][0], "0");
  EXPECT_EQ(Files(), (Lines{"100PHOTO/IMGA0002.JPG"}));
}

TEST_F(FullScanTest, SharesThePhotosAmongTheThousandNewestFiles) {
  BeginCard(kFull);
  Platform().sharingMode = 2;
  std::vector<SharedFile> files;
  Lines expected;
  for (int i = 1500; i > 0; --i) {
    const bool film = i % 37 == 0;
    files.push_back(Shared(100 + i / 400, i, film ? ".MP4" : ".JPG", film ? 3 : 1));
    if (!film && i > 500) expected.push_back(files.back().uri.substr(14));
  }
  std::reverse(expected.begin(), expected.end());
  Share(files);
  EXPECT_EQ(Scan(kFull), 1);
  EXPECT_EQ(Files(), expected);
  EXPECT_EQ(Query("select count(*) from ImageTable")[0][0], std::to_string(expected.size()));
  EXPECT_EQ(Scan(kFull), 0);
}

TEST_F(ObjectOnlyScanTest, WritesTheObjectTableAlone) {
  BeginCard(kObjectOnly);
  Share({Shared(100, 1)});
  EXPECT_EQ(Scan(kObjectOnly), 1);
  EXPECT_EQ(Query("select name from sqlite_master where type = 'table'"), (Rows{{"ObjectTable"}}));
  EXPECT_EQ(Query("select id, Title, class, date, size, parentID, FullPath, Height, Width, "
                  "VideoFrameRate, VideoBitrate, SortIndex from ObjectTable order by id"),
            (Rows{{"1", " ", "0", "17Nov2008", "0", "0", "/mnt/mmc/DCIM", "0", "0", "0", "0", " "},
                  {"2", " ", "0", "17Nov2008", "0", "1", "/mnt/mmc/DCIM/100PHOTO", "0", "0", "0",
                   "0", " "},
                  {"3", "IMGA0001", "1", "2026-11-21", "7", "2",
                   "/mnt/mmc/DCIM/100PHOTO/IMGA0001.JPG", "0", "0", "0", "0", "1000001"}}));
}

TEST_F(ObjectOnlyScanTest, GivesExactlyAThousandPicturesOfACardWithFilmsStrewnIn) {
  BeginCard(kObjectOnly);
  std::vector<SharedFile> files;
  Lines expected;
  for (int i = 1500; i > 0; --i) {
    const bool film = i % 40 == 1;
    files.push_back(Shared(100, i, film ? ".MP4" : ".JPG", film ? 2 : 1));
  }
  Share(files);
  EXPECT_EQ(Scan(kObjectOnly), 1);

  // The thousand newest files hold 25 films, so 25 older files follow, and so on; the first range
  // is in the database first.
  DcfFileInfoVector* list = DcfFileInfoVector::GetInstance();
  ASSERT_EQ(list->getFilePathVectorSize(), 1000);
  for (int i = 0; i < list->getFilePathVectorSize(); ++i)
    expected.push_back(list->getFilePathVectorAt(i).substr(6));
  EXPECT_EQ(Files(), expected);
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(std::unique(expected.begin(), expected.end()), expected.end());
  EXPECT_EQ(std::count_if(expected.begin(), expected.end(),
                          [](const std::string& path) { return Contains(path, ".MP4"); }),
            0);
  EXPECT_EQ(expected.back(), "100PHOTO/IMGA1500.JPG");
  EXPECT_EQ(Scan(kObjectOnly), 0);
  EXPECT_EQ(Files().size(), 1000u);
}

TEST_F(ObjectOnlyScanTest, LaterScansReadTheNewIndexesAlone) {
  BeginCard(kObjectOnly);
  Share(ThreePictures());
  Scan(kObjectOnly);
  static std::vector<int> read;
  read.clear();
  Platform().onUri = [](int index) { read.push_back(index); };
  std::vector<SharedFile> files = ThreePictures();
  files.insert(files.begin(), Shared(101, 4));
  Share(files);
  EXPECT_EQ(Scan(kObjectOnly), 1);
  EXPECT_EQ(read, (std::vector<int>{0}));
  EXPECT_EQ(Files().size(), 4u);
  Platform().onUri = nullptr;
}

TEST_F(ObjectOnlyScanTest, PassesOverKindsThatItDoesNotKnow) {
  BeginCard(kObjectOnly);
  Share({Shared(100, 3, ".PNG"), Shared(100, 2, ""), Shared(100, 1)});
  EXPECT_EQ(Scan(kObjectOnly), 1);
  EXPECT_EQ(Files(), (Lines{"100PHOTO/IMGA0001.JPG"}));
  EXPECT_TRUE(
      Platform().Logged("[DirectoryScanner::_scanDirXQDcf] Add 1 files to the DB , from 3 "));
}

TEST_F(BackupScanTest, WritesTheObjectTableAloneWithCompanions) {
  BeginCard(kBackup);
  Share({Shared(100, 2, ".MP4", 2), Shared(100, 1, ".JPG", 5)});
  Put(Shared(100, 1, ".KRZ"), "raw picture");
  EXPECT_EQ(Scan(kBackup), 1);
  EXPECT_EQ(Query("select name from sqlite_master where type = 'table'"), (Rows{{"ObjectTable"}}));
  EXPECT_EQ(
      Query("select id, Title, class, date, size, parentID, FullPath, MimeType, SortIndex, Valid, "
            "BackupID, IsBackup from ObjectTable order by id"),
      (Rows{
          {"1", " ", "0", "17Nov2008", "0", "0", "/mnt/mmc/DCIM", " ", " ", "0", "0", "0"},
          {"2", " ", "0", "17Nov2008", "0", "1", "/mnt/mmc/DCIM/100PHOTO", " ", " ", "0", "0", "0"},
          {"3", "IMGA0001", "1", "2026-11-21", "7", "2", "/mnt/mmc/DCIM/100PHOTO/IMGA0001.JPG",
           "image/jpeg", "1000001", "0", "0", "0"},
          {"4", "IMGA0001", "1", "2026-11-21", "11", "2", "/mnt/mmc/DCIM/100PHOTO/IMGA0001.KRZ",
           "image/jpeg", "1000001", "0", "0", "0"},
          {"5", "IMGA0002", "3", "2026-11-21", "7", "2", "/mnt/mmc/DCIM/100PHOTO/IMGA0002.MP4",
           "video/mp4", "1000002", "0", "0", "0"}}));
  EXPECT_EQ(Scan(kBackup), 0);
}

}  // namespace
