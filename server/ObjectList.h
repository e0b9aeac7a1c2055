// The objects that a Browse or Search answers with, in order, before paging.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Catalogue.h"
#include "Properties.h"
#include "SearchCriteria.h"
#include "SortCriteria.h"

namespace orxserve {

// Either a container's children as they stand in the catalogue, or a list of its own.
class ObjectList {
 public:
  ObjectList() = default;
  ObjectList(const Catalogue& catalogue, const Container& container)
      : catalogue_(&catalogue), container_(&container) {}
  explicit ObjectList(std::shared_ptr<const std::vector<PlacedEntry>> list)
      : list_(std::move(list)) {}

  uint32_t size() const;
  PlacedEntry at(uint32_t place) const;

 private:
  const Catalogue* catalogue_ = nullptr;
  const Container* container_ = nullptr;
  std::shared_ptr<const std::vector<PlacedEntry>> list_;
};

// Keeps the lists that were asked for last: clients page through them.
class ObjectListCache {
 public:
  ObjectList Children(const std::shared_ptr<const Catalogue>& catalogue, const Container& container,
                      const std::string& sort, const SortCriteria& criteria);
  ObjectList Found(const std::shared_ptr<const Catalogue>& catalogue, const Container& container,
                   const std::string& search, const SearchCriteria& criteria,
                   const std::string& sort, const SortCriteria& order);

 private:
  using List = std::vector<PlacedEntry>;
  struct Kept {
    std::weak_ptr<const Catalogue> catalogue;
    std::string key;
    std::shared_ptr<const List> list;
  };
  std::shared_ptr<const List> Find(const std::shared_ptr<const Catalogue>& catalogue,
                                   const std::string& key);
  ObjectList Keep(const std::shared_ptr<const Catalogue>& catalogue, std::string key, List list);

  std::mutex mutex_;
  std::vector<Kept> kept_;  // the one used last is the last
};

// What below the container matches: its containers, then each file once.  Below the root a file
// stands where its folder is.
std::vector<PlacedEntry> FindMatches(const Catalogue& catalogue, const Container& container,
                                     const SearchCriteria& criteria);

}  // namespace orxserve
