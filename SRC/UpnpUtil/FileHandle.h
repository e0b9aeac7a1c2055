// How the library's own readers open a file: with its status, and with the buffer that a handle
// of upnp_file_open_read gets at its first read.
#pragma once

#include <sys/stat.h>

#include "UpnpUtil/upnp_file.h"

namespace orx {

// Null on failure; closed with upnp_file_close.  `status` is the open file's or, when it did not
// open, that of its path; all zero when unknown.
st_UPNP_FILE* OpenHandle(const char* path, struct stat64* status);

}  // namespace orx
