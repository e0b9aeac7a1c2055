#include "SortCriteria.h"

#include <algorithm>
#include <numeric>

#include "Texts.h"

namespace orxserve {
namespace {

constexpr size_t kLongestCriteria = 512;  // bytes
constexpr size_t kMostKeys = 8;

}  // namespace

std::optional<SortCriteria> SortCriteria::Parse(std::string_view text) {
  SortCriteria criteria;
  text = Trim(text);
  if (text.size() > kLongestCriteria) return {};
  while (!text.empty()) {
    std::string_view part = TakePart(&text, ',');
    if (part.empty() || (part.front() != '+' && part.front() != '-')) return {};
    const bool descending = part.front() == '-';
    const Property property = PropertyNamed(Trim(part.substr(1)));
    if (!IsSortable(property) || criteria.keys_.size() >= kMostKeys) return {};
    criteria.keys_.push_back({property, descending});
  }
  return criteria;
}

void SortCriteria::SortBy(const Key& key, const Catalogue& catalogue,
                          std::vector<PlacedEntry>* objects) const {
  struct Row {
    bool known = false;
    uint64_t number = 0;
    std::string text;
  };
  std::vector<Row> rows(objects->size());
  for (size_t i = 0; i < rows.size(); ++i) {
    rows[i].known = PropertyValue(catalogue, (*objects)[i], key.property, &rows[i].text);
    if (IsNumeric(key.property)) ParseNumber(rows[i].text, &rows[i].number);
  }
  std::vector<uint32_t> order(rows.size());
  std::iota(order.begin(), order.end(), 0);
  const auto before = [&](uint32_t left, uint32_t right) {
    const Row& a = rows[left];
    const Row& b = rows[right];
    if (a.known != b.known) return a.known;
    int difference = a.number < b.number ? -1 : a.number > b.number ? 1 : 0;
    if (!IsNumeric(key.property)) difference = CompareNoCase(a.text, b.text);
    return key.descending ? difference > 0 : difference < 0;
  };
  std::stable_sort(order.begin(), order.end(), before);
  std::vector<PlacedEntry> sorted;
  sorted.reserve(order.size());
  for (const uint32_t i : order) sorted.push_back((*objects)[i]);
  objects->swap(sorted);
}

// From the least important key to the most important one: every pass keeps the order of the last.
void SortCriteria::Sort(const Catalogue& catalogue, std::vector<PlacedEntry>* objects) const {
  for (auto key = keys_.rbegin(); key != keys_.rend(); ++key)
    if (key->property != Property::kTrackNumber) SortBy(*key, catalogue, objects);
}

}  // namespace orxserve
