// Addresses of machines and the networks that they are in.
#pragma once

#include <netinet/in.h>
#include <sys/socket.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orxserve {

// An IPv4 or IPv6 address.  An IPv4 address that is written as an IPv6 one counts as the former.
class IpAddress {
 public:
  IpAddress() = default;                                         // none
  static std::optional<IpAddress> Parse(std::string_view text);  // numeric, without brackets
  static std::optional<IpAddress> From(const sockaddr* address);

  bool isV4() const { return family_ == AF_INET; }
  bool isV6() const { return family_ == AF_INET6; }
  bool isLoopback() const;
  bool isLinkLocal() const;  // of IPv6
  const uint8_t* bytes() const { return bytes_.data(); }
  unsigned bits() const { return isV4() ? 32 : isV6() ? 128 : 0; }

  std::string Text() const;
  std::string UrlHost() const;  // an IPv6 address in brackets
  socklen_t ToSockaddr(uint16_t port, uint32_t scope, sockaddr_storage* out) const;

  friend bool operator==(const IpAddress& left, const IpAddress& right) {
    return left.family_ == right.family_ && left.bytes_ == right.bytes_;
  }
  friend bool operator!=(const IpAddress& left, const IpAddress& right) { return !(left == right); }
  friend bool operator<(const IpAddress& left, const IpAddress& right) {
    return left.family_ != right.family_ ? left.family_ < right.family_
                                         : left.bytes_ < right.bytes_;
  }

 private:
  sa_family_t family_ = AF_UNSPEC;
  std::array<uint8_t, 16> bytes_{};
};

// "192.168.1.0/24"; the address of an interface with its prefix is one, too.
struct Subnet {
  IpAddress address;
  unsigned prefix = 0;

  static std::optional<Subnet> Parse(std::string_view text);
  bool Contains(const IpAddress& other) const;
  friend bool operator==(const Subnet& left, const Subnet& right) {
    return left.address == right.address && left.prefix == right.prefix;
  }
};

// A descriptor that closes itself.
class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  ~Descriptor() { Reset(); }
  Descriptor(Descriptor&& other) noexcept : number_(other.Release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    if (this != &other) Reset(other.Release());
    return *this;
  }
  int get() const { return number_; }
  explicit operator bool() const { return number_ >= 0; }
  int Release() {
    const int number = number_;
    number_ = -1;
    return number;
  }
  void Reset(int number = -1);

 private:
  int number_;
};

}  // namespace orxserve
