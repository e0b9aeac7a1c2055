// Texts that are SQL, formats, shell commands or terminal escapes, in every place of the command
// line: they change nothing but what they name, and are printed as plain text.
#include <unistd.h>

#include <algorithm>

#include "tools/CommandTest.h"

namespace {

using orx_test::ProcessResult;

using Arguments = std::vector<std::string>;
using Contents = std::vector<std::string>;

const std::string kLong(600, 'x');

const std::string kTexts[] = {
    "it's",
    "say \"hi\"",
    "'; DROP TABLE ObjectTable; --",
    "\"; DROP TABLE ImageTable; --",
    "' OR 1=1 --",
    "\" OR \"1\"=\"1",
    "1 OR 1=1",
    "1; DELETE FROM ObjectTable",
    "ObjectTable\"; DROP TABLE ImageTable; --",
    "ObjectTable; DROP TABLE ImageTable; --",
    "DELETE FROM ObjectTable",
    "FullPath",
    "ID",
    "%",
    "_",
    "%s%n%1000000d{}{0}",
    "one\ntwo",
    "\xFF\xFE\xC0\x80",
    "\x1b[2J\x1b]0;title\x07",
    "\xC2\x9B\x32J",        // the escape as one character
    "\xE2\x80\xAEgpj.exe",  // turns the direction of writing
    "delete\x7f",
    "$(touch TOUCHED)",
    "`touch TOUCHED`; touch TOUCHED | tee TOUCHED & #",
    "file:memory?mode=memory&cache=shared",
    ":memory:",
    "-1",
    "---",
    "",
    kLong + "' OR 1=1 --",
};

// The texts that can be the name of a file.
std::vector<std::string> Names() {
  std::vector<std::string> names;
  for (const std::string& text : kTexts)
    if (!text.empty() && text.size() < 250) names.push_back(text);
  return names;
}

// No control characters but line ends, no character that turns the direction of writing, no bytes
// that are no UTF-8.
void ExpectPlain(const std::string& text, const std::string& lineEnds = "\n") {
  const auto byte = [&](size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u;
  };
  for (size_t i = 0; i < text.size(); ++i) {
    const bool control =
        byte(i) < 0x20 || byte(i) == 0x7F || (byte(i) == 0xC2 && byte(i + 1) < 0xA0);
    EXPECT_FALSE(control && lineEnds.find(text[i]) == std::string::npos) << text;
    EXPECT_FALSE(byte(i) == 0xC0 || byte(i) >= 0xF5) << text;
  }
  EXPECT_EQ(text.find("\xE2\x80\xAE"), std::string::npos) << text;
}

class HostileTextsTest : public orx_test::CommandTest {
 protected:
  HostileTextsTest() {
    for (const char* name : {"100%.JPG", "100_.JPG", "1000.JPG"})
      std::filesystem::copy(Picture(), card_ + "/DCIM/" + name);
    Scan();
    // Rows of files that are gone: whoever looks at them by mistake deletes them.
    const std::string gone = dir_.Path("gone");
    std::filesystem::copy(card_ + "/DCIM/100ORXSC", gone);
    EXPECT_EQ(Run({"scan", gone, database_, "--quiet"}).status, 0);
    std::filesystem::remove_all(gone);
    EXPECT_EQ(Run({"share", database_, dir_.Write("list.txt", Film())}).status, 0);
    std::filesystem::copy(database_, original_);
    before_ = Stored();
  }

  // All tables and rows, but the rows with a cell that begins with `except`.
  Contents Stored(const std::string& except = "") const {
    Contents contents;
    for (const auto& table : Select("SELECT name, type, sql FROM sqlite_master ORDER BY name")) {
      contents.push_back(table[0] + ": " + table[2]);
      if (table[1] != "table") continue;
      for (const auto& row : Select("SELECT * FROM " + table[0] + " ORDER BY rowid")) {
        std::string line = table[0];
        for (const std::string& cell : row) line += "|" + cell;
        if (except.empty() || line.find("|" + except) == std::string::npos)
          contents.push_back(line);
      }
    }
    return contents;
  }

