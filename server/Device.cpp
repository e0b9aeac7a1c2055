#include "Device.h"

#include <fmt/format.h>
#include <sys/utsname.h>

#include "EmbeddedTexts.h"
#include "IconBytes.h"
#include "Texts.h"

namespace orxserve {
namespace {

const ServiceInfo kServices[kServiceCount] = {
    {"urn:schemas-upnp-org:service:ContentDirectory:1", "urn:upnp-org:serviceId:ContentDirectory",
     "cd", orxscan::kContentDirectoryXml},
    {"urn:schemas-upnp-org:service:ConnectionManager:1", "urn:upnp-org:serviceId:ConnectionManager",
     "cm", orxscan::kConnectionManagerXml},
    {"urn:microsoft.com:service:X_MS_MediaReceiverRegistrar:1",
     "urn:microsoft.com:serviceId:X_MS_MediaReceiverRegistrar", "rr", orxscan::kRegistrarXml}};

void AppendElement(std::string* out, std::string_view name, std::string_view text) {
  out->append("<").append(name).append(">");
  AppendXml(out, text);
  out->append("</").append(name).append(">");
}

std::string IconList() {
  std::string list = "<iconList>";
  for (const Icon& icon : Icons())
    list += fmt::format(
        "<icon><mimetype>{}</mimetype><width>{}</width><height>{}</height><depth>24</depth>"
        "<url>{}</url></icon>",
        icon.type, icon.size, icon.size, icon.path);
  return list + "</iconList>\n";
}

std::string ServiceList() {
  std::string list = "<serviceList>\n";
  for (const ServiceInfo& service : kServices)
    list += fmt::format(
        "<service><serviceType>{0}</serviceType><serviceId>{1}</serviceId>"
        "<SCPDURL>/{2}.xml</SCPDURL><controlURL>/control/{2}</controlURL>"
        "<eventSubURL>/event/{2}</eventSubURL></service>\n",
        service.type, service.id, service.path);
  return list + "</serviceList>\n";
}

}  // namespace

const ServiceInfo& ServiceAt(size_t index) { return kServices[index]; }

const std::string& ServerName() {
  static const std::string name = [] {
    utsname system = {};
    uname(&system);
    return fmt::format("{}/{} UPnP/1.0 DLNADOC/1.50 orxserve/" ORXSERVE_VERSION, system.sysname,
                       system.release);
  }();
  return name;
}

std::string DeviceDescription(const DeviceInfo& device) {
  std::string text =
      "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
      "<root xmlns=\"urn:schemas-upnp-org:device-1-0\""
      " xmlns:dlna=\"urn:schemas-dlna-org:device-1-0\" xmlns:sec=\"http://www.sec.co.kr/dlna\">\n"
      "<specVersion><major>1</major><minor>0</minor></specVersion>\n<device>\n";
  AppendElement(&text, "deviceType", kDeviceType);
  AppendElement(&text, "friendlyName", CutText(device.name, 63));
  AppendElement(&text, "manufacturer", "orxscan developers");
  AppendElement(&text, "modelName", "orxserve");
  AppendElement(&text, "modelNumber", ORXSERVE_VERSION);
  AppendElement(&text, "modelDescription", "Media server over a media database");
  AppendElement(&text, "serialNumber", device.uuid.substr(0, 8));
  AppendElement(&text, "UDN", "uuid:" + device.uuid);
  AppendElement(&text, "dlna:X_DLNADOC", "DMS-1.50");
  AppendElement(&text, "sec:ProductCap", "smi,DCM10,getCaptionInfo.sec");
  text += "\n" + IconList() + ServiceList();
  AppendElement(&text, "presentationURL", "/");
  return text + "\n</device>\n</root>\n";
}

const std::array<Icon, 4>& Icons() {
  static const std::array<Icon, 4> icons = {{{"/icon/120.png", "image/png", 120, kIcon120Png},
                                             {"/icon/48.png", "image/png", 48, kIcon48Png},
                                             {"/icon/120.jpg", "image/jpeg", 120, kIcon120Jpg},
                                             {"/icon/48.jpg", "image/jpeg", 48, kIcon48Jpg}}};
  return icons;
}

}  // namespace orxserve
