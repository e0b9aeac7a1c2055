// The system's character-set converter behind a small owner.
#pragma once

#include <iconv.h>

#include <cstddef>

namespace orx {

// One open conversion.  Check ok() before use; the converter is closed with the object.
class CharsetConverter {
 public:
  CharsetConverter(const char* to, const char* from) : handle_(iconv_open(to, from)) {}
  ~CharsetConverter() {
    if (ok()) iconv_close(handle_);
  }
  CharsetConverter(const CharsetConverter&) = delete;
  CharsetConverter& operator=(const CharsetConverter&) = delete;

  bool ok() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

  // Converts up to `*inLeft` bytes, moving all four along.  False when the converter stopped before
  // the end of the input: malformed or incomplete text, or no room.
  bool Convert(const char** in, size_t* inLeft, char** out, size_t* outLeft) const {
    return iconv(handle_, const_cast<char**>(in), inLeft, out, outLeft) != static_cast<size_t>(-1);
  }

 private:
  iconv_t handle_;
};

// Whether every byte of the text is plain ASCII, which all the character sets here share.
bool IsAscii(const char* text, size_t length);

// Converts `length` bytes into a new, terminated text with room for `room` bytes, released with
// free.  Null when there is no such converter, memory runs out or any part cannot be converted.
char* ConvertWhole(const char* to, const char* from, const char* text, size_t length, size_t room);

}  // namespace orx
