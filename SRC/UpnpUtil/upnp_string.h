// Growable text, conversions between character sets, and comparisons that fold accents and case.
//
// Every text returned here is new, comes from malloc and is released with free.  Nothing is kept
// between calls, so any thread may call.
#pragma once

#include "Platform/Export.h"

// ---- growable text ------------------------------------------------------------------------------

// Made by upnp_string_create, released by upnp_string_free.
struct st_upnp_string {
  int length;    // bytes in use, terminator not counted
  int capacity;  // bytes allocated
  char* buffer;  // terminated
};

// A new text with room for `capacity` bytes, terminator included, holding a copy of `text` (none
// for null); null when memory runs out or the capacity is negative.
ORX_API st_upnp_string* upnp_string_create(const char* text, int capacity);

// Append and return the record; a null record is created first, with room for 256 bytes.  When the
// room cannot be had, or there is nothing to append, the record is left as it is.
ORX_API st_upnp_string* upnp_string_concat(st_upnp_string* s, const char* text);
ORX_API st_upnp_string* upnp_string_add(st_upnp_string* s, const char* bytes, int count);
// Appends `text` as strdup_to_utf8 (`toUtf8` not 0) or strdup_from_utf8 gives it.
ORX_API st_upnp_string* upnp_string_concat_and_convert(st_upnp_string* s, const char* text,
                                                       int toUtf8);
ORX_API void upnp_string_empty(st_upnp_string* s);  // keeps the room
ORX_API void upnp_string_free(st_upnp_string* s);   // null is harmless

// ---- conversions: null for null, when memory runs out and when there is no converter ------------

// Latin-1 to UTF-8.  What is UTF-8 already stays as it is.
ORX_API char* strdup_to_utf8(const char* text);
// UTF-8 to Latin-1.  "?" for each longer sequence; what has no place in Latin-1 is dropped.
ORX_API char* strdup_from_utf8(const char* text);

// Despite their names: Latin-1 to UTF-8 (after a line on standard output), and UTF-8 to the low
// eight bits of each character.
ORX_API char* upnp_string_utf16_to_utf8(const char* text);
ORX_API char* upnp_string_utf8_to_utf16(const char* text);
ORX_API int upnp_wcslen(const char* text);  // bytes up to the first zero; 0 for null

// UTF-16 to EUC-KR, up to a zero unit or `count` units; what KS X 1001 does not have is left out.
// Null for a count of 0 as well.
ORX_API char* UnicodeToMultiByte(const unsigned short* utf16, int count);
// EUC-KR to UTF-8, up to a terminator or `count` bytes; null when the text is not EUC-KR.
ORX_API char* convert_MB_to_UTF8(const char* euckr, int count);
ORX_API char* getUTF8FromMB(const char* euckr, int count);
// UTF-16 to UTF-8 by way of EUC-KR: holds what KS X 1001 has.
ORX_API char* upnp_convert_utf16_to_utf8(const void* ignored, const unsigned short* utf16,
                                         int count);

// Shift-JIS (code page 932) to UTF-8, as far as it can be converted and up to twice its length.  A
// plain copy when there is no converter; null for an empty text.
ORX_API char* upnp_util_convert_shift_jis_to_utf8(const char* text);
// 1 when the text looks like Shift-JIS: any byte of 0x81 to 0x9F, or most bytes above 0x80.
ORX_API int upnp_util_is_shift_jis(const char* text);

// ---- comparisons --------------------------------------------------------------------------------

// The letter under which the two-byte UTF-8 letter `first`, `second` is sorted, e.g. 'E' for an E
// with an accent; `first` itself when it is no such letter.  A with ring is 'Z', to come last.
ORX_API unsigned char get_urf8_sortchar(unsigned char first, unsigned char second);
// -1, 0 or 1, ignoring case and folding accents byte by byte.  Null sorts first.
ORX_API int utf8_stricmp(const char* a, const char* b);
// The first place of `needle`, ignoring the case of ASCII letters; null when there is none.
ORX_API char* istrstr(const char* haystack, const char* needle);
