#include "FileScanner/SqlStatement.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <clocale>
#include <cmath>
#include <limits>
#include <string>

namespace {

using orx::CompiledStatement;
using orx::IsPlainIdentifier;
using orx::SqlStatement;
using orx::StatementCache;

// A database in memory, in which a statement is run as printed and as compiled with its values.
class SqlStatementTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(sqlite3_open(":memory:", &connection_), SQLITE_OK);
    sqlite3_db_config(connection_, SQLITE_DBCONFIG_DQS_DML, 1, nullptr);
    Exec("create table T (id INTEGER PRIMARY KEY, name VARCHAR(16), number INTEGER DEFAULT 0)");
  }
  void TearDown() override {
    cache_.Clear();
    EXPECT_EQ(sqlite3_close(connection_), SQLITE_OK);
  }

  int Exec(const std::string& sql) {
    return sqlite3_exec(connection_, sql.c_str(), nullptr, nullptr, nullptr);
  }

  // SQLITE_DONE, or the code of the failure; -1 for a refused statement.
  int Run(const SqlStatement& statement) {
    std::string reason;
    if (!statement.Accepted(&reason)) return -1;
    int code = SQLITE_OK;
    const CompiledStatement compiled = cache_.Get(connection_, statement, &code);
    if (compiled.get() == nullptr) return code;
    EXPECT_TRUE(statement.BindTo(compiled.get()));
    do {
      code = sqlite3_step(compiled.get());
    } while (code == SQLITE_ROW);
    return code;
  }

  std::string Cell(const std::string& sql) {
    sqlite3_stmt* compiled = nullptr;
    EXPECT_EQ(sqlite3_prepare_v2(connection_, sql.c_str(), -1, &compiled, nullptr), SQLITE_OK);
    std::string cell = "(none)";
    if (sqlite3_step(compiled) == SQLITE_ROW) {
      const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(compiled, 0));
      cell = text != nullptr ? text : "NULL";
    }
    sqlite3_finalize(compiled);
    return cell;
  }

  // Type and value that a column holds after the statement ran with its values; checks that the
  // printed text stores the same.
  std::string Stored(const SqlStatement& insert, const std::string& column) {
    const std::string look = "select typeof(" + column + ")||' '||" + column + " from T";
    Exec("delete from T");
    EXPECT_EQ(Exec(insert.Printed()), SQLITE_OK) << insert.Printed();
    const std::string printed = Cell(look);
    Exec("delete from T");
    EXPECT_EQ(Run(insert), SQLITE_DONE) << insert.Printed();
    const std::string bound = Cell(look);
    EXPECT_EQ(bound, printed) << insert.Printed();
    return bound;
  }

  std::string StoredReal(double value) {
    return Stored(SqlStatement("insert into T (number) values (%f)").Real(value), "number");
  }
  std::string StoredText(const char* value) {
    return Stored(SqlStatement("insert into T (name) values (\"%s\")").Text(value), "name");
  }
  std::string StoredInt(const char* pattern, long long value) {
    return Stored(SqlStatement(pattern).Int(value), "number");
  }
  std::string StoredUnsigned(unsigned long long value) {
    return Stored(SqlStatement("insert into T (number) values (%llu)").Unsigned(value), "number");
  }

  // Empty when the statement is not refused.
  static std::string Refusal(const SqlStatement& statement) {
    std::string reason;
    const bool accepted = statement.Accepted(&reason);
    EXPECT_EQ(accepted, reason.empty());
    return reason;
  }

  sqlite3* connection_ = nullptr;
  StatementCache cache_;
};

// ---- the printed form ----

TEST_F(SqlStatementTest, PrintsThePatternWithItsValuesInPlace) {
  EXPECT_EQ(SqlStatement("insert\t values (\"%s\",%d ,\"%s\", %f,  %ld);")
                .Text("a b")
                .Int(-3)
                .TextOrBlank(nullptr)
                .Real(29.97)
                .Int(7)
                .Printed(),
            "insert\t values (\"a b\",-3 ,\" \", 29.970000,  7);");
}

TEST_F(SqlStatementTest, PrintsNamesAndIdsWithoutQuotes) {
  EXPECT_EQ(SqlStatement("select %s from T where id=%s").Name("name").Id("12").Printed(),
            "select name from T where id=12");
}

