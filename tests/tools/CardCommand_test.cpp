#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>

#include "support/CardMount.h"
#include "tools/CommandTest.h"

namespace {

using nlohmann::json;
using orx_test::CardMount;
using orx_test::ProcessResult;
using orx_test::RunOnTerminal;
using orx_test::RunProcess;
using orx_test::Terminal;

constexpr unsigned kNobody = 65534;

void BecomeNobody() {
  if (geteuid() == 0 && (setgid(kNobody) != 0 || setuid(kNobody) != 0)) _exit(126);
  prctl(PR_SET_DUMPABLE, 1);  // the files of the process below /proc are its user's again
}

// Whether a process can have a card of its own after `prepare`.
bool CardAllowed(void (*prepare)() = nullptr) {
  const pid_t process = fork();
  if (process == 0) {
    if (prepare != nullptr) prepare();
    CardMount::Enter();
    _exit(CardMount::Problem().empty() ? 0 : 1);
  }
  int status = -1;
  return waitpid(process, &status, 0) == process && status == 0;
}

// Every attempt to make a namespace fails from now on.
void ForbidNamespaces() {
  sock_filter code[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_unshare, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  };
  const sock_fprog program = {sizeof code / sizeof *code, code};
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
      prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0)
    _exit(126);
}

class CardCommand : public orx_test::CommandTest {
 protected:
  void SetUp() override {
    static const bool allowed = CardAllowed();
    if (!allowed) GTEST_SKIP() << "this machine allows no mount namespace";
  }

  std::vector<std::string> Arguments(const std::string& mode,
                                     const std::vector<std::string>& more = {}) const {
    std::vector<std::string> arguments = {"card", card_, database_, "--mode", mode};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
  }
  json Card(const std::string& mode, std::vector<std::string> more = {}) const {
    more.push_back("--json");
    const ProcessResult result = Run(Arguments(mode, more));
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    return json::parse(result.output);
  }
  std::string List(const std::string& content) const { return dir_.Write("list.txt", content); }
  void AddRawCompanion() const {
    std::filesystem::copy(Picture(), card_ + "/DCIM/100ORXSC/ORXA0001.KRZ");
  }
  void AddManyPictures(int count) const {
    for (int i = 0; i < count; ++i) {
      const std::string folder = card_ + "/DCIM/" + std::to_string(200 + i / 9000) + "MANYS";
      std::filesystem::create_directories(folder);
      std::filesystem::create_hard_link(
          Picture(), folder + "/MANY" + std::to_string(1000 + i % 9000) + ".JPG");
    }
  }
  std::string Paths() const { return Cell("SELECT group_concat(FullPath, ' ') FROM ObjectTable"); }
  static std::string ReasonFor(const json& summary, const std::string& path) {
    for (const json& refusal : summary["refused"])
      if (refusal["path"] == path) return refusal["reason"];
    return "(not refused)";
  }
};

json Change(int added, int removed, int total) {
  return {{"added", added}, {"removed", removed}, {"total", total}};
}

// ---- modes ----

TEST_F(CardCommand, ScansTheWholeCardIntoTheMediaTables) {
  const json summary = Card("0");
  EXPECT_EQ(summary["folder"], card_);
  EXPECT_EQ(summary["database"], database_);
  EXPECT_EQ(summary["files"], 8);
  EXPECT_EQ(summary["folders"], Change(3, 0, 3));
  EXPECT_EQ(summary["pictures"], Change(5, 0, 5));
  EXPECT_EQ(summary["films"], Change(3, 0, 3));
  EXPECT_EQ(summary["refused"], json::array());
  EXPECT_EQ(Cell("SELECT FullPath FROM ImageTable WHERE SortIndex = '1000002'"),
            "/mnt/mmc/DCIM/100ORXSC/ORXA0002.JPG");
  EXPECT_EQ(Cell("SELECT count(*) FROM VideoTable"), "3");
}

TEST_F(CardCommand, LeavesTheMachinesOwnMountsAlone) {
  const bool before = std::filesystem::exists("/mnt/mmc");
  Card("0");
  EXPECT_EQ(std::filesystem::exists("/mnt/mmc"), before);
}

TEST_F(CardCommand, SharesNoMultiPictureFilesInMode2) {
  const json summary = Card("2");
  EXPECT_EQ(summary["pictures"], Change(4, 0, 4));
  EXPECT_EQ(ReasonFor(summary, "/mnt/mmc/DCIM/100ORXSC/ORXA0004.MPO"), "not shared in mode 2");
}

