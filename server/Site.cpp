#include "Site.h"

#include <new>

#include "Soap.h"

namespace orxserve {
namespace {

constexpr size_t kNoService = kServiceCount;

// The service whose path stands between `start` and `end`: "/control/cd".
size_t ServiceOf(std::string_view path, std::string_view start, std::string_view end) {
  for (size_t i = 0; i < kServiceCount; ++i)
    if (path == std::string(start).append(ServiceAt(i).path).append(end)) return i;
  return kNoService;
}

HttpAnswer Fault(int error) {
  HttpAnswer answer = HttpAnswer::Text(kXmlType, SoapFault(error));
  answer.status = 500;
  answer.Add("EXT", " ");
  return answer;
}

HttpAnswer WrongMethod(const char* allowed) {
  HttpAnswer answer = HttpAnswer::Status(405);
  answer.Add("Allow", allowed);
  return answer;
}

}  // namespace

Site::Site(const CatalogueHolder& catalogues, const AccessList& access, DeviceInfo device)
    : device_(std::move(device)),
      description_(DeviceDescription(device_)),
      directory_(catalogues),
      connections_(catalogues),
      media_(catalogues),
      page_(catalogues, device_.name),
      events_(catalogues, access, [this] { return connections_.Source(); }) {}

HttpAnswer Site::Handle(const HttpRequest& request) {
  const std::string_view host = request.Header("Host");
  if (!host.empty() && !IsOwnHost(host, request, device_.machine)) return HttpAnswer::Status(403);
  const size_t control = ServiceOf(request.path, "/control/", "");
  if (control != kNoService)
    return request.method == "POST" ? Control(request, control) : WrongMethod("POST");
  const size_t event = ServiceOf(request.path, "/event/", "");
  if (event != kNoService) {
    if (request.method == "SUBSCRIBE") return events_.Subscribe(request, event);
    if (request.method == "UNSUBSCRIBE") return events_.Unsubscribe(request, event);
    return WrongMethod("SUBSCRIBE, UNSUBSCRIBE");
  }
  if (request.method == "GET" || request.method == "HEAD") return Get(request);
  return WrongMethod("GET, HEAD");
}

HttpAnswer Site::Get(const HttpRequest& request) {
  if (request.path.size() > 3 && request.path[2] == '/') return media_.Get(request);
  if (request.path == "/device.xml") return HttpAnswer::Constant(kXmlType, description_);
  const size_t service = ServiceOf(request.path, "/", ".xml");
  if (service != kNoService) return HttpAnswer::Constant(kXmlType, ServiceAt(service).description);
  for (const Icon& icon : Icons())
    if (request.path == icon.path) return HttpAnswer::Constant(icon.type, icon.bytes);
  return page_.Get(request);
}

HttpAnswer Site::Control(const HttpRequest& request, size_t service) {
  SoapAction action;
  if (!ParseSoap(request.body, &action)) return HttpAnswer::Status(400);
  if (action.service != ServiceAt(service).type) return Fault(kInvalidAction);
  std::unique_ptr<Answer> body;
  int error = kInvalidAction;
  try {
    switch (static_cast<ServiceIndex>(service)) {
      case ServiceIndex::kDirectory:
        error = directory_.Perform(action, request.base, &body);
        break;
      case ServiceIndex::kConnections:
        error = connections_.Perform(action, &body);
        break;
      case ServiceIndex::kRegistrar:
        error = PerformRegistrar(action, &body);
        break;
    }
  } catch (const std::bad_alloc&) {
    error = kCannotProcess;
  }
  if (error != kNoError) return Fault(error);
  HttpAnswer answer;
  answer.Add("Content-Type", kXmlType);
  answer.Add("EXT", " ");
  answer.stream = std::move(body);
  return answer;
}

}  // namespace orxserve
