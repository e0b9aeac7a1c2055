#include "SheetPage.h"

#include <algorithm>
#include <cstring>
#include <ctime>
#include <map>
#include <set>

#include "Html.h"
#include "Output.h"
#include "SheetTexts.h"

namespace orxscan {

const char kSheetSignature[] = "<!doctype html>\n<!-- orxscan sheet -->\n";

namespace {

struct MarkText {
  Mark mark;
  const char* name;
  const char* label;
};
constexpr MarkText kMarks[] = {
    {Mark::kAdded, "added", "added"},
    {Mark::kRemoved, "removed", "removed"},
    {Mark::kChanged, "changed", "changed"},
    {Mark::kElsewhere, "elsewhere", "file outside the scanned folder: not looked at"},
    {Mark::kGone, "gone", "file gone"},
    {Mark::kUnreadable, "unreadable", "file cannot be read"},
    {Mark::kSizeDiffers, "size-differs", "file has another size"},
    {Mark::kThumbnailOutside, "thumbnail-outside", "thumbnail outside the file"},
    {Mark::kThumbnailNoPicture, "thumbnail-no-picture", "thumbnail is no picture"},
    {Mark::kThumbnailTooLarge, "thumbnail-too-large", "thumbnail too large"},
    {Mark::kThumbnailLeftOut, "thumbnail-left-out", "thumbnail left out: page full"},
    {Mark::kNoMediaRow, "no-media-row", "no media row"},
    {Mark::kNoObjectRow, "no-object-row", "no object row"},
    {Mark::kStale, "stale", "marked stale"},
    {Mark::kBackup, "backup", "marked as backup"},
};

const MarkText& TextOf(Mark mark) {
  return *std::find_if(std::begin(kMarks), std::end(kMarks),
                       [mark](const MarkText& text) { return text.mark == mark; });
}

// By media class.
constexpr const char* kKinds[] = {"folder", "picture", "sound", "film", "item"};
constexpr const char* kKindsPlural[] = {"Folders", "Pictures", "Sounds", "Films", "Items"};
constexpr int kKindOrder[] = {1, 3, 2, 4};  // pictures, films, sounds, the rest

const char* Name(ShareState share) {
  constexpr const char* kNames[] = {"none", "hidden", "shared"};
  return kNames[static_cast<int>(share)];
}
const char* Label(ShareState share) {
  constexpr const char* kLabels[] = {"sharing not recorded", "not shared", "shared"};
  return kLabels[static_cast<int>(share)];
}

// The checksum of a script or style as the page's policy names it.
std::string PolicyHash(const char* hexadecimal) {
  std::string bytes;
  for (const char* digits = hexadecimal; digits[0] != '\0' && digits[1] != '\0'; digits += 2)
    bytes += static_cast<char>(std::stoi(std::string(digits, 2), nullptr, 16));
  return "'sha256-" + Base64(bytes) + "'";
}

std::string Policy(const Sheet& sheet) {
  return "default-src 'none'; style-src " + PolicyHash(kSheetStyleSha256) + "; script-src " +
         PolicyHash(kSheetScriptSha256) +
         "; img-src data:" + (sheet.besideAs.empty() ? "" : " 'self' file:") +
         "; base-uri 'none'; form-action 'none'";
}

// A path as part of an address.
std::string AddressPart(const std::string& text) {
  std::string address;
  for (const char c : text) {
    if (isalnum(static_cast<unsigned char>(c)) != 0 || strchr("-._~", c) != nullptr) {
      address += c;
    } else {
      address += fmt::format("%{:02X}", static_cast<unsigned char>(c));
    }
  }
  return address;
}

std::string Title(const SheetItem& item) {
  if (!item.title.empty()) return item.title;
  return item.path.empty() ? "(no title)" : FileName(item.path);
}

std::string Dimensions(const SheetItem& item) {
  return item.width == 0 && item.height == 0 ? ""
                                             : fmt::format("{} \u00d7 {}", item.width, item.height);
}

std::string MarkNames(const std::vector<Mark>& marks) {
  std::string names;
  for (const Mark mark : marks) {
    if (!names.empty()) names += ' ';
    names += TextOf(mark).name;
  }
  return names;
}

std::string MarkBadges(const std::vector<Mark>& marks) {
  if (marks.empty()) return "";
  std::string html = "<ul class=\"marks\">";
  for (const Mark mark : marks)
    html +=
        fmt::format("<li class=\"mark mark-{}\">{}</li>", TextOf(mark).name, TextOf(mark).label);
  return html + "</ul>";
}

// The longest folder that all others are in, with a slash at its end; the root for several.
std::string CommonFolder(const std::vector<SheetFolder>& folders) {
  if (folders.empty()) return "";
  std::string common = folders.front().path;
  for (const SheetFolder& folder : folders)
    if (folder.path != common && folder.path.compare(0, common.size() + 1, common + "/") != 0)
      return "";
  return common;
}

// Texts by numbers that count up from 0.
struct Numbered {
  size_t Number(const std::string& text) {
    const auto [place, isNew] = numbers.emplace(text, numbers.size());
    if (isNew) inOrder.push_back(&place->first);
    return place->second;
  }
  std::map<std::string, size_t> numbers;
  std::vector<const std::string*> inOrder;
};

class Page {
 public:
  Page(const Sheet& sheet, const SheetThumbnails& thumbnails, NewFile* out)
      : sheet_(sheet), thumbnails_(thumbnails), out_(*out), root_(CommonFolder(sheet.folders)) {
    for (const SheetFolder& folder : sheet.folders)
      for (const SheetItem& item : folder.items) Count(item);
  }

