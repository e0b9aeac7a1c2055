#include "OSAL/ORXFSHandler.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <map>
#include <set>
#include <string>

#include "support/FakePlatform.h"
#include "support/OpenWatch.h"
#include "support/TempDir.h"
#include "support/TimeZone.h"

namespace {

using orx_test::FakePlatform;
using orx_test::TempDir;

// All entries that reading the open directory gives, by name.
std::map<std::string, ORXFSHandler::PTFile> ReadAll(ORXFSHandler* handler) {
  std::map<std::string, ORXFSHandler::PTFile> entries;
  ORXFSHandler::PTFile entry = {};
  while (handler->Read(&entry) == 1) entries[entry.name] = entry;
  return entries;
}

std::set<std::string> NamesIn(const std::string& directory) {
  ORXFSHandler handler;
  EXPECT_EQ(handler.OpenDir(directory.c_str()), 1);
  std::set<std::string> names;
  for (const auto& entry : ReadAll(&handler)) names.insert(entry.first);
  EXPECT_EQ(handler.CloseDir(), 1);
  return names;
}

// The one entry of `directory`, read into a record whose fields hold `stale` before.
ORXFSHandler::PTFile OnlyEntry(const std::string& directory, int stale = 0) {
  ORXFSHandler handler;
  EXPECT_EQ(handler.OpenDir(directory.c_str()), 1);
  ORXFSHandler::PTFile entry = {};
  entry.type = entry.year = entry.month = entry.day = stale;
  entry.reserved = entry.hour = entry.minute = entry.second = stale;
  entry.size = static_cast<unsigned>(stale);
  EXPECT_EQ(handler.Read(&entry), 1);
  ORXFSHandler::PTFile none = {};
  EXPECT_EQ(handler.Read(&none), 0);
  return entry;
}

void MakeSparse(const std::string& path, long long size) {
  const int descriptor = open64(path.c_str(), O_WRONLY | O_CREAT, 0600);
  ASSERT_GT(descriptor, 0);
  ASSERT_EQ(ftruncate64(descriptor, size), 0);
  close(descriptor);
}

class FSHandler : public testing::Test {
 protected:
  FSHandler() { FakePlatform::Reset(); }

  const TempDir directory_;
  ORXFSHandler handler_;
};

// ---- walking a directory ------------------------------------------------------------------------

TEST_F(FSHandler, ReadsEveryEntryOnce) {
  directory_.Write("a.jpg", "1");
  directory_.Write("b c.mp4", "22");
  directory_.MakeDir("100ABC");
  EXPECT_EQ(NamesIn(directory_.path()), (std::set<std::string>{"a.jpg", "b c.mp4", "100ABC"}));
}

TEST_F(FSHandler, PassesOverHiddenEntries) {
  directory_.Write(".hidden", "1");
  directory_.Write("..twice", "1");
  directory_.MakeDir(".trash");
  directory_.Write("seen.", "1");
  EXPECT_EQ(NamesIn(directory_.path()), std::set<std::string>{"seen."});
}

TEST_F(FSHandler, ReadsNothingInAnEmptyDirectory) {
  EXPECT_TRUE(NamesIn(directory_.path()).empty());
}

TEST_F(FSHandler, TellsDirectoriesFromEverythingElse) {
  directory_.Write("file", "12345");
  directory_.MakeDir("folder");
  ASSERT_EQ(mkfifo(directory_.Path("fifo").c_str(), 0600), 0);
  ASSERT_EQ(symlink("folder", directory_.Path("link").c_str()), 0);
  ASSERT_EQ(handler_.OpenDir(directory_.path().c_str()), 1);
  auto entries = ReadAll(&handler_);
  EXPECT_EQ(entries["file"].type, 1);
  EXPECT_EQ(entries["file"].size, 5u);
  EXPECT_EQ(entries["folder"].type, 0);
  EXPECT_EQ(entries["fifo"].type, 1);
  EXPECT_EQ(entries["link"].type, 0);
}

TEST_F(FSHandler, KeepsTheLow32BitsOfTheSize) {
  MakeSparse(directory_.Path("large"), (1LL << 32) + 77);
  EXPECT_EQ(OnlyEntry(directory_.path()).size, 77u);
}

TEST_F(FSHandler, GivesTheModificationTimeInLocalTime) {
  const orx_test::TimeZone zone("XYZ-9");              // nine hours ahead of UTC
  const timespec times[] = {{0, 0}, {1795262399, 0}};  // 2026-11-21 11:59:59 UTC
  ASSERT_EQ(utimensat(AT_FDCWD, directory_.Write("a", "1").c_str(), times, 0), 0);
  const ORXFSHandler::PTFile entry = OnlyEntry(directory_.path(), 42);
  EXPECT_EQ(entry.year, 2026);
  EXPECT_EQ(entry.month, 11);
  EXPECT_EQ(entry.day, 21);
  EXPECT_EQ(entry.reserved, 42);  // not written
  EXPECT_EQ(entry.hour, 20);
  EXPECT_EQ(entry.minute, 59);
  EXPECT_EQ(entry.second, 59);
}

TEST_F(FSHandler, FollowsTheZoneThatTheHostSetMeanwhile) {
  const orx_test::TimeZone before("UTC0");
  const std::string path = directory_.Write("a", "");
  const timespec noon[] = {{43200, 0}, {43200, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), noon, 0), 0);
  EXPECT_EQ(OnlyEntry(directory_.path()).hour, 12);
  setenv("TZ", "KST-9", 1);
  EXPECT_EQ(OnlyEntry(directory_.path()).hour, 21);
}

