// What happens when the machine fails: memory that runs out, reads that break off.
//
// Operations answer their failure value then; nothing is thrown at the host.  Every such failure is
// counted where it happens, so that whoever builds something out of many steps can tell at the end
// whether all of them had what they needed, and a row never holds half of a file's metadata.  Each
// is logged once: by whoever notes it or, as the string and memory layer logs nothing, by the
// operation that gives up because of it.
#pragma once

#include <exception>
#include <new>

namespace orx {

// Counts and logs.  The `path` of a call is what it was about, null when there is none.
void NoteOutOfMemory(const char* where) noexcept;
void NoteSystemError(const char* call, const char* path, int error) noexcept;
// The same for a call on an open file or folder, whose name the system knows.
void NoteDescriptorError(const char* call, int descriptor, int error) noexcept;
// The same for a call that opens `path` or asks for its status, unless the answer is an ordinary
// one.
void NoteOpenError(const char* call, const char* path, int error) noexcept;
// Whether `error`, from errno, is an ordinary answer to opening a file or a folder: it is not
// there, is not of that kind or not permitted.  Any other says that the machine failed (out of
// memory or descriptors, a broken or pulled medium) and nothing about what was asked for.
bool IsOrdinaryOpenAnswer(int error) noexcept;
// Only counts: for the string and memory layer.  `where` is a text that stays.
void CountOutOfMemory(const char* where) noexcept;
// Notes that what is at `path` is left to the next scan.
void NoteLeftOut(const char* path, const char* reason) noexcept;
// Of this thread, so far.
struct Faults {
  unsigned all;
  unsigned outOfMemory;  // among them
  unsigned silent;       // among these: counted, but not logged where they happened
};
Faults FaultsSoFar() noexcept;

// A block that was asked for: notes, or only counts, that there is none.
template <typename T>
T* Noted(T* block, const char* where) noexcept {
  if (block == nullptr) NoteOutOfMemory(where);
  return block;
}
template <typename T>
T* Counted(T* block, const char* where) noexcept {
  if (block == nullptr) CountOutOfMemory(where);
  return block;
}

// Tells whether anything failed since its making, and logs at its end, for the operation that it
// was made in, what was only counted meanwhile.
class FaultWatch {
 public:
  explicit FaultWatch(const char* operation = __builtin_FUNCTION()) noexcept
      : operation_(operation) {}
  ~FaultWatch() { Report(); }
  FaultWatch(const FaultWatch&) = delete;
  FaultWatch& operator=(const FaultWatch&) = delete;

  bool Seen() const noexcept { return FaultsSoFar().all != before_.all; }
  bool OutOfMemory() const noexcept { return FaultsSoFar().outOfMemory != before_.outOfMemory; }
  void Report() const noexcept;  // at once

 private:
  const char* operation_;
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
  const FaultWatch watch(where);
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
  const FaultWatch watch(where);
  try {
    operation();
    return true;
  } catch (const std::exception&) {
    NoteOutOfMemory(where);
    return false;
  }
}

}  // namespace orx
