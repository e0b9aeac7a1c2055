// The one way in which the media readers take numbers out of a block.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace orx {

// ByteCursor reads numbers, front to back, out of a block it does not own, and looks nowhere else.
//
// A read that does not fit returns 0, moves nothing and fails the cursor; later reads fail too.
// So read a whole header in one straight run and ask ok() once before using the values; in a loop,
// ask every time round.  Copies are cheap and independent.  The block outlives them all.
class ByteCursor {
 public:
  enum class Order { kBig, kLittle };

  ByteCursor() = default;  // an empty block
  ByteCursor(const void* data, size_t size, Order order = Order::kBig)
      : data_(static_cast<const uint8_t*>(data)), size_(size), order_(order) {}

  bool ok() const { return ok_; }
  size_t size() const { return size_; }     // of the whole block, in bytes
  size_t position() const { return pos_; }  // bytes read or passed over so far
  size_t remaining() const { return ok_ ? size_ - pos_ : 0; }
  Order order() const { return order_; }

  uint8_t U8() { return static_cast<uint8_t>(Number(1)); }
  uint16_t U16() { return static_cast<uint16_t>(Number(2)); }
  uint32_t U32() { return static_cast<uint32_t>(Number(4)); }
  uint64_t U64() { return Number(8); }
  void Skip(uint64_t count) { Take(count); }

  // The next `count` bytes as they stand; empty when they do not fit.
  std::string_view Text(uint64_t count) {
    const ByteCursor piece = Take(count);
    return {reinterpret_cast<const char*>(piece.data_), piece.size_};
  }

  // The next `count` bytes as a block of their own; this cursor moves past them.
  ByteCursor Take(uint64_t count) {
    if (!Fits(count)) return Failed();
    const ByteCursor piece(At(pos_).data_, static_cast<size_t>(count), order_);
    pos_ += static_cast<size_t>(count);
    return piece;
  }

  // A block from `offset`, counted from the start of this one, to the end of this one.
  ByteCursor At(uint64_t offset) const {
    if (!ok_ || offset > size_) return Failed();
    const size_t skipped = static_cast<size_t>(offset);
    return {data_ + skipped, size_ - skipped, order_};
  }

 private:
  ByteCursor Failed() const {
    ByteCursor failed(nullptr, 0, order_);
    failed.ok_ = false;
    return failed;
  }

  bool Fits(uint64_t count) {  // subtracts what is known to be in range: an addition could wrap
    ok_ = ok_ && count <= size_ - pos_;
    return ok_;
  }

  uint64_t Number(unsigned bytes) {
    if (!Fits(bytes)) return 0;
    uint64_t number = 0;
    for (unsigned i = 0; i < bytes; ++i) {
      const unsigned place = order_ == Order::kBig ? bytes - 1 - i : i;
      number |= uint64_t{data_[pos_ + i]} << (8 * place);
    }
    pos_ += bytes;
    return number;
  }

  const uint8_t* data_ = nullptr;
  size_t size_ = 0, pos_ = 0;  // pos_ <= size_, always
  Order order_ = Order::kBig;
  bool ok_ = true;
};

}  // namespace orx
