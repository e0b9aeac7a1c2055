// The database file as the command sees it: checked before the library opens it, and read for the
// summary, on a connection of its own.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "DatabaseFile.h"

namespace orxscan {

class LibraryErrors;

// One row of the object table.
struct ObjectRow {
  long long id;
  int mediaClass;  // 0 folder, 1 picture, 2 sound, 3 film
  std::string path;

  bool operator<(const ObjectRow& other) const;
};

std::set<std::string> PathsOf(const std::vector<ObjectRow>& rows);

struct ProfileCount {
  std::string profile;
  std::string mimeType;
  long long count;
};

class MediaDatabase {
 public:
  // Checks that `path` is a media database of the layout that can be written, or that one can be
  // created there.  Throws a Failure; creates and changes nothing.
  explicit MediaDatabase(const std::string& path, Layout layout = Layout::kFull);

  const std::string& path() const { return path_; }  // absolute
  const std::string& name() const { return name_; }  // as the user wrote it, quoted
  // Where the file is from now on: another path leads to it.
  void SetPath(const std::string& path) { path_ = path; }
  bool existed() const { return existed_; }  // before the command ran
  // The folders and the items in id order, empty when there is no file.  An object whose medium is
  // missing is left out: the database refused a text of it.  Throws a Failure.
  std::vector<ObjectRow> Objects() const;
  // The rows of one path, or of one id.
  std::vector<ObjectRow> ObjectsAt(const std::string& fullPath) const;
  std::vector<ObjectRow> ObjectsWithId(const std::string& id) const;
  // How many items have which profile, the most frequent first; none without media tables.
  std::vector<ProfileCount> Profiles() const;

  // Throws a Failure when the library's errors say that the database could not be opened, made or
  // written.  Errors of single files are no such errors.  What was made stays: it is a whole
  // database, and another program may be using it by now.
  void CheckWritten(const LibraryErrors& errors) const;

 private:
  std::vector<ObjectRow> Select(const std::string& condition, const std::string* value) const;

  std::string path_;
  std::string name_;
  Layout layout_;
  bool existed_ = false;
};

}  // namespace orxscan
