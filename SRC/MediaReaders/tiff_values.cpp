// The values of TIFF entries (TIFF 6.0, section 2).
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "MediaReaders/byte_cursor.h"
#include "MediaReaders/exif_reader.h"
#include "MediaReaders/tiff_types.h"
#include "OSAL/Fault.h"

namespace {

constexpr unsigned kFieldSize = 4;  // of an entry's value field

orx::ByteCursor Number(const unsigned char* bytes, size_t size, int bigEndian) {
  return {bytes, size, orx::TiffOrder(bigEndian)};
}

int ByteValue(unsigned count, unsigned value) {
  return count >= 1 && count <= kFieldSize ? static_cast<int>(value >> (8 * (kFieldSize - count)))
                                           : 0;
}

int ShortValue(unsigned count, unsigned value) {
  if (count == 1) return static_cast<int>(value >> 16);
  return count == 2 ? static_cast<int>(value) : 0;
}

// Numerator and denominator are in Motorola order whatever the order of the block.
int RationalValue(const unsigned char* block, unsigned length, unsigned offset) {
  orx::ByteCursor pair = orx::ByteCursor(block, length).At(offset);
  const int64_t numerator = static_cast<int32_t>(pair.U32());
  const int64_t denominator = static_cast<int32_t>(pair.U32());
  return pair.ok() && denominator != 0 ? static_cast<int>(numerator / denominator) : 0;
}

// The four bytes of a value field as they stand in the file.
void FieldBytes(const unsigned char* block, unsigned length, unsigned value,
                char (&bytes)[kFieldSize]) {
  const bool bigEndian = block != nullptr && length > 0 && block[0] == 'M';
  for (unsigned i = 0; i < kFieldSize; ++i)
    bytes[i] = static_cast<char>(value >> (8 * (bigEndian ? kFieldSize - 1 - i : i)));
}

char* NewText(const void* bytes, size_t count) {
  char* text = static_cast<char*>(orx::Noted(malloc(count + 1), __func__));
  if (text == nullptr) return nullptr;
  memcpy(text, bytes, count);
  text[count] = '\0';
  return text;
}

}  // namespace

unsigned get_int16(const unsigned char* bytes, int bigEndian) {
  return Number(bytes, 2, bigEndian).U16();
}

unsigned get_int32(const unsigned char* bytes, int bigEndian) {
  return Number(bytes, 4, bigEndian).U32();
}

int check_type(const char* /*name*/, unsigned length, unsigned offset, unsigned count,
               unsigned unitSize) {
  const uint64_t size = uint64_t{count} * unitSize;
  if (size <= kFieldSize) return 1;
  // Not `size + offset < length`: the product alone may be near the top of the range.
  return offset < length && size < length - offset ? 1 : 0;
}

int exif_get_int(const unsigned char* block, unsigned length, int type, unsigned count,
                 unsigned value) {
  switch (type) {
    case orx::kTiffByte:
      return check_type("BYTE", length, value, count, 1) ? ByteValue(count, value) : 0;
    case orx::kTiffShort:
      return check_type("SHORT", length, value, count, 2) ? ShortValue(count, value) : 0;
    case orx::kTiffLong:
    case orx::kTiffSLong:
      return check_type("LONG/SLONG", length, value, count, 4) && count == 1
                 ? static_cast<int>(value)
                 : 0;
    case orx::kTiffRational:
    case orx::kTiffSRational:
      return check_type("RATIONAL/SRATIONAL", length, value, count, 4) && count == 1
                 ? RationalValue(block, length, value)
                 : 0;
    default:
      return 0;
  }
}

char* exif_get_string(const unsigned char* block, unsigned length, int type, unsigned count,
                      unsigned value) {
  if (type != orx::kTiffAscii && type != orx::kTiffUndefined) return nullptr;
  if (count == 0 || !check_type("ASCII/UNDEFINED", length, value, count, 1)) return nullptr;
  if (count > kFieldSize) return NewText(block + value, count);
  char field[kFieldSize];
  FieldBytes(block, length, value, field);
  return NewText(field, count);
}
