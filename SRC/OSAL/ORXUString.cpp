#include "OSAL/ORXUString.h"

#include <strings.h>

#include <cctype>
#include <cstdlib>
#include <cstring>

#include "OSAL/Fault.h"
#include "OSAL/ORXCString.h"

int ORXUString::DiffCase(const char* a, const char* b) { return strcasecmp(a, b); }

int ORXUString::DiffCase(const char* a, const char* b, size_t count) {
  return strncasecmp(a, b, count);
}

char* ORXUString::LocateStr(const char* text, const char* part) {
  return const_cast<char*>(strstr(text, part));
}

char* ORXUString::LocateiStr(const char* text, const char* part) {
  const size_t length = strlen(part);
  const int first = tolower(static_cast<unsigned char>(*part));
  for (const char* p = text;; ++p) {
    // Most places differ in their first letter.
    const bool may = length == 0 || tolower(static_cast<unsigned char>(*p)) == first;
    if (may && strncasecmp(p, part, length) == 0) return const_cast<char*>(p);
    if (*p == '\0') return nullptr;
  }
}

long ORXUString::Long(const char* text, char** end, int base) { return strtol(text, end, base); }

double ORXUString::Double(const char* text, char** end) { return strtod(text, end); }

int ORXUString::Tolower(int c) { return c >= 'A' && c <= 'Z' ? c + 32 : c; }

int ORXUString::Toupper(int c) { return c >= 'a' && c <= 'z' ? c - 32 : c; }

char* ORXUString::DupCopy(const char* text) { return ORXCString::DupCopy(text); }

size_t ORXUString::SearchAcceptPos(const char* text, const char* set) { return strspn(text, set); }

size_t ORXUString::SearchNoRejectPos(const char* text, const char* set) {
  return strcspn(text, set);
}

unsigned short* ORXUString::Concate(unsigned short* to, const unsigned short* text) {
  Copy(to + Length(to), text);
  return to;
}

unsigned short* ORXUString::Concate(unsigned short* to, const unsigned short* text, size_t count) {
  unsigned short* end = to + Length(to);
  for (; count > 0 && *text != 0; --count) *end++ = *text++;
  *end = 0;
  return to;
}

unsigned short* ORXUString::Copy(unsigned short* to, const unsigned short* text) {
  memmove(to, text, (Length(text) + 1) * sizeof *to);
  return to;
}

unsigned short* ORXUString::Copy(unsigned short* to, const unsigned short* text, size_t count) {
  size_t i = 0;
  for (; i < count && text[i] != 0; ++i) to[i] = text[i];
  for (; i < count; ++i) to[i] = 0;
  return to;
}

size_t ORXUString::Length(const unsigned short* text) {
  size_t length = 0;
  while (text[length] != 0) ++length;
  return length;
}

int ORXUString::Diff(const unsigned short* a, const unsigned short* b) {
  while (*a != 0 && *a == *b) ++a, ++b;
  return static_cast<int>(*a) - static_cast<int>(*b);
}

int ORXUString::Diff(const unsigned short* a, const unsigned short* b, size_t count) {
  for (; count > 0; --count, ++a, ++b)
    if (*a != *b || *a == 0) return static_cast<int>(*a) - static_cast<int>(*b);
  return 0;
}

unsigned short* ORXUString::Char(const unsigned short* text, unsigned short c) {
  for (;; ++text) {
    if (*text == c) return const_cast<unsigned short*>(text);
    if (*text == 0) return nullptr;
  }
}

unsigned short* ORXUString::CharRev(const unsigned short* text, unsigned short c) {
  for (const unsigned short* p = text + Length(text);; --p) {
    if (*p == c) return const_cast<unsigned short*>(p);
    if (p == text) return nullptr;
  }
}

unsigned short* ORXUString::CharRevW(const unsigned short* text, unsigned short c) {
  return CharRev(text, c);
}

unsigned short* ORXUString::DupCopyW(const unsigned short* text) {
  const size_t size = (Length(text) + 1) * sizeof *text;
  auto* copy = static_cast<unsigned short*>(orx::Counted(malloc(size), __func__));
  if (copy != nullptr) memcpy(copy, text, size);
  return copy;
}

size_t ORXUString::SearchAcceptPos(const unsigned short* text, const unsigned short* set) {
  size_t i = 0;
  while (text[i] != 0 && Char(set, text[i]) != nullptr) ++i;
  return i;
}

size_t ORXUString::SearchNoRejectPos(const unsigned short* text, const unsigned short* set) {
  size_t i = 0;
  while (text[i] != 0 && Char(set, text[i]) == nullptr) ++i;
  return i;
}

int ORXUString::DiffCaseW(const unsigned short* /*a*/, const unsigned short* /*b*/) { return 0; }

unsigned short* ORXUString::LocateStrW(const unsigned short* /*text*/,
                                       const unsigned short* /*part*/) {
  return nullptr;
}

int ORXUString::IntergerW(const unsigned short* /*text*/) { return 0; }

long ORXUString::LongW(const unsigned short* /*text*/) { return 0; }

double ORXUString::DoubleW(const unsigned short* /*text*/) { return 0.0; }
