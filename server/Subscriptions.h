// Who is subscribed to the events of which service.  Knows no sockets and no clock: the time comes
// with every question, in seconds.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Net.h"

namespace orxserve {

// An address that events may be sent to.
struct CallbackUrl {
  IpAddress host;
  uint16_t port = 80;
  std::string path = "/";  // with the query
};

// The first address of a CALLBACK header ("<http://192.168.1.7:49152/a><…>").  Nothing unless all
// of them are plain HTTP to numeric addresses.
std::optional<CallbackUrl> ParseCallback(std::string_view header);

// "Second-300", bounded; half an hour where nothing sensible is asked.
unsigned ParseTimeout(std::string_view header);

struct Subscription {
  std::string sid;  // "uuid:…"
  size_t service = 0;
  IpAddress peer;
  uint32_t scope = 0;  // of an address of the link
  CallbackUrl callback;
  double expires = 0;
  uint32_t sequence = 0;
};

class Subscriptions {
 public:
  static constexpr size_t kMostOfOneAddress = 8;
  static constexpr size_t kMost = 128;

  struct Reply {
    int status = 200;
    std::string sid;
    unsigned seconds = 0;
  };
  Reply Subscribe(Subscription subscription, unsigned seconds, double now);
  Reply Renew(std::string_view sid, size_t service, const IpAddress& peer, unsigned seconds,
              double now);
  int Unsubscribe(std::string_view sid, size_t service, const IpAddress& peer);

  void Expire(double now);
  Subscription* Find(std::string_view sid);
  size_t size() const { return all_.size(); }
  const std::map<std::string, Subscription, std::less<>>& all() const { return all_; }

 private:
  std::map<std::string, Subscription, std::less<>> all_;  // by sid
};

// The number of the event behind this one: 0 is that of the first alone.
inline uint32_t NextSequence(uint32_t sequence) {
  return sequence == UINT32_MAX ? 1 : sequence + 1;
}

}  // namespace orxserve
