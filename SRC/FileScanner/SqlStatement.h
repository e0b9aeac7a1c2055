// Statements of the media database: the text that the log shows, and the values that SQLite gets.
#pragma once

#include <sqlite3.h>

#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace orx {

// One statement, built from a printf-like pattern and its values in order.
//
//   SqlStatement("select id from ObjectTable where FullPath = \"%s\"").Text(path)
//   SqlStatement("delete from ImageTable where id=%s").Id(id)
//   SqlStatement("select %s from  ImageTable where FullPath=\"%s\"").Name(column).Text(path)
//
// Values are bound, never pasted into what SQLite compiles.  The rules of the printed form hold all
// the same: a text that contains the quote around its "%s" or '%s' makes the statement refused, an
// unquoted Id must be a decimal number, a Name a plain identifier.
class SqlStatement {
 public:
  explicit SqlStatement(const char* pattern) : pattern_(pattern) {}  // a literal

  SqlStatement& Text(const char* value);  // for a quoted %s; null makes the statement refused
  SqlStatement& Text(const std::string& value) { return Text(value.c_str()); }
  SqlStatement& TextOrBlank(const char* value) { return Text(value != nullptr ? value : " "); }
  SqlStatement& Int(long long value);                // for %d, %ld, %lld, quoted or not
  SqlStatement& Unsigned(unsigned long long value);  // for %llu
  SqlStatement& Real(double value);                  // for %f; what is not finite becomes 0
  SqlStatement& Id(const char* value);               // for an unquoted %s: a decimal number
  SqlStatement& Name(const char* value);             // for an unquoted %s: a column or table name

  // The statement as printed, for the log.
  std::string Printed() const;
  // Whether its values are such that the statement may run; if not, `reason` says why.  Throws when
  // memory ran out in its making.
  bool Accepted(std::string* reason) const;
  // The text to compile, with "?" for every value but the names.
  std::string CompiledText() const;
  // Binds the values to a statement compiled from CompiledText.
  bool BindTo(sqlite3_stmt* compiled) const;

 private:
  enum class Kind { kText, kInt, kReal, kId, kName, kMissing };
  struct Value {
    Kind kind;
    long long number;  // of kInt
    size_t start;      // of the others: where the text lies in texts_, a terminator behind it
    size_t length;
  };
  std::string_view TextOf(const Value& value) const {
    return std::string_view(texts_).substr(value.start, value.length);
  }
  friend class StatementCache;
  bool HasNames() const;
  template <typename Visitor>
  void VisitPattern(Visitor&& visit) const;
  SqlStatement& AddText(Kind kind, const char* value);  // null is a missing value
  SqlStatement& Add(Kind kind, std::string_view text);
  void Reserve();

  const char* pattern_;
  bool incomplete_ = false;  // memory ran out for a value
  std::vector<Value> values_;
  std::string texts_;  // of all values, one behind the other
};

// A compiled statement, free of rows and values.  At the end of its use it is released, or reset if
// a cache keeps it, and with that its locks are released.
class CompiledStatement {
 public:
  // Null, with SQLite's code in `code`, when `sql` does not compile.
  static CompiledStatement New(sqlite3* connection, const std::string& sql, int* code);
  static CompiledStatement Kept(sqlite3_stmt* statement) { return {statement, true}; }
  static CompiledStatement Own(sqlite3_stmt* statement) { return {statement, false}; }
  ~CompiledStatement();
  CompiledStatement(CompiledStatement&& other) noexcept
      : statement_(std::exchange(other.statement_, nullptr)), kept_(other.kept_) {}
  CompiledStatement& operator=(CompiledStatement&&) = delete;

  sqlite3_stmt* get() const { return statement_; }

 private:
  CompiledStatement(sqlite3_stmt* statement, bool kept) : statement_(statement), kept_(kept) {}

  sqlite3_stmt* statement_;
  bool kept_;
};

// The compiled statements of one connection, compiled once and used again.
class StatementCache {
 public:
  StatementCache() = default;
  ~StatementCache() { Clear(); }
  StatementCache(const StatementCache&) = delete;
  StatementCache& operator=(const StatementCache&) = delete;

  // The compiled form of the statement; null, with SQLite's code in `code`, when it does not
  // compile.  While it runs, asking for it again gives another one.
  CompiledStatement Get(sqlite3* connection, const SqlStatement& statement, int* code);
  // Must come before the connection is closed.
  void Clear();

 private:
  sqlite3_stmt* Find(const SqlStatement& statement, bool byPattern, std::string* sql) const;
  bool Keep(const SqlStatement& statement, bool byPattern, const std::string& sql,
            sqlite3_stmt* compiled);

  sqlite3* connection_ = nullptr;
  std::unordered_map<std::string, sqlite3_stmt*> compiled_;
  // Also by the pattern, where nothing but the pattern makes the text.
  std::unordered_map<const char*, sqlite3_stmt*> ofPattern_;
};

// Whether `name` is a plain identifier: letters, digits and '_', not beginning with a digit.
bool IsPlainIdentifier(const char* name);

}  // namespace orx
