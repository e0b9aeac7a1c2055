// What the log says of a statement that failed.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "support/FakePlatform.h"

namespace orx_test {

// Whether the first error line is that of a failing statement whose text begins like `sql`, as far
// as a line of the log goes.
inline testing::AssertionResult LoggedFailureOf(const std::string& sql) {
  const std::string start =
      ("[DataBaseMgr::ExecSqlStatmentNoValueReturn]\n\tquery : " + sql).substr(0, 245);
  for (const LogLine& line : FakePlatform::Get().log)
    if (line.priority == 6) {
      if (line.message.compare(0, start.size(), start) == 0) return testing::AssertionSuccess();
      return testing::AssertionFailure() << line.message << "\n begins not with\n" << start;
    }
  return testing::AssertionFailure() << "no failing statement was logged";
}

}  // namespace orx_test
