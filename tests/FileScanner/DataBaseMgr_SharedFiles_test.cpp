#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include "FileScanner/DataBaseMgr.h"
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

std::string SizeLine(int size) {
  return Info("[DcfFileInfoVector::addFileUriToTable] Total  vDirFileNum size = " +
              std::to_string(size));
}

using SharedFileListTest = orx_test::SharedListTest<DataBaseMgr>;

// ---- the walk ----

TEST_F(SharedFileListTest, ReadsNothingFromAnEmptyList) {
  EXPECT_EQ(Add(), 1);
  EXPECT_TRUE(indexesRead.empty());
  EXPECT_EQ(DescribedLog(), (std::vector<std::string>{Timing(">>>> FILE_URI start"),
                                                      Timing(">>>> FILE_URI stop"), SizeLine(0)}));
}

TEST_F(SharedFileListTest, AnEmptyListIsDoneEvenWhenCancelled) {
  List()->CancelInvalidateAllItems();
  EXPECT_EQ(Add(), 1);
}

TEST_F(SharedFileListTest, ListsFilesFromTheHighestIndexDown) {
  Platform().sharedFiles = {Shared(101, 7), Shared(101, 6, ".MP4", 2), Shared(100, 5, ".JPG", 7)};
  EXPECT_EQ(Add(), 1);
  EXPECT_EQ(indexesRead, Down(2, 0));
  EXPECT_EQ(Indexes(), Down(2, 0));
  EXPECT_EQ(SortNumbers(), (std::vector<int>{1000005, 1010006, 1010007}));
  EXPECT_EQ(Types(), (std::vector<int>{0, 0, 0}));
  EXPECT_EQ(DirNames(), (std::vector<std::string>{"100PHOTO", "101PHOTO"}));
  EXPECT_EQ(Paths(),
            (std::vector<std::string>{"/DCIM/100PHOTO/IMGA0005.JPG", "/DCIM/101PHOTO/IMGA0006.MP4",
                                      "/DCIM/101PHOTO/IMGA0007.JPG"}));
  EXPECT_EQ(List()->getDirNumVectorSize(), 0);
  EXPECT_EQ(DescribedLog(), (std::vector<std::string>{Timing(">>>> FILE_URI start"),
                                                      Timing(">>>> FILE_URI stop"), SizeLine(3)}));
}

TEST_F(SharedFileListTest, NeverReadsPastTheThousandLowestIndexes) {
  for (const int count : {999, 1000, 1001, 1200}) {
    SCOPED_TRACE(count);
    DataBaseMgr::DestroyInstance();
    Platform().sharedFiles = SharedRun(count);
    EXPECT_EQ(Add(), 1);
    EXPECT_EQ(indexesRead, Down(std::min(count, 1000) - 1, 0));
    EXPECT_EQ(Indexes(), indexesRead);
  }
}

TEST_F(SharedFileListTest, AppendsToWhatIsThereAndStartsTheDirectoryNamesAfresh) {
  Platform().sharedFiles = {Shared(100, 1)};
  EXPECT_EQ(Add(), 1);
  EXPECT_EQ(Add(), 1);
  EXPECT_EQ(SortNumbers(), (std::vector<int>{1000001, 1000001}));
  EXPECT_EQ(DirNames(), (std::vector<std::string>{"100PHOTO", "100PHOTO"}));
  EXPECT_EQ(DescribedLog().back(), SizeLine(2));
}

TEST_F(SharedFileListTest, AppendsADirectoryNameForEveryRunOfFiles) {
  Platform().sharedFiles = {Shared(100, 1), Shared(101, 2), Shared(101, 3), Shared(100, 4)};
  Add();
  EXPECT_EQ(DirNames(), (std::vector<std::string>{"100PHOTO", "101PHOTO", "100PHOTO"}));
}

