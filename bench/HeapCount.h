// Counts the heap of the whole program, that of SQLite and of the C++ library included: the program
// that links HeapCount.cpp has its functions in place of malloc and its kin.
#pragma once

#include <cstddef>

namespace orx_bench {

// Bytes; the header that the C library keeps with every block counts as used.
size_t HeapInUse();
size_t HeapPeak();
void ForgetHeapPeak();  // counts on from what is in use now

}  // namespace orx_bench
