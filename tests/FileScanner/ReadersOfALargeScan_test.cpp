// Readers beside a scan that changes more than SQLite's cache holds.
#include <sqlite3.h>

#include <string>

#include "support/JpegBuilder.h"
#include "support/ScannerFixture.h"

namespace orx_test {
namespace {

std::string database;
long linesUntilALook = 0;
int answered = 0;
int lockedOut = 0;

// Looks into the database as a server does, without waiting.
void Look() {
  sqlite3* connection = nullptr;
  ASSERT_EQ(sqlite3_open_v2(database.c_str(), &connection, SQLITE_OPEN_READONLY, nullptr),
            SQLITE_OK);
  const int code =
      sqlite3_exec(connection, "select count(*) from ObjectTable", nullptr, nullptr, nullptr);
  sqlite3_close(connection);
  ASSERT_TRUE(code == SQLITE_OK || code == SQLITE_BUSY) << code;
  ++(code == SQLITE_OK ? answered : lockedOut);
}

void LookNowAndThen(const LogLine& /*line*/) {
  if (++linesUntilALook % 500 == 0) Look();
}

class ReadersOfALargeScan : public ScannerTest {
 protected:
  // Scans an empty card, and once more when it holds some thousand pictures.
  void ScanManyFiles(const char* journalMode) {
    database = db_;
    Scan();
    sqlite3* connection = nullptr;
    ASSERT_EQ(sqlite3_open(db_.c_str(), &connection), SQLITE_OK);
    const std::string sql = std::string("pragma journal_mode=") + journalMode;
    ASSERT_EQ(sqlite3_exec(connection, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(connection);
    const std::string picture = MakeJpeg();
    for (int file = 0; file < 4000; ++file)
      Write("100PHOTO/IMGA" + std::to_string(1000 + file) + ".JPG", picture);
    answered = lockedOut = 0;
    linesUntilALook = 0;
    platform().onLog = LookNowAndThen;
    Scan();
    platform().onLog = nullptr;
  }
};

TEST_F(ReadersOfALargeScan, AreLockedOutForAPartOfIt) {
  ScanManyFiles("delete");
  EXPECT_GT(answered, 0);
  EXPECT_GT(lockedOut, 0);
}

TEST_F(ReadersOfALargeScan, AreNotWithAWriteAheadLog) {
  ScanManyFiles("wal");
  EXPECT_GT(answered, 0);
  EXPECT_EQ(lockedOut, 0);
}

}  // namespace
}  // namespace orx_test
