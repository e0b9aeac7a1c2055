// What the library's error lines say has gone wrong.
#pragma once

#include <cstddef>
#include <map>
#include <string>

namespace orxscan {

// Takes the lines apart by what they mean, so that none that matters is lost however many there
// are.  Statements that a text of a file makes invalid are ordinary: that file is left out, and it
// is the only one.
class LibraryErrors {
 public:
  void Add(const std::string& message);                    // without colours
  void AddLost() noexcept { outOfMemory_ = any_ = true; }  // there was no memory to keep a line

  bool any() const { return any_; }
  // Why the database could not be opened, made or written; empty when it could.  `undone`: what was
  // written was taken back.
  const std::string& database() const { return database_; }
  bool undone() const { return undone_; }
  // What the machine failed in while the rest went on, by path; the path of the database's own
  // troubles is empty.
  const std::map<std::string, std::string>& failures() const { return failures_; }
  size_t furtherFailures() const { return furtherFailures_; }  // beyond those that are kept
  bool outOfMemory() const { return outOfMemory_; }
  // Whether the database refused a row of an item.
  bool insertFailed() const { return insertFailed_; }

 private:
  void AddStatement(const std::string& text);
  void AddBracketed(const std::string& message);
  void AddFailure(const std::string& path, const std::string& reason);
  void Undo(const std::string& reason);

  bool any_ = false;
  bool undone_ = false;
  bool outOfMemory_ = false;
  bool insertFailed_ = false;
  std::string database_;
  std::string sqlite_;  // what SQLite said last when the machine failed
  std::map<std::string, std::string> failures_;
  size_t furtherFailures_ = 0;
};

}  // namespace orxscan
