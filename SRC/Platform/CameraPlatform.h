// What the library asks of the machine it runs on.
//
// The library calls these functions and does not define them: the process that loads it does, or
// it links liborxscan_host.a, which answers for an ordinary Linux machine.  All of them are called
// on the thread that called the library, except __dlog_print, which may be called from any thread.
// No text handed out here is freed by the library.
#pragma once

#include <cstddef>

extern "C" {

// Attributes of a picture.  Offsets are the platform's and the same on 32-bit and 64-bit machines.
struct sFileAttribute {
  long long nFileSize;  // bytes
  unsigned char reserved8[64];
  unsigned short nWidth;   // pixels
  unsigned short nHeight;  // pixels
  char szDate[20];         // "2026-11-21"; not necessarily terminated when it fills the field
};

// Attributes of a film.
struct sVideoAttribute {
  long long nFileSize;  // bytes
  unsigned char reserved8[16];
  int nWidth;       // pixels
  int nHeight;      // pixels
  char szDate[16];  // "2026-11-21"; not necessarily terminated when it fills the field
  int nDuration;    // milliseconds
  unsigned char reserved52[4];
  double dFrameRate;  // frames per second, 0 when unknown
};

// Writes one line to the platform's log.  logId is 3 for this library, priority 4 (info) or
// 6 (error), tag "DLNA" or "DLNA_TIME".  The result is not looked at.
int __dlog_print(int logId, int priority, const char* tag, const char* format, ...)
    __attribute__((format(printf, 4, 5)));

// The sharing mode.  8 and 6 select the two layouts with an object table alone, every other value
// selects the full one.  2 shares no raw and multi-picture files, nor films of the type
// DLNA_FILE_TYPE_VIDEO_OTHER; 8 shares still pictures only.  It stays the same during a scan.
int GetTandemixMode(void);

// The number of shared files, >= 0.
int QUILWifi_getFileCount(void);

// The URI of shared file `index`, counted from 0: an eight-character mount prefix, "/DCIM/", the
// folder name, "/", the file name.  Negative: failure.  On success `uri` points to a writable,
// terminated text that belongs to the platform; the library may overwrite its last three
// characters.
int QUILWifi_getURIFromIndex(int index, char*& uri);

// The platform's code for the kind of file behind `uri` (see DLNA_FILE_TYPE).
int QUILWifi_getFileType(char* uri);

// Fills `out` with the attributes of the picture at `path`.  Non-zero: success.
int QUILWifi_getFileAttribute(char* path, sFileAttribute* out);

// Fills `out` with the attributes of the film at `path`.  Non-zero: success.
int QUILWifi_getVideoAttribute(char* path, sVideoAttribute* out);

// Finds the screen-size preview inside the picture at `path`: its size in pixels and its place in
// the file in bytes.  1: found; any other value: there is none.
int QUILWifi_getJpegScreennailInfo(char* path, int* width, int* height, int* offset, int* length);

// The size of the file at `path` in bytes.
long long ORXGetFileSize(const char* path);

// Non-zero while the device runs in DLNA certification mode.
int ORXGetDlnaCertificationState(void);

}  // extern "C"

static_assert(sizeof(sFileAttribute) == 96, "layout of the platform");
static_assert(offsetof(sFileAttribute, nWidth) == 72, "layout of the platform");
static_assert(offsetof(sFileAttribute, nHeight) == 74, "layout of the platform");
static_assert(offsetof(sFileAttribute, szDate) == 76, "layout of the platform");
static_assert(sizeof(sVideoAttribute) == 64, "layout of the platform");
static_assert(offsetof(sVideoAttribute, nWidth) == 24, "layout of the platform");
static_assert(offsetof(sVideoAttribute, nHeight) == 28, "layout of the platform");
static_assert(offsetof(sVideoAttribute, szDate) == 32, "layout of the platform");
static_assert(offsetof(sVideoAttribute, nDuration) == 48, "layout of the platform");
static_assert(offsetof(sVideoAttribute, dFrameRate) == 56, "layout of the platform");
