// The page for people: the contact sheet, its data, and the list for browsers without scripts.
#pragma once

#include <string>

#include "Catalogue.h"
#include "Http.h"

namespace orxserve {

class PageService {
 public:
  PageService(const CatalogueHolder& catalogues, std::string name);
  // Answers "/", what it is made of, its data and its events; 404 for every other path.
  HttpAnswer Get(const HttpRequest& request) const;

 private:
  HttpAnswer Page(const HttpRequest& request) const;
  HttpAnswer Items(const HttpRequest& request) const;

  const CatalogueHolder& catalogues_;
  std::string name_;
};

// Every item, folder by folder in the camera's order, as the page's script takes them.
std::string ItemsJson(const Catalogue& catalogue);

// One page of the plain list, counted from 0.
std::string PlainList(const Catalogue& catalogue, uint64_t page);

}  // namespace orxserve
