// The texts that clients know objects by.  "17": a container, or an item in its folder; "5$17":
// item 17 as it stands in container 5.
#pragma once

#include <string>
#include <string_view>

#include "Catalogue.h"

namespace orxserve {

// An object of a catalogue; one of both is set.
struct ObjectRef {
  const Container* container = nullptr;
  const Item* item = nullptr;
  const Container* within = nullptr;  // where the item stands

  explicit operator bool() const { return container != nullptr || item != nullptr; }
};

// Nothing when there is no such object, or the item is not in that container.
ObjectRef FindObject(const Catalogue& catalogue, std::string_view id);

std::string ItemId(const Catalogue& catalogue, const Item& item, const Container& within);

const char* ClassOf(Kind kind);
const char* ClassOf(ContainerKind kind);

}  // namespace orxserve
