#include "Properties.h"

#include "Didl.h"
#include "ObjectId.h"
#include "Texts.h"

namespace orxserve {
namespace {

struct Name {
  std::string_view text;
  Property property;
};
constexpr Name kNames[] = {
    {"@id", Property::kId},
    {"@parentID", Property::kParentId},
    {"@refID", Property::kRefId},
    {"dc:title", Property::kTitle},
    {"upnp:class", Property::kClass},
    {"dc:date", Property::kDate},
    {"dc:creator", Property::kCreator},
    {"dc:description", Property::kDescription},
    {"upnp:artist", Property::kArtist},
    {"upnp:album", Property::kAlbum},
    {"upnp:originalTrackNumber", Property::kTrackNumber},
    {"res", Property::kRes},
    {"res@size", Property::kSize},
    {"res@duration", Property::kDuration},
    {"res@resolution", Property::kResolution},
    {"res@bitrate", Property::kBitRate},
    {"res@protocolInfo", Property::kProtocolInfo},
};

bool Assign(std::string* value, std::string_view text) {
  value->assign(text);
  return !text.empty();
}

bool AssignNumber(std::string* value, uint64_t number) {
  value->clear();
  AppendNumber(value, number);
  return number != 0;
}

bool ContainerValue(const Catalogue& catalogue, const Container& container, Property property,
                    std::string* value) {
  switch (property) {
    case Property::kId:
      AssignNumber(value, container.id);
      return true;
    case Property::kParentId:
      AssignNumber(value, catalogue.containers()[container.parent].id);
      return container.id != kRootId;
    case Property::kTitle:
      return Assign(value, catalogue.Text(container.title));
    case Property::kClass:
      return Assign(value, ClassOf(container.kind));
    default:
      return false;
  }
}

bool ResolutionValue(const Item& item, std::string* value) {
  AssignNumber(value, item.width);
  value->push_back('x');
  AppendNumber(value, item.height);
  return item.width != 0 && item.height != 0;
}

bool ItemValue(const Catalogue& catalogue, const Item& item, const Container& within,
               Property property, std::string* value) {
  const MediaFacts& media = catalogue.MediaOf(item);
  value->clear();
  switch (property) {
    case Property::kId:
      return Assign(value, ItemId(catalogue, item, within));
    case Property::kParentId:
      AssignNumber(value, within.id);
      return true;
    case Property::kRefId:
      AssignNumber(value, item.id);
      return &catalogue.containers()[catalogue.HomeOf(item)] != &within;
    case Property::kTitle:
      return Assign(value, catalogue.TitleOf(item));
    case Property::kClass:
      return Assign(value, ClassOf(item.kind));
    case Property::kDate:
      if (item.date != 0) AppendDate(value, item.date);
      return item.date != 0;
    case Property::kCreator:
    case Property::kArtist:
      return Assign(value, catalogue.Text(media.artist));
    case Property::kAlbum:
      return Assign(value, catalogue.Text(media.album));
    case Property::kDescription:
      return Assign(value, catalogue.Text(item.description));
    case Property::kRes:
      return true;
    case Property::kSize:
      return AssignNumber(value, item.size);
    case Property::kDuration:
      if (media.duration != 0) AppendDuration(value, media.duration);
      return media.duration != 0;
    case Property::kResolution:
      return ResolutionValue(item, value);
    case Property::kBitRate:
      return AssignNumber(value, media.bitRate / 8);
    case Property::kProtocolInfo:
      return Assign(value, catalogue.FormatOf(item).protocolInfo);
    case Property::kTrackNumber:
    case Property::kUnknown:
      break;
  }
  return false;
}

}  // namespace

Property PropertyNamed(std::string_view name) {
  for (const Name& known : kNames)
    if (name == known.text) return known.property;
  return Property::kUnknown;
}

bool IsNumeric(Property property) {
  return property == Property::kSize || property == Property::kBitRate;
}

const char* SearchableProperties() {
  return "@id,@parentID,@refID,dc:title,upnp:class,dc:date,dc:creator,dc:description,upnp:artist,"
         "upnp:album,res,res@size,res@duration,res@resolution,res@bitrate,res@protocolInfo";
}

const char* SortableProperties() {
  return "dc:title,upnp:class,dc:date,dc:creator,upnp:artist,upnp:album,upnp:originalTrackNumber,"
         "res@size,res@duration";
}

bool IsSortable(Property property) {
  switch (property) {
    case Property::kTitle:
    case Property::kClass:
    case Property::kDate:
    case Property::kCreator:
    case Property::kArtist:
    case Property::kAlbum:
    case Property::kTrackNumber:
    case Property::kSize:
    case Property::kDuration:
      return true;
    default:
      return false;
  }
}

bool PropertyValue(const Catalogue& catalogue, const PlacedEntry& object, Property property,
                   std::string* value) {
  if (object.entry.isContainer)
    return ContainerValue(catalogue, catalogue.containers()[object.entry.index], property, value);
  return ItemValue(catalogue, catalogue.items()[object.entry.index],
                   catalogue.containers()[object.within], property, value);
}

}  // namespace orxserve
