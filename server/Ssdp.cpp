#include "Ssdp.h"

#include <linux/rtnetlink.h>
#include <net/if.h>
#include <netinet/ip.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <ctime>
#include <random>

#include "Clock.h"
#include "Failure.h"
#include "Log.h"

namespace orxserve {
namespace {

constexpr uint16_t kPort = 1900;
constexpr char kGroup4[] = "239.255.255.250";
constexpr char kGroup6[] = "ff02::c";
constexpr int kHops = 2;
constexpr int kFirstNotices = 3;       // sent soon after one another, for datagrams get lost
constexpr double kRefreshPeriod = 60;  // seconds, in case the kernel's word is missed
constexpr double kRefreshDelay = 0.3;  // after it, for addresses come in groups
constexpr int kMostAtOnce = 64;        // datagrams that are read before anything else is done

double Random(double most) {
  static thread_local std::minstd_rand generator(std::random_device{}());
  return std::uniform_real_distribution<double>(0, most)(generator);
}

template <typename Value>
bool SetOption(int socket, int level, int option, const Value& value) {
  return setsockopt(socket, level, option, &value, sizeof value) == 0;
}

Descriptor Receiver(int family) {
  Descriptor socket(::socket(family, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!socket) return socket;
  const bool v4 = family == AF_INET;
  SetOption(socket.get(), SOL_SOCKET, SO_REUSEADDR, 1);
  if (v4) {
    SetOption(socket.get(), IPPROTO_IP, IP_PKTINFO, 1);
    SetOption(socket.get(), IPPROTO_IP, IP_MULTICAST_ALL, 0);
  } else {
    SetOption(socket.get(), IPPROTO_IPV6, IPV6_V6ONLY, 1);
    SetOption(socket.get(), IPPROTO_IPV6, IPV6_RECVPKTINFO, 1);
  }
  sockaddr_storage any{};
  const socklen_t length = IpAddress::Parse(v4 ? "0.0.0.0" : "::")->ToSockaddr(kPort, 0, &any);
  if (bind(socket.get(), reinterpret_cast<sockaddr*>(&any), length) != 0) socket.Reset();
  return socket;
}

// Bound to the address, so that datagrams leave by its interface and bear it.
Descriptor Sender(unsigned interface, const IpAddress& address) {
  const int family = address.isV4() ? AF_INET : AF_INET6;
  Descriptor socket(::socket(family, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!socket) return socket;
  const int index = static_cast<int>(interface);
  if (address.isV4()) {
    ip_mreqn from{};
    from.imr_ifindex = index;
    SetOption(socket.get(), IPPROTO_IP, IP_MULTICAST_IF, from);
    SetOption(socket.get(), IPPROTO_IP, IP_MULTICAST_TTL, kHops);
  } else {
    SetOption(socket.get(), IPPROTO_IPV6, IPV6_MULTICAST_IF, index);
    SetOption(socket.get(), IPPROTO_IPV6, IPV6_MULTICAST_HOPS, kHops);
  }
  sockaddr_storage own{};
  const socklen_t length = address.ToSockaddr(0, interface, &own);
  if (bind(socket.get(), reinterpret_cast<sockaddr*>(&own), length) != 0) socket.Reset();
  return socket;
}

Descriptor AddressChanges() {
  Descriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE));
  sockaddr_nl groups{};
  groups.nl_family = AF_NETLINK;
  groups.nl_groups = RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR;
  if (socket && bind(socket.get(), reinterpret_cast<sockaddr*>(&groups), sizeof groups) != 0)
    socket.Reset();
  return socket;
}

// Where a datagram came in: the interface, and whether it was sent to the group.
struct Arrival {
  unsigned interface = 0;
  bool multicast = false;
};

Arrival ArrivalOf(msghdr* message) {
  Arrival arrival;
  for (cmsghdr* part = CMSG_FIRSTHDR(message); part != nullptr; part = CMSG_NXTHDR(message, part)) {
    if (part->cmsg_level == IPPROTO_IP && part->cmsg_type == IP_PKTINFO) {
      in_pktinfo info{};
      memcpy(&info, CMSG_DATA(part), sizeof info);
      arrival.interface = static_cast<unsigned>(info.ipi_ifindex);
      arrival.multicast = IN_MULTICAST(ntohl(info.ipi_addr.s_addr));
    } else if (part->cmsg_level == IPPROTO_IPV6 && part->cmsg_type == IPV6_PKTINFO) {
      in6_pktinfo info{};
      memcpy(&info, CMSG_DATA(part), sizeof info);
      arrival.interface = info.ipi6_ifindex;
      arrival.multicast = info.ipi6_addr.s6_addr[0] == 0xFF;
    }
  }
  return arrival;
}

IpAddress GroupOf(const IpAddress& address) {
  return *IpAddress::Parse(address.isV4() ? kGroup4 : kGroup6);
}

std::string GroupText(const IpAddress& address) {
  return address.isV4() ? std::string(kGroup4) + ":1900" : "[FF02::C]:1900";
}

}  // namespace

Ssdp::Ssdp(Settings settings, AccessList* access, Log* log)
    : settings_(std::move(settings)),
      access_(access),
      log_(log),
      device_(settings_.uuid, settings_.maxAge),
      stop_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  receive4_ = Receiver(AF_INET);
  receive6_ = Receiver(AF_INET6);
  changes_ = AddressChanges();
  if (!receive4_ && !receive6_) throw Failure("discovery: port {}: {}", kPort, strerror(errno));
  Refresh();
  thread_ = std::thread([this] { Run(); });
}

