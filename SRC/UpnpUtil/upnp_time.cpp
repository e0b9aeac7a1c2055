// Durations and dates as text, and back.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <initializer_list>
#include <limits>

#include "OSAL/Fault.h"
#include "UpnpUtil/GmtDay.h"
#include "UpnpUtil/GmtNameClock.h"
#include "UpnpUtil/upnp_util.h"

namespace orx {
namespace {

constexpr long long kSecondsPerDay = 86400;
constexpr long long kSecondsPerHour = 3600;

// The calendar year, which for the last dates that `tm` can hold has more than 31 bits.
long long Year(const struct tm& date) { return date.tm_year + 1900LL; }

}  // namespace

void WriteGmtDay(time_t time, char* dst, size_t size) {
  struct tm date = {};
  if (gmtime_r(&time, &date) == nullptr) return;
  snprintf(dst, size, "%04lld-%02d-%02d", Year(date), date.tm_mon + 1, date.tm_mday);
}

bool GmtNameClock::Refresh(time_t now) {
  struct tm date = {};
  if (gmtime_r(&now, &date) == nullptr) return false;
  date_ = date;
  secondsOfDay_ = date.tm_hour * kSecondsPerHour + date.tm_min * 60 + date.tm_sec;
  moment_ = now;
  filled_ = true;
  return true;
}

bool GmtNameClock::Format(const timespec& now, char* dst, size_t size) {
  const long long elapsed = now.tv_sec - moment_ + secondsOfDay_;
  if (!filled_ || elapsed >= kSecondsPerDay) {
    if (!Refresh(now.tv_sec)) return false;
  } else {
    date_.tm_hour = static_cast<int>(elapsed / kSecondsPerHour);
    date_.tm_min = static_cast<int>(elapsed % kSecondsPerHour / 60);
    date_.tm_sec = static_cast<int>(elapsed % 60);
  }
  snprintf(dst, size, "%04lld%02d%02d%02d%02d%02d%03d", Year(date_), date_.tm_mon % 12 + 1,
           date_.tm_mday, date_.tm_hour, date_.tm_min, date_.tm_sec,
           static_cast<int>(now.tv_nsec / 1000000));
  return true;
}

}  // namespace orx

namespace {

constexpr long kMsPerHour = 3600000;
constexpr long kMsPerMinute = 60000;
constexpr long kMsPerSecond = 1000;

struct Duration {
  long hours, minutes, seconds, milliseconds;
};

Duration Split(long ms) {
  return {ms / kMsPerHour, ms % kMsPerHour / kMsPerMinute, ms % kMsPerMinute / kMsPerSecond,
          ms % kMsPerSecond};
}

// A sum that stops at the ends of `long`, which has 32 bits on the camera.
long AddScaled(long sum, long count, long unit) {
  long product = 0, total = 0;
  if (!__builtin_mul_overflow(count, unit, &product) &&
      !__builtin_add_overflow(sum, product, &total))
    return total;
  return count < 0 ? std::numeric_limits<long>::min() : std::numeric_limits<long>::max();
}

}  // namespace

char* upnp_duration_to_string(long ms) {
  const Duration d = Split(ms);
  char text[128];
  if (d.milliseconds != 0)
    snprintf(text, sizeof text, "%ld:%02ld:%02ld.%03ld", d.hours, d.minutes, d.seconds,
             d.milliseconds);
  else
    snprintf(text, sizeof text, "%ld:%02ld:%02ld", d.hours, d.minutes, d.seconds);
  return orx::Counted(strdup(text), __func__);
}

int upnp_format_time(long ms, char* dst) {
  if (dst == nullptr) return 0;
  const Duration d = Split(ms);
  return sprintf(dst, "%02ld:%02ld:%02ld", d.hours, d.minutes, d.seconds);
}

long upnp_convert_time_to_long(const char* text) {
  if (text == nullptr) return 0;
  long sum = 0;
  const char* part = text;
  for (const long unit : {kMsPerHour, kMsPerMinute, kMsPerSecond, 1L}) {
    sum = AddScaled(sum, strtol(part, nullptr, 10), unit);
    part = strchr(part, ':');
    if (part == nullptr) break;
    ++part;
  }
  return sum;
}

void upnp_date_convertToGMT(const long* time, char* dst, int n) {
  if (time == nullptr || dst == nullptr || n <= 0) return;
  orx::WriteGmtDay(*time, dst, static_cast<size_t>(n));
}

void upnp_date_getGMT_forName(char* dst, int n) {
  static orx::GmtNameClock clock;
  if (dst == nullptr || n <= 0) return;
  timespec now = {};
  clock_gettime(CLOCK_REALTIME, &now);
  if (!clock.Format(now, dst, static_cast<size_t>(n)))
    puts("[upnp_date_getGMT_forName] tm is NULL");
}