TEST_F(SqlStatementTest, PrintsAValueThatLooksLikeAConversionAsItIs) {
  EXPECT_EQ(SqlStatement("x \"%s\" \"%s\"").Text("%s%d%n").Text("100%").Printed(),
            "x \"%s%d%n\" \"100%\"");
}

TEST_F(SqlStatementTest, PrintsRefusedValuesToo) {
  EXPECT_EQ(SqlStatement("x \"%s\"").Text("a\"b").Printed(), "x \"a\"b\"");
  EXPECT_EQ(SqlStatement("x id=%s").Id("1 or 1").Printed(), "x id=1 or 1");
}

TEST_F(SqlStatementTest, PrintsNumbersOfEverySize) {
  EXPECT_EQ(SqlStatement("%lld").Int(std::numeric_limits<long long>::min()).Printed(),
            "-9223372036854775808");
  EXPECT_EQ(SqlStatement("%llu").Unsigned(std::numeric_limits<unsigned long long>::max()).Printed(),
            "18446744073709551615");
}

TEST_F(SqlStatementTest, PrintsSixDecimalsOfEveryFiniteNumber) {
  for (const double value :
       {0.0, -0.0, 0.1, 1.0 / 3, 2.5e-7, 5e-7, 1e15 + 0.3, -12345.6789012,
        std::numeric_limits<double>::max(), std::numeric_limits<double>::denorm_min()}) {
    char expected[400];
    snprintf(expected, sizeof expected, "%f", value);
    EXPECT_EQ(SqlStatement("%f").Real(value).Printed(), expected);
  }
}

TEST_F(SqlStatementTest, PrintsNumbersThatAreNotFiniteAsZero) {
  for (const double value :
       {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
        std::numeric_limits<double>::quiet_NaN()})
    EXPECT_EQ(SqlStatement("%f").Real(value).Printed(), "0.000000");
}

TEST_F(SqlStatementTest, PrintsADecimalPointWhateverTheLocale) {
  const std::string before = setlocale(LC_ALL, nullptr);
  for (const char* locale : {"de_DE.UTF-8", "de_DE", "fr_FR.UTF-8", "C"})
    if (setlocale(LC_ALL, locale) != nullptr) break;
  EXPECT_EQ(SqlStatement("%f %ld").Real(1234.5).Int(1234567).Printed(), "1234.500000 1234567");
  setlocale(LC_ALL, before.c_str());
}

// ---- what is stored ----

TEST_F(SqlStatementTest, StoresTextsAsPrinted) {
  EXPECT_EQ(StoredText("plain"), "text plain");
  EXPECT_EQ(StoredText(""), "text ");
  EXPECT_EQ(StoredText(" "), "text  ");
  EXPECT_EQ(StoredText("0010012"), "text 0010012");
  EXPECT_EQ(StoredText("12.50"), "text 12.50");
  EXPECT_EQ(StoredText("it's 100% -- /* done; */"), "text it's 100% -- /* done; */");
  EXPECT_EQ(StoredText("tab\tline\nend"), "text tab\tline\nend");
}

TEST_F(SqlStatementTest, StoresTheBytesOfInvalidUtf8) {
  EXPECT_EQ(StoredText("a\xff\xfe\xc3(\x80"), "text a\xff\xfe\xc3(\x80");
}

TEST_F(SqlStatementTest, StoresTextsOfAnyLength) {
  const std::string longText(60000, 'x');
  EXPECT_EQ(StoredText(longText.c_str()), "text " + longText);
}

TEST_F(SqlStatementTest, StoresATextNamedLikeAColumnAsAText) {
  EXPECT_EQ(Run(SqlStatement("insert into T (id, name, number) values (%d, \"%s\", %d)")
                    .Int(1)
                    .Text("other")
                    .Int(5)),
            SQLITE_DONE);
  EXPECT_EQ(Run(SqlStatement("update T set number = %d where name = \"%s\"").Int(6).Text("name")),
            SQLITE_DONE);
  EXPECT_EQ(Cell("select number from T"), "5");
}