TEST_F(CardCommand, WritesTheBackupTableInMode6) {
  AddRawCompanion();
  const json summary = Card("6");
  EXPECT_EQ(summary["pictures"], Change(6, 0, 6));  // the raw companion is one
  EXPECT_EQ(summary["films"], Change(2, 0, 2));
  EXPECT_EQ(summary["profiles"], json::array());
  EXPECT_EQ(ReasonFor(summary, "/mnt/mmc/DCIM/101ORXSC/ORXA0003.3GP"),
            "this scan takes no 3GP files");
  EXPECT_EQ(Cell("SELECT count(*) FROM pragma_table_info('ObjectTable')"), "12");
  EXPECT_EQ(Cell("SELECT SortIndex FROM ObjectTable WHERE FullPath LIKE '%ORXA0001.KRZ'"),
            "1000001");
}

TEST_F(CardCommand, WritesTheObjectTableAloneInMode8) {
  const json summary = Card("8");
  EXPECT_EQ(summary["pictures"], Change(4, 0, 4));
  EXPECT_EQ(summary["films"], Change(0, 0, 0));
  EXPECT_EQ(ReasonFor(summary, "/mnt/mmc/DCIM/101ORXSC/ORXA0001.MP4"), "not shared in mode 8");
  EXPECT_EQ(Cell("SELECT count(*) FROM pragma_table_info('ObjectTable')"), "15");
  EXPECT_EQ(Cell("SELECT count(*) FROM sqlite_master WHERE type = 'table'"), "1");
}

TEST_F(CardCommand, WritesTheObjectTableAloneInAnyModeOnDemand) {
  const json summary = Card("2", {"--xq"});
  EXPECT_EQ(summary["pictures"], Change(4, 0, 4));
  EXPECT_EQ(Cell("SELECT count(*) FROM pragma_table_info('ObjectTable')"), "15");
}

TEST_F(CardCommand, ScansForABackupInAnyModeOnDemand) {
  const json summary = Card("0", {"--backup"});
  EXPECT_EQ(summary["pictures"], Change(5, 0, 5));
  EXPECT_EQ(summary["films"], Change(2, 0, 2));
  EXPECT_EQ(Cell("SELECT count(*) FROM pragma_table_info('ObjectTable')"), "15");
}

TEST_F(CardCommand, WritesTheTableOfMode6WithTheOtherScan) {
  EXPECT_EQ(Card("6", {"--xq"})["films"]["added"], 2);
  EXPECT_EQ(Cell("SELECT count(*) FROM pragma_table_info('ObjectTable')"), "12");
}

TEST_F(CardCommand, SharesTheThousandNewestFiles) {
  AddManyPictures(1200);
  const json full = Card("0");
  EXPECT_EQ(full["files"], 1208);
  EXPECT_EQ(full["pictures"], Change(1000, 0, 1000));
  EXPECT_EQ(ReasonFor(full, "/mnt/mmc/DCIM/100ORXSC/ORXA0001.JPG"),
            "not among the 1000 newest files");
  EXPECT_EQ(ReasonFor(full, "/mnt/mmc/DCIM/200MANYS/MANY1200.JPG"), "(not refused)");
  EXPECT_EQ(ReasonFor(full, "/mnt/mmc/DCIM/200MANYS/MANY1199.JPG"),
            "not among the 1000 newest files");
}

TEST_F(CardCommand, MakesUpForFilmsAmongTheNewestInTheObjectTableScan) {
  for (int i = 1; i <= 1500; ++i) {
    const bool film = i % 40 == 1;
    std::filesystem::create_directories(card_ + "/DCIM/300STREW");
    std::filesystem::create_hard_link(
        film ? Film() : Picture(),
        card_ + "/DCIM/300STREW/STRW" + std::to_string(1000 + i) + (film ? ".MP4" : ".JPG"));
  }
  EXPECT_EQ(Card("2", {"--xq"})["pictures"], Change(1000, 0, 1000));
  EXPECT_EQ(Cell("SELECT count(DISTINCT FullPath) FROM ObjectTable WHERE class = 1"), "1000");
  EXPECT_EQ(Cell("SELECT count(*) FROM ObjectTable WHERE FullPath LIKE '%.MP4'"), "0");
}

// ---- further scans ----

TEST_F(CardCommand, FindsNothingNewASecondTime) {
  for (const char* mode : {"0", "6", "8"}) {
    std::filesystem::remove(database_);
    const json first = Card(mode);
    const json again = Card(mode);
    for (const char* kind : {"folders", "pictures", "films"}) {
      EXPECT_EQ(again[kind]["added"], 0) << mode << kind;
      EXPECT_EQ(again[kind]["removed"], 0) << mode << kind;
      EXPECT_EQ(again[kind]["total"], first[kind]["total"]) << mode << kind;
    }
  }
}

