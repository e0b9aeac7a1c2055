// Functions on 16-bit text units, and the 8-bit functions that were never widened.
//
// The overloads on `unsigned short` work on texts that end with a zero unit; counts are in units.
#pragma once

#include <cstddef>

#include "Platform/Export.h"

class ORX_API ORXUString {
 public:
  // 8-bit text.
  static int DiffCase(const char* a, const char* b);  // as strcasecmp
  static int DiffCase(const char* a, const char* b, size_t count);
  static char* LocateStr(const char* text, const char* part);
  static char* LocateiStr(const char* text, const char* part);  // ignores the case of letters
  static long Long(const char* text, char** end = nullptr, int base = 10);
  static double Double(const char* text, char** end = nullptr);
  static int Tolower(int c);               // ASCII letters only
  static int Toupper(int c);               // ASCII letters only
  static char* DupCopy(const char* text);  // a new copy, released with ORXMemory::Free
  // The length of the leading run made of (free of) the characters in `set`.
  static size_t SearchAcceptPos(const char* text, const char* set);
  static size_t SearchNoRejectPos(const char* text, const char* set);

  // 16-bit text.
  static unsigned short* Concate(unsigned short* to, const unsigned short* text);
  static unsigned short* Concate(unsigned short* to, const unsigned short* text, size_t count);
  static unsigned short* Copy(unsigned short* to, const unsigned short* text);
  // Writes exactly `count` units; what lies behind a terminator is zero.
  static unsigned short* Copy(unsigned short* to, const unsigned short* text, size_t count);
  static size_t Length(const unsigned short* text);
  static int Diff(const unsigned short* a, const unsigned short* b);
  static int Diff(const unsigned short* a, const unsigned short* b, size_t count);
  static unsigned short* Char(const unsigned short* text, unsigned short c);
  // The last place of `c`; searching for 0 gives the terminator.  Null when there is none.
  static unsigned short* CharRev(const unsigned short* text, unsigned short c);
  static unsigned short* CharRevW(const unsigned short* text, unsigned short c);
  static unsigned short* DupCopyW(const unsigned short* text);  // released with ORXMemory::Free
  static size_t SearchAcceptPos(const unsigned short* text, const unsigned short* set);
  static size_t SearchNoRejectPos(const unsigned short* text, const unsigned short* set);

  // Placeholders: the wide forms of these were never needed and answer 0 (null).
  static int DiffCaseW(const unsigned short* a, const unsigned short* b);
  static unsigned short* LocateStrW(const unsigned short* text, const unsigned short* part);
  static int IntergerW(const unsigned short* text);
  static long LongW(const unsigned short* text);
  static double DoubleW(const unsigned short* text);
};
