// Time: the word, its conversions, the calendar gate, kinds and zone offsets.
#include <tessera/time/Time.h>

#include <cstring>
#include <tuple>

#include "TimeTesting.h"

namespace {

using Tessera::Time;
using Tessera::TimeKind;
using Tessera::TimeSpan;

constexpr std::int64_t hour = 36000000000, west0530 = -198000000000;  // ticks
constexpr std::uint64_t noon2008 = epochTicks + 12264912000000000u;   // 2008-11-12 12:00 UTC
constexpr TimeKind utc = TimeKind::Utc, local = TimeKind::Local;

TEST(Time, UnixSecondsAndTimevalConvertWithoutAZone) {
  std::int32_t low = 5;
  std::int64_t full = 0;
  const Time before(std::int32_t{-1}, utc);
  before.Render(low);
  before.Render(full);  // the unsigned quotient wraps instead of giving -1
  EXPECT_EQ(std::make_tuple(TicksOf(before), low, full),
            std::make_tuple(116444735990000000u, 2133437385, std::int64_t{1844674407369}));
  EXPECT_EQ(Word(Time(std::int64_t{1226491200}, local)), Local(noon2008));  // on the local clock: no zone

  EXPECT_EQ(TicksOf(Time(::timeval{1, 2000000}, utc)), epochTicks + 30000000);  // tv_usec unchecked
  Time set(0, utc);
  EXPECT_TRUE(set.Set(::timeval{(std::int64_t{1} << 32) + 5, -1}, local));      // 32-bit fields
  EXPECT_EQ(Word(set), Local(epochTicks + 50000000 - 10));
  Win32::FILETIME out;
  Tessera::UnixTimeToFileTime(::timeval{-2, 3}, out);
  EXPECT_EQ(Join(out), epochTicks - 20000000 + 30);
  Tessera::UnixTimeToFileTime(std::int64_t{4102444800}, out);
  Tessera::FileTimeToUnixTime(out, low);
  Tessera::FileTimeToUnixTime(out, full);
  EXPECT_EQ(std::make_pair(low, full), std::make_pair(std::int32_t{-192522496}, std::int64_t{4102444800}));
  ::timeval back{};
  Tessera::FileTimeToUnixTime(Split(epochTicks + 70000015), back);
  EXPECT_EQ(std::make_pair(back.tv_sec, back.tv_usec), std::make_pair(7L, 1L));  // the last decimal dropped
}

TEST(Time, CalendarFieldsPassOneGateAndRefusalsChangeNothingOrThrow) {
  // The gate itself, row by row, is the stand-in's (ClockTest); here the wiring around it.
  const Time kept(5, local);
  Time time = kept;
  EXPECT_TRUE(time.Set(65536 + 2000, 2, 29, utc));  // cut to 16 bits first
  EXPECT_EQ(Word(time), Utc(epochTicks + 9517824000000000u));
  EXPECT_TRUE(time.Set(2008, 11, 12, 12, 34, 56, 789, local));
  EXPECT_EQ(Word(time), Local(noon2008 + 20967890000u));
  Win32::SYSTEMTIME s;  // rendered from the stored ticks, with no zone applied
  std::tm t{};
  time.Render(s);
  time.Render(t);
  EXPECT_EQ(std::make_tuple(s.wYear, s.wMonth, s.wDayOfWeek, s.wDay, s.wHour, s.wMinute, s.wSecond, s.wMilliseconds),
            std::make_tuple(2008, 11, 3, 12, 12, 34, 56, 789));
  EXPECT_EQ(std::make_tuple(t.tm_year, t.tm_mday, t.tm_hour, t.tm_yday), std::make_tuple(108, 12, 12, 316));
  time = kept;
  EXPECT_FALSE(time.Set(2001, 2, 29, utc));
  EXPECT_FALSE(time.Set(2008, 11, 12, 23, 59, 59, 1000, utc));
  EXPECT_EQ(Word(time), Word(kept));

  std::tm fields{};
  fields.tm_year = 65536 + 108;  // 16-bit fields and sums; weekday and daylight saving unread
  fields.tm_mon = 10, fields.tm_mday = 12, fields.tm_hour = 12, fields.tm_wday = 5, fields.tm_isdst = 1;
  EXPECT_TRUE(time.Set(fields, local));
  EXPECT_EQ(Word(time), Local(noon2008));
  fields.tm_mday = 31;
  EXPECT_FALSE(time.Set(fields, utc));
  EXPECT_EQ(Word(Time(fields, local)), Utc(0));  // a refusal in a constructor gives the zero word

  Win32::SYSTEMTIME system{2008, 11, 3, 12, 12, 0, 0, 789};
  EXPECT_EQ(TicksOf(Time(system, utc)), noon2008 + 7890000);
  system.wSecond = 60;
  EXPECT_FALSE(time.Set(system, utc));
  EXPECT_EQ(Word(time), Local(noon2008));
  try {  // the constructors from separate numbers throw instead
    const Time bad(2001, 2, 29, utc);
    FAIL() << "accepted 2001-02-29";
  } catch (const Plaint::RuntimeError& error) {
    EXPECT_STREQ(error.what(), "unable to initialize Time");
    EXPECT_STREQ(error.GetContext().function, "Tessera::Time::Time");
    EXPECT_NE(std::strstr(error.GetContext().file, "Time"), nullptr);
    ASSERT_NE(error.GetInfo<Plaint::ErrorInfo_Win32Error>(), nullptr);
    EXPECT_EQ(*error.GetInfo<Plaint::ErrorInfo_Win32Error>(), Win32::ERROR_INVALID_PARAMETER);
  }
}

TEST(Time, KindsRelabelOrConvertByTheZoneInForceAndCompareAsMoments) {
  ZoneGuard zone(zoneWest0530);
  const Time atNoon(Split(noon2008), utc);
  Time relabelled = atNoon;
  relabelled.SetKind(local);
  EXPECT_EQ(Word(relabelled), Local(noon2008));
  relabelled.SetKind(static_cast<TimeKind>(2));  // the lowest bit alone
  EXPECT_TRUE(relabelled.IsUtc());

  Time moved = atNoon;
  moved.MakeLocal();
  EXPECT_EQ(Word(moved.MakeLocal()), Local(noon2008 + west0530));  // twice: no change
  EXPECT_EQ(Word(moved.AsUtc()), Utc(noon2008));
  EXPECT_EQ(Word(moved.AsLocal()), Word(moved));
  EXPECT_EQ(Word(Time(moved).MakeUtc()), Utc(noon2008));
  EXPECT_EQ((moved - atNoon).GetTicks(), 0);  // compared in UTC across kinds
  EXPECT_EQ((atNoon - Time(Split(noon2008), local)).GetTicks(), west0530);
  const Time sameMoment = atNoon.AsLocal(), later(Split(noon2008 + 1), utc);
  EXPECT_EQ(std::make_tuple(atNoon == sameMoment, atNoon != sameMoment, atNoon < later, later > sameMoment),
            std::make_tuple(true, false, true, true));
  EXPECT_EQ(std::make_tuple(sameMoment <= atNoon, sameMoment >= later, Time(Split(noon2008), local) > atNoon),
            std::make_tuple(true, false, true));  // 12:00 at -05:30 is 17:30 UTC
  ZoneGuard east(zoneEast0100);
  EXPECT_EQ(TicksOf(atNoon.AsLocal()), noon2008 + hour);
}

TEST(Time, ArithmeticKeepsTheKindAndWrapsAt63Bits) {
  for (const TimeKind kind : {utc, local}) {
    Time time(0, kind);
    (time += TimeSpan(1)) -= TimeSpan::day;
    EXPECT_EQ(Word(time), std::make_pair(epochTicks + 1 - 864000000000, kind == local));
  }
  Time last(Split(0x7FFFFFFFFFFFFFFFu), local);
  EXPECT_EQ(Word(last += TimeSpan(1)), Local(0));
  EXPECT_EQ(TicksOf(last -= TimeSpan(2)), 0x7FFFFFFFFFFFFFFEu);
  EXPECT_EQ(TicksOf(Time(Split(0x8000000000000003u), utc)), 3u);  // the top bit is lost
}

TEST(Time, ZoneOffsetsCarryTheSignInBothParts) {
  const struct { const char* zone; std::int64_t ticks; int hours, minutes; float inHours; } cases[] = {
      {zoneWest0530, west0530, -5, -30, -5.5f}, {zoneEast0100, hour, 1, 0, 1.0f},
      {zoneWest0030, -hour / 2, 0, -30, -0.5f}};
  for (const auto& c : cases) {
    ZoneGuard zone(c.zone);
    const Time onLocal(2008, 11, 12, local), onUtc(2008, 11, 12, utc);
    int hours = 7, minutes = 7, utcHours = 7, utcMinutes = 7;
    onLocal.GetTimeZoneOffset(hours, minutes);
    onUtc.GetTimeZoneOffset(utcHours, utcMinutes);
    EXPECT_EQ(std::make_tuple(onLocal.GetTimeZoneOffset().GetTicks(), hours, minutes, onLocal.GetTimeZoneOffsetHours()),
              std::make_tuple(c.ticks, c.hours, c.minutes, c.inHours)) << c.zone;
    EXPECT_EQ(std::make_tuple(onUtc.GetTimeZoneOffset().GetTicks(), utcHours, utcMinutes), std::make_tuple(0, 0, 0));
  }
}

TEST(Time, CalendarHelpers) {
  for (unsigned short year : {1900, 2100, 2001, 2000, 2004})
    EXPECT_EQ(Time::IsLeapYear(year), year == 2000 || year == 2004) << year;
  const struct { unsigned short year, month, day, result; } cases[] = {
      {2000, 12, 0, 366}, {1900, 12, 0, 365}, {2000, 2, 1, 61}, {2001, 2, 1, 60},
      {2000, 0, 1, 1},    {2000, 13, 1, 65535}, {2001, 12, 65535, 364}};  // the day is added as it comes
  for (const auto& c : cases) EXPECT_EQ(Time::GetYearDay(c.year, c.month, c.day), c.result) << c.year << "-" << c.month;
}

TEST(Time, ClocksGiveNowInBothKinds) {
  ZoneGuard zone(zoneWest0530);
  const std::uint64_t before = epochTicks + static_cast<std::uint64_t>(::time(nullptr)) * 10000000u;
  const Time nowUtc = Time::NowUtc(), nowLocal = Time::NowLocal(), byDefault, byKind(local);
  const std::uint64_t after = epochTicks + static_cast<std::uint64_t>(::time(nullptr) + 1) * 10000000u;
  for (const Time* now : {&nowUtc, &nowLocal, &byDefault}) {
    const std::uint64_t shift = now->IsLocal() ? west0530 : 0;
    EXPECT_GE(TicksOf(*now), before + shift);
    EXPECT_LT(TicksOf(*now), after + shift);
  }
  EXPECT_EQ(TicksOf(nowLocal) % 10000, 0u);  // whole milliseconds
  EXPECT_EQ(std::make_tuple(nowUtc.IsLocal(), nowLocal.IsLocal(), byKind.IsLocal(), byDefault.IsLocal(),
                            Time(utc).IsLocal()), std::make_tuple(false, true, true, true, false));
}

}  // namespace
