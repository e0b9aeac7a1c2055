// Several processes make the same new database at once, and makers die on the way.
#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "FileScanner/DataBaseMgr.h"
#include "robustness/Card.h"
#include "robustness/Injection.h"

namespace orx_test {
namespace {

constexpr int kRowsEach = 5;
constexpr int kTimeoutMs = 60000;  // of SQLite's waiting, between the processes
constexpr unsigned kTooLong = 60;  // seconds

class MakersTest : public CardTest {
 protected:
  static int rounds() { return IsSoak() ? 200 : 20; }

  int Open() const { return DataBaseMgr::GetInstance()->OpenDB(db_.c_str()); }
  int OpenAndClose() const {
    const int opened = Open();
    DataBaseMgr::DestroyInstance();
    return opened;
  }

  // What a process of the test does when all of them are there.
  int MakeAndWrite(int process) const {
    if (Open() != 1) return 1;
    sqlite3_busy_timeout(DataBaseMgr::ppDataBase, kTimeoutMs);
    for (int row = 0; row < kRowsEach; ++row) {
      const std::string path = "/" + std::to_string(process) + "/" + std::to_string(row);
      const std::string sql =
          "insert into ObjectTable (class, date, parentID, FullPath) values (1, '', '0', '" + path +
          "')";
      if (DataBaseMgr::GetInstance()->ExecSqlStatmentNoValueReturn(sql.c_str()) != 1) return 2;
    }
    DataBaseMgr::DestroyInstance();
    return 0;
  }

  std::vector<pid_t> Start(int processes) const {
    int gate[2] = {};
    EXPECT_EQ(pipe(gate), 0);
    std::vector<pid_t> children;
    for (int process = 0; process < processes; ++process) {
      children.push_back(fork());
      if (children.back() != 0) continue;
      alarm(kTooLong);
      close(gate[1]);
      char go = 0;
      const ssize_t opened = read(gate[0], &go, 1);  // until the gate is closed
      _exit(opened == 0 ? MakeAndWrite(process) : 3);
    }
    close(gate[0]);
    close(gate[1]);
    return children;
  }

  static int StatusOf(pid_t child) {
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return status;
  }

  std::set<std::string> Names() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(temp_.path()))
      names.insert(entry.path().filename().string());
    names.erase("card");
    return names;
  }

  void ExpectAllRowsOf(int processes) const {
    for (int round = 0; round < rounds(); ++round) {
      SCOPED_TRACE("round " + std::to_string(round));
      std::filesystem::remove(db_);
      for (const pid_t child : Start(processes)) EXPECT_EQ(StatusOf(child), 0);
      EXPECT_EQ(Contents().size(), static_cast<size_t>(processes * kRowsEach));
      ASSERT_EQ(Names(), (std::set<std::string>{"media.db"}));
    }
  }

