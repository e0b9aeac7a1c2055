// Films and sound: the walk over the boxes, their readers, ADTS headers and the profiles.
#include "MediaReaders/mp4_reader.h"
#include "fuzz/support/Mutators.h"
#include "support/MemoryFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const orx_test::MemoryFile file;
  file.Set(std::string(reinterpret_cast<const char*>(data), size));
  mp4_metadata_t meta = {};
  m4a_get_metadata(file.path(), &meta);
  m4a_free_metadata(&meta);
  return 0;
}

#ifdef ORXSCAN_FUZZ
extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t room, unsigned seed) {
  return orx_test::MutateBoxes(data, size, room, seed);
}
#endif
