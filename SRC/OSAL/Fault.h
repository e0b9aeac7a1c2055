// What happens when the machine fails: memory that runs out, reads that break off.
//
// Operations answer their failure value then; nothing is thrown at the host.  Every such failure is
// logged once, where it happens, and counted, so that whoever builds something out of many steps
// can tell at the end whether all of them had what they needed, and a row never holds half of a
// file's metadata.
#pragma once

#include <exception>
#include <new>

namespace orx {

void NoteOutOfMemory(const char* where) noexcept;
// Whether `error`, from errno, says that the machine failed (out of memory or descriptors, a broken
// medium) and nothing about what was asked for.
bool IsMachineFailure(int error) noexcept;
// Notes a call of the system that failed with `error`, unless that is an ordinary answer.
void NoteSystemError(const char* call, const char* path, int error) noexcept;
// Notes that what is at `path` is left to the next scan.
void NoteLeftOut(const char* path, const char* reason) noexcept;
// Of this thread, so far.
struct Faults {
  unsigned all;
  unsigned outOfMemory;  // among them
};
Faults FaultsSoFar() noexcept;

// A block that was asked for: notes it when there is none.
template <typename T>
T* Noted(T* block, const char* where) noexcept {
  if (block == nullptr) NoteOutOfMemory(where);
  return block;
}

// Tells whether anything failed since its making.
class FaultWatch {
 public:
  bool Seen() const noexcept { return FaultsSoFar().all != before_.all; }
  bool OutOfMemory() const noexcept { return FaultsSoFar().outOfMemory != before_.outOfMemory; }

 private:
  Faults before_ = FaultsSoFar();
};

// The singleton behind an instance pointer; inside Guarded, which answers for a missing one.
template <typename T>
T& Existing(T* instance) {
  if (instance == nullptr) throw std::bad_alloc();
  return *instance;
}

// Runs an operation of the library's surface and answers `failure` when memory runs out in it.
template <typename Result, typename Operation>
Result Guarded(const char* where, Result failure, Operation&& operation) noexcept {
  try {
    return operation();
  } catch (const std::exception&) {
    NoteOutOfMemory(where);
    return failure;
  }
}

// The same for an operation without a result.  False when memory ran out.
template <typename Operation>
bool Guarded(const char* where, Operation&& operation) noexcept {
  try {
    operation();
    return true;
  } catch (const std::exception&) {
    NoteOutOfMemory(where);
    return false;
  }
}

}  // namespace orx
