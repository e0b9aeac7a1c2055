// Search and sort criteria, and the filter: parsed, then applied to a film.
#include <cstdint>
#include <string>

#include "Filter.h"
#include "SearchCriteria.h"
#include "SortCriteria.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace orxserve;
  const std::string text(reinterpret_cast<const char*>(data), size);
  const Filter filter(text);
  filter.Wants(Filter::kRes);
  if (const auto sort = SortCriteria::Parse(text)) {
    const Catalogue empty;
    std::vector<PlacedEntry> objects(2, {{true, 0}, 0});
    sort->Sort(empty, &objects);
  }
  const auto criteria = SearchCriteria::Parse(text);
  if (!criteria) return 0;
  criteria->Matches([](Property property, std::string* value) {
    *value = property == Property::kSize ? "1000" : "object.item.videoItem";
    return property != Property::kAlbum;
  });
  return 0;
}
