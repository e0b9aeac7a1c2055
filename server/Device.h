// What the device is, and the services that it has.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace orxserve {

enum class ServiceIndex : size_t { kDirectory, kConnections, kRegistrar };
constexpr size_t kServiceCount = 3;

struct ServiceInfo {
  const char* type;
  const char* id;
  const char* path;         // what its addresses have in common: "cd"
  const char* description;  // the document
};
const ServiceInfo& ServiceAt(size_t index);

constexpr char kDeviceType[] = "urn:schemas-upnp-org:device:MediaServer:1";

struct DeviceInfo {
  std::string name;     // for people
  std::string uuid;     // 36 characters
  std::string machine;  // its host name
};

// The Server header of discovery and HTTP.
const std::string& ServerName();

// The document that discovery points to.
std::string DeviceDescription(const DeviceInfo& device);

struct Icon {
  const char* path;
  const char* type;
  unsigned size;  // pixels
  std::string_view bytes;
};
const std::array<Icon, 4>& Icons();

}  // namespace orxserve
