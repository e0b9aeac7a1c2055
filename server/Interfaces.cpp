#include "Interfaces.h"

#include <ifaddrs.h>
#include <net/if.h>

#include <algorithm>
#include <memory>

namespace orxserve {
namespace {

struct FreeAddresses {
  void operator()(ifaddrs* list) const { freeifaddrs(list); }
};

unsigned PrefixOf(const sockaddr* mask) {
  const auto bits = IpAddress::From(mask);
  if (!bits) return 0;
  unsigned prefix = 0;
  while (prefix < bits->bits() && (bits->bytes()[prefix / 8] << prefix % 8 & 0x80) != 0) ++prefix;
  return prefix;
}

bool IsWanted(const ifaddrs& entry, const std::vector<std::string>& names) {
  if (entry.ifa_addr == nullptr || (entry.ifa_flags & IFF_UP) == 0) return false;
  if (!names.empty()) return std::find(names.begin(), names.end(), entry.ifa_name) != names.end();
  return (entry.ifa_flags & IFF_MULTICAST) != 0 && (entry.ifa_flags & IFF_LOOPBACK) == 0;
}

Interface& Named(std::vector<Interface>* interfaces, const char* name) {
  for (Interface& known : *interfaces)
    if (known.name == name) return known;
  interfaces->push_back({name, if_nametoindex(name), {}});
  return interfaces->back();
}

}  // namespace

std::vector<Interface> ListInterfaces(const std::vector<std::string>& names) {
  ifaddrs* raw = nullptr;
  std::vector<Interface> interfaces;
  if (getifaddrs(&raw) != 0) return interfaces;
  const std::unique_ptr<ifaddrs, FreeAddresses> list(raw);
  for (const ifaddrs* entry = raw; entry != nullptr; entry = entry->ifa_next) {
    if (!IsWanted(*entry, names)) continue;
    const auto address = IpAddress::From(entry->ifa_addr);
    if (!address || (address->isV6() && !address->isLinkLocal())) continue;
    unsigned prefix = PrefixOf(entry->ifa_netmask);
    if (prefix == 0) prefix = address->bits();
    Named(&interfaces, entry->ifa_name).addresses.push_back({*address, prefix});
  }
  return interfaces;
}

void AccessList::SetInterfaces(const std::vector<Interface>& interfaces) {
  const std::lock_guard<std::mutex> lock(mutex_);
  local_.clear();
  for (const Interface& interface : interfaces)
    local_.insert(local_.end(), interface.addresses.begin(), interface.addresses.end());
}

bool AccessList::Allows(const IpAddress& peer) const {
  if (peer.isLoopback()) return true;
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto contains = [&](const Subnet& subnet) { return subnet.Contains(peer); };
  return std::any_of(local_.begin(), local_.end(), contains) ||
         std::any_of(allowed_.begin(), allowed_.end(), contains);
}

bool AccessList::AreNeighbours(const IpAddress& left, const IpAddress& right) const {
  if (left == right) return true;
  const std::lock_guard<std::mutex> lock(mutex_);
  return std::any_of(local_.begin(), local_.end(), [&](const Subnet& subnet) {
    return subnet.Contains(left) && subnet.Contains(right);
  });
}

}  // namespace orxserve
