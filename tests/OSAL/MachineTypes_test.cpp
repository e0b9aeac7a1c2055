// What the tests take for granted of the machine that they run on.
#include <gtest/gtest.h>
#include <sys/types.h>

#include <climits>
#include <ctime>

namespace {

TEST(MachineTypes, HaveTimesAndPlacesInFilesOf64Bits) {
  EXPECT_EQ(sizeof(time_t), 8U);
  EXPECT_EQ(sizeof(off64_t), 8U);
}

#ifdef __arm__
TEST(MachineTypes, HaveALongOf32BitsAndACharWithoutSignOnArm) {
  EXPECT_EQ(sizeof(long), 4U);
  EXPECT_EQ(sizeof(void*), 4U);
  EXPECT_EQ(CHAR_MIN, 0);
}
#endif

}  // namespace
