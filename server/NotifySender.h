// Sends events to subscribers: small requests of HTTP, many at once, none waited for longer than
// some seconds.
#pragma once

#include <functional>
#include <list>
#include <string>

#include "Net.h"
#include "Subscriptions.h"

namespace orxserve {

class NotifySender {
 public:
  NotifySender();

  size_t size() const { return deliveries_.size(); }  // under way
  void Start(const Subscription& to, const std::string& body, double now);
  // Goes on until something happened, at most so long; calls `done` with the sid of every delivery
  // that ended, well or not.
  void Work(double seconds, const std::function<void(const std::string&)>& done);
  void Wake();  // ends Work soon; from any thread

 private:
  struct Delivery {
    std::string sid;
    Descriptor socket;
    std::string request;
    size_t sent = 0;
    size_t answered = 0;
    double deadline = 0;
  };
  static bool GoOn(Delivery* delivery);  // false when it has ended

  Descriptor wake_;
  std::list<Delivery> deliveries_;
};

// The whole request of one event.
std::string NotifyRequest(const Subscription& to, const std::string& body);

}  // namespace orxserve
