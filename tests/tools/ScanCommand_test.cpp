#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "tools/CommandTest.h"

namespace {

using nlohmann::json;
using orx_test::ProcessResult;
using orx_test::RunOnTerminal;
using orx_test::RunProcess;
using orx_test::Terminal;

class ScanCommand : public orx_test::CommandTest {
 protected:
  static std::string ReasonFor(const json& summary, const std::string& path) {
    for (const json& refusal : summary["refused"])
      if (refusal["path"] == path) return refusal["reason"];
    return "(not refused)";
  }
  std::string Refused(const std::string& name, const std::string& content) {
    const std::string path = dir_.Write("card/" + name, content);
    return ReasonFor(Scan(), path);
  }
  // Enough files for a scan that a signal reaches while it runs.
  void AddManyPictures(int count) const {
    std::filesystem::create_directories(card_ + "/DCIM/900MANYS");
    for (int i = 0; i < count; ++i)
      std::filesystem::create_hard_link(
          Picture(), card_ + "/DCIM/900MANYS/P" + std::to_string(1000000 + i) + ".JPG");
  }
};

json Change(int added, int removed, int total) {
  return {{"added", added}, {"removed", removed}, {"total", total}};
}

TEST_F(ScanCommand, MakesADatabaseOfTheCard) {
  const json summary = Scan();
  EXPECT_EQ(summary["folder"], card_);
  EXPECT_EQ(summary["database"], database_);
  EXPECT_EQ(summary["cancelled"], false);
  EXPECT_EQ(summary["files"], 11);
  EXPECT_EQ(summary["folders"], Change(5, 0, 5));
  EXPECT_EQ(summary["pictures"], Change(4, 0, 4));
  EXPECT_EQ(summary["films"], Change(3, 0, 3));
  EXPECT_EQ(summary["sounds"], Change(2, 0, 2));
  EXPECT_EQ(Cell("SELECT count(*) FROM ImageTable"), "4");
  EXPECT_EQ(Cell("SELECT Description FROM ImageTable WHERE FullPath = '" + Picture() + "'"),
            "Harbour at dawn");
}

TEST_F(ScanCommand, TellsWhatItRefusesAndWhy) {
  const json summary = Scan();
  ASSERT_EQ(summary["refused"].size(), 2u);
  EXPECT_EQ(ReasonFor(summary, card_ + "/README.TXT"),
            "not recognised as a picture, film or sound");
  EXPECT_EQ(ReasonFor(summary, card_ + "/DCIM/101ORXSC/ORXA0004.JPG"), "no readable EXIF block");
}

TEST_F(ScanCommand, TellsAnEmptyFile) { EXPECT_EQ(Refused("a.jpg", ""), "the file is empty"); }

TEST_F(ScanCommand, TellsAPictureThatIsNoJpeg) {
  EXPECT_EQ(Refused("a.jpg", "plain text"), "not a JPEG picture");
}

TEST_F(ScanCommand, TellsAFilmWithoutTracks) {
  EXPECT_EQ(Refused("a.mp4", "plain text, longer than a header"),
            "no film or sound track found in it");
}

TEST_F(ScanCommand, TellsAFormatWithoutReader) {
  EXPECT_EQ(Refused("a.mp3", "ID3 and more of it"), "no reader for .mp3 files");
}

TEST_F(ScanCommand, TellsAFileThatIsNone) {
  const std::string path = card_ + "/pipe.jpg";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(ReasonFor(Scan(), path), "not a regular file");
}

TEST_F(ScanCommand, TellsAPathThatIsTooLong) {
  std::string folder = card_;
  while (folder.size() < 400) folder += "/" + std::string(80, 'x');
  std::filesystem::create_directories(folder);
  const std::string path = folder + "/" + std::string(120, 'y') + ".jpg";
  std::filesystem::copy(Picture(), path);
  EXPECT_EQ(ReasonFor(Scan(), path), "its path is too long");
}

TEST_F(ScanCommand, TellsAPathThatTheDatabaseCannotHold) {
  const std::string path = card_ + "/say \"cheese\".jpg";
  std::filesystem::copy(Picture(), path);
  EXPECT_EQ(ReasonFor(Scan(), path), "its path has a double quote in it");
}

TEST_F(ScanCommand, TellsADescriptionThatTheDatabaseCannotHold) {
  std::ifstream file(Picture(), std::ios::binary);
  std::string content((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  content.replace(content.find("Harbour at dawn"), 7, "\"Haven\"");
  EXPECT_EQ(Refused("quoted.jpg", content), "its description has a double quote in it");
}

TEST_F(ScanCommand, TellsAMimeTypeThatIsNotServed) {
  const std::string list = dir_.Write("profiles.txt", "http-get:*:image/jpeg:*");
  const json summary = Scan({"--profiles", list});
  EXPECT_EQ(summary["pictures"], Change(4, 0, 4));
  EXPECT_EQ(summary["films"]["added"], 1);  // the one without a profile of its own
  EXPECT_EQ(ReasonFor(summary, Film()), "its MIME type, video/mp4, is not served");
}

TEST_F(ScanCommand, CountsTheProfiles) {
  const json summary = Scan();
  int items = 0;
  bool small = false;
  for (const json& row : summary["profiles"]) {
    items += row["count"].get<int>();
    small = small || (row["profile"] == "JPEG_SM" && row["mimeType"] == "image/jpeg");
  }
  EXPECT_EQ(items, 9);
  EXPECT_TRUE(small);
}

TEST_F(ScanCommand, GivesEveryFilmTheCertificationProfile) {
  Scan({"--certification"});
  EXPECT_EQ(Cell("SELECT count(*) FROM VideoTable"), "3");
  EXPECT_EQ(Cell("SELECT count(*) FROM VideoTable WHERE DLNAProfile = 'AVC_MP4_BL_CIF15_AAC_520'"),
            "3");
}

TEST_F(ScanCommand, FindsNothingNewASecondTime) {
  Scan();
  const json summary = Scan();
  EXPECT_EQ(summary["folders"], Change(0, 0, 5));
  EXPECT_EQ(summary["pictures"], Change(0, 0, 4));
  EXPECT_EQ(summary["films"], Change(0, 0, 3));
  EXPECT_EQ(summary["sounds"]["total"], 2);
}

TEST_F(ScanCommand, ReconcilesWhatCameAndWent) {
  Scan();
  std::filesystem::remove(Film());
  std::filesystem::copy(Picture(), card_ + "/DCIM/100ORXSC/ORXA0099.JPG");
  const json summary = Scan();
  EXPECT_EQ(summary["pictures"], Change(1, 0, 5));
  EXPECT_EQ(summary["films"], Change(0, 1, 2));
}

TEST_F(ScanCommand, StoresPathsWithoutASlashAtTheEndOfTheFolder) {
  const ProcessResult result = Run({"scan", card_ + "//DCIM/../", database_, "--quiet"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(Cell("SELECT FullPath FROM ObjectTable WHERE id = 1"), card_);
}

TEST_F(ScanCommand, PrintsASummary) {
  const ProcessResult result = Run({"scan", card_, database_});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_TRUE(Contains(result.output, "Refused:\n")) << result.output;
  EXPECT_TRUE(Contains(result.output, "  " + card_ +
                                          "/README.TXT: not recognised as a picture, film or "
                                          "sound\n"));
  EXPECT_TRUE(Contains(result.output, "JPEG_SM"));
  EXPECT_TRUE(
      Contains(result.output, "Scanned " + card_ + " into " + database_ + ": 11 files in "));
  EXPECT_TRUE(Contains(result.output, "  pictures         4        0            4\n"));
  EXPECT_TRUE(Contains(result.output, "  refused          2\n"));
  EXPECT_FALSE(Contains(result.output, "\r"));
  EXPECT_FALSE(Contains(result.output, "TANDEMIX"));
}

TEST_F(ScanCommand, SaysNothingWhenQuiet) {
  const ProcessResult result = Run({"scan", card_, database_, "--quiet"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(Cell("SELECT count(*) FROM ImageTable"), "4");
}

TEST_F(ScanCommand, LetsNoControlCharactersOfANameThrough) {
  dir_.Write("card/\x1b[2Jhello\n.txt", "x");
  const ProcessResult result = Run({"scan", card_, database_});
  EXPECT_EQ(result.status, 0);
  EXPECT_FALSE(Contains(result.output, "\x1b"));
  EXPECT_TRUE(Contains(result.output, "/\\x1b[2Jhello\\x0a.txt: not recognised"));
}

TEST_F(ScanCommand, WritesValidJsonWhateverTheNames) {
  dir_.Write("card/\xff\xfe name \xc3.txt", "x");
  const json summary = Scan();
  EXPECT_NE(ReasonFor(summary, card_ + "/\xEF\xBF\xBD\xEF\xBF\xBD name \xEF\xBF\xBD.txt"),
            "(not refused)");
}

TEST_F(ScanCommand, CutsALongListOfRefusals) {
  for (int i = 0; i < 120; ++i) dir_.Write("card/" + std::to_string(i) + ".txt", "x");
  const ProcessResult result = Run({"scan", card_, database_});
  EXPECT_TRUE(Contains(result.output, "  and 22 more (--json lists them all)\n"));
}

TEST_F(ScanCommand, LeavesItsOwnDatabaseOutOfTheAccount) {
  const std::string inside = card_ + "/media.db";
  const ProcessResult result = Run({"scan", card_, inside, "--json"});
  EXPECT_EQ(json::parse(result.output)["files"], 11);
}

TEST_F(ScanCommand, CountsTheFilesBehindLinksAsTheScanFollowsThem) {
  const std::string folders = dir_.MakeDir("folders");
  std::filesystem::create_directory(folders + "/real");
  std::filesystem::copy(Picture(), folders + "/real/a.jpg");
  for (int i = 0; i < 1010; ++i)
    std::filesystem::create_directory_symlink("real", folders + "/" + std::to_string(i));
  const ProcessResult result = Run({"scan", folders, database_, "--json"});
  EXPECT_EQ(result.status, 0) << result.errors;
  const json summary = json::parse(result.output);
  EXPECT_EQ(summary["files"], 1001);  // once, and a thousand times through a link
  EXPECT_EQ(summary["pictures"], Change(1001, 0, 1001));
  EXPECT_EQ(summary["refused"], json::array());
}

TEST_F(ScanCommand, ReadsAnEmptyFolder) {
  const std::string empty = dir_.MakeDir("empty");
  const ProcessResult result = Run({"scan", empty, database_, "--json"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(json::parse(result.output)["folders"], Change(1, 0, 1));
}

// ---- on a terminal ----

TEST_F(ScanCommand, ShowsItsProgressOnATerminal) {
  const ProcessResult result = RunOnTerminal(CommandLine({"scan", card_, database_}));
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(Contains(result.output, "\r0 of 11 files  ")) << result.output;
  EXPECT_TRUE(Contains(result.output, "\r11 of 11 files  ")) << result.output;
  EXPECT_TRUE(Contains(result.output, "Scanned "));
}

TEST_F(ScanCommand, CountsKnownFilesAsDoneOnATerminal) {
  Scan();
  const ProcessResult result = RunOnTerminal(CommandLine({"scan", card_, database_}));
  EXPECT_TRUE(Contains(result.output, "\r9 of 11 files  ")) << result.output;
  EXPECT_TRUE(Contains(result.output, "\r11 of 11 files  ")) << result.output;
}

TEST_F(ScanCommand, ShowsNoProgressOnATerminalWhenQuietOrForPrograms) {
  EXPECT_EQ(RunOnTerminal(CommandLine({"scan", card_, database_, "--quiet"})).output, "");
  const ProcessResult result = RunOnTerminal(CommandLine({"scan", card_, database_, "--json"}));
  EXPECT_FALSE(Contains(result.output, " of 11 files"));
}

TEST_F(ScanCommand, KeepsWhatWasDoneWhenInterrupted) {
  AddManyPictures(8000);
  bool sent = false;
  const ProcessResult result = RunOnTerminal(
      CommandLine({"scan", card_, database_}), [&](const std::string& output, Terminal terminal) {
        // "\r25 of 8011 files": with more files than the card has of other kinds.
        const size_t line = output.rfind('\r');
        if (sent || line == std::string::npos || atoi(output.c_str() + line + 1) < 20) return;
        sent = true;
        EXPECT_EQ(write(terminal.descriptor, "\x03", 1), 1);  // Ctrl-C
      });
  EXPECT_TRUE(sent);
  EXPECT_EQ(result.status, 130) << result.output;
  EXPECT_TRUE(Contains(result.output, "Cancelled: scanned part of " + card_)) << result.output;
  const int pictures = std::stoi(Cell("SELECT count(*) FROM ImageTable"));
  EXPECT_GT(pictures, 0);
  EXPECT_LT(pictures, 8004);
  EXPECT_EQ(Cell("PRAGMA integrity_check"), "ok");
}

TEST_F(ScanCommand, GoesOnWhereItWasInterrupted) {
  AddManyPictures(1500);
  bool sent = false;
  const ProcessResult cancelled = RunOnTerminal(CommandLine({"scan", card_, database_}),
                                                [&](const std::string&, Terminal terminal) {
                                                  if (!sent) kill(terminal.process, SIGTERM);
                                                  sent = true;
                                                });
  EXPECT_EQ(cancelled.status, 130) << cancelled.output;
  const json summary = Scan();
  EXPECT_EQ(summary["pictures"]["total"], 1504);
  EXPECT_EQ(Cell("SELECT count(*) FROM ImageTable"), "1504");
  EXPECT_EQ(Cell("SELECT count(DISTINCT FullPath) FROM ImageTable"), "1504");
}

// ---- what cannot be done ----

TEST_F(ScanCommand, RefusesAMissingFolder) {
  ExpectFailure({"scan", dir_.Path("gone"), database_},
                "folder '" + dir_.Path("gone") + "': No such file or directory");
  EXPECT_FALSE(DatabaseExists());
}

TEST_F(ScanCommand, RefusesAFileGivenAsFolder) {
  ExpectFailure({"scan", Picture(), database_}, "'" + Picture() + "' is not a folder");
  EXPECT_FALSE(DatabaseExists());
}

TEST_F(ScanCommand, RefusesEmptyNames) {
  ExpectFailure({"scan", "", database_}, "the name of the folder is empty");
  ExpectFailure({"scan", card_, ""}, "the name of the database is empty");
}

TEST_F(ScanCommand, RefusesAFolderGivenAsDatabase) {
  ExpectFailure({"scan", card_, dir_.path()}, "database '" + dir_.path() + "' is a folder");
  ExpectFailure({"scan", card_, dir_.Path("new/")},
                "database '" + dir_.Path("new/") + "': this is the name of a folder");
}

TEST_F(ScanCommand, RefusesADatabaseInAMissingFolder) {
  ExpectFailure({"scan", card_, dir_.Path("gone/media.db")},
                "database '" + dir_.Path("gone/media.db") + "': folder '" + dir_.Path("gone") +
                    "': No such file or directory");
  EXPECT_FALSE(std::filesystem::exists(dir_.Path("gone")));
}

TEST_F(ScanCommand, RefusesADatabaseBelowAFile) {
  ExpectFailure({"scan", card_, Picture() + "/media.db"},
                "database '" + Picture() + "/media.db': Not a directory");
}

TEST_F(ScanCommand, RefusesADatabaseThatIsNotSqlite) {
  const std::string path = dir_.Write("letter.txt", "Dear database, this is a letter to you.\n");
  ExpectFailure({"scan", card_, path}, "database '" + path + "': file is not a database");
  std::ifstream file(path);
  std::string content;
  std::getline(file, content);
  EXPECT_EQ(content, "Dear database, this is a letter to you.");
}

TEST_F(ScanCommand, RefusesAnEmptyDatabaseFile) {
  const std::string path = dir_.Write("empty.db", "");
  ExpectFailure({"scan", card_, path}, "database '" + path + "' is an empty file; delete it first");
  EXPECT_EQ(std::filesystem::file_size(path), 0u);
}

TEST_F(ScanCommand, RefusesADatabaseOfSomethingElse) {
  const std::string path = dir_.Path("other.db");
  sqlite3* connection = nullptr;
  ASSERT_EQ(sqlite3_open(path.c_str(), &connection), SQLITE_OK);
  sqlite3_exec(connection, "CREATE TABLE Songs(id)", nullptr, nullptr, nullptr);
  sqlite3_close(connection);
  ExpectFailure({"scan", card_, path}, "'" + path + "' is not a media database");
}

TEST_F(ScanCommand, RefusesADatabaseThatIsLocked) {
  Scan();
  sqlite3* connection = nullptr;
  ASSERT_EQ(sqlite3_open(database_.c_str(), &connection), SQLITE_OK);
  sqlite3_exec(connection, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
  ExpectFailure({"scan", card_, database_}, "database '" + database_ + "': database is locked");
  sqlite3_close(connection);
}

TEST_F(ScanCommand, RefusesADeviceAsDatabase) {
  ExpectFailure({"scan", card_, "/dev/null"}, "database '/dev/null' is not a regular file");
}

TEST_F(ScanCommand, RefusesADatabaseThatCannotBeWritten) {
  if (geteuid() == 0) GTEST_SKIP() << "root may write everywhere";
  Scan();
  ASSERT_EQ(chmod(database_.c_str(), 0400), 0);
  ExpectFailure({"scan", card_, database_}, "database '" + database_ + "': Permission denied");
}

TEST_F(ScanCommand, RefusesAFolderThatCannotHoldADatabase) {
  ExpectFailure({"scan", card_, "/proc/media.db"},
                geteuid() == 0 ? "database '/proc/media.db': it cannot be opened"
                               : "database '/proc/media.db': folder '/proc': Permission denied");
}

TEST_F(ScanCommand, TakesNoNameForOneOfSqlitesOwn) {
  const ProcessResult result =
      RunProcess({"/bin/sh", "-c",
                  "cd '" + dir_.path() + "' && '" ORXSCAN_COMMAND "' scan card :memory: --quiet"});
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(std::filesystem::exists(dir_.Path(":memory:")));
}

TEST_F(ScanCommand, RefusesProfilesThatAreNone) {
  ExpectFailure({"scan", card_, database_, "--profiles", dir_.Path("gone")},
                "file '" + dir_.Path("gone") + "': No such file or directory");
  ExpectFailure({"scan", card_, database_, "--profiles", card_},
                "'" + card_ + "' is a folder, not a file");
  const std::string blank = dir_.Write("blank", " \n");
  ExpectFailure({"scan", card_, database_, "--profiles", blank},
                "'" + blank + "' holds no profiles");
  const std::string binary = dir_.Write("binary", std::string("a\0b", 3));
  ExpectFailure({"scan", card_, database_, "--profiles", binary},
                "'" + binary + "' is not a text file");
  const std::string large = dir_.Write("large", std::string((1 << 20) + 1, 'x'));
  ExpectFailure({"scan", card_, database_, "--profiles", large},
                "'" + large + "' is too large for a list of profiles");
  EXPECT_FALSE(DatabaseExists());
}

TEST_F(ScanCommand, SaysWhenItsOutputCannotBeWritten) {
  const ProcessResult result =
      RunProcess({"/bin/sh", "-c",
                  "'" ORXSCAN_COMMAND "' scan '" + card_ + "' '" + database_ + "' > /dev/full"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.errors, "orxscan: cannot write the output\n");
}

}  // namespace