TEST_F(SqlStatementTest, StoresIntegersPlainAndQuoted) {
  for (const char* pattern :
       {"insert into T (number) values (%lld)", "insert into T (number) values ('%lld')"}) {
    EXPECT_EQ(StoredInt(pattern, 0), "integer 0");
    EXPECT_EQ(StoredInt(pattern, -5), "integer -5");
    EXPECT_EQ(StoredInt(pattern, 5000000000), "integer 5000000000");
    EXPECT_EQ(StoredInt(pattern, std::numeric_limits<long long>::max()),
              "integer 9223372036854775807");
    EXPECT_EQ(StoredInt(pattern, std::numeric_limits<long long>::min()),
              "integer -9223372036854775808");
  }
}

TEST_F(SqlStatementTest, StoresUnsignedNumbersTooWideForAnIntegerAsReal) {
  EXPECT_EQ(StoredUnsigned(7), "integer 7");
  EXPECT_EQ(StoredUnsigned(9223372036854775807ull), "integer 9223372036854775807");
  EXPECT_EQ(StoredUnsigned(9223372036854775808ull), "real 9.22337203685478e+18");
  EXPECT_EQ(StoredUnsigned(18446744073709551615ull), "real 1.84467440737096e+19");
}

TEST_F(SqlStatementTest, StoresRealsAsTheirSixDecimalsConvert) {
  EXPECT_EQ(StoredReal(29.97), "real 29.97");
  EXPECT_EQ(StoredReal(30.0), "integer 30");
  EXPECT_EQ(StoredReal(-1.5), "real -1.5");
  EXPECT_EQ(StoredReal(29.9700299700), "real 29.97003");
  EXPECT_EQ(StoredReal(0.0000001), "integer 0");
  EXPECT_EQ(StoredReal(1e15), "integer 1000000000000000");
  EXPECT_EQ(StoredReal(1e300), "real 1.0e+300");
  // SQLite converts the 309 digits in `long double`, which on ARM reaches no further than `double`.
  EXPECT_EQ(StoredReal(std::numeric_limits<double>::max()),
            sizeof(long double) > sizeof(double) ? "real 1.79769313486232e+308" : "real Inf");
  EXPECT_EQ(StoredReal(std::numeric_limits<double>::infinity()), "integer 0");
  EXPECT_EQ(StoredReal(std::numeric_limits<double>::quiet_NaN()), "integer 0");
}

TEST_F(SqlStatementTest, StoresANegativeZeroAsPrinted) { StoredReal(-0.0); }

TEST_F(SqlStatementTest, StoresQuotedRealsLikePlainOnes) {
  for (const double value : {29.97, 30.0, 0.0, -2.25, 1e300})
    EXPECT_EQ(Stored(SqlStatement("insert into T (number) values ('%f')").Real(value), "number"),
              StoredReal(value));
}

// ---- ids ----

TEST_F(SqlStatementTest, FindsAnIntegerKeyByAnUnquotedId) {
  Exec("insert into T (id, name) values (7, 'seven'), (8, 'eight')");
  EXPECT_EQ(Run(SqlStatement("delete from T where id=%s").Id("007")), SQLITE_DONE);
  EXPECT_EQ(Cell("select group_concat(name) from T"), "eight");
}

// The ids that are left in a table with a text key when one was deleted.
struct TextKeyCase {
  const char* id;
  const char* left;
};

TEST_F(SqlStatementTest, FindsATextKeyByAnUnquotedIdInItsPlainForm) {
  Exec("create table M (id VARCHAR(16) PRIMARY KEY)");
  for (const TextKeyCase& key :
       {TextKeyCase{"7", "007,-3,1.0e+20"}, TextKeyCase{"007", "007,-3,1.0e+20"},
        TextKeyCase{"-3", "7,007,1.0e+20"}, TextKeyCase{"99999999999999999999", "7,007,-3"}}) {
    const SqlStatement statement = SqlStatement("delete from M where id=%s").Id(key.id);
    for (const bool bound : {false, true}) {
      Exec("delete from M");
      Exec("insert into M values ('7'), ('007'), ('-3'), ('1.0e+20')");
      EXPECT_EQ(bound ? Run(statement) : Exec(statement.Printed()),
                bound ? SQLITE_DONE : SQLITE_OK);
      EXPECT_EQ(Cell("select group_concat(id) from M"), key.left) << key.id;
    }
  }
}

