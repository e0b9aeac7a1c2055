#include "OSAL/LocalTimeScope.h"

#include <ctime>

namespace orx {
namespace {

thread_local int depth = 0;

}  // namespace

LocalTimeScope::LocalTimeScope() {
  if (depth++ == 0) tzset();
}

LocalTimeScope::~LocalTimeScope() { --depth; }

}  // namespace orx
