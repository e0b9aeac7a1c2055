// Names and entries of a card that a stranger made.
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "FileScanner/DirectoryScanner.h"
#include "robustness/Card.h"
#include "robustness/NoPrivilege.h"
#include "support/CardMount.h"
#include "support/JpegBuilder.h"
#include "support/Mp4Builder.h"

namespace orx_test {
namespace {

const char* const kNames[] = {
    "it's.JPG",
    "percent %s %n %1000000d.JPG",
    "line\nbreak.JPG",
    "\x1b[2J\x1b[31mescape.JPG",
    "\xff\xfe\xc0\x80 not UTF-8.JPG",
    "'; drop table ObjectTable; --.JPG",
    "') or 1=1; delete from ImageTable; --.JPG",
    "x' union select * from ImageTable --.JPG",
    "back\\slash.JPG",
    "semicolon;.JPG",
    "\xEA\xB0\x80\xEB\x82\x98.JPG",
    "%%.JPG",
    "-rf.JPG",
    " .JPG",
};
const char* const kRefusedNames[] = {"double\"quote.JPG", "\"; drop table ImageTable; --.JPG",
                                     "a\" or \"1\"=\"1.JPG"};

// How many rows of the object and of the media tables have the path.
long Rows(const std::vector<std::string>& contents, const std::string& path) {
  const std::string cell = "|FullPath=" + path + "|";
  return std::count_if(contents.begin(), contents.end(),
                       [&](const std::string& row) { return row.find(cell) != std::string::npos; });
}

class HostileNamesTest : public CardTest {
 protected:
  void ScanTwice() const {
    Scan();
    const std::vector<std::string> once = Contents();
    Scan();
    EXPECT_EQ(Difference(Contents(), once), "");
  }
};

TEST_F(HostileNamesTest, AreTextsAndNothingElse) {
  Write("100PHOTO/IMGA0001.JPG", MakeJpeg());
  for (const char* name : kNames) Write(std::string("100PHOTO/") + name, MakeJpeg());
  for (const char* name : kNames) Write(std::string(name) + "/IMGA0001.JPG", MakeJpeg());
  for (const char* name : kRefusedNames) Write(std::string("100PHOTO/") + name, MakeJpeg());
  for (const char* name : kRefusedNames) Write(std::string(name) + "/IMGA0001.JPG", MakeJpeg());
  const std::string longest[] = {std::string(251, 'n') + ".JPG", std::string(251, '\xFE') + ".JPG",
                                 std::string(251, '\'') + ".JPG"};
  for (const std::string& name : longest) {
    Write("100PHOTO/" + name, MakeJpeg());
    Write(name + "/IMGA0001.JPG", MakeJpeg());
  }
  ScanTwice();

  const std::vector<std::string> contents = Contents();
  EXPECT_EQ(Rows(contents, InCard("100PHOTO/IMGA0001.JPG")), 2);
  for (const std::string& name : longest) {
    EXPECT_EQ(Rows(contents, InCard("100PHOTO/") + name), 2) << name;
    EXPECT_EQ(Rows(contents, InCard(name) + "/IMGA0001.JPG"), 2) << name;
  }
  for (const char* name : kNames) {
    EXPECT_EQ(Rows(contents, InCard("100PHOTO/") + name), 2) << name;
    EXPECT_EQ(Rows(contents, InCard(name) + "/IMGA0001.JPG"), 2) << name;
  }
  for (const char* name : kRefusedNames) {
    EXPECT_EQ(Rows(contents, InCard("100PHOTO/") + name), 0) << name;
    EXPECT_EQ(Rows(contents, InCard(name) + "/IMGA0001.JPG"), 0) << name;
  }
}

TEST_F(HostileNamesTest, AreRecordedUpToTheLongestPath) {
  std::string folder = "f";
  while (InCard(folder).size() < 400) folder += "/" + std::string(40, 'd');
  constexpr size_t kLongest = 511;
  const size_t room = kLongest - InCard(folder).size() - 1;
  for (size_t length = room - 3; length <= room + 3; ++length)
    Write(folder + "/" + std::string(length - 4, 'n') + ".JPG", MakeJpeg());
  Write("100PHOTO/IMGA0001.JPG", MakeJpeg());
  ScanTwice();
  const std::vector<std::string> contents = Contents();
  for (size_t length = room - 3; length <= room + 3; ++length)
    EXPECT_EQ(Rows(contents, InCard(folder) + "/" + std::string(length - 4, 'n') + ".JPG"),
              length <= room ? 2 : 0)
        << length;
  EXPECT_EQ(Rows(contents, InCard("100PHOTO/IMGA0001.JPG")), 2);
}

TEST_F(HostileNamesTest, OfWhatIsNoFileArePassedOver) {
  Write("100PHOTO/IMGA0001.JPG", MakeJpeg());
  const std::string folder = InCard("100PHOTO/");
  ASSERT_EQ(mkfifo((folder + "fifo.JPG").c_str(), 0600), 0);
  const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  const std::string socketPath = folder + "s.JPG";
  if (socketPath.size() < sizeof address.sun_path) {
    memcpy(address.sun_path, socketPath.c_str(), socketPath.size() + 1);
    EXPECT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  }
  std::filesystem::create_symlink("/nowhere/at/all.JPG", folder + "dangling.JPG");
  std::filesystem::create_symlink("loop.JPG", folder + "loop.JPG");
  std::filesystem::create_symlink("/dev/zero", folder + "device.JPG");
  std::filesystem::create_directory(folder + "folder.JPG");
  ScanTwice();
  close(listener);
  const std::vector<std::string> contents = Contents();
  EXPECT_EQ(Rows(contents, folder + "IMGA0001.JPG"), 2);
  for (const char* name : {"fifo.JPG", "s.JPG", "dangling.JPG", "loop.JPG", "device.JPG"})
    EXPECT_EQ(Rows(contents, folder + name), 0) << name;
}

TEST_F(HostileNamesTest, OfLinksToFoldersAboveDoNotMultiplyTheWalk) {
  Write("a/b/c/IMGA0001.JPG", MakeJpeg());
  std::filesystem::create_directory_symlink(card_, InCard("a/b/up1"));
  std::filesystem::create_directory_symlink(InCard("a"), InCard("a/b/c/up2"));
  std::filesystem::create_directory_symlink(InCard("a/b"), InCard("a/b/c/up3"));
  ScanTwice();
  const std::vector<std::string> contents = Contents();
  EXPECT_EQ(Rows(contents, InCard("a/b/c/IMGA0001.JPG")), 2);
  EXPECT_LT(contents.size(), 12u);
}

// There are more than a million ways through them.
TEST_F(HostileNamesTest, OfLinksBetweenFoldersDoNotMultiplyTheWalk) {
  constexpr int kFolders = 7, kVisits = 1000;
  for (int i = 0; i < kFolders; ++i) {
    const std::string folder = std::to_string(i);
    Write(folder + "/IMGA0001.JPG", MakeJpeg());
    for (int other = 0; other < kFolders; ++other)
      if (other != i)
        std::filesystem::create_directory_symlink("../" + std::to_string(other),
                                                  InCard(folder + "/" + std::to_string(other)));
  }
  Scan();
  const std::vector<std::string> contents = Contents();
  for (int i = 0; i < kFolders; ++i)
    EXPECT_EQ(Rows(contents, InCard(std::to_string(i)) + "/IMGA0001.JPG"), 2);
  EXPECT_LE(contents.size(), 3u * kFolders * (kVisits + 1) + 1);
}

TEST_F(HostileNamesTest, OfLinksToOneFolderAreAllFollowed) {
  Write("folder/IMGA0001.JPG", MakeJpeg());
  for (int i = 0; i < 12; ++i)
    std::filesystem::create_directory_symlink("folder", InCard("link" + std::to_string(i)));
  ScanTwice();
  EXPECT_EQ(Contents().size(), 1u + 13 * 3);  // the card; each folder, and its picture twice
}

TEST_F(HostileNamesTest, OfMoreThanAThousandLinksToOneFolderAThousandAreFollowed) {
  Write("folder/IMGA0001.JPG", MakeJpeg());
  for (int i = 0; i < 1003; ++i)
    std::filesystem::create_directory_symlink("folder", InCard("link" + std::to_string(i)));
  Scan();
  EXPECT_EQ(Contents().size(), 1u + 1001 * 3);
}

TEST_F(HostileNamesTest, OfFoldersAreRecordedUpToTheLongestPath) {
  std::string above = "f";
  while (InCard(above).size() < 400) above += "/" + std::string(40, 'd');
  const size_t room = 510 - InCard(above).size() - 1;
  for (size_t length = room - 1; length <= room + 3; ++length)
    std::filesystem::create_directories(InCard(above) + "/" + std::string(length, 'n'));
  Write("100PHOTO/IMGA0001.JPG", MakeJpeg());
  ScanTwice();
  const std::vector<std::string> contents = Contents();
  for (size_t length = room - 1; length <= room + 3; ++length)
    EXPECT_EQ(Rows(contents, InCard(above) + "/" + std::string(length, 'n')),
              length <= room + 1 ? 1 : 0)  // one more character, and the folder is not walked
        << length;
  EXPECT_EQ(Rows(contents, InCard("100PHOTO/IMGA0001.JPG")), 2);
}

TEST_F(HostileNamesTest, OfUnreadableFilesAndFoldersLeaveNoRow) {
  Write("100PHOTO/IMGA0001.JPG", MakeJpeg());
  const std::string file = Write("100PHOTO/SECRET.JPG", MakeJpeg());
  Write("101PHOTO/IMGA0002.JPG", MakeJpeg());
  Scan();  // while they can be read
  chmod(file.c_str(), 0);
  chmod(InCard("101PHOTO").c_str(), 0);
  {
    const NoPrivilege noPrivilege;
    if (std::ifstream(file).is_open())
      GTEST_SKIP() << "this machine lets the process read everything";
    ScanTwice();
  }
  const std::vector<std::string> contents = Contents();
  EXPECT_EQ(Rows(contents, InCard("100PHOTO/IMGA0001.JPG")), 2);
  EXPECT_EQ(Rows(contents, file), 0);
  EXPECT_EQ(Rows(contents, InCard("101PHOTO")), 0);
  EXPECT_EQ(Rows(contents, InCard("101PHOTO/IMGA0002.JPG")), 0);
  chmod(InCard("101PHOTO").c_str(), 0700);
}

TEST_F(HostileNamesTest, OfDeviceNodesArePassedOver) {
  Write("IMGA0001.JPG", MakeJpeg());
  if (mknod(InCard("zero.JPG").c_str(), S_IFCHR | 0600, makedev(1, 5)) != 0)
    GTEST_SKIP() << "this process may not make device nodes";
  ScanTwice();
  EXPECT_EQ(Rows(Contents(), InCard("IMGA0001.JPG")), 2);
  EXPECT_EQ(Rows(Contents(), InCard("zero.JPG")), 0);
}

TEST_F(HostileNamesTest, OfAFifoAreRefusedByTheOperationsOnOneFile) {
  const std::string fifo = InCard("fifo.JPG");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  DirectoryScanner* scanner = DirectoryScanner::GetInstance();
  EXPECT_EQ(scanner->ParseAndRegisterFile(db_.c_str(), fifo.c_str(), nullptr), -1);
  EXPECT_EQ(scanner->ParseAndGetFileInfo(fifo.c_str()), nullptr);
}

// The shared files of a card, with what is no file among them.
class SharedNamesTest : public CardTest, public testing::WithParamInterface<ScanKind> {
 protected:
  SharedNamesTest() : CardTest(GetParam()) {}
  void SetUp() override {
    if (card_.empty()) GTEST_SKIP() << CardMount::Problem();
  }
};

TEST_P(SharedNamesTest, OfWhatIsNoFileCostNoNeighbourItsRows) {
  Write("100PHOTO/IMGA0002.JPG", MakeJpeg());
  ResetPlatform();
  Scan();
  const std::vector<std::string> alone = Contents();
  const std::string folder = InCard("100PHOTO/");
  ASSERT_EQ(mkfifo((folder + "FIFO0003.JPG").c_str(), 0600), 0);
  std::filesystem::create_symlink("/dev/zero", folder + "ZERO0004.JPG");
  std::filesystem::create_symlink("/nowhere", folder + "GONE0005.JPG");
  std::filesystem::create_symlink("LOOP0006.JPG", folder + "LOOP0006.JPG");
  for (int scan = 0; scan < 2; ++scan) {
    ForgetList();
    ResetPlatform();
    Scan();
    const std::vector<std::string> all = Contents();
    EXPECT_TRUE(std::includes(all.begin(), all.end(), alone.begin(), alone.end()));
    if (kind_ != ScanKind::kFull) {  // which registers what the platform shares, unopened
      EXPECT_EQ(Difference(all, alone), "");
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Scans, SharedNamesTest, testing::ValuesIn(kScanKinds),
                         [](const auto& test) { return std::string(NameOf(test.param)); });

// ---- what changes between listing and opening ----

// The file that changes when the scan is about to read it.
std::string movingFile;
void (*move)() = nullptr;
void MoveBeforeReading(const char* line) {
  if (strstr(line, "__ExtractMetadata] Parsing [") != nullptr &&
      strstr(line, "MOVING") != nullptr && strstr(line, "failed") == nullptr)
    move();
}

struct Move {
  const char* name;
  void (*move)();
};
void PrintTo(const Move& kind, std::ostream* out) { *out << kind.name; }
const Move kMoves[] = {
    {"Vanishes", [] { std::filesystem::remove(movingFile); }},
    {"Grows", [] { std::ofstream(movingFile, std::ios::binary | std::ios::app) << "more"; }},
    {"Shrinks", [] { std::filesystem::resize_file(movingFile, 100); }},
    {"IsEmptied", [] { std::filesystem::resize_file(movingFile, 0); }},
    {"BecomesAFifo",
     [] {
       std::filesystem::remove(movingFile);
       mkfifo(movingFile.c_str(), 0600);
     }},
    {"BecomesAFolder",
     [] {
       std::filesystem::remove(movingFile);
       std::filesystem::create_directory(movingFile);
     }},
    {"BecomesALinkToItself",
     [] {
       std::filesystem::remove(movingFile);
       std::filesystem::create_symlink(movingFile, movingFile);
     }},
};
const char* const kMovingNames[] = {"MOVING.JPG", "MOVING.MP4", "MOVING.M4A"};

class MovingFileTest : public HostileNamesTest, public testing::WithParamInterface<Move> {};
INSTANTIATE_TEST_SUITE_P(Moves, MovingFileTest, testing::ValuesIn(kMoves),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(MovingFileTest, CostsNoNeighbourItsRowsAndIsRightAfterTheNextScan) {
  move = GetParam().move;
  for (const std::string name : kMovingNames) {
    SCOPED_TRACE(name);
    Write("IMGA0001.JPG", MakeJpeg());
    Write("ZZZZ0001.JPG", MakeJpeg());
    std::filesystem::remove_all(InCard(name));
    movingFile = Write(name, name == kMovingNames[0] ? MakeJpeg() : SmallFilm());
    QuietPlatform::Get().onLine = MoveBeforeReading;
    Scan();
    QuietPlatform::Get().onLine = nullptr;
    const std::vector<std::string> contents = Contents();
    EXPECT_EQ(Rows(contents, InCard("IMGA0001.JPG")), 2);
    EXPECT_EQ(Rows(contents, InCard("ZZZZ0001.JPG")), 2);

    Scan();
    const std::vector<std::string> next = Contents();
    RestoreDatabase("");
    Scan();
    EXPECT_EQ(Difference(next, Contents()), "");
    std::filesystem::remove_all(movingFile);
    RestoreDatabase("");
  }
}

TEST_F(HostileNamesTest, OfFilesThatVanishBeforeTheyAreReadLeaveNoRow) {
  movingFile = Write("MOVING.JPG", MakeJpeg());
  move = [] { std::filesystem::remove(movingFile); };
  QuietPlatform::Get().onLine = MoveBeforeReading;
  Scan();
  EXPECT_EQ(Rows(Contents(), movingFile), 0);
}

TEST_F(HostileNamesTest, OfFilesThatGrowBeforeTheyAreReadHaveTheirNewSize) {
  movingFile = Write("MOVING.JPG", MakeJpeg());
  const auto size = std::filesystem::file_size(movingFile);
  move = [] { std::ofstream(movingFile, std::ios::binary | std::ios::app) << "more"; };
  QuietPlatform::Get().onLine = MoveBeforeReading;
  Scan();
  const std::vector<std::string> once = Contents();
  EXPECT_EQ(Rows(once, movingFile), 2);
  EXPECT_TRUE(std::any_of(once.begin(), once.end(), [&](const std::string& row) {
    return row.find("|size=" + std::to_string(size + 4) + "|") != std::string::npos;
  }));
}

TEST_F(HostileNamesTest, OfFoldersThatVanishBeforeTheyAreOpenedLeaveNoRow) {
  Write("100PHOTO/IMGA0001.JPG", MakeJpeg());
  Write("MOVING/IMGA0002.JPG", MakeJpeg());
  movingFile = InCard("MOVING");
  QuietPlatform::Get().onLine = [](const char* line) {
    if (strstr(line, "DIRECTORY '") != nullptr && strstr(line, "MOVING'") != nullptr)
      std::filesystem::remove_all(movingFile);
  };
  ScanTwice();
  EXPECT_EQ(Rows(Contents(), InCard("100PHOTO/IMGA0001.JPG")), 2);
  EXPECT_EQ(Rows(Contents(), movingFile), 0);
  EXPECT_EQ(Rows(Contents(), movingFile + "/IMGA0002.JPG"), 0);
}

// Shared files that are gone when their turn comes.
int (*listed)(int index, char** uri) = nullptr;
TEST_P(SharedNamesTest, OfFilesThatVanishAfterTheListCostNoNeighbourItsRows) {
  if (kind_ == ScanKind::kFolder) return;  // it has no list
  for (const char* name : {"IMGA0002.JPG", "IMGA0003.JPG", "IMGA0004.JPG"})
    Write(std::string("100PHOTO/") + name, MakeJpeg());
  movingFile = InCard("100PHOTO/IMGA0003.JPG");
  ResetPlatform();
  listed = QuietPlatform::Get().uri;
  QuietPlatform::Get().uri = [](int index, char** uri) {
    const int code = listed(index, uri);
    if (code >= 0 && movingFile == *uri) std::filesystem::remove(movingFile);
    return code;
  };
  Scan();
  for (const char* name : {"100PHOTO/IMGA0002.JPG", "100PHOTO/IMGA0004.JPG"})
    EXPECT_GE(Rows(Contents(), InCard(name)), 1) << name;
  if (kind_ != ScanKind::kFull) {  // which registers what the platform shares, unopened
    EXPECT_EQ(Rows(Contents(), movingFile), 0);
  }

  ForgetList();
  ResetPlatform();  // the list of what is left
  Scan();
  const std::vector<std::string> next = Contents();
  EXPECT_EQ(Rows(next, movingFile), 0);
  RestoreDatabase("");
  ForgetList();
  Scan();
  EXPECT_EQ(Difference(next, Contents()), "");
}

}  // namespace
}  // namespace orx_test
