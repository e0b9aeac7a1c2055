// Ranges of bytes, and the paths and host names of requests.
#include "Range.h"

#include <cstdint>
#include <cstdlib>
#include <string>

#include "Http.h"
#include "MediaService.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace orxserve;
  const std::string text(reinterpret_cast<const char*>(data), size);
  for (const uint64_t whole : {uint64_t{0}, uint64_t{1}, uint64_t{1000}, UINT64_MAX}) {
    const ByteRange range = ParseRange(text, whole);
    const bool part = range.kind == ByteRange::Kind::kPart;
    if (part && (range.length == 0 || range.first >= whole || range.length > whole - range.first))
      abort();
  }
  char letter = 0;
  uint32_t id = 0;
  ParseMediaPath(text, &letter, &id);
  HttpRequest request;
  request.local = *IpAddress::Parse("10.0.0.1");
  request.port = 8200;
  IsOwnHost(text, request, "machine");
  return 0;
}
