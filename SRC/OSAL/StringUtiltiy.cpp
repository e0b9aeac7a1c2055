#include "OSAL/StringUtiltiy.h"

#include <cctype>
#include <cstdlib>
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

  orx::CharsetConverter converter("UTF-8", "EUC-KR");
  if (!converter.ok()) return nullptr;
  const size_t room = 2 * length;
  char* result = static_cast<char*>(calloc(room + 1, 1));
  if (result == nullptr) return nullptr;
  const char* in = text;
  size_t inLeft = length;
  char* out = result;
  size_t outLeft = room;
  if (!converter.Convert(&in, &inLeft, &out, &outLeft)) {
    free(result);
    return nullptr;
  }
  return result;
}
