// The scans of the shared files read below "/mnt/mmc", so this program mounts a card there, in a
// namespace of its own, before the first test.
#include <gtest/gtest.h>

#include "support/CardMount.h"

int main(int argc, char** argv) {
  orx_test::CardMount::Enter();
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