TEST_F(FSHandler, FillsInOnlyTheNameOfALinkToNothing) {
  ASSERT_EQ(symlink("nowhere", directory_.Path("dangling").c_str()), 0);
  const ORXFSHandler::PTFile entry = OnlyEntry(directory_.path(), 42);
  EXPECT_STREQ(entry.name, "dangling");
  EXPECT_EQ(entry.type, 42);
  EXPECT_EQ(entry.size, 42u);
  EXPECT_EQ(entry.year, 42);
  EXPECT_EQ(entry.month, 42);
  EXPECT_EQ(entry.day, 42);
  EXPECT_EQ(entry.hour, 42);
  EXPECT_EQ(entry.minute, 42);
  EXPECT_EQ(entry.second, 42);
}

TEST_F(FSHandler, ReadsTheLongestNames) {
  const std::string name(255, 'n');
  directory_.Write(name, "12");
  EXPECT_EQ(OnlyEntry(directory_.path()).name, name);
  EXPECT_EQ(OnlyEntry(directory_.path()).size, 2u);
}

// The status of an entry cannot be had behind a path that was cut, its name can.
TEST_F(FSHandler, ReadsNamesBelowAPathOfMoreThan1023Characters) {
  std::string path = directory_.path();
  while (path.size() < 1100) path += "/" + std::string(200, 'p');
  directory_.MakeDir(path.substr(directory_.path().size() + 1));
  const int file = open((path + "/a").c_str(), O_WRONLY | O_CREAT, 0600);
  ASSERT_GT(file, 0);
  close(file);
  const ORXFSHandler::PTFile entry = OnlyEntry(path, 42);
  EXPECT_STREQ(entry.name, "a");
  EXPECT_EQ(entry.type, 42);
}

TEST_F(FSHandler, OpensNothingButADirectory) {
  EXPECT_EQ(handler_.OpenDir(directory_.Path("none").c_str()), 0);
  EXPECT_EQ(handler_.OpenDir(directory_.Write("file", "1").c_str()), 0);
  EXPECT_EQ(handler_.OpenDir(""), 0);
  EXPECT_EQ(handler_.OpenDir(nullptr), 0);
}

TEST_F(FSHandler, ReadsAndClosesNothingThatIsNotOpen) {
  ORXFSHandler::PTFile entry = {};
  EXPECT_EQ(handler_.Read(&entry), 0);
  EXPECT_EQ(handler_.CloseDir(), 0);
  ASSERT_EQ(handler_.OpenDir(directory_.path().c_str()), 1);
  EXPECT_EQ(handler_.Read(nullptr), 0);
  EXPECT_EQ(handler_.CloseDir(), 1);
  EXPECT_EQ(handler_.CloseDir(), 0);
  EXPECT_EQ(handler_.Read(&entry), 0);
}