TEST_F(CardCommand, ReconcilesWhatCameAndWent) {
  for (const char* mode : {"0", "6", "8"}) {
    std::filesystem::remove(database_);
    Card(mode);
    const std::string newer = card_ + "/DCIM/101ORXSC/ORXA0009.JPG";
    std::filesystem::copy(Picture(), newer);
    std::filesystem::rename(Picture(), dir_.Path("kept"));
    const json summary = Card(mode);
    EXPECT_EQ(summary["pictures"]["added"], 1) << mode;
    EXPECT_EQ(summary["pictures"]["removed"], 1) << mode;
    std::filesystem::remove(newer);
    std::filesystem::rename(dir_.Path("kept"), Picture());
  }
}

TEST_F(CardCommand, TakesOutAFolderThatIsGone) {
  Card("0");
  std::filesystem::remove_all(card_ + "/DCIM/101ORXSC");
  const json summary = Card("0");
  EXPECT_EQ(summary["folders"], Change(0, 1, 2));
  EXPECT_EQ(summary["films"], Change(0, 3, 0));
}

// ---- the list ----

TEST_F(CardCommand, SharesTheFilesOfAList) {
  const std::string list = List(
      "/mnt/mmc/DCIM/101ORXSC/ORXA0001.MP4\r\n"
      "\n"
      "/mnt/mmc/DCIM/100ORXSC/ORXA0002.JPG\n");
  const json summary = Card("0", {"--list", list});
  EXPECT_EQ(summary["files"], 2);
  EXPECT_EQ(summary["pictures"], Change(1, 0, 1));
  EXPECT_EQ(summary["films"], Change(1, 0, 1));
  EXPECT_EQ(Paths(),
            "/mnt/mmc/DCIM /mnt/mmc/DCIM/100ORXSC /mnt/mmc/DCIM/100ORXSC/ORXA0002.JPG "
            "/mnt/mmc/DCIM/101ORXSC /mnt/mmc/DCIM/101ORXSC/ORXA0001.MP4");
}

TEST_F(CardCommand, TakesOutWhatTheListNoLongerHas) {
  Card("0");
  const json summary = Card("0", {"--list", List("/mnt/mmc/DCIM/100ORXSC/ORXA0002.JPG\n")});
  EXPECT_EQ(summary["pictures"], Change(0, 4, 1));
  EXPECT_EQ(summary["films"], Change(0, 3, 0));
}

TEST_F(CardCommand, TakesOutEverythingForAnEmptyList) {
  Card("0");
  const json summary = Card("0", {"--list", List("")});
  EXPECT_EQ(summary["pictures"], Change(0, 5, 0));
}

TEST_F(CardCommand, TellsAListedFileThatIsNotOnTheCard) {
  const std::string uri = "/mnt/mmc/DCIM/100ORXSC/GONE0001.MP4";
  EXPECT_EQ(ReasonFor(Card("6", {"--list", List(uri)}), uri), "No such file or directory");
}

TEST_F(CardCommand, TellsASharedFileWithoutReader) {
  dir_.Write("card/DCIM/100ORXSC/SONG0001.MP3", "ID3 and more of it");
  EXPECT_EQ(ReasonFor(Card("0"), "/mnt/mmc/DCIM/100ORXSC/SONG0001.MP3"),
            "no reader for .mp3 files");
}

TEST_F(CardCommand, TellsAListedPathThatTheDatabaseCannotHold) {
  const std::string name = "ORX\"0001.JPG";
  std::filesystem::copy(Picture(), card_ + "/DCIM/100ORXSC/" + name);
  const std::string uri = "/mnt/mmc/DCIM/100ORXSC/" + name;
  EXPECT_EQ(ReasonFor(Card("0", {"--list", List(uri)}), uri), "its path has a double quote in it");
}

