#include "FileScanner/SqlStatement.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <string_view>

#include "OSAL/Fault.h"

namespace orx {
namespace {

constexpr size_t kExpectedValues = 32;
constexpr size_t kExpectedText = 512;  // bytes

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }

bool IsDecimalNumber(std::string_view text) {
  if (!text.empty() && text[0] == '-') text.remove_prefix(1);
  return !text.empty() && std::all_of(text.begin(), text.end(), IsDigit);
}

// The length of the conversion "%d", "%lld", "%s" ... at `text`, which begins with '%'.
size_t ConversionLength(const char* text) {
  size_t length = 1;
  while (text[length] == 'l') ++length;
  return length + 1;
}

}  // namespace

bool IsPlainIdentifier(const char* name) {
  if (name == nullptr || !IsLetter(*name)) return false;
  while (IsLetter(*name) || IsDigit(*name)) ++name;
  return *name == '\0';
}

// Makes room for the longest of the frequent statements, the insert of a picture.
void SqlStatement::Reserve() {
  values_.reserve(kExpectedValues);
  texts_.reserve(kExpectedText);
}

// A statement is built in the arguments of the operation that runs it, so it reports missing memory
// only there.
SqlStatement& SqlStatement::Add(Kind kind, std::string_view text) {
  const bool added = Guarded(__func__, [&] {
    if (values_.empty()) Reserve();
    values_.push_back({kind, 0, texts_.size(), text.size()});
    texts_.append(text) += '\0';
  });
  if (!added) incomplete_ = true;
  return *this;
}

SqlStatement& SqlStatement::Int(long long value) {
  const bool added = Guarded(__func__, [&] {
    if (values_.empty()) Reserve();
    values_.push_back({Kind::kInt, value, 0, 0});
  });
  if (!added) incomplete_ = true;
  return *this;
}

SqlStatement& SqlStatement::Unsigned(unsigned long long value) {
  if (value <= static_cast<unsigned long long>(std::numeric_limits<long long>::max()))
    return Int(static_cast<long long>(value));
  char digits[std::numeric_limits<unsigned long long>::digits10 + 1];
  const auto end = std::to_chars(digits, digits + sizeof digits, value);
  return Add(Kind::kReal,
             {digits, static_cast<size_t>(end.ptr - digits)});  // too wide for SQLite's integers
}

// "%f" of a finite value, with a decimal point whatever the locale.
SqlStatement& SqlStatement::Real(double value) {
  char digits[std::numeric_limits<double>::max_exponent10 + 16];
  const auto end = std::to_chars(digits, digits + sizeof digits, std::isfinite(value) ? value : 0.0,
                                 std::chars_format::fixed, 6);
  return Add(Kind::kReal, {digits, static_cast<size_t>(end.ptr - digits)});
}

SqlStatement& SqlStatement::AddText(Kind kind, const char* value) {
  return value == nullptr ? Add(Kind::kMissing, "") : Add(kind, value);
}

SqlStatement& SqlStatement::Text(const char* value) { return AddText(Kind::kText, value); }

SqlStatement& SqlStatement::Id(const char* value) { return AddText(Kind::kId, value); }

SqlStatement& SqlStatement::Name(const char* value) { return AddText(Kind::kName, value); }

// Calls visit(literal, length, value, quote) for each stretch of plain text and the value behind
// it; `value` is null after the last stretch.  `quote` is the character around the value, 0 for
// none; such quotes are part of no stretch.
template <typename Visitor>
void SqlStatement::VisitPattern(Visitor&& visit) const {
  const char* literal = pattern_;
  const char* p = pattern_;
  for (const Value& value : values_) {
    p = strchr(p, '%');
    if (p == nullptr) break;
    const size_t length = ConversionLength(p);
    const char before = p > pattern_ ? p[-1] : '\0';
    const bool quoted = (before == '"' || before == '\'') && p[length] == before;
    visit(literal, static_cast<size_t>(p - literal) - (quoted ? 1 : 0), &value,
          quoted ? before : '\0');
    p += length + (quoted ? 1 : 0);
    literal = p;
  }
  visit(literal, strlen(literal), static_cast<const Value*>(nullptr), '\0');
}

std::string SqlStatement::Printed() const {
  std::string text;
  VisitPattern([this, &text](const char* literal, size_t length, const Value* value, char quote) {
    text.append(literal, length);
    if (value == nullptr) return;
    if (quote != '\0') text += quote;
    if (value->kind == Kind::kInt) {
      text += std::to_string(value->number);
    } else {
      text += TextOf(*value);
    }
    if (quote != '\0') text += quote;
  });
  return text;
}

bool SqlStatement::HasNames() const {
  return std::any_of(values_.begin(), values_.end(),
                     [](const Value& value) { return value.kind == Kind::kName; });
}

