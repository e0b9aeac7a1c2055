// The texts of discovery.  Knows no sockets.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orxserve {

constexpr size_t kLargestSsdp = 2048;  // bytes of a datagram that is looked at

// An M-SEARCH that is to be answered.
struct SsdpSearch {
  std::string target;
  unsigned wait = 0;  // seconds, 0 when it was not sent by multicast
};

// Nothing for what is no search, or not one of UPnP.
std::optional<SsdpSearch> ParseSearch(std::string_view datagram, bool multicast);

// What the device is known by: itself, its type, its services.
struct SsdpTarget {
  std::string type;  // NT and ST
  std::string name;  // USN
};

class SsdpDevice {
 public:
  SsdpDevice(const std::string& uuid, unsigned maxAge);

  const std::vector<SsdpTarget>& targets() const { return targets_; }
  unsigned maxAge() const { return maxAge_; }
  // Those that a search asks for.
  std::vector<SsdpTarget> Matching(const std::string& target) const;

  // `group` is "239.255.255.250:1900" or its like; `location` the address of the description.
  std::string Alive(const SsdpTarget& target, std::string_view group,
                    const std::string& location) const;
  std::string ByeBye(const SsdpTarget& target, std::string_view group) const;
  std::string Found(const SsdpTarget& target, const std::string& location, time_t now) const;

 private:
  std::vector<SsdpTarget> targets_;
  unsigned maxAge_;
};

}  // namespace orxserve