TEST_F(SqlStatementTest, RefusesAnUnquotedIdThatIsNoDecimalNumber) {
  for (const char* id : {"", " ", "-", "--1", "+1", " 1", "1 ", "1.5", "1e3", "0x10", "id", "abc",
                         "1 or 1=1", "1;drop table T", "'1'", "\"1\"", "NULL", "(1)", "1--"})
    EXPECT_EQ(Refusal(SqlStatement("delete from T where id=%s").Id(id)),
              "an id is not a decimal number")
        << id;
}

// ---- quotes ----

TEST_F(SqlStatementTest, RefusesATextWithTheQuoteAroundIt) {
  for (const char* text : {"\"", "a\"b", "a\" or \"1\"=\"1", "a\"\"b", "x\"); drop table T; --"}) {
    EXPECT_EQ(Refusal(SqlStatement("select \"%s\"").Text(text)), "a value holds its own quote");
    EXPECT_EQ(Refusal(SqlStatement("select '%s'").Text(text)), "");
  }
  for (const char* text : {"'", "it's", "a' or '1'='1", "a''b", "x'); drop table T; --"}) {
    EXPECT_EQ(Refusal(SqlStatement("select '%s'").Text(text)), "a value holds its own quote");
    EXPECT_EQ(Refusal(SqlStatement("select \"%s\"").Text(text)), "");
  }
}

TEST_F(SqlStatementTest, RefusesWhicheverValueHoldsItsQuote) {
  EXPECT_EQ(Refusal(SqlStatement("\"%s\" '%s'").Text("it's").Text("5\"")), "");
  EXPECT_NE(Refusal(SqlStatement("\"%s\" '%s'").Text("ok").Text("it's")), "");
  EXPECT_NE(Refusal(SqlStatement("\"%s\" '%s'").Text("5\"").Text("ok")), "");
}

TEST_F(SqlStatementTest, RefusesAMissingValue) {
  EXPECT_NE(Refusal(SqlStatement("\"%s\"").Text(nullptr)), "");
  EXPECT_NE(Refusal(SqlStatement("id=%s").Id(nullptr)), "");
  EXPECT_NE(Refusal(SqlStatement("select %s").Name(nullptr)), "");
  EXPECT_EQ(Refusal(SqlStatement("\"%s\"").TextOrBlank(nullptr)), "");
}

// ---- names ----

TEST_F(SqlStatementTest, TakesOnlyPlainIdentifiersForNames) {
  for (const char* name : {"id", "FullPath", "_x1", "T", "uri_2"}) {
    EXPECT_TRUE(IsPlainIdentifier(name)) << name;
    EXPECT_EQ(Refusal(SqlStatement("select %s from T").Name(name)), "") << name;
  }
  for (const char* name : {"", "1a", "a b", "a-b", "a;b", "a,b", "count(*)", "\"id\"", "'id'", "*",
                           "a.b", "a\xc3\xa4", "--", "%s"}) {
    EXPECT_FALSE(IsPlainIdentifier(name)) << name;
    EXPECT_EQ(Refusal(SqlStatement("select %s from T").Name(name)),
              "a name is not a plain identifier")
        << name;
  }
  EXPECT_FALSE(IsPlainIdentifier(nullptr));
}

TEST_F(SqlStatementTest, PutsNamesIntoTheTextThatIsCompiledAndBindsTheRest) {
  EXPECT_EQ(SqlStatement("select %s from T where name = \"%s\" and number = '%d' and id=%s")
                .Name("number")
                .Text("?")
                .Int(4)
                .Id("5")
                .CompiledText(),
            "select number from T where name = ? and number = ? and id=?");
}

// ---- the compiled statements ----

TEST_F(SqlStatementTest, CompilesAPatternOnceForAllItsValuesButForEveryName) {
  static constexpr char kById[] = "select * from T where id=%s";
  static constexpr char kColumn[] = "select %s from T";
  int code = SQLITE_ERROR;
  const auto compiled = [&](const SqlStatement& statement) {
    return cache_.Get(connection_, statement, &code).get();
  };
  sqlite3_stmt* byId = compiled(SqlStatement(kById).Id("1"));
  EXPECT_EQ(code, SQLITE_OK);
  EXPECT_STREQ(sqlite3_sql(byId), "select * from T where id=?");
  EXPECT_EQ(compiled(SqlStatement(kById).Id("2")), byId);
  sqlite3_stmt* name = compiled(SqlStatement(kColumn).Name("name"));
  EXPECT_STREQ(sqlite3_sql(name), "select name from T");
  EXPECT_STREQ(sqlite3_sql(compiled(SqlStatement(kColumn).Name("number"))), "select number from T");
  EXPECT_EQ(compiled(SqlStatement(kColumn).Name("name")), name);
}

