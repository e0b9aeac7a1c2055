#include "OSAL/ORXAString.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "OSAL/ORXCString.h"
#include "OSAL/ORXUString.h"

char* ORXAString::Concate(char* to, const char* text) { return strcat(to, text); }

char* ORXAString::Concate(char* to, const char* text, size_t count) {
  return strncat(to, text, count);
}

char* ORXAString::Copy(char* to, const char* text) { return strcpy(to, text); }

char* ORXAString::Copy(char* to, const char* text, size_t count) {
  return strncpy(to, text, count);
}

int ORXAString::Diff(const char* a, const char* b) { return strcmp(a, b); }

int ORXAString::Diff(const char* a, const char* b, size_t count) { return strncmp(a, b, count); }

int ORXAString::DiffCase(const char* a, const char* b) { return ORXUString::DiffCase(a, b); }

int ORXAString::DiffCase(const char* a, const char* b, size_t count) {
  return ORXUString::DiffCase(a, b, count);
}

size_t ORXAString::Length(const char* text) { return strlen(text); }

int ORXAString::Integer(const char* text) { return ORXCString::Integer(text); }

unsigned long ORXAString::Ulong(const char* text) { return strtoul(text, nullptr, 10); }

long ORXAString::Long(const char* text, char** end, int base) {
  return ORXUString::Long(text, end, base);
}

double ORXAString::Double(const char* text, char** end) { return ORXUString::Double(text, end); }

int ORXAString::Print(char* to, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const int length = vsprintf(to, format, arguments);
  va_end(arguments);
  return length;
}

char* ORXAString::Char(const char* text, int c) { return ORXCString::Char(text, c); }

char* ORXAString::CharRev(const char* text, int c) { return ORXCString::CharRev(text, c); }

char* ORXAString::LocateStr(const char* text, const char* part) {
  return ORXUString::LocateStr(text, part);
}

char* ORXAString::LocateiStr(const char* text, const char* part) {
  return ORXUString::LocateiStr(text, part);
}

char* ORXAString::DupCopy(const char* text) { return ORXCString::DupCopy(text); }
