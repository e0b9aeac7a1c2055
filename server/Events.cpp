#include "Events.h"

#include <algorithm>

#include "Clock.h"
#include "Texts.h"

namespace orxserve {
namespace {

constexpr double kFirstDelay = 0.1;  // seconds, for the answer to be there before the first event
constexpr double kModeration = 5;    // between two changes that are told
constexpr double kLongestSleep = 30;
constexpr size_t kMostUnderWay = 16;
constexpr size_t kMostContainers = 200;  // in one event

constexpr auto kDirectory = static_cast<size_t>(ServiceIndex::kDirectory);
constexpr auto kConnections = static_cast<size_t>(ServiceIndex::kConnections);

}  // namespace

std::string EventBody(const EventProperties& properties) {
  std::string body =
      "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
      "<e:propertyset xmlns:e=\"urn:schemas-upnp-org:event-1-0\">";
  for (const auto& [name, value] : properties) {
    body.append("<e:property><").append(name).append(">");
    AppendXml(&body, value);
    body.append("</").append(name).append("></e:property>");
  }
  return body + "</e:propertyset>\n";
}

void ContainerChanges::Add(const Catalogue& catalogue) {
  for (const uint32_t id : catalogue.changedContainers()) {
    if (changed_.size() >= kMostContainers) return;
    changed_[id] = catalogue.updateId();
  }
}

std::string ContainerChanges::Take() {
  std::string list;
  for (const auto& [id, update] : changed_) {
    if (!list.empty()) list += ',';
    AppendNumber(&list, id);
    list += ',';
    AppendNumber(&list, update);
  }
  changed_.clear();
  return list;
}

Events::Events(const CatalogueHolder& catalogues, const AccessList& access,
               std::function<std::string()> source)
    : catalogues_(catalogues), access_(access), source_(std::move(source)) {
  thread_ = std::thread([this] { Run(); });
}

Events::~Events() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    ending_ = true;
  }
  sender_.Wake();
  thread_.join();
}

EventProperties Events::FirstState(size_t service) const {
  if (service == kDirectory)
    return {{"SystemUpdateID", std::to_string(catalogues_.Get()->updateId())},
            {"ContainerUpdateIDs", ""}};
  if (service == kConnections)
    return {
        {"SourceProtocolInfo", source_()}, {"SinkProtocolInfo", ""}, {"CurrentConnectionIDs", "0"}};
  return {{"AuthorizationGrantedUpdateID", "1"},
          {"AuthorizationDeniedUpdateID", "1"},
          {"ValidationSucceededUpdateID", "1"},
          {"ValidationRevokedUpdateID", "1"}};
}

HttpAnswer Events::Subscribe(const HttpRequest& request, size_t service) {
  const std::string_view sid = Trim(request.Header("SID"));
  const std::string_view callback = request.Header("CALLBACK");
  const std::string_view type = Trim(request.Header("NT"));
  const unsigned seconds = ParseTimeout(request.Header("TIMEOUT"));
  if (!sid.empty() && (!callback.empty() || !type.empty())) return HttpAnswer::Status(400);
  Subscriptions::Reply reply;
  if (!sid.empty()) {
    const std::lock_guard<std::mutex> lock(mutex_);
    reply = subscriptions_.Renew(sid, service, request.peer, seconds, Now());
  } else {
    const auto url = ParseCallback(callback);
    if (!url || type != "upnp:event" || !access_.AreNeighbours(request.peer, url->host))
      return HttpAnswer::Status(412);
    EventProperties first = FirstState(service);
    const std::lock_guard<std::mutex> lock(mutex_);
    Subscription wanted;
    wanted.service = service;
    wanted.peer = request.peer;
    wanted.scope = url->host.isLinkLocal() ? request.scope : 0;
    wanted.callback = *url;
    reply = subscriptions_.Subscribe(std::move(wanted), seconds, Now());
    if (reply.status == 200) waiting_[reply.sid] = {std::move(first), Now() + kFirstDelay, false};
  }
  sender_.Wake();
  HttpAnswer answer = HttpAnswer::Status(reply.status);
  if (reply.status != 200) return answer;
  answer.Add("SID", reply.sid);
  answer.Add("TIMEOUT", "Second-" + std::to_string(reply.seconds));
  return answer;
}

