#include "HttpServer.h"

#include <microhttpd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <mutex>

#include "Device.h"
#include "Failure.h"
#include "Site.h"
#include "Soap.h"

namespace orxserve {
namespace {

constexpr unsigned kThreads = 4;
constexpr size_t kThreadStack = 256 << 10;   // bytes
constexpr size_t kConnectionMemory = 16384;  // head of the request and of the answer
constexpr size_t kLargestHead = 8192;
constexpr unsigned kMostConnections = 512;
constexpr unsigned kMostOfOneAddress = 24;
constexpr unsigned kIdle = 30;           // seconds
constexpr unsigned kPaused = 600;        // a player that has stopped to read for a while
constexpr size_t kWhole = 1 << 20;       // an answer up to here is sent with its length
constexpr size_t kPiece = 65536;         // of a longer one
constexpr size_t kKeptBuffer = 2 << 20;  // a larger one is given back to the system
constexpr size_t kMostKept = 8;

// What is known of a connection as long as it lasts.
struct Connection {
  IpAddress peer;
  IpAddress local;
  uint32_t scope = 0;
  uint16_t port = 0;
  std::string base;
};

// A request from its first line to the end of its answer.
struct Exchange {
  std::string body;
  bool tooLarge = false;
  bool answered = false;
  std::string buffer;              // of the answer
  std::unique_ptr<Answer> stream;  // what is still to be written
  bool more = false;
  size_t sent = 0;  // bytes of the buffer
};

// Exchanges and their buffers are used again: making large ones anew costs a fifth of the time.
class Exchanges {
 public:
  Exchanges() { kept_.reserve(kMostKept); }
  std::unique_ptr<Exchange> Take() {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (kept_.empty()) return std::make_unique<Exchange>();
    std::unique_ptr<Exchange> exchange = std::move(kept_.back());
    kept_.pop_back();
    return exchange;
  }
  void Give(std::unique_ptr<Exchange> exchange) {
    exchange->stream.reset();
    if (exchange->buffer.capacity() > kKeptBuffer) return;
    exchange->body.clear();
    exchange->buffer.clear();
    exchange->tooLarge = exchange->answered = exchange->more = false;
    exchange->sent = 0;
    const std::lock_guard<std::mutex> lock(mutex_);
    if (kept_.size() < kMostKept) kept_.push_back(std::move(exchange));  // within what is reserved
  }

