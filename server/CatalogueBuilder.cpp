#include "CatalogueBuilder.h"

#include <algorithm>
#include <numeric>
#include <tuple>

#include "Failure.h"
#include "ProtocolInfo.h"

namespace orxserve {
namespace {

constexpr uint32_t kLongestPiece = 0xFFFFFF;          // bytes that fit a packed place
constexpr uint64_t kFarthestPiece = 0xFFFFFFFFFFULL;  // offset
constexpr size_t kLargestArena = 0xF0000000;
constexpr uint32_t kMostFormats = 255;

bool IsBelow(std::string_view path, const std::string& top) {
  if (top == "/") return path.front() == '/';
  return path.size() > top.size() && path.compare(0, top.size(), top) == 0 &&
         path[top.size()] == '/';
}

uint16_t Pixels(uint32_t count) { return count > UINT16_MAX ? 0 : static_cast<uint16_t>(count); }

}  // namespace

CatalogueBuilder::CatalogueBuilder(std::string folder, StateStore* state, const FileLook& look)
    : top_(std::move(folder)), state_(state), look_(look), catalogue_(new Catalogue) {
  catalogue_->containers_.clear();
  catalogue_->containersById_.clear();
  state_->Begin();
}

TextRef CatalogueBuilder::AddText(std::string_view text) {
  std::string& arena = catalogue_->arena_;
  text = text.substr(0, text.find('\0'));
  if (text.empty()) return 0;
  if (arena.size() > kLargestArena) throw Failure("there are too many files");
  const auto place = static_cast<TextRef>(arena.size());
  arena.append(text).push_back('\0');
  return place;
}

TextRef CatalogueBuilder::Intern(std::string_view text) {
  const auto known = texts_.emplace(text, 0);
  if (known.second) known.first->second = AddText(text);
  return known.first->second;
}

uint32_t CatalogueBuilder::FolderOf(std::string_view path) {
  const size_t slash = path.rfind('/');
  const std::string folder(slash == 0 ? "/" : path.substr(0, slash));
  const auto number = static_cast<uint32_t>(catalogue_->folders_.size());
  const auto known = folders_.emplace(folder, number);
  if (known.second) catalogue_->folders_.push_back({AddText(folder), 0});
  return known.first->second;
}

uint8_t CatalogueBuilder::FormatFor(const MediaRow& row) {
  std::vector<Format>& formats = catalogue_->formats_;
  std::string name = row.mimeType + '\n' + row.profile;
  const auto known = formats_.find(name);
  if (known != formats_.end()) return known->second;
  if (formats.size() >= kMostFormats) return kMostFormats - 1;  // no camera has as many
  const auto index = static_cast<uint8_t>(formats.size());
  formats.push_back(MakeFormat(row.mimeType, row.profile, row.kind != Kind::kPicture));
  formats_.emplace(std::move(name), index);
  return index;
}

void CatalogueBuilder::AddPieces(const MediaRow& row, const PieceFacts& facts, Item* item) {
  item->pieces = static_cast<uint32_t>(catalogue_->places_.size());
  for (size_t i = 0; i < kPieceCount; ++i) {
    const PiecePlace& place = row.pieces[i];
    const bool fits = place.length <= kLongestPiece && place.offset <= kFarthestPiece;
    if ((facts.sound & 1U << i) == 0 || place.length == 0 || !fits) continue;
    const bool cover = i == static_cast<size_t>(Piece::kCover);
    const auto high = static_cast<uint32_t>(place.offset >> 32) << 24;
    catalogue_->places_.push_back({static_cast<uint32_t>(place.offset), high | place.length,
                                   cover ? facts.cover.width : place.width,
                                   cover ? facts.cover.height : place.height});
    item->pieceBits = static_cast<uint8_t>(item->pieceBits | 1U << i);
  }
}

void CatalogueBuilder::AddMedia(const MediaRow& row, Item* item) {
  if (row.kind == Kind::kPicture) return;
  item->media = static_cast<uint32_t>(catalogue_->media_.size());
  catalogue_->media_.push_back({row.duration, row.bitRate, row.frequency, Intern(row.artist),
                                Intern(row.album), Pixels(row.channels)});
}

void CatalogueBuilder::Add(const MediaRow& row) {
  if (row.path.empty() || !IsBelow(row.path, top_)) return;
  Draft draft{ObjectKey::OfFile(row.path, row.size, row.date), {}, row.sortNumber};
  const KnownObject known = state_->Find(draft.key);
  draft.pieces = known.id != 0 ? known.pieces : look_.Pieces(row.path, row.pieces);

  Item item{};
  item.id = known.id;
  item.size = row.size;
  item.kind = row.kind;
  item.folder = FolderOf(row.path);
  item.name = AddText(std::string_view(row.path).substr(row.path.rfind('/') + 1));
  item.description = Intern(row.description);
  item.date = row.date;
  item.width = Pixels(row.width);
  item.height = Pixels(row.height);
  item.format = FormatFor(row);
  item.media = kNone;
  item.captions = row.kind == Kind::kFilm && !look_.Captions(row.path).empty() ? 1 : 0;
  AddPieces(row, draft.pieces, &item);
  AddMedia(row, &item);
  catalogue_->items_.push_back(item);
  drafts_.push_back(draft);
}

// New files are numbered from the oldest to the newest, so that the highest number was added last.
void CatalogueBuilder::GiveIds() {
  std::vector<Item>& items = catalogue_->items_;
  std::vector<uint32_t> fresh;
  for (uint32_t i = 0; i < items.size(); ++i)
    if (items[i].id == 0) fresh.push_back(i);
  const auto age = [&](uint32_t i) {
    const std::string_view folder = catalogue_->FolderPath(items[i].folder);
    return std::make_tuple(items[i].date, folder, catalogue_->Text(items[i].name));
  };
  std::sort(fresh.begin(), fresh.end(),
            [&](uint32_t left, uint32_t right) { return age(left) < age(right); });
  for (const uint32_t i : fresh) {
    const uint32_t twin = state_->Find(drafts_[i].key).id;  // the same file in two rows
    items[i].id = twin != 0 ? twin : state_->Add(drafts_[i].key, drafts_[i].pieces);
  }
}

void CatalogueBuilder::SortById() {
  std::vector<Item>& items = catalogue_->items_;
  std::vector<uint32_t> order(items.size());
  std::iota(order.begin(), order.end(), 0);
  std::sort(order.begin(), order.end(),
            [&](uint32_t left, uint32_t right) { return items[left].id < items[right].id; });
  const auto same = [&](uint32_t left, uint32_t right) {
    return items[left].id == items[right].id;
  };
  order.erase(std::unique(order.begin(), order.end(), same), order.end());
  std::vector<Item> sorted;
  std::vector<Draft> drafts;
  sorted.reserve(order.size());
  drafts.reserve(order.size());
  for (const uint32_t i : order) {
    sorted.push_back(items[i]);
    drafts.push_back(drafts_[i]);
  }
  items.swap(sorted);
  drafts_.swap(drafts);
}

std::shared_ptr<const Catalogue> CatalogueBuilder::Finish() {
  GiveIds();
  SortById();
  BuildViews();
  Flatten();
  TellChanges();
  state_->Commit();
  catalogue_->arena_.shrink_to_fit();
  catalogue_->places_.shrink_to_fit();
  catalogue_->media_.shrink_to_fit();
  return std::move(catalogue_);
}

}  // namespace orxserve
