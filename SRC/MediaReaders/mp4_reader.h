// The reader of MP4, 3GPP, QuickTime and M4A files (ISO/IEC 14496-12, -14, -15) and of AAC in ADTS
// framing (ISO/IEC 14496-3), and the choice of DLNA classes from what it finds.
#pragma once

#include "Platform/Export.h"
#include "UpnpUtil/upnp_file.h"

// What was found in one file; all zero before each read.  Texts come from malloc and belong to the
// record; m4a_free_metadata releases them.
struct mp4_metadata_t {
  long long FileSize;   // bytes
  long long BytesRead;  // by the walk, skipped boxes included
  int HasVideo;         // a "vide" handler was seen
  int HasAudio;         // a "soun" handler or an ADTS header was seen
  int HasTracks;        // the walk found media
  int ContainerCode;    // of the profile tables: 1 MP4, 4 "3gp4", 6 "3gp6"; 0 unknown
  int VideoCodec;       // 2 AVC
  int AudioType;        // 1 AAC-LC, 3 HE-AAC, 4 multichannel, 15 AAC-LTP, 18 BSAC, 20/21 in ADTS
  int VideoId;          // class of the video profile table
  int TableAudioCode;   // audio code of the video profile table
  int AudioProfileId;   // row of the audio profile table
  int Width;            // pixels, from the sample entry
  int Height;
  int TrackWidth;  // as the track header has it (16.16 fixed point, taken as an integer)
  int TrackHeight;
  int AvcProfile;          // 6 Baseline, 5 Main
  double AvcLevel;         // e.g. 1.3
  double FrameRate;        // frames per second
  double VideoDurationMs;  // milliseconds
  int VideoFrameCount;
  int VideoByteTotal;  // of all frames; the size of one when all have the same
  int VideoBitrate;    // bits per second
  int AudioBitrate;    // bits per second
  int Channels;
  int SampleRate;  // samples per second
  int TrackNumber;
  int CoverArtOffset;  // file position where the "data" box of "covr" ends, less 16
  int CoverArtLength;  // bytes of that box, its headers (16 bytes) included
  char Language[3];    // ISO 639-2, not terminated
  char* Date;          // "2026-11-21", when the file was last modified, local time
  char* Title;
  char* Artist;
  char* AlbumTitle;
  char* Genre;
  char* Year;
  char* DurationText;      // "0:01:02", whole seconds
  char* CompatibleBrands;  // the brands of "ftyp", run together
};

// The keys under which the two profile tables are searched.
struct mp4_dlna_prop_t {
  int VideoId;
  int TableAudioCode;
  int ContainerCode;
  int AudioProfileId;
};

// A box header as it was read.
struct mp4_box_t {
  unsigned Size;
  char Type[4];
};

// Reads `path` into the record, which it zeroes first.  1 when the walk found media, else 0.
ORX_API int m4a_get_metadata(const char* path, mp4_metadata_t* meta);
// Releases the texts and zeroes the record; null is harmless.
ORX_API void m4a_free_metadata(mp4_metadata_t* meta);
// Walks the boxes from the handle's position on that begin before the file position `limit` (none
// when that is negative).  Takes "ftyp",
// "mvhd", "tkhd", "mdhd", "hdlr", "stsd", "stsz" and the items of "ilst".  1 when media was found,
// else 0.
ORX_API int m4a_atom_get_metadata(st_UPNP_FILE* file, long long limit, mp4_metadata_t* meta);
// Reads an ADTS header at the handle's position.  1 when it is one of AAC-LC, else 0.
ORX_API int aac_adts_get_metadata(st_UPNP_FILE* file, long long limit, mp4_metadata_t* meta);

// Handles the sizes 0 and 1 of a box whose header has just been read: 0 an ordinary box, 1 the box
// was passed over, 3 no file or no record.
ORX_API int isBoxToLarge(st_UPNP_FILE* file, mp4_box_t* box, mp4_metadata_t* meta);

// Read a sample entry, `entry` pointing 16 bytes into it, the whole entry in memory: 0 accepted,
// -1 not.
ORX_API int mp4_check_avc1_header(const char* entry, mp4_metadata_t* meta);
ORX_API int mp4_check_mp4a_header(const char* entry, mp4_metadata_t* meta);

// Derive the classes of the profile tables from what was read: 0 done, -1 no class fits.
ORX_API int mp4_confirm_mpeg4_video(mp4_metadata_t* meta);
ORX_API int mp4_confirm_mpeg4_audio(mp4_metadata_t* meta);
ORX_API int mp4_confirm_mpeg2_audio(mp4_metadata_t* meta);

// The name of ID3v1 genre `n` (0 to 147), a new text released with free; null for any other number.
ORX_API char* mp3_getGenre(int n);
