// Time: the word, its conversions, the calendar gate, kinds and zone offsets.
#include <tessera/time/Time.h>

#include <cstdint>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "ZoneGuard.h"

namespace {

using Tessera::Time;
using Tessera::TimeKind;
using Tessera::TimeSpan;

constexpr std::uint64_t epochTicks = 116444736000000000u;
constexpr std::int64_t hourTicks = 36000000000;
constexpr std::int64_t minuteTicks = 600000000;

std::uint64_t TicksOf(const Time& time) {
  Win32::FILETIME value;
  time.Render(value);
  return (static_cast<std::uint64_t>(value.dwHighDateTime) << 32) | value.dwLowDateTime;
}

Win32::FILETIME FileTime(std::uint64_t ticks) {
  return Win32::FILETIME{static_cast<Win32::DWORD>(ticks), static_cast<Win32::DWORD>(ticks >> 32)};
}

TEST(Time, UnixSecondsAreReadOnTheClockOfTheKind) {
  const Time epoch(0, TimeKind::Utc);
  EXPECT_EQ(TicksOf(epoch), epochTicks);
  EXPECT_TRUE(epoch.IsUtc());
  std::int32_t seconds32 = 5;
  epoch.Render(seconds32);
  EXPECT_EQ(seconds32, 0);

  const Time before(std::int32_t{-1}, TimeKind::Utc);
  EXPECT_EQ(TicksOf(before), 116444735990000000u);
  before.Render(seconds32);
  EXPECT_EQ(seconds32, 2133437385);  // low bits of the wrapped quotient, not -1
  std::int64_t seconds64 = 0;
  before.Render(seconds64);
  EXPECT_EQ(seconds64, 1844674407369);

  const Time local(std::int64_t{1226493296}, TimeKind::Local);
  EXPECT_TRUE(local.IsLocal());
  EXPECT_EQ(TicksOf(local), epochTicks + 12264932960000000u);
  local.Render(seconds64);
  EXPECT_EQ(seconds64, 1226493296);

  Time set(0, TimeKind::Utc);
  set.Set(std::int64_t{-11644473600}, TimeKind::Local);
  EXPECT_EQ(TicksOf(set), 0u);
  EXPECT_TRUE(set.IsLocal());
}

TEST(Time, TimevalFieldsAreThirtyTwoBitsWideAndUnchecked) {
  ::timeval value{};
  value.tv_sec = 1;
  value.tv_usec = 2000000;
  Time time(value, TimeKind::Utc);
  EXPECT_EQ(TicksOf(time), epochTicks + 30000000u);

  value.tv_sec = (std::int64_t{1} << 32) + 5;  // only the low 32 bits count
  value.tv_usec = -1;
  EXPECT_TRUE(time.Set(value, TimeKind::Local));
  EXPECT_EQ(TicksOf(time), epochTicks + 50000000u - 10u);
  EXPECT_TRUE(time.IsLocal());

  Win32::FILETIME out;
  value.tv_sec = -2;
  value.tv_usec = 3;
  Tessera::UnixTimeToFileTime(value, out);
  EXPECT_EQ(TicksOf(Time(out, TimeKind::Utc)), epochTicks - 20000000u + 30u);

  ::timeval back{};
  Tessera::FileTimeToUnixTime(FileTime(epochTicks + 7 * 10000000u + 15), back);
  EXPECT_EQ(back.tv_sec, 7);
  EXPECT_EQ(back.tv_usec, 1);  // the last decimal of the ticks is dropped

  Tessera::UnixTimeToFileTime(std::int32_t{-1}, out);
  EXPECT_EQ(TicksOf(Time(out, TimeKind::Utc)), 116444735990000000u);
  Tessera::UnixTimeToFileTime(std::int64_t{4102444800}, out);
  std::int32_t low = 0;
  Tessera::FileTimeToUnixTime(out, low);
  EXPECT_EQ(low, static_cast<std::int32_t>(4102444800u - 4294967296u));
  std::int64_t full = 0;
  Tessera::FileTimeToUnixTime(out, full);
  EXPECT_EQ(full, 4102444800);
}

TEST(Time, CalendarFieldsGoThroughOneGate) {
  Time time(5, TimeKind::Local);
  EXPECT_TRUE(time.Set(2000, 2, 29, TimeKind::Utc));
  EXPECT_EQ(TicksOf(time), TicksOf(Time(std::int64_t{951782400}, TimeKind::Utc)));
  EXPECT_TRUE(time.IsUtc());

  const Time kept(5, TimeKind::Local);
  for (const unsigned year : {1900u, 2001u}) {
    time = kept;
    EXPECT_FALSE(time.Set(year, 2, 29, TimeKind::Utc)) << year;
    EXPECT_EQ(TicksOf(time), TicksOf(kept));
    EXPECT_TRUE(time.IsLocal());
  }
  EXPECT_FALSE(time.Set(2000, 13, 1, TimeKind::Utc));
  EXPECT_FALSE(time.Set(1600, 1, 1, TimeKind::Utc));
  EXPECT_FALSE(time.Set(30828, 1, 1, TimeKind::Utc));
  EXPECT_FALSE(time.Set(2008, 11, 12, 23, 59, 60, 0, TimeKind::Utc));
  EXPECT_FALSE(time.Set(2008, 11, 12, 23, 59, 59, 1000, TimeKind::Utc));
  EXPECT_FALSE(time.Set(2008, 11, 12, 24, 0, 0, 0, TimeKind::Utc));
  EXPECT_EQ(TicksOf(time), TicksOf(kept));
  EXPECT_TRUE(time.IsLocal());

  // The fields are cut to 16 bits before any check.
  EXPECT_TRUE(time.Set(65536 + 2000, 1, 1, TimeKind::Utc));
  EXPECT_EQ(TicksOf(time), TicksOf(Time(std::int64_t{946684800}, TimeKind::Utc)));
  EXPECT_TRUE(time.Set(1601, 1, 1, TimeKind::Local));
  EXPECT_EQ(TicksOf(time), 0u);
  EXPECT_TRUE(time.Set(2008, 11, 12, 12, 34, 56, 789, TimeKind::Utc));
  EXPECT_EQ(TicksOf(time), epochTicks + 12264932960000000u + 7890000u);
}

TEST(Time, CalendarConstructorsThrowWithTheWin32Code) {
  try {
    Time time(2001, 2, 29, TimeKind::Utc);
    FAIL() << "accepted 2001-02-29";
  } catch (const Plaint::RuntimeError& error) {
    EXPECT_STREQ(error.what(), "unable to initialize Time");
    EXPECT_STREQ(error.GetContext().function, "Tessera::Time::Time");
    EXPECT_NE(std::strstr(error.GetContext().file, "Time"), nullptr);
    ASSERT_NE(error.GetInfo<Plaint::ErrorInfo_Win32Error>(), nullptr);
    EXPECT_EQ(*error.GetInfo<Plaint::ErrorInfo_Win32Error>(), Win32::ERROR_INVALID_PARAMETER);
  }
  EXPECT_THROW(Time(2008, 11, 12, 12, 34, 56, 1000, TimeKind::Utc), Plaint::RuntimeError);
  const Time time(2008, 11, 12, 12, 34, 56, 0, TimeKind::Local);
  EXPECT_TRUE(time.IsLocal());
  EXPECT_EQ(TicksOf(time), epochTicks + 12264932960000000u);
}

TEST(Time, TmAndSystemTimeConstructorsGiveTheZeroWordOnRefusal) {
  std::tm fields{};
  fields.tm_year = 108;
  fields.tm_mon = 10;
  fields.tm_mday = 12;
  fields.tm_hour = 12;
  fields.tm_min = 34;
  fields.tm_sec = 56;
  fields.tm_wday = 5;  // wrong, and not read
  fields.tm_isdst = 1;
  const Time fromTm(fields, TimeKind::Local);
  EXPECT_EQ(TicksOf(fromTm), epochTicks + 12264932960000000u);
  EXPECT_TRUE(fromTm.IsLocal());

  fields.tm_year = 65536 + 108;  // 16-bit fields
  Time set(0, TimeKind::Utc);
  EXPECT_TRUE(set.Set(fields, TimeKind::Utc));
  EXPECT_EQ(TicksOf(set), TicksOf(fromTm));

  fields.tm_mday = 31;
  fields.tm_mon = 10;
  EXPECT_FALSE(set.Set(fields, TimeKind::Local));
  EXPECT_TRUE(set.IsUtc());
  const Time refusedTm(fields, TimeKind::Local);
  EXPECT_EQ(TicksOf(refusedTm), 0u);
  EXPECT_TRUE(refusedTm.IsUtc());

  Win32::SYSTEMTIME system{2008, 11, 3, 12, 12, 34, 56, 789};
  const Time fromSystem(system, TimeKind::Utc);
  EXPECT_EQ(TicksOf(fromSystem), epochTicks + 12264932967890000u);
  system.wSecond = 60;
  const Time refusedSystem(system, TimeKind::Local);
  EXPECT_EQ(TicksOf(refusedSystem), 0u);
  EXPECT_TRUE(refusedSystem.IsUtc());
  EXPECT_FALSE(set.Set(system, TimeKind::Local));
  EXPECT_EQ(TicksOf(set), TicksOf(fromTm));
}

TEST(Time, RenderersUseTheStoredTicks) {
  const Time time(2008, 11, 12, 12, 34, 56, 789, TimeKind::Local);
  Win32::SYSTEMTIME fields;
  time.Render(fields);
  EXPECT_EQ(fields.wYear, 2008);
  EXPECT_EQ(fields.wMonth, 11);
  EXPECT_EQ(fields.wDayOfWeek, 3);
  EXPECT_EQ(fields.wDay, 12);
  EXPECT_EQ(fields.wHour, 12);
  EXPECT_EQ(fields.wMinute, 34);
  EXPECT_EQ(fields.wSecond, 56);
  EXPECT_EQ(fields.wMilliseconds, 789);

  std::tm broken{};
  time.Render(broken);
  EXPECT_EQ(broken.tm_year, 108);
  EXPECT_EQ(broken.tm_mon, 10);
  EXPECT_EQ(broken.tm_mday, 12);
  EXPECT_EQ(broken.tm_hour, 12);
  EXPECT_EQ(broken.tm_sec, 56);
  EXPECT_EQ(broken.tm_wday, 3);
  EXPECT_EQ(broken.tm_yday, 316);

  // Before 1970 the wrapped seconds are refused by _gmtime64_s: every field -1.
  Time(1969, 12, 31, 23, 59, 59, 0, TimeKind::Utc).Render(broken);
  EXPECT_EQ(broken.tm_year, -1);
  EXPECT_EQ(broken.tm_mday, -1);
  Time(3000, 12, 31, 23, 59, 59, 0, TimeKind::Utc).Render(broken);
  EXPECT_EQ(broken.tm_year, 1100);
  Time(3001, 1, 1, TimeKind::Utc).Render(broken);
  EXPECT_EQ(broken.tm_hour, -1);
}

TEST(Time, KindsRelabelOrConvertByTheZoneInForce) {
  ZoneGuard zone(zoneWest0530);
  const Time utc(2008, 11, 12, 12, 0, 0, 0, TimeKind::Utc);
  const std::uint64_t ticks = TicksOf(utc);

  Time relabelled = utc;
  relabelled.SetKind(TimeKind::Local);
  EXPECT_EQ(TicksOf(relabelled), ticks);
  EXPECT_TRUE(relabelled.IsLocal());
  relabelled.SetKind(static_cast<TimeKind>(2));  // the lowest bit alone
  EXPECT_TRUE(relabelled.IsUtc());

  Time local = utc;
  EXPECT_EQ(TicksOf(local.MakeLocal()), ticks - 5 * hourTicks - 30 * minuteTicks);
  EXPECT_TRUE(local.IsLocal());
  const Time again = local;
  EXPECT_EQ(TicksOf(local.MakeLocal()), TicksOf(again));
  EXPECT_EQ(TicksOf(local.AsUtc()), ticks);
  EXPECT_TRUE(local.AsUtc().IsUtc());
  EXPECT_TRUE(local.IsLocal());
  EXPECT_EQ(TicksOf(local.AsLocal()), TicksOf(local));
  EXPECT_EQ(TicksOf(Time(local).MakeUtc()), ticks);

  // Subtraction compares the UTC ticks, across kinds.
  EXPECT_EQ((local - utc).GetTicks(), 0);
  EXPECT_EQ((utc - Time(2008, 11, 12, 12, 0, 0, 0, TimeKind::Local)).GetTicks(), -5 * hourTicks - 30 * minuteTicks);

  {
    ZoneGuard east(zoneEast0100);  // converted with the offset in force now
    EXPECT_EQ(TicksOf(utc.AsLocal()), ticks + hourTicks);
  }
}

TEST(Time, ArithmeticKeepsTheKindAndWrapsAt63Bits) {
  for (const TimeKind kind : {TimeKind::Utc, TimeKind::Local}) {
    Time time(0, kind);
    time += TimeSpan(1);
    EXPECT_EQ(time.GetKind(), kind);
    EXPECT_EQ(TicksOf(time), epochTicks + 1);
    time -= TimeSpan::day;
    EXPECT_EQ(TicksOf(time), epochTicks + 1 - 864000000000u);
    EXPECT_EQ(time.GetKind(), kind);
  }
  Time last(FileTime(0x7FFFFFFFFFFFFFFFu), TimeKind::Local);
  last += TimeSpan(1);
  EXPECT_EQ(TicksOf(last), 0u);
  EXPECT_TRUE(last.IsLocal());
  last -= TimeSpan(2);
  EXPECT_EQ(TicksOf(last), 0x7FFFFFFFFFFFFFFEu);

  // A FILETIME loses its top bit when stored.
  EXPECT_EQ(TicksOf(Time(FileTime(0x8000000000000003u), TimeKind::Utc)), 3u);
}

TEST(Time, ZoneOffsetsCarryTheSignInBothParts) {
  {
    ZoneGuard zone(zoneWest0530);
    const Time local(2008, 11, 12, TimeKind::Local);
    EXPECT_EQ(local.GetTimeZoneOffset().GetTicks(), -5 * hourTicks - 30 * minuteTicks);
    int hours = 0;
    int minutes = 0;
    local.GetTimeZoneOffset(hours, minutes);
    EXPECT_EQ(hours, -5);
    EXPECT_EQ(minutes, -30);
    EXPECT_EQ(local.GetTimeZoneOffsetHours(), -5.5f);

    const Time utc(2008, 11, 12, TimeKind::Utc);
    EXPECT_EQ(utc.GetTimeZoneOffset().GetTicks(), 0);
    utc.GetTimeZoneOffset(hours, minutes);
    EXPECT_EQ(hours, 0);
    EXPECT_EQ(minutes, 0);
  }
  {
    ZoneGuard zone(zoneEast0100);
    const Time local(2008, 11, 12, TimeKind::Local);
    int hours = 0;
    int minutes = 0;
    local.GetTimeZoneOffset(hours, minutes);
    EXPECT_EQ(hours, 1);
    EXPECT_EQ(minutes, 0);
    EXPECT_EQ(local.GetTimeZoneOffsetHours(), 1.0f);
  }
  ZoneGuard zone(zoneWest0030);
  int hours = 7;
  int minutes = 7;
  Time(2008, 11, 12, TimeKind::Local).GetTimeZoneOffset(hours, minutes);
  EXPECT_EQ(hours, 0);
  EXPECT_EQ(minutes, -30);
}

TEST(Time, CalendarHelpers) {
  EXPECT_FALSE(Time::IsLeapYear(1900));
  EXPECT_FALSE(Time::IsLeapYear(2100));
  EXPECT_FALSE(Time::IsLeapYear(2001));
  EXPECT_TRUE(Time::IsLeapYear(2000));
  EXPECT_TRUE(Time::IsLeapYear(2004));

  EXPECT_EQ(Time::GetYearDay(2000, 12, 0), 366);
  EXPECT_EQ(Time::GetYearDay(1900, 12, 0), 365);
  EXPECT_EQ(Time::GetYearDay(2000, 2, 1), 61);
  EXPECT_EQ(Time::GetYearDay(2001, 2, 1), 60);
  EXPECT_EQ(Time::GetYearDay(2000, 0, 1), 1);
  EXPECT_EQ(Time::GetYearDay(2000, 13, 1), 65535);
  EXPECT_EQ(Time::GetYearDay(2001, 12, 65535), 364);  // the day is added as it comes
}

TEST(Time, ClocksGiveNowInBothKinds) {
  ZoneGuard zone(zoneWest0530);
  const std::uint64_t before = epochTicks + static_cast<std::uint64_t>(::time(nullptr)) * 10000000u;
  const Time utc = Time::NowUtc();
  const Time local = Time::NowLocal();
  const Time byKind(TimeKind::Local);
  const Time byDefault;
  const std::uint64_t after = epochTicks + static_cast<std::uint64_t>(::time(nullptr) + 1) * 10000000u;

  EXPECT_TRUE(utc.IsUtc());
  EXPECT_GE(TicksOf(utc), before);
  EXPECT_LT(TicksOf(utc), after);
  EXPECT_TRUE(local.IsLocal());
  EXPECT_EQ(TicksOf(local) % 10000, 0u);
  const std::uint64_t shift = 5 * hourTicks + 30 * minuteTicks;
  EXPECT_GE(TicksOf(local), before - shift);
  EXPECT_LT(TicksOf(local), after - shift);
  EXPECT_TRUE(byKind.IsLocal());
  EXPECT_TRUE(byDefault.IsLocal());
  EXPECT_LT((byDefault - utc).GetTicks(), 10000000);
  EXPECT_GE((byDefault - utc).GetTicks(), -10000);
  EXPECT_TRUE(Time(TimeKind::Utc).IsUtc());
}

}  // namespace
