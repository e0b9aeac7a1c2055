#include "SsdpMessage.h"

#include <fmt/format.h>

#include <algorithm>

#include "Device.h"
#include "Http.h"
#include "Texts.h"

namespace orxserve {
namespace {

constexpr unsigned kLongestWait = 5;  // seconds
constexpr size_t kLongestTarget = 256;

// The value of a header; the lines behind the first one.
std::optional<std::string_view> HeaderIn(std::string_view lines, std::string_view name) {
  while (!lines.empty()) {
    std::string_view line = TakePart(&lines, '\n');
    if (line.empty()) return {};
    const size_t colon = line.find(':');
    if (colon != std::string_view::npos && EqualNoCase(Trim(line.substr(0, colon)), name))
      return Trim(line.substr(colon + 1));
  }
  return {};
}

// A later version answers for an earlier one, in the earlier one's name; ours are all the first.
bool Answers(const SsdpTarget& target, const std::string& wanted) {
  return target.type == wanted || wanted == "ssdp:all";
}

}  // namespace

std::optional<SsdpSearch> ParseSearch(std::string_view datagram, bool multicast) {
  if (datagram.size() > kLargestSsdp) return {};
  std::string_view lines = datagram;
  if (TakePart(&lines, '\n') != "M-SEARCH * HTTP/1.1") return {};
  const auto man = HeaderIn(lines, "MAN");
  const auto target = HeaderIn(lines, "ST");
  if (!man || *man != "\"ssdp:discover\"" || !target || target->empty() ||
      target->size() > kLongestTarget)
    return {};
  SsdpSearch search{std::string(*target), 0};
  if (!multicast) return search;
  const auto wait = HeaderIn(lines, "MX");
  uint64_t seconds = 0;
  if (!wait || !ParseNumber(*wait, &seconds)) return {};
  search.wait = static_cast<unsigned>(std::clamp<uint64_t>(seconds, 1, kLongestWait));
  return search;
}

SsdpDevice::SsdpDevice(const std::string& uuid, unsigned maxAge) : maxAge_(maxAge) {
  const std::string name = "uuid:" + uuid;
  targets_ = {{"upnp:rootdevice", name + "::upnp:rootdevice"}, {name, name}};
  targets_.push_back({kDeviceType, name + "::" + kDeviceType});
  for (size_t i = 0; i < kServiceCount; ++i)
    targets_.push_back({ServiceAt(i).type, name + "::" + ServiceAt(i).type});
}

std::vector<SsdpTarget> SsdpDevice::Matching(const std::string& wanted) const {
  std::vector<SsdpTarget> matching;
  std::copy_if(targets_.begin(), targets_.end(), std::back_inserter(matching),
               [&](const SsdpTarget& target) { return Answers(target, wanted); });
  return matching;
}

std::string SsdpDevice::Alive(const SsdpTarget& target, std::string_view group,
                              const std::string& location) const {
  return fmt::format(
      "NOTIFY * HTTP/1.1\r\nHOST: {}\r\nCACHE-CONTROL: max-age={}\r\nLOCATION: {}\r\n"
      "SERVER: {}\r\nNT: {}\r\nUSN: {}\r\nNTS: ssdp:alive\r\n\r\n",
      group, maxAge_, location, ServerName(), target.type, target.name);
}

std::string SsdpDevice::ByeBye(const SsdpTarget& target, std::string_view group) const {
  return fmt::format(
      "NOTIFY * HTTP/1.1\r\nHOST: {}\r\nNT: {}\r\nUSN: {}\r\nNTS: ssdp:byebye\r\n\r\n", group,
      target.type, target.name);
}

std::string SsdpDevice::Found(const SsdpTarget& target, const std::string& location,
                              time_t now) const {
  return fmt::format(
      "HTTP/1.1 200 OK\r\nCACHE-CONTROL: max-age={}\r\nDATE: {}\r\nEXT:\r\nLOCATION: {}\r\n"
      "SERVER: {}\r\nST: {}\r\nUSN: {}\r\nContent-Length: 0\r\n\r\n",
      maxAge_, HttpDate(now), location, ServerName(), target.type, target.name);
}

}  // namespace orxserve
