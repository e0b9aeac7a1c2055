// Decimal and hexadecimal numbers as text, and back.
#include <cstdint>
#include <cstdio>

#include "UpnpUtil/upnp_util.h"

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// The value of a hexadecimal digit, -1 for anything else.
int HexValue(char c) {
  if (IsDigit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

unsigned int upnp_atoui(const char* text) {
  unsigned int value = 0;
  if (text == nullptr) return 0;
  for (const char* p = text; IsDigit(*p); ++p) value = value * 10 + static_cast<unsigned>(*p - '0');
  return value;
}

int hexchar_to_i(char c) {
  const int value = HexValue(c);
  return value < 0 ? 0 : value;
}

unsigned long hexStringToNumber(const char* text, unsigned n) {
  unsigned long number = 0;
  if (text == nullptr) return 0;
  for (unsigned i = 0; i < n; ++i) {
    const int value = HexValue(text[i]);  // the terminator is no digit
    if (value < 0) break;
    number = (number << 4) | static_cast<unsigned long>(value);
  }
  return number;
}

unsigned long hexStringToLong(const char* text) { return hexStringToNumber(text, 8); }

void longToHexString(long v, char* dst) {
  if (dst == nullptr) return;
  snprintf(dst, 9, "%08lx", static_cast<unsigned long>(static_cast<uint32_t>(v)));
}