  std::vector<Contents> Select(const std::string& sql) const {
    std::vector<Contents> rows;
    sqlite3* connection = nullptr;
    sqlite3_stmt* row = nullptr;
    EXPECT_EQ(sqlite3_open_v2(database_.c_str(), &connection, SQLITE_OPEN_READONLY, nullptr), 0);
    EXPECT_EQ(sqlite3_prepare_v2(connection, sql.c_str(), -1, &row, nullptr), SQLITE_OK)
        << sqlite3_errmsg(connection);
    while (row != nullptr && sqlite3_step(row) == SQLITE_ROW) {
      rows.emplace_back();
      for (int i = 0; i < sqlite3_column_count(row); ++i) {
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(row, i));
        const auto size = static_cast<size_t>(sqlite3_column_bytes(row, i));
        rows.back().push_back(text != nullptr ? std::string(text, size) : "NULL");
      }
    }
    sqlite3_finalize(row);
    sqlite3_close(connection);
    return rows;
  }

  void Restore() const {
    std::filesystem::copy_file(original_, database_,
                               std::filesystem::copy_options::overwrite_existing);
  }

  // Runs the command in an empty folder of its own, in which it may leave the file `made` alone.
  ProcessResult RunPlainly(const Arguments& arguments, const std::string& made = "") const {
    const std::string folder = dir_.MakeDir("work");
    const ProcessResult result = orx_test::RunProcess(CommandLine(arguments), {}, [&] {
      if (chdir(folder.c_str()) != 0) _exit(126);
    });
    EXPECT_LE(result.status, 2);
    ExpectPlain(result.output);
    ExpectPlain(result.errors);
    for (const auto& entry : std::filesystem::directory_iterator(folder))
      EXPECT_EQ(entry.path().filename().string(), made);
    std::filesystem::remove_all(folder);
    return result;
  }

  // A picture, and a folder with pictures, of such a name.
  std::string FileNamed(const std::string& name) const {
    const std::string path = dir_.MakeDir("files") + "/" + name + ".JPG";
    std::filesystem::copy_file(Picture(), path, std::filesystem::copy_options::overwrite_existing);
    return path;
  }
  std::string FolderNamed(const std::string& name) const {
    const std::string path = dir_.MakeDir("folders/" + name);
    std::filesystem::copy(card_ + "/DCIM/100ORXSC", path,
                          std::filesystem::copy_options::overwrite_existing);
    return path;
  }

  const std::string original_ = dir_.Path("original.db");
  Contents before_;
};

// ---- in every place of the command line ----

// A command line: "TEXT" stands for the text, DB, DIR and FILE for what the test has.
struct Place {
  const char* name;
  Arguments arguments;
};
void PrintTo(const Place& place, std::ostream* out) { *out << place.name; }