  // Nothing or all: the five tables and their indexes.
  void ExpectNoneOrWhole() const {
    if (!std::filesystem::exists(db_)) return;
    sqlite3* connection = nullptr;
    ASSERT_EQ(sqlite3_open_v2(db_.c_str(), &connection, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
    sqlite3_stmt* count = nullptr;
    EXPECT_EQ(sqlite3_prepare_v2(connection,
                                 "select count(*) from sqlite_master where name like '%Table%' and "
                                 "name not like 'sqlite%'",
                                 -1, &count, nullptr),
              SQLITE_OK);
    EXPECT_EQ(sqlite3_step(count), SQLITE_ROW);
    EXPECT_EQ(sqlite3_column_int(count, 0), 11);
    sqlite3_finalize(count);
    sqlite3_close(connection);
    EXPECT_EQ(Contents(), std::vector<std::string>{});
  }

  void Clear() const {
    for (const std::string& name : Names()) std::filesystem::remove(temp_.Path(name));
  }
};

TEST_F(MakersTest, TwoAtOnceLoseNoRow) { ExpectAllRowsOf(2); }

TEST_F(MakersTest, FourAtOnceLoseNoRow) { ExpectAllRowsOf(4); }

TEST_F(MakersTest, FourAtOnceLoseNoRowWhereFilesAreMovedPlainly) {
  Injection::MoveAsOnFat(true);
  ExpectAllRowsOf(4);
  Injection::MoveAsOnFat(false);
}

TEST_F(MakersTest, FourAtOnceBesideAnOldJournalLoseNoRow) {
  for (int round = 0; round < rounds(); ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    std::filesystem::remove(db_);
    temp_.Write("media.db-journal", "\xd9\xd5\x05\xf9\x20\xa1\x63\xd7 of long ago");
    temp_.Write("media.db-wal", "of long ago");
    for (const pid_t child : Start(4)) EXPECT_EQ(StatusOf(child), 0);
    EXPECT_EQ(Contents().size(), 4u * kRowsEach);
    ASSERT_EQ(Names(), (std::set<std::string>{"media.db"}));
  }
}

TEST_F(MakersTest, AKillAtAnyCallLeavesNoneOrAWholeDatabase) {
  bool killed = true;
  for (long call = 1; killed; ++call) {
    SCOPED_TRACE("call " + std::to_string(call));
    Clear();
    temp_.Write("media.db-journal", "of long ago");
    temp_.Write("media.db-wal", "of long ago");
    const pid_t child = fork();
    if (child == 0) {
      Injection::Arm(Layer::kDisk, call, Behaviour::kKill);
      _exit(Open());
    }
    const int status = StatusOf(child);
    killed = WIFSIGNALED(status);
    ASSERT_TRUE(!killed || WTERMSIG(status) == SIGKILL);
    ExpectNoneOrWhole();
    EXPECT_EQ(OpenAndClose(), 1);
    EXPECT_TRUE(std::filesystem::exists(db_));
    ExpectNoneOrWhole();
    std::set<std::string> names = Names();
    // A maker that dies behind its end leaves the empty lock, until the next making.
    names.erase(".media.db.orxscan-new-lock");
    ASSERT_EQ(names, (std::set<std::string>{"media.db"}));
    if (call > 1000) FAIL() << "no end";
  }
}

TEST_F(MakersTest, AFailureOfAnyCallLeavesNoneOrAWholeDatabase) {
  for (const int error : {EIO, ENOSPC, EROFS}) {
    bool struck = true;
    for (long call = 1; struck; ++call) {
      SCOPED_TRACE("call " + std::to_string(call) + ", error " + std::to_string(error));
      Clear();
      temp_.Write("media.db-journal", "of long ago");
      Injection::Arm(Layer::kDisk, call, Behaviour::kFailOnce, error);
      const int opened = Open();
      struck = Injection::Disarm();
      DataBaseMgr::DestroyInstance();
      ExpectNoneOrWhole();
      if (opened == 1) {
        EXPECT_TRUE(std::filesystem::exists(db_));
      }
      EXPECT_EQ(OpenAndClose(), 1);
      ExpectNoneOrWhole();
      if (call > 1000) FAIL() << "no end";
    }
  }
}

TEST_F(MakersTest, WhoeverComesWhileAnotherMakesWaitsForItAndMakesAnewWhenItIsKilled) {
  int started[2] = {};
  ASSERT_EQ(pipe(started), 0);
  static int tell = 0;
  tell = started[1];
  const pid_t maker = fork();
  if (maker == 0) {
    QuietPlatform::Get().onLine = [](const char* /*line*/) {
      const ssize_t told = write(tell, "", 1);
      if (told == 1) pause();
    };
    Open();
    _exit(0);
  }
  char byte = 0;
  ASSERT_EQ(read(started[0], &byte, 1), 1);
  const std::vector<pid_t> next = Start(1);
  usleep(200000);
  EXPECT_EQ(waitpid(next[0], nullptr, WNOHANG), 0);
  EXPECT_FALSE(std::filesystem::exists(db_));
  kill(maker, SIGKILL);
  StatusOf(maker);
  EXPECT_EQ(StatusOf(next[0]), 0);
  EXPECT_EQ(Contents().size(), static_cast<size_t>(kRowsEach));
  EXPECT_EQ(Names(), (std::set<std::string>{"media.db"}));
  close(started[0]);
  close(started[1]);
}

TEST_F(MakersTest, WhoeverWaitsForAMakerMayBeCancelled) {
  int started[2] = {};
  ASSERT_EQ(pipe(started), 0);
  static int tell = 0;
  tell = started[1];
  const pid_t maker = fork();
  if (maker == 0) {
    QuietPlatform::Get().onLine = [](const char* /*line*/) {
      const ssize_t told = write(tell, "", 1);
      if (told == 1) pause();
    };
    Open();
    _exit(0);
  }
  char byte = 0;
  ASSERT_EQ(read(started[0], &byte, 1), 1);
  DataBaseMgr::GetInstance()->CancelInvalidateAllItems();
  EXPECT_EQ(Open(), 0);
  EXPECT_EQ(waitpid(maker, nullptr, WNOHANG), 0);
  EXPECT_TRUE(std::filesystem::exists(temp_.Path(".media.db.orxscan-new")));
  kill(maker, SIGKILL);
  StatusOf(maker);
  close(started[0]);
  close(started[1]);
}

}  // namespace
}  // namespace orx_test