 private:
  std::mutex mutex_;
  std::vector<std::unique_ptr<Exchange>> kept_;
};

Descriptor Listen(uint16_t port) {
  Descriptor socket6(socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  const bool v6 = static_cast<bool>(socket6);
  Descriptor listening =
      v6 ? std::move(socket6)
         : Descriptor(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  const int on = 1;
  const int off = 0;
  setsockopt(listening.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  if (v6) setsockopt(listening.get(), IPPROTO_IPV6, IPV6_V6ONLY, &off, sizeof off);
  sockaddr_storage any{};
  const IpAddress address = *IpAddress::Parse(v6 ? "::" : "0.0.0.0");
  const socklen_t length = address.ToSockaddr(port, 0, &any);
  if (bind(listening.get(), reinterpret_cast<sockaddr*>(&any), length) != 0 ||
      listen(listening.get(), 128) != 0)
    throw Failure("port {}: {}", port, strerror(errno));
  return listening;
}

uint16_t PortOf(const sockaddr_storage& address) {
  return ntohs(address.ss_family == AF_INET6
                   ? reinterpret_cast<const sockaddr_in6&>(address).sin6_port
                   : reinterpret_cast<const sockaddr_in&>(address).sin_port);
}

Connection Describe(int descriptor) {
  Connection connection;
  sockaddr_storage address{};
  auto* const raw = reinterpret_cast<sockaddr*>(&address);
  socklen_t length = sizeof address;
  if (getsockname(descriptor, raw, &length) == 0) {
    connection.local = IpAddress::From(raw).value_or(IpAddress());
    connection.port = PortOf(address);
    connection.base =
        "http://" + connection.local.UrlHost() + ":" + std::to_string(connection.port);
  }
  length = sizeof address;
  if (getpeername(descriptor, raw, &length) == 0) {
    connection.peer = IpAddress::From(raw).value_or(IpAddress());
    if (connection.peer.isLinkLocal())
      connection.scope = reinterpret_cast<const sockaddr_in6&>(address).sin6_scope_id;
  }
  return connection;
}

struct DestroyResponse {
  void operator()(MHD_Response* response) const { MHD_destroy_response(response); }
};
using MhdResponse = std::unique_ptr<MHD_Response, DestroyResponse>;

std::string ReasonPage(int status) {
  return std::to_string(status) + " " + MHD_get_reason_phrase_for(static_cast<unsigned>(status)) +
         "\n";
}

}  // namespace

class HttpServer::Handler {
 public:
  Handler(Site* site, const AccessList& access, EventStreams* streams)
      : site_(site), access_(access), streams_(streams) {}

  static MHD_Result Admit(void* self, const sockaddr* address, socklen_t) {
    const auto peer = IpAddress::From(address);
    return peer && static_cast<Handler*>(self)->access_.Allows(*peer) ? MHD_YES : MHD_NO;
  }

  static void Notify(void*, MHD_Connection* connection, void** context,
                     MHD_ConnectionNotificationCode code) {
    if (code == MHD_CONNECTION_NOTIFY_CLOSED) {
      delete static_cast<Connection*>(*context);
      *context = nullptr;
      return;
    }
    const auto* info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
    try {
      *context = new Connection(Describe(info->connect_fd));
    } catch (const std::exception&) {
      *context = nullptr;  // its requests are refused
    }
  }

  static MHD_Result Access(void* self, MHD_Connection* connection, const char* path,
                           const char* method, const char*, const char* data, size_t* size,
                           void** context) {
    try {
      return static_cast<Handler*>(self)->Take(connection, path, method, data, size, context);
    } catch (const std::exception&) {
      return MHD_NO;  // closes the connection
    }
  }

  static void Completed(void* self, MHD_Connection*, void** context, MHD_RequestTerminationCode) {
    auto* handler = static_cast<Handler*>(self);
    std::unique_ptr<Exchange> exchange(static_cast<Exchange*>(*context));
    *context = nullptr;
    if (exchange != nullptr) handler->exchanges_.Give(std::move(exchange));
  }

 private:
  MHD_Result Take(MHD_Connection* connection, const char* path, const char* method,
                  const char* data, size_t* size, void** context) {
    if (*context == nullptr) {
      *context = exchanges_.Take().release();
      MHD_set_connection_option(connection, MHD_CONNECTION_OPTION_TIMEOUT, kIdle);
      return MHD_YES;
    }
    Exchange* exchange = static_cast<Exchange*>(*context);
    if (*size == 0) return Answer(connection, path, method, exchange);
    if (exchange->body.size() + *size > kLargestSoapBody) {
      exchange->tooLarge = true;
      exchange->body.clear();
    }
    if (!exchange->tooLarge) exchange->body.append(data, *size);
    *size = 0;
    return MHD_YES;
  }

  MHD_Result Answer(MHD_Connection* connection, const char* path, const char* method,
                    Exchange* exchange) {
    const auto* facts = static_cast<Connection*>(
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT)->socket_context);
    const auto* head = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_REQUEST_HEADER_SIZE);
    if (facts == nullptr) return MHD_NO;
    if (exchange->tooLarge) return Send(connection, HttpAnswer::Status(413), exchange);
    if (head != nullptr && head->header_size > kLargestHead)
      return Send(connection, HttpAnswer::Status(431), exchange);
    HttpRequest request;
    request.method = method;
    request.path = path;
    request.header = [connection](const char* name) {
      return MHD_lookup_connection_value(connection, MHD_HEADER_KIND, name);
    };
    request.argument = [connection](const char* name) {
      return MHD_lookup_connection_value(connection, MHD_GET_ARGUMENT_KIND, name);
    };
    request.body = exchange->body;
    request.base = facts->base;
    request.peer = facts->peer;
    request.local = facts->local;
    request.port = facts->port;
    request.scope = facts->scope;
    return Send(connection, site_->Handle(request), exchange);
  }

  MHD_Result Send(MHD_Connection* connection, HttpAnswer answer, Exchange* exchange) {
    const MhdResponse response = Make(connection, &answer, exchange);
    if (response == nullptr) return MHD_NO;
    MHD_add_response_header(response.get(), "Server", ServerName().c_str());
    for (const auto& [name, value] : answer.headers)
      MHD_add_response_header(response.get(), name, value.c_str());
    return MHD_queue_response(connection, static_cast<unsigned>(answer.status), response.get());
  }

  MhdResponse Make(MHD_Connection* connection, HttpAnswer* answer, Exchange* exchange) {
    if (answer->events) return MakeEvents(connection);
    if (answer->file) return MakeFile(connection, answer);
    if (answer->stream != nullptr) return MakeStream(answer, exchange);
    if (!answer->shared.empty()) return FromMemory(answer->shared);
    const bool plain = answer->text.empty() && answer->status >= 400;
    exchange->buffer = plain ? ReasonPage(answer->status) : std::move(answer->text);
    if (plain) answer->Add("Content-Type", "text/plain");
    return FromMemory(exchange->buffer);
  }

  static MhdResponse FromMemory(std::string_view text) {
    return MhdResponse(MHD_create_response_from_buffer(text.size(), const_cast<char*>(text.data()),
                                                       MHD_RESPMEM_PERSISTENT));
  }

  static MhdResponse MakeFile(MHD_Connection* connection, HttpAnswer* answer) {
    if (answer->length > kWhole)
      MHD_set_connection_option(connection, MHD_CONNECTION_OPTION_TIMEOUT, kPaused);
    MhdResponse response(MHD_create_response_from_fd_at_offset64(answer->length, answer->file.get(),
                                                                 answer->offset));
    if (response != nullptr) answer->file.Release();  // closed with the response
    return response;
  }

  // Short answers are sent with their length, long ones piece by piece as they are written.
  static MhdResponse MakeStream(HttpAnswer* answer, Exchange* exchange) {
    exchange->more = answer->stream->Write(&exchange->buffer, kWhole);
    if (!exchange->more) return FromMemory(exchange->buffer);
    exchange->stream = std::move(answer->stream);
    return MhdResponse(
        MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, kPiece, ReadStream, exchange, nullptr));
  }

