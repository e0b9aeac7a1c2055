// Functions on 8-bit, terminated text.  Each is the C-library function of the same meaning.
#pragma once

#include <cstddef>

#include "Platform/Export.h"

class ORX_API ORXCString {
 public:
  // Appends or copies into the caller's buffer, which must have the room (strcat, strcpy and their
  // counted forms; the counted copy pads with zeros and does not terminate a text that fills it).
  static char* Concate(char* to, const char* text);
  static char* Concate(char* to, const char* text, size_t count);
  static char* Copy(char* to, const char* text);
  static char* Copy(char* to, const char* text, size_t count);

  static int Diff(const char* a, const char* b);  // as strcmp
  static int Diff(const char* a, const char* b, size_t count);
  static size_t Length(const char* text);
  static int Integer(const char* text);  // the leading decimal number; 0 when there is none
  static char* Char(const char* text, int c);
  // The last place of `c`; searching for 0 gives the terminator.  Null when there is none.
  static char* CharRev(const char* text, int c);
  static char* LocateStr(const char* text, const char* part);
  // As sprintf: `to` must have room for the whole text.
  static int Print(char* to, const char* format, ...) __attribute__((format(printf, 2, 3)));
  // A new copy, released with ORXMemory::Free; null for null or when memory runs out.
  static char* DupCopy(const char* text);
};