const Place kPlaces[] = {
    {"Command", {"TEXT", "DB"}},
    {"ScanFolder", {"scan", "TEXT", "DB"}},
    {"ScanDatabase", {"scan", "DIR", "TEXT"}},
    {"ScanMore", {"scan", "DIR", "DB", "TEXT"}},
    {"ScanProfiles", {"scan", "DIR", "DB", "--profiles", "TEXT"}},
    {"CardFolder", {"card", "TEXT", "DB", "--mode", "0"}},
    {"CardDatabase", {"card", "DIR", "TEXT", "--mode", "0"}},
    {"CardMode", {"card", "DIR", "DB", "--mode", "TEXT"}},
    {"CardList", {"card", "DIR", "DB", "--mode", "0", "--list", "TEXT"}},
    {"RegisterFile", {"register", "TEXT", "DB"}},
    {"RegisterDatabase", {"register", "FILE", "TEXT"}},
    {"RegisterParent", {"register", "FILE", "DB", "--parent", "TEXT"}},
    {"InfoFile", {"info", "TEXT"}},
    {"ShowDatabase", {"show", "TEXT"}},
    {"ShowTable", {"show", "DB", "TEXT"}},
    {"ShowTableAsJson", {"show", "DB", "TEXT", "--json"}},
    {"ShowLimit", {"show", "DB", "--limit", "TEXT"}},
    {"QueryDatabase", {"query", "TEXT", "SELECT 1"}},
    {"QueryStatement", {"query", "DB", "TEXT"}},
    {"QueryStatementAsJson", {"query", "DB", "TEXT", "--json"}},
    {"ShareDatabase", {"share", "TEXT"}},
    {"ShareList", {"share", "DB", "TEXT"}},
    {"BackupListDatabase", {"backup-list", "TEXT"}},
    {"DumpDatabase", {"dump", "TEXT"}},
    {"CheckDatabase", {"check", "TEXT"}},
    {"CheckFolder", {"check", "DB", "TEXT"}},
    {"CheckFolderAsJson", {"check", "DB", "TEXT", "--json"}},
    {"CheckFolderFromTheRoot", {"check", "DB", "/TEXT"}},
    {"DiffBefore", {"diff", "TEXT", "DB"}},
    {"DiffAfter", {"diff", "DB", "TEXT"}},
    {"SheetDatabase", {"sheet", "TEXT", "page.html"}},
    {"SheetCard", {"sheet", "DB", "page.html", "--card", "TEXT"}},
    {"SheetBefore", {"sheet", "DB", "page.html", "--before", "TEXT"}},
    {"SheetPage", {"sheet", "DB", "TEXT"}},
};