TEST_F(SharedFileListTest, AFailingPlatformEndsTheCallAtEveryIndex) {
  for (size_t bad = 0; bad < 4; ++bad) {
    SCOPED_TRACE(bad);
    DataBaseMgr::DestroyInstance();
    Platform().sharedFiles = SharedRun(4);
    Platform().sharedFiles[bad].fails = true;
    EXPECT_EQ(Add(), 0);
    EXPECT_EQ(Indexes(), Down(3, static_cast<int>(bad) + 1));
    EXPECT_EQ(DescribedLog(),
              (std::vector<std::string>{Timing(">>>> FILE_URI start"),
                                        Error("Error : getURIFromIndex res = -7")}));
  }
}

TEST_F(SharedFileListTest, ANullUriEndsTheCallAtEveryIndex) {
  for (size_t bad = 0; bad < 4; ++bad) {
    SCOPED_TRACE(bad);
    DataBaseMgr::DestroyInstance();
    Platform().sharedFiles = SharedRun(4);
    Platform().sharedFiles[bad].null = true;
    EXPECT_EQ(Add(), 0);
    EXPECT_EQ(Indexes(), Down(3, static_cast<int>(bad) + 1));
    EXPECT_EQ(DescribedLog(), (std::vector<std::string>{Timing(">>>> FILE_URI start"),
                                                        Error("Error : szURI is NULL !!!")}));
  }
}

TEST_F(SharedFileListTest, ACancelDuringAnyIndexTakesEffectAfterIt) {
  for (int at = 0; at < 4; ++at) {
    SCOPED_TRACE(at);
    DataBaseMgr::DestroyInstance();
    Platform().sharedFiles = SharedRun(4);
    Forget();
    script.cancelAt = at;
    const bool last = at == 3;  // nothing is left to cancel
    EXPECT_EQ(List()->addFileUriToTable(), last ? 1 : 0);
    EXPECT_EQ(Indexes(), Down(3, 3 - at));
    EXPECT_EQ(Platform().CountLogged(kWalkCancelled), last ? 0 : 1);
  }
}

TEST_F(SharedFileListTest, ACancelBeforeTheCallReadsNothing) {
  Platform().sharedFiles = SharedRun(4);
  List()->CancelInvalidateAllItems();
  EXPECT_EQ(Add(), 0);
  EXPECT_TRUE(indexesRead.empty());
  EXPECT_EQ(DescribedLog(),
            (std::vector<std::string>{Timing(">>>> FILE_URI start"), Info(kWalkCancelled)}));
}

TEST_F(SharedFileListTest, AUriShorterThanTheLayoutGivesEmptyPiecesAndTheNumberZero) {
  for (const int mode : {0, 1, 2, 6, 8}) {
    SCOPED_TRACE(mode);
    DataBaseMgr::DestroyInstance();
    Platform().sharingMode = mode;
    Platform().sharedFiles.assign(3, SharedFile());
    Platform().sharedFiles[2] = Shared(100, 1);
    Platform().sharedFiles[1].uri = "short";
    EXPECT_EQ(Add(), 1);
    EXPECT_EQ(SortNumbers(), (std::vector<int>{1000001, 0, 0}));
    EXPECT_EQ(Paths(), (std::vector<std::string>{"/DCIM/100PHOTO/IMGA0001.JPG", "", ""}));
    EXPECT_EQ(DirNames(), (std::vector<std::string>{"100PHOTO", ""}));
  }
}

TEST_F(SharedFileListTest, OverwritesNothingOutsideAShortUri) {
  for (const int mode : {1, 6})
    for (const char* uri : {"", "A", "AB", "ABC", "ABCD"}) {
      SCOPED_TRACE(std::string(uri) + " in mode " + std::to_string(mode));
      DataBaseMgr::DestroyInstance();
      Platform().sharingMode = mode;
      Platform().sharedFiles.assign(1, SharedFile());
      Platform().sharedFiles[0].uri = uri;
      Platform().sharedFiles[0].type = 7;
      EXPECT_EQ(Add(), 1);
      EXPECT_EQ(Paths(), std::vector<std::string>(mode == 6 ? 2 : 1));
    }
}

