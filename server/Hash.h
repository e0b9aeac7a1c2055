// A running 64-bit hash: to tell whether a catalogue differs, not to withstand an attack.
#pragma once

#include <cstdint>
#include <string_view>

namespace orxserve {

class Hash {
 public:
  explicit Hash(uint64_t seed = 0xCBF29CE484222325) : value_(seed) {}

  Hash& Add(uint64_t number) {
    value_ = (value_ ^ number) * 0x9E3779B97F4A7C15;
    value_ ^= value_ >> 29;
    return *this;
  }
  Hash& Add(std::string_view text) {
    for (const char c : text) value_ = (value_ ^ static_cast<unsigned char>(c)) * 0x100000001B3;
    return Add(text.size());
  }
  uint64_t value() const { return value_; }

 private:
  uint64_t value_;
};

}  // namespace orxserve