class HostileArgumentTest : public HostileTextsTest, public testing::WithParamInterface<Place> {};
INSTANTIATE_TEST_SUITE_P(Places, HostileArgumentTest, testing::ValuesIn(kPlaces),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(HostileArgumentTest, ChangesNothingInTheDatabase) {
  const bool makesPage = GetParam().arguments[0] == "sheet" && GetParam().arguments[2] != "TEXT";
  for (const std::string& text : kTexts) {
    Arguments arguments = GetParam().arguments;
    for (std::string& argument : arguments) {
      if (argument == "DB") argument = database_;
      if (argument == "DIR") argument = card_;
      if (argument == "FILE") argument = Picture();
      const size_t at = argument.find("TEXT");
      if (at != std::string::npos) argument.replace(at, 4, text);
    }
    SCOPED_TRACE(testing::PrintToString(arguments));
    RunPlainly(arguments, makesPage ? "page.html" : text);
    const Contents after = Stored();
    EXPECT_EQ(after, before_);
    if (after != before_) Restore();
  }
}

// ---- as names of files ----

TEST_F(HostileTextsTest, AsNamesOfRegisteredFilesAddNoOtherRow) {
  for (const std::string& name : Names()) {
    SCOPED_TRACE(testing::PrintToString(name));
    const std::string path = FileNamed(name);
    const bool taken = name.find('"') == std::string::npos;
    for (int time = 0; time < 2; ++time) {
      EXPECT_EQ(RunPlainly({"register", path, database_}).status, taken ? 0 : 1);
      EXPECT_EQ(Stored(path), before_);
      EXPECT_EQ(Stored().size(), before_.size() + (taken ? 2 : 0));
    }
    RunPlainly({"info", path});
    RunPlainly({"info", path, "--json"});
    Restore();
  }
}

TEST_F(HostileTextsTest, AsNamesOfScannedFoldersTouchNoOtherRow) {
  for (const std::string& name : Names()) {
    SCOPED_TRACE(testing::PrintToString(name));
    const std::string folder = FolderNamed(name);
    RunPlainly({"scan", folder, database_});
    EXPECT_EQ(Stored(folder), before_);
    const Contents once = Stored();
    RunPlainly({"scan", folder, database_, "--json"});
    EXPECT_EQ(Stored(), once);
    RunPlainly({"check", database_, folder});
    EXPECT_EQ(Stored(), once);
    for (const auto& entry : std::filesystem::directory_iterator(folder))
      std::filesystem::remove(entry.path());
    RunPlainly({"scan", folder, database_});
    EXPECT_EQ(Stored(folder), before_);
    EXPECT_LE(Stored().size(), before_.size() + 1);  // the folder's own
    Restore();
  }
}

TEST_F(HostileTextsTest, AsNamesOfDatabasesLeadToThoseFiles) {
  for (const std::string& name : Names()) {
    SCOPED_TRACE(testing::PrintToString(name));
    const std::string database = dir_.MakeDir("databases") + "/" + name;
    std::filesystem::copy(original_, database);
    for (const Arguments& arguments : {Arguments{"diff", database, database_},
                                       {"diff", database_, database},
                                       {"show", database},
                                       {"query", database, "SELECT 1"},
                                       {"backup-list", database},
                                       {"dump", database},
                                       {"check", database},
                                       {"share", database},
                                       {"register", Picture(), database},
                                       {"scan", card_, database}})
      EXPECT_EQ(RunPlainly(arguments).status, 0) << arguments[0];
    EXPECT_EQ(Stored(), before_);
    std::filesystem::remove(database);
    EXPECT_TRUE(std::filesystem::is_empty(dir_.Path("databases")));
  }
}

// ---- in lists ----

class HostileListTest : public HostileTextsTest {
 protected:
  // What the list of one entry leaves in the database.
  Contents AfterSharing(const std::string& entries) const {
    Restore();
    EXPECT_EQ(RunPlainly({"share", database_, dir_.Write("list.txt", entries)}).status, 0);
    return Stored();
  }
};

TEST_F(HostileListTest, SharesNothingElse) {
  const Contents none = AfterSharing("harmless.JPG\n");
  const Contents one = AfterSharing(Picture() + "\n");
  ASSERT_NE(none, one);
  for (const std::string& text : kTexts) {
    SCOPED_TRACE(testing::PrintToString(text));
    EXPECT_EQ(AfterSharing(text + "\n"), none);
    EXPECT_EQ(AfterSharing(text + ".JPG\n" + Picture() + "\n" + text + ".MP4\n"), one);
    EXPECT_EQ(AfterSharing(Picture() + "\n" + card_ + "/DCIM/" + text + ".JPG\n"), one);
    EXPECT_EQ(AfterSharing(Picture() + text + "\n" + Picture()), one);
  }
}

TEST_F(HostileListTest, SharesNoMoreThanTheNameOfAFileThatLooksLikeAPattern) {
  for (const std::string name : {"100%.JPG", "100_.JPG"}) {
    AfterSharing(card_ + "/DCIM/" + name);
    EXPECT_EQ(Cell("SELECT group_concat(FullPath) FROM ImageTable WHERE Share = 1"),
              card_ + "/DCIM/" + name);
  }
}

TEST_F(HostileListTest, ChangesNoOtherRowOfACard) {
  const std::string folder = "/mnt/mmc/DCIM/100ORXSC/";
  const std::string first = folder + "ORXA0001.JPG\n", second = folder + "ORXA0002.JPG\n";
  for (const std::string mode : {"0", "6", "8"}) {
    const auto scan = [&](const std::string& list) {
      std::filesystem::remove(database_);
      return RunPlainly(
          {"card", card_, database_, "--mode", mode, "--list", dir_.Write("list.txt", list)});
    };
    // The tables, and what is recorded of the two pictures but the numbers that count upwards.
    const auto neighbours = [&] {
      return Select(
          "SELECT name, sql, '', '' FROM sqlite_master UNION ALL "
          "SELECT FullPath, class, parentID, '' FROM ObjectTable "
          "WHERE FullPath LIKE '%/ORXA000_.JPG' ORDER BY 1");
    };
    const ProcessResult harmless = scan(second + first);
    if (Contains(harmless.errors, "namespace")) GTEST_SKIP() << harmless.errors;
    ASSERT_EQ(harmless.status, 0) << harmless.errors;
    const auto expected = neighbours();
    for (const std::string& text : kTexts) {
      SCOPED_TRACE(mode + " " + testing::PrintToString(text));
      const ProcessResult refused = scan(second + text + "x\n" + first);
      EXPECT_EQ(refused.status, 1);
      EXPECT_FALSE(DatabaseExists());
      // A text with a line end makes two lines, of which one names no file of a card.
      const ProcessResult result =
          scan(second + folder + text + ".JPG\n" + folder + text + ".MP4\n" + first);
      EXPECT_EQ(result.status, Contains(text, "\n") ? 1 : 0) << result.errors;
      if (result.status == 0) {
        EXPECT_EQ(neighbours(), expected);
      }
    }
  }
}

// ---- in the database ----

std::string AsLiteral(const std::string& text) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string hex;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    hex += {kDigits[byte >> 4], kDigits[byte & 0xF]};
  }
  return "CAST(x'" + hex + "' AS TEXT)";
}

