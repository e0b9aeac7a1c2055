// A request and its answer, apart from the server that reads the one and sends the other.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ContentDirectory.h"
#include "Net.h"

namespace orxserve {

struct HttpRequest {
  std::string_view method;
  std::string_view path;  // without the query

  std::function<const char*(const char*)> header;    // null when it was not sent
  std::function<const char*(const char*)> argument;  // of the query, likewise
  std::string_view body;
  std::string base;  // "http://192.168.1.5:8200", of the address that the request came in on
  IpAddress peer;
  IpAddress local;
  uint16_t port = 0;
  uint32_t scope = 0;  // the interface of an address of the link

  std::string_view Header(const char* name) const {
    const char* value = header ? header(name) : nullptr;
    return value == nullptr ? std::string_view() : value;
  }
};

struct HttpAnswer {
  int status = 200;
  std::vector<std::pair<const char*, std::string>> headers;
  std::string text;                // the body, or
  std::string_view shared;         // a constant that is one, or
  std::unique_ptr<Answer> stream;  // what writes it, or
  Descriptor file;                 // where it stands, from `offset` on
  uint64_t offset = 0;
  uint64_t length = 0;
  bool events = false;  // stays open and tells of changes

  static HttpAnswer Status(int status);
  static HttpAnswer Text(std::string type, std::string text);
  static HttpAnswer Constant(std::string type, std::string_view text);
  void Add(const char* name, std::string value) { headers.emplace_back(name, std::move(value)); }
};

constexpr char kXmlType[] = "text/xml; charset=\"utf-8\"";

// "Sun, 22 Nov 2026 02:04:07 GMT"
std::string HttpDate(time_t time);

// The Host header names this machine: an address of the connection, or a name that no one else can
// hand out.  A page of a foreign name must not reach the server through a victim's browser.
bool IsOwnHost(std::string_view host, const HttpRequest& request, std::string_view machine);

}  // namespace orxserve
