#include "OSAL/ORXMemory.h"

#include <cstdlib>
#include <cstring>

#include "OSAL/Fault.h"

void* ORXMemory::Set(void* block, int value, size_t size) { return memset(block, value, size); }

int ORXMemory::Compare(const void* a, const void* b, size_t size) { return memcmp(a, b, size); }

void* ORXMemory::Copy(void* to, const void* from, size_t size) { return memcpy(to, from, size); }

void* ORXMemory::Move(void* to, const void* from, size_t size) { return memmove(to, from, size); }

void* ORXMemory::Malloc(size_t size) {
  return size == 0 ? nullptr : orx::Counted(malloc(size), __func__);
}

void ORXMemory::Free(void* block) { free(block); }
