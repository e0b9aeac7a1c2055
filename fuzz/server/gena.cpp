// The headers of subscriptions: callbacks and times; and addresses and networks.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "Subscriptions.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace orxserve;
  const std::string text(reinterpret_cast<const char*>(data), size);
  if (const auto callback = ParseCallback(text)) {
    if (callback->path.find_first_of("\r\n <>") != std::string::npos) abort();
    if (callback->path.front() != '/' || callback->port == 0) abort();
  }
  const unsigned seconds = ParseTimeout(text);
  if (seconds < 60 || seconds > 1800) abort();
  const auto subnet = Subnet::Parse(text);
  if (subnet && !subnet->Contains(subnet->address)) abort();
  return 0;
}
