// The pages for people: the contact sheet, its data, and the list for browsers without scripts.
#pragma once

#include <string>

#include "Catalogue.h"
#include "Http.h"

namespace orxserve {

class PageService {
 public:
  PageService(const CatalogueHolder& catalogues, std::string name);
  HttpAnswer Get(const HttpRequest& request) const;

 private:
  const CatalogueHolder& catalogues_;
  std::string name_;
};

// The items from `start` on, as the page's script takes them.
std::string ItemsJson(const Catalogue& catalogue);

}  // namespace orxserve
