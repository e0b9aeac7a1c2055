// Texts of exact size on the heap, so that the sanitizer sees one byte too far.
#pragma once

#include <cstdlib>
#include <memory>
#include <string>

namespace orx_test {

// A terminated copy of `text` without a byte to spare.
inline std::unique_ptr<char[]> Exact(const std::string& text) {
  auto copy = std::make_unique<char[]>(text.size() + 1);
  text.copy(copy.get(), text.size());
  return copy;
}

// A copy of the bytes alone, without a terminator.
inline std::unique_ptr<char[]> ExactBytes(const std::string& bytes) {
  auto copy = std::make_unique<char[]>(bytes.size());
  bytes.copy(copy.get(), bytes.size());
  return copy;
}

// What a function gave to its caller, who releases it with free; "(null)" for null.
inline std::string Taken(char* owned) {
  const std::unique_ptr<char, void (*)(void*)> text(owned, free);
  return text != nullptr ? text.get() : "(null)";
}

}  // namespace orx_test
