// The ContentDirectory service: actions in, answers out; knows no sockets.
#pragma once

#include <memory>
#include <string>

#include "Catalogue.h"
#include "Filter.h"
#include "ObjectList.h"
#include "Soap.h"

namespace orxserve {

constexpr char kContentDirectory[] = "urn:schemas-upnp-org:service:ContentDirectory:1";

// An answer that is written piece by piece, so that a list of any length takes little memory.
class Answer {
 public:
  virtual ~Answer() = default;
  // Appends more to `out` until it holds some `enough` bytes; false when all has been written.
  virtual bool Write(std::string* out, size_t enough) = 0;
};

class ContentDirectory {
 public:
  explicit ContentDirectory(const CatalogueHolder& catalogues) : catalogues_(catalogues) {}

  // `base` begins the addresses of resources.  An error of UPnP with `answer` empty, or kNoError.
  int Perform(const SoapAction& action, const std::string& base, std::unique_ptr<Answer>* answer);

 private:
  int Browse(const SoapAction& action, const std::string& base, std::unique_ptr<Answer>* answer);
  int Search(const SoapAction& action, const std::string& base, std::unique_ptr<Answer>* answer);

  const CatalogueHolder& catalogues_;
  ObjectListCache lists_;
};

// An answer that is complete already.
std::unique_ptr<Answer> TextAnswer(std::string text);
// A response with these arguments.
std::unique_ptr<Answer> Response(
    std::string_view service, std::string_view action,
    std::initializer_list<std::pair<std::string_view, std::string>> arguments);

}  // namespace orxserve
