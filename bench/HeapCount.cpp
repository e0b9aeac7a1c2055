#include "HeapCount.h"

#include <malloc.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>

namespace orx_bench {
namespace {

std::atomic<size_t> inUse{0};
std::atomic<size_t> peak{0};

size_t SizeOf(void* block) { return malloc_usable_size(block) + sizeof(size_t); }

void* Taken(void* block) {
  if (block == nullptr) return nullptr;
  const size_t now = inUse += SizeOf(block);
  size_t most = peak;
  while (now > most && !peak.compare_exchange_weak(most, now)) {
  }
  return block;
}

void Given(void* block) {
  if (block != nullptr) inUse -= SizeOf(block);
}

}  // namespace

size_t HeapInUse() { return inUse; }
size_t HeapPeak() { return peak; }
void ForgetHeapPeak() { peak = inUse.load(); }

}  // namespace orx_bench

extern "C" {

// NOLINTBEGIN: the names are the C library's
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
void __libc_free(void* block);

void* malloc(size_t size) { return orx_bench::Taken(__libc_malloc(size)); }
void* calloc(size_t count, size_t size) { return orx_bench::Taken(__libc_calloc(count, size)); }
void* memalign(size_t alignment, size_t size) {
  return orx_bench::Taken(__libc_memalign(alignment, size));
}
void* aligned_alloc(size_t alignment, size_t size) { return memalign(alignment, size); }
int posix_memalign(void** block, size_t alignment, size_t size) {
  *block = memalign(alignment, size);
  return *block != nullptr ? 0 : ENOMEM;
}
void free(void* block) {
  orx_bench::Given(block);
  __libc_free(block);
}
// The peak sees the old block or the new one: where the block moves, both exist for a moment.
void* realloc(void* block, size_t size) {
  if (block == nullptr) return malloc(size);
  const size_t before = orx_bench::SizeOf(block);
  void* moved = __libc_realloc(block, size);
  if (moved == nullptr && size != 0) return nullptr;
  orx_bench::inUse -= before;
  return orx_bench::Taken(moved);
}
// NOLINTEND

}  // extern "C"
