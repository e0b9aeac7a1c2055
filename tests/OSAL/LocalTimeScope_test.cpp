#include "OSAL/LocalTimeScope.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

#include "support/TimeZone.h"

namespace {

int HourOfNoon() {
  const time_t noon = 43200;
  struct tm local = {};
  localtime_r(&noon, &local);
  return local.tm_hour;
}

TEST(LocalTimeScope, TakesOverTheZoneThatTheHostSet) {
  const orx_test::TimeZone before("UTC0");
  EXPECT_EQ(HourOfNoon(), 12);
  setenv("TZ", "KST-9", 1);
  const orx::LocalTimeScope operation;
  EXPECT_EQ(HourOfNoon(), 21);
}

TEST(LocalTimeScope, KeepsOneZoneToTheEndOfTheOutermost) {
  const orx_test::TimeZone before("UTC0");
  {
    const orx::LocalTimeScope scan;
    setenv("TZ", "KST-9", 1);
    { const orx::LocalTimeScope file; }
    const orx::LocalTimeScope next;
    EXPECT_EQ(HourOfNoon(), 12);
  }
  const orx::LocalTimeScope scan;
  EXPECT_EQ(HourOfNoon(), 21);
}

}  // namespace
