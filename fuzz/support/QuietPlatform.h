// A platform that allocates nothing and writes nothing: it answers what it is told to and counts
// the log's error lines.  For programs in which memory fails or time counts.
#pragma once

#include <cstddef>

#include "Platform/CameraPlatform.h"

namespace orx_test {

struct QuietPlatform {
  int sharingMode = 0;
  int certificationState = 0;
  int fileCount = 0;  // of the shared files
  // The URI of one shared file, a text that may be changed; negative and null as the platform has
  // it.
  int (*uri)(int index, char** uri) = nullptr;
  int (*fileType)(const char* uri) = nullptr;
  bool attributesSucceed = false;
  long long (*sizeOf)(const char* path) = nullptr;  // in place of the size in the records below
  sFileAttribute fileAttribute = {};
  sVideoAttribute videoAttribute = {};
  int screennail[4] = {};                              // width, height, offset, length
  bool (*findScreennail)(const char* path) = nullptr;  // false: there is none
  long long fileSize = 0;

  void (*onLine)(const char* message) = nullptr;  // called for every line
  size_t lines = 0;
  size_t errorLines = 0;
  char lastError[300] = {};  // the text of the last error line

  static QuietPlatform& Get();
  static QuietPlatform& Reset();
};

}  // namespace orx_test
