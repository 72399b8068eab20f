// The clock and calendar operations of the Win32 stand-in.
#include <tessera/win32/Clock.h>

#include <cerrno>
#include <ctime>
#include <tuple>

#include "TimeTesting.h"

namespace {

using Fields = std::tuple<int, int, int, int, int, int, int, int>;  // y m d wd h min s ms

Fields Of(const Win32::SYSTEMTIME& s) {
  return {s.wYear, s.wMonth, s.wDay, s.wDayOfWeek, s.wHour, s.wMinute, s.wSecond, s.wMilliseconds};
}

Fields Of(const std::tm& t, int ms = 0) {
  return {t.tm_year + 1900, t.tm_mon + 1, t.tm_mday, t.tm_wday, t.tm_hour, t.tm_min, t.tm_sec, ms};
}

Win32::SYSTEMTIME System(int y, int m, int d, int h = 0, int min = 0, int s = 0, int ms = 0) {
  return Win32::SYSTEMTIME{Win32::WORD(y), Win32::WORD(m), 0, Win32::WORD(d),
                           Win32::WORD(h), Win32::WORD(min), Win32::WORD(s), Win32::WORD(ms)};
}

// Any instant of the whole range against the C library, both ways and through _gmtime64_s,
// is the fuzz target's (CalendarFuzz); here the edges it would not hit and what refusals write.
TEST(Win32Clock, GmtimeEdges) {
  const std::pair<std::int64_t, int> cases[] = {{0, 0}, {32535215999, 0}, {-1, EINVAL}, {32535216000, EINVAL}};
  for (const auto& c : cases) {
    std::tm out;
    EXPECT_EQ(Win32::_gmtime64_s(&out, &c.first), c.second) << c.first;
    if (c.second == 0) continue;
    EXPECT_EQ(std::make_tuple(Of(out), out.tm_yday, out.tm_isdst),
              std::make_tuple(Fields(1899, 0, -1, -1, -1, -1, -1, 0), -1, -1));
  }
  std::tm out;
  EXPECT_EQ(Win32::_gmtime64_s(&out, nullptr), EINVAL);
  EXPECT_EQ(Win32::_gmtime64_s(nullptr, nullptr), EINVAL);
}

// Valid fields both ways are the fuzz target's; here what it cannot make: bad fields, ends, a negative count.
TEST(Win32Clock, CalendarLimits) {
  const Win32::SYSTEMTIME bad[] = {
      System(1600, 12, 31, 23, 59, 59, 999), System(30828, 1, 1), System(2008, 0, 1), System(2008, 13, 1),
      System(2008, 1, 0), System(2008, 1, 32), System(1900, 2, 29), System(2008, 4, 31), System(2008, 1, 1, 24),
      System(2008, 1, 1, 0, 60), System(2008, 1, 1, 0, 0, 60), System(2008, 1, 1, 0, 0, 0, 1000)};
  for (const Win32::SYSTEMTIME& fields : bad) {
    Win32::SetLastError(0);
    Win32::FILETIME out = Split(0x9ABCDEF12345678u);
    EXPECT_FALSE(Win32::SystemTimeToFileTime(&fields, &out)) << testing::PrintToString(Of(fields));
    EXPECT_EQ(Win32::GetLastError(), Win32::ERROR_INVALID_PARAMETER);
    EXPECT_EQ(Join(out), 0x9ABCDEF12345678u);
  }
  Win32::FILETIME out;
  const Win32::SYSTEMTIME last = System(30827, 12, 31, 23, 59, 59, 999);
  ASSERT_TRUE(Win32::SystemTimeToFileTime(&last, &out));
  EXPECT_EQ(Join(out), 9223149888000000000u - 10000);
  Win32::SYSTEMTIME fields;
  const Win32::FILETIME largest = Split(0x7FFFFFFFFFFFFFFFu), negative = Split(1ull << 63);
  ASSERT_TRUE(Win32::FileTimeToSystemTime(&largest, &fields));
  EXPECT_EQ(Of(fields), Fields(30828, 9, 14, 4, 2, 48, 5, 477));
  Win32::SetLastError(0);
  EXPECT_FALSE(Win32::FileTimeToSystemTime(&negative, &fields));
  EXPECT_EQ(Win32::GetLastError(), Win32::ERROR_INVALID_PARAMETER);
  EXPECT_EQ(fields.wYear, 30828);  // left as it was
}

TEST(Win32Clock, LocalConversionFollowsTzAsItIsSetNow) {
  const std::uint64_t noon = 150000000000000000u;
  const Win32::FILETIME utc = Split(noon);
  Win32::FILETIME local, back;
  // Both ways under fixed zones show through Time's kinds (TimeTest).
  {
    ZoneGuard zone("UTC0");
    ::setenv("TZ", zoneEast0100, 1);  // changed without tzset: read anew all the same
    ASSERT_TRUE(Win32::LocalFileTimeToFileTime(&utc, &back));
    EXPECT_EQ(Join(back), noon - 36000000000u);
  }
  // The offset in force now applies to any date, so a round trip is exact even across
  // a daylight-saving change.
  ZoneGuard zone("EST5EDT,M3.2.0,M11.1.0");
  const Win32::FILETIME early = Split(5);
  EXPECT_EQ(Win32::FileTimeToLocalFileTime(&early, &local), 1);
  Win32::LocalFileTimeToFileTime(&local, &back);
  EXPECT_EQ(Join(back), 5u);
}

// How fast it advances shows in the stopwatch tests.
TEST(Win32Clock, PerformanceCounterCountsNanoseconds) {
  Win32::LARGE_INTEGER frequency, now;
  EXPECT_EQ(std::make_tuple(Win32::QueryPerformanceFrequency(&frequency), Win32::QueryPerformanceCounter(&now),
                            frequency.QuadPart), std::make_tuple(1, 1, 1000000000));
}

}  // namespace
