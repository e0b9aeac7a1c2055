// Memory functions of the portability layer.  What Malloc returns is released with Free.
#pragma once

#include <cstddef>

#include "Platform/Export.h"

class ORX_API ORXMemory {
 public:
  static void* Set(void* block, int value, size_t size);
  static int Compare(const void* a, const void* b, size_t size);  // as memcmp
  static void* Copy(void* to, const void* from, size_t size);     // the blocks do not overlap
  static void* Move(void* to, const void* from, size_t size);     // the blocks may overlap
  static void* Malloc(size_t size);                               // null for a size of 0
  static void Free(void* block);                                  // null is harmless
};
