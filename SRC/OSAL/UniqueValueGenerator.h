// Resource names under which the server publishes items, thumbnails and screennails.
//
// A name is a fixed start, a running counter, the processor time in whole seconds (as
// milliseconds), an optional suffix, "." and the file's extension: "/orx00032000.JPG".  The counter
// alone keeps names apart; it starts anew with a new instance.  Used from the scanner's thread
// only.
#pragma once

#include "Platform/Export.h"

class ORX_API UniqueValueGenerator {
 public:
  static UniqueValueGenerator* GetInstance();  // created on first use
  static void DestroyInstance();               // harmless when there is none

  // Each returns a new text, released with ORXMemory::Free; null when memory runs out.  A null
  // `ext` stands for "bin", a null `suffix` for "0000000"; `prefix` replaces the fixed start.  A
  // name is cut at 511 bytes.
  char* GetUniqueURIMA(const char* ext);
  char* GetUniqueURIMA(const char* ext, const char* suffix);
  char* GetUniqueThumbnailURIMA(const char* ext);
  char* GetUniqueThumbnailURIMA(const char* ext, const char* suffix);
  char* GetUniqueThumbnailURIMAWithPrefix(const char* ext, const char* prefix);
  char* GetUniqueScreennailURIMA(const char* ext);
  char* GetUniqueScreennailURIMA(const char* ext, const char* suffix);
  char* GetUniqueScreennailURIMAWithPrefix(const char* ext, const char* prefix);
  char* GetUniqueVideoThumbnailURIMA(const char* ext);
  char* GetUniqueVideoThumbnailURIMA(const char* ext, const char* suffix);

 private:
  char* MakeName(const char* start, const char* ext);
  char* MakeName(const char* start, const char* ext, const char* suffix);

  int counter_ = 0;
  static UniqueValueGenerator* instance_;
};