TEST_F(CardCommand, RefusesAListThatHoldsAnythingElse) {
  for (const char* line :
       {"picture.jpg", "/mnt/mmc/DCIM/100ORXSC", "/mnt/mmc/DCIM/100ORXSC/", "/mnt/mmc/MUSIC/a.aac",
        "/mnt/mmc/DCIM/100/ORXA0001.JPG", "/mnt/mmc/DCIM/100ORXSC/../ORXA0001.JPG",
        "/mnt/mmc/DCIM/100ORXSC/..", "/mnt/mmc/DCIM/100ORXSCX/ORXA0001.JPG"}) {
    const std::string list =
        List("/mnt/mmc/DCIM/100ORXSC/ORXA0001.JPG\n\n" + std::string(line) + "\n");
    ExpectFailure(Arguments("0", {"--list", list}),
                  "list '" + list + "', line 3: '" + line +
                      "' is no file of a card, such as /mnt/mmc/DCIM/100ORXSC/ORXA0001.JPG");
  }
  EXPECT_FALSE(DatabaseExists());
}

TEST_F(CardCommand, RefusesAListThatIsNone) {
  ExpectFailure(Arguments("0", {"--list", dir_.Path("gone")}),
                "file '" + dir_.Path("gone") + "': No such file or directory");
  const std::string binary = dir_.Write("binary", std::string("a\0b", 3));
  ExpectFailure(Arguments("0", {"--list", binary}), "'" + binary + "' is not a text file");
}

// ---- output ----

TEST_F(CardCommand, PrintsASummary) {
  const ProcessResult result = Run(Arguments("8"));
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_TRUE(Contains(result.output,
                       "  /mnt/mmc/DCIM/100ORXSC/ORXA0004.MPO: not shared in mode "
                       "8\n"))
      << result.output;
  EXPECT_TRUE(Contains(result.output, "Scanned " + card_ + " into " + database_ + ": 8 files in "));
  EXPECT_TRUE(Contains(result.output, "  pictures         4        0            4\n"));
  EXPECT_FALSE(Contains(result.output, "_scanDirXQDcf"));
}

TEST_F(CardCommand, SaysNothingWhenQuiet) {
  const ProcessResult result = Run(Arguments("0", {"--quiet"}));
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(Cell("SELECT count(*) FROM ImageTable"), "5");
}

TEST_F(CardCommand, ShowsItsProgressOnATerminal) {
  for (const char* mode : {"0", "8"}) {
    std::filesystem::remove(database_);
    const ProcessResult result = RunOnTerminal(CommandLine(Arguments(mode)));
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(Contains(result.output, "\r0 of 8 files  /mnt/mmc/DCIM")) << result.output;
    EXPECT_TRUE(Contains(result.output, mode[0] == '0' ? "\r8 of 8 files" : "\r7 of 8 files"))
        << result.output;
  }
}

TEST_F(CardCommand, KeepsWhatWasDoneWhenInterruptedAndGoesOn) {
  for (const char* mode : {"0", "8"}) {
    std::filesystem::remove(database_);
    if (!std::filesystem::exists(card_ + "/DCIM/200MANYS")) AddManyPictures(1000);
    bool sent = false;
    const ProcessResult result =
        RunOnTerminal(CommandLine(Arguments(mode)), [&](const std::string&, Terminal terminal) {
          if (sent) return;
          sent = true;
          EXPECT_EQ(write(terminal.descriptor, "\x03", 1), 1);  // Ctrl-C
        });
    EXPECT_EQ(result.status, 130) << result.output;
    EXPECT_TRUE(Contains(result.output, "Cancelled: scanned part of " + card_)) << result.output;
    EXPECT_EQ(Cell("PRAGMA integrity_check"), "ok");
    EXPECT_EQ(Card(mode)["pictures"]["total"], 1000) << mode;
  }
}

// ---- where things lie ----

TEST_F(CardCommand, TakesACardAndADatabaseBelowMnt) {
  const std::string out = dir_.Path("out.db");
  const std::string script = "cp -r '" + card_ +
                             "' /mnt/scratch/card && '" ORXSCAN_COMMAND
                             "' card /mnt/scratch/card /mnt/scratch/media.db --mode 0 --json && "
                             "cp /mnt/scratch/media.db '" +
                             out + "'";
  const ProcessResult result =
      RunProcess({"/bin/sh", "-c", script}, {}, [] { CardMount::Enter(); });
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(json::parse(result.output)["pictures"], Change(5, 0, 5));
  EXPECT_EQ(json::parse(result.output)["folder"], "/mnt/scratch/card");
  EXPECT_TRUE(std::filesystem::exists(out));
}

TEST_F(CardCommand, TakesTheMountOfACardItself) {
  const std::string script = "cp -r '" + card_ +
                             "'/DCIM /mnt/mmc/ && cd /mnt/mmc && '" ORXSCAN_COMMAND
                             "' card . media.db --mode 8 --json";
  const ProcessResult result =
      RunProcess({"/bin/sh", "-c", script}, {}, [] { CardMount::Enter(); });
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(json::parse(result.output)["pictures"], Change(4, 0, 4));
}

