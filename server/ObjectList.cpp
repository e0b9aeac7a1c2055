#include "ObjectList.h"

#include <algorithm>

namespace orxserve {
namespace {

constexpr size_t kMostKept = 4;
constexpr size_t kLargestKept = 20000;  // objects in one list

// All containers below `top`, in the order of a walk.
std::vector<uint32_t> ContainersBelow(const Catalogue& catalogue, const Container& top) {
  const auto first = static_cast<uint32_t>(&top - catalogue.containers().data());
  std::vector<uint32_t> waiting{first};
  std::vector<uint32_t> walked;
  while (!waiting.empty()) {
    const uint32_t index = waiting.back();
    waiting.pop_back();
    walked.push_back(index);
    const Container& container = catalogue.containers()[index];
    for (uint32_t at = container.containerCount; at > 0; --at)
      waiting.push_back(catalogue.Child(container, at - 1).index);
  }
  return walked;
}

}  // namespace

uint32_t ObjectList::size() const {
  if (list_ != nullptr) return static_cast<uint32_t>(list_->size());
  return container_ == nullptr ? 0 : catalogue_->ChildCount(*container_);
}

PlacedEntry ObjectList::at(uint32_t place) const {
  if (list_ != nullptr) return (*list_)[place];
  const auto within = static_cast<uint32_t>(container_ - catalogue_->containers().data());
  return {catalogue_->Child(*container_, place), within};
}

std::vector<PlacedEntry> FindMatches(const Catalogue& catalogue, const Container& container,
                                     const SearchCriteria& criteria) {
  std::vector<PlacedEntry> found;
  std::vector<bool> seen(catalogue.items().size());
  const std::vector<uint32_t> places = ContainersBelow(catalogue, container);
  const auto take = [&](const PlacedEntry& object) {
    const auto values = [&](Property property, std::string* value) {
      return PropertyValue(catalogue, object, property, value);
    };
    if (criteria.Matches(values)) found.push_back(object);
  };
  for (size_t i = 1; i < places.size(); ++i)
    take({{true, places[i]}, catalogue.containers()[places[i]].parent});
  for (const uint32_t place : places) {
    const Container& within = catalogue.containers()[place];
    for (uint32_t at = within.containerCount; at < catalogue.ChildCount(within); ++at) {
      const Entry entry = catalogue.Child(within, at);
      if (seen[entry.index]) continue;
      seen[entry.index] = true;
      take({entry, place});
    }
  }
  return found;
}

std::shared_ptr<const std::vector<PlacedEntry>> ObjectListCache::Find(
    const std::shared_ptr<const Catalogue>& catalogue, const std::string& key) {
  const std::lock_guard<std::mutex> lock(mutex_);
  for (auto kept = kept_.begin(); kept != kept_.end(); ++kept) {
    if (kept->key != key || kept->catalogue.lock() != catalogue) continue;
    std::rotate(kept, kept + 1, kept_.end());
    return kept_.back().list;
  }
  return nullptr;
}

ObjectList ObjectListCache::Keep(const std::shared_ptr<const Catalogue>& catalogue, std::string key,
                                 List list) {
  const auto shared = std::make_shared<const List>(std::move(list));
  if (shared->size() <= kLargestKept) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (kept_.size() >= kMostKept) kept_.erase(kept_.begin());
    kept_.push_back({catalogue, std::move(key), shared});
  }
  return ObjectList(shared);
}

ObjectList ObjectListCache::Children(const std::shared_ptr<const Catalogue>& catalogue,
                                     const Container& container, const std::string& sort,
                                     const SortCriteria& criteria) {
  ObjectList children(*catalogue, container);
  if (criteria.empty()) return children;
  std::string key = std::to_string(container.id) + '\n' + sort;
  if (auto known = Find(catalogue, key)) return ObjectList(std::move(known));
  List list;
  for (uint32_t at = 0; at < children.size(); ++at) list.push_back(children.at(at));
  criteria.Sort(*catalogue, &list);
  return Keep(catalogue, std::move(key), std::move(list));
}

ObjectList ObjectListCache::Found(const std::shared_ptr<const Catalogue>& catalogue,
                                  const Container& container, const std::string& search,
                                  const SearchCriteria& criteria, const std::string& sort,
                                  const SortCriteria& order) {
  std::string key = std::to_string(container.id) + '\n' + sort + '\n' + search;
  if (auto known = Find(catalogue, key)) return ObjectList(std::move(known));
  List list = FindMatches(*catalogue, container, criteria);
  order.Sort(*catalogue, &list);
  return Keep(catalogue, std::move(key), std::move(list));
}

}  // namespace orxserve
