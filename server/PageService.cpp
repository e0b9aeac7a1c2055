#include "PageService.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

#include "Didl.h"
#include "EmbeddedTexts.h"
#include "Texts.h"

namespace orxserve {
namespace {

constexpr uint32_t kItemsOfAPage = 200;  // of the plain list
constexpr char kHtmlType[] = "text/html; charset=utf-8";
constexpr char kPolicy[] =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; media-src 'self'; "
    "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";

// All items in the order of the folders.
std::vector<const Item*> InCameraOrder(const Catalogue& catalogue) {
  std::vector<const Item*> items;
  items.reserve(catalogue.items().size());
  const Container* top = catalogue.FindContainer(kFoldersId);
  std::vector<const Container*> waiting;
  if (top != nullptr) waiting.push_back(top);
  while (!waiting.empty()) {
    const Container& container = *waiting.back();
    waiting.pop_back();
    for (uint32_t at = container.containerCount; at < catalogue.ChildCount(container); ++at)
      items.push_back(&catalogue.items()[catalogue.Child(container, at).index]);
    for (uint32_t at = container.containerCount; at > 0; --at)
      waiting.push_back(&catalogue.containers()[catalogue.Child(container, at - 1).index]);
  }
  return items;
}

// "DCIM/100ORXSC", or the view's own title for what lies at the top.
std::string FolderTitle(const Catalogue& catalogue, const Item& item) {
  const std::vector<Container>& containers = catalogue.containers();
  std::string title;
  for (uint32_t at = catalogue.HomeOf(item); containers[at].id != kFoldersId;
       at = containers[at].parent) {
    if (!title.empty()) title.insert(0, "/");
    title.insert(0, catalogue.Text(containers[at].title));
  }
  return title.empty() ? "Top" : title;
}

std::string DateText(const Item& item) {
  std::string text;
  if (item.date != 0) AppendDate(&text, item.date);
  return text;
}

void AppendRow(const Catalogue& catalogue, const Item& item, size_t folder, std::string* out) {
  const MediaFacts& media = catalogue.MediaOf(item);
  *out += fmt::format("[{},{},", item.id, static_cast<int>(item.kind));
  AppendJson(out, catalogue.TitleOf(item));
  *out += fmt::format(",{},\"{}\",{},{},{},{},{},\"{}\",", folder, DateText(item), item.size,
                      item.width, item.height, media.duration, item.pieceBits,
                      catalogue.FormatOf(item).extension);
  AppendJson(out, catalogue.Text(media.artist));
  *out += ',';
  AppendJson(out, catalogue.Text(media.album));
  *out += ',';
  AppendJson(out, catalogue.Text(item.description));
  *out += ']';
}

std::string SizeText(uint64_t bytes) {
  if (bytes < 1000) return fmt::format("{} bytes", bytes);
  if (bytes < 1000000) return fmt::format("{:.0f} kB", static_cast<double>(bytes) / 1e3);
  return fmt::format("{:.1f} MB", static_cast<double>(bytes) / 1e6);
}

std::string PlainRow(const Catalogue& catalogue, const Item& item) {
  std::string picture;
  for (const Piece piece : {Piece::kScreennail, Piece::kCover, Piece::kThumbnail})
    if (catalogue.PieceOf(item, piece).length != 0)
      picture = fmt::format("<img loading=\"lazy\" alt=\"\" src=\"/{}/{}.jpg\">", UrlLetter(piece),
                            item.id);
  std::string facts = DateText(item);
  if (item.width != 0) facts += fmt::format(" {} × {}", item.width, item.height);
  return fmt::format("<li>{}<p><a href=\"/o/{}.{}\">{}</a><small>{} {} {}</small></p></li>\n",
                     picture, item.id, catalogue.FormatOf(item).extension,
                     XmlText(catalogue.TitleOf(item)), XmlText(FolderTitle(catalogue, item)), facts,
                     SizeText(item.size));
}

std::string Summary(const Catalogue& catalogue) {
  const size_t count = catalogue.items().size();
  return count == 0   ? "Nothing is here yet."
         : count == 1 ? "1 item"
                      : std::to_string(count) + " items";
}

void Replace(std::string* text, std::string_view mark, const std::string& with) {
  for (size_t at = text->find(mark); at != std::string::npos;
       at = text->find(mark, at + with.size()))
    text->replace(at, mark.size(), with);
}

HttpAnswer Guarded(HttpAnswer answer) {
  answer.Add("Content-Security-Policy", kPolicy);
  answer.Add("X-Content-Type-Options", "nosniff");
  answer.Add("Cache-Control", "no-cache");
  return answer;
}

// Not sent again when the client has it.
HttpAnswer Tagged(const HttpRequest& request, HttpAnswer answer, const std::string& tag) {
  if (request.Header("If-None-Match") == tag) answer = HttpAnswer::Status(304);
  answer.Add("ETag", tag);
  return Guarded(std::move(answer));
}

}  // namespace

PageService::PageService(const CatalogueHolder& catalogues, std::string name)
    : catalogues_(catalogues), name_(std::move(name)) {}

HttpAnswer PageService::Get(const HttpRequest& request) const {
  if (request.path == "/") return Page(request);
  if (request.path == "/items.json") return Items(request);
  if (request.path == "/page.css")
    return Tagged(request, HttpAnswer::Constant("text/css", orxscan::kPageStyle),
                  std::string("\"") + orxscan::kPageStyleSha256 + "\"");
  if (request.path == "/page.js")
    return Tagged(request, HttpAnswer::Constant("text/javascript", orxscan::kPageScript),
                  std::string("\"") + orxscan::kPageScriptSha256 + "\"");
  if (request.path != "/events") return HttpAnswer::Status(404);
  HttpAnswer answer;
  answer.Add("Content-Type", "text/event-stream");
  answer.events = request.method == "GET";
  return Guarded(std::move(answer));
}

HttpAnswer PageService::Page(const HttpRequest& request) const {
  uint64_t page = 1;
  const char* const wanted = request.argument ? request.argument("page") : nullptr;
  if (wanted != nullptr && (!ParseNumber(wanted, &page) || page == 0))
    return HttpAnswer::Status(404);
  const std::shared_ptr<const Catalogue> catalogue = catalogues_.Get();
  std::string text = orxscan::kPageHtml;
  Replace(&text, "{{summary}}", Summary(*catalogue));
  Replace(&text, "{{list}}", PlainList(*catalogue, page - 1));
  Replace(&text, "{{title}}", XmlText(name_));
  return Guarded(HttpAnswer::Text(kHtmlType, std::move(text)));
}

HttpAnswer PageService::Items(const HttpRequest& request) const {
  const std::shared_ptr<const Catalogue> catalogue = catalogues_.Get();
  const std::string tag = fmt::format("\"{}\"", catalogue->updateId());
  if (request.Header("If-None-Match") == tag) return Tagged(request, HttpAnswer(), tag);
  return Tagged(request, HttpAnswer::Text("application/json", ItemsJson(*catalogue)), tag);
}

std::string ItemsJson(const Catalogue& catalogue) {
  std::map<uint32_t, size_t> folders;  // by container
  std::string names;
  std::string rows;
  for (const Item* item : InCameraOrder(catalogue)) {
    const auto known = folders.emplace(catalogue.HomeOf(*item), folders.size());
    if (known.second) {
      if (!names.empty()) names += ',';
      AppendJson(&names, FolderTitle(catalogue, *item));
    }
    if (!rows.empty()) rows += ",\n";
    AppendRow(catalogue, *item, known.first->second, &rows);
  }
  std::string types;
  for (const Format& format : catalogue.formats())
    types +=
        fmt::format("{}\"{}\":\"{}\"", types.empty() ? "" : ",", format.extension, format.mimeType);
  return fmt::format(
      "{{\"update\":{},\"empty\":\"{}\",\"types\":{{{}}},\"folders\":[{}],\"items\":[\n{}]}}\n",
      catalogue.updateId(), "Nothing is here yet.", types, names, rows);
}

std::string PlainList(const Catalogue& catalogue, uint64_t page) {
  const std::vector<const Item*> items = InCameraOrder(catalogue);
  const uint64_t pages = (items.size() + kItemsOfAPage - 1) / kItemsOfAPage;
  if (page > pages) page = pages;
  std::string list = "<ul class=\"plain\">\n";
  const uint64_t end = std::min<uint64_t>((page + 1) * kItemsOfAPage, items.size());
  for (uint64_t at = page * kItemsOfAPage; at < end; ++at) list += PlainRow(catalogue, *items[at]);
  list += "</ul>\n<p class=\"pages\">";
  if (page > 0) list += fmt::format("<a href=\"/?page={}\">The page before</a>", page);
  if (page + 1 < pages) list += fmt::format("<a href=\"/?page={}\">The next page</a>", page + 2);
  return list + "</p>\n";
}

}  // namespace orxserve
