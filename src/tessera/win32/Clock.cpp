#include <tessera/win32/Clock.h>

#include <cerrno>
#include <time.h>

namespace Win32 {

namespace {

constexpr std::uint64_t ticksPerSecond = 10000000;
constexpr std::uint64_t ticksPerMillisecond = 10000;
constexpr std::uint64_t secondsPerDay = 86400;
// 1601-01-01 to 1970-01-01.
constexpr std::uint64_t epochDifferenceSeconds = 11644473600u;
// Days from 0000-03-01 of the proleptic calendar to 1601-01-01: the origin of the
// era arithmetic below, which counts years from March so that February comes last.
constexpr std::uint32_t daysFromMarchZeroTo1601 = 584694;
constexpr std::int64_t gmtime64Max = 32535215999;  // 3000-12-31 23:59:59

constexpr std::uint64_t Join(const FILETIME& time) {
  return (static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
}

void Split(std::uint64_t ticks, FILETIME& time) {
  time.dwLowDateTime = static_cast<DWORD>(ticks);
  time.dwHighDateTime = static_cast<DWORD>(ticks >> 32);
}

bool IsLeap(unsigned year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

unsigned DaysInMonth(unsigned year, unsigned month) {
  static constexpr unsigned char lengths[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && IsLeap(year) ? 29 : lengths[month - 1];
}

// Days since 1601-01-01 of a valid date (year at least 1601). Years run from March in
// this arithmetic, so that the leap day comes last (Neri and Schneider's form).
std::uint32_t DaysFromCivil(unsigned year, unsigned month, unsigned day) {
  const unsigned early = month <= 2 ? 1 : 0;
  const std::uint32_t y = year - early;
  const std::uint32_t m = early != 0 ? month + 12 : month;
  const std::uint32_t century = y / 100;
  const std::uint32_t yearDays = 1461 * y / 4 - century + century / 4;
  const std::uint32_t monthDays = (979 * m - 2919) / 32;
  return yearDays + monthDays + day - 1 - daysFromMarchZeroTo1601;
}

struct Civil {
  std::uint32_t year;
  unsigned month;
  unsigned day;
};

// Inverse of DaysFromCivil for any day count since 1601-01-01 that a 63-bit tick count
// reaches; 32-bit arithmetic throughout.
Civil CivilFromDays(std::uint32_t days) {
  const std::uint32_t n1 = 4 * (days + daysFromMarchZeroTo1601) + 3;
  const std::uint32_t century = n1 / 146097;
  const std::uint32_t n2 = (n1 % 146097) | 3;
  const std::uint64_t p2 = std::uint64_t{2939745} * n2;
  const std::uint32_t yearOfCentury = static_cast<std::uint32_t>(p2 >> 32);
  const std::uint32_t dayOfYear = static_cast<std::uint32_t>(p2) / 2939745 / 4;
  const std::uint32_t n3 = 2141 * dayOfYear + 197913;
  const unsigned late = dayOfYear >= 306 ? 1 : 0;  // January or February of the next year
  Civil civil;
  civil.year = 100 * century + yearOfCentury + late;
  civil.month = (n3 >> 16) - (late != 0 ? 12 : 0);
  civil.day = (n3 & 0xFFFF) / 2141 + 1;
  return civil;
}

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
      (static_cast<std::uint64_t>(now.tv_sec) + epochDifferenceSeconds) * ticksPerSecond +
      static_cast<std::uint64_t>(now.tv_nsec) / 100;
  Split(ticks, *systemTimeAsFileTime);
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
  const SYSTEMTIME& s = *systemTime;
  if (s.wYear < 1601 || s.wYear > 30827 || s.wMonth < 1 || s.wMonth > 12 || s.wDay < 1 ||
      s.wDay > DaysInMonth(s.wYear, s.wMonth) || s.wHour > 23 || s.wMinute > 59 ||
      s.wSecond > 59 || s.wMilliseconds > 999) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  const std::uint64_t seconds = std::uint64_t{DaysFromCivil(s.wYear, s.wMonth, s.wDay)} * secondsPerDay +
                                s.wHour * 3600u + s.wMinute * 60u + s.wSecond;
  Split(seconds * ticksPerSecond + s.wMilliseconds * ticksPerMillisecond, *fileTime);
  return 1;
}

BOOL FileTimeToSystemTime(const FILETIME* fileTime, SYSTEMTIME* systemTime) {
  const std::uint64_t ticks = Join(*fileTime);
  if (ticks >> 63 != 0) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  const std::uint64_t seconds = ticks / ticksPerSecond;
  const unsigned subSecond = static_cast<unsigned>(ticks - seconds * ticksPerSecond);
  const std::uint32_t days = static_cast<std::uint32_t>(seconds / secondsPerDay);
  const unsigned secondOfDay = static_cast<unsigned>(seconds - days * secondsPerDay);
  const Civil civil = CivilFromDays(days);
  SYSTEMTIME& s = *systemTime;
  s.wYear = static_cast<WORD>(civil.year);
  s.wMonth = static_cast<WORD>(civil.month);
  s.wDayOfWeek = static_cast<WORD>((days + 1) % 7);  // 1601-01-01 was a Monday
  s.wDay = static_cast<WORD>(civil.day);
  s.wHour = static_cast<WORD>(secondOfDay / 3600);
  s.wMinute = static_cast<WORD>(secondOfDay / 60 % 60);
  s.wSecond = static_cast<WORD>(secondOfDay % 60);
  s.wMilliseconds = static_cast<WORD>(subSecond / ticksPerMillisecond);
  return 1;
}

BOOL LocalFileTimeToFileTime(const FILETIME* localFileTime, FILETIME* fileTime) {
  const std::uint64_t offset = static_cast<std::uint64_t>(CurrentZoneOffsetTicks());
  Split(Join(*localFileTime) - offset, *fileTime);
  return 1;
}

BOOL FileTimeToLocalFileTime(const FILETIME* fileTime, FILETIME* localFileTime) {
  const std::uint64_t offset = static_cast<std::uint64_t>(CurrentZoneOffsetTicks());
  Split(Join(*fileTime) + offset, *localFileTime);
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
  const std::uint64_t seconds = static_cast<std::uint64_t>(*time) + epochDifferenceSeconds;
  const std::uint32_t days = static_cast<std::uint32_t>(seconds / secondsPerDay);
  const unsigned secondOfDay = static_cast<unsigned>(seconds - days * secondsPerDay);
  const Civil civil = CivilFromDays(days);
  result->tm_sec = static_cast<int>(secondOfDay % 60);
  result->tm_min = static_cast<int>(secondOfDay / 60 % 60);
  result->tm_hour = static_cast<int>(secondOfDay / 3600);
  result->tm_mday = static_cast<int>(civil.day);
  result->tm_mon = static_cast<int>(civil.month) - 1;
  result->tm_year = static_cast<int>(civil.year) - 1900;
  result->tm_wday = static_cast<int>((days + 1) % 7);
  result->tm_yday = static_cast<int>(days - DaysFromCivil(civil.year, 1, 1));
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
