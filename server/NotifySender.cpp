#include "NotifySender.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <vector>

#include "Clock.h"

namespace orxserve {
namespace {

constexpr double kPatience = 8;         // seconds for one delivery
constexpr size_t kMostOfAnswer = 4096;  // bytes of a subscriber's answer that are read

// A connection under way; none when it cannot even be begun.
Descriptor Connect(const Subscription& to) {
  const IpAddress& host = to.callback.host;
  Descriptor socket(
      ::socket(host.isV4() ? AF_INET : AF_INET6, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  sockaddr_storage address{};
  const socklen_t length = host.ToSockaddr(to.callback.port, to.scope, &address);
  if (connect(socket.get(), reinterpret_cast<sockaddr*>(&address), length) != 0 &&
      errno != EINPROGRESS)
    socket.Reset();
  return socket;
}

bool MustWait() { return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR; }

}  // namespace

std::string NotifyRequest(const Subscription& to, const std::string& body) {
  return fmt::format(
      "NOTIFY {} HTTP/1.1\r\nHOST: {}:{}\r\nCONTENT-TYPE: text/xml; charset=\"utf-8\"\r\n"
      "CONTENT-LENGTH: {}\r\nNT: upnp:event\r\nNTS: upnp:propchange\r\nSID: {}\r\nSEQ: {}\r\n"
      "CONNECTION: close\r\n\r\n{}",
      to.callback.path, to.callback.host.UrlHost(), to.callback.port, body.size(), to.sid,
      to.sequence, body);
}

NotifySender::NotifySender() : wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

void NotifySender::Wake() {
  const uint64_t one = 1;
  if (write(wake_.get(), &one, sizeof one) < 0) return;  // it is awake already
}

void NotifySender::Start(const Subscription& to, const std::string& body, double now) {
  Delivery delivery;
  delivery.sid = to.sid;
  delivery.socket = Connect(to);
  delivery.request = NotifyRequest(to, body);
  delivery.deadline = delivery.socket ? now + kPatience : now;
  deliveries_.push_back(std::move(delivery));
}

// Sends what is left, then reads until the answer has come or the connection ends.
bool NotifySender::GoOn(Delivery* delivery) {
  const int socket = delivery->socket.get();
  while (delivery->sent < delivery->request.size()) {
    const ssize_t count = send(socket, delivery->request.data() + delivery->sent,
                               delivery->request.size() - delivery->sent, MSG_NOSIGNAL);
    if (count < 0) return MustWait();
    delivery->sent += static_cast<size_t>(count);
  }
  std::array<char, 1024> answer{};
  const ssize_t count = recv(socket, answer.data(), answer.size(), 0);
  if (count < 0) return MustWait();
  delivery->answered += static_cast<size_t>(count);
  const bool complete = std::find(answer.begin(), answer.begin() + count, '\n') !=
                        answer.begin() + count;  // the line with the status
  return count != 0 && !complete && delivery->answered < kMostOfAnswer;
}

void NotifySender::Work(double seconds, const std::function<void(const std::string&)>& done) {
  std::vector<pollfd> waiting{{wake_.get(), POLLIN, 0}};
  double end = Now() + seconds;
  for (const Delivery& delivery : deliveries_) {
    const bool sending = delivery.sent < delivery.request.size();
    const auto events = static_cast<short>(sending ? POLLOUT : POLLIN);
    waiting.push_back({delivery.socket.get(), events, 0});
    end = std::min(end, delivery.deadline);
  }
  const double sleep = std::max(end - Now(), 0.0);
  poll(waiting.data(), waiting.size(), static_cast<int>(std::ceil(sleep * 1000)));
  uint64_t count = 0;
  if (waiting[0].revents != 0 && read(wake_.get(), &count, sizeof count) < 0) return;
  auto place = waiting.begin() + 1;
  for (auto delivery = deliveries_.begin(); delivery != deliveries_.end(); ++place) {
    const bool ready = place->revents != 0;
    const bool ended = (ready && !GoOn(&*delivery)) || delivery->deadline <= Now();
    if (!ended) {
      ++delivery;
      continue;
    }
    done(delivery->sid);
    delivery = deliveries_.erase(delivery);
  }
}

}  // namespace orxserve
