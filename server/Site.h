// Everything that the server answers over HTTP, by path and method; knows no sockets.
#pragma once

#include <string>

#include "ContentDirectory.h"
#include "Device.h"
#include "Events.h"
#include "Http.h"
#include "MediaService.h"
#include "PageService.h"
#include "Services.h"

namespace orxserve {

class Site {
 public:
  Site(const CatalogueHolder& catalogues, const AccessList& access, DeviceInfo device);

  HttpAnswer Handle(const HttpRequest& request);
  Events& events() { return events_; }

 private:
  HttpAnswer Get(const HttpRequest& request);
  HttpAnswer Control(const HttpRequest& request, size_t service);

  DeviceInfo device_;
  std::string description_;
  ContentDirectory directory_;
  ConnectionManager connections_;
  MediaService media_;
  PageService page_;
  Events events_;
};

}  // namespace orxserve
