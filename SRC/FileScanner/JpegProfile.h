// The DLNA media-format profile of a JPEG picture.
#pragma once

namespace orx {

// "JPEG_SM" up to 640x480 pixels, "JPEG_MED" up to 1024x768, "JPEG_LRG" beyond; the limits are
// those of a landscape picture, so a portrait of 480x640 is "JPEG_MED".  Null when either is 0.
const char* JpegProfile(int height, int width);

// The same as a new text, released with ORXMemory::Free.
char* NewJpegProfile(int height, int width);

}  // namespace orx
