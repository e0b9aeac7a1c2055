// File handles of the media readers: size and position known, 64-bit offsets, buffered reading.
//
// A handle opened for reading owns a read buffer, so that many small reads and seeks cost one
// system call; the other handles work on their descriptor directly.  Opening never blocks, and
// FIFOs, sockets and devices are never opened for reading.  A handle belongs to one thread.
#pragma once

#include <dirent.h>

#include "Platform/Export.h"

// One buffer of a handle; nodes and their data come from malloc.
struct st_UPNP_FILE_BUFFER {
  char* data;
  long long start;  // the file position of the first byte
  int used;         // bytes that hold file content
  int capacity;     // bytes allocated; 0: not a read buffer
  st_UPNP_FILE_BUFFER* next;
};

struct st_UPNP_FILE {
  int descriptor;
  unsigned reserved;
  long long size;      // bytes, when the file was opened; -1 unknown; 0 when opened for writing
  long long position;  // as far as reads and seeks have moved it; writes do not
  st_UPNP_FILE_BUFFER* buffers;
  unsigned reserved2;
};

struct st_UPNP_FILE_STAT {
  int change_time;        // seconds since 1970
  int modification_time;  // likewise
  int access_time;        // likewise
  int reserved;
  long long size;  // bytes
  unsigned mode;   // type and permission bits
};

// A directory search of the host; the three texts come from malloc.
struct st_UPNP_FINDFILE {
  DIR* directory;
  char* text1;
  char* text2;
  char* text3;
};

// Plain descriptors, -1 on failure: read only; write only, created with permissions 0600 and not
// truncated; read and append, not created.
ORX_API int open_read(const char* path);
ORX_API int open_write(const char* path);
ORX_API int open_append(const char* path);
ORX_API int close_file(int descriptor);

// New handles, closed with upnp_file_close; null on failure.
ORX_API st_UPNP_FILE* upnp_file_open_read(const char* path);
ORX_API st_UPNP_FILE* upnp_file_open_write(const char* path);
ORX_API st_UPNP_FILE* upnp_file_open_append(const char* path);
ORX_API void upnp_file_close(st_UPNP_FILE* file);

// Bytes read (0 at the end of the file) or written, -1 on failure.
ORX_API int upnp_file_read(st_UPNP_FILE* file, void* buffer, int length);
ORX_API int upnp_file_write(st_UPNP_FILE* file, const void* buffer, int length);
// The new position, -1 on failure.  `whence` is SEEK_SET, SEEK_CUR or SEEK_END.
ORX_API long long upnp_file_seek(st_UPNP_FILE* file, long long offset, int whence);
// 1 when the position is at or past the size the file had when it was opened.
ORX_API int upnp_file_eof(st_UPNP_FILE* file);
// Reads one line, its newline included, or `length` bytes, whichever ends first.  A line that fills
// the buffer is not terminated: pass one byte less than the buffer holds.  Returns the buffer,
// empty at the end of the file; null when `buffer` or `file` is null.
ORX_API char* upnp_file_gets(char* buffer, int length, st_UPNP_FILE* file);

// 0, or -1 on failure.
ORX_API int upnp_file_stat(const char* path, st_UPNP_FILE_STAT* status);
ORX_API int upnp_file_mkdir(const char* path);  // permissions 0777
ORX_API int upnp_file_unlink(const char* path);

// Closes the directory and releases the texts and the record.
ORX_API void upnp_file_find_close(st_UPNP_FINDFILE* find);
