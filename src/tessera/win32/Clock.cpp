#include <tessera/win32/Clock.h>

#include "tessera/detail/Calendar.h"

#include <cerrno>
#include <time.h>

namespace Win32 {

namespace {

using detail::DaysFromCivil;
using detail::epochSeconds;
using detail::Join;
using detail::Split;
using detail::ticksPerSecond;

constexpr std::int64_t gmtime64Max = 32535215999;  // 3000-12-31 23:59:59

// Local minus UTC, in ticks, as the zone stands now. tzset makes a changed TZ count.
std::int64_t CurrentZoneOffsetTicks() {
  ::tzset();
  const ::time_t now = ::time(nullptr);
  ::tm local;
  if (::localtime_r(&now, &local) == nullptr) return 0;
  return static_cast<std::int64_t>(local.tm_gmtoff) * static_cast<std::int64_t>(ticksPerSecond);
}

}  // namespace

void GetSystemTimeAsFileTime(FILETIME* systemTimeAsFileTime) {
  ::timespec now;
  ::clock_gettime(CLOCK_REALTIME, &now);
  const std::uint64_t ticks =
      (static_cast<std::uint64_t>(now.tv_sec) + epochSeconds) * ticksPerSecond +
      static_cast<std::uint64_t>(now.tv_nsec) / 100;
  *systemTimeAsFileTime = Split(ticks);
}

void GetLocalTime(SYSTEMTIME* systemTime) {
  ::timespec now;
  ::clock_gettime(CLOCK_REALTIME, &now);
  ::tzset();
  ::tm local;
  ::localtime_r(&now.tv_sec, &local);
  systemTime->wYear = static_cast<WORD>(local.tm_year + 1900);
  systemTime->wMonth = static_cast<WORD>(local.tm_mon + 1);
  systemTime->wDayOfWeek = static_cast<WORD>(local.tm_wday);
  systemTime->wDay = static_cast<WORD>(local.tm_mday);
  systemTime->wHour = static_cast<WORD>(local.tm_hour);
  systemTime->wMinute = static_cast<WORD>(local.tm_min);
  // A leap second as the C library may report it is not a valid field here.
  systemTime->wSecond = static_cast<WORD>(local.tm_sec > 59 ? 59 : local.tm_sec);
  systemTime->wMilliseconds = static_cast<WORD>(now.tv_nsec / 1000000);
}

BOOL SystemTimeToFileTime(const SYSTEMTIME* systemTime, FILETIME* fileTime) {
  std::uint64_t ticks = 0;
  if (!detail::TicksFromFields(systemTime->wYear, systemTime->wMonth, systemTime->wDay, systemTime->wHour,
                               systemTime->wMinute, systemTime->wSecond, systemTime->wMilliseconds, ticks)) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  *fileTime = Split(ticks);
  return 1;
}

BOOL FileTimeToSystemTime(const FILETIME* fileTime, SYSTEMTIME* systemTime) {
  const std::uint64_t ticks = Join(*fileTime);
  if (ticks >> 63 != 0) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  const detail::Fields fields = detail::FieldsFromTicks(ticks);
  SYSTEMTIME& s = *systemTime;
  s.wYear = static_cast<WORD>(fields.year);
  s.wMonth = static_cast<WORD>(fields.month);
  s.wDayOfWeek = static_cast<WORD>(fields.dayOfWeek);
  s.wDay = static_cast<WORD>(fields.day);
  s.wHour = static_cast<WORD>(fields.hour);
  s.wMinute = static_cast<WORD>(fields.minute);
  s.wSecond = static_cast<WORD>(fields.second);
  s.wMilliseconds = static_cast<WORD>(fields.millisecond);
  return 1;
}

BOOL LocalFileTimeToFileTime(const FILETIME* localFileTime, FILETIME* fileTime) {
  const std::uint64_t offset = static_cast<std::uint64_t>(CurrentZoneOffsetTicks());
  *fileTime = Split(Join(*localFileTime) - offset);
  return 1;
}

BOOL FileTimeToLocalFileTime(const FILETIME* fileTime, FILETIME* localFileTime) {
  const std::uint64_t offset = static_cast<std::uint64_t>(CurrentZoneOffsetTicks());
  *localFileTime = Split(Join(*fileTime) + offset);
  return 1;
}

int _gmtime64_s(::tm* result, const std::int64_t* time) {
  if (result == nullptr) return EINVAL;
  if (time == nullptr || *time < 0 || *time > gmtime64Max) {
    result->tm_sec = result->tm_min = result->tm_hour = -1;
    result->tm_mday = result->tm_mon = result->tm_year = -1;
    result->tm_wday = result->tm_yday = result->tm_isdst = -1;
    return EINVAL;
  }
  const detail::Fields fields =
      detail::FieldsFromTicks((static_cast<std::uint64_t>(*time) + epochSeconds) * ticksPerSecond);
  result->tm_sec = static_cast<int>(fields.second);
  result->tm_min = static_cast<int>(fields.minute);
  result->tm_hour = static_cast<int>(fields.hour);
  result->tm_mday = static_cast<int>(fields.day);
  result->tm_mon = static_cast<int>(fields.month) - 1;
  result->tm_year = static_cast<int>(fields.year) - 1900;
  result->tm_wday = static_cast<int>(fields.dayOfWeek);
  result->tm_yday = static_cast<int>(DaysFromCivil(fields.year, fields.month, fields.day) -
                                     DaysFromCivil(fields.year, 1, 1));
  result->tm_isdst = 0;
  result->tm_gmtoff = 0;
  result->tm_zone = "GMT";
  return 0;
}

BOOL QueryPerformanceCounter(LARGE_INTEGER* performanceCount) {
  ::timespec now;
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  performanceCount->QuadPart = static_cast<LONGLONG>(now.tv_sec) * 1000000000 + now.tv_nsec;
  return 1;
}

BOOL QueryPerformanceFrequency(LARGE_INTEGER* frequency) {
  frequency->QuadPart = 1000000000;  // nanoseconds of CLOCK_MONOTONIC
  return 1;
}

}  // namespace Win32
