#include "OSAL/GuardedFiles.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <memory>

#include "support/TempDir.h"

namespace {

using orx::GuardedDatabase;
using orx_test::TempDir;

class GuardedFilesTest : public testing::Test {
 protected:
  bool Guarded(const std::string& name) const {
    struct stat64 status = {};
    EXPECT_EQ(stat64(directory_.Path(name).c_str(), &status), 0) << name;
    return orx::IsGuarded(status);
  }
  static bool IsOpen(int descriptor) { return fcntl(descriptor, F_GETFD) >= 0; }

  TempDir directory_;
  const std::string database_ = directory_.Write("media.db", "a database");
  const std::string other_ = directory_.Write("other", "a file");
};

TEST_F(GuardedFilesTest, AreNoneWithoutADatabase) { EXPECT_FALSE(Guarded("media.db")); }

TEST_F(GuardedFilesTest, AreTheDatabaseUnderEveryName) {
  std::filesystem::create_hard_link(database_, directory_.Path("hard"));
  std::filesystem::create_symlink("hard", directory_.Path("soft"));
  GuardedDatabase held;
  held.Hold(database_.c_str());
  for (const char* name : {"media.db", "hard", "soft"}) EXPECT_TRUE(Guarded(name)) << name;
  EXPECT_FALSE(Guarded("other"));
}

TEST_F(GuardedFilesTest, AreItsJournalsAlsoWhenTheyComeLater) {
  directory_.Write("media.db-wal", "");
  GuardedDatabase held;
  held.Hold(database_.c_str());
  EXPECT_TRUE(Guarded("media.db-wal"));
  for (const char* name : {"media.db-journal", "media.db-shm"}) {
    directory_.Write(name, "");
    EXPECT_TRUE(Guarded(name)) << name;
  }
  directory_.Write("media.db-other", "");
  EXPECT_FALSE(Guarded("media.db-other"));
}

TEST_F(GuardedFilesTest, StayThoseThatWereOpenedWhenTheirNameIsGone) {
  std::filesystem::create_hard_link(database_, directory_.Path("hard"));
  GuardedDatabase held;
  held.Hold(database_.c_str());
  std::filesystem::rename(other_, database_);
  held.Hold(database_.c_str());
  EXPECT_TRUE(Guarded("hard"));
}

TEST_F(GuardedFilesTest, AreNoLongerWhenTheDatabaseIsReleased) {
  GuardedDatabase held;
  held.Hold(database_.c_str());
  held.Release();
  held.Release();
  EXPECT_FALSE(Guarded("media.db"));
}

TEST_F(GuardedFilesTest, ChangeWithTheDatabase) {
  GuardedDatabase held;
  held.Hold(database_.c_str());
  held.Hold(other_.c_str());
  EXPECT_FALSE(Guarded("media.db"));
  EXPECT_TRUE(Guarded("other"));
  held.Hold(nullptr);
  EXPECT_FALSE(Guarded("other"));
}

TEST_F(GuardedFilesTest, BelongToWhoeverHoldsThemLast) {
  auto first = std::make_unique<GuardedDatabase>();
  GuardedDatabase second, third;
  first->Hold(database_.c_str());
  second.Hold(database_.c_str());
  third.Hold(other_.c_str());
  first.reset();
  EXPECT_TRUE(Guarded("media.db"));
  second.Release();
  EXPECT_FALSE(Guarded("media.db"));
  EXPECT_TRUE(Guarded("other"));
}

TEST_F(GuardedFilesTest, AreClosedWhenTheirDatabaseIs) {
  GuardedDatabase first, second;
  first.Hold(database_.c_str());
  second.Hold(database_.c_str());
  const int parked = open64(database_.c_str(), O_RDONLY | O_CLOEXEC);
  orx::Park(parked);
  first.Release();
  EXPECT_TRUE(IsOpen(parked));
  second.Hold(database_.c_str());
  EXPECT_TRUE(IsOpen(parked));
  second.Release();
  EXPECT_FALSE(IsOpen(parked));
}

}  // namespace
