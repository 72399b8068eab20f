// The stand-in's calendar against the C library over the whole tick range: fields of any
// count below 2^63 as gmtime_r gives them (milliseconds from the ticks), the way back to the
// same ticks less what is below a millisecond, and _gmtime64_s where it works (1970 to 3000).
#include <tessera/win32/Clock.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "tessera/detail/Calendar.h"

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

bool Same(const std::tm& a, const std::tm& b) {
  return a.tm_year == b.tm_year && a.tm_mon == b.tm_mon && a.tm_mday == b.tm_mday && a.tm_wday == b.tm_wday &&
         a.tm_hour == b.tm_hour && a.tm_min == b.tm_min && a.tm_sec == b.tm_sec;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 8) return 0;
  std::uint64_t ticks;
  std::memcpy(&ticks, data, sizeof ticks);
  ticks &= 0x7FFFFFFFFFFFFFFFu;
  const std::int64_t unix = static_cast<std::int64_t>(ticks / Win32::detail::ticksPerSecond) -
                            static_cast<std::int64_t>(Win32::detail::epochSeconds);
  const std::time_t t = static_cast<std::time_t>(unix);
  std::tm expected;
  Check(::gmtime_r(&t, &expected) != nullptr);

  const Win32::FILETIME in = Win32::detail::Split(ticks);
  Win32::SYSTEMTIME s;
  Check(Win32::FileTimeToSystemTime(&in, &s) == 1);
  std::tm fields{};
  fields.tm_year = s.wYear - 1900, fields.tm_mon = s.wMonth - 1, fields.tm_mday = s.wDay;
  fields.tm_wday = s.wDayOfWeek, fields.tm_hour = s.wHour, fields.tm_min = s.wMinute, fields.tm_sec = s.wSecond;
  Check(Same(fields, expected));
  Check(s.wMilliseconds == ticks % Win32::detail::ticksPerSecond / Win32::detail::ticksPerMillisecond);

  s.wDayOfWeek = 6;  // not read
  Win32::FILETIME back;
  const bool inRange = s.wYear <= 30827;
  Check(Win32::SystemTimeToFileTime(&s, &back) == (inRange ? 1 : 0));
  if (inRange) Check(Win32::detail::Join(back) == ticks - ticks % Win32::detail::ticksPerMillisecond);

  std::tm actual;
  const bool gmtimeRange = unix >= 0 && unix <= 32535215999;
  Check(Win32::_gmtime64_s(&actual, &unix) == (gmtimeRange ? 0 : EINVAL));
  if (gmtimeRange) Check(Same(actual, expected) && actual.tm_yday == expected.tm_yday && actual.tm_isdst == 0);
  return 0;
}
