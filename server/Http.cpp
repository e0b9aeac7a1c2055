#include "Http.h"

#include <array>
#include <ctime>

#include "Texts.h"

namespace orxserve {
namespace {

// "name", "name:80", "[::1]:80" in its parts; false when it is none of these.
bool SplitHost(std::string_view host, std::string_view* name, std::string_view* port) {
  size_t colon = host.rfind(':');
  if (!host.empty() && host.front() == '[') {
    const size_t end = host.find(']');
    if (end == std::string_view::npos) return false;
    *name = host.substr(1, end - 1);
    *port = host.substr(end + 1);
    if (!port->empty() && port->front() != ':') return false;
    if (!port->empty()) port->remove_prefix(1);
    return true;
  }
  if (colon == std::string_view::npos) colon = host.size();
  *name = host.substr(0, colon);
  *port = host.substr(std::min(colon + 1, host.size()));
  return true;
}

}  // namespace

HttpAnswer HttpAnswer::Status(int status) {
  HttpAnswer answer;
  answer.status = status;
  return answer;
}

HttpAnswer HttpAnswer::Text(std::string type, std::string text) {
  HttpAnswer answer;
  answer.Add("Content-Type", std::move(type));
  answer.text = std::move(text);
  return answer;
}

HttpAnswer HttpAnswer::Constant(std::string type, std::string_view text) {
  HttpAnswer answer;
  answer.Add("Content-Type", std::move(type));
  answer.shared = text;
  return answer;
}

std::string HttpDate(time_t time) {
  constexpr const char* kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                     "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  tm parts = {};
  if (gmtime_r(&time, &parts) == nullptr) return "";
  std::array<char, 64> text{};
  snprintf(text.data(), text.size(), "%s, %02d %s %04d %02d:%02d:%02d GMT", kDays[parts.tm_wday],
           parts.tm_mday, kMonths[parts.tm_mon], parts.tm_year + 1900, parts.tm_hour, parts.tm_min,
           parts.tm_sec);
  return text.data();
}

bool IsOwnHost(std::string_view host, const HttpRequest& request, std::string_view machine) {
  std::string_view name;
  std::string_view port;
  if (!SplitHost(Trim(host), &name, &port)) return false;
  uint64_t number = 80;
  if (!port.empty() && !ParseNumber(port, &number)) return false;
  if (number != request.port && !port.empty()) return false;
  name = name.substr(0, name.find('%'));  // the zone of an address of the link
  if (const auto address = IpAddress::Parse(name)) return *address == request.local;
  if (request.local.isLoopback() && EqualNoCase(name, "localhost")) return true;
  const std::string local = std::string(machine) + ".local";
  return !machine.empty() && (EqualNoCase(name, machine) || EqualNoCase(name, local));
}

}  // namespace orxserve
