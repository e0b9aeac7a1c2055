#include "OSAL/StringUtiltiy.h"

#include <cctype>
#include <cstring>

#include "OSAL/CharsetConverter.h"
#include "OSAL/ORXCString.h"

TChar* StringUtiltiy::GetTcharFromChar(const char* text) { return ORXCString::DupCopy(text); }

char* StringUtiltiy::GetCharFromTChar(const TChar* text) { return ORXCString::DupCopy(text); }

char* StringUtiltiy::GetUtf8FromTChar(const TChar* text) { return ORXCString::DupCopy(text); }

char* StringUtiltiy::LowerCase(char* text) {
  if (text == nullptr) return nullptr;
  for (char* p = text; *p != '\0'; ++p)
    *p = static_cast<char>(tolower(static_cast<unsigned char>(*p)));
  return text;
}

char* StringUtiltiy::GetUtf8FromMultiByteStr(char* text) {
  if (text == nullptr) return nullptr;
  const size_t length = strlen(text);
  if (orx::IsAscii(text, length)) return ORXCString::DupCopy(text);  // nearly every file name
  return orx::ConvertWhole("UTF-8", "EUC-KR", text, length, 2 * length);
}
