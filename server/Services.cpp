#include "Services.h"

#include "ProtocolInfo.h"
#include "Texts.h"

namespace orxserve {
namespace {

const char* TypeOf(ServiceIndex service) { return ServiceAt(static_cast<size_t>(service)).type; }

}  // namespace

std::string ConnectionManager::Source() {
  const std::shared_ptr<const Catalogue> catalogue = catalogues_.Get();
  const std::lock_guard<std::mutex> lock(mutex_);
  if (of_.lock() != catalogue) {
    source_ = SourceProtocolInfo(*catalogue);
    of_ = catalogue;
  }
  return source_;
}

int ConnectionManager::Perform(const SoapAction& action, std::unique_ptr<Answer>* answer) {
  const char* const type = TypeOf(ServiceIndex::kConnections);
  if (action.name == "GetProtocolInfo") {
    *answer = Response(type, action.name, {{"Source", Source()}, {"Sink", ""}});
    return kNoError;
  }
  if (action.name == "GetCurrentConnectionIDs") {
    *answer = Response(type, action.name, {{"ConnectionIDs", "0"}});
    return kNoError;
  }
  if (action.name != "GetCurrentConnectionInfo") return kInvalidAction;
  const std::string* id = action.Argument("ConnectionID");
  if (id == nullptr) return kInvalidArguments;
  if (Trim(*id) != "0") return kNoSuchConnection;
  *answer = Response(type, action.name,
                     {{"RcsID", "-1"},
                      {"AVTransportID", "-1"},
                      {"ProtocolInfo", ""},
                      {"PeerConnectionManager", ""},
                      {"PeerConnectionID", "-1"},
                      {"Direction", "Output"},
                      {"Status", "OK"}});
  return kNoError;
}

int PerformRegistrar(const SoapAction& action, std::unique_ptr<Answer>* answer) {
  const char* const type = TypeOf(ServiceIndex::kRegistrar);
  if (action.name == "IsAuthorized" || action.name == "IsValidated") {
    *answer = Response(type, action.name, {{"Result", "1"}});
    return kNoError;
  }
  if (action.name == "RegisterDevice") {
    *answer = Response(type, action.name, {{"RegistrationRespMsg", ""}});
    return kNoError;
  }
  return kInvalidAction;
}

}  // namespace orxserve
