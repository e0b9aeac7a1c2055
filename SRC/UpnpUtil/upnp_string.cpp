// Growable text.
#include "UpnpUtil/upnp_string.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>

#include "OSAL/Fault.h"

namespace {

constexpr int kFirstCapacity = 256;  // bytes

// Moves the text into a zeroed buffer of `capacity` bytes.  False, with nothing changed, when it
// cannot be had.
bool Grow(st_upnp_string* s, long long capacity) {
  if (capacity > std::numeric_limits<int>::max()) return false;
  char* buffer =
      static_cast<char*>(orx::Counted(calloc(static_cast<size_t>(capacity), 1), __func__));
  if (buffer == nullptr) return false;
  memcpy(buffer, s->buffer, static_cast<size_t>(s->length));
  free(s->buffer);
  s->buffer = buffer;
  s->capacity = static_cast<int>(capacity);
  return true;
}

// Appends `count` bytes and a terminator, for which there is room.
void Append(st_upnp_string* s, const char* bytes, size_t count) {
  memcpy(s->buffer + s->length, bytes, count);
  s->length += static_cast<int>(count);
  s->buffer[s->length] = '\0';
}

// The append that upnp_string_concat and upnp_string_add share: the room is at least doubled.
void AppendGrowing(st_upnp_string* s, const char* bytes, size_t count) {
  if (s->length < 0 || count > static_cast<size_t>(std::numeric_limits<int>::max())) return;
  const long long needed = static_cast<long long>(s->length) + static_cast<long long>(count);
  if (s->capacity > needed || Grow(s, std::max(2LL * s->capacity, needed + 1)))
    Append(s, bytes, count);
}

}  // namespace

st_upnp_string* upnp_string_create(const char* text, int capacity) {
  if (capacity < 0) return nullptr;
  auto* s = static_cast<st_upnp_string*>(orx::Counted(calloc(1, sizeof(st_upnp_string)), __func__));
  if (s == nullptr) return nullptr;
  s->capacity = capacity;
  // There is always room for the terminator of an empty text.
  s->buffer = static_cast<char*>(
      orx::Counted(calloc(static_cast<size_t>(std::max(capacity, 1)), 1), __func__));
  if (s->buffer == nullptr) {
    free(s);
    return nullptr;
  }
  return upnp_string_concat(s, text);
}

st_upnp_string* upnp_string_concat(st_upnp_string* s, const char* text) {
  if (s == nullptr) return upnp_string_create(text, kFirstCapacity);
  if (text != nullptr) AppendGrowing(s, text, strlen(text));
  return s;
}

st_upnp_string* upnp_string_add(st_upnp_string* s, const char* bytes, int count) {
  if (s == nullptr) s = upnp_string_create(nullptr, kFirstCapacity);
  if (s != nullptr && bytes != nullptr && count > 0)
    AppendGrowing(s, bytes, static_cast<size_t>(count));
  return s;
}

st_upnp_string* upnp_string_concat_and_convert(st_upnp_string* s, const char* text, int toUtf8) {
  const std::unique_ptr<char, void (*)(void*)> converted(
      toUtf8 != 0 ? strdup_to_utf8(text) : strdup_from_utf8(text), free);
  if (s == nullptr) return upnp_string_create(converted.get(), kFirstCapacity);
  if (converted == nullptr || s->length < 0) return s;

  const size_t count = strlen(converted.get());
  if (count > static_cast<size_t>(std::numeric_limits<int>::max())) return s;
  const long long length = s->length, added = static_cast<long long>(count);
  const long long doubled = 2LL * s->capacity;
  const bool fits = s->capacity > length + 2 * added;  // room is kept for a second conversion
  const long long capacity = doubled > length + added ? doubled : length + 2 * added + 1;
  if (fits || Grow(s, capacity)) Append(s, converted.get(), count);
  return s;
}

void upnp_string_empty(st_upnp_string* s) {
  if (s == nullptr) return;
  s->length = 0;
  if (s->buffer != nullptr) s->buffer[0] = '\0';
}

void upnp_string_free(st_upnp_string* s) {
  if (s == nullptr) return;
  free(s->buffer);
  free(s);
}
