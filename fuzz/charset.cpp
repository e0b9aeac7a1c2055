// Conversions between character sets.  The first byte chooses the conversion.
#include <cstdlib>
#include <string>
#include <vector>

#include "OSAL/ORXMemory.h"
#include "OSAL/StringUtiltiy.h"
#include "UpnpUtil/upnp_string.h"
#include "fuzz/support/ByteSource.h"

namespace {

using Convert = char* (*)(const char*);
constexpr Convert kConversions[] = {strdup_to_utf8, strdup_from_utf8, upnp_string_utf16_to_utf8,
                                    upnp_string_utf8_to_utf16, upnp_util_convert_shift_jis_to_utf8};

// In blocks of their own, so that a read behind the end shows.
std::vector<char> Terminated(const std::string& text) {
  return std::vector<char>(text.c_str(), text.c_str() + text.size() + 1);
}

void ConvertCounted(const std::string& text, int count) {
  const std::vector<char> bytes = Terminated(text);
  free(convert_MB_to_UTF8(bytes.data(), count));
  std::vector<unsigned short> units(text.size() / 2 + 1);  // the last one is a terminator
  for (size_t i = 0; i + 1 < units.size(); ++i)
    units[i] = static_cast<unsigned short>(static_cast<unsigned char>(text[2 * i]) << 8 |
                                           static_cast<unsigned char>(text[2 * i + 1]));
  free(UnicodeToMultiByte(units.data(), static_cast<int>(units.size())));
  free(upnp_convert_utf16_to_utf8(nullptr, units.data(), static_cast<int>(units.size())));
}

void Grow(orx_test::ByteSource* source) {
  st_upnp_string* text = upnp_string_create(source->Text().c_str(), source->Byte());
  while (!source->empty()) {
    const int what = source->Byte();
    const std::string piece = source->Text();
    if (what % 4 == 0) text = upnp_string_concat(text, piece.c_str());
    if (what % 4 == 1) text = upnp_string_add(text, piece.data(), static_cast<int>(piece.size()));
    if (what % 4 == 2) text = upnp_string_concat_and_convert(text, piece.c_str(), what & 4);
    if (what % 4 == 3) upnp_string_empty(text);
  }
  upnp_string_free(text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  orx_test::ByteSource source(data, size);
  const size_t what = source.Byte() % 8;
  if (what == 7) {
    Grow(&source);
    return 0;
  }
  const int count = source.Byte();
  const std::string text = source.Rest();
  std::vector<char> bytes = Terminated(text);
  if (what < 5) {
    free(kConversions[what](bytes.data()));
  } else if (what == 5) {
    ConvertCounted(text, count);
  } else {
    upnp_util_is_shift_jis(bytes.data());
    ORXMemory::Free(StringUtiltiy::GetUtf8FromMultiByteStr(bytes.data()));
    utf8_stricmp(bytes.data(), Terminated(text.substr(text.size() / 2)).data());
    istrstr(bytes.data(), Terminated(text.substr(0, 3)).data());
  }
  return 0;
}
