#include "tools/CommandTest.h"

namespace {

using orx_test::ProcessResult;

class DumpCommand : public orx_test::CommandTest {
 protected:
  std::string Dump() const {
    const ProcessResult result = Run({"dump", database_});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    return result.output;
  }
};

TEST_F(DumpCommand, PrintsOneRowALine) {
  MakeBackupDatabase();
  Execute("DELETE FROM ObjectTable WHERE id = 2");
  EXPECT_EQ(Dump(),
            "\nid    Title    class    date    size    parentID    FullPath    MimeType    "
            "SortIndex    Valid    BackupID    IsBackup    \n\n"
            "1         0            0    /mnt/mmc/DCIM                     0    \n");
}

TEST_F(DumpCommand, PrintsEveryTableButTheUnused) {
  Scan();
  const std::string text = Dump();
  for (const char* column : {"IsBackup", "ScreennailOffset", "VideoLevel", "AlbumArtist"})
    EXPECT_TRUE(Contains(text, column)) << column;
  EXPECT_FALSE(Contains(text, "writeStatus"));
  EXPECT_TRUE(Contains(text, "Harbour at dawn    "));
  EXPECT_FALSE(Contains(text, "OpenDB"));
}

TEST_F(DumpCommand, LetsNoControlCharactersThrough) {
  MakeObjectOnlyDatabase();
  Execute("UPDATE ObjectTable SET Title = char(27) || '[2J' || char(10) || 'x'");
  const std::string text = Dump();
  EXPECT_FALSE(Contains(text, "\x1b"));
  EXPECT_TRUE(Contains(text, "\\x1b[2J\\x0ax    "));
}

TEST_F(DumpCommand, SaysWhenItsOutputCannotBeWritten) {
  MakeBackupDatabase();
  const ProcessResult result = orx_test::RunProcess(
      {"/bin/sh", "-c", "'" ORXSCAN_COMMAND "' dump '" + database_ + "' > /dev/full"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.errors, "orxscan: cannot write the output\n");
}

}  // namespace
