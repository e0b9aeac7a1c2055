#include "SheetItems.h"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>
#include <tuple>

#include "Html.h"
#include "Output.h"

namespace orxscan {
namespace {

// Nothing is recorded as a blank.
std::string WithoutBlank(std::string text) {
  if (text.find_first_not_of(' ') == std::string::npos) text.clear();
  return text;
}

bool IsDecimal(std::string_view text) {
  return !text.empty() && text.size() <= 18 &&
         text.find_first_not_of("0123456789") == std::string_view::npos;
}

// The cells of a row by the names of their columns; a column that the table lacks is empty.
class Row {
 public:
  explicit Row(const Statement& statement) : statement_(statement.get()) {
    const std::vector<std::string> names = ColumnNames(statement_);
    for (size_t i = 0; i < names.size(); ++i) columns_.emplace(names[i], static_cast<int>(i));
  }
  bool Has(const char* column) const { return columns_.count(column) != 0; }
  std::string Text(const char* column) const {
    const auto found = columns_.find(column);
    return found == columns_.end() ? "" : WithoutBlank(CellText(statement_, found->second));
  }
  long long Number(const char* column) const {
    const auto found = columns_.find(column);
    return found == columns_.end() ? 0 : sqlite3_column_int64(statement_, found->second);
  }
  double Real(const char* column) const {
    const auto found = columns_.find(column);
    return found == columns_.end() ? 0 : sqlite3_column_double(statement_, found->second);
  }

 private:
  sqlite3_stmt* statement_;
  std::map<std::string, int> columns_;
};

std::string Dimensions(long long width, long long height) {
  return fmt::format("{} \u00d7 {}", width, height);
}

std::string Described(const PicturePlace& place) {
  std::string text = CountText(place.length) + (place.length == 1 ? " byte" : " bytes") + " at " +
                     CountText(place.offset);
  if (place.width != 0 || place.height != 0)
    text = Dimensions(place.width, place.height) + ", " + text;
  return text;
}

void Add(SheetItem* item, const char* label, std::string value) {
  if (!value.empty()) item->details.emplace_back(label, std::move(value));
}

void AddNumber(SheetItem* item, const char* label, long long number, const char* unit) {
  if (number != 0) Add(item, label, CountText(number) + unit);
}

void AddRate(SheetItem* item, const char* label, double rate, const char* unit) {
  if (rate != 0) Add(item, label, fmt::format("{:.6g}{}", rate, unit));
}

PicturePlace Place(const Row& row, const std::string& name) {
  return {row.Number((name + "Offset").c_str()), row.Number((name + "Length").c_str()),
          row.Number((name + "Width").c_str()), row.Number((name + "Height").c_str())};
}

void AddPlace(SheetItem* item, const char* label, const PicturePlace& place) {
  if (place.offset != 0 || place.length != 0) Add(item, label, Described(place));
}

// The columns that tables of several layouts have under the same name.
void TakeCommonColumns(const Row& row, SheetItem* item) {
  item->title = row.Text("Title");
  item->date = row.Text("date");
  if (row.Has("size")) item->size = row.Number("size");
  item->mimeType = row.Text("MimeType");
  item->profile = row.Text("DLNAProfile");
  item->duration = row.Text("Duration");
  item->sortIndex = row.Text("SortIndex");
  item->width = row.Number("Width");
  item->height = row.Number("Height");
  if (row.Has("Share"))
    item->share = row.Number("Share") == 1 ? ShareState::kShared : ShareState::kHidden;
  item->thumbnail = Place(row, "Thumbnail");
  const PicturePlace cover = Place(row, "AlbumArt");
  if (item->thumbnail.length == 0) item->thumbnail = cover;

  Add(item, "Description", row.Text("Description"));
  Add(item, "Artist", row.Text("Artist") + row.Text("AudioArtist"));
  Add(item, "Album", row.Text("AlbumTitle") + row.Text("AudioAlbumTitle"));
  Add(item, "Album artist", row.Text("AlbumArtist") + row.Text("AudioAlbumArtist"));
  AddRate(item, "Frame rate", row.Real("VideoFrameRate"), " fps");
  AddRate(item, "Video bit rate", row.Real("VideoBitrate"), " bit/s");
  AddRate(item, "Codec level", row.Real("VideoLevel"), "");
  AddNumber(item, "Sound channels", row.Number("Channel") + row.Number("AudioChannel"), "");
  AddNumber(item, "Sound bit rate", row.Number("Bitrate") + row.Number("AudioBitrate"), " bit/s");
  AddNumber(item, "Sampling rate", row.Number("Frequency") + row.Number("AudioFrequency"), " Hz");
  Add(item, "Resource", row.Text("uri"));
  Add(item, "Thumbnail resource", row.Text("Thumbnailuri"));
  Add(item, "Screennail resource", row.Text("Screennailuri"));
  AddPlace(item, "Thumbnail", Place(row, "Thumbnail"));
  AddPlace(item, "Screennail", Place(row, "Screennail"));
  AddPlace(item, "Cover art", cover);
}

void ReadObjects(const DatabaseFile& database, SheetRows* rows) {
  const Statement objects = database.Select("SELECT * FROM ObjectTable ORDER BY id");
  const Row row(objects);
  while (database.Next(objects)) {
    std::vector<Mark> marks;
    if (row.Number("Valid") == 1) marks.push_back(Mark::kStale);
    if (row.Number("IsBackup") == 1) marks.push_back(Mark::kBackup);
    if (row.Number("class") == 0) {
      if (row.Text("parentID") == "0") rows->roots.push_back(row.Text("FullPath"));
      rows->folders.push_back({row.Number("id"), row.Text("FullPath"), marks, {}});
      continue;
    }
    SheetItem item;
    item.id = row.Number("id");
    item.mediaClass = static_cast<int>(std::clamp(row.Number("class"), 1LL, 4LL));
    item.path = row.Text("FullPath");
    item.folderId = row.Text("parentID");
    item.marks = marks;
    TakeCommonColumns(row, &item);
    rows->items.push_back(std::move(item));
  }
}

// Completes the items with what the media tables say about them.
void ReadMedia(const DatabaseFile& database, SheetRows* rows) {
  std::map<std::string, size_t> places;  // of the items, by the text of their id
  for (size_t i = 0; i < rows->items.size(); ++i)
    places.emplace(std::to_string(rows->items[i].id), i);
  std::set<size_t> described;
  constexpr std::pair<const char*, int> kTables[] = {
      {"ImageTable", 1}, {"AudioTable", 2}, {"VideoTable", 3}};
  for (const auto& [table, mediaClass] : kTables) {
    const Statement media = database.Select(std::string("SELECT * FROM ") + table);
    const Row row(media);
    while (database.Next(media)) {
      const auto place = places.find(row.Text("id"));
      if (place != places.end() && described.insert(place->second).second) {
        TakeCommonColumns(row, &rows->items[place->second]);
        continue;
      }
      SheetItem item;
      item.id = row.Number("id");
      item.mediaClass = mediaClass;
      item.path = row.Text("FullPath");
      item.marks = {Mark::kNoObjectRow};
      TakeCommonColumns(row, &item);
      rows->items.push_back(std::move(item));
    }
  }
  for (const auto& [id, index] : places)
    if (described.count(index) == 0) rows->items[index].marks.push_back(Mark::kNoMediaRow);
}

std::string FolderOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? "" : slash == 0 ? "/" : path.substr(0, slash);
}

// A slash sorts before everything else, so that a folder stands directly above what is inside it.
bool PathBefore(const std::string& left, const std::string& right) {
  const auto rank = [](char c) { return c == '/' ? 0 : static_cast<unsigned char>(c) + 1; };
  return std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end(),
                                      [&](char a, char b) { return rank(a) < rank(b); });
}

