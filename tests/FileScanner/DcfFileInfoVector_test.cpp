#include "FileScanner/DcfFileInfoVector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/SharedListTest.h"

namespace {

using orx_test::DescribedLog;
using orx_test::Draws;
using orx_test::Error;
using orx_test::Info;
using orx_test::kWalkCancelled;
using orx_test::Script;
using orx_test::Shared;
using orx_test::SharedFile;
using orx_test::SharedRun;
using orx_test::Timing;

constexpr char kNoNewFiles[] =
    "[DcfFileInfoVector::addToDCFInfoVector] !!! No New Files added  !!!";
std::string TotalLine(int size) {
  return Info("[DcfFileInfoVector::addToDCFInfoVector] Total Files in DCF Vector = " +
              std::to_string(size) + " ");
}

std::string RemoveLine(int excess) {
  return Info("[DcfFileInfoVector::addToDCFInfoVector] 1000 pics over, Remove " +
              std::to_string(excess) + " from DCF Vector if already vector exists ");
}

using DcfFileInfoVectorTest = orx_test::SharedListTest<DcfFileInfoVector>;

// ---- first filling ----

TEST_F(DcfFileInfoVectorTest, StartsEmpty) {
  EXPECT_FALSE(List()->bListExisted);
  EXPECT_EQ(List()->nNewFilesAdded, 0u);
  EXPECT_FALSE(List()->bCancelFlag);
  EXPECT_EQ(List()->nTotalCnt, 0);
  EXPECT_EQ(List()->nCumulativeAdded, 0u);
  EXPECT_EQ(List()->getDirNumVectorSize(), 0);
  EXPECT_EQ(List()->getDirFileNumVectorSize(), 0);
  EXPECT_EQ(List()->getFileTypeVectorSize(), 0);
  EXPECT_EQ(List()->getDcfIndexVectorSize(), 0);
  EXPECT_EQ(List()->getDirNameVectorSize(), 0);
  EXPECT_EQ(List()->getFilePathVectorSize(), 0);
}

TEST_F(DcfFileInfoVectorTest, IsOneInstanceUntilItIsDestroyed) {
  DcfFileInfoVector* first = List();
  EXPECT_EQ(first, List());
  EXPECT_EQ(first, DcfFileInfoVector::mpDcfFileInfoVectorInstance);
  DcfFileInfoVector::DestroyInstance();
  EXPECT_EQ(DcfFileInfoVector::mpDcfFileInfoVectorInstance, nullptr);
  DcfFileInfoVector::DestroyInstance();
  EXPECT_EQ(DcfFileInfoVector::mpDcfFileInfoVectorInstance, nullptr);
}

TEST_F(DcfFileInfoVectorTest, FirstFillingReadsFromTheHighestIndexDown) {
  Platform().sharedFiles = {Shared(101, 7), Shared(101, 6, ".MP4"), Shared(100, 5)};
  EXPECT_EQ(Add(), 1);
  EXPECT_EQ(indexesRead, (std::vector<int>{2, 1, 0}));
  EXPECT_EQ(Indexes(), (std::vector<int>{2, 1, 0}));
  EXPECT_EQ(SortNumbers(), (std::vector<int>{1000005, 1010006, 1010007}));
  EXPECT_EQ(Types(), (std::vector<int>{0, 0, 0}));
  EXPECT_EQ(DirNames(), (std::vector<std::string>{"100PHOTO", "101PHOTO"}));
  EXPECT_EQ(Paths(),
            (std::vector<std::string>{"/DCIM/100PHOTO/IMGA0005.JPG", "/DCIM/101PHOTO/IMGA0006.MP4",
                                      "/DCIM/101PHOTO/IMGA0007.JPG"}));
  EXPECT_FALSE(List()->bListExisted);
  EXPECT_EQ(List()->nNewFilesAdded, 3u);
  EXPECT_EQ(List()->nTotalCnt, 3);
  EXPECT_EQ(List()->nCumulativeAdded, 3u);
  EXPECT_EQ(List()->getDirNumVectorSize(), 0);
  EXPECT_EQ(DescribedLog(), (std::vector<std::string>{Timing(">>>> FILE_URI start"), TotalLine(3),
                                                      Timing(">>>> FILE_URI stop")}));
}

TEST_F(DcfFileInfoVectorTest, FirstFillingOf1000FilesReadsThemAll) {
  Platform().sharedFiles = SharedRun(1000);
  EXPECT_EQ(Add(), 1);
  EXPECT_EQ(indexesRead, Down(999, 0));
  EXPECT_EQ(List()->nNewFilesAdded, 1000u);
  EXPECT_EQ(DescribedLog(),
            (std::vector<std::string>{
                Timing(">>>> FILE_URI start"),
                Info("===>Exit Form Loop <=== \ndcfindex = 0, vDirFileNum= 1001000,  exception "
                     "count = 0, total files = 1000, NewFilesadded = 1000"),
                TotalLine(1000), Timing(">>>> FILE_URI stop")}));
}

TEST_F(DcfFileInfoVectorTest, FirstFillingOf1500FilesReadsTheNewest1000) {
  Platform().sharedFiles = SharedRun(1500);
  EXPECT_EQ(Add(), 1);
  EXPECT_EQ(indexesRead, Down(999, 0));
  EXPECT_EQ(Indexes(), Down(999, 0));
  EXPECT_EQ(List()->nTotalCnt, 1500);
  EXPECT_EQ(DescribedLog(),
            (std::vector<std::string>{
                Timing(">>>> FILE_URI start"),
                Info("===>Exit Form Loop <=== \ndcfindex = 0, vDirFileNum= 1001500,  exception "
                     "count = 0, total files = 1500, NewFilesadded = 1000"),
                TotalLine(1000), RemoveLine(0), Timing(">>>> FILE_URI stop")}));
}

TEST_F(DcfFileInfoVectorTest, AppendsADirectoryNameForEveryRunOfFiles) {
  Platform().sharedFiles = {Shared(100, 1), Shared(101, 2), Shared(101, 3), Shared(100, 4)};
  Add();
  EXPECT_EQ(DirNames(), (std::vector<std::string>{"100PHOTO", "101PHOTO", "100PHOTO"}));
}

// ---- unchanged, grown and shrunk lists ----

TEST_F(DcfFileInfoVectorTest, ReadsNothingWhenTheCountIsUnchanged) {
  Platform().sharedFiles = SharedRun(3);
  Add();
  Platform().sharedFiles[0] = Shared(105, 1);
  EXPECT_EQ(Add(), 1);
  EXPECT_TRUE(indexesRead.empty());
  EXPECT_TRUE(List()->bListExisted);
  EXPECT_EQ(List()->nNewFilesAdded, 0u);
  EXPECT_EQ(List()->nTotalCnt, 3);
  EXPECT_EQ(List()->nCumulativeAdded, 3u);
  EXPECT_EQ(Indexes(), Down(2, 0));
  EXPECT_EQ(DescribedLog(),
            (std::vector<std::string>{Timing(">>>> FILE_URI start"), Info(kNoNewFiles)}));
}

TEST_F(DcfFileInfoVectorTest, AnEmptyListAtFirstCountsAsUnchanged) {
  EXPECT_EQ(Add(), 1);
  EXPECT_TRUE(List()->bListExisted);
  EXPECT_EQ(DescribedLog(),
            (std::vector<std::string>{Timing(">>>> FILE_URI start"), Info(kNoNewFiles)}));
}

TEST_F(DcfFileInfoVectorTest, UpdateAppendsTheNewFilesBehindTheOldOnes) {
  Platform().sharedFiles = {Shared(100, 2), Shared(100, 1)};
  Add();
  Platform().sharedFiles = {Shared(101, 4), Shared(100, 3), Shared(100, 2), Shared(100, 1)};
  EXPECT_EQ(Add(), 1);
  EXPECT_EQ(indexesRead, (std::vector<int>{1, 0}));
  EXPECT_EQ(SortNumbers(), (std::vector<int>{1000001, 1000002, 1000003, 1010004}));
  EXPECT_EQ(Indexes(), (std::vector<int>{1, 0, 1, 0}));
  EXPECT_EQ(DirNames(), (std::vector<std::string>{"100PHOTO", "101PHOTO"}));
  EXPECT_TRUE(List()->bListExisted);
  EXPECT_EQ(List()->nNewFilesAdded, 2u);
  EXPECT_EQ(List()->nCumulativeAdded, 4u);
  EXPECT_EQ(List()->nTotalCnt, 4);
}

TEST_F(DcfFileInfoVectorTest, UpdateOfAFullListDropsTheOldestEntries) {
  Platform().sharedFiles = SharedRun(1000);
  Add();
  Platform().sharedFiles = SharedRun(1020);
  EXPECT_EQ(Add(), 1);
  EXPECT_EQ(indexesRead, Down(19, 0));
  const std::vector<int> numbers = SortNumbers();
  ASSERT_EQ(numbers.size(), 1000u);
  EXPECT_EQ(numbers.front(), 1000021);
  EXPECT_EQ(numbers.back(), 1001020);
  EXPECT_EQ(Indexes().front(), 979);
  EXPECT_EQ(Types().size(), 1000u);
  EXPECT_EQ(Paths().front(), "/DCIM/100PHOTO/IMGA0021.JPG");
  EXPECT_EQ(Paths().size(), 1000u);
  EXPECT_EQ(DescribedLog(),
            (std::vector<std::string>{Timing(">>>> FILE_URI start"), TotalLine(1020),
                                      RemoveLine(20), Timing(">>>> FILE_URI stop")}));
}

TEST_F(DcfFileInfoVectorTest, DroppingOldEntriesKeepsTheirDirectoryNames) {
  Platform().sharedFiles = SharedRun(999);
  Platform().sharedFiles.push_back(Shared(99, 1));
  Add();
  ASSERT_EQ(DirNames(), (std::vector<std::string>{"099PHOTO", "100PHOTO"}));
  Platform().sharedFiles.insert(Platform().sharedFiles.begin(), Shared(100, 1000));
  Add();
  EXPECT_EQ(Paths().front(), "/DCIM/100PHOTO/IMGA0001.JPG");
  EXPECT_EQ(DirNames(), (std::vector<std::string>{"099PHOTO", "100PHOTO"}));
}

TEST_F(DcfFileInfoVectorTest, ACountThatWentDownReadsNothingAndIsAdopted) {
  Platform().sharedFiles = SharedRun(5);
  Add();
  Platform().sharedFiles = SharedRun(3);
  EXPECT_EQ(Add(), 1);
  EXPECT_TRUE(indexesRead.empty());
  EXPECT_TRUE(List()->bListExisted);
  EXPECT_EQ(List()->nTotalCnt, 3);
  EXPECT_EQ(List()->nNewFilesAdded, 0u);
  EXPECT_EQ(List()->getDcfIndexVectorSize(), 5);
  EXPECT_EQ(DescribedLog(), (std::vector<std::string>{Timing(">>>> FILE_URI start"), TotalLine(5),
                                                      Timing(">>>> FILE_URI stop")}));
}

TEST_F(DcfFileInfoVectorTest, AShrinkingCountIsNotHeldUpByACancel) {
  Platform().sharedFiles = SharedRun(5);
  Add();
  Platform().sharedFiles = SharedRun(3);
  List()->CancelInvalidateAllItems();
  EXPECT_EQ(Add(), 1);
  EXPECT_EQ(List()->nTotalCnt, 3);
}

// ---- files that photo sharing refuses ----

TEST_F(DcfFileInfoVectorTest, PhotoSharingPassesOverOtherFilesAndCountsThem) {
  Platform().sharingMode = 2;
  Platform().sharedFiles = {Shared(100, 5),         Shared(100, 4, ".MP4"), Shared(100, 3, ".KRZ"),
                            Shared(100, 2, ".MPO"), Shared(100, 1, ".AVI"), Shared(100, 0, ".PNG")};
  EXPECT_EQ(Add(), 1);
  EXPECT_EQ(Indexes(), (std::vector<int>{5, 0}));
  EXPECT_EQ(Types(), (std::vector<int>{1, 1}));
  EXPECT_EQ(List()->nNewFilesAdded, 2u);
  EXPECT_EQ(List()->nTotalCnt, 6);
  EXPECT_EQ(DescribedLog(),
            (std::vector<std::string>{
                Timing(">>>> FILE_URI start"), Info(" Total UnSupport File = 1 "),
                Info(" Total UnSupport File = 2 "), Info(" Total UnSupport File = 3 "),
                Info(" Total UnSupport File = 4 "), TotalLine(2), Timing(">>>> FILE_URI stop")}));
}

TEST_F(DcfFileInfoVectorTest, TheNextUpdateCountsFromThePlatformsTotalNotFromTheEntries) {
  Platform().sharingMode = 8;
  Platform().sharedFiles = {Shared(100, 2, ".MP4"), Shared(100, 1)};
  Add();
  Platform().sharedFiles.insert(Platform().sharedFiles.begin(), Shared(100, 3));
  Add();
  EXPECT_EQ(indexesRead, (std::vector<int>{0}));
  EXPECT_EQ(SortNumbers(), (std::vector<int>{1000001, 1000003}));
}

TEST_F(DcfFileInfoVectorTest, OtherModesTakeEveryFileWithoutAType) {
  for (const int mode : {0, 1, 3, 6, 9}) {
    SCOPED_TRACE(mode);
    DcfFileInfoVector::DestroyInstance();
    Platform().sharingMode = mode;
    Platform().sharedFiles = {Shared(100, 3, ".MP4", 2), Shared(100, 2, ".KRZ", 4),
                              Shared(100, 1, ".JPG", 7)};
    EXPECT_EQ(Add(), 1);
    EXPECT_EQ(Indexes(), (std::vector<int>{2, 1, 0}));
    EXPECT_EQ(Types(), (std::vector<int>{0, 0, 0}));
  }
}

TEST_F(DcfFileInfoVectorTest, OlderFilesMakeUpForThoseThatWerePassedOver) {
  Platform().sharingMode = 2;
  Platform().sharedFiles = SharedRun(1500);
  for (int i = 0; i < 10; ++i) {
    const size_t index = static_cast<size_t>(i * 97);
    Platform().sharedFiles[index] = Shared(100, 1500 - i * 97, ".MP4");
  }
  EXPECT_EQ(Add(), 1);
  std::vector<int> expected = Down(999, 0);
  for (int i = 1009; i >= 1000; --i) expected.push_back(i);
  EXPECT_EQ(indexesRead, expected);
  EXPECT_EQ(List()->getDcfIndexVectorSize(), 1000);
  EXPECT_EQ(List()->nNewFilesAdded, 1000u);
  EXPECT_EQ(Indexes().back(), 1000);
  EXPECT_TRUE(
      Platform().Logged("===>Exit Form Loop <=== \ndcfindex = 1000, vDirFileNum= 1000500,  "
                        "exception count = 0, total files = 1500, NewFilesadded = 1000"));
}

TEST_F(DcfFileInfoVectorTest, FilesPassedOverInAWidenedRangeWidenItAgainFromASharedResumeMark) {
  Platform().sharingMode = 2;
  Platform().sharedFiles = SharedRun(1500);
  Platform().sharedFiles[3] = Shared(100, 3, ".MP4");
  Platform().sharedFiles[4] = Shared(100, 4, ".MP4");
  Platform().sharedFiles[1001] = Shared(100, 5, ".MP4");
  EXPECT_EQ(Add(), 1);
  std::vector<int> expected = Down(999, 0);
  expected.insert(expected.end(), {1001, 1000, 1002});
  EXPECT_EQ(indexesRead, expected);
  EXPECT_EQ(List()->getDcfIndexVectorSize(), 1000);
}

TEST_F(DcfFileInfoVectorTest, AFilePassedOverAtTheResumeMarkLetsTheWalkReadTheFirstRangeAgain) {
  Platform().sharingMode = 2;
  Platform().sharedFiles = SharedRun(1500);
  Platform().sharedFiles[3] = Shared(100, 3, ".MP4");
  Platform().sharedFiles[4] = Shared(100, 4, ".MP4");
  Platform().sharedFiles[1000] = Shared(100, 5, ".MP4");
  EXPECT_EQ(Add(), 1);
  std::vector<int> expected = Down(999, 0);
  expected.insert(expected.end(), {1001, 1000, 999});
  EXPECT_EQ(indexesRead, expected);
  EXPECT_EQ(Indexes().back(), 999);
  EXPECT_EQ(List()->getDcfIndexVectorSize(), 1000);
}

TEST_F(DcfFileInfoVectorTest, ARangeThatReachesTheOldestFileIsNotWidened) {
  Platform().sharingMode = 2;
  Platform().sharedFiles = SharedRun(1002);
  for (size_t i = 0; i < 5; ++i)
    Platform().sharedFiles[i] = Shared(100, static_cast<int>(1002 - i), ".MP4");
  EXPECT_EQ(Add(), 1);
  // 995 from the first range, two older ones, and, as nothing was passed over among those, the
  // first range's beginning until the list is full.
  std::vector<int> expected = Down(999, 0);
  expected.insert(expected.end(), {1001, 1000, 999, 998, 997});
  EXPECT_EQ(indexesRead, expected);
  EXPECT_EQ(List()->getDcfIndexVectorSize(), 1000);
}

TEST_F(DcfFileInfoVectorTest, EndsAtIndexZeroOnceTheWholeListWasRead) {
  Platform().sharingMode = 2;
  Platform().sharedFiles = SharedRun(1100, ".MP4");
  Platform().sharedFiles[0] = Shared(101, 1);
  EXPECT_EQ(Add(), 1);
  std::vector<int> expected = Down(999, 0);
  for (const int i : Down(1099, 0)) expected.push_back(i);
  EXPECT_EQ(indexesRead, expected);
  EXPECT_EQ(SortNumbers(), (std::vector<int>{1010001, 1010001}));
  EXPECT_TRUE(Platform().Logged(
      "[DcfFileInfoVector::addToDCFInfoVector] <<<< BREAK >>>>> \n nNewFilesAdded = 2 , nTotalCnt "
      "= 1100, nIndexToStart = 1099 "));
}

TEST_F(DcfFileInfoVectorTest, DoesNotWidenWhenEarlierCallsFilledTheList) {
  Platform().sharedFiles = SharedRun(1000);
  Add();
  Platform().sharingMode = 2;
  Platform().sharedFiles = SharedRun(1003);
  Platform().sharedFiles[2] = Shared(100, 1001, ".MP4");
  EXPECT_EQ(Add(), 1);
  EXPECT_EQ(indexesRead, (std::vector<int>{2, 1, 0}));
  EXPECT_EQ(List()->nNewFilesAdded, 2u);
  EXPECT_EQ(DescribedLog(),
            (std::vector<std::string>{
                Timing(">>>> FILE_URI start"), Info(" Total UnSupport File = 1 "),
                Info("[DcfFileInfoVector::addToDCFInfoVector] <<<< BREAK >>>>> \n nNewFilesAdded = "
                     "2 , nTotalCnt = 1003, nIndexToStart = 2 "),
                TotalLine(1002), RemoveLine(2), Timing(">>>> FILE_URI stop")}));
}

TEST_F(DcfFileInfoVectorTest, AListWithin1000FilesIsNeverWidened) {
  Platform().sharingMode = 2;
  Platform().sharedFiles = SharedRun(1000);
  Platform().sharedFiles[0] = Shared(100, 1000, ".MP4");
  EXPECT_EQ(Add(), 1);
  EXPECT_EQ(indexesRead, Down(999, 0));
  EXPECT_EQ(List()->getDcfIndexVectorSize(), 999);
}

TEST_F(DcfFileInfoVectorTest, AModeThatChangesDuringTheWalkCountsFromTheNextFileOn) {
  Platform().sharedFiles = {Shared(100, 3), Shared(100, 2, ".MP4"), Shared(100, 1, ".MP4")};
  Forget();
  script.modeChangeAt = 1;
  script.newMode = 2;
  EXPECT_EQ(List()->addToDCFInfoVector(), 1);
  EXPECT_EQ(Indexes(), (std::vector<int>{2, 0}));
  EXPECT_EQ(Types(), (std::vector<int>{0, 1}));
}

// ---- failures and cancels ----

TEST_F(DcfFileInfoVectorTest, AFailingPlatformEndsTheCallAtEveryIndex) {
  for (size_t bad = 0; bad < 4; ++bad) {
    SCOPED_TRACE(bad);
    DcfFileInfoVector::DestroyInstance();
    Platform().sharedFiles = SharedRun(4);
    Platform().sharedFiles[bad].fails = true;
    EXPECT_EQ(Add(), 0);
    EXPECT_EQ(List()->nTotalCnt, 0);
    EXPECT_EQ(List()->nCumulativeAdded, 0u);
    EXPECT_EQ(List()->getDcfIndexVectorSize(), static_cast<int>(3 - bad));
    EXPECT_EQ(DescribedLog(),
              (std::vector<std::string>{Timing(">>>> FILE_URI start"),
                                        Error("Error : getURIFromIndex res = -7")}));
  }
}

TEST_F(DcfFileInfoVectorTest, ANullUriEndsTheCallAtEveryIndex) {
  for (size_t bad = 0; bad < 4; ++bad) {
    SCOPED_TRACE(bad);
    DcfFileInfoVector::DestroyInstance();
    Platform().sharedFiles = SharedRun(4);
    Platform().sharedFiles[bad].null = true;
    EXPECT_EQ(Add(), 0);
    EXPECT_EQ(List()->nTotalCnt, 0);
    EXPECT_EQ(List()->getDcfIndexVectorSize(), static_cast<int>(3 - bad));
    EXPECT_EQ(DescribedLog(), (std::vector<std::string>{Timing(">>>> FILE_URI start"),
                                                        Error("Error : szURI is NULL !!!")}));
  }
}

TEST_F(DcfFileInfoVectorTest, ACancelDuringAnyIndexTakesEffectAfterIt) {
  for (int at = 0; at < 4; ++at) {
    SCOPED_TRACE(at);
    DcfFileInfoVector::DestroyInstance();
    Platform().sharedFiles = SharedRun(4);
    Forget();
    script.cancelAt = at;
    const bool last = at == 3;  // nothing is left to cancel
    EXPECT_EQ(List()->addToDCFInfoVector(), last ? 1 : 0);
    EXPECT_EQ(List()->nTotalCnt, last ? 4 : 0);
    EXPECT_EQ(List()->getDcfIndexVectorSize(), at + 1);
    EXPECT_EQ(Platform().CountLogged(kWalkCancelled), last ? 0 : 1);
  }
}

TEST_F(DcfFileInfoVectorTest, ACancelBeforeTheCallReadsNothing) {
  Platform().sharedFiles = SharedRun(4);
  List()->CancelInvalidateAllItems();
  EXPECT_EQ(Add(), 0);
  EXPECT_TRUE(indexesRead.empty());
  EXPECT_EQ(List()->nTotalCnt, 0);
  EXPECT_EQ(DescribedLog(),
            (std::vector<std::string>{Timing(">>>> FILE_URI start"), Info(kWalkCancelled)}));
}

TEST_F(DcfFileInfoVectorTest, ACancelStaysUntilTheInstanceIsDestroyed) {
  Platform().sharedFiles = SharedRun(2);
  List()->CancelInvalidateAllItems();
  EXPECT_EQ(Add(), 0);
  EXPECT_EQ(Add(), 0);
  DcfFileInfoVector::DestroyInstance();
  EXPECT_EQ(Add(), 1);
}

TEST_F(DcfFileInfoVectorTest, ACancelAtTheEndOfARangeStopsBeforeTheWidenedOne) {
  Platform().sharingMode = 2;
  Platform().sharedFiles = SharedRun(1500);
  Platform().sharedFiles[3] = Shared(100, 3, ".MP4");
  Forget();
  script.cancelAt = 999;
  EXPECT_EQ(List()->addToDCFInfoVector(), 0);
  EXPECT_EQ(indexesRead, Down(999, 0));
  EXPECT_EQ(List()->nTotalCnt, 0);
}

TEST_F(DcfFileInfoVectorTest, AFirstFillingAfterAFailureAppendsToWhatIsThere) {
  Platform().sharedFiles = SharedRun(3);
  Platform().sharedFiles[0].fails = true;
  EXPECT_EQ(Add(), 0);
  Platform().sharedFiles[0].fails = false;
  EXPECT_EQ(Add(), 1);
  EXPECT_FALSE(List()->bListExisted);
  EXPECT_EQ(Indexes(), (std::vector<int>{2, 1, 2, 1, 0}));
  EXPECT_EQ(List()->nCumulativeAdded, 3u);
  EXPECT_EQ(DirNames(), (std::vector<std::string>{"100PHOTO"}));
}

TEST_F(DcfFileInfoVectorTest, AFirstFillingNeverDropsEntries) {
  Platform().sharedFiles = SharedRun(1500);
  Platform().sharedFiles[0].fails = true;
  EXPECT_EQ(Add(), 0);
  EXPECT_EQ(List()->getDcfIndexVectorSize(), 999);
  Platform().sharedFiles[0].fails = false;
  EXPECT_EQ(Add(), 1);
  EXPECT_EQ(List()->getDcfIndexVectorSize(), 1999);
  EXPECT_EQ(DescribedLog().at(3), RemoveLine(999));
}

TEST_F(DcfFileInfoVectorTest, AUriShorterThanTheLayoutGivesEmptyPiecesAndTheNumberZero) {
  Platform().sharedFiles.resize(3);
  Platform().sharedFiles[2] = Shared(100, 1);
  Platform().sharedFiles[1].uri = "short";
  Platform().sharedFiles[0].uri = "";
  EXPECT_EQ(Add(), 1);
  EXPECT_EQ(SortNumbers(), (std::vector<int>{1000001, 0, 0}));
  EXPECT_EQ(Paths(), (std::vector<std::string>{"/DCIM/100PHOTO/IMGA0001.JPG", "", ""}));
  EXPECT_EQ(DirNames(), (std::vector<std::string>{"100PHOTO", ""}));
}

// ---- the checks and the accessors ----

struct SupportRow {
  int mode;
  const char* extension;
  int platformType;
  int supported;
  int type;
};

TEST_F(DcfFileInfoVectorTest, DecidesByExtensionModeAndPlatformType) {
  const SupportRow rows[] = {
      {0, ".KRZ", 7, 0, 0},  {2, ".KRZ", 1, 0, 0},  {8, ".KRZ", 1, 0, 0},  {1, ".KRZ", 1, 0, 0},
      {0, ".MPO", 1, 1, 1},  {2, ".MPO", 1, 0, 0},  {8, ".MPO", 1, 0, 0},  {1, ".MPO", 7, 1, 1},
      {0, ".MP4", 1, 1, 2},  {2, ".MP4", 1, 0, 0},  {8, ".MP4", 1, 0, 0},  {6, ".MP4", 3, 1, 2},
      {0, ".AVI", 1, 1, 2},  {2, ".AVI", 1, 0, 0},  {8, ".AVI", 1, 0, 0},  {0, ".JPG", 1, 1, 1},
      {0, ".JPG", 7, 1, 7},  {2, ".JPG", 7, 1, 1},  {8, ".JPG", 7, 1, 1},  {6, ".JPG", 5, 1, 1},
      {0, ".JPG", 12, 1, 1}, {0, ".JPG", -7, 1, 1}, {0, ".mp4", 2, 1, 1},  {2, ".mp4", 2, 1, 1},
      {2, ".krz", 4, 1, 1},  {2, ".Mpo", 6, 1, 1},  {0, "", 7, 1, 7},      {2, "", 7, 1, 1},
      {0, ".MP4X", 2, 1, 1}, {0, "MP4", 2, 1, 1},   {2, ".JPEG", 1, 1, 1}, {0, ".AVI ", 1, 1, 1},
  };
  for (const SupportRow& row : rows) {
    SCOPED_TRACE(std::string(row.extension) + " in mode " + std::to_string(row.mode));
    Platform().sharingMode = row.mode;
    Platform().sharedFiles = {Shared(100, 1, row.extension, row.platformType)};
    DLNA_FILE_TYPE type = static_cast<DLNA_FILE_TYPE>(99);
    EXPECT_EQ(List()->supportFileCheck(row.extension, Platform().sharedFiles[0].uri.c_str(), &type),
              row.supported);
    EXPECT_EQ(type, row.type);
  }
}

TEST_F(DcfFileInfoVectorTest, SupportCheckToleratesNulls) {
  DLNA_FILE_TYPE type = DLNA_FILE_TYPE_NONE;
  EXPECT_EQ(List()->supportFileCheck(nullptr, nullptr, &type), 1);
  EXPECT_EQ(type, DLNA_FILE_TYPE_IMAGE);
  EXPECT_EQ(List()->supportFileCheck(".KRZ", "", nullptr), 0);
}

TEST_F(DcfFileInfoVectorTest, ConvertsUnknownPlatformTypesToPictures) {
  for (int type = 0; type <= 9; ++type) EXPECT_EQ(List()->convertFileType(type), type);
  for (const int type : {-2147483647 - 1, -1, 10, 100, 2147483647})
    EXPECT_EQ(List()->convertFileType(type), DLNA_FILE_TYPE_IMAGE);
}

TEST_F(DcfFileInfoVectorTest, FindsSortNumbersWithoutAWord) {
  Platform().sharedFiles = SharedRun(3);
  Add();
  testing::internal::CaptureStdout();
  EXPECT_EQ(List()->isInDirFileNumVector(1000001), 1);
  EXPECT_EQ(List()->isInDirFileNumVector(1000003), 1);
  EXPECT_EQ(List()->isInDirFileNumVector(1000004), 0);
  EXPECT_EQ(List()->isInDirFileNumVector(-1), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(DcfFileInfoVectorTest, AnswersMinusOneForANumberOutsideTheList) {
  Platform().sharedFiles = SharedRun(1);
  Add();
  for (const int index : {-2147483647 - 1, -1, 1, 2147483647}) {
    EXPECT_EQ(List()->getDirNumVectorAt(index), -1);
    EXPECT_EQ(List()->getDirFileNumVectorAt(index), -1);
    EXPECT_EQ(List()->getFileTypeVectorAt(index), -1);
    EXPECT_EQ(List()->getDcfIndexVectorAt(index), -1);
  }
  EXPECT_EQ(List()->getDirNumVectorAt(0), -1);
  EXPECT_EQ(List()->getDirFileNumVectorAt(0), 1000001);
}

TEST_F(DcfFileInfoVectorTest, ThrowsForATextOutsideTheList) {
  Platform().sharedFiles = SharedRun(1);
  Add();
  for (const int index : {-1, 1, 2147483647}) {
    EXPECT_THROW(List()->getDirNameVectorAt(index), std::out_of_range);
    EXPECT_THROW(List()->getFilePathVectorAt(index), std::out_of_range);
  }
  List()->getFilePathVectorAt(0) = "changed";
  EXPECT_EQ(List()->getFilePathVectorAt(0), "changed");
}

TEST_F(DcfFileInfoVectorTest, TheErrorOfATextOutsideTheListNamesTheRangeCheck) {
  try {
    List()->getFilePathVectorAt(3);
    FAIL() << "nothing was thrown";
  } catch (const std::out_of_range& error) {
    EXPECT_NE(std::string(error.what()).find("vector"), std::string::npos) << error.what();
  }
}

// ---- against a model of its own ----

// The walk once more, step by step and without a helper of the library.
struct Model {
  bool listExisted = false;
  unsigned newFilesAdded = 0;
  bool cancelled = false;
  int totalCnt = 0;
  unsigned cumulativeAdded = 0;
  std::string currentDirName;
  std::vector<int> dirFileNum, fileType, dcfIndex;
  std::vector<std::string> dirName, filePath;
  std::vector<std::string> log;
  std::vector<int> read;
  int mode = 0;

  int Call(const std::vector<SharedFile>& files, int startMode, const Script& events) {
    mode = startMode;
    log.clear();
    read.clear();
    const int previousTotal = totalCnt;
    const int total = static_cast<int>(files.size());
    int start = 0, i = 0, exceptions = 0, resume = 0, rangeStart = 0, excess = 0;
    log.push_back(Timing(">>>> FILE_URI start"));
    if (total == previousTotal) {
      log.push_back(Info(kNoNewFiles));
      listExisted = true;
      newFilesAdded = 0;
      return 1;
    }
    newFilesAdded = 0;
    if (previousTotal == 0) {
      listExisted = false;
      start = total <= 1000 ? total - 1 : 999;
    } else {
      listExisted = true;
      start = total - previousTotal - 1;
    }
    if (start < 0) goto finish;
    if (cancelled) goto cancel;
    i = start;
    rangeStart = start;
  next : {
    const int call = static_cast<int>(read.size());
    read.push_back(i);
    if (call == events.cancelAt) cancelled = true;
    if (call == events.modeChangeAt) mode = events.newMode;
    const SharedFile& file = files[static_cast<size_t>(i)];
    if (file.fails) {
      log.push_back(Error("Error : getURIFromIndex res = -7"));
      totalCnt = 0;
      return 0;
    }
    if (file.null) {
      log.push_back(Error("Error : szURI is NULL !!!"));
      totalCnt = 0;
      return 0;
    }
    int type = 0;
    if (mode == 2 || mode == 8) {
      const std::string extension = file.uri.substr(31);
      if (extension == ".KRZ" || extension == ".MPO" || extension == ".MP4" ||
          extension == ".AVI") {
        ++exceptions;
        log.push_back(Info(" Total UnSupport File = " + std::to_string(exceptions) + " "));
        if (i == 0) goto rangeEnd;
        goto step;
      }
      type = 1;
    }
    const std::string name = file.uri.substr(14, 8);
    if (name != currentDirName) {
      currentDirName = name;
      dirName.push_back(name);
    }
    filePath.push_back(file.uri.substr(8));
    dirFileNum.push_back(std::stoi(file.uri.substr(14, 3)) * 10000 +
                         std::stoi(file.uri.substr(27, 4)));
    dcfIndex.push_back(i);
    fileType.push_back(type);
    ++newFilesAdded;
    if (newFilesAdded == 1000) {
      log.push_back(Info("===>Exit Form Loop <=== \ndcfindex = " + std::to_string(i) +
                         ", vDirFileNum= " + std::to_string(dirFileNum.back()) +
                         ",  exception count = " + std::to_string(exceptions) +
                         ", total files = " + std::to_string(total) +
                         ", NewFilesadded = " + std::to_string(newFilesAdded)));
      goto finish;
    }
  }
  rangeEnd:
    if ((i == 0 || i == resume) && exceptions > 0 && total > 1000) {
      if (total - 1 != rangeStart && cumulativeAdded + newFilesAdded < 1000) {
        int newStart = rangeStart + exceptions;
        if (newStart > total - 1) newStart = total - 1;
        resume = rangeStart + 1;
        exceptions = 0;
        rangeStart = newStart;
        i = newStart;
        if (cancelled) goto cancel;
        goto next;
      }
      log.push_back(
          Info("[DcfFileInfoVector::addToDCFInfoVector] <<<< BREAK >>>>> \n nNewFilesAdded = " +
               std::to_string(newFilesAdded) + " , nTotalCnt = " + std::to_string(total) +
               ", nIndexToStart = " + std::to_string(rangeStart) + " "));
      goto finish;
    }
  step:
    --i;
    if (i < 0) goto finish;
    if (cancelled) goto cancel;
    goto next;
  cancel:
    log.push_back(Info(kWalkCancelled));
    totalCnt = 0;
    return 0;
  finish:
    log.push_back(TotalLine(static_cast<int>(dcfIndex.size())));
    if (total > 1000) {
      excess = dcfIndex.size() > 1000 ? static_cast<int>(dcfIndex.size()) - 1000 : 0;
      log.push_back(RemoveLine(excess));
      if (excess > 0 && previousTotal != 0) {
        dirFileNum.erase(dirFileNum.begin(), dirFileNum.begin() + excess);
        fileType.erase(fileType.begin(), fileType.begin() + excess);
        filePath.erase(filePath.begin(), filePath.begin() + excess);
        dcfIndex.erase(dcfIndex.begin(), dcfIndex.begin() + excess);
      }
    }
    totalCnt = total;
    cumulativeAdded += newFilesAdded;
    log.push_back(Timing(">>>> FILE_URI stop"));
    return 1;
  }
};

class DcfFileInfoVectorModelTest : public DcfFileInfoVectorTest, public Draws {
 protected:
  // Puts new files before the old ones, or takes files away.
  void ChangeList(std::vector<SharedFile>* files, int size, int otherKinds) {
    while (static_cast<int>(files->size()) > size)
      files->erase(files->begin() + Pick(0, static_cast<int>(files->size()) - 1));
    std::vector<SharedFile> added;
    while (static_cast<int>(added.size() + files->size()) < size) {
      number_ += OneIn(50) ? Pick(1, 9000) : 1;
      const bool other = Pick(0, 999) < otherKinds;
      const std::string extension =
          other ? OneOf<const char*>({".MP4", ".AVI", ".MPO", ".KRZ"}) : ".JPG";
      added.push_back(Shared(100 + number_ / 10000 % 900, number_ % 10000, extension));
    }
    std::reverse(added.begin(), added.end());
    files->insert(files->begin(), added.begin(), added.end());
  }

  void ExpectSame(const Model& model) {
    EXPECT_EQ(indexesRead, model.read);
    EXPECT_EQ(DescribedLog(), model.log);
    EXPECT_EQ(List()->bListExisted, model.listExisted);
    EXPECT_EQ(List()->nNewFilesAdded, model.newFilesAdded);
    EXPECT_EQ(List()->nTotalCnt, model.totalCnt);
    EXPECT_EQ(List()->nCumulativeAdded, model.cumulativeAdded);
    EXPECT_EQ(List()->bCancelFlag, model.cancelled);
    EXPECT_EQ(SortNumbers(), model.dirFileNum);
    EXPECT_EQ(Types(), model.fileType);
    EXPECT_EQ(Indexes(), model.dcfIndex);
    EXPECT_EQ(DirNames(), model.dirName);
    EXPECT_EQ(Paths(), model.filePath);
  }

  void RunSequence();

  int number_ = 0;
};

void DcfFileInfoVectorModelTest::RunSequence() {
  DcfFileInfoVector::DestroyInstance();
  Model model;
  std::vector<SharedFile> files;
  const int otherKinds = OneOf({0, 5, 10, 100, 500, 900, 1000});  // of a thousand
  const int rounds = Pick(1, 7);
  int size = 0;
  for (int round = 0; round < rounds; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    if (model.cancelled && OneIn(2)) {
      model = Model();
      DcfFileInfoVector::DestroyInstance();
    }
    switch (Pick(0, 6)) {
      case 0:
        size = OneOf({0, 1, 2, 10, 999, 1000, 1001, 1002, 1010, 1500, 2500});
        break;
      case 1:
        size = std::max(0, size - Pick(0, 30));
        break;
      case 2:
        size += Pick(0, 1200);
        break;
      case 3:
        break;
      default:
        size += Pick(1, 40);
        break;
    }
    ChangeList(&files, size, otherKinds);
    Platform().sharedFiles = files;
    if (!files.empty() && OneIn(6)) {
      const size_t index = static_cast<size_t>(Pick(0, std::min(size - 1, 999)));
      SharedFile& bad = Platform().sharedFiles[index];
      (OneIn(2) ? bad.fails : bad.null) = true;
    }
    Forget();
    const int mode = OneOf({2, 2, 2, 8, 8, 0, 1, 6});
    Platform().sharingMode = mode;
    if (OneIn(8)) script.cancelAt = Pick(0, std::min(1200, size));
    if (OneIn(4)) {
      script.modeChangeAt = Pick(0, std::min(1200, size));
      script.newMode = OneOf({0, 2, 8});
    }
    const int expected = model.Call(Platform().sharedFiles, mode, script);
    EXPECT_EQ(List()->addToDCFInfoVector(), expected);
    ExpectSame(model);
    if (HasFailure()) return;
  }
}

TEST_F(DcfFileInfoVectorModelTest, AgreesWithTheModelOverSequencesOfCalls) {
  for (unsigned seed = 1; seed <= 300 && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Seed(seed);
    number_ = 0;
    testing::internal::CaptureStderr();  // the error lines that are expected
    RunSequence();
    testing::internal::GetCapturedStderr();
  }
}

}  // namespace
