// Base64, request parameters and Roman numerals.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "OSAL/Fault.h"
#include "UpnpUtil/upnp_util.h"

namespace {

constexpr char kBase64Alphabet[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The next `count` bytes, at most three, as the upper part of 24 bits.
unsigned Base64Group(const char* bytes, size_t count) {
  unsigned bits = 0;
  for (size_t i = 0; i < 3; ++i)
    bits = (bits << 8) | (i < count ? static_cast<unsigned char>(bytes[i]) : 0u);
  return bits;
}

bool StartsWith(const char* text, size_t length, const char* start, size_t startLength) {
  return length >= startLength && memcmp(text, start, startLength) == 0;
}

}  // namespace

char* string_to_base64(const char* text) {
  if (text == nullptr) return nullptr;
  const size_t length = strlen(text);
  auto* result = static_cast<char*>(
      orx::Counted(calloc(length / 3 * 4 + length % 3 * 4 / 3 + 4, 1), __func__));
  if (result == nullptr) return nullptr;
  char* out = result;
  for (size_t done = 0; done < length; done += 3) {
    const size_t count = std::min<size_t>(3, length - done);
    const unsigned bits = Base64Group(text + done, count);
    for (size_t i = 0; i <= count; ++i) *out++ = kBase64Alphabet[(bits >> (18 - 6 * i)) & 63];
  }
  // string_from_base64 expects no padding behind two bytes.
  if (length % 3 == 1) memcpy(out, "==", 2);
  return result;
}

char* string_from_base64(const char* text) {
  if (text == nullptr) return nullptr;
  auto* result = static_cast<char*>(calloc(strlen(text) / 4 * 3 + 4, 1));
  if (result == nullptr) return nullptr;
  char* out = result;
  unsigned bits = 0;
  int count = 0;  // of the bits not written yet
  for (const char* p = text; *p != '\0'; ++p) {
    const char* digit = strchr(kBase64Alphabet, *p);
    if (digit == nullptr) break;
    bits = (bits << 6 | static_cast<unsigned>(digit - kBase64Alphabet)) & 0xFFFF;
    count += 6;
    if (count < 8) continue;
    count -= 8;
    *out++ = static_cast<char>(bits >> count & 0xFF);
  }
  return result;
}

char* get_cgi_param(const char* request, const char* name) {
  constexpr char kSeparators[] = "?&";
  if (request == nullptr || name == nullptr) return nullptr;
  const size_t nameLength = strlen(name);
  for (const char* segment = request;;) {
    const size_t length = strcspn(segment, kSeparators);
    if (StartsWith(segment, length, name, nameLength) && length > nameLength &&
        segment[nameLength] == '=')
      return orx::Counted(strndup(segment + nameLength + 1, length - nameLength - 1), __func__);
    if (segment[length] == '\0') return nullptr;
    segment += length + 1;
  }
}

int isRomanNumber(const char* word) {
  if (word == nullptr) return 0;
  const char after = word[strspn(word, "IVXivx")];
  return after == '\0' || after == ' ' ? 1 : 0;
}
