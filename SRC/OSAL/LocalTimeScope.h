// The time zone of one operation.
#pragma once

namespace orx {

// Every operation that turns moments into local dates has one of these.  The outermost of a thread
// takes over the zone that the host has set by now; for the many files of a scan that happens once.
class LocalTimeScope {
 public:
  LocalTimeScope();
  ~LocalTimeScope();
  LocalTimeScope(const LocalTimeScope&) = delete;
  LocalTimeScope& operator=(const LocalTimeScope&) = delete;
};

}  // namespace orx
