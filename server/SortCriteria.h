// The SortCriteria argument of Browse and Search: "+dc:date,-dc:title".
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "Properties.h"

namespace orxserve {

class SortCriteria {
 public:
  // Nothing when a part is malformed, or names what cannot be sorted by.
  static std::optional<SortCriteria> Parse(std::string_view text);

  bool empty() const { return keys_.empty(); }
  // Objects that compare alike, or lack the property, keep their order; the latter come last.
  void Sort(const Catalogue& catalogue, std::vector<PlacedEntry>* objects) const;

 private:
  struct Key {
    Property property;
    bool descending;
  };
  void SortBy(const Key& key, const Catalogue& catalogue, std::vector<PlacedEntry>* objects) const;

  std::vector<Key> keys_;
};

}  // namespace orxserve
