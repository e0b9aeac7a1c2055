// The directories (IFDs) of a TIFF block, entry by entry.
//
// Offsets count from the start of the block.  An entry counts as present only when something of the
// block follows it: one that ends exactly at the block's end is not handled.
#pragma once

#include <cstdint>
#include <functional>

#include "MediaReaders/byte_cursor.h"

namespace orx {

struct IfdEntry {
  uint16_t tag;
  uint16_t type;
  uint32_t count;
  uint32_t value;  // the value field as a number in the block's byte order
};

using IfdHandler = std::function<void(const IfdEntry&)>;

constexpr uint64_t kIfdEntrySize = 12;

// Handles the entry at `offset` when its twelve bytes lie in the block.
void HandleIfdEntry(const ByteCursor& tiff, uint64_t offset, const IfdHandler& handle);

// Handles the entries of the directory at `offset` in order.
void WalkIfd(const ByteCursor& tiff, uint64_t offset, const IfdHandler& handle);

// Handles the directory at `first` and those that its links lead to.  The first link counts from
// the start of the block, every further one from the start of the directory that holds it.  No
// directory is walked twice.
void WalkIfdChain(const ByteCursor& tiff, uint64_t first, const IfdHandler& handle);

}  // namespace orx
