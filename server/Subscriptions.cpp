#include "Subscriptions.h"

#include <algorithm>

#include "StateStore.h"
#include "Texts.h"

namespace orxserve {
namespace {

constexpr size_t kLongestUrl = 512;  // bytes
constexpr unsigned kShortest = 60;   // seconds
constexpr unsigned kLongest = 1800;

// "host:port", the host a numeric address.
bool ParseAuthority(std::string_view authority, CallbackUrl* url) {
  std::string_view host = authority;
  std::string_view port;
  if (!authority.empty() && authority.front() == '[') {
    const size_t end = authority.find(']');
    if (end == std::string_view::npos) return false;
    host = authority.substr(1, end - 1);
    port = authority.substr(end + 1);
    if (host.find(':') == std::string_view::npos) return false;
  } else {
    const size_t colon = authority.find(':');
    host = authority.substr(0, colon);
    if (colon != std::string_view::npos) port = authority.substr(colon);
  }
  uint64_t number = url->port;
  if (!port.empty() && (port.front() != ':' || !ParseNumber(port.substr(1), &number))) return false;
  const auto address = IpAddress::Parse(host);
  if (!address || number == 0 || number > UINT16_MAX) return false;
  url->host = *address;
  url->port = static_cast<uint16_t>(number);
  return true;
}

bool IsUrlText(std::string_view url) {
  return std::all_of(url.begin(), url.end(), [](char c) { return c > ' ' && c < '\x7f'; });
}

std::optional<CallbackUrl> ParseUrl(std::string_view text) {
  constexpr std::string_view kScheme = "http://";
  if (text.size() > kLongestUrl || !StartsWithNoCase(text, kScheme) || !IsUrlText(text)) return {};
  text.remove_prefix(kScheme.size());
  const size_t end = std::min(text.find_first_of("/?#"), text.size());
  CallbackUrl url;
  if (!ParseAuthority(text.substr(0, end), &url)) return {};
  const std::string_view path = text.substr(end, text.find('#') - end);
  if (!path.empty()) url.path = (path.front() == '/' ? "" : "/") + std::string(path);
  return url;
}

}  // namespace

std::optional<CallbackUrl> ParseCallback(std::string_view header) {
  std::optional<CallbackUrl> first;
  for (std::string_view rest = Trim(header); !rest.empty();) {
    const size_t end = rest.find('>');
    if (rest.front() != '<' || end == std::string_view::npos) return {};
    const auto url = ParseUrl(rest.substr(1, end - 1));
    if (!url || (first && first->host != url->host)) return {};
    if (!first) first = url;
    rest = Trim(rest.substr(end + 1));
  }
  return first;
}

unsigned ParseTimeout(std::string_view header) {
  constexpr std::string_view kUnit = "Second-";
  uint64_t seconds = 0;
  header = Trim(header);
  if (!StartsWithNoCase(header, kUnit) || !ParseNumber(header.substr(kUnit.size()), &seconds))
    return kLongest;
  return static_cast<unsigned>(std::clamp<uint64_t>(seconds, kShortest, kLongest));
}

Subscriptions::Reply Subscriptions::Subscribe(Subscription subscription, unsigned seconds,
                                              double now) {
  Expire(now);
  const auto ofPeer = std::count_if(all_.begin(), all_.end(), [&](const auto& entry) {
    return entry.second.peer == subscription.peer;
  });
  if (all_.size() >= kMost || static_cast<size_t>(ofPeer) >= kMostOfOneAddress) return {503, "", 0};
  subscription.sid = "uuid:" + RandomUuid();
  subscription.expires = now + seconds;
  std::string sid = subscription.sid;
  all_.emplace(sid, std::move(subscription));
  return {200, sid, seconds};
}

Subscriptions::Reply Subscriptions::Renew(std::string_view sid, size_t service,
                                          const IpAddress& peer, unsigned seconds, double now) {
  Expire(now);
  Subscription* known = Find(sid);
  if (known == nullptr || known->service != service || known->peer != peer) return {412, "", 0};
  known->expires = now + seconds;
  return {200, known->sid, seconds};
}

int Subscriptions::Unsubscribe(std::string_view sid, size_t service, const IpAddress& peer) {
  Subscription* known = Find(sid);
  if (known == nullptr || known->service != service || known->peer != peer) return 412;
  all_.erase(known->sid);
  return 200;
}

void Subscriptions::Expire(double now) {
  for (auto entry = all_.begin(); entry != all_.end();)
    entry = entry->second.expires <= now ? all_.erase(entry) : std::next(entry);
}

Subscription* Subscriptions::Find(std::string_view sid) {
  const auto known = all_.find(sid);
  return known == all_.end() ? nullptr : &known->second;
}

}  // namespace orxserve
