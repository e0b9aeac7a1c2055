// The network interfaces that the server is on, and whom it answers.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "Net.h"

namespace orxserve {

struct Interface {
  std::string name;
  unsigned index = 0;
  std::vector<Subnet> addresses;  // IPv4, and IPv6 of the link
  friend bool operator==(const Interface& left, const Interface& right) {
    return left.name == right.name && left.index == right.index &&
           left.addresses == right.addresses;
  }
};

// Those that are up and reach others by multicast: the named ones, or all but loopback.
std::vector<Interface> ListInterfaces(const std::vector<std::string>& names);

// Who is answered: machines in the subnets of the interfaces, this machine itself, and those that
// the user allows.  Changes as addresses come and go; asked by any thread.
class AccessList {
 public:
  explicit AccessList(std::vector<Subnet> allowed = {}) : allowed_(std::move(allowed)) {}
  void SetInterfaces(const std::vector<Interface>& interfaces);
  bool Allows(const IpAddress& peer) const;
  // Both are in one subnet of ours, or are one machine.
  bool AreNeighbours(const IpAddress& left, const IpAddress& right) const;

 private:
  mutable std::mutex mutex_;
  std::vector<Subnet> allowed_;
  std::vector<Subnet> local_;
};

}  // namespace orxserve