TEST_F(FSHandler, OpensAnotherDirectoryAfterTheFirst) {
  directory_.Write("one/a", "1");
  directory_.Write("two/b", "22");
  ASSERT_EQ(handler_.OpenDir(directory_.Path("one").c_str()), 1);
  ASSERT_EQ(handler_.OpenDir(directory_.Path("two").c_str()), 1);  // without closing the first
  const auto entries = ReadAll(&handler_);
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries.begin()->first, "b");
  EXPECT_EQ(entries.begin()->second.size, 2u);
}

TEST_F(FSHandler, KeepsTheOpenDirectoryWhenAnotherCannotBeOpened) {
  directory_.Write("a", "1");
  ASSERT_EQ(handler_.OpenDir(directory_.path().c_str()), 1);
  ASSERT_EQ(handler_.OpenDir(directory_.Path("none").c_str()), 0);
  EXPECT_EQ(ReadAll(&handler_).size(), 1u);
}

TEST_F(FSHandler, LeavesNoDescriptorOpenWhenItGoes) {
  const int before = dup(1);
  close(before);
  {
    ORXFSHandler handler;
    handler.OpenDir(directory_.path().c_str());
  }
  const int after = dup(1);
  close(after);
  EXPECT_EQ(after, before);
}

// ---- making and removing ------------------------------------------------------------------------

TEST_F(FSHandler, MakesADirectory) {
  const std::string path = directory_.Path("made");
  const mode_t mask = umask(0);
  EXPECT_EQ(handler_.CreateDir(path.c_str()), 1);
  umask(mask);
  struct stat status = {};
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFDIR | 0777));
}

TEST_F(FSHandler, MakesNoDirectoryWhereSomethingIsOrNothingCanBe) {
  EXPECT_EQ(handler_.CreateDir(directory_.path().c_str()), 0);
  EXPECT_EQ(handler_.CreateDir(directory_.Write("file", "1").c_str()), 0);
  EXPECT_EQ(handler_.CreateDir(directory_.Path("none/below").c_str()), 0);
  EXPECT_EQ(handler_.CreateDir(nullptr), 0);
}

TEST_F(FSHandler, RemovesAnEmptyDirectoryAlone) {
  EXPECT_EQ(handler_.Remove(directory_.MakeDir("empty").c_str()), 1);
  EXPECT_EQ(handler_.Remove(directory_.Path("empty").c_str()), 0);
  directory_.Write("full/file", "1");
  EXPECT_EQ(handler_.Remove(directory_.Path("full").c_str()), 0);
  EXPECT_EQ(handler_.Remove(nullptr), 0);
}

TEST_F(FSHandler, LeavesARegularFileWhereItIs) {
  const std::string path = directory_.Write("file", "1");
  EXPECT_EQ(handler_.Remove(path.c_str()), 0);
  EXPECT_EQ(access(path.c_str(), F_OK), 0);
}

// ---- looking at paths ---------------------------------------------------------------------------

TEST_F(FSHandler, KnowsADirectory) {
  EXPECT_TRUE(handler_.IsDirectory(directory_.path().c_str()));
  EXPECT_FALSE(handler_.IsDirectory(directory_.Write("file", "1").c_str()));
  EXPECT_FALSE(handler_.IsDirectory(directory_.Path("none").c_str()));
  EXPECT_FALSE(handler_.IsDirectory(nullptr));
}

TEST_F(FSHandler, KnowsAFileThatCanBeOpened) {
  EXPECT_TRUE(handler_.IsValidFile(directory_.Write("file", "1").c_str()));
  EXPECT_TRUE(handler_.IsValidFile(directory_.path().c_str()));
  EXPECT_FALSE(handler_.IsValidFile(directory_.Path("none").c_str()));
  EXPECT_FALSE(handler_.IsValidFile(nullptr));
  ASSERT_EQ(symlink("nowhere", directory_.Path("dangling").c_str()), 0);
  EXPECT_FALSE(handler_.IsValidFile(directory_.Path("dangling").c_str()));
}

