// The exit status, and what is said with it, when the machine fails.
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <functional>

#include "tools/CommandTest.h"

namespace {

using nlohmann::json;
using orx_test::kSanitized;
using orx_test::ProcessResult;
using orx_test::RunProcess;

// Root may read everything; without these capabilities he is a user like others.
void BecomeAnyUser() {
  constexpr unsigned long kOverride = 1, kReadAnything = 2;
  if (geteuid() == 0 && (prctl(PR_CAPBSET_DROP, kOverride, 0, 0, 0) != 0 ||
                         prctl(PR_CAPBSET_DROP, kReadAnything, 0, 0, 0) != 0))
    _exit(77);
}

// Which calls fail, and how.
struct Fault {
  std::string calls;
  std::string path;  // part of it
  int error;
  long first = 1;
  long last = 0;  // 0: all further ones

  std::vector<std::string> Environment() const {
    std::vector<std::string> entries = {
        "LD_PRELOAD=" ORXSCAN_FAULTY_CALLS, "FAULTY_CALLS=" + calls, "FAULTY_PATH=" + path,
        "FAULTY_ERROR=" + std::to_string(error), "FAULTY_FIRST=" + std::to_string(first)};
    if (last > 0) entries.push_back("FAULTY_LAST=" + std::to_string(last));
    return entries;
  }
};

class Statuses : public orx_test::CommandTest {
 protected:
  std::vector<std::string> ScanLine() const { return CommandLine({"scan", card_, database_}); }
  std::vector<std::string> CardLine() const {
    return CommandLine({"card", card_, database_, "--mode", "0"});
  }
  std::vector<std::string> RegisterLine() const {
    return CommandLine({"register", Picture(), database_});
  }
  static ProcessResult RunFaulty(const std::vector<std::string>& line, const Fault& fault) {
    return RunProcess(line, fault.Environment());
  }
  static ProcessResult AsAnyUser(const std::vector<std::string>& line) {
    return RunProcess(line, {}, BecomeAnyUser);
  }
  bool CardAllowed() const {
    return RunProcess(CommandLine({"card", card_, dir_.Path("try.db"), "--mode", "0"})).status == 0;
  }
  // The last line of standard error.
  static std::string LastLine(const ProcessResult& result) {
    const std::string& text = result.errors;
    if (text.size() < 2) return "";
    const size_t start = text.rfind('\n', text.size() - 2);
    return text.substr(start == std::string::npos ? 0 : start + 1);
  }
  static void ExpectTold(const ProcessResult& result, const std::string& line) {
    EXPECT_EQ(result.status, 1) << result.errors;
    EXPECT_TRUE(Contains(result.errors, "orxscan: " + line + "\n")) << result.errors;
  }
  std::string Incomplete(const std::string& what) const {
    return "orxscan: database '" + database_ + "' is incomplete: " + what + "\n";
  }
  // Every item that the card has is in the database; so is nothing that is gone.
  bool IsCurrent() const { return Run({"check", database_, card_}).status == 0; }
  void AddManyPictures(int count) const {
    std::filesystem::create_directories(card_ + "/DCIM/900MANYS");
    for (int i = 0; i < count; ++i) std::filesystem::create_hard_link(Picture(), ManyPicture(i));
  }
  std::string ManyPicture(int i) const {
    return card_ + "/DCIM/900MANYS/MANY" + std::to_string(1000 + i) + ".JPG";
  }
};

// ---- the disk ----

TEST_F(Statuses, TellsThatAFullDiskUndidTheFirstScan) {
  const ProcessResult result = RunFaulty(ScanLine(), {"write", "media.db-journal", ENOSPC});
  EXPECT_EQ(result.status, 1) << result.errors;
  EXPECT_EQ(result.errors, "orxscan: database '" + database_ +
                               "': database or disk is full; nothing in it was changed\n");
  EXPECT_EQ(result.output, "");
}

TEST_F(Statuses, TellsThatAFullDiskUndidALaterScan) {
  AddManyPictures(1100);
  Scan();
  for (int i = 0; i < 1100; ++i) std::filesystem::remove(ManyPicture(i));
  const ProcessResult result = RunFaulty(ScanLine(), {"write", "media.db", ENOSPC});
  EXPECT_EQ(result.status, 1) << result.output;
  EXPECT_TRUE(Contains(result.errors, "database or disk is full; nothing in it was changed"))
      << result.errors;
  EXPECT_EQ(Cell("SELECT count(*) FROM ImageTable"), "1104");
}

TEST_F(Statuses, TellsThatAFileMayNotGrow) {
  AddManyPictures(300);
  const ProcessResult result = RunProcess(ScanLine(), {}, [] {
    const rlimit limit = {16384, 16384};
    setrlimit(RLIMIT_FSIZE, &limit);
  });
  EXPECT_EQ(result.status, 1) << result.errors;
  EXPECT_TRUE(Contains(result.errors, "orxscan: database '" + database_ + "': ")) << result.errors;
}

class EveryDatabaseCall : public Statuses, public testing::WithParamInterface<const char*> {};
INSTANTIATE_TEST_SUITE_P(Calls, EveryDatabaseCall, testing::Values("write", "sync", "open", "read"),
                         [](const auto& test) { return std::string(test.param); });

// A failure is told, or it did no harm.
TEST_P(EveryDatabaseCall, FailsWithAStatusThatIsTrue) {
  Scan();
  const std::string before = dir_.Path("before.db");
  std::filesystem::copy(database_, before);
  std::filesystem::remove(Film());  // nothing is missing then; what is there too long tells
  std::filesystem::remove(Picture());
  int failed = 0;
  for (const long last : {0L, 1L}) {
    for (long call = 1; call <= 28; ++call) {
      SCOPED_TRACE(testing::Message()
                   << "call " << call << (last != 0 ? " alone" : " and further"));
      std::filesystem::copy(before, database_, std::filesystem::copy_options::overwrite_existing);
      std::filesystem::remove(database_ + "-journal");
      const ProcessResult result =
          RunFaulty(ScanLine(), {GetParam(), "/media.db", EIO, call, last != 0 ? call : 0});
      EXPECT_LE(result.status, 1) << result.errors;
      if (result.status == 0) {
        EXPECT_TRUE(IsCurrent());
      } else {
        EXPECT_EQ(result.errors.find("orxscan: "), 0u) << result.errors;
        ++failed;
      }
    }
  }
  EXPECT_GT(failed, 0);
}

TEST_F(Statuses, TellsThatARegistrationWasNotWritten) {
  Scan();
  const std::string other = dir_.Path("other.jpg");
  std::filesystem::copy(Picture(), other);
  int failed = 0;
  for (long call = 1; call <= 12; ++call) {
    SCOPED_TRACE(call);
    const ProcessResult result = RunFaulty(CommandLine({"register", other, database_}),
                                           {"write", "/media.db", ENOSPC, call});
    const bool there =
        Cell("SELECT count(*) FROM ImageTable WHERE FullPath = '" + other + "'") == "1";
    EXPECT_EQ(result.status, there ? 0 : 1) << result.errors;
    if (there) break;
    EXPECT_EQ(result.errors.find("orxscan: "), 0u) << result.errors;
    ++failed;
  }
  EXPECT_GT(failed, 0);
}

// ---- another program ----

class Locked : public Statuses {
 protected:
  Locked() {
    Scan();
    std::filesystem::copy(Picture(), card_ + "/DCIM/100ORXSC/ORXA0099.JPG");
    EXPECT_EQ(sqlite3_open(database_.c_str(), &reader_), SQLITE_OK);
  }
  ~Locked() override { sqlite3_close(reader_); }
  // Reads until the end.
  void Read() {
    EXPECT_EQ(
        sqlite3_exec(reader_, "BEGIN; SELECT count(*) FROM ObjectTable", nullptr, nullptr, nullptr),
        SQLITE_OK);
  }

