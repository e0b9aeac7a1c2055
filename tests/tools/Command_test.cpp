#include "tools/CommandTest.h"

namespace {

using orx_test::ProcessResult;

class Command : public orx_test::CommandTest {
 protected:
  static void ExpectUsageError(const std::vector<std::string>& arguments, const std::string& part) {
    const ProcessResult result = Run(arguments);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors.find("orxscan: "), 0u) << result.errors;
    EXPECT_EQ(result.errors.find('\n'), result.errors.size() - 1) << result.errors;
    EXPECT_NE(result.errors.find(part), std::string::npos) << result.errors;
  }
};

TEST_F(Command, ShowsHelp) {
  const ProcessResult result = Run({"--help"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
  for (const char* word : {"scan", "register", "info", "130 cancelled"})
    EXPECT_NE(result.output.find(word), std::string::npos) << result.output;
  EXPECT_NE(Run({"scan", "--help"}).output.find("--profiles"), std::string::npos);
}

TEST_F(Command, TellsItsVersion) {
  const ProcessResult result = Run({"--version"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output.find("orxscan "), 0u);
}

TEST_F(Command, RefusesBadArgumentsWithOneLine) {
  ExpectUsageError({}, "subcommand is required");
  ExpectUsageError({"polish"}, "there is no command 'polish'");
  ExpectUsageError({"scan"}, "DIR is required");
  ExpectUsageError({"scan", card_}, "DB is required");
  ExpectUsageError({"scan", card_, database_, "third"}, "third");
  ExpectUsageError({"scan", card_, database_, "--fast"}, "--fast");
  ExpectUsageError({"scan", card_, database_, "--profiles"}, "--profiles");
  ExpectUsageError({"register", Picture()}, "DB is required");
  ExpectUsageError({"info"}, "FILE is required");
  EXPECT_FALSE(DatabaseExists());
}

TEST_F(Command, LetsNoControlCharactersOfAnArgumentThrough) {
  ExpectUsageError({"scan", card_, database_, "\x1b[2J\n"}, "\\x1b[2J\\x0a");
}

}  // namespace