// ---- photo sharing and the 3D mode ----

TEST_F(SharedFileListTest, AnUnsupportedFileShiftsTheIndexesReadAfterIt) {
  Platform().sharingMode = 2;
  Platform().sharedFiles = {Shared(100, 5), Shared(100, 4), Shared(100, 3, ".MPO", 6),
                            Shared(100, 2, ".KRZ", 4), Shared(100, 1)};
  EXPECT_EQ(Add(), 1);
  EXPECT_EQ(SortNumbers(), (std::vector<int>{1000001, 1000004, 1000005}));
  EXPECT_EQ(Indexes(), (std::vector<int>{4, 1, 0}));  // index 0 has nothing to give
  EXPECT_EQ(DescribedLog(),
            (std::vector<std::string>{Timing(">>>> FILE_URI start"),
                                      Info("------------- Not Support File Type = 0!!!"),
                                      Info("------------- Not Support File Type = 0!!!"),
                                      Timing(">>>> FILE_URI stop"), SizeLine(3)}));
}

TEST_F(SharedFileListTest, TheShiftIsLeftOutWhereItWouldGoBelowZero) {
  Platform().sharingMode = 1;
  Platform().sharedFiles = {Shared(100, 6),         Shared(100, 5),         Shared(100, 4),
                            Shared(100, 3, ".KRZ"), Shared(100, 2, ".KRZ"), Shared(100, 1)};
  EXPECT_EQ(Add(), 1);
  EXPECT_EQ(Indexes(), (std::vector<int>{5, 0, 1, 0}));
}

TEST_F(SharedFileListTest, PhotoSharingRefusesOneKindOfFilm) {
  Platform().sharingMode = 2;
  Platform().sharedFiles = {Shared(100, 3, ".MP4", 3), Shared(100, 2, ".MP4", 2),
                            Shared(100, 1, ".AVI", 3)};
  EXPECT_EQ(Add(), 1);
  EXPECT_EQ(SortNumbers(), (std::vector<int>{1000002}));
  EXPECT_EQ(Types(), (std::vector<int>{2}));
}

TEST_F(SharedFileListTest, A3DPhotoIsListedUnderItsMultiPictureNameInMode1) {
  Platform().sharingMode = 1;
  Platform().sharedFiles = {Shared(100, 1, ".JPG", 7)};
  EXPECT_EQ(Add(), 1);
  EXPECT_EQ(Paths(), (std::vector<std::string>{"/DCIM/100PHOTO/IMGA0001.MPO"}));
  EXPECT_EQ(Types(), (std::vector<int>{7}));
  EXPECT_EQ(
      DescribedLog(),
      (std::vector<std::string>{
          Timing(">>>> FILE_URI start"),
          Info("------------- File Type is 3D Photo [/mnt/mmc/DCIM/100PHOTO/IMGA0001.MPO] !!!"),
          Timing(">>>> FILE_URI stop"), SizeLine(1)}));
}

TEST_F(SharedFileListTest, A3DPhotoKeepsItsNameInMode8) {
  Platform().sharingMode = 8;
  Platform().sharedFiles = {Shared(100, 1, ".JPG", 7)};
  EXPECT_EQ(Add(), 1);
  EXPECT_EQ(Paths(), (std::vector<std::string>{"/DCIM/100PHOTO/IMGA0001.JPG"}));
  EXPECT_EQ(Types(), (std::vector<int>{7}));
}

// ---- companions ----

TEST_F(SharedFileListTest, ARawCompanionIsListedBehindItsPicture) {
  Platform().sharingMode = 6;
  Platform().sharedFiles = {Shared(100, 1, ".JPG", 5)};
  EXPECT_EQ(Add(), 1);
  EXPECT_EQ(Paths(), (std::vector<std::string>{"/DCIM/100PHOTO/IMGA0001.JPG",
                                               "/DCIM/100PHOTO/IMGA0001.KRZ"}));
  EXPECT_EQ(SortNumbers(), (std::vector<int>{1000001, 1000001}));
  EXPECT_EQ(Types(), (std::vector<int>{1, 5}));
  EXPECT_EQ(Indexes(), (std::vector<int>{0, 1}));
  EXPECT_EQ(DirNames(), (std::vector<std::string>{"100PHOTO"}));
  EXPECT_EQ(DescribedLog(),
            (std::vector<std::string>{Timing(">>>> FILE_URI start"),
                                      Info("------------- Duplication File Type = 5!!!"),
                                      Timing(">>>> FILE_URI stop"), SizeLine(2)}));
}

