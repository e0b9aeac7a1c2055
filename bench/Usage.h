// What a stretch of work cost the process.
#pragma once

#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <ctime>

namespace orx_bench {

class Usage {
 public:
  Usage()
      : processor_(Microseconds(CLOCK_PROCESS_CPUTIME_ID)), wall_(Microseconds(CLOCK_MONOTONIC)) {}

  // One line for scripts/bench: processor time of user and kernel, and peak memory of the process.
  void Print() const {
    printf("cpu_us %lld wall_us %lld peak_kb %ld\n",
           Microseconds(CLOCK_PROCESS_CPUTIME_ID) - processor_,
           Microseconds(CLOCK_MONOTONIC) - wall_, PeakKilobytes());
  }

  // getrusage would answer for whoever started this program, too.
  static long PeakKilobytes() {
    FILE* status = fopen("/proc/self/status", "re");
    if (status == nullptr) return 0;
    char line[256];
    long peak = 0;
    while (fgets(line, sizeof line, status) != nullptr)
      if (sscanf(line, "VmHWM: %ld", &peak) == 1) break;
    fclose(status);
    return peak;
  }

 private:
  static long long Microseconds(clockid_t clock) {
    timespec now = {};
    clock_gettime(clock, &now);
    return now.tv_sec * 1000000LL + now.tv_nsec / 1000;
  }

  long long processor_;
  long long wall_;
};

}  // namespace orx_bench
