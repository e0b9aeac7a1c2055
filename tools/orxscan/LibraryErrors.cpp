#include "LibraryErrors.h"

#include <sqlite3.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace orxscan {
namespace {

constexpr size_t kMostFailures = 10000;  // that are kept; a broken medium may have one a file

constexpr char kStatementStart[] = "[DataBaseMgr::ExecSqlStatmentNoValueReturn]\n\tquery : ";
constexpr char kCodeStart[] = "\n\texec failed [";
constexpr char kMessageStart[] = "]\n\terrmsg : [";
constexpr char kStart[] = "Error : ";

bool StartsWith(const std::string& text, const char* start) {
  return text.compare(0, strlen(start), start) == 0;
}

// "Error : " and what follows up to something quoted from outside, which may hold any words.
std::string OwnWords(const std::string& message) {
  size_t start = 0;
  if (StartsWith(message, "[")) start = message.find(']');
  if (start == std::string::npos) return "";
  return message.substr(start, message.find_first_of("['\"", start) - start);
}

bool Contains(const std::string& text, const char* part) {
  return text.find(part) != std::string::npos;
}

// An error line about something in brackets: "Error : before [thing] after".
struct Bracketed {
  std::string before, thing, after;
};

// The brackets end before the last of the `tails`; where a long thing left no room for any, `after`
// is empty.
template <size_t kCount>
Bracketed Parse(const std::string& message, const char* const (&tails)[kCount]) {
  const size_t open = message.find('[');
  Bracketed parsed{message.substr(sizeof kStart - 1, open - (sizeof kStart - 1)), "", ""};
  size_t close = std::string::npos;
  for (const char* tail : tails) {
    const size_t at = message.rfind(tail);
    if (at != std::string::npos && at > open && (close == std::string::npos || at > close))
      close = at;
  }
  const bool cut = close == std::string::npos;
  parsed.thing = message.substr(open + 1, cut ? close : close - open - 1) + (cut ? "..." : "");
  if (!cut) parsed.after = message.substr(close + 2);
  return parsed;
}

// What stands behind the last "errno ".
std::string ErrorIn(const std::string& text) {
  const size_t at = text.rfind("errno ");
  return at == std::string::npos ? text : strerror(atoi(text.c_str() + at + strlen("errno ")));
}

// SQLite's code, 0 for a line that was cut before it.
int SqliteCode(const std::string& text) {
  const size_t at = text.rfind(kCodeStart);
  return at == std::string::npos ? 0 : atoi(text.c_str() + at + sizeof kCodeStart - 1) & 0xFF;
}

// What SQLite said; where the line was cut before its end, what the code stands for.
std::string SqliteMessage(const std::string& text) {
  const size_t at = text.rfind(kMessageStart);
  const size_t start = at + sizeof kMessageStart - 1;
  if (at != std::string::npos && text.back() == ']' && text.size() > start)
    return text.substr(start, text.size() - 1 - start);
  const int code = SqliteCode(text);
  return code != 0 ? sqlite3_errstr(code) : "";
}

// The code tells of the machine, or of the file, and nothing of the statement.
bool IsOfTheMachine(int code) {
  switch (code) {
    case SQLITE_PERM:
    case SQLITE_ABORT:
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_NOMEM:
    case SQLITE_READONLY:
    case SQLITE_INTERRUPT:
    case SQLITE_IOERR:
    case SQLITE_CORRUPT:
    case SQLITE_FULL:
    case SQLITE_CANTOPEN:
    case SQLITE_PROTOCOL:
    case SQLITE_NOTADB:
      return true;
    default:
      return false;
  }
}

}  // namespace

void LibraryErrors::Add(const std::string& message) {
  any_ = true;
  if (StartsWith(message, kStatementStart))
    return AddStatement(message.substr(sizeof kStatementStart - 1));
  const std::string words = OwnWords(message);
  if (Contains(words, "out of memory")) {
    outOfMemory_ = true;
  } else if (Contains(words, "OpenDB fail") || Contains(words, "sqlite3_open error")) {
    if (database_.empty()) database_ = "it cannot be opened";
  } else if (Contains(words, "left out, as the database is damaged")) {
    AddFailure("", sqlite3_errstr(SQLITE_CORRUPT));
  } else if (StartsWith(message, kStart) && message.find('[') != std::string::npos) {
    AddBracketed(message);
  }
}

void LibraryErrors::AddStatement(const std::string& text) {
  const std::string message = SqliteMessage(text);
  if (StartsWith(text, "BEGIN;") || StartsWith(text, "COMMIT;")) {
    sqlite_ = message;
    return Undo(message);
  }
  if (StartsWith(text, "create table")) {
    database_ = message.empty() ? "its tables cannot be made" : message;
    return;
  }
  insertFailed_ = insertFailed_ || (StartsWith(text, "insert into ") &&
                                    !StartsWith(text, "insert into ContainerTable"));
  if (!IsOfTheMachine(SqliteCode(text))) return;
  if (!message.empty()) sqlite_ = message;
  AddFailure("", message);
}

// "Error : open [/a/path] failed, errno 5" and others; a long path leaves no room for the end.
void LibraryErrors::AddBracketed(const std::string& message) {
  constexpr const char* kTails[] = {"] failed, errno ", "] is left to the next scan, ",
                                    "] cannot be ", "] is left out, as",
                                    "] in the database, the scan is run once more"};
  if (Contains(OwnWords(message), "undone, ")) {
    const size_t start = message.find('[') + 1;
    return Undo(message.substr(start, message.rfind(']') - start));
  }
  if (StartsWith(message, "Error : a question to the database failed, [")) {
    const size_t start = message.find('[') + 1;
    return AddFailure("", message.substr(start, message.find(']', start) - start));
  }
  const Bracketed line = Parse(message, kTails);
  if (line.before.empty() && StartsWith(line.after, "cannot be ")) {
    database_ = ErrorIn(line.after);  // the new file
  } else if (StartsWith(line.after, "in the database")) {
    AddFailure("", line.thing);
  } else if (StartsWith(line.after, "is left to the next scan, ")) {
    AddFailure(line.thing, ErrorIn(line.after.substr(strlen("is left to the next scan, "))));
  } else if (StartsWith(line.after, "is left out, as")) {
    AddFailure(line.thing, "the database is damaged where it belongs");
  } else {
    AddFailure(line.thing,
               line.after.empty() ? "it is left to the next scan" : ErrorIn(line.after));
  }
}

void LibraryErrors::AddFailure(const std::string& path, const std::string& reason) {
  if (failures_.size() < kMostFailures) {
    failures_.emplace(path, reason);  // the first reason stays
  } else if (failures_.count(path) == 0) {
    ++furtherFailures_;
  }
}

void LibraryErrors::Undo(const std::string& reason) {
  undone_ = true;
  database_ = reason.empty() ? "it cannot be written" : reason;
}

}  // namespace orxscan
