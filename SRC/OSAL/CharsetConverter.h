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
  bool Convert(const char** in, size_t* inLeft, char** out, size_t* outLeft) {
    return iconv(handle_, const_cast<char**>(in), inLeft, out, outLeft) != static_cast<size_t>(-1);
  }

 private:
  iconv_t handle_;
};

// Whether every byte of the text is plain ASCII, which all the character sets here share.
inline bool IsAscii(const char* text, size_t length) {
  for (size_t i = 0; i < length; ++i)
    if (static_cast<unsigned char>(text[i]) >= 0x80) return false;
  return true;
}

}  // namespace orx