  static ssize_t ReadStream(void* self, uint64_t, char* out, size_t most) {
    auto* exchange = static_cast<Exchange*>(self);
    try {
      while (exchange->sent == exchange->buffer.size()) {
        if (!exchange->more) return MHD_CONTENT_READER_END_OF_STREAM;
        exchange->buffer.clear();
        exchange->sent = 0;
        exchange->more = exchange->stream->Write(&exchange->buffer, kPiece);
      }
    } catch (const std::exception&) {
      return MHD_CONTENT_READER_END_WITH_ERROR;
    }
    const size_t count = exchange->buffer.copy(out, most, exchange->sent);
    exchange->sent += count;
    return static_cast<ssize_t>(count);
  }

  struct OpenStream {
    EventStreams* streams;
    std::shared_ptr<EventStream> stream;
  };

  MhdResponse MakeEvents(MHD_Connection* connection) {
    auto stream = streams_->Open([connection] { MHD_suspend_connection(connection); },
                                 [connection] { MHD_resume_connection(connection); });
    if (stream == nullptr) return nullptr;
    MHD_set_connection_option(connection, MHD_CONNECTION_OPTION_TIMEOUT, 0);
    auto open = std::make_unique<OpenStream>(OpenStream{streams_, stream});
    MhdResponse response(MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, 1024, ReadEvents,
                                                           open.get(), EndEvents));
    if (response != nullptr)
      static_cast<void>(open.release());  // EndEvents has it
    else
      streams_->Close(stream);
    return response;
  }

  static ssize_t ReadEvents(void* self, uint64_t, char* out, size_t most) {
    auto* open = static_cast<OpenStream*>(self);
    try {
      std::string text;
      bool ended = false;
      open->streams->Take(open->stream.get(), most, &text, &ended);
      if (ended) return MHD_CONTENT_READER_END_OF_STREAM;
      return static_cast<ssize_t>(text.copy(out, most));
    } catch (const std::exception&) {
      return MHD_CONTENT_READER_END_WITH_ERROR;
    }
  }

  static void EndEvents(void* self) {
    const std::unique_ptr<OpenStream> open(static_cast<OpenStream*>(self));
    open->streams->Close(open->stream);
  }

  Site* site_;
  const AccessList& access_;
  EventStreams* streams_;
  Exchanges exchanges_;
};

HttpServer::HttpServer(Site* site, const AccessList& access, uint16_t port)
    : handler_(std::make_unique<Handler>(site, access, &streams_)) {
  Descriptor listening = Listen(port);
  sockaddr_storage bound{};
  socklen_t length = sizeof bound;
  getsockname(listening.get(), reinterpret_cast<sockaddr*>(&bound), &length);
  port_ = PortOf(bound);
  daemon_ = MHD_start_daemon(
      MHD_USE_EPOLL_INTERNAL_THREAD | MHD_ALLOW_SUSPEND_RESUME | MHD_USE_TURBO, 0, Handler::Admit,
      handler_.get(), Handler::Access, handler_.get(), MHD_OPTION_LISTEN_SOCKET, listening.get(),
      MHD_OPTION_THREAD_POOL_SIZE, kThreads, MHD_OPTION_THREAD_STACK_SIZE, kThreadStack,
      MHD_OPTION_CONNECTION_MEMORY_LIMIT, kConnectionMemory, MHD_OPTION_CONNECTION_LIMIT,
      kMostConnections, MHD_OPTION_PER_IP_CONNECTION_LIMIT, kMostOfOneAddress,
      MHD_OPTION_CONNECTION_TIMEOUT, kIdle, MHD_OPTION_NOTIFY_COMPLETED, Handler::Completed,
      handler_.get(), MHD_OPTION_NOTIFY_CONNECTION, Handler::Notify, handler_.get(),
      MHD_OPTION_END);
  if (daemon_ == nullptr) throw Failure("the HTTP server cannot be started on port {}", port);
  listening.Release();
}

HttpServer::~HttpServer() {
  streams_.End();
  MHD_stop_daemon(daemon_);
}

}  // namespace orxserve
