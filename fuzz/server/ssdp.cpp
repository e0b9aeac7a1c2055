// Datagrams of discovery: what is a search, whom it is for, and what the answers look like.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "SsdpMessage.h"
#include "SsdpPlan.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace orxserve;
  static const SsdpDevice device("00000000-0000-4000-8000-000000000000", 1800);
  const std::string_view datagram(reinterpret_cast<const char*>(data), size);
  for (const bool multicast : {false, true}) {
    const auto search = ParseSearch(datagram, multicast);
    if (!search) continue;
    if (search->wait > 5 || (multicast && search->wait == 0)) abort();
    for (const SsdpTarget& target : device.Matching(search->target))
      if (device.Found(target, "http://10.0.0.1:8200/device.xml", 0).size() > 1400) abort();
  }
  return 0;
}
