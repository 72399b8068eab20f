// The clock and calendar operations of the Win32 stand-in.
#include <tessera/win32/Clock.h>

#include <cerrno>
#include <cstdint>
#include <ctime>
#include <random>

#include <gtest/gtest.h>

#include "ZoneGuard.h"

namespace {

constexpr std::int64_t epochSeconds = 11644473600;  // 1601 to 1970
constexpr std::uint64_t ticksPerSecond = 10000000;

std::uint64_t Join(const Win32::FILETIME& value) {
  return (static_cast<std::uint64_t>(value.dwHighDateTime) << 32) | value.dwLowDateTime;
}

Win32::FILETIME Split(std::uint64_t ticks) {
  return Win32::FILETIME{static_cast<Win32::DWORD>(ticks), static_cast<Win32::DWORD>(ticks >> 32)};
}

Win32::SYSTEMTIME Fields(unsigned year, unsigned month, unsigned day, unsigned hour = 0,
                         unsigned minute = 0, unsigned second = 0, unsigned ms = 0) {
  return Win32::SYSTEMTIME{static_cast<Win32::WORD>(year), static_cast<Win32::WORD>(month), 0,
                           static_cast<Win32::WORD>(day),  static_cast<Win32::WORD>(hour),
                           static_cast<Win32::WORD>(minute), static_cast<Win32::WORD>(second),
                           static_cast<Win32::WORD>(ms)};
}

// Compares the calendar arithmetic with the C library's over random instants of the
// whole range, both ways.
TEST(Win32Clock, CalendarAgreesWithTheCLibraryFrom1601To30827) {
  std::mt19937_64 random(20081112);
  const std::int64_t first = -epochSeconds;                       // 1601-01-01
  const std::int64_t last = 922314988800 - epochSeconds;          // 30828-01-01, exclusive
  std::uniform_int_distribution<std::int64_t> seconds(first, last - 1);
  for (int i = 0; i < 200000; ++i) {
    const std::int64_t unix = seconds(random);
    const unsigned ms = static_cast<unsigned>(random() % 1000);
    const std::uint64_t ticks = static_cast<std::uint64_t>(unix + epochSeconds) * ticksPerSecond + ms * 10000 + 7;
    const std::time_t t = static_cast<std::time_t>(unix);
    std::tm expected;
    ASSERT_NE(::gmtime_r(&t, &expected), nullptr);

    const Win32::FILETIME fileTime = Split(ticks);
    Win32::SYSTEMTIME fields;
    ASSERT_TRUE(Win32::FileTimeToSystemTime(&fileTime, &fields));
    ASSERT_EQ(fields.wYear, expected.tm_year + 1900) << unix;
    ASSERT_EQ(fields.wMonth, expected.tm_mon + 1) << unix;
    ASSERT_EQ(fields.wDay, expected.tm_mday) << unix;
    ASSERT_EQ(fields.wDayOfWeek, expected.tm_wday) << unix;
    ASSERT_EQ(fields.wHour, expected.tm_hour) << unix;
    ASSERT_EQ(fields.wMinute, expected.tm_min) << unix;
    ASSERT_EQ(fields.wSecond, expected.tm_sec) << unix;
    ASSERT_EQ(fields.wMilliseconds, ms);

    fields.wDayOfWeek = 6;  // not read
    Win32::FILETIME back;
    ASSERT_TRUE(Win32::SystemTimeToFileTime(&fields, &back));
    ASSERT_EQ(Join(back), ticks - 7);
    ASSERT_EQ(::timegm(&expected), t);
  }
}

TEST(Win32Clock, SystemTimeToFileTimeRefusesEveryFieldOutOfRange) {
  const Win32::SYSTEMTIME refused[] = {
      Fields(1600, 12, 31, 23, 59, 59, 999), Fields(30828, 1, 1), Fields(2008, 0, 1),
      Fields(2008, 13, 1), Fields(2008, 1, 0), Fields(2008, 1, 32), Fields(2001, 2, 29),
      Fields(1900, 2, 29), Fields(2008, 4, 31), Fields(2008, 1, 1, 24), Fields(2008, 1, 1, 0, 60),
      Fields(2008, 1, 1, 0, 0, 60), Fields(2008, 1, 1, 0, 0, 0, 1000)};
  for (const Win32::SYSTEMTIME& fields : refused) {
    Win32::SetLastError(0);
    Win32::FILETIME out{0x12345678, 0x9ABCDEF};
    EXPECT_FALSE(Win32::SystemTimeToFileTime(&fields, &out)) << fields.wYear << "-" << fields.wMonth << "-" << fields.wDay;
    EXPECT_EQ(Win32::GetLastError(), Win32::ERROR_INVALID_PARAMETER);
    EXPECT_EQ(out.dwLowDateTime, 0x12345678u);
    EXPECT_EQ(out.dwHighDateTime, 0x9ABCDEFu);
  }

  Win32::FILETIME out;
  const Win32::SYSTEMTIME first = Fields(1601, 1, 1);
  ASSERT_TRUE(Win32::SystemTimeToFileTime(&first, &out));
  EXPECT_EQ(Join(out), 0u);
  const Win32::SYSTEMTIME last = Fields(30827, 12, 31, 23, 59, 59, 999);
  ASSERT_TRUE(Win32::SystemTimeToFileTime(&last, &out));
  EXPECT_EQ(Join(out), 922314988800u * ticksPerSecond - 10000);
  const Win32::SYSTEMTIME leap = Fields(2000, 2, 29);
  EXPECT_TRUE(Win32::SystemTimeToFileTime(&leap, &out));
}

TEST(Win32Clock, FileTimeToSystemTimeCoversAllPositiveCounts) {
  const Win32::FILETIME largest = Split(0x7FFFFFFFFFFFFFFFu);
  Win32::SYSTEMTIME fields;
  ASSERT_TRUE(Win32::FileTimeToSystemTime(&largest, &fields));
  EXPECT_EQ(fields.wYear, 30828);
  EXPECT_EQ(fields.wMonth, 9);
  EXPECT_EQ(fields.wDay, 14);
  EXPECT_EQ(fields.wHour, 2);
  EXPECT_EQ(fields.wMinute, 48);
  EXPECT_EQ(fields.wSecond, 5);
  EXPECT_EQ(fields.wMilliseconds, 477);
  EXPECT_EQ(fields.wDayOfWeek, 4);  // Thursday

  const Win32::FILETIME zero = Split(0);
  ASSERT_TRUE(Win32::FileTimeToSystemTime(&zero, &fields));
  EXPECT_EQ(fields.wYear, 1601);
  EXPECT_EQ(fields.wDayOfWeek, 1);  // Monday

  Win32::SetLastError(0);
  const Win32::FILETIME negative = Split(0x8000000000000000u);
  fields.wYear = 7;
  EXPECT_FALSE(Win32::FileTimeToSystemTime(&negative, &fields));
  EXPECT_EQ(Win32::GetLastError(), Win32::ERROR_INVALID_PARAMETER);
  EXPECT_EQ(fields.wYear, 7);
}

TEST(Win32Clock, Gmtime64CoversUnixSecondsUpToTheYear3000) {
  std::mt19937_64 random(42);
  std::uniform_int_distribution<std::int64_t> seconds(0, 32535215999);
  for (int i = 0; i < 20000; ++i) {
    const std::int64_t value = i == 0 ? 32535215999 : i == 1 ? 0 : seconds(random);
    const std::time_t t = static_cast<std::time_t>(value);
    std::tm expected;
    std::tm actual;
    ::gmtime_r(&t, &expected);
    ASSERT_EQ(Win32::_gmtime64_s(&actual, &value), 0);
    ASSERT_EQ(actual.tm_year, expected.tm_year);
    ASSERT_EQ(actual.tm_mon, expected.tm_mon);
    ASSERT_EQ(actual.tm_mday, expected.tm_mday);
    ASSERT_EQ(actual.tm_hour, expected.tm_hour);
    ASSERT_EQ(actual.tm_min, expected.tm_min);
    ASSERT_EQ(actual.tm_sec, expected.tm_sec);
    ASSERT_EQ(actual.tm_wday, expected.tm_wday);
    ASSERT_EQ(actual.tm_yday, expected.tm_yday);
    ASSERT_EQ(actual.tm_isdst, 0);
  }

  for (const std::int64_t value : {std::int64_t{-1}, std::int64_t{32535216000}}) {
    std::tm out;
    ASSERT_EQ(Win32::_gmtime64_s(&out, &value), EINVAL);
    for (const int field : {out.tm_sec, out.tm_min, out.tm_hour, out.tm_mday, out.tm_mon,
                            out.tm_year, out.tm_wday, out.tm_yday, out.tm_isdst}) {
      EXPECT_EQ(field, -1);
    }
  }
  std::tm out;
  EXPECT_EQ(Win32::_gmtime64_s(&out, nullptr), EINVAL);
  EXPECT_EQ(Win32::_gmtime64_s(nullptr, nullptr), EINVAL);
}

TEST(Win32Clock, LocalConversionFollowsTzAsItIsSetNow) {
  const std::uint64_t noon = 150000000000000000u;
  const Win32::FILETIME utc = Split(noon);
  Win32::FILETIME local;
  Win32::FILETIME back;
  {
    ZoneGuard zone(zoneWest0530);
    ASSERT_TRUE(Win32::FileTimeToLocalFileTime(&utc, &local));
    EXPECT_EQ(Join(local), noon - 198000000000u);
    ASSERT_TRUE(Win32::LocalFileTimeToFileTime(&local, &back));
    EXPECT_EQ(Join(back), noon);
  }
  {
    ZoneGuard zone(zoneEast0100);
    ASSERT_TRUE(Win32::FileTimeToLocalFileTime(&utc, &local));
    EXPECT_EQ(Join(local), noon + 36000000000u);
  }
  {
    // Changed without tzset: re-read all the same.
    ZoneGuard zone("UTC0");
    ::setenv("TZ", zoneEast0100, 1);
    ASSERT_TRUE(Win32::LocalFileTimeToFileTime(&utc, &back));
    EXPECT_EQ(Join(back), noon - 36000000000u);
  }
  // Whatever the date: a summer date in a zone with daylight saving gets today's offset,
  // and a round trip is exact.
  ZoneGuard zone("EST5EDT,M3.2.0,M11.1.0");
  const Win32::FILETIME zero = Split(5);
  ASSERT_TRUE(Win32::FileTimeToLocalFileTime(&zero, &local));
  ASSERT_TRUE(Win32::LocalFileTimeToFileTime(&local, &back));
  EXPECT_EQ(Join(back), 5u);
}

TEST(Win32Clock, PerformanceCounterIsMonotonicNanoseconds) {
  Win32::LARGE_INTEGER frequency;
  ASSERT_TRUE(Win32::QueryPerformanceFrequency(&frequency));
  EXPECT_EQ(frequency.QuadPart, 1000000000);
  Win32::LARGE_INTEGER previous;
  ASSERT_TRUE(Win32::QueryPerformanceCounter(&previous));
  for (int i = 0; i < 1000; ++i) {
    Win32::LARGE_INTEGER now;
    Win32::QueryPerformanceCounter(&now);
    ASSERT_GE(now.QuadPart, previous.QuadPart);
    previous = now;
  }
  ::timespec pause{0, 2000000};
  ::nanosleep(&pause, nullptr);
  Win32::LARGE_INTEGER later;
  Win32::QueryPerformanceCounter(&later);
  EXPECT_GE(later.QuadPart - previous.QuadPart, 2000000);
}

}  // namespace