TEST_F(SharedFileListTest, CompanionsShiftTheIndexesReadAfterThem) {
  Platform().sharingMode = 6;
  Platform().sharedFiles = {Shared(101, 4, ".MP4", 2), Shared(100, 3, ".JPG", 7),
                            Shared(100, 2, ".JPG", 1), Shared(100, 1, ".JPG", 5)};
  EXPECT_EQ(Add(), 1);
  EXPECT_EQ(Paths(), (std::vector<std::string>{
                         "/DCIM/100PHOTO/IMGA0001.JPG", "/DCIM/100PHOTO/IMGA0001.KRZ",
                         "/DCIM/100PHOTO/IMGA0002.JPG", "/DCIM/100PHOTO/IMGA0003.JPG",
                         "/DCIM/100PHOTO/IMGA0003.MPO", "/DCIM/101PHOTO/IMGA0004.MP4"}));
  EXPECT_EQ(Types(), (std::vector<int>{1, 5, 1, 1, 7, 2}));
  EXPECT_EQ(Indexes(), (std::vector<int>{3, 4, 3, 2, 3, 2}));
  EXPECT_EQ(DirNames(), (std::vector<std::string>{"100PHOTO", "101PHOTO"}));
}

TEST_F(SharedFileListTest, BackupTakesTheTypeFromTheNameOrThePlatform) {
  Platform().sharingMode = 6;
  Platform().sharedFiles = {Shared(100, 6, ".AVI", 2), Shared(100, 5, ".JPG", 12),
                            Shared(100, 4, ".JPG", 0), Shared(100, 3, ".MPO", 7),
                            Shared(100, 2, ".KRZ", 5), Shared(100, 1, ".MP4", 3)};
  EXPECT_EQ(Add(), 1);
  EXPECT_EQ(Types(), (std::vector<int>{2, 4, 6, 0, 1, 2}));
}

// ---- the checks and the accessors ----

struct CheckRow {
  int mode;
  const char* extension;
  int platformType;
  int answer;
  int type;
};

TEST_F(SharedFileListTest, SupportDependsOnExtensionModeAndPlatformType) {
  const CheckRow rows[] = {
      {0, ".KRZ", 4, 0, 0}, {2, ".KRZ", 4, 0, 0},  {1, ".KRZ", 4, 0, 0}, {8, ".KRZ", 4, 0, 0},
      {0, ".MPO", 6, 1, 1}, {2, ".MPO", 6, 0, 0},  {8, ".MPO", 6, 1, 1}, {1, ".MPO", 7, 1, 1},
      {0, ".MP4", 3, 1, 2}, {2, ".MP4", 3, 0, 0},  {2, ".MP4", 2, 1, 2}, {8, ".MP4", 3, 1, 2},
      {0, ".AVI", 3, 1, 2}, {2, ".AVI", 3, 0, 0},  {2, ".AVI", 1, 1, 2}, {2, ".AVI", 33, 1, 2},
      {0, ".JPG", 1, 1, 1}, {0, ".JPG", 7, 1, 7},  {2, ".JPG", 7, 1, 1}, {8, ".JPG", 7, 1, 7},
      {0, ".JPG", 5, 1, 1}, {0, ".JPG", -7, 1, 1}, {0, ".jpg", 1, 1, 1}, {2, ".mp4", 3, 1, 1},
      {2, ".krz", 4, 1, 1}, {2, ".mpo", 6, 1, 1},  {0, "", 7, 1, 7},     {0, "MP4", 2, 1, 1},
  };
  for (const CheckRow& row : rows) {
    SCOPED_TRACE(std::string(row.extension) + " in mode " + std::to_string(row.mode));
    Platform().sharingMode = row.mode;
    Platform().sharedFiles = {Shared(100, 1, row.extension, row.platformType)};
    DLNA_FILE_TYPE type = static_cast<DLNA_FILE_TYPE>(99);
    EXPECT_EQ(List()->supportFileCheck(row.extension, Platform().sharedFiles[0].uri.c_str(), &type),
              row.answer);
    EXPECT_EQ(type, row.type);
  }
}

