#include "PageService.h"

namespace orxserve {

PageService::PageService(const CatalogueHolder& catalogues, std::string name)
    : catalogues_(catalogues), name_(std::move(name)) {}

HttpAnswer PageService::Get(const HttpRequest&) const { return HttpAnswer::Status(404); }

}  // namespace orxserve
