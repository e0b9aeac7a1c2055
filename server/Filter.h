// Which optional properties a client wants told: the Filter argument of Browse and Search.
#pragma once

#include <cstdint>
#include <string_view>

namespace orxserve {

class Filter {
 public:
  enum Field : uint32_t {
    kRes = 1 << 0,
    kSize = 1 << 1,
    kDuration = 1 << 2,
    kBitRate = 1 << 3,
    kResolution = 1 << 4,
    kFrequency = 1 << 5,
    kChannels = 1 << 6,
    kDate = 1 << 7,
    kCreator = 1 << 8,
    kDescription = 1 << 9,
    kArtist = 1 << 10,
    kAlbum = 1 << 11,
    kArt = 1 << 12,
    kCaptions = 1 << 13,
    kChildCount = 1 << 14,
    kSearchable = 1 << 15,
    kRefId = 1 << 16,
    kAll = (1 << 17) - 1,
  };

  // "*", or names separated by commas; unknown ones are passed over.
  explicit Filter(std::string_view list);
  bool Wants(Field field) const { return (fields_ & field) != 0; }

 private:
  uint32_t fields_ = 0;
};

}  // namespace orxserve