TEST_F(SharedFileListTest, ACompanionDependsOnExtensionAndPlatformType) {
  const CheckRow rows[] = {
      {0, ".MP4", 5, 0, 2}, {0, ".KRZ", 5, 0, 4}, {0, ".MPO", 7, 0, 6},  {0, ".JPG", 5, 1, 5},
      {0, ".JPG", 7, 1, 7}, {0, ".JPG", 1, 0, 1}, {0, ".JPG", 0, 0, 0},  {0, ".JPG", 3, 0, 3},
      {0, ".AVI", 2, 0, 2}, {0, ".AVI", 5, 1, 5}, {0, ".JPG", 15, 0, 1}, {0, ".mp4", 5, 1, 5},
      {2, ".JPG", 5, 1, 5}, {0, "", 7, 1, 7},     {0, ".JPG", 9, 0, 9},  {0, ".JPG", -5, 0, 1},
  };
  for (const CheckRow& row : rows) {
    SCOPED_TRACE(std::string(row.extension) + " of type " + std::to_string(row.platformType));
    Platform().sharingMode = row.mode;
    Platform().sharedFiles = {Shared(100, 1, row.extension, row.platformType)};
    DLNA_FILE_TYPE type = static_cast<DLNA_FILE_TYPE>(99);
    EXPECT_EQ(
        List()->duplicateFileCheck(row.extension, Platform().sharedFiles[0].uri.c_str(), &type),
        row.answer == 1);
    EXPECT_EQ(type, row.type);
  }
}

TEST_F(SharedFileListTest, ChecksTolerateNulls) {
  DLNA_FILE_TYPE type = DLNA_FILE_TYPE_NONE;
  EXPECT_EQ(List()->supportFileCheck(nullptr, nullptr, &type), 1);
  EXPECT_EQ(type, DLNA_FILE_TYPE_IMAGE);
  EXPECT_EQ(List()->supportFileCheck(".KRZ", "", nullptr), 0);
  EXPECT_FALSE(List()->duplicateFileCheck(nullptr, nullptr, &type));
  EXPECT_FALSE(List()->duplicateFileCheck(".MP4", "", nullptr));
}

TEST_F(SharedFileListTest, ConvertsUnknownPlatformTypesToPictures) {
  for (int type = 0; type <= 9; ++type) EXPECT_EQ(List()->convertFileType(type), type);
  for (const int type : {-2147483647 - 1, -1, 10, 2147483647})
    EXPECT_EQ(List()->convertFileType(type), DLNA_FILE_TYPE_IMAGE);
}

TEST_F(SharedFileListTest, SaysOnStandardOutputWhetherANumberIsListed) {
  Platform().sharedFiles = SharedRun(3);
  Add();
  testing::internal::CaptureStdout();
  EXPECT_EQ(List()->isInDirFileNumVector(1000002), 1);
  EXPECT_EQ(List()->isInDirFileNumVector(1000004), 0);
  EXPECT_EQ(List()->isInDirFileNumVector(-1), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "<<<< 1000002 - Found \n>>> 1000004 - Not found \n>>> -1 - Not found \n");
}

