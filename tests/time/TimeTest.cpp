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

TEST(Time, UnixSecondsAndTimevalConvertWithoutAZone) {
  std::int32_t low = 5;
  std::int64_t full = 0;
  const Time epoch(0, TimeKind::Utc), before(std::int32_t{-1}, TimeKind::Utc);
  epoch.Render(low);
  EXPECT_TRUE(TicksOf(epoch) == epochTicks && epoch.IsUtc() && low == 0);
  before.Render(low);
  before.Render(full);  // the unsigned quotient wraps instead of giving -1
  EXPECT_EQ(std::make_tuple(TicksOf(before), low, full),
            std::make_tuple(116444735990000000u, 2133437385, std::int64_t{1844674407369}));
  const Time local(std::int64_t{1226491200}, TimeKind::Local);  // on the local clock: no zone
  EXPECT_TRUE(local.IsLocal() && TicksOf(local) == noon2008);

  Time set(0, TimeKind::Utc);
  EXPECT_EQ(TicksOf(Time(::timeval{1, 2000000}, TimeKind::Utc)), epochTicks + 30000000);  // tv_usec unchecked
  EXPECT_TRUE(set.Set(::timeval{(std::int64_t{1} << 32) + 5, -1}, TimeKind::Local));  // 32-bit fields
  EXPECT_TRUE(TicksOf(set) == epochTicks + 50000000 - 10 && set.IsLocal());
  Win32::FILETIME out;
  Tessera::UnixTimeToFileTime(::timeval{-2, 3}, out);
  EXPECT_EQ(Join(out), epochTicks - 20000000 + 30);
  Tessera::UnixTimeToFileTime(std::int64_t{4102444800}, out);
  Tessera::FileTimeToUnixTime(out, low);
  Tessera::FileTimeToUnixTime(out, full);
  EXPECT_EQ(std::make_pair(low, full), std::make_pair(std::int32_t{-192522496}, std::int64_t{4102444800}));  // low bits
  ::timeval back{};
  Tessera::FileTimeToUnixTime(Split(epochTicks + 70000015), back);
  EXPECT_TRUE(back.tv_sec == 7 && back.tv_usec == 1);  // the last decimal is dropped
}

TEST(Time, CalendarFieldsPassOneGateAndRefusalsChangeNothing) {
  const Time kept(5, TimeKind::Local);
  Time time = kept;
  EXPECT_TRUE(time.Set(2000, 2, 29, TimeKind::Utc));
  EXPECT_TRUE(TicksOf(time) == epochTicks + 9517824000000000u && time.IsUtc());
  EXPECT_TRUE(time.Set(65536 + 2000, 1, 1, TimeKind::Local));  // cut to 16 bits first
  EXPECT_TRUE(TicksOf(time) == epochTicks + 9466848000000000u && time.IsLocal());
  EXPECT_TRUE(time.Set(2008, 11, 12, 12, 34, 56, 789, TimeKind::Utc));
  EXPECT_EQ(TicksOf(time), noon2008 + 20967890000u);
  time = kept;
  EXPECT_FALSE(time.Set(2001, 2, 29, TimeKind::Utc) || time.Set(1900, 2, 29, TimeKind::Utc) ||
               time.Set(2000, 13, 1, TimeKind::Utc) || time.Set(1600, 1, 1, TimeKind::Utc) ||
               time.Set(2008, 11, 12, 23, 59, 60, 0, TimeKind::Utc) ||
               time.Set(2008, 11, 12, 23, 59, 59, 1000, TimeKind::Utc));
  EXPECT_TRUE(TicksOf(time) == TicksOf(kept) && time.IsLocal());

  std::tm fields{};
  fields.tm_year = 65536 + 108;  // 16-bit fields and sums; weekday and daylight saving unread
  fields.tm_mon = 10; fields.tm_mday = 12; fields.tm_hour = 12; fields.tm_wday = 5; fields.tm_isdst = 1;
  EXPECT_TRUE(time.Set(fields, TimeKind::Local));
  EXPECT_TRUE(TicksOf(time) == noon2008 && time.IsLocal());
  EXPECT_EQ(TicksOf(Time(fields, TimeKind::Utc)), noon2008);
  fields.tm_mday = 31;
  EXPECT_FALSE(time.Set(fields, TimeKind::Utc));
  const Time badTm(fields, TimeKind::Local);  // a refusal in a constructor gives the zero word
  EXPECT_TRUE(TicksOf(badTm) == 0 && badTm.IsUtc());

  Win32::SYSTEMTIME system{2008, 11, 3, 12, 12, 0, 0, 789};
  EXPECT_EQ(TicksOf(Time(system, TimeKind::Utc)), noon2008 + 7890000);
  system.wSecond = 60;
  EXPECT_FALSE(time.Set(system, TimeKind::Utc));
  EXPECT_TRUE(TicksOf(time) == noon2008 && time.IsLocal());
  const Time badSystem(system, TimeKind::Local);
  EXPECT_TRUE(TicksOf(badSystem) == 0 && badSystem.IsUtc());
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
  const Time time(2008, 11, 12, 12, 0, 0, 0, TimeKind::Local);
  EXPECT_TRUE(time.IsLocal() && TicksOf(time) == noon2008);
}

