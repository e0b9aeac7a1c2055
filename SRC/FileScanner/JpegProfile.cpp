#include "FileScanner/JpegProfile.h"

#include "OSAL/ORXCString.h"

namespace orx {

const char* JpegProfile(int height, int width) {
  if (height == 0 || width == 0) return nullptr;
  if (width <= 640 && height <= 480) return "JPEG_SM";
  if (width <= 1024 && height <= 768) return "JPEG_MED";
  return "JPEG_LRG";
}

char* NewJpegProfile(int height, int width) {
  return ORXCString::DupCopy(JpegProfile(height, width));
}

}  // namespace orx