TEST_F(FSHandler, NeverTakesAFifoADeviceOrASocketForAFile) {
  const std::string fifo = directory_.Path("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  const std::string path = directory_.Path("socket");
  const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  ASSERT_LT(path.size(), sizeof address.sun_path);
  path.copy(address.sun_path, path.size());
  ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  for (const std::string& name : {fifo, path, std::string("/dev/null")}) {
    SCOPED_TRACE(name);
    EXPECT_FALSE(handler_.IsValidFile(name.c_str()));
    EXPECT_FALSE(handler_.IsValidFile(name.c_str(), 0u));
    EXPECT_FALSE(handler_.IsValidFile(name.c_str(), 0ul));
  }
  close(listener);
  EXPECT_TRUE(FakePlatform::Get().log.empty());
}

TEST_F(FSHandler, RefusesAFifoWithoutOpeningIt) {
  const std::string path = directory_.Path("fifo");
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const orx_test::OpenWatch watch(path);
  EXPECT_FALSE(handler_.IsValidFile(path.c_str()));
  EXPECT_FALSE(handler_.IsValidFile(path.c_str(), 0u));
  EXPECT_FALSE(handler_.IsValidFile(path.c_str(), 0ul));
  EXPECT_FALSE(watch.Opened());
}

TEST_F(FSHandler, KnowsAFileOfTheGivenSize) {
  const std::string path = directory_.Write("file", "12345");
  EXPECT_TRUE(handler_.IsValidFile(path.c_str(), 5u));
  EXPECT_TRUE(handler_.IsValidFile(path.c_str(), 5ul));
  EXPECT_FALSE(handler_.IsValidFile(path.c_str(), 4u));
  EXPECT_FALSE(handler_.IsValidFile(directory_.Path("none").c_str(), 0u));
  EXPECT_FALSE(handler_.IsValidFile(directory_.Path("none").c_str(), 0ul));
  EXPECT_FALSE(handler_.IsValidFile(nullptr, 0u));
  EXPECT_FALSE(handler_.IsValidFile(nullptr, 0ul));
  EXPECT_TRUE(FakePlatform::Get().log.empty());
}

TEST_F(FSHandler, LogsASizeThatDiffersFromALongOne) {
  const std::string path = directory_.Write("file", "12345");
  EXPECT_FALSE(handler_.IsValidFile(path.c_str(), 6ul));
  const auto* line = FakePlatform::Get().Find("[ORXFSHandler::IsValidFile] file[" + path +
                                              "] size different! db[6] stat[5]");
  ASSERT_NE(line, nullptr);
  EXPECT_EQ(line->priority, 4);
  EXPECT_EQ(line->source, "ORXFSHandler.cpp");
  EXPECT_EQ(line->function, "IsValidFile");
}

TEST_F(FSHandler, NeverKnowsAFileOfMoreThanFourGibibytes) {
  const std::string path = directory_.Path("large");
  MakeSparse(path, (1LL << 32) + 5);
  EXPECT_TRUE(handler_.IsValidFile(path.c_str()));
  EXPECT_FALSE(handler_.IsValidFile(path.c_str(), 5u));
  EXPECT_FALSE(handler_.IsValidFile(path.c_str(), 5ul));
  EXPECT_TRUE(FakePlatform::Get().Logged("[ORXFSHandler::IsValidFile] file[" + path +
                                         "] size different! db[5] stat[4294967301]"));
  if (sizeof(long) > 4) {
    EXPECT_FALSE(handler_.IsValidFile(path.c_str(), static_cast<unsigned long>((1LL << 32) + 5)));
  }
}

TEST_F(FSHandler, KnowsTheLargestFileWhoseSizeHas32Bits) {
  const std::string path = directory_.Path("large");
  MakeSparse(path, 0xFFFFFFFFLL);
  EXPECT_TRUE(handler_.IsValidFile(path.c_str(), 0xFFFFFFFFu));
  EXPECT_TRUE(handler_.IsValidFile(path.c_str(), 0xFFFFFFFFul));
}

}  // namespace