TEST(Time, RenderersUseTheStoredTicks) {
  const Time time(2008, 11, 12, 12, 34, 56, 789, TimeKind::Local);
  Win32::SYSTEMTIME s;
  time.Render(s);
  EXPECT_EQ(std::make_tuple(s.wYear, s.wMonth, s.wDayOfWeek, s.wDay, s.wHour, s.wMinute, s.wSecond, s.wMilliseconds),
            std::make_tuple(2008, 11, 3, 12, 12, 34, 56, 789));
  std::tm t{};
  time.Render(t);
  EXPECT_EQ(std::make_tuple(t.tm_year, t.tm_mon, t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec, t.tm_wday, t.tm_yday),
            std::make_tuple(108, 10, 12, 12, 34, 56, 3, 316));
  Time(1969, 12, 31, 23, 59, 59, 0, TimeKind::Utc).Render(t);  // wrapped seconds: every field -1
  EXPECT_TRUE(t.tm_year == -1 && t.tm_mday == -1);
}

TEST(Time, KindsRelabelOrConvertByTheZoneInForce) {
  ZoneGuard zone(zoneWest0530);
  const Time utc(Split(noon2008), TimeKind::Utc);
  Time relabelled = utc;
  relabelled.SetKind(TimeKind::Local);
  EXPECT_TRUE(TicksOf(relabelled) == noon2008 && relabelled.IsLocal());
  relabelled.SetKind(static_cast<TimeKind>(2));  // the lowest bit alone
  EXPECT_TRUE(relabelled.IsUtc());

  Time local = utc;
  local.MakeLocal();
  EXPECT_TRUE(TicksOf(local.MakeLocal()) == noon2008 + west0530 && local.IsLocal());  // twice: no change
  EXPECT_TRUE(TicksOf(local.AsUtc()) == noon2008 && local.AsUtc().IsUtc() && local.IsLocal());
  EXPECT_EQ(TicksOf(local.AsLocal()), TicksOf(local));
  EXPECT_EQ(TicksOf(Time(local).MakeUtc()), noon2008);
  EXPECT_EQ((local - utc).GetTicks(), 0);  // compared in UTC across kinds
  EXPECT_EQ((utc - Time(Split(noon2008), TimeKind::Local)).GetTicks(), west0530);
  ZoneGuard east(zoneEast0100);
  EXPECT_EQ(TicksOf(utc.AsLocal()), noon2008 + hour);
}

