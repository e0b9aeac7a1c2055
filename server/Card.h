// A camera's card, where the library expects it.
#pragma once

#include "Options.h"

namespace orxserve {

// Shows the folder of the options at the library's place to this process alone, and turns the paths
// of the options into those that hold from now on.  To be called before any thread is started.
// Throws a Failure.
void MountCard(Options* options);

}  // namespace orxserve
