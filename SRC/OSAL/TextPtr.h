// Texts that the library's operations hand over to their caller.
#pragma once

#include <memory>

#include "OSAL/ORXMemory.h"

namespace orx {

struct FreeText {
  void operator()(char* text) const { ORXMemory::Free(text); }
};

// Owns a text that is released with ORXMemory::Free; release() hands it on.
using TextPtr = std::unique_ptr<char, FreeText>;

}  // namespace orx
