#include "Net.h"

#include <arpa/inet.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "Texts.h"

namespace orxserve {
namespace {

constexpr std::array<uint8_t, 12> kMappedV4 = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF};

}  // namespace

std::optional<IpAddress> IpAddress::Parse(std::string_view text) {
  const std::string terminated(text);
  IpAddress address;
  if (text.size() > INET6_ADDRSTRLEN || terminated.find('\0') != std::string::npos) return {};
  if (inet_pton(AF_INET, terminated.c_str(), address.bytes_.data()) == 1) {
    address.family_ = AF_INET;
    return address;
  }
  sockaddr_in6 v6 = {};
  v6.sin6_family = AF_INET6;
  if (inet_pton(AF_INET6, terminated.c_str(), &v6.sin6_addr) != 1) return {};
  return From(reinterpret_cast<const sockaddr*>(&v6));
}

std::optional<IpAddress> IpAddress::From(const sockaddr* address) {
  IpAddress result;
  if (address == nullptr) return {};
  if (address->sa_family == AF_INET) {
    result.family_ = AF_INET;
    memcpy(result.bytes_.data(), &reinterpret_cast<const sockaddr_in*>(address)->sin_addr, 4);
    return result;
  }
  if (address->sa_family != AF_INET6) return {};
  std::array<uint8_t, 16> bytes{};
  memcpy(bytes.data(), &reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr, bytes.size());
  const bool mapped = std::equal(kMappedV4.begin(), kMappedV4.end(), bytes.begin());
  result.family_ = mapped ? AF_INET : AF_INET6;
  if (mapped)
    std::copy(bytes.begin() + kMappedV4.size(), bytes.end(), result.bytes_.begin());
  else
    result.bytes_ = bytes;
  return result;
}

bool IpAddress::isLoopback() const {
  if (isV4()) return bytes_[0] == 127;
  return isV6() && bytes_[15] == 1 &&
         std::all_of(bytes_.begin(), bytes_.end() - 1, [](uint8_t byte) { return byte == 0; });
}

bool IpAddress::isLinkLocal() const {
  return isV6() && bytes_[0] == 0xFE && (bytes_[1] & 0xC0) == 0x80;
}

std::string IpAddress::Text() const {
  std::array<char, INET6_ADDRSTRLEN> text{};
  inet_ntop(family_, bytes_.data(), text.data(), text.size());
  return text.data();
}

std::string IpAddress::UrlHost() const { return isV6() ? "[" + Text() + "]" : Text(); }

socklen_t IpAddress::ToSockaddr(uint16_t port, uint32_t scope, sockaddr_storage* out) const {
  *out = {};
  if (isV4()) {
    auto* v4 = reinterpret_cast<sockaddr_in*>(out);
    v4->sin_family = AF_INET;
    v4->sin_port = htons(port);
    memcpy(&v4->sin_addr, bytes_.data(), 4);
    return sizeof *v4;
  }
  auto* v6 = reinterpret_cast<sockaddr_in6*>(out);
  v6->sin6_family = AF_INET6;
  v6->sin6_port = htons(port);
  v6->sin6_scope_id = scope;
  memcpy(&v6->sin6_addr, bytes_.data(), bytes_.size());
  return sizeof *v6;
}

std::optional<Subnet> Subnet::Parse(std::string_view text) {
  const size_t slash = text.find('/');
  const auto address = IpAddress::Parse(text.substr(0, slash));
  if (!address) return {};
  uint64_t prefix = address->bits();
  if (slash != std::string_view::npos && !ParseNumber(text.substr(slash + 1), &prefix)) return {};
  if (prefix > address->bits()) return {};
  return Subnet{*address, static_cast<unsigned>(prefix)};
}

bool Subnet::Contains(const IpAddress& other) const {
  if (address.isV4() != other.isV4() || address.bits() == 0) return false;
  const unsigned whole = prefix / 8;
  if (!std::equal(address.bytes(), address.bytes() + whole, other.bytes())) return false;
  const auto mask = static_cast<uint8_t>(0xFF00U >> prefix % 8);
  return prefix % 8 == 0 || ((address.bytes()[whole] ^ other.bytes()[whole]) & mask) == 0;
}

void Descriptor::Reset(int number) {
  if (number_ >= 0) close(number_);
  number_ = number;
}

}  // namespace orxserve
