#include "OSAL/ORXCString.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "OSAL/Fault.h"

char* ORXCString::Concate(char* to, const char* text) { return strcat(to, text); }

char* ORXCString::Concate(char* to, const char* text, size_t count) {
  return strncat(to, text, count);
}

char* ORXCString::Copy(char* to, const char* text) { return strcpy(to, text); }

char* ORXCString::Copy(char* to, const char* text, size_t count) {
  return strncpy(to, text, count);
}

int ORXCString::Diff(const char* a, const char* b) { return strcmp(a, b); }

int ORXCString::Diff(const char* a, const char* b, size_t count) { return strncmp(a, b, count); }

size_t ORXCString::Length(const char* text) { return strlen(text); }

int ORXCString::Integer(const char* text) { return static_cast<int>(strtol(text, nullptr, 10)); }

char* ORXCString::Char(const char* text, int c) { return const_cast<char*>(strchr(text, c)); }

char* ORXCString::CharRev(const char* text, int c) {
  const char wanted = static_cast<char>(c);
  for (const char* p = text + strlen(text);; --p) {
    if (*p == wanted) return const_cast<char*>(p);
    if (p == text) return nullptr;
  }
}

char* ORXCString::LocateStr(const char* text, const char* part) {
  return const_cast<char*>(strstr(text, part));
}

int ORXCString::Print(char* to, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const int length = vsprintf(to, format, arguments);
  va_end(arguments);
  return length;
}

char* ORXCString::DupCopy(const char* text) {
  if (text == nullptr) return nullptr;
  const size_t size = strlen(text) + 1;
  char* copy = static_cast<char*>(orx::Counted(malloc(size), __func__));
  if (copy != nullptr) memcpy(copy, text, size);
  return copy;
}
