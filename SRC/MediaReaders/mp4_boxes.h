// What is taken from each kind of box.
#pragma once

#include "MediaReaders/mp4_walk.h"

namespace orx {

// The reader of boxes of `type` inside a box of type `parent`; null: nothing is taken from them.
Mp4BoxReader FindBoxReader(uint32_t type, uint32_t parent);

}  // namespace orx
