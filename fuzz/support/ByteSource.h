// Takes numbers and texts out of a fuzz input, one after the other; behind its end come zeros and
// empty texts.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>

namespace orx_test {

class ByteSource {
 public:
  ByteSource(const uint8_t* data, size_t size) : data_(data), left_(size) {}

  bool empty() const { return left_ == 0; }
  uint8_t Byte() {
    if (left_ == 0) return 0;
    --left_;
    return *data_++;
  }
  uint64_t Number() {
    uint64_t number = 0;
    for (int i = 0; i < 8; ++i) number = number << 8 | Byte();
    return number;
  }
  std::string Take(size_t length) {
    length = std::min(length, left_);
    const std::string taken(reinterpret_cast<const char*>(data_), length);
    data_ += length;
    left_ -= length;
    return taken;
  }
  std::string Text() { return Take(Byte()); }  // up to 255 bytes; may hold zeros
  std::string Rest() { return Take(left_); }

 private:
  const uint8_t* data_;
  size_t left_;
};

}  // namespace orx_test
