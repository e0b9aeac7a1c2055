// The envelopes of UPnP's control: an action with its arguments in, a response or a fault out.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orxserve {

constexpr size_t kLargestSoapBody = 65536;  // bytes

struct SoapAction {
  std::string service;  // "urn:schemas-upnp-org:service:ContentDirectory:1"
  std::string name;
  std::vector<std::pair<std::string, std::string>> arguments;

  // Null when it was not given.
  const std::string* Argument(std::string_view argument) const;
};

// False when the body is no envelope with one action in it; declarations of types and entities are
// refused.
bool ParseSoap(std::string_view body, SoapAction* action);

void BeginResponse(std::string* out, std::string_view service, std::string_view action);
void EndResponse(std::string* out, std::string_view action);
// An argument whose value is written as it is, and one that is escaped.
void AppendArgument(std::string* out, std::string_view name, std::string_view value);
void AppendArgument(std::string* out, std::string_view name, uint64_t number);

// The errors of UPnP's architecture and of the services.
enum UpnpError : int {
  kNoError = 0,
  kInvalidAction = 401,
  kInvalidArguments = 402,
  kNoSuchObject = 701,
  kBadSearchCriteria = 708,
  kBadSortCriteria = 709,
  kNoSuchContainer = 710,
  kCannotProcess = 720,
  kNoSuchConnection = 706,
};
std::string SoapFault(int error);

}  // namespace orxserve