TEST_F(SharedFileListTest, AnswersMinusOneForANumberOutsideTheList) {
  Platform().sharedFiles = SharedRun(1);
  Add();
  for (const int index : {-2147483647 - 1, -1, 1, 2147483647}) {
    EXPECT_EQ(List()->getDirNumVectorAt(index), -1);
    EXPECT_EQ(List()->getDirFileNumVectorAt(index), -1);
    EXPECT_EQ(List()->getFileTypeVectorAt(index), -1);
    EXPECT_EQ(List()->getDBIndexVectorAt(index), -1);
  }
  EXPECT_EQ(List()->getDirNumVectorAt(0), -1);
}

TEST_F(SharedFileListTest, ThrowsForATextOutsideTheList) {
  Platform().sharedFiles = SharedRun(1);
  Add();
  for (const int index : {-1, 1, 2147483647}) {
    EXPECT_THROW(List()->getDirNameVectorAt(index), std::out_of_range);
    EXPECT_THROW(List()->getFilePathVectorAt(index), std::out_of_range);
  }
}

// ---- against a model of its own ----

// The walk once more, step by step and without a helper of the library.
struct Model {
  bool cancelled = false;
  std::vector<int> dirFileNum, fileType, dbIndex;
  std::vector<std::string> dirName, filePath, log;
  std::vector<int> read;

  static int Converted(int type) { return type >= 0 && type <= 9 ? type : 1; }

  int Call(const std::vector<SharedFile>& files, int mode, const Script& events) {
    log.clear();
    read.clear();
    std::string currentName;
    int unsupported = 0;
    int companions = 0;
    log.push_back(Timing(">>>> FILE_URI start"));
    const int count = static_cast<int>(files.size());
    int i = count <= 1000 ? count - 1 : 999;
    if (i >= 0) {
      if (cancelled) {
        log.push_back(Info(kWalkCancelled));
        return 0;
      }
      while (true) {
        const int call = static_cast<int>(read.size());
        read.push_back(i);
        if (call == events.cancelAt) cancelled = true;
        if (call == events.modeChangeAt) mode = events.newMode;
        const SharedFile& file = files[static_cast<size_t>(i)];
        if (file.fails) {
          log.push_back(Error("Error : getURIFromIndex res = -7"));
          return 0;
        }
        if (file.null) {
          log.push_back(Error("Error : szURI is NULL !!!"));
          return 0;
        }
        One(i, file, mode, &currentName, &unsupported, &companions);
        --i;
        if (i < 0) break;
        if (cancelled) {
          log.push_back(Info(kWalkCancelled));
          return 0;
        }
      }
    }
    log.push_back(Timing(">>>> FILE_URI stop"));
    log.push_back(SizeLine(static_cast<int>(dirFileNum.size())));
    return 1;
  }

  void One(int i, const SharedFile& file, int mode, std::string* currentName, int* unsupported,
           int* companions) {
    std::string uri = file.uri;
    const std::string extension = uri.substr(31);
    int type = 0;
    bool companion = false;
    if (mode == 2 || mode == 1 || mode == 8) {
      bool supported = true;
      if (extension == ".KRZ") {
        supported = false;
      } else if (extension == ".MPO") {
        supported = mode != 2;
        type = supported ? 1 : 0;
      } else if (extension == ".MP4" || extension == ".AVI") {
        supported = mode != 2 || Converted(file.type) != 3;
        type = supported ? 2 : 0;
      } else {
        type = mode != 2 && Converted(file.type) == 7 ? 7 : 1;
      }
      if (!supported) {
        log.push_back(
            Info("------------- Not Support File Type = " + std::to_string(type) + "!!!"));
        ++*unsupported;
        return;
      }
      if (mode == 1 && type == 7) {
        uri.replace(uri.size() - 3, 3, "MPO");
        log.push_back(Info("------------- File Type is 3D Photo [" + uri + "] !!!"));
      }
    } else if (mode == 6) {
      if (extension == ".MP4") {
        type = 2;
      } else if (extension == ".KRZ") {
        type = 4;
      } else if (extension == ".MPO") {
        type = 6;
      } else {
        type = Converted(file.type);
        companion = type == 5 || type == 7;
      }
    }
    const int number = std::stoi(uri.substr(14, 3)) * 10000 + std::stoi(uri.substr(27, 4));
    const std::string name = uri.substr(14, 8);
    if (name != *currentName) {
      dirName.push_back(name);
      *currentName = name;
    }
    filePath.push_back(uri.substr(8));
    dirFileNum.push_back(number);
    if (mode == 2 || mode == 1 || mode == 8) {
      dbIndex.push_back(i >= *unsupported ? i - *unsupported : i);
      fileType.push_back(type);
    } else if (mode == 6) {
      dbIndex.push_back(i + *companions);
      fileType.push_back(companion ? 1 : type);
      if (companion) {
        log.push_back(
            Info("------------- Duplication File Type = " + std::to_string(type) + "!!!"));
        uri.replace(uri.size() - 3, 3, type == 5 ? "KRZ" : "MPO");
        filePath.push_back(uri.substr(8));
        dirFileNum.push_back(number);
        ++*companions;
        dbIndex.push_back(i + *companions);
        fileType.push_back(type);
      }
    } else {
      dbIndex.push_back(i);
      fileType.push_back(0);
    }
  }
};