Ssdp::~Ssdp() {
  const uint64_t one = 1;
  if (write(stop_.get(), &one, sizeof one) < 0) log_->Error("discovery cannot be stopped");
  thread_.join();
  SendByeBye();
}

// Brings the places in line with the addresses that there are.
void Ssdp::Refresh() {
  refresh_ = Now() + kRefreshPeriod;
  std::vector<Interface> now = ListInterfaces(settings_.interfaces);
  if (now == interfaces_ && !places_.empty()) return;
  access_->SetInterfaces(now);
  const auto isGone = [&](const Place& place) {
    return std::none_of(now.begin(), now.end(), [&](const Interface& interface) {
      return interface.index == place.interface &&
             std::count(interface.addresses.begin(), interface.addresses.end(), place.subnet) != 0;
    });
  };
  places_.erase(std::remove_if(places_.begin(), places_.end(), isGone), places_.end());
  for (const Interface& interface : now)
    for (const Subnet& subnet : interface.addresses) AddPlace(interface.index, subnet);
  interfaces_ = std::move(now);
}

void Ssdp::AddPlace(unsigned interface, const Subnet& subnet) {
  for (const Place& known : places_)
    if (known.interface == interface && known.subnet == subnet) return;
  Place place;
  place.interface = interface;
  place.subnet = subnet;
  place.socket = Sender(interface, subnet.address);
  if (!place.socket) return;  // an address that is not in use yet; the next look finds it
  place.next = Now() + Random(0.1);
  Join(place);
  log_->Info("reached at http://{}:{}/", subnet.address.UrlHost(), settings_.httpPort);
  places_.push_back(std::move(place));
}

// Being a member already is no mistake.
void Ssdp::Join(const Place& place) const {
  if (place.subnet.address.isV4()) {
    ip_mreqn group{};
    group.imr_ifindex = static_cast<int>(place.interface);
    memcpy(&group.imr_multiaddr, IpAddress::Parse(kGroup4)->bytes(), 4);
    SetOption(receive4_.get(), IPPROTO_IP, IP_ADD_MEMBERSHIP, group);
  } else {
    ipv6_mreq group{};
    group.ipv6mr_interface = place.interface;
    memcpy(&group.ipv6mr_multiaddr, IpAddress::Parse(kGroup6)->bytes(), 16);
    SetOption(receive6_.get(), IPPROTO_IPV6, IPV6_ADD_MEMBERSHIP, group);
  }
}

std::string Ssdp::Location(const Place& place) const {
  return "http://" + place.subnet.address.UrlHost() + ":" + std::to_string(settings_.httpPort) +
         "/device.xml";
}

void Ssdp::Send(const Place& place, const std::string& text, const IpAddress& to,
                uint16_t port) const {
  sockaddr_storage address{};
  const socklen_t length = to.ToSockaddr(port, place.interface, &address);
  sendto(place.socket.get(), text.data(), text.size(), MSG_NOSIGNAL,
         reinterpret_cast<sockaddr*>(&address), length);
}

// Three times at first, then twice within the time that clients keep a notice.
void Ssdp::Announce() {
  const double now = Now();
  for (Place& place : places_) {
    if (place.next > now) continue;
    const IpAddress group = GroupOf(place.subnet.address);
    for (const SsdpTarget& target : device_.targets())
      Send(place, device_.Alive(target, GroupText(place.subnet.address), Location(place)), group,
           kPort);
    ++place.notices;
    const double period = device_.maxAge() / 2.0;
    place.next =
        now + (place.notices < kFirstNotices ? 0.2 + Random(0.3) : period - Random(period / 4));
  }
}

