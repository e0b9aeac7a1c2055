// Conversions between the platform's text form, UTF-8 and the device's multibyte code page.
// Every new text is released by the caller with ORXMemory::Free.
#pragma once

#include "Platform/Export.h"

typedef char TChar;  // the platform's text unit: plain 8-bit text

class ORX_API StringUtiltiy {
 public:
  // Plain copies, as TChar is 8-bit text.  Null for null.
  static TChar* GetTcharFromChar(const char* text);
  static char* GetCharFromTChar(const TChar* text);
  static char* GetUtf8FromTChar(const TChar* text);

  // Lower-cases `text` in place and returns it.
  static char* LowerCase(char* text);

  // Converts EUC-KR to UTF-8.  Null when the text is not EUC-KR or the converter is missing; the
  // argument itself for null.
  static char* GetUtf8FromMultiByteStr(char* text);
};
