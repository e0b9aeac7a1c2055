// The properties of objects that can be searched and sorted by.
#pragma once

#include <string>
#include <string_view>

#include "Catalogue.h"

namespace orxserve {

enum class Property : uint8_t {
  kUnknown,  // a name that is not ours: no object has it
  kId,
  kParentId,
  kRefId,
  kTitle,
  kClass,
  kDate,
  kCreator,
  kDescription,
  kArtist,
  kAlbum,
  kTrackNumber,  // the place in the camera's order; only to sort by
  kRes,
  kSize,
  kDuration,
  kResolution,
  kBitRate,
  kProtocolInfo,
};

Property PropertyNamed(std::string_view name);
bool IsNumeric(Property property);

// Lists of names, for GetSearchCapabilities and GetSortCapabilities.
const char* SearchableProperties();
const char* SortableProperties();
bool IsSortable(Property property);

// An entry with the container that it stands in (an index).
struct PlacedEntry {
  Entry entry;
  uint32_t within;
};

// Writes the value over `value`; false when the object does not have the property.
bool PropertyValue(const Catalogue& catalogue, const PlacedEntry& object, Property property,
                   std::string* value);

}  // namespace orxserve
