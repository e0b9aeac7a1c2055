// The Range header: which bytes of a resource are asked for.
#pragma once

#include <cstdint>
#include <string_view>

namespace orxserve {

struct ByteRange {
  enum class Kind { kWhole, kPart, kUnsatisfiable };
  Kind kind = Kind::kWhole;
  uint64_t first = 0;
  uint64_t length = 0;
};

// A header that is malformed, names another unit or several ranges is passed over: the whole is
// sent then.  `size` is that of the resource.
ByteRange ParseRange(std::string_view header, uint64_t size);

}  // namespace orxserve
