// 8-bit text functions under the names that the scanner and the database code use.
#pragma once

#include <cstddef>

#include "Platform/Export.h"

class ORX_API ORXAString {
 public:
  static char* Concate(char* to, const char* text);
  static char* Concate(char* to, const char* text, size_t count);
  static char* Copy(char* to, const char* text);
  static char* Copy(char* to, const char* text, size_t count);
  static int Diff(const char* a, const char* b);
  static int Diff(const char* a, const char* b, size_t count);
  static int DiffCase(const char* a, const char* b);
  static int DiffCase(const char* a, const char* b, size_t count);
  static size_t Length(const char* text);
  static int Integer(const char* text);          // the leading decimal number; 0 when there is none
  static unsigned long Ulong(const char* text);  // likewise, unsigned
  static long Long(const char* text, char** end = nullptr, int base = 10);
  static double Double(const char* text, char** end = nullptr);
  // As sprintf: `to` must have room for the whole text.
  static int Print(char* to, const char* format, ...) __attribute__((format(printf, 2, 3)));
  static char* Char(const char* text, int c);
  static char* CharRev(const char* text, int c);
  static char* LocateStr(const char* text, const char* part);
  static char* LocateiStr(const char* text, const char* part);  // ignores the case of letters
  static char* DupCopy(const char* text);  // a new copy, released with ORXMemory::Free
};
