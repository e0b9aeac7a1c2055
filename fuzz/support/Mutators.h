// Changes to fuzz inputs that keep the structure of the media formats: a reader's deeper steps are
// out of reach for changes to single bytes.  For libFuzzer builds alone.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t room);

namespace orx_test {

// Changes one field of one IFD entry, or anything at all.
size_t MutateTiff(uint8_t* data, size_t size, size_t room, unsigned seed);

// Doubles, removes, moves or renames one box with the sizes of the boxes around it kept right,
// writes another size into it, or changes anything at all.
size_t MutateBoxes(uint8_t* data, size_t size, size_t room, unsigned seed);

}  // namespace orx_test
