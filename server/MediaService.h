// Files and the pictures in them, over HTTP: ranges, validators and DLNA's own headers.
#pragma once

#include "Catalogue.h"
#include "Http.h"

namespace orxserve {

class MediaService {
 public:
  explicit MediaService(const CatalogueHolder& catalogues) : catalogues_(catalogues) {}

  // Answers "/o/17.jpg" and its like; 404 for every other path.
  HttpAnswer Get(const HttpRequest& request) const;

 private:
  HttpAnswer Original(const HttpRequest& request, const Catalogue& catalogue,
                      const Item& item) const;
  HttpAnswer PieceOf(const HttpRequest& request, const Catalogue& catalogue, const Item& item,
                     Piece piece) const;
  HttpAnswer Captions(const HttpRequest& request, const Catalogue& catalogue,
                      const Item& item) const;

  const CatalogueHolder& catalogues_;
};

// Takes "/o/17.jpg" apart; false when it is no such path.
bool ParseMediaPath(std::string_view path, char* letter, uint32_t* id);

}  // namespace orxserve
