// Discovery: tells the networks that the server is there, answers searches, and says goodbye, on a
// thread of its own.  Follows interfaces and addresses as they come and go.
#pragma once

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Interfaces.h"
#include "SsdpMessage.h"
#include "SsdpPlan.h"

namespace orxserve {

class Log;

class Ssdp {
 public:
  struct Settings {
    std::vector<std::string> interfaces;  // names; none: all
    uint16_t httpPort = 0;
    std::string uuid;
    unsigned maxAge = 1800;  // seconds
  };
  Ssdp(Settings settings, AccessList* access, Log* log);  // throws a Failure
  ~Ssdp();                                                // says byebye
  Ssdp(const Ssdp&) = delete;
  Ssdp& operator=(const Ssdp&) = delete;

 private:
  // An address that the server is reached at, with the socket that sends from it.
  struct Place {
    unsigned interface = 0;
    Subnet subnet;
    Descriptor socket;
    int notices = 0;  // that were sent so far
    double next = 0;  // when the next one is
  };

  void Run();
  bool Step();
  void Refresh();
  void Join(const Place& place) const;
  void AddPlace(unsigned interface, const Subnet& subnet);
  void Announce();
  void Receive(int socket, double now);
  void Search(const SsdpSearch& search, const IpAddress& from, uint16_t port, unsigned interface,
              double now);
  void SendAnswers(double now);
  double NextDue() const;
  void SendByeBye();
  const Place* PlaceFor(unsigned interface, const IpAddress& peer) const;
  std::string Location(const Place& place) const;
  void Send(const Place& place, const std::string& text, const IpAddress& to, uint16_t port) const;

  Settings settings_;
  AccessList* access_;
  Log* log_;
  SsdpDevice device_;
  Descriptor receive4_, receive6_, changes_, stop_;
  std::vector<Interface> interfaces_;
  std::vector<Place> places_;
  AnswerPlan plan_;
  double refresh_ = 0;  // when the interfaces are looked at again
  std::thread thread_;
};

}  // namespace orxserve