bool SqlStatement::Accepted(std::string* reason) const {
  if (incomplete_) throw std::bad_alloc();
  reason->clear();
  VisitPattern([this, reason](const char*, size_t, const Value* value, char quote) {
    if (value == nullptr) return;
    switch (value->kind) {
      case Kind::kText:
        if (TextOf(*value).find(quote) != std::string_view::npos)
          *reason = "a value holds its own quote";
        break;
      case Kind::kId:
        if (!IsDecimalNumber(TextOf(*value))) *reason = "an id is not a decimal number";
        break;
      case Kind::kName:
        if (!IsPlainIdentifier(TextOf(*value).data())) *reason = "a name is not a plain identifier";
        break;
      case Kind::kMissing:
        *reason = "a value is missing";
        break;
      case Kind::kInt:
      case Kind::kReal:
        break;
    }
  });
  return reason->empty();
}

std::string SqlStatement::CompiledText() const {
  std::string sql;
  sql.reserve(strlen(pattern_));
  VisitPattern([this, &sql](const char* literal, size_t length, const Value* value, char) {
    sql.append(literal, length);
    if (value == nullptr) return;
    if (value->kind == Kind::kName) {
      sql.append(TextOf(*value));
    } else {
      sql += '?';
    }
  });
  return sql;
}

bool SqlStatement::BindTo(sqlite3_stmt* compiled) const {
  int parameter = 0;
  int code = SQLITE_OK;
  for (const Value& value : values_) {
    if (value.kind == Kind::kName) continue;
    ++parameter;
    const std::string_view text = TextOf(value);  // terminated, and kept as long as the statement
    switch (value.kind) {
      case Kind::kInt:
        code = sqlite3_bind_int64(compiled, parameter, value.number);
        break;
      case Kind::kText:
      case Kind::kReal:  // every column that takes one has integer affinity, and converts the text
        code = sqlite3_bind_text64(compiled, parameter, text.data(), text.size(), SQLITE_STATIC,
                                   SQLITE_UTF8);
        break;
      case Kind::kId: {
        long long number = 0;
        const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
        code = parsed.ec == std::errc()
                   ? sqlite3_bind_int64(compiled, parameter, number)
                   : sqlite3_bind_double(compiled, parameter, std::strtod(text.data(), nullptr));
        break;
      }
      case Kind::kName:
      case Kind::kMissing:
        break;
    }
    if (code != SQLITE_OK) return false;
  }
  return true;
}

// ---- compiled statements -----------------------------------------------------------------------

CompiledStatement CompiledStatement::New(sqlite3* connection, const std::string& sql, int* code) {
  sqlite3_stmt* statement = nullptr;
  *code = sqlite3_prepare_v2(connection, sql.c_str(), -1, &statement, nullptr);
  return {statement, false};
}

CompiledStatement::~CompiledStatement() {
  if (statement_ == nullptr) return;
  if (kept_) {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
  } else {
    sqlite3_finalize(statement_);
  }
}

CompiledStatement StatementCache::Get(sqlite3* connection, const SqlStatement& statement,
                                      int* code) {
  if (connection != connection_) Clear();
  connection_ = connection;
  *code = SQLITE_OK;
  const bool byPattern = !statement.HasNames();
  std::string sql;
  sqlite3_stmt* kept = Find(statement, byPattern, &sql);
  if (kept != nullptr && sqlite3_stmt_busy(kept) == 0) return CompiledStatement::Kept(kept);
  if (kept != nullptr) return CompiledStatement::New(connection, statement.CompiledText(), code);

  *code =
      sqlite3_prepare_v3(connection, sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &kept, nullptr);
  if (kept == nullptr || Keep(statement, byPattern, sql, kept))
    return CompiledStatement::Kept(kept);
  return CompiledStatement::Own(kept);
}

// Leaves the text in `sql` when it had to be formed.
sqlite3_stmt* StatementCache::Find(const SqlStatement& statement, bool byPattern,
                                   std::string* sql) const {
  if (byPattern) {
    const auto known = ofPattern_.find(statement.pattern_);
    if (known != ofPattern_.end()) return known->second;
  }
  *sql = statement.CompiledText();
  const auto known = compiled_.find(*sql);
  return known != compiled_.end() ? known->second : nullptr;
}

// False when a hook of the host's, which ran while SQLite compiled it, had it compiled before.
bool StatementCache::Keep(const SqlStatement& statement, bool byPattern, const std::string& sql,
                          sqlite3_stmt* compiled) {
  try {
    if (!compiled_.emplace(sql, compiled).second) return false;
  } catch (const std::bad_alloc&) {
    sqlite3_finalize(compiled);
    throw;
  }
  if (byPattern) ofPattern_.emplace(statement.pattern_, compiled);
  return true;
}

void StatementCache::Clear() {
  for (const auto& entry : compiled_) sqlite3_finalize(entry.second);
  compiled_.clear();
  ofPattern_.clear();
  connection_ = nullptr;
}

}  // namespace orx
