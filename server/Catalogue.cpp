#include "Catalogue.h"

#include <algorithm>

namespace orxserve {
namespace {

const MediaFacts kNoMedia{};

}  // namespace

Catalogue::Catalogue(uint32_t updateId) : arena_(1, '\0'), updateId_(updateId) {
  containers_.push_back({kRootId, 0, 0, ContainerKind::kView, 0, 0, 0, 0, 0});
  containersById_.push_back(0);
}

std::string Catalogue::PathOf(const Item& item) const {
  std::string path(FolderPath(item.folder));
  if (path != "/") path += '/';
  return path.append(Text(item.name));
}

std::string_view Catalogue::TitleOf(const Item& item) const {
  const std::string_view name = Text(item.name);
  const size_t dot = name.rfind('.');
  return dot == 0 || dot == std::string_view::npos ? name : name.substr(0, dot);
}

const MediaFacts& Catalogue::MediaOf(const Item& item) const {
  return item.media == kNone ? kNoMedia : media_[item.media];
}

PiecePlace Catalogue::PieceOf(const Item& item, Piece piece) const {
  const unsigned bit = 1U << static_cast<unsigned>(piece);
  if ((item.pieceBits & bit) == 0) return {};
  const auto before = static_cast<uint32_t>(__builtin_popcount(item.pieceBits & (bit - 1)));
  const PackedPlace& packed = places_[item.pieces + before];
  const uint64_t high = packed.lengthAndOffset >> 24;
  return {high << 32 | packed.offset, packed.lengthAndOffset & 0xFFFFFF, packed.width,
          packed.height};
}

const Item* Catalogue::FindItem(uint32_t id) const {
  const auto at = std::lower_bound(items_.begin(), items_.end(), id,
                                   [](const Item& item, uint32_t want) { return item.id < want; });
  return at != items_.end() && at->id == id ? &*at : nullptr;
}

const Container* Catalogue::FindContainer(uint32_t id) const {
  const auto at =
      std::lower_bound(containersById_.begin(), containersById_.end(), id,
                       [&](uint32_t index, uint32_t want) { return containers_[index].id < want; });
  if (at == containersById_.end() || containers_[*at].id != id) return nullptr;
  return &containers_[*at];
}

Entry Catalogue::Child(const Container& container, uint32_t at) const {
  if (at < container.containerCount) return {true, containerOrder_[container.firstContainer + at]};
  return {false, itemOrder_[container.firstItem + at - container.containerCount]};
}

size_t Catalogue::MemoryBytes() const {
  return arena_.capacity() + folders_.capacity() * sizeof(Folder) +
         items_.capacity() * sizeof(Item) + media_.capacity() * sizeof(MediaFacts) +
         places_.capacity() * sizeof(PackedPlace) + containers_.capacity() * sizeof(Container) +
         (containerOrder_.capacity() + itemOrder_.capacity() + containersById_.capacity()) * 4;
}

}  // namespace orxserve
