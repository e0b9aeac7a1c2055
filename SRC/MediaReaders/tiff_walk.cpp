#include "MediaReaders/tiff_walk.h"

#include <algorithm>

namespace orx {
namespace {

constexpr uint64_t kCountSize = 2;

bool HoldsIfd(const ByteCursor& tiff, uint64_t offset) { return offset + kCountSize < tiff.size(); }

IfdEntry ReadEntry(ByteCursor row) {
  return {row.U16(), row.U16(), row.U32(), row.U32()};  // braces read left to right
}

// Handles up to `count` entries from `offset` on and returns how many there were.
size_t HandleEntries(const ByteCursor& tiff, uint64_t offset, size_t count,
                     const IfdHandler& handle) {
  for (size_t i = 0; i < count; ++i) {
    const uint64_t entry = offset + kIfdEntrySize * i;
    if (entry + kIfdEntrySize >= tiff.size()) return i;
    handle(ReadEntry(tiff.At(entry)));
  }
  return count;
}

}  // namespace

void HandleIfdEntry(const ByteCursor& tiff, uint64_t offset, const IfdHandler& handle) {
  const ByteCursor row = tiff.At(offset).Take(kIfdEntrySize);
  if (row.ok()) handle(ReadEntry(row));
}

void WalkIfd(const ByteCursor& tiff, uint64_t offset, const IfdHandler& handle) {
  if (!HoldsIfd(tiff, offset)) return;
  HandleEntries(tiff, offset + kCountSize, tiff.At(offset).U16(), handle);
}

void WalkIfdChain(const ByteCursor& tiff, uint64_t first, const IfdHandler& handle) {
  // Directories made to overlap could show each entry thousands of times.  A budget of an entry a
  // byte is far more than fits into the block side by side.
  size_t budget = tiff.size();
  uint64_t offset = first, linkBase = 0;
  do {
    if (!HoldsIfd(tiff, offset)) return;
    const size_t count = tiff.At(offset).U16();
    const uint64_t entries = offset + kCountSize;
    budget -= HandleEntries(tiff, entries, std::min(count, budget), handle);
    const uint64_t link = tiff.At(entries + kIfdEntrySize * count).U32();  // 0 when it is cut off
    if (budget == 0 || link == 0) return;
    offset = linkBase + link;
    linkBase = offset;
  } while (offset != first);  // all further links lead forwards
}

}  // namespace orx