  // The page's frame with each {{part}} in its place.
  void Write() {
    const std::map<std::string, void (Page::*)()> parts = {
        {"title", &Page::TitleText},
        {"policy", &Page::PolicyText},
        {"style", &Page::StyleText},
        {"summary", &Page::Summary},
        {"kinds", &Page::Kinds},
        {"profiles", &Page::Profiles},
        {"kind-choices", &Page::KindChoices},
        {"folder-options", &Page::FolderOptions},
        {"profile-options", &Page::ProfileOptions},
        {"share-options", &Page::ShareOptions},
        {"mark-options", &Page::MarkOptions},
        {"count", &Page::CountText_},
        {"folders", &Page::Folders},
        {"thumbnails", &Page::Thumbnails},
        {"data", &Page::Data},
        {"footer", &Page::Footer},
        {"script", &Page::ScriptText}};
    out_.Write(kSheetSignature);
    std::string_view rest = kSheetPage;
    for (size_t start; (start = rest.find("{{")) != std::string_view::npos;) {
      const size_t end = rest.find("}}", start);
      out_.Write(rest.substr(0, start));
      (this->*parts.at(std::string(rest.substr(start + 2, end - start - 2))))();
      rest.remove_prefix(end + 2);
    }
    out_.Write(rest);
  }

 private:
  struct Profile {
    int kind;
    std::string name;
    bool operator<(const Profile& o) const {
      return std::tie(kind, name) < std::tie(o.kind, o.name);
    }
  };

  void Count(const SheetItem& item) {
    shares_.insert(item.share);
    profileNames_.insert(item.profile);
    for (const Mark mark : item.marks) ++marks_[mark];
    if (item.Has(Mark::kRemoved)) return;
    ++items_;
    ++kinds_[item.mediaClass];
    if (!item.profile.empty()) ++profiles_[{item.mediaClass, item.profile}];
  }

  template <typename... Arguments>
  void Print(fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    out_.Write(fmt::format(format, std::forward<Arguments>(arguments)...));
  }

  void TitleText() { out_.Write(Html(sheet_.database)); }
  void PolicyText() { out_.Write(Policy(sheet_)); }
  void StyleText() { out_.Write(kSheetStyle); }
  void ScriptText() { out_.Write(kSheetScript); }
  void CountText_() { out_.Write(CountText(total())); }

  void Summary() {
    Print("<p class=\"summary\">{} in {}", Counted(items_, "item", "items"),
          Counted(RecordedFolders(), "folder", "folders"));
    if (!root_.empty()) Print(" below <bdi class=\"path\">{}</bdi>", Html(root_));
    Print("</p>\n<p class=\"summary\">The database has {}.", Html(sheet_.layout));
    if (!sheet_.before.empty())
      Print(" Compared with <bdi class=\"path\">{}</bdi>: {} added, {} removed, {} changed.",
            Html(sheet_.before), CountText(marks_[Mark::kAdded]), CountText(marks_[Mark::kRemoved]),
            CountText(marks_[Mark::kChanged]));
    out_.Write("</p>");
  }

  void Kinds() {
    if (items_ == 0) return;
    out_.Write(
        "<svg class=\"bar\" viewBox=\"0 0 1000 10\" preserveAspectRatio=\"none\" "
        "aria-hidden=\"true\">");
    long long before = 0;
    for (const int kind : kKindOrder) {
      if (kinds_[kind] == 0) continue;
      Print("<rect class=\"fill-{}\" x=\"{:.2f}\" width=\"{:.2f}\" height=\"10\"/>", kKinds[kind],
            Share(before), Share(kinds_[kind]));
      before += kinds_[kind];
    }
    out_.Write("</svg>\n<ul class=\"legend\" id=\"counts-by-kind\">");
    for (const int kind : kKindOrder)
      if (kinds_[kind] != 0)
        Print(
            "<li data-kind=\"{0}\"><svg class=\"dot fill-{0}\" viewBox=\"0 0 10 10\" "
            "aria-hidden=\"true\"><rect width=\"10\" height=\"10\" rx=\"2\"/></svg>{1} "
            "<b>{2}</b></li>",
            kKinds[kind], kKindsPlural[kind], CountText(kinds_[kind]));
    out_.Write("</ul>");
  }

