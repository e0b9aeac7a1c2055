// Dates, durations, numbers, Base64, request parameters, titles and cache paths.
//
// New texts come from malloc and are released with free; they are null when memory runs out.  The
// two functions with state of their own (upnp_date_getGMT_forName, upnp_util_create_tempfilename)
// are used from one thread.
#pragma once

#include "Platform/Export.h"

// "1:02:03", or "1:02:03.004" when there are milliseconds; hours are not limited.
ORX_API char* upnp_duration_to_string(long ms);
// Writes "01:02:03" and a terminator into `dst`, which has the room, and returns the length;
// milliseconds are dropped, and from a hundred hours on the text is longer.
ORX_API int upnp_format_time(long ms, char* dst);
// Milliseconds of "h:m:s:ms"; parts that are missing count 0, a null text too.  Stops at the
// largest `long`.
ORX_API long upnp_convert_time_to_long(const char* text);
// Writes the UTC date of `time` as "2026-11-21", at most `n` bytes; nothing when it has none.
ORX_API void upnp_date_convertToGMT(const long* time, char* dst, int n);
// Writes the UTC time of now as "20261121093426123" (to milliseconds), at most `n` bytes.
ORX_API void upnp_date_getGMT_forName(char* dst, int n);

ORX_API unsigned int upnp_atoui(const char* text);  // the leading decimal digits; 0 without any
ORX_API int hexchar_to_i(char c);                   // 0 for what is no hexadecimal digit
// The value of up to `n` leading hexadecimal digits.
ORX_API unsigned long hexStringToNumber(const char* text, unsigned n);
ORX_API unsigned long hexStringToLong(const char* text);  // up to 8 digits
// Writes the low 32 bits of `v` as eight lower-case digits and a terminator.
ORX_API void longToHexString(long v, char* dst);

// 1 when the word, up to its end or a space, has only the letters of the numerals I, V and X.
ORX_API int isRomanNumber(const char* word);
// "/temp/tempfile0", "/temp/tempfile1", ...; null when the directory /temp cannot be made.
ORX_API char* upnp_util_create_tempfilename();
// Base64 with the standard alphabet; "==" is appended when one byte is left over, nothing when two.
ORX_API char* string_to_base64(const char* text);
// Reads it back, up to the padding or whatever else is no Base64 digit.  Null for null.
ORX_API char* string_from_base64(const char* text);
// The file name of `path` (either slash) without its last extension, "No Title" when that is empty.
ORX_API char* upnp_build_title_from_filename(const char* path);
// The value of parameter `name` in "...?a=1&b=2", as it stands; null when it is not there.
ORX_API char* get_cgi_param(const char* request, const char* name);
// `dir`, "/" and `name` with the characters that no file name should hold replaced by "_".  Null
// when either is null or empty.
ORX_API char* make_cache_path(const char* dir, const char* name);
