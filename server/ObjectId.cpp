#include "ObjectId.h"

#include "Texts.h"

namespace orxserve {
namespace {

bool ParseId(std::string_view text, uint32_t* id) {
  uint64_t number = 0;
  const bool canonical = text.size() == 1 || (!text.empty() && text.front() != '0');
  if (!canonical || !ParseNumber(text, &number) || number > UINT32_MAX) return false;
  *id = static_cast<uint32_t>(number);
  return true;
}

bool Holds(const Catalogue& catalogue, const Container& container, const Item& item) {
  for (uint32_t at = container.containerCount; at < catalogue.ChildCount(container); ++at)
    if (&catalogue.items()[catalogue.Child(container, at).index] == &item) return true;
  return false;
}

}  // namespace

ObjectRef FindObject(const Catalogue& catalogue, std::string_view id) {
  const size_t mark = id.find('$');
  uint32_t number = 0;
  if (!ParseId(id.substr(mark == std::string_view::npos ? 0 : mark + 1), &number)) return {};
  const Item* item = catalogue.FindItem(number);
  if (mark == std::string_view::npos) {
    if (item != nullptr) return {nullptr, item, &catalogue.containers()[catalogue.HomeOf(*item)]};
    return {catalogue.FindContainer(number), nullptr, nullptr};
  }
  uint32_t place = 0;
  const Container* within =
      ParseId(id.substr(0, mark), &place) ? catalogue.FindContainer(place) : nullptr;
  if (item == nullptr || within == nullptr || !Holds(catalogue, *within, *item)) return {};
  return {nullptr, item, within};
}

std::string ItemId(const Catalogue& catalogue, const Item& item, const Container& within) {
  std::string id;
  if (&catalogue.containers()[catalogue.HomeOf(item)] != &within) {
    AppendNumber(&id, within.id);
    id += '$';
  }
  AppendNumber(&id, item.id);
  return id;
}

const char* ClassOf(Kind kind) {
  switch (kind) {
    case Kind::kPicture:
      return "object.item.imageItem.photo";
    case Kind::kSound:
      return "object.item.audioItem.musicTrack";
    case Kind::kFilm:
      break;
  }
  return "object.item.videoItem";
}

const char* ClassOf(ContainerKind kind) {
  switch (kind) {
    case ContainerKind::kFolder:
      return "object.container.storageFolder";
    case ContainerKind::kDate:
    case ContainerKind::kPhotoFolder:
      return "object.container.album.photoAlbum";
    case ContainerKind::kArtist:
      return "object.container.person.musicArtist";
    case ContainerKind::kAlbum:
      return "object.container.album.musicAlbum";
    case ContainerKind::kView:
      break;
  }
  return "object.container";
}

}  // namespace orxserve