class SharedFileListModelTest : public SharedFileListTest, public Draws {
 protected:
  std::vector<SharedFile> RandomList(int size) {
    std::vector<SharedFile> files;
    int number = 1;
    while (static_cast<int>(files.size()) < size) {
      number += OneIn(20) ? Pick(1, 9000) : 1;
      const char* extension =
          OneIn(3) ? OneOf<const char*>({".MP4", ".AVI", ".MPO", ".KRZ", ".jpg", ".JPEG", ""})
                   : ".JPG";
      const int type = OneIn(3) ? Pick(-2, 12) : 1;
      files.push_back(Shared(100 + number / 10000 % 900, number % 10000, extension, type));
    }
    return files;
  }

  void RunSequence() {
    DataBaseMgr::DestroyInstance();
    Model model;
    const int calls = Pick(1, 3);
    for (int call = 0; call < calls; ++call) {
      SCOPED_TRACE("call " + std::to_string(call));
      const int size = OneIn(8) ? OneOf({0, 1, 999, 1000, 1001, 1200}) : Pick(0, 60);
      Platform().sharedFiles = RandomList(size);
      if (size > 0 && OneIn(6)) {
        const size_t index = static_cast<size_t>(Pick(0, std::min(size, 1000) - 1));
        SharedFile& bad = Platform().sharedFiles[index];
        (OneIn(2) ? bad.fails : bad.null) = true;
      }
      Forget();
      const int mode = OneOf({0, 1, 2, 3, 6, 8});
      Platform().sharingMode = mode;
      if (OneIn(8)) script.cancelAt = Pick(0, std::min(1000, size));
      if (OneIn(4)) {
        script.modeChangeAt = Pick(0, std::min(1000, size));
        script.newMode = OneOf({0, 1, 2, 6, 8});
      }
      const int expected = model.Call(Platform().sharedFiles, mode, script);
      EXPECT_EQ(List()->addFileUriToTable(), expected);
      EXPECT_EQ(indexesRead, model.read);
      EXPECT_EQ(DescribedLog(), model.log);
      EXPECT_EQ(SortNumbers(), model.dirFileNum);
      EXPECT_EQ(Types(), model.fileType);
      EXPECT_EQ(Indexes(), model.dbIndex);
      EXPECT_EQ(DirNames(), model.dirName);
      EXPECT_EQ(Paths(), model.filePath);
      EXPECT_EQ(List()->getDirNumVectorSize(), 0);
      if (HasFailure()) return;
    }
  }
};

TEST_F(SharedFileListModelTest, AgreesWithTheModelOverRandomListsAndModes) {
  for (unsigned seed = 1; seed <= 400 && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Seed(seed);
    testing::internal::CaptureStderr();  // the error lines that are expected
    RunSequence();
    testing::internal::GetCapturedStderr();
  }
}

}  // namespace
