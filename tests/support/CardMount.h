// A memory card of the test program's own at "/mnt/mmc", in a mount namespace of its own: nothing
// of it is seen by the rest of the machine, whose own /mnt stays as it is.
#pragma once

#include <string>

namespace orx_test {

class CardMount {
 public:
  // Makes the namespace; once, at the start of the program, while it has a single thread.
  // Temporary directories lie in it from then on, in memory.
  static void Enter();
  // Why there is no card, in one line; empty when there is one.
  static const std::string& Problem();

  // All of these work on the card alone and need it to be there.
  static void Clear();  // leaves an empty "/mnt/mmc/DCIM"
  // `name` counts from "/mnt/mmc/DCIM/"; folders are made as needed.
  static void Write(const std::string& name, const std::string& content);
  static void Remove(const std::string& name);  // a file, or a folder with all that is in it
};

}  // namespace orx_test