TEST_F(CardCommand, TakesRelativePathsAndLinks) {
  std::filesystem::create_symlink(card_, dir_.Path("link"));
  std::filesystem::create_directory_symlink(dir_.path(), dir_.Path("here"));
  const ProcessResult good =
      RunProcess({"/bin/sh", "-c",
                  "cd '" + dir_.path() +
                      "' && '" ORXSCAN_COMMAND "' card link here/media.db --mode 0 --quiet"});
  EXPECT_EQ(good.status, 0) << good.errors;
  EXPECT_EQ(Cell("SELECT count(*) FROM ImageTable"), "5");
}

TEST_F(CardCommand, ServesAUserWhoIsNotRoot) {
  if (!CardAllowed(BecomeNobody)) GTEST_SKIP() << "this machine allows users no namespace";
  ASSERT_EQ(chmod(dir_.path().c_str(), 0777), 0);
  const ProcessResult result = RunProcess(CommandLine(Arguments("0", {"--json"})), {}, [] {
    BecomeNobody();
    if (access(ORXSCAN_COMMAND, X_OK) != 0) _exit(126);
  });
  if (result.status == 126) GTEST_SKIP() << "the command cannot be run by another user";
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(json::parse(result.output)["pictures"], Change(5, 0, 5));
  EXPECT_EQ(Cell("SELECT count(*) FROM ImageTable"), "5");
}

TEST_F(CardCommand, SaysWhenNoNamespaceIsAllowed) {
  const ProcessResult result = RunProcess(CommandLine(Arguments("0")), {}, ForbidNamespaces);
  if (result.status == 126) GTEST_SKIP() << "this machine filters no system calls";
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors,
            "orxscan: cannot mount the card at /mnt/mmc in a namespace of its own: unshare: "
            "Operation not permitted (run it as root or where users may make namespaces: "
            "kernel.unprivileged_userns_clone=1, kernel.apparmor_restrict_unprivileged_userns=0; "
            "a container needs the capability SYS_ADMIN)\n");
  EXPECT_FALSE(DatabaseExists());
}

// ---- what cannot be done ----

TEST_F(CardCommand, RefusesAFolderThatIsNoCard) {
  const std::string empty = dir_.MakeDir("empty");
  ExpectFailure({"card", empty, database_, "--mode", "0"},
                "folder '" + empty + "/DCIM': No such file or directory");
  ExpectFailure({"card", dir_.Path("gone"), database_, "--mode", "0"},
                "folder '" + dir_.Path("gone") + "': No such file or directory");
  EXPECT_FALSE(DatabaseExists());
}

TEST_F(CardCommand, RefusesADatabaseWithOtherTables) {
  Card("8");
  ExpectFailure(Arguments("0"), "database '" + database_ +
                                    "' has the tables of sharing mode 8, not the tables of a full "
                                    "scan");
  ExpectFailure(Arguments("6"), "database '" + database_ +
                                    "' has the tables of sharing mode 8, not the tables of sharing "
                                    "mode 6");
  ExpectFailure({"scan", card_, database_},
                "database '" + database_ +
                    "' has the tables of sharing mode 8, not the tables of a full scan");
}

TEST_F(CardCommand, RefusesADatabaseThatIsNone) {
  const std::string path = dir_.Write("letter.txt", "Dear database, this is a letter to you.\n");
  ExpectFailure({"card", card_, path, "--mode", "0"},
                "database '" + path + "': file is not a database");
}

TEST_F(CardCommand, RefusesBadOptions) {
  EXPECT_EQ(Run({"card", card_, database_}).status, 1);
  for (const char* mode : {"-1", "two", ""}) {
    const ProcessResult result = Run(Arguments(mode));
    EXPECT_EQ(result.status, 1) << mode;
    EXPECT_TRUE(Contains(result.errors, "--mode")) << result.errors;
  }
  const ProcessResult both = Run(Arguments("0", {"--xq", "--backup"}));
  EXPECT_EQ(both.status, 1);
  EXPECT_TRUE(Contains(both.errors, "excludes")) << both.errors;
  EXPECT_FALSE(DatabaseExists());
}

TEST_F(CardCommand, ShowsHelpWithAnExample) {
  const ProcessResult result = Run({"card", "--help"});
  EXPECT_EQ(result.status, 0);
  for (const char* part : {"--mode", "--list", "--xq", "--backup", "Example: orxscan card "})
    EXPECT_TRUE(Contains(result.output, part)) << result.output;
}

}  // namespace
