// Conversions between character sets, and the Shift-JIS detector.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "OSAL/CharsetConverter.h"
#include "OSAL/Fault.h"
#include "UpnpUtil/ksx1001_table.h"
#include "UpnpUtil/upnp_string.h"

namespace {

using Byte = unsigned char;

bool IsContinuation(Byte byte) { return (byte & 0xC0) == 0x80; }

// The length of the UTF-8 sequence that a lead byte announces, 2 to 6; 1 for any other byte.
size_t AnnouncedLength(Byte lead) {
  if (lead < 0xC0) return 1;
  if (lead < 0xE0) return 2;
  if (lead < 0xF0) return 3;
  if (lead < 0xF8) return 4;
  if (lead < 0xFC) return 5;
  return lead < 0xFE ? 6 : 1;
}

// The length of the well-formed sequence at `p`, 2 to 6; 1 when there is none.  Stops at a
// terminator, which continues no sequence.
size_t SequenceLength(const Byte* p) {
  const size_t length = AnnouncedLength(*p);
  for (size_t i = 1; i < length; ++i)
    if (!IsContinuation(p[i])) return 1;
  return length;
}

// Steps over up to `count` bytes, but not over a terminator.
const Byte* Skip(const Byte* p, size_t count) {
  for (; count > 0 && *p != 0; --count) ++p;
  return p;
}

// Writes a value of up to 11 bits as two bytes of UTF-8; returns the end.
char* PutTwoBytes(char* out, unsigned value) {
  *out++ = static_cast<char>(0xC0 | (value >> 6));
  *out++ = static_cast<char>(0x80 | (value & 63));
  return out;
}

// A new zeroed buffer for `size` bytes and a terminator.
char* NewText(size_t size) {
  return static_cast<char*>(orx::Counted(calloc(size + 1, 1), __func__));
}

const Byte* Bytes(const char* text) { return reinterpret_cast<const Byte*>(text); }

// The first position of `unit` in the KS X 1001 grid, -1 when it has none.
int Ksx1001Position(uint16_t unit) {
  const uint16_t* end = orx::kKsx1001ByCode + orx::kKsx1001Assigned;
  const uint16_t* found = std::lower_bound(
      orx::kKsx1001ByCode, end, unit,
      [](uint16_t position, uint16_t code) { return orx::kKsx1001Table[position] < code; });
  return found != end && orx::kKsx1001Table[*found] == unit ? *found : -1;
}

}  // namespace

char* strdup_to_utf8(const char* text) {
  if (text == nullptr) return nullptr;
  char* result = NewText(2 * strlen(text));
  if (result == nullptr) return nullptr;
  char* out = result;
  for (const Byte* p = Bytes(text); *p != 0;) {
    const size_t length = SequenceLength(p);
    if (*p >= 0x80 && length == 1) {
      out = PutTwoBytes(out, *p++);
      continue;
    }
    memcpy(out, p, length);
    out += length;
    p += length;
  }
  return result;
}

char* strdup_from_utf8(const char* text) {
  if (text == nullptr) return nullptr;
  char* result = NewText(strlen(text));
  if (result == nullptr) return nullptr;
  char* out = result;
  for (const Byte* p = Bytes(text); *p != 0;) {
    const size_t length = AnnouncedLength(*p);
    if (*p < 0x80) {
      *out++ = static_cast<char>(*p++);
    } else if (*p == 0xC2 || *p == 0xC3) {
      if (p[1] == 0) break;
      *out++ = static_cast<char>(*p == 0xC3 ? p[1] + 64 : p[1]);
      p += 2;
    } else if (length > 2) {
      *out++ = '?';
      p = Skip(p, length);
    } else {
      ++p;
    }
  }
  return result;
}

char* upnp_string_utf16_to_utf8(const char* text) {
  fputs("\nupnp_string_utf16_to_utf8 called ", stdout);
  if (text == nullptr) return nullptr;
  size_t size = 0;
  for (const Byte* p = Bytes(text); *p != 0; ++p) size += *p < 0x80 ? 1 : 3;
  char* result = NewText(size);
  if (result == nullptr) return nullptr;
  char* out = result;
  for (const Byte* p = Bytes(text); *p != 0; ++p) {
    if (*p > 0x7F)
      out = PutTwoBytes(out, *p);
    else
      *out++ = static_cast<char>(*p);
  }
  return result;
}

