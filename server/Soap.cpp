#include "Soap.h"

#include <expat.h>

#include <memory>
#include <type_traits>

#include "Texts.h"

namespace orxserve {
namespace {

constexpr char kSeparator = ' ';  // between namespace and name; stands in neither
constexpr int kDeepest = 8;
constexpr size_t kMostArguments = 32;
constexpr std::string_view kEnvelope = "http://schemas.xmlsoap.org/soap/envelope/";

struct FreeParser {
  void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
using Parser = std::unique_ptr<std::remove_pointer_t<XML_Parser>, FreeParser>;

// Depth 1 is the envelope, 2 the body, 3 the action, 4 its arguments.
class Reading {
 public:
  Reading(XML_Parser parser, SoapAction* action) : parser_(parser), action_(action) {}
  bool complete() const { return !refused_ && !action_->name.empty(); }

  static void Start(void* self, const char* name, const char** /*attributes*/) {
    static_cast<Reading*>(self)->Open(name);
  }
  static void End(void* self, const char* /*name*/) { --static_cast<Reading*>(self)->depth_; }
  static void Characters(void* self, const char* text, int length) {
    auto* reading = static_cast<Reading*>(self);
    if (reading->depth_ == 4 && reading->inBody_ && !reading->action_->arguments.empty())
      reading->action_->arguments.back().second.append(text, static_cast<size_t>(length));
  }
  static void Doctype(void* self, const char*, const char*, const char*, int) {
    static_cast<Reading*>(self)->Refuse();
  }

 private:
  void Refuse() {
    refused_ = true;
    XML_StopParser(parser_, XML_FALSE);
  }

  void Open(std::string_view name) {
    const size_t mark = name.find(kSeparator);
    const bool bare = mark == std::string_view::npos;
    const std::string_view space = bare ? std::string_view() : name.substr(0, mark);
    const std::string_view local = bare ? name : name.substr(mark + 1);
    ++depth_;
    if (depth_ > kDeepest) return Refuse();
    if (depth_ == 1 && (space != kEnvelope || local != "Envelope")) return Refuse();
    if (depth_ == 2) inBody_ = space == kEnvelope && local == "Body";
    if (!inBody_) return;
    if (depth_ == 3) {
      if (!action_->name.empty()) return Refuse();
      action_->service = space;
      action_->name = local;
    }
    if (depth_ == 4) {
      if (action_->arguments.size() >= kMostArguments) return Refuse();
      action_->arguments.emplace_back(local, "");
    }
  }

  XML_Parser parser_;
  SoapAction* action_;
  int depth_ = 0;
  bool inBody_ = false;
  bool refused_ = false;
};

constexpr std::string_view kBegin =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
    "<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\""
    " s:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\"><s:Body>";
constexpr std::string_view kEnd = "</s:Body></s:Envelope>\n";

const char* Description(int error) {
  switch (error) {
    case kInvalidAction:
      return "Invalid Action";
    case kInvalidArguments:
      return "Invalid Args";
    case kNoSuchObject:
      return "No such object";
    case kNoSuchConnection:
      return "Invalid connection reference";
    case kBadSearchCriteria:
      return "Unsupported or invalid search criteria";
    case kBadSortCriteria:
      return "Unsupported or invalid sort criteria";
    case kNoSuchContainer:
      return "No such container";
    default:
      return "Cannot process the request";
  }
}

}  // namespace

const std::string* SoapAction::Argument(std::string_view argument) const {
  for (const auto& given : arguments)
    if (given.first == argument) return &given.second;
  return nullptr;
}

bool ParseSoap(std::string_view body, SoapAction* action) {
  if (body.size() > kLargestSoapBody) return false;
  const Parser parser(XML_ParserCreateNS(nullptr, kSeparator));
  if (parser == nullptr) return false;
  Reading reading(parser.get(), action);
  XML_SetUserData(parser.get(), &reading);
  XML_SetElementHandler(parser.get(), Reading::Start, Reading::End);
  XML_SetCharacterDataHandler(parser.get(), Reading::Characters);
  XML_SetStartDoctypeDeclHandler(parser.get(), Reading::Doctype);
  const int length = static_cast<int>(body.size());
  return XML_Parse(parser.get(), body.data(), length, XML_TRUE) == XML_STATUS_OK &&
         reading.complete();
}

void BeginResponse(std::string* out, std::string_view service, std::string_view action) {
  out->append(kBegin).append("<u:").append(action).append("Response xmlns:u=\"");
  out->append(service).append("\">");
}

void EndResponse(std::string* out, std::string_view action) {
  out->append("</u:").append(action).append("Response>").append(kEnd);
}

void AppendArgument(std::string* out, std::string_view name, std::string_view value) {
  out->append("<").append(name).append(">");
  AppendXml(out, value);
  out->append("</").append(name).append(">");
}

void AppendArgument(std::string* out, std::string_view name, uint64_t number) {
  out->append("<").append(name).append(">");
  AppendNumber(out, number);
  out->append("</").append(name).append(">");
}

std::string SoapFault(int error) {
  std::string fault(kBegin);
  fault.append(
      "<s:Fault><faultcode>s:Client</faultcode><faultstring>UPnPError</faultstring>"
      "<detail><UPnPError xmlns=\"urn:schemas-upnp-org:control-1-0\">");
  AppendArgument(&fault, "errorCode", static_cast<uint64_t>(error));
  AppendArgument(&fault, "errorDescription", Description(error));
  return fault.append("</UPnPError></detail></s:Fault>").append(kEnd);
}

}  // namespace orxserve
