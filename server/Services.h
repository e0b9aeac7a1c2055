// The two small services beside the content directory.
#pragma once

#include <memory>
#include <mutex>

#include "ContentDirectory.h"
#include "Device.h"

namespace orxserve {

// Tells what the server can send; it keeps no connections.
class ConnectionManager {
 public:
  explicit ConnectionManager(const CatalogueHolder& catalogues) : catalogues_(catalogues) {}
  int Perform(const SoapAction& action, std::unique_ptr<Answer>* answer);
  std::string Source();  // kept as long as the catalogue is the same

 private:
  const CatalogueHolder& catalogues_;
  std::mutex mutex_;
  std::weak_ptr<const Catalogue> of_;
  std::string source_;
};

// Tells every client that it may use the server; some do not show it otherwise.
int PerformRegistrar(const SoapAction& action, std::unique_ptr<Answer>* answer);

}  // namespace orxserve
