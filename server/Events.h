// Eventing: takes subscriptions, and sends what changed to the subscribers from a thread of its
// own.
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Catalogue.h"
#include "Device.h"
#include "Http.h"
#include "Interfaces.h"
#include "NotifySender.h"
#include "Subscriptions.h"

namespace orxserve {

// Names and values of state variables, as one event tells them.
using EventProperties = std::vector<std::pair<std::string, std::string>>;
std::string EventBody(const EventProperties& properties);

// Changes of containers that were not told yet.
class ContainerChanges {
 public:
  void Add(const Catalogue& catalogue);
  std::string Take();  // "17,4,18,4", empty again from now on

 private:
  std::map<uint32_t, uint32_t> changed_;  // id and update id
};

class Events {
 public:
  // `source` is the present SourceProtocolInfo.
  Events(const CatalogueHolder& catalogues, const AccessList& access,
         std::function<std::string()> source);
  ~Events();
  Events(const Events&) = delete;
  Events& operator=(const Events&) = delete;

  HttpAnswer Subscribe(const HttpRequest& request, size_t service);
  HttpAnswer Unsubscribe(const HttpRequest& request, size_t service);
  // A new catalogue is there.  Subscribers hear of it within five seconds, once.
  void Publish(const Catalogue& catalogue);

 private:
  struct Waiting {  // of one subscriber
    EventProperties properties;
    double due = 0;
    bool underWay = false;
  };

  EventProperties FirstState(size_t service) const;
  void Queue(size_t service, const EventProperties& properties, double due);
  void Run();
  bool Step();
  void TakeChanges(double now);
  void StartDue(double now);
  double NextDue(double now) const;  // seconds to sleep
  void Finished(const std::string& sid);

  const CatalogueHolder& catalogues_;
  const AccessList& access_;
  std::function<std::string()> source_;
  std::mutex mutex_;
  Subscriptions subscriptions_;
  std::map<std::string, Waiting> waiting_;  // by sid
  ContainerChanges changes_;
  bool changed_ = false;
  double nextChange_ = 0;  // not before
  bool ending_ = false;
  NotifySender sender_;
  std::thread thread_;
};

}  // namespace orxserve
