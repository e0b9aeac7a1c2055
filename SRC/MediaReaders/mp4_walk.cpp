#include "MediaReaders/mp4_walk.h"

#include <algorithm>
#include <cstdio>
#include <limits>

#include "MediaReaders/parse_limits.h"

namespace {

constexpr long long kHeaderSize = 8;
constexpr long long kLargeHeaderSize = 16;

// The numbers come from the file, so the sum stops at the ends of the counter.
void Count(long long bytes, mp4_metadata_t* meta) {
  if (__builtin_add_overflow(meta->BytesRead, bytes, &meta->BytesRead))
    meta->BytesRead =
        bytes < 0 ? std::numeric_limits<long long>::min() : std::numeric_limits<long long>::max();
}

// Reads a size of 64 bits.  The bytes of its box behind it; -1 when no box has that size.
long long ReadLargeSize(st_UPNP_FILE* file) {
  uint8_t number[8];
  if (upnp_file_read(file, number, sizeof number) != static_cast<int>(sizeof number)) return -1;
  const uint64_t size = orx::ByteCursor(number, sizeof number).U64();
  if (size < kLargeHeaderSize) return -1;
  if (size > static_cast<uint64_t>(std::numeric_limits<long long>::max())) return -1;
  return static_cast<long long>(size) - kLargeHeaderSize;
}

void Skip(long long bytes, st_UPNP_FILE* file, mp4_metadata_t* meta) {
  if (upnp_file_seek(file, bytes, SEEK_CUR) >= 0) Count(bytes, meta);
}

void GoToEndOfFile(st_UPNP_FILE* file, mp4_metadata_t* meta) {
  meta->BytesRead = file->size;
  upnp_file_seek(file, 0, SEEK_END);
}

}  // namespace

int isBoxToLarge(st_UPNP_FILE* file, mp4_box_t* box, mp4_metadata_t* meta) {
  if (file == nullptr || box == nullptr || meta == nullptr) return 3;
  if (box->Size > 1) return 0;
  if (box->Size == 0)
    GoToEndOfFile(file, meta);
  else if (const long long rest = ReadLargeSize(file); rest > 0)
    Skip(rest, file, meta);
  return 1;
}

namespace orx {

Mp4Walk::Mp4Walk(st_UPNP_FILE* file, mp4_metadata_t* meta, Mp4ReaderLookup lookup)
    : file_(file), meta_(meta), lookup_(lookup) {}

void Mp4Walk::Run(long long limit) {
  limit = std::max(limit, 0LL);
  fileEnd_ = file_->size < 0 ? limit : file_->size;
  WalkLevel(std::min(limit, fileEnd_), 0);
}

void Mp4Walk::WalkLevel(long long end, uint32_t parent) {
  Mp4Box box;
  while (NextBox(end, &box)) {
    if (const Mp4BoxReader read = lookup_(box.type, parent); read != nullptr) read(*this, box);
    if (ended_) return;
    Claim(box);
    SkipTo(behind_);
  }
}

void Mp4Walk::Claim(const Mp4Box& box) { behind_ = std::max(behind_, box.end); }

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
    if (size == 0) {
      GoToEndOfFile(file_, meta_);
      ended_ = true;
      return false;
    }
    if (size == 1) {
      if (!PassOverLargeBox()) return false;
      continue;
    }
    if (size < kHeaderSize || size > fileEnd_ - start) return false;
    box->payload = start + kHeaderSize;
    box->end = start + size;
    return true;
  }
  return false;
}

bool Mp4Walk::PassOverLargeBox() {
  const long long before = file_->position;
  const long long rest = ReadLargeSize(file_);
  Count(file_->position - before, meta_);
  if (rest < 0 || rest > fileEnd_ - file_->position) return false;
  Skip(rest, file_, meta_);
  behind_ = std::max(behind_, file_->position);
  return true;
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