char* upnp_string_utf8_to_utf16(const char* text) {
  if (text == nullptr) return nullptr;
  char* result = NewText(strlen(text));
  if (result == nullptr) return nullptr;
  char* out = result;
  for (const Byte* p = Bytes(text); *p != 0;) {
    const size_t length = AnnouncedLength(*p);
    const Byte* next = Skip(p, length);
    if (static_cast<size_t>(next - p) < length) break;
    if (*p < 0x80) *out++ = static_cast<char>(*p);
    if (length == 2) *out++ = static_cast<char>((p[0] << 6) | (p[1] & 63));
    if (length == 3) *out++ = static_cast<char>(((p[1] << 6) & 192) | (p[2] & 63));
    p = next;
  }
  return result;
}

int upnp_wcslen(const char* text) { return text == nullptr ? 0 : static_cast<int>(strlen(text)); }

char* UnicodeToMultiByte(const unsigned short* utf16, int count) {
  if (utf16 == nullptr || count <= 0) return nullptr;
  auto* result = static_cast<char*>(orx::Counted(calloc(static_cast<size_t>(count), 5), __func__));
  if (result == nullptr) return nullptr;
  char* out = result;  // at most two bytes a unit, so there is always room for the terminator
  for (int i = 0; i < count && utf16[i] != 0; ++i) {
    if (utf16[i] <= 127) {
      *out++ = static_cast<char>(utf16[i]);
      continue;
    }
    const int position = Ksx1001Position(utf16[i]);
    if (position < 0) continue;
    const int columns = static_cast<int>(orx::kKsx1001Columns);
    *out++ = static_cast<char>(0xA1 + position / columns);
    *out++ = static_cast<char>(0xA1 + position % columns);
  }
  return result;
}

char* convert_MB_to_UTF8(const char* euckr, int count) {
  if (euckr == nullptr || count < 0) return nullptr;
  const size_t length = strnlen(euckr, static_cast<size_t>(count));
  if (orx::IsAscii(euckr, length)) return orx::Counted(strndup(euckr, length), __func__);
  return orx::ConvertWhole("UTF-8", "EUC-KR", euckr, length, 5 * length);
}

char* getUTF8FromMB(const char* euckr, int count) { return convert_MB_to_UTF8(euckr, count); }

char* upnp_convert_utf16_to_utf8(const void* /*ignored*/, const unsigned short* utf16, int count) {
  const std::unique_ptr<char, void (*)(void*)> euckr(UnicodeToMultiByte(utf16, count), free);
  return euckr == nullptr ? nullptr
                          : convert_MB_to_UTF8(euckr.get(), static_cast<int>(strlen(euckr.get())));
}

char* upnp_util_convert_shift_jis_to_utf8(const char* text) {
  if (text == nullptr || *text == '\0') return nullptr;
  size_t inLeft = strlen(text);
  if (orx::IsAscii(text, inLeft)) return orx::Counted(strdup(text), __func__);
  const orx::CharsetConverter converter("UTF8", "CP932");
  if (!converter.ok()) return orx::Counted(strdup(text), __func__);
  size_t outLeft = 2 * inLeft;
  char* result = NewText(outLeft);
  if (result == nullptr) return nullptr;
  char* out = result;
  while (inLeft > 0 && converter.Convert(&text, &inLeft, &out, &outLeft)) {
  }
  return result;
}

int upnp_util_is_shift_jis(const char* text) {
  if (text == nullptr) return 0;
  size_t length = 0, high = 0;
  for (const Byte* p = Bytes(text); *p != 0; ++p, ++length) {
    if (*p >= 0x81 && *p <= 0x9F) return 1;
    if (*p > 0x80) ++high;
  }
  return high > length / 2 ? 1 : 0;
}
