#include "fuzz/support/Mutators.h"

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace orx_test {
namespace {

using Random = std::minstd_rand;

size_t Below(Random* random, size_t limit) { return limit == 0 ? 0 : (*random)() % limit; }

uint32_t InterestingNumber(Random* random, size_t size) {
  const uint32_t numbers[] = {0,
                              1,
                              8,
                              0x7FFFFFFF,
                              0x80000000,
                              0xFFFFFFFF,
                              0xFFFFFFF0,
                              0x40000000,
                              static_cast<uint32_t>(size),
                              static_cast<uint32_t>(Below(random, size + 1)),
                              static_cast<uint32_t>((*random)())};
  return numbers[Below(random, sizeof numbers / sizeof *numbers)];
}

void Put(uint8_t* at, uint32_t value, size_t bytes, bool bigEndian) {
  for (size_t i = 0; i < bytes; ++i)
    at[i] = static_cast<uint8_t>(value >> 8 * (bigEndian ? bytes - 1 - i : i));
}

uint32_t Get(const uint8_t* at, size_t bytes, bool bigEndian) {
  uint32_t value = 0;
  for (size_t i = 0; i < bytes; ++i)
    value |= static_cast<uint32_t>(at[i]) << 8 * (bigEndian ? bytes - 1 - i : i);
  return value;
}

// ---- TIFF ----

constexpr uint16_t kTags[] = {270, 274, 282,   283,   305,   306,   513,   514,
                              271, 272, 34665, 34853, 36867, 37510, 40962, 40963};

// ---- boxes ----

struct BoxPlace {
  size_t start;
  size_t size;
  std::vector<size_t> around;  // where the boxes around it start
};

constexpr const char* kContainers[] = {"moov", "trak", "mdia", "minf", "stbl", "udta", "ilst"};
constexpr const char* kTypes[] = {"moov", "trak", "mdia",    "minf",    "stbl",    "udta", "ilst",
                                  "meta", "ftyp", "mvhd",    "tkhd",    "mdhd",    "hdlr", "stsd",
                                  "stsz", "data", "\251nam", "\251ART", "\251alb", "gnre", "covr",
                                  "trkn", "mdat", "avc1",    "mp4a",    "esds",    "uuid", "free"};

bool IsContainer(const std::string& bytes, size_t start) {
  const std::string type = bytes.substr(start + 4, 4);
  return std::find(std::begin(kContainers), std::end(kContainers), type) != std::end(kContainers);
}

uint32_t SizeAt(const std::string& bytes, size_t start) {
  return Get(reinterpret_cast<const uint8_t*>(bytes.data()) + start, 4, true);
}

void FindBoxes(const std::string& bytes, size_t from, size_t to, std::vector<size_t> around,
               std::vector<BoxPlace>* found) {
  while (from + 8 <= to && found->size() < 200) {
    const size_t size = SizeAt(bytes, from);
    if (size < 8 || size > to - from) return;
    found->push_back({from, size, around});
    const bool isMeta = bytes.compare(from + 4, 4, "meta") == 0;
    if (IsContainer(bytes, from) || isMeta) {
      std::vector<size_t> inner = around;
      inner.push_back(from);
      FindBoxes(bytes, from + (isMeta ? 12 : 8), from + size, inner, found);
    }
    from += size;
  }
}

void Grow(std::string* bytes, const std::vector<size_t>& boxes, long long by) {
  for (const size_t start : boxes)
    Put(reinterpret_cast<uint8_t*>(bytes->data()) + start,
        static_cast<uint32_t>(SizeAt(*bytes, start) + by), 4, true);
}

}  // namespace

size_t MutateTiff(uint8_t* data, size_t size, size_t room, unsigned seed) {
  Random random(seed);
  if (Below(&random, 3) == 0) return LLVMFuzzerMutate(data, size, room);
  static const std::string kHeaders[] = {std::string("II*\0", 4), std::string("MM\0*", 4)};
  for (const std::string& header : kHeaders) {
    const uint8_t* found = std::search(data, data + size, header.begin(), header.end());
    if (found == data + size) continue;
    const bool bigEndian = *found == 'M';
    const auto tiff = static_cast<size_t>(found - data);
    const size_t length = size - tiff;
    if (length < 10) continue;
    // An IFD: the first one, or whatever stands at a place that some number points to.
    size_t ifd = Get(found + 4, 4, bigEndian);
    if (Below(&random, 2) == 0) ifd = Get(found + Below(&random, length - 4), 4, bigEndian);
    if (ifd >= length || length - ifd < 14) continue;
    const size_t count = std::max<size_t>(1, Get(found + ifd, 2, bigEndian));
    const size_t entry =
        ifd + 2 + 12 * Below(&random, std::min<size_t>(count, (length - ifd) / 12));
    if (entry + 16 > length) continue;
    uint8_t* at = data + tiff + entry;
    switch (Below(&random, 5)) {
      case 0:
        Put(at, kTags[Below(&random, sizeof kTags / sizeof *kTags)], 2, bigEndian);
        break;
      case 1:
        Put(at + 2, static_cast<uint32_t>(Below(&random, 14)), 2, bigEndian);
        break;
      case 2:
        Put(at + 4, InterestingNumber(&random, length), 4, bigEndian);
        break;
      case 3:
        Put(at + 8, InterestingNumber(&random, length), 4, bigEndian);
        break;
      default:  // the link behind the entries
        if (ifd + 2 + 12 * count + 4 <= length)
          Put(data + tiff + ifd + 2 + 12 * count, InterestingNumber(&random, length), 4, bigEndian);
    }
    return size;
  }
  return LLVMFuzzerMutate(data, size, room);
}

size_t MutateBoxes(uint8_t* data, size_t size, size_t room, unsigned seed) {
  Random random(seed);
  std::string bytes(reinterpret_cast<const char*>(data), size);
  std::vector<BoxPlace> boxes;
  FindBoxes(bytes, 0, size, {}, &boxes);
  if (boxes.empty() || Below(&random, 3) == 0) return LLVMFuzzerMutate(data, size, room);

  const BoxPlace& box = boxes[Below(&random, boxes.size())];
  const BoxPlace& other = boxes[Below(&random, boxes.size())];
  switch (Below(&random, 5)) {
    case 0: {  // a copy of the other one in front of this one
      const std::string copy = bytes.substr(other.start, other.size);
      Grow(&bytes, box.around, static_cast<long long>(copy.size()));
      bytes.insert(box.start, copy);
      break;
    }
    case 1:
      Grow(&bytes, box.around, -static_cast<long long>(box.size));
      bytes.erase(box.start, box.size);
      break;
    case 2:
      bytes.replace(box.start + 4, 4, kTypes[Below(&random, sizeof kTypes / sizeof *kTypes)]);
      break;
    case 3:
      Put(reinterpret_cast<uint8_t*>(bytes.data()) + box.start, InterestingNumber(&random, size), 4,
          true);
      break;
    default:  // a number in the box's head
      if (box.size >= 16)
        Put(reinterpret_cast<uint8_t*>(bytes.data()) + box.start + 8 +
                Below(&random, std::min<size_t>(box.size, 120) - 12 + 1),
            InterestingNumber(&random, size), 4, true);
  }
  if (bytes.empty() || bytes.size() > room) return LLVMFuzzerMutate(data, size, room);
  memcpy(data, bytes.data(), bytes.size());
  return bytes.size();
}

}  // namespace orx_test
