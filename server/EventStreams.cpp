#include "EventStreams.h"

#include <algorithm>

namespace orxserve {
namespace {

constexpr size_t kMostWaiting = 4096;  // bytes; a page that does not read is told no more

}  // namespace

std::shared_ptr<EventStream> EventStreams::Open(std::function<void()> sleep,
                                                std::function<void()> wake) {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (ended_ || open_.size() >= kMost) return nullptr;
  auto stream = std::make_shared<EventStream>();
  stream->sleep = std::move(sleep);
  stream->wake = std::move(wake);
  stream->waiting = "retry: 3000\n\n";
  open_.push_back(stream);
  return stream;
}

void EventStreams::Close(const std::shared_ptr<EventStream>& stream) {
  const std::lock_guard<std::mutex> lock(mutex_);
  stream->asleep = false;
  open_.erase(std::remove(open_.begin(), open_.end(), stream), open_.end());
}

bool EventStreams::Take(EventStream* stream, size_t most, std::string* out, bool* ended) {
  const std::lock_guard<std::mutex> lock(mutex_);
  *ended = stream->ended;
  if (*ended) return false;
  *out = stream->waiting.substr(0, most);
  stream->waiting.erase(0, out->size());
  stream->asleep = out->empty();
  if (stream->asleep) stream->sleep();  // under the lock, so that waking comes behind it
  return !out->empty();
}

// A stream is woken under the lock: it cannot be closed meanwhile.
void EventStreams::Send(const std::string& text) {
  for (const auto& stream : open_) {
    if (stream->waiting.size() < kMostWaiting) stream->waiting += text;
    if (stream->asleep) stream->wake();
    stream->asleep = false;
  }
}

void EventStreams::Changed(uint32_t updateId) {
  const std::lock_guard<std::mutex> lock(mutex_);
  Send("event: changed\ndata: " + std::to_string(updateId) + "\n\n");
}

void EventStreams::KeepAlive() {
  const std::lock_guard<std::mutex> lock(mutex_);
  Send(":\n\n");
}

void EventStreams::End() {
  const std::lock_guard<std::mutex> lock(mutex_);
  ended_ = true;
  for (const auto& stream : open_) stream->ended = true;
  Send("");
}

}  // namespace orxserve