  sqlite3* reader_ = nullptr;
};

TEST_F(Locked, TellsThatTheScanCouldNotBeCommitted) {
  Read();
  const ProcessResult result = RunProcess(ScanLine());
  ExpectTold(result, "database '" + database_ + "': database is locked; nothing in it was changed");
  EXPECT_EQ(result.output, "");
}

TEST_F(Locked, TellsSoWhateverElseWasLogged) {
  for (int i = 0; i < 1100; ++i)
    std::filesystem::create_hard_link(Picture(), card_ + "/say \"" + std::to_string(i) + "\".jpg");
  Read();
  ExpectTold(RunProcess(ScanLine()),
             "database '" + database_ + "': database is locked; nothing in it was changed");
}

TEST_F(Locked, TellsThatNothingWasRegistered) {
  Read();
  const std::string other = dir_.Path("other.jpg");
  std::filesystem::copy(Picture(), other);
  const ProcessResult result = Run({"register", other, database_});
  EXPECT_EQ(result.status, 1) << result.output;
  EXPECT_TRUE(Contains(result.errors, "database is locked")) << result.errors;
}

// ---- what cannot be read ----

TEST_F(Statuses, TellsAPictureThatMayNotBeRead) {
  ASSERT_EQ(chmod(Picture().c_str(), 0), 0);
  const ProcessResult result = AsAnyUser(ScanLine());
  if (result.status == 77) GTEST_SKIP() << "this user may read every file";
  ExpectTold(result, Picture() + ": cannot be read: Permission denied");
  EXPECT_EQ(LastLine(result), Incomplete("one file or folder is missing"));
  EXPECT_TRUE(Contains(result.output, "  missing          1\n")) << result.output;
  EXPECT_EQ(Cell("SELECT count(*) FROM ImageTable"), "3");
}

TEST_F(Statuses, ListsWhatIsMissingForPrograms) {
  ASSERT_EQ(chmod(Picture().c_str(), 0), 0);
  std::vector<std::string> line = ScanLine();
  line.emplace_back("--json");
  const ProcessResult result = AsAnyUser(line);
  if (result.status == 77) GTEST_SKIP() << "this user may read every file";
  EXPECT_EQ(result.status, 1);
  const json summary = json::parse(result.output);
  EXPECT_EQ(summary["missing"],
            (json{{{"path", Picture()}, {"reason", "cannot be read: Permission denied"}}}));
  EXPECT_EQ(summary["refused"].size(), 2u);
  EXPECT_EQ(Scan()["missing"], json::array());
}

TEST_F(Statuses, TellsAFolderThatMayNotBeRead) {
  const std::string folder = card_ + "/DCIM/100ORXSC";
  for (const mode_t mode : {0000U, 0311U, 0600U}) {
    SCOPED_TRACE(mode);
    ASSERT_EQ(chmod(folder.c_str(), mode), 0);
    const ProcessResult result = AsAnyUser(ScanLine());
    ASSERT_EQ(chmod(folder.c_str(), 0755), 0);
    if (result.status == 77) GTEST_SKIP() << "this user may read every file";
    ExpectTold(result, folder + ": cannot be read: Permission denied");
    EXPECT_EQ(LastLine(result), Incomplete("one file or folder is missing"));
  }
}

TEST_F(Statuses, TellsAFolderOfACardThatMayNotBeRead) {
  if (!CardAllowed()) GTEST_SKIP() << "this machine allows no mount namespace";
  const ProcessResult result = RunFaulty(CardLine(), {"opendir", "/mmc/DCIM/101ORXSC", EIO});
  ExpectTold(result, "/mnt/mmc/DCIM/101ORXSC: cannot be read: Input/output error");
}

TEST_F(Statuses, TakesFilesThatAreNoMediaForHarmless) {
  const std::string mail = dir_.Write("card/mail.mp3", "no reader for it");
  ASSERT_EQ(chmod(mail.c_str(), 0), 0);
  std::filesystem::create_symlink("nowhere", card_ + "/link.jpg");
  const ProcessResult result = AsAnyUser(ScanLine());
  if (result.status == 77) GTEST_SKIP() << "this user may read every file";
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(result.errors, "");
}

struct UnreadCase {
  const char* name;
  const char* calls;
  const char* path;
  int error;
};
class Unread : public Statuses, public testing::WithParamInterface<UnreadCase> {};
INSTANTIATE_TEST_SUITE_P(
    Causes, Unread,
    testing::Values(UnreadCase{"openPicture", "open", "ORXA0001.JPG", EIO},
                    UnreadCase{"readPicture", "read", "ORXA0001.JPG", EIO},
                    UnreadCase{"openPictureStale", "open", "ORXA0001.JPG", ESTALE},
                    UnreadCase{"readFilm", "read", "ORXA0001.MP4", ENODEV},
                    UnreadCase{"openFilm", "open", "ORXA0001.MP4", EMFILE},
                    UnreadCase{"openFolder", "opendir", "100ORXSC", EIO},
                    UnreadCase{"openFolderUnconnected", "opendir", "100ORXSC", ENOTCONN}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_P(Unread, IsToldByAScan) {
  const UnreadCase& cause = GetParam();
  const ProcessResult result = RunFaulty(ScanLine(), {cause.calls, cause.path, cause.error});
  EXPECT_EQ(result.status, 1) << result.errors;
  EXPECT_TRUE(Contains(result.errors,
                       std::string(cause.path) + ": cannot be read: " + strerror(cause.error)))
      << result.errors;
  EXPECT_TRUE(Contains(LastLine(result), "' is incomplete: ")) << result.errors;
}

TEST_P(Unread, IsToldByTheScanOfACard) {
  if (!CardAllowed()) GTEST_SKIP() << "this machine allows no mount namespace";
  const ProcessResult result =
      RunFaulty(CardLine(), {GetParam().calls, "mmc/DCIM/10", GetParam().error});
  EXPECT_EQ(result.status, 1) << result.output;
  EXPECT_TRUE(Contains(LastLine(result), "' is incomplete: ")) << result.errors;
}

TEST_F(Statuses, TellsWhyAFileToRegisterCannotBeRead) {
  for (const char* call : {"open", "read"}) {
    const ProcessResult result = RunFaulty(RegisterLine(), {call, "ORXA0001.JPG", EIO});
    ExpectTold(result, "'" + Picture() + "': cannot be read: Input/output error");
    EXPECT_FALSE(DatabaseExists());
  }
}

TEST_F(Statuses, TellsAFailureThatWasOverWhenTheScanEnded) {
  const ProcessResult result = RunFaulty(ScanLine(), {"read", "ORXA0002.MP4", EIO, 1, 1});
  const bool there = Cell("SELECT count(*) FROM VideoTable") == "3";
  EXPECT_EQ(result.status, there ? 0 : 1) << result.errors;
  EXPECT_FALSE(there);
}

// ---- little of everything ----

class LittleOfEverything : public Statuses {
 protected:
  // A status of 0 means that the database has everything.
  void ExpectTrueStatus(const std::function<void()>& limit) {
    std::filesystem::remove(database_);
    const ProcessResult result = RunProcess(CardLine(), {}, limit);
    if (result.status == 0) {
      EXPECT_EQ(Cell("SELECT count(*) FROM ObjectTable WHERE class <> 0"), "908") << result.output;
      EXPECT_EQ(result.errors, "");
      ++done_;
    } else {
      EXPECT_FALSE(result.errors.empty()) << result.status;
      if (Contains(result.errors, "orxscan: ")) ++failed_;  // else it could not even be loaded
    }
  }
  void SetUp() override {
    if (kSanitized) GTEST_SKIP() << "the sanitizer needs more";
    if (!CardAllowed()) GTEST_SKIP() << "this machine allows no mount namespace";
    AddManyPictures(900);
  }
  int done_ = 0;
  int failed_ = 0;
};

TEST_F(LittleOfEverything, DescriptorsGiveACardATrueStatus) {
  for (rlim_t count = 3; count <= 14; ++count) {
    SCOPED_TRACE(count);
    ExpectTrueStatus([count] {
      const rlimit limit = {count, count};
      setrlimit(RLIMIT_NOFILE, &limit);
    });
  }
  EXPECT_GT(done_, 0);
  EXPECT_GT(failed_, 0);
}

TEST_F(LittleOfEverything, MemoryGivesACardATrueStatus) {
  for (rlim_t size = 5000; size <= 12800; size += 100) {
    SCOPED_TRACE(size);
    ExpectTrueStatus([size] {
      const rlimit limit = {size << 10, size << 10};
      setrlimit(RLIMIT_AS, &limit);
    });
  }
  EXPECT_GT(done_, 0);
  EXPECT_GT(failed_, 0);
}

// ---- what is said on the way ----

TEST_F(Statuses, PrintsNoEscapeOfAFolderThatCannotBeOpened) {
  const std::string folder = card_ + "/\x1b[2J\x1b]0;title\x07";
  std::filesystem::create_directory(folder);
  const ProcessResult result = RunFaulty(ScanLine(), {"opendir", "title", EIO});
  EXPECT_EQ(result.status, 1);
  EXPECT_FALSE(Contains(result.errors, "\x1b")) << result.errors;
  EXPECT_FALSE(Contains(result.output, "\x1b"));
  ExpectTold(result, card_ + "/\\x1b[2J\\x1b]0;title\\x07: cannot be read: Input/output error");
}

TEST_F(Statuses, TellsAHundredMissingFilesAndHowManyMore) {
  AddManyPictures(150);
  const ProcessResult result = RunFaulty(ScanLine(), {"open", "MANY1", EIO});
  ExpectTold(result, "and 50 more (--json lists them all)");
  EXPECT_EQ(LastLine(result), Incomplete("150 files and folders are missing"));
}

}  // namespace