class HostileCellsTest : public HostileTextsTest {
 protected:
  // Puts the text into every cell that holds one.
  void Fill(const std::string& text) const {
    for (const char* table : {"ObjectTable", "ImageTable", "VideoTable", "AudioTable"})
      for (const auto& column :
           Select("SELECT name FROM pragma_table_info('" + std::string(table) +
                  "') WHERE lower(name) NOT IN ('id', 'class', 'parentid', 'fullpath')"))
        Execute("UPDATE " + std::string(table) + " SET \"" + column[0] + "\" = " + AsLiteral(text));
    for (const char* table : {"ObjectTable", "ImageTable", "VideoTable", "AudioTable"})
      Execute("UPDATE " + std::string(table) + " SET FullPath = FullPath || " + AsLiteral(text));
  }

  std::vector<Arguments> Readers() const {
    return {{"show", database_},
            {"show", database_, "--json"},
            {"query", database_, "SELECT * FROM ObjectTable"},
            {"query", database_, "SELECT * FROM ImageTable", "--json"},
            {"backup-list", database_},
            {"backup-list", database_, "--json"},
            {"dump", database_},
            {"check", database_, card_},
            {"check", database_, card_, "--json"},
            {"diff", original_, database_},
            {"diff", original_, database_, "--json"},
            {"diff", database_, original_}};
  }
};

TEST_F(HostileCellsTest, AreShownAsPlainTextAndStayAsTheyAre) {
  for (const std::string& text : kTexts) {
    SCOPED_TRACE(testing::PrintToString(text));
    Fill(text);
    const Contents filled = Stored();
    for (const Arguments& arguments : Readers()) RunPlainly(arguments);
    EXPECT_EQ(Stored(), filled);
    Restore();
  }
}

TEST_F(HostileCellsTest, WithANulAreShownAsPlainText) {
  Fill(std::string("\0\x1b[2J\0", 6));
  for (const Arguments& arguments : Readers()) RunPlainly(arguments);
}

TEST_F(HostileCellsTest, AreShownAsPlainTextOnATerminal) {
  for (const char* text :
       {"\x1b[2J\x1b]0;title\x07", "\xC2\x9B\x32J", "\r\b\b", "\xE2\x80\xAEgpj"}) {
    Fill(text);
    for (const Arguments& arguments : Readers())
      ExpectPlain(orx_test::RunOnTerminal(CommandLine(arguments)).output, "\r\n");
    Restore();
  }
}

TEST_F(HostileTextsTest, AsNamesOfFilesAreDrawnAsPlainTextOnATerminal) {
  for (const std::string& name : Names()) FolderNamed(name);
  const ProcessResult result =
      orx_test::RunOnTerminal(CommandLine({"scan", dir_.Path("folders"), dir_.Path("new.db")}));
  EXPECT_EQ(result.status, 0);
  ExpectPlain(result.output, "\r\n");
}

TEST_F(HostileTextsTest, OfTheDatabaseAreSharedByTheirNameAlone) {
  const std::string name = card_ + "/DCIM/' OR 1=1 --.JPG";
  Execute("UPDATE ImageTable SET Share = 0; UPDATE VideoTable SET Share = 0");
  Execute("UPDATE ImageTable SET FullPath = " + AsLiteral(name) + " WHERE FullPath = '" +
          Picture() + "'");
  const Contents hidden = Stored();
  EXPECT_EQ(RunPlainly({"share", database_, dir_.Write("list.txt", name)}).status, 0);
  EXPECT_EQ(Stored(), hidden);
}

}  // namespace
