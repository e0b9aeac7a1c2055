// The reader of still pictures: JPEG segments (ISO/IEC 10918-1) and the EXIF block in them (Exif
// 2.3, a TIFF 6.0 structure).
//
// Only one read runs at a time, on the scanner's thread.  Texts come from malloc and are released
// with free.
#pragma once

#include "Platform/Export.h"
#include "UpnpUtil/upnp_file.h"

// What was found in one picture; all zero before each read.  0 and null mean "not found".
struct ExifData {
  int Width;            // pixels, from the frame header, else tag 40962
  int Height;           // pixels, from the frame header, else tag 40963
  int Orientation;      // tag 274: 1 to 8
  int XResolution;      // tag 282, whole pixels per unit
  int YResolution;      // tag 283
  int ThumbnailOffset;  // tag 513, bytes from the TIFF header
  int ThumbnailLength;  // tag 514, bytes
  int Reserved;         // not filled
  long long FileSize;   // bytes
  long FileTime;        // when the file was last modified, seconds since 1970
  char* Description;    // tag 270
  char* ReservedText1;  // not filled
  char* ReservedText2;  // not filled
  char* Date;           // "2026-11-21": tag 36867, else tag 306, else the day of FileTime
  char* DateTime;       // tag 306 as it stands
  char* Software;       // tag 305
  char* ReservedText3;  // not filled
  char* ReservedText4;  // not filled
  char* UserComment;    // tag 37510, in ASCII only; whoever had the record filled releases it
};

// Where a TIFF block says that it keeps further directories; 0: it did not say.
struct exif_ifd_pointers_t {
  unsigned Exif;     // tag 34665
  unsigned Gps;      // tag 34853
  unsigned Interop;  // tag 40965
};

// ---- Whole files ----

// Reads the picture at `path`.  1, or 0 when it is none with an EXIF block; then every result is 0
// or null.  The thumbnail's offset counts from the start of the file.  The two texts belong to the
// caller; any result may be null when it is not wanted.
ORX_API int exif_get_metadata(const char* path, long long* size, int* width, int* height,
                              int* thumbOffset, int* thumbLength, int* thumbWidth, int* thumbHeight,
                              int* orientation, char** date, long* fileTime, char** description);
// The same for a record, which it zeroes first; the thumbnail is not looked for.
ORX_API int exif_get_metadata_orig(const char* path, ExifData* data);
// Releases the texts, all but UserComment, and nulls them; null is harmless.
ORX_API void exif_free_metadata(ExifData* data);

// Finds the size in pixels in the frame header of the JPEG at position `start`, whose segments end
// before position `limit`.  0, or -1 when there is none (the results are then left alone).
ORX_API int exif_get_jpeg_size(st_UPNP_FILE* file, long long limit, int* width, int* height,
                               long start);

// ---- Values of a TIFF block ----
// `block` holds `length` bytes; `value` is an entry's value field as a number in the block's byte
// order: the value itself, or its offset in the block when it takes more than four bytes.

ORX_API unsigned get_int16(const unsigned char* bytes, int bigEndian);
ORX_API unsigned get_int32(const unsigned char* bytes, int bigEndian);
// 1 when `count` units lie in the entry or end before the end of the block, 0 when not.  `name` is
// that of the type, for the reader of the call.
ORX_API int check_type(const char* name, unsigned length, unsigned offset, unsigned count,
                       unsigned unitSize);
// A number of type BYTE, SHORT, LONG, SLONG, RATIONAL or SRATIONAL; 0 when it is of another type,
// has another count than one (BYTE: four, SHORT: two) or does not lie in the block.
ORX_API int exif_get_int(const unsigned char* block, unsigned length, int type, unsigned count,
                         unsigned value);
// A new, terminated text of type ASCII or UNDEFINED; null when it is of another type, empty or
// does not lie in the block.
ORX_API char* exif_get_string(const unsigned char* block, unsigned length, int type, unsigned count,
                              unsigned value);

// ---- Directories of a TIFF block ----
// The `..._IFD` functions handle the one entry at `offset`, the `..._section` functions the
// directory at `offset` (do_exif_section: and those linked to it).  What does not lie in the block
// is passed over.

// Takes the tags of a picture's main directory.
ORX_API void do_tiff_IFD(const unsigned char* block, unsigned length, unsigned offset,
                         int bigEndian, ExifData* data, exif_ifd_pointers_t* pointers);
ORX_API void do_tiff_section(const unsigned char* block, unsigned length, unsigned offset,
                             int bigEndian, ExifData* data, exif_ifd_pointers_t* pointers);
// Takes the tags of an Exif directory, and the thumbnail's place.
ORX_API void do_exif_IFD(const unsigned char* block, unsigned length, unsigned offset,
                         int bigEndian, ExifData* data, exif_ifd_pointers_t* pointers);
ORX_API void do_exif_section(const unsigned char* block, unsigned length, unsigned offset,
                             int bigEndian, ExifData* data, exif_ifd_pointers_t* pointers);
// No tag is taken from the GPS and interoperability directories.
ORX_API void do_gps_IFD(const unsigned char* block, unsigned length, unsigned offset, int bigEndian,
                        ExifData* data, exif_ifd_pointers_t* pointers);
ORX_API void do_gps_section(const unsigned char* block, unsigned length, unsigned offset,
                            int bigEndian, ExifData* data, exif_ifd_pointers_t* pointers);
ORX_API void do_interop_IFD(const unsigned char* block, unsigned length, unsigned offset,
                            int bigEndian, ExifData* data, exif_ifd_pointers_t* pointers);
ORX_API void do_interop_section(const unsigned char* block, unsigned length, unsigned offset,
                                int bigEndian, ExifData* data, exif_ifd_pointers_t* pointers);
