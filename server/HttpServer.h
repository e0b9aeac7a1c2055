// The HTTP server: connections and their limits, on a few threads of its own.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "EventStreams.h"
#include "Http.h"
#include "Interfaces.h"

struct MHD_Daemon;

namespace orxserve {

class Site;

class HttpServer {
 public:
  // A port of 0 lets the system choose.  Throws a Failure.
  HttpServer(Site* site, const AccessList& access, uint16_t port);
  ~HttpServer();  // ends what is under way
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;

  uint16_t port() const { return port_; }
  EventStreams& streams() { return streams_; }

 private:
  class Handler;
  std::unique_ptr<Handler> handler_;
  EventStreams streams_;
  MHD_Daemon* daemon_ = nullptr;
  uint16_t port_ = 0;
};

}  // namespace orxserve
