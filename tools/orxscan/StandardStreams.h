// Standard input, output and error, which whoever starts the command may have closed.
#pragma once

namespace orxscan {

// Sees to it that the descriptors 0, 1 and 2 are taken, so that no database and no medium gets one
// of them and is written to as if it were the terminal.  What was closed stays of no use: reading
// it and writing to it fails.  False when that cannot be.
bool FillStandardStreams();

}  // namespace orxscan