TEST(Time, ArithmeticKeepsTheKindAndWrapsAt63Bits) {
  for (const TimeKind kind : {TimeKind::Utc, TimeKind::Local}) {
    Time time(0, kind);
    (time += TimeSpan(1)) -= TimeSpan::day;
    EXPECT_TRUE(TicksOf(time) == epochTicks + 1 - 864000000000 && time.GetKind() == kind);
  }
  Time last(Split(0x7FFFFFFFFFFFFFFFu), TimeKind::Local);
  last += TimeSpan(1);
  EXPECT_TRUE(TicksOf(last) == 0 && last.IsLocal());
  last -= TimeSpan(2);
  EXPECT_EQ(TicksOf(last), 0x7FFFFFFFFFFFFFFEu);
  EXPECT_EQ(TicksOf(Time(Split(0x8000000000000003u), TimeKind::Utc)), 3u);  // the top bit is lost
}

TEST(Time, ZoneOffsetsCarryTheSignInBothParts) {
  const struct { const char* zone; std::int64_t ticks; int hours, minutes; float inHours; } cases[] = {
      {zoneWest0530, west0530, -5, -30, -5.5f}, {zoneEast0100, hour, 1, 0, 1.0f},
      {zoneWest0030, -hour / 2, 0, -30, -0.5f}};
  for (const auto& c : cases) {
    ZoneGuard zone(c.zone);
    const Time local(2008, 11, 12, TimeKind::Local), utc(2008, 11, 12, TimeKind::Utc);
    int hours = 7, minutes = 7, utcHours = 7, utcMinutes = 7;
    local.GetTimeZoneOffset(hours, minutes);
    utc.GetTimeZoneOffset(utcHours, utcMinutes);
    EXPECT_EQ(std::make_tuple(local.GetTimeZoneOffset().GetTicks(), hours, minutes, local.GetTimeZoneOffsetHours()),
              std::make_tuple(c.ticks, c.hours, c.minutes, c.inHours)) << c.zone;
    EXPECT_TRUE(utc.GetTimeZoneOffset().GetTicks() == 0 && utcHours == 0 && utcMinutes == 0);
  }
}

TEST(Time, CalendarHelpers) {
  EXPECT_FALSE(Time::IsLeapYear(1900) || Time::IsLeapYear(2100) || Time::IsLeapYear(2001));
  EXPECT_TRUE(Time::IsLeapYear(2000) && Time::IsLeapYear(2004));
  const struct { unsigned short year, month, day, result; } cases[] = {
      {2000, 12, 0, 366}, {1900, 12, 0, 365}, {2000, 2, 1, 61}, {2001, 2, 1, 60},
      {2000, 0, 1, 1},    {2000, 13, 1, 65535}, {2001, 12, 65535, 364}};  // the day is added as it comes
  for (const auto& c : cases) EXPECT_EQ(Time::GetYearDay(c.year, c.month, c.day), c.result) << c.year << "-" << c.month;
}

TEST(Time, ClocksGiveNowInBothKinds) {
  ZoneGuard zone(zoneWest0530);
  const std::uint64_t before = epochTicks + static_cast<std::uint64_t>(::time(nullptr)) * 10000000u;
  const Time utc = Time::NowUtc(), local = Time::NowLocal(), byKind(TimeKind::Local), byDefault;
  const std::uint64_t after = epochTicks + static_cast<std::uint64_t>(::time(nullptr) + 1) * 10000000u;
  EXPECT_TRUE(utc.IsUtc() && TicksOf(utc) >= before && TicksOf(utc) < after);
  EXPECT_TRUE(local.IsLocal() && TicksOf(local) % 10000 == 0);  // whole milliseconds
  EXPECT_TRUE(TicksOf(local) >= before + west0530 && TicksOf(local) < after + west0530);
  EXPECT_TRUE(byKind.IsLocal() && byDefault.IsLocal() && Time(TimeKind::Utc).IsUtc());
  EXPECT_TRUE((byDefault - utc).GetTicks() < 10000000 && (byDefault - utc).GetTicks() >= -10000);
}

}  // namespace
