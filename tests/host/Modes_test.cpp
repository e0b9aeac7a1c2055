#include <gtest/gtest.h>

#include "Platform/CameraPlatform.h"
#include "host/HostPlatform.h"

namespace {

TEST(HostPlatform, SharesInModeZeroUntilToldOtherwise) {
  EXPECT_EQ(GetTandemixMode(), 0);
  HostPlatform::SetSharingMode(8);
  EXPECT_EQ(GetTandemixMode(), 8);
  HostPlatform::SetSharingMode(0);
}

TEST(HostPlatform, IsNotInCertificationUntilToldSo) {
  EXPECT_EQ(ORXGetDlnaCertificationState(), 0);
  HostPlatform::SetCertificationState(1);
  EXPECT_EQ(ORXGetDlnaCertificationState(), 1);
  HostPlatform::SetCertificationState(0);
}

}  // namespace
