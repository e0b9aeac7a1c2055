#include "OSAL/CharsetConverter.h"

#include <cstdlib>

#include "OSAL/Fault.h"

namespace orx {

bool IsAscii(const char* text, size_t length) {
  for (size_t i = 0; i < length; ++i)
    if (static_cast<unsigned char>(text[i]) >= 0x80) return false;
  return true;
}

char* ConvertWhole(const char* to, const char* from, const char* text, size_t length, size_t room) {
  const CharsetConverter converter(to, from);
  if (!converter.ok()) return nullptr;
  auto* result = static_cast<char*>(Counted(calloc(room + 1, 1), __func__));
  if (result == nullptr) return nullptr;
  char* out = result;
  size_t outLeft = room;
  if (!converter.Convert(&text, &length, &out, &outLeft)) {
    free(result);
    return nullptr;
  }
  return result;
}

}  // namespace orx