bool ItemBefore(const SheetItem& left, const SheetItem& right) {
  const auto key = [](const SheetItem& item) {
    const bool numbered = IsDecimal(item.sortIndex);
    return std::make_tuple(!numbered, numbered ? std::stoll(item.sortIndex) : 0);
  };
  const auto leftKey = key(left);
  const auto rightKey = key(right);
  if (leftKey != rightKey) return leftKey < rightKey;
  return std::tie(left.path, left.id) < std::tie(right.path, right.id);
}

bool Contains(const std::vector<Mark>& marks, Mark mark) {
  return std::find(marks.begin(), marks.end(), mark) != marks.end();
}

}  // namespace

bool SheetItem::Has(Mark mark) const { return Contains(marks, mark); }
bool SheetFolder::Has(Mark mark) const { return Contains(marks, mark); }

std::string FileName(const std::string& path) { return path.substr(path.rfind('/') + 1); }

SheetRows ReadSheetRows(const DatabaseFile& database) {
  const Statement snapshot = database.Select("BEGIN");  // all tables as of one moment
  database.Next(snapshot);
  SheetRows rows;
  ReadObjects(database, &rows);
  if (database.layout() == Layout::kFull) ReadMedia(database, &rows);
  const Statement end = database.Select("COMMIT");
  database.Next(end);
  return rows;
}

std::vector<SheetFolder> InDisplayOrder(SheetRows rows) {
  std::map<std::string, size_t> byPath;
  std::map<std::string, size_t> byId;
  std::vector<SheetFolder> folders;
  for (SheetFolder& folder : rows.folders) {
    const size_t place = folders.size();
    byId.emplace(std::to_string(folder.id), place);
    byPath.emplace(folder.path, place);
    folders.push_back(std::move(folder));
  }
  for (SheetItem& item : rows.items) {
    const auto parent = byId.find(item.folderId);
    size_t place = parent != byId.end() ? parent->second : folders.size();
    if (parent == byId.end()) {
      const std::string path = FolderOf(item.path);
      const auto known = byPath.emplace(path, folders.size());
      place = known.first->second;
      if (known.second) folders.push_back({0, path, {Mark::kNoObjectRow}, {}});
    }
    folders[place].items.push_back(std::move(item));
  }
  std::stable_sort(folders.begin(), folders.end(), [](const SheetFolder& a, const SheetFolder& b) {
    return PathBefore(a.path, b.path);
  });
  for (SheetFolder& folder : folders)
    std::stable_sort(folder.items.begin(), folder.items.end(), ItemBefore);
  return folders;
}

}  // namespace orxscan
