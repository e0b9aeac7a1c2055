#include "DatabaseDiff.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <set>
#include <tuple>
#include <unordered_map>

namespace orxscan {
namespace {

// By class: the table of its media.
struct Medium {
  int mediaClass;
  const char* table;
};
constexpr Medium kMedia[] = {{1, "ImageTable"}, {2, "AudioTable"}, {3, "VideoTable"}};

struct Field {
  std::string name;
  std::string value;
};

// A row of the object table, with that of its medium.
struct Object {
  std::string path;
  std::string id;
  int mediaClass;
  std::vector<Field> fields;  // in the order of the columns; a name comes twice in both tables

  bool operator<(const Object& other) const {
    return std::tie(path, id) < std::tie(other.path, other.id);
  }
};

struct Contents {
  std::vector<Object> objects;    // in the order of their paths
  std::set<std::string> columns;  // of all tables
};

bool IsResourceName(const std::string& field) {
  return field == "uri" || field == "Thumbnailuri" || field == "Screennailuri";
}

// The name without its numbers: what kind of resource it names.
std::string ResourceKind(const std::string& name) {
  std::string kind;
  for (const char c : name)
    if (isdigit(static_cast<unsigned char>(c)) == 0) kind += c;
  return kind;
}

Object ReadObject(sqlite3_stmt* row, const std::vector<std::string>& names) {
  Object object = {"", "", sqlite3_column_int(row, 0), {}};
  for (size_t i = 1; i < names.size(); ++i) {
    const std::string value = CellText(row, static_cast<int>(i));
    if (names[i] == "FullPath") {
      if (object.path.empty()) object.path = value;  // the object's comes first
    } else if (names[i] == "id") {
      if (object.id.empty()) object.id = value;
    } else if (sqlite3_column_type(row, static_cast<int>(i)) != SQLITE_NULL) {
      object.fields.push_back({names[i], value});
    }
  }
  return object;
}

void ReadObjects(const DatabaseFile& database, const std::string& sql, Contents* contents) {
  const Statement row = database.Select(sql);
  const std::vector<std::string> names = ColumnNames(row.get());
  contents->columns.insert(names.begin() + 1, names.end());
  while (database.Next(row)) contents->objects.push_back(ReadObject(row.get(), names));
}

// "parentID" becomes "parent", the path of the folder with that id.
void NameParents(std::vector<Object>* objects) {
  std::unordered_map<std::string, std::string> paths;
  for (const Object& object : *objects) paths.emplace(object.id, object.path);
  for (Object& object : *objects)
    for (Field& field : object.fields)
      if (field.name == "parentID") {
        field.name = "parent";
        const auto parent = paths.find(field.value);
        if (parent != paths.end()) {
          field.value = parent->second;
        } else {
          field.value = field.value == "0" ? "" : "missing object " + field.value;
        }
      }
}

Contents Read(const DatabaseFile& database) {
  Contents contents;
  const Statement snapshot = database.Select("BEGIN");
  database.Next(snapshot);
  std::string classes = "-1";
  if (database.layout() == Layout::kFull)
    for (const Medium& medium : kMedia) {
      const std::string number = std::to_string(medium.mediaClass);
      classes += ", " + number;
      ReadObjects(database,
                  std::string("SELECT o.class, o.*, CASE WHEN m.id IS NULL THEN 'missing' ELSE "
                              "'there' END AS medium, m.* FROM ObjectTable AS o LEFT JOIN ") +
                      medium.table + " AS m ON m.id = CAST(o.id AS TEXT) WHERE o.class = " + number,
                  &contents);
    }
  ReadObjects(database, "SELECT class, * FROM ObjectTable WHERE class NOT IN (" + classes + ")",
              &contents);
  const Statement end = database.Select("COMMIT");
  database.Next(end);
  contents.columns.erase("medium");
  NameParents(&contents.objects);
  std::sort(contents.objects.begin(), contents.objects.end());
  return contents;
}

// The values that a field has: one, or two when the tables disagree.
std::string ValueOf(const std::vector<Field>& fields, const std::string& name, bool* found) {
  std::string value;
  *found = false;
  for (const Field& field : fields) {
    if (field.name != name) continue;
    if (!*found) {
      value = field.value;
    } else if (field.value != value) {
      value += " | " + field.value;
    }
    *found = true;
  }
  return value;
}

void CompareFields(const Object& before, const Object& after, ObjectDiff* diff) {
  std::set<std::string> seen;
  for (const Field& field : before.fields) {
    if (!seen.insert(field.name).second) continue;
    bool had = false, has = false;
    const std::string from = ValueOf(before.fields, field.name, &had);
    const std::string to = ValueOf(after.fields, field.name, &has);
    if (!has || from == to) continue;
    if (IsResourceName(field.name) && ResourceKind(from) == ResourceKind(to)) {
      diff->registeredAnew = true;
    } else {
      diff->changes.push_back({field.name, from, to});
    }
  }
}

void CompareObjects(const Object& before, const Object& after, DatabaseDiff* result) {
  ObjectDiff diff = {after.path, after.mediaClass, before.id, after.id, before.id != after.id, {}};
  CompareFields(before, after, &diff);
  if (!diff.changes.empty()) {
    result->changed.push_back(std::move(diff));
  } else if (diff.registeredAnew) {
    result->registeredAnew.push_back(std::move(diff));
  } else {
    ++result->same;
  }
}

}  // namespace

DatabaseDiff Compare(const DatabaseFile& before, const DatabaseFile& after) {
  const Contents first = Read(before), second = Read(after);
  DatabaseDiff result;
  std::set_symmetric_difference(first.columns.begin(), first.columns.end(), second.columns.begin(),
                                second.columns.end(), std::back_inserter(result.notCompared));
  auto old = first.objects.begin();
  auto now = second.objects.begin();
  while (old != first.objects.end() || now != second.objects.end()) {
    if (now == second.objects.end() || (old != first.objects.end() && old->path < now->path)) {
      result.removed.push_back({old->path, old->mediaClass, old->id, "", false, {}});
      ++old;
    } else if (old == first.objects.end() || now->path < old->path) {
      result.added.push_back({now->path, now->mediaClass, "", now->id, false, {}});
      ++now;
    } else {
      CompareObjects(*old++, *now++, &result);
    }
  }
  return result;
}

}  // namespace orxscan
