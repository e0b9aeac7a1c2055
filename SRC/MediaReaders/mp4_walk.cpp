#include "MediaReaders/mp4_walk.h"

#include <algorithm>
#include <cstdio>
#include <limits>

#include "MediaReaders/parse_limits.h"

namespace {

constexpr long long kHeaderSize = 8;
constexpr long long kLargeHeaderSize = 16;

enum class SpecialSize { kNone, kPassedOver, kToEndOfFile, kImpossible };

// The numbers come from the file, so the sum stops at the ends of the counter.
void Count(long long bytes, mp4_metadata_t* meta) {
  if (__builtin_add_overflow(meta->BytesRead, bytes, &meta->BytesRead))
    meta->BytesRead =
        bytes < 0 ? std::numeric_limits<long long>::min() : std::numeric_limits<long long>::max();
}

// A 64-bit size stands at the position: passes over the box that has it.
SpecialSize PassOverLargeBox(st_UPNP_FILE* file, mp4_metadata_t* meta) {
  uint8_t number[8];
  if (upnp_file_read(file, number, sizeof number) != static_cast<int>(sizeof number))
    return SpecialSize::kImpossible;
  const uint64_t size = orx::ByteCursor(number, sizeof number).U64();
  if (size < kLargeHeaderSize) return SpecialSize::kImpossible;
  if (size > static_cast<uint64_t>(std::numeric_limits<long long>::max()))
    return SpecialSize::kImpossible;
  const long long skip = static_cast<long long>(size) - kLargeHeaderSize;
  if (upnp_file_seek(file, skip, SEEK_CUR) < 0) return SpecialSize::kImpossible;
  Count(skip, meta);
  return SpecialSize::kPassedOver;
}

SpecialSize HandleSpecialSize(st_UPNP_FILE* file, unsigned size, mp4_metadata_t* meta) {
  if (size > 1) return SpecialSize::kNone;
  if (size == 1) return PassOverLargeBox(file, meta);
  meta->BytesRead = file->size;
  upnp_file_seek(file, 0, SEEK_END);
  return SpecialSize::kToEndOfFile;
}

}  // namespace

int isBoxToLarge(st_UPNP_FILE* file, mp4_box_t* box, mp4_metadata_t* meta) {
  if (file == nullptr || box == nullptr || meta == nullptr) return 3;
  return HandleSpecialSize(file, box->Size, meta) == SpecialSize::kNone ? 0 : 1;
}

namespace orx {

Mp4Walk::Mp4Walk(st_UPNP_FILE* file, mp4_metadata_t* meta, Mp4ReaderLookup lookup)
    : file_(file), meta_(meta), lookup_(lookup) {}

void Mp4Walk::Run(long long limit) {
  WalkLevel(file_->size < 0 ? limit : std::min(limit, file_->size), 0);
}

void Mp4Walk::WalkLevel(long long end, uint32_t parent) {
  Mp4Box box;
  while (NextBox(end, &box)) {
    if (const Mp4BoxReader read = lookup_(box.type, parent); read != nullptr) read(*this, box);
    if (ended_) return;
    SkipTo(box.end);
  }
}

void Mp4Walk::Enter(const Mp4Box& box, long long skip) {
  if (depth_ == kMaxBoxDepth || skip > box.payloadSize()) return;
  SkipTo(box.payload + skip);
  ++depth_;
  WalkLevel(box.end, box.type);
  --depth_;
}

bool Mp4Walk::NextBox(long long end, Mp4Box* box) {
  while (!ended_ && file_->position <= end - kHeaderSize) {
    const long long start = file_->position;
    if (!MayVisitBox(start)) return false;
    uint8_t header[kHeaderSize];
    const int count = upnp_file_read(file_, header, sizeof header);
    if (count > 0) Count(count, meta_);
    if (count != static_cast<int>(sizeof header)) return false;
    ByteCursor cursor(header, sizeof header);
    const uint32_t size = cursor.U32();
    box->type = cursor.U32();
    switch (HandleSpecialSize(file_, size, meta_)) {
      case SpecialSize::kToEndOfFile:
        ended_ = true;
        return false;
      case SpecialSize::kImpossible:
        return false;
      case SpecialSize::kPassedOver:
        Count(kLargeHeaderSize - kHeaderSize, meta_);  // the size itself
        continue;
      case SpecialSize::kNone:
        break;
    }
    if (size < kHeaderSize || size > end - start) return false;
    box->payload = start + kHeaderSize;
    box->end = start + size;
    return true;
  }
  return false;
}

bool Mp4Walk::MayVisitBox(long long header) {
  if (header - lastHeader_ > kDistantBox) --distantBoxesLeft_;
  lastHeader_ = header;
  ended_ = ended_ || --boxesLeft_ < 0 || distantBoxesLeft_ < 0;
  return !ended_;
}

long long Mp4Walk::Spend(long long bytes) {
  const long long granted = std::clamp(bytes, 0LL, bytesLeft_);
  bytesLeft_ -= granted;
  if (granted < bytes) ended_ = true;
  return granted;
}

void Mp4Walk::SkipTo(long long position) {
  const long long before = file_->position;
  if (position == before || upnp_file_seek(file_, position, SEEK_SET) < 0) return;
  Count(position - before, meta_);
}

ByteCursor Mp4Walk::Head(const Mp4Box& box) {
  return {head_.data(), Read(box, head_.data(), head_.size())};
}

size_t Mp4Walk::Read(const Mp4Box& box, void* to, size_t size) {
  const long long left = std::max(box.end - file_->position, 0LL);
  const long long wanted = std::min({left, static_cast<long long>(size),
                                     static_cast<long long>(std::numeric_limits<int>::max())});
  const int count = upnp_file_read(file_, to, static_cast<int>(Spend(wanted)));
  if (count <= 0) return 0;
  Count(count, meta_);
  return static_cast<size_t>(count);
}

std::string Mp4Walk::ReadRest(const Mp4Box& box) {
  const long long size = box.end - file_->position;
  if (size <= 0 || size > kMaxTextSize) return {};
  std::string text(static_cast<size_t>(size), '\0');
  return Read(box, text.data(), text.size()) == text.size() ? text : std::string();
}

}  // namespace orx
