// Comparisons that fold accents and case.
#include <strings.h>

#include <cctype>
#include <cstring>

#include "UpnpUtil/upnp_string.h"

namespace {

constexpr int kFirstLetter = 192;  // of Latin-1
constexpr int kLastLetter = 252;

// The base letter of each Latin-1 letter from kFirstLetter to kLastLetter, '.' where there is none.
// The A with ring has 'Z': it comes after every plain letter.
constexpr char kBaseLetters[] =
    "AAAAAZACEEEEIIII"  // 192
    ".NOOOOOOOUUUU..."  // 208
    "AAAAAZACEEEEIIII"  // 224
    ".NOOOOOOOUUUU";    // 240
static_assert(sizeof kBaseLetters - 1 == kLastLetter - kFirstLetter + 1, "one for each letter");

// What is compared at `p`: the folded letter that begins there, or its byte.
int SortKey(const char* p) {
  const auto first = static_cast<unsigned char>(p[0]);
  return toupper(get_urf8_sortchar(first, static_cast<unsigned char>(p[1])));
}

}  // namespace

unsigned char get_urf8_sortchar(unsigned char first, unsigned char second) {
  if (first != 0xC2 && first != 0xC3) return first;
  const int code = first == 0xC3 ? (second + 64) % 256 : second;
  if (code < kFirstLetter || code > kLastLetter) return first;
  const char base = kBaseLetters[code - kFirstLetter];
  return base == '.' ? first : static_cast<unsigned char>(base);
}

int utf8_stricmp(const char* a, const char* b) {
  if (a == nullptr || b == nullptr) return (a != nullptr) - (b != nullptr);
  for (; *a != '\0' && *b != '\0'; ++a, ++b) {
    const int keyOfA = SortKey(a), keyOfB = SortKey(b);
    if (keyOfA != keyOfB) return keyOfA > keyOfB ? 1 : -1;
  }
  return (*a != '\0') - (*b != '\0');
}

char* istrstr(const char* haystack, const char* needle) {
  if (haystack == nullptr || needle == nullptr) return nullptr;
  const size_t length = strlen(needle);
  for (const char* p = haystack; *p != '\0'; ++p)
    if (strncasecmp(p, needle, length) == 0) return const_cast<char*>(p);
  return nullptr;
}
