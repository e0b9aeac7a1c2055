#include "MediaReaders/tiff_walk.h"

#include <algorithm>
#include <vector>

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

void WalkIfdChain(const ByteCursor& tiff, uint64_t offset, const IfdHandler& handle) {
  std::vector<bool> walked(tiff.size());
  // Directories made to overlap could show each entry thousands of times.  A budget of an entry a
  // byte is far more than fits into the block side by side.
  size_t budget = tiff.size();
  uint64_t linkBase = 0;
  while (HoldsIfd(tiff, offset) && !walked[offset]) {
    walked[offset] = true;
    const size_t count = tiff.At(offset).U16();
    const uint64_t entries = offset + kCountSize;
    const size_t handled = HandleEntries(tiff, entries, std::min(count, budget), handle);
    budget -= handled;
    ByteCursor behind = tiff.At(entries + kIfdEntrySize * count);
    const uint64_t link = behind.U32();
    if (budget == 0 || !behind.ok() || link == 0 || !HoldsIfd(tiff, link)) return;
    const uint64_t next = linkBase + link;
    linkBase = next;
    offset = next;
  }
}

}  // namespace orx