void Ssdp::SendByeBye() {
  for (const Place& place : places_)
    for (int twice = 0; twice < 2; ++twice)
      for (const SsdpTarget& target : device_.targets())
        Send(place, device_.ByeBye(target, GroupText(place.subnet.address)),
             GroupOf(place.subnet.address), kPort);
}

const Ssdp::Place* Ssdp::PlaceFor(unsigned interface, const IpAddress& peer) const {
  const Place* any = nullptr;
  for (const Place& place : places_) {
    if (place.interface != interface || place.subnet.address.isV4() != peer.isV4()) continue;
    if (place.subnet.Contains(peer)) return &place;
    any = &place;
  }
  return access_->Allows(peer) ? any : nullptr;  // from elsewhere, as the user wants it
}

void Ssdp::Receive(int socket, double now) {
  std::array<char, kLargestSsdp + 1> data{};
  std::array<char, 256> control{};
  for (int i = 0; i < kMostAtOnce; ++i) {
    sockaddr_storage from{};
    iovec part{data.data(), data.size()};
    msghdr message{};
    message.msg_name = &from;
    message.msg_namelen = sizeof from;
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    const ssize_t size = recvmsg(socket, &message, 0);
    if (size < 0) return;
    const Arrival arrival = ArrivalOf(&message);
    const auto peer = IpAddress::From(reinterpret_cast<sockaddr*>(&from));
    const auto search = ParseSearch({data.data(), static_cast<size_t>(size)}, arrival.multicast);
    const uint16_t port = from.ss_family == AF_INET6
                              ? reinterpret_cast<sockaddr_in6*>(&from)->sin6_port
                              : reinterpret_cast<sockaddr_in*>(&from)->sin_port;
    if (peer && search) Search(*search, *peer, ntohs(port), arrival.interface, now);
  }
}

void Ssdp::Search(const SsdpSearch& search, const IpAddress& from, uint16_t port,
                  unsigned interface, double now) {
  if (port == 0 || PlaceFor(interface, from) == nullptr) return;
  if (device_.Matching(search.target).empty()) return;
  const double delay = Random(std::max(search.wait * 0.8, 0.05));
  plan_.Add({now + delay, from, port, interface, search.target}, now);
}

void Ssdp::SendAnswers(double now) {
  for (const PendingAnswer& answer : plan_.TakeDue(now)) {
    const Place* place = PlaceFor(answer.interface, answer.to);
    if (place == nullptr) continue;
    for (const SsdpTarget& target : device_.Matching(answer.target))
      Send(*place, device_.Found(target, Location(*place), time(nullptr)), answer.to, answer.port);
  }
}

double Ssdp::NextDue() const {
  double due = plan_.NextDue(refresh_);
  for (const Place& place : places_) due = std::min(due, place.next);
  return due;
}

// Waits for something to do and does it; false at the end.
bool Ssdp::Step() {
  std::array<pollfd, 4> waiting = {{{stop_.get(), POLLIN, 0},
                                    {receive4_.get(), POLLIN, 0},
                                    {receive6_.get(), POLLIN, 0},
                                    {changes_.get(), POLLIN, 0}}};
  const double sleep = std::clamp(NextDue() - Now(), 0.0, kRefreshPeriod);
  poll(waiting.data(), waiting.size(), static_cast<int>(std::ceil(sleep * 1000)));
  if (waiting[0].revents != 0) return false;
  const double now = Now();
  for (const size_t i : {size_t{1}, size_t{2}})
    if ((waiting[i].revents & POLLIN) != 0) Receive(waiting[i].fd, now);
  if ((waiting[3].revents & POLLIN) != 0) {
    std::array<char, 8192> notices{};
    while (recv(changes_.get(), notices.data(), notices.size(), 0) > 0) {
    }
    refresh_ = std::min(refresh_, now + kRefreshDelay);
  }
  if (refresh_ <= now) Refresh();
  Announce();
  SendAnswers(now);
  return true;
}

void Ssdp::Run() {
  for (bool goesOn = true; goesOn;) {
    try {
      goesOn = Step();
    } catch (const std::exception& failure) {
      log_->Error("discovery: {}", failure.what());
    }
  }
}

}  // namespace orxserve