HttpAnswer Events::Unsubscribe(const HttpRequest& request, size_t service) {
  const std::string_view sid = Trim(request.Header("SID"));
  if (!request.Header("CALLBACK").empty() || !request.Header("NT").empty())
    return HttpAnswer::Status(400);
  const std::lock_guard<std::mutex> lock(mutex_);
  return HttpAnswer::Status(subscriptions_.Unsubscribe(sid, service, request.peer));
}

void Events::Publish(const Catalogue& catalogue) {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    changes_.Add(catalogue);
    changed_ = true;
  }
  sender_.Wake();
}

void Events::Queue(size_t service, const EventProperties& properties, double due) {
  for (const auto& [sid, subscription] : subscriptions_.all()) {
    if (subscription.service != service) continue;
    Waiting& waiting = waiting_[sid];
    for (const auto& property : properties) {  // a later value stands for an earlier one
      const auto same =
          std::find_if(waiting.properties.begin(), waiting.properties.end(),
                       [&](const auto& known) { return known.first == property.first; });
      if (same == waiting.properties.end())
        waiting.properties.push_back(property);
      else
        same->second = property.second;
    }
    waiting.due = std::max(waiting.due, due);
  }
}

// What changed becomes an event, at most every five seconds.
void Events::TakeChanges(double now) {
  if (!changed_ || now < nextChange_) return;
  changed_ = false;
  nextChange_ = now + kModeration;
  Queue(kDirectory,
        {{"SystemUpdateID", std::to_string(catalogues_.Get()->updateId())},
         {"ContainerUpdateIDs", changes_.Take()}},
        now);
  Queue(kConnections, {{"SourceProtocolInfo", source_()}}, now);
}

void Events::StartDue(double now) {
  subscriptions_.Expire(now);
  for (auto entry = waiting_.begin(); entry != waiting_.end();) {
    Waiting& waiting = entry->second;
    Subscription* to = subscriptions_.Find(entry->first);
    if (to == nullptr && !waiting.underWay) {
      entry = waiting_.erase(entry);
      continue;
    }
    const bool ready = !waiting.underWay && !waiting.properties.empty() && waiting.due <= now;
    if (ready && sender_.size() < kMostUnderWay) {
      sender_.Start(*to, EventBody(waiting.properties), now);
      to->sequence = NextSequence(to->sequence);
      waiting.properties.clear();
      waiting.underWay = true;
    }
    ++entry;
  }
}

double Events::NextDue(double now) const {
  double due = now + kLongestSleep;
  if (changed_) due = std::min(due, nextChange_);
  for (const auto& [sid, waiting] : waiting_)
    if (!waiting.underWay && !waiting.properties.empty() && sender_.size() < kMostUnderWay)
      due = std::min(due, waiting.due);
  return due - now;
}

void Events::Finished(const std::string& sid) {
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto waiting = waiting_.find(sid);
  if (waiting != waiting_.end()) waiting->second.underWay = false;
}

// One round; false at the end.
bool Events::Step() {
  double sleep = 0;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (ending_) return false;
    const double now = Now();
    TakeChanges(now);
    StartDue(now);
    sleep = NextDue(now);
  }
  sender_.Work(sleep, [this](const std::string& sid) { Finished(sid); });
  return true;
}

void Events::Run() {
  for (bool goesOn = true; goesOn;) {
    try {
      goesOn = Step();
    } catch (const std::exception&) {
      // Memory is missing: what could not be told is told with the next change.
    }
  }
}

}  // namespace orxserve
