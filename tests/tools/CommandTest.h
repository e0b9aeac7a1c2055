// The command in a folder of its own, with a copy of the sample card.
#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/TempDir.h"
#include "tools/Process.h"

namespace orx_test {

class CommandTest : public testing::Test {
 protected:
  CommandTest() {
    std::filesystem::copy(ORXSCAN_SAMPLE_CARD, card_, std::filesystem::copy_options::recursive);
  }

  static std::vector<std::string> CommandLine(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), ORXSCAN_COMMAND);
    return arguments;
  }
  static ProcessResult Run(const std::vector<std::string>& arguments) {
    return RunProcess(CommandLine(arguments));
  }
  nlohmann::json Scan(std::vector<std::string> more = {}) const {
    std::vector<std::string> arguments = {"scan", card_, database_, "--json"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const ProcessResult result = Run(arguments);
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    return nlohmann::json::parse(result.output);
  }

  // The command fails with `message` as its one line on standard error, and says nothing else.
  static void ExpectFailure(const std::vector<std::string>& arguments, const std::string& message) {
    const ProcessResult result = Run(arguments);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "orxscan: " + message + "\n");
  }

  // The first cell of the query's first row, empty when there is none.
  std::string Cell(const std::string& sql) const {
    std::string cell;
    sqlite3* connection = nullptr;
    sqlite3_stmt* statement = nullptr;
    EXPECT_EQ(sqlite3_open_v2(database_.c_str(), &connection, SQLITE_OPEN_READONLY, nullptr), 0);
    EXPECT_EQ(sqlite3_prepare_v2(connection, sql.c_str(), -1, &statement, nullptr), SQLITE_OK)
        << sqlite3_errmsg(connection) << " in " << sql;
    if (statement != nullptr && sqlite3_step(statement) == SQLITE_ROW) {
      const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
      cell = text != nullptr ? text : "NULL";
    }
    sqlite3_finalize(statement);
    sqlite3_close(connection);
    return cell;
  }

  // Runs statements on the database, which is made when it is not there.
  void Execute(const std::string& sql) const {
    sqlite3* connection = nullptr;
    EXPECT_EQ(sqlite3_open(database_.c_str(), &connection), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(connection, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(connection) << " in " << sql;
    sqlite3_close(connection);
  }
  // Databases of the sharing modes 8 and 6, with a folder and a picture each.
  void MakeObjectOnlyDatabase() const {
    Execute(
        "CREATE TABLE ObjectTable (id INTEGER PRIMARY KEY, Title, class, date, size, parentID,"
        " FullPath, uri, Thumbnailuri, Screennailuri, Height, Width, VideoFrameRate, VideoBitrate,"
        " SortIndex);"
        "INSERT INTO ObjectTable (Title, class, parentID, FullPath, SortIndex) VALUES"
        " (' ', 0, '0', '/mnt/mmc/DCIM', ' '),"
        " ('ORXA0001', 1, '1', '/mnt/mmc/DCIM/100ORXSC/ORXA0001.JPG', '1000001')");
  }
  void MakeBackupDatabase() const {
    Execute(
        "CREATE TABLE ObjectTable (id INTEGER PRIMARY KEY, Title, class, date, size, parentID,"
        " FullPath, MimeType, SortIndex, Valid, BackupID, IsBackup);"
        "INSERT INTO ObjectTable (Title, class, parentID, FullPath, SortIndex, IsBackup) VALUES"
        " (' ', 0, '0', '/mnt/mmc/DCIM', ' ', 0),"
        " ('ORXA0001', 1, '1', '/mnt/mmc/DCIM/100ORXSC/ORXA0001.JPG', '1000001', 0)");
  }

  static bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
  }

  std::string Picture() const { return card_ + "/DCIM/100ORXSC/ORXA0001.JPG"; }
  std::string Film() const { return card_ + "/DCIM/101ORXSC/ORXA0001.MP4"; }
  std::string Sound() const { return card_ + "/MUSIC/TRACK01.M4A"; }
  bool DatabaseExists() const { return std::filesystem::exists(database_); }

  const TempDir dir_;
  const std::string card_ = dir_.Path("card");
  const std::string database_ = dir_.Path("media.db");
};

}  // namespace orx_test
