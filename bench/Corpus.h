// The files that the measurements scan: what a camera's card holds, made anew the same every time.
//
// Of a hundred files 85 are pictures (EXIF, maker note, thumbnail), 10 films (index in front or at
// the end), 2 films in 3GP, 2 sounds and 1 no medium at all.  They are small, and each stands for
// itself; a few have a large hole in them, as long recordings have.
#pragma once

#include <cstdint>
#include <string>

namespace orx_bench {

struct CorpusFile {
  std::string path;   // below the corpus
  std::string head;   // the bytes in front of the hole
  uint64_t hole = 0;  // bytes
  std::string tail;   // behind the hole
};

struct CorpusShape {
  uint32_t filesPerFolder = 500;
  bool tiny = false;  // pictures of less than a page, for very many files
};

// File `index`.  Another `version` has the same path and another size.
CorpusFile MakeCorpusFile(uint32_t index, uint32_t version, const CorpusShape& shape);

// The same by kind, for measurements of one reader.  `seed` varies sizes and values.
std::string Picture(uint32_t seed, bool tiny = false);
std::string Film(uint32_t seed, bool indexInFront);
std::string Sound(uint32_t seed);

}  // namespace orx_bench
