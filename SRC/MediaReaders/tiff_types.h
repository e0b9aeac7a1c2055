// The words of TIFF 6.0 that the walk and the value readers share.
#pragma once

#include "MediaReaders/byte_cursor.h"

namespace orx {

// The type codes whose values are taken.
enum TiffType {
  kTiffByte = 1,
  kTiffAscii = 2,
  kTiffShort = 3,
  kTiffLong = 4,
  kTiffRational = 5,
  kTiffUndefined = 7,
  kTiffSLong = 9,
  kTiffSRational = 10
};

// The byte order that the flag of the fixed functions means.
inline ByteCursor::Order TiffOrder(int bigEndian) {
  return bigEndian == 1 ? ByteCursor::Order::kBig : ByteCursor::Order::kLittle;
}

}  // namespace orx