TEST_F(SqlStatementTest, CompilesAStatementAnewWhileItRuns) {
  Exec("insert into T (id, name) values (1, 'a'), (2, 'b')");
  const SqlStatement select("select name from T");
  int code = SQLITE_OK;
  const CompiledStatement first = cache_.Get(connection_, select, &code);
  ASSERT_EQ(sqlite3_step(first.get()), SQLITE_ROW);
  {
    const CompiledStatement second = cache_.Get(connection_, select, &code);
    ASSERT_NE(second.get(), first.get());
    ASSERT_EQ(sqlite3_step(second.get()), SQLITE_ROW);
    EXPECT_STREQ(reinterpret_cast<const char*>(sqlite3_column_text(second.get(), 0)), "a");
  }
  ASSERT_EQ(sqlite3_step(first.get()), SQLITE_ROW);
  EXPECT_STREQ(reinterpret_cast<const char*>(sqlite3_column_text(first.get(), 0)), "b");
}

TEST_F(SqlStatementTest, ReportsAStatementThatDoesNotCompile) {
  int code = SQLITE_OK;
  EXPECT_EQ(cache_.Get(connection_, SqlStatement("select * from Missing"), &code).get(), nullptr);
  EXPECT_EQ(code, SQLITE_ERROR);
}

TEST_F(SqlStatementTest, CompilesAnewOnAnotherConnection) {
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(":memory:", &other), SQLITE_OK);
  int code = SQLITE_OK;
  const SqlStatement one("select 1");
  ASSERT_NE(cache_.Get(connection_, one, &code).get(), nullptr);
  {
    const CompiledStatement there = cache_.Get(other, one, &code);
    ASSERT_NE(there.get(), nullptr);
    EXPECT_EQ(sqlite3_db_handle(there.get()), other);
  }
  cache_.Clear();
  EXPECT_EQ(sqlite3_close(other), SQLITE_OK);
}

TEST_F(SqlStatementTest, LeavesNoLockAndNoValueBehindAfterUse) {
  Exec("insert into T (id, name) values (1, 'a'), (2, 'b')");
  int code = SQLITE_OK;
  const SqlStatement select = SqlStatement("select '%s' from T").Text("x");
  sqlite3_stmt* used = nullptr;
  {
    const CompiledStatement compiled = cache_.Get(connection_, select, &code);
    used = compiled.get();
    ASSERT_TRUE(select.BindTo(used));
    ASSERT_EQ(sqlite3_step(used), SQLITE_ROW);
    EXPECT_EQ(Exec("drop table T"), SQLITE_LOCKED);
  }
  EXPECT_EQ(sqlite3_step(used), SQLITE_ROW);
  EXPECT_EQ(sqlite3_column_type(used, 0), SQLITE_NULL);
  sqlite3_reset(used);
  EXPECT_EQ(Exec("drop table T"), SQLITE_OK);
}

TEST_F(SqlStatementTest, UsesACompiledStatementAgainAfterTheTableWasMadeAnew) {
  const SqlStatement insert = SqlStatement("insert into T (name) values (\"%s\")").Text("x");
  EXPECT_EQ(Run(insert), SQLITE_DONE);
  Exec("drop table T");
  EXPECT_EQ(Run(insert), SQLITE_ERROR);
  Exec("create table T (name VARCHAR(16), more INTEGER)");
  EXPECT_EQ(Run(insert), SQLITE_DONE);
  EXPECT_EQ(Cell("select name from T"), "x");
}

TEST_F(SqlStatementTest, KeepsItsOwnCopyOfAText) {
  std::string path = "/a/path/longer/than/any/small/buffer.jpg";
  SqlStatement insert("insert into T (name) values (\"%s\")");
  insert.Text(path);
  path.assign(path.size(), 'z');
  EXPECT_EQ(Run(insert), SQLITE_DONE);
  EXPECT_EQ(Cell("select name from T"), "/a/path/longer/than/any/small/buffer.jpg");
}

}  // namespace