  void Profiles() {
    if (profiles_.empty()) return;
    std::vector<std::pair<Profile, long long>> sorted(profiles_.begin(), profiles_.end());
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const auto& a, const auto& b) { return a.second > b.second; });
    out_.Write("<ul class=\"profiles\" id=\"counts-by-profile\">");
    for (const auto& [profile, count] : sorted)
      Print(
          "<li data-profile=\"{0}\"><span class=\"name\"><bdi>{0}</bdi> <small>{1}</small></span>"
          "<b>{2}</b><svg class=\"bar\" viewBox=\"0 0 1000 10\" preserveAspectRatio=\"none\" "
          "aria-hidden=\"true\"><rect class=\"fill-track\" width=\"1000\" height=\"10\"/>"
          "<rect class=\"fill-{3}\" width=\"{4:.2f}\" height=\"10\"/></svg></li>",
          Html(profile.name), Lower(kKindsPlural[profile.kind]), CountText(count),
          kKinds[profile.kind], Share(count));
    out_.Write("</ul>");
  }

  void KindChoices() {
    for (const int kind : kKindOrder)
      if (kinds_[kind] != 0)
        Print("<label><input type=\"radio\" name=\"kind\" value=\"{}\"><span>{}</span></label>",
              kKinds[kind], kKindsPlural[kind]);
  }

  void FolderOptions() {
    for (size_t i = 0; i < sheet_.folders.size(); ++i)
      if (!sheet_.folders[i].items.empty())
        Print("<option value=\"{}\">{}</option>", i + 1, Html(ShortPath(sheet_.folders[i].path)));
  }

  void ProfileOptions() {
    for (const std::string& name : profileNames_)
      Print("<option value=\"={0}\">{1}</option>", Html(name),
            name.empty() ? "not recorded" : Html(name));
  }

  void ShareOptions() {
    for (const ShareState share : shares_)
      Print("<option value=\"{}\">{}</option>", Name(share), Label(share));
  }

  void MarkOptions() {
    for (const MarkText& text : kMarks)
      if (marks_[text.mark] != 0)
        Print("<option value=\"{}\">{} ({})</option>", text.name, text.label,
              CountText(marks_[text.mark]));
  }

  void Folders() {
    for (size_t i = 0; i < sheet_.folders.size(); ++i) Folder(sheet_.folders[i], i + 1);
  }

  // The items are listed for browsers without scripts, which keep the list as a mere text; the
  // script makes cards from the data instead.
  void Folder(const SheetFolder& folder, size_t number) {
    const std::string path = ShortPath(folder.path);
    const std::string name = FileName(path);
    const bool empty = folder.items.empty();
    Print(
        "<section class=\"folder{0}\" id=\"folder-{1}\" data-marks=\"{2}\" "
        "aria-labelledby=\"folder-{1}-name\">\n<header class=\"folder-head\">"
        "<h2 id=\"folder-{1}-name\"><bdi><span class=\"parents\">{3}</span>{4}</bdi></h2>"
        "<p class=\"folder-count\">{5}</p>{6}</header>\n",
        empty ? " empty" : "", number, MarkNames(folder.marks),
        Html(path.substr(0, path.size() - name.size())), Html(name.empty() ? "/" : name),
        empty ? "no items of its own"
              : Counted(static_cast<long long>(folder.items.size()), "item", "items"),
        MarkBadges(folder.marks));
    if (!empty) {
      out_.Write("<noscript><ol class=\"plain\">\n");
      for (const SheetItem& item : folder.items) ListedItem(item);
      out_.Write("</ol></noscript>\n");
    }
    out_.Write("</section>\n");
  }

  void ListedItem(const SheetItem& item) {
    Print("<li id=\"item-{}\">", ++number_);
    if (item.hasThumbnail && thumbnails_.beside())
      Print("<img loading=\"lazy\" alt=\"\" src=\"{}/{}\">", AddressPart(sheet_.besideAs),
            AddressPart(item.thumbnailName));
    Print("<h3>{}</h3><bdi>{}</bdi>", Html(Title(item)), Html(FileName(item.path)));
    const auto add = [this](const std::string& text) {
      if (!text.empty()) Print(", {}", Html(text));
    };
    add(Dimensions(item));
    if (item.size >= 0) add(SizeText(item.size));
    add(item.duration);
    add(item.date);
    add(item.profile);
    add(item.mimeType);
    if (item.share != ShareState::kNotRecorded) add(Label(item.share));
    for (const Mark mark : item.marks) Print(" <em>{}</em>", TextOf(mark).label);
    out_.Write("\n");
  }

