// Pictures: the way to the EXIF block, the TIFF walk, dates, thumbnails and the frame header.
#include <cstdlib>

#include "MediaReaders/exif_reader.h"
#include "OSAL/ORXMemory.h"
#include "fuzz/support/Mutators.h"
#include "support/MemoryFile.h"

namespace {

void ReadBlock(const uint8_t* data, size_t size) {
  for (int bigEndian = 0; bigEndian < 2; ++bigEndian) {
    ExifData read = {};
    exif_ifd_pointers_t pointers = {};
    const auto length = static_cast<unsigned>(size);
    do_tiff_section(data, length, length / 2, bigEndian, &read, &pointers);
    do_exif_section(data, length, pointers.Exif, bigEndian, &read, &pointers);
    do_gps_section(data, length, pointers.Gps, bigEndian, &read, &pointers);
    do_interop_section(data, length, pointers.Interop, bigEndian, &read, &pointers);
    exif_free_metadata(&read);
    ORXMemory::Free(read.UserComment);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const orx_test::MemoryFile file;
  file.Set(std::string(reinterpret_cast<const char*>(data), size));
  long long bytes = 0;
  int number[7] = {};
  long time = 0;
  char *date = nullptr, *description = nullptr;
  exif_get_metadata(file.path(), &bytes, &number[0], &number[1], &number[2], &number[3], &number[4],
                    &number[5], &number[6], &date, &time, &description);
  ORXMemory::Free(date);
  ORXMemory::Free(description);
  ReadBlock(data, size);
  return 0;
}

#ifdef ORXSCAN_FUZZ
extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t room, unsigned seed) {
  return orx_test::MutateTiff(data, size, room, seed);
}
#endif
