// The server's file logger: a category mask, a log file or standard output, severities, a hex dump.
//
// The library itself writes nothing through it.  Its state is one for the process and unguarded:
// call it from one thread.  It starts switched off (mode 0).
//
// Categories, one bit each, and what is written before a message of exactly one of them:
//     1 "SYSTEM:"   2 "SSDP:"        4 "DB:"    8 "HTTP:"     16 "CLIENT-DB:"
//    32 "EVENTING:" 64 "XML:"      128 "PLUGIN:"            256 "SCAN:"
// Levels: 0 normal, 1 problem, 2 error, 3 critical.  Level 0 is subject to the mask, the others are
// written whenever the mode is not 0.
#pragma once

#include "Platform/Export.h"

// Logs to the end of the file at `path` from now on; to standard output when `path` is null or
// cannot be opened.  A stream that was open before stays open.
ORX_API void upnp_log_init(const char* path);
ORX_API void upnp_log_set_mode(unsigned mask);  // enables the categories of `mask`, 0: none at all
ORX_API int upnp_log_enabled(unsigned mask);    // 1 when every bit of `mask` is enabled
ORX_API const char* upnp_log_get_filename();    // belongs to the logger; null when there is none

// Writes the severity, the category and the message; no newline is added.  A critical message also
// goes to standard output, cut at 1023 bytes.
ORX_API void upnp_log_message(int level, unsigned category, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
// Writes `length` bytes in lines of sixteen.
ORX_API void upnp_log_dump(int level, unsigned category, const char* data, int length);
// Formats one line of a dump into `out`, at most `outSize` bytes: the hexadecimal value of the
// first byte, " : ", and the `count` (0 to 16) bytes as text, "." for what is not printable.
// Returns `out`.
ORX_API char* Hex_dump_line(char* out, const unsigned char* data, int count, unsigned outSize);

ORX_API void upnp_log_clear();  // empties the log file; does nothing when there is none
// Closes the log file; output then goes to standard output.  The file name is kept.
ORX_API void upnp_log_exit();
