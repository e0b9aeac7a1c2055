// Tells open pages that the catalogue changed (server-sent events).
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace orxserve {

// One open page.  `sleep` makes the HTTP server ask no more until `wake`.
struct EventStream {
  std::function<void()> sleep;
  std::function<void()> wake;
  std::string waiting;  // to be sent
  bool asleep = false;
  bool ended = false;
};

class EventStreams {
 public:
  static constexpr size_t kMost = 32;

  // Null when too many are open.
  std::shared_ptr<EventStream> Open(std::function<void()> sleep, std::function<void()> wake);
  void Close(const std::shared_ptr<EventStream>& stream);
  // Moves what is waiting to `out`; when nothing is, the stream sleeps until woken and false comes
  // back.  `ended` tells that nothing will come any more.
  bool Take(EventStream* stream, size_t most, std::string* out, bool* ended);

  void Changed(uint32_t updateId);
  void KeepAlive();  // a comment, so that dead connections are noticed
  void End();

 private:
  void Send(const std::string& text);

  std::mutex mutex_;
  std::vector<std::shared_ptr<EventStream>> open_;
  bool ended_ = false;
};

}  // namespace orxserve