  // What the script makes the cards from; page.js names the parts of a row.
  void Data() {
    Print("{{\"beside\":{},\n\"marks\":{{", JsonText(AddressPart(sheet_.besideAs)));
    const char* separator = "";
    for (const MarkText& text : kMarks) {
      if (marks_[text.mark] == 0) continue;
      Print("{}\"{}\":\"{}\"", separator, text.name, text.label);
      separator = ",";
    }
    out_.Write("},\n\"folders\":[");
    separator = "\n";
    for (const SheetFolder& folder : sheet_.folders) {
      Print("{}{{\"path\":{},\"items\":[", separator, JsonText(folder.path));
      separator = "\n";
      for (const SheetItem& item : folder.items) {
        out_.Write(separator);
        Row(item, folder);
        separator = ",\n";
      }
      out_.Write("]}");
      separator = ",\n";
    }
    // Names that many items share are in the rows as numbers.
    out_.Write("],\n\"names\":[");
    separator = "";
    for (const std::string* name : sharedNames_.inOrder) {
      Print("{}{}", separator, JsonText(*name));
      separator = ",";
    }
    out_.Write("]}");
  }

  void Row(const SheetItem& item, const SheetFolder& folder) {
    const std::string name = FileName(item.path);
    const bool inFolder = item.path == folder.path + "/" + name;
    Print("[{},{},{},{},{},{},{},{},{},{},{},\"{}\",{},\"{}\",", item.id, item.mediaClass,
          JsonText(Title(item)), inFolder ? JsonText(name) : "[" + JsonText(item.path) + "]",
          JsonText(item.sortIndex), JsonText(Dimensions(item)), item.size,
          JsonText(item.size >= 0 ? SizeText(item.size) : ""), JsonText(item.date),
          sharedNames_.Number(item.profile), sharedNames_.Number(item.mimeType), Name(item.share),
          JsonText(item.duration), MarkNames(item.marks));
    if (!item.hasThumbnail) {
      out_.Write("0,[");
    } else {
      Print("[{},{}", item.thumbnail.width, item.thumbnail.height);
      if (thumbnails_.beside()) Print(",{}", JsonText(AddressPart(item.thumbnailName)));
      out_.Write("],[");
    }
    const char* separator = "";
    for (const auto& [label, value] : item.details) {
      Print("{}{},{}", separator, sharedNames_.Number(label), JsonText(value));
      separator = ",";
    }
    out_.Write("]]");
  }

  void Thumbnails() {
    if (thumbnails_.beside()) return;
    long long number = 0;
    for (const SheetFolder& folder : sheet_.folders)
      for (const SheetItem& item : folder.items) {
        ++number;
        if (!item.hasThumbnail) continue;
        Print("<script type=\"text/plain\" id=\"thumbnail-{}\">", number);
        out_.Write(Base64(thumbnails_.Cut(item)));
        out_.Write("</script>\n");
      }
  }

  void Footer() {
    const time_t now = time(nullptr);
    struct tm local = {};
    char text[32] = "";
    if (localtime_r(&now, &local) != nullptr) strftime(text, sizeof text, "%Y-%m-%d %H:%M", &local);
    Print("Made on {} by orxscan {}.", text, ORXSCAN_VERSION);
  }

  double Share(long long count) const {
    return 1000 * static_cast<double>(count) / static_cast<double>(items_);
  }
  long long total() const {
    long long count = 0;
    for (const SheetFolder& folder : sheet_.folders)
      count += static_cast<long long>(folder.items.size());
    return count;
  }
  long long RecordedFolders() const {
    return std::count_if(sheet_.folders.begin(), sheet_.folders.end(),
                         [](const SheetFolder& folder) {
                           return !folder.Has(Mark::kNoObjectRow) && !folder.Has(Mark::kRemoved);
                         });
  }
  static std::string Lower(std::string text) {
    for (char& c : text) c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
    return text;
  }
  // Without what is above the common folder.
  std::string ShortPath(const std::string& path) const {
    return root_.empty() ? path : path.substr(root_.rfind('/') + 1);
  }

  const Sheet& sheet_;
  const SheetThumbnails& thumbnails_;
  NewFile& out_;
  std::string root_;
  long long number_ = 0;
  long long items_ = 0;
  std::map<int, long long> kinds_;
  std::map<Profile, long long> profiles_;
  std::map<Mark, long long> marks_;
  std::set<std::string> profileNames_;
  std::set<ShareState> shares_;
  Numbered sharedNames_;
};

}  // namespace

const char* MarkLabel(Mark mark) { return TextOf(mark).label; }

void WriteSheet(const Sheet& sheet, const SheetThumbnails& thumbnails, NewFile* page) {
  Page(sheet, thumbnails, page).Write();
}

}  // namespace orxscan
