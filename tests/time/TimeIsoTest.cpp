// ISO 8601 texts: every flag, zones, and the tolerant parser.
#include <tessera/time/Time.h>

#include <cstdint>
#include <iomanip>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "ZoneGuard.h"

namespace {

using Tessera::Time;
using Tessera::TimeKind;
using Tessera::TimeSpan;

std::uint64_t TicksOf(const Time& time) {
  Win32::FILETIME value;
  time.Render(value);
  return (static_cast<std::uint64_t>(value.dwHighDateTime) << 32) | value.dwLowDateTime;
}

std::string Iso(const Time& time, std::int32_t flags) {
  std::string out = "previous";
  time.FormatIso(out, flags);
  return out;
}

std::string Streamed(const Time& time, std::int32_t flags) {
  std::ostringstream stream;
  time.OutputIso(stream, flags);
  return stream.str();
}

TEST(TimeIsoFormat, EachFlagTakesItsPieceAway) {
  using namespace Tessera;
  const Time time(2008, 11, 12, 12, 34, 56, 789, TimeKind::Utc);
  const struct {
    std::int32_t flags;
    const char* text;
  } cases[] = {
      {0, "2008-11-12T12:34:56.789Z"},
      {TimeFormatNoFraction, "2008-11-12T12:34:56Z"},
      {TimeFormatNoSeconds, "2008-11-12T12:34Z"},
      {TimeFormatNoSeconds | TimeFormatNoFraction, "2008-11-12T12:34Z"},
      {TimeFormatNoZone, "2008-11-12T12:34:56.789"},
      {TimeFormatSpaceSeparator, "2008-11-12 12:34:56.789Z"},
      {TimeFormatShortZone, "2008-11-12T12:34:56.789Z"},
      {TimeFormatCompact, "20081112T123456.789Z"},
      {TimeFormatCompact | TimeFormatNoFraction | TimeFormatSpaceSeparator, "20081112 123456Z"},
      {TimeFormatCompact | TimeFormatNoSeconds | TimeFormatNoZone, "20081112T1234"},
      {TimeFormatNoTime, "2008-11-12"},
      {TimeFormatNoTime | TimeFormatCompact | TimeFormatSpaceSeparator, "20081112"},
      {TimeFormatNoDate, "12:34:56.789Z"},
      {TimeFormatNoDate | TimeFormatNoSeconds, "12:34Z"},
      {TimeFormatNoDate | TimeFormatCompact | TimeFormatNoZone, "123456.789"},
      {TimeFormatNoDate | TimeFormatNoTime, ""},
      {TimeFormatTwoDigitYear | TimeFormatGmtZone | 0x7000, "2008-11-12T12:34:56.789Z"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Iso(time, c.flags), c.text) << std::hex << c.flags;
    EXPECT_EQ(Streamed(time, c.flags), c.text) << std::hex << c.flags;
  }

  std::string out = "previous";
  time.FormatIsoDate(out);
  EXPECT_EQ(out, "2008-11-12");
  time.FormatIsoTime(out, 0);
  EXPECT_EQ(out, "12:34:56.789Z");
  time.FormatIsoTime(out, TimeFormatNoSeconds);
  EXPECT_EQ(out, "12:34Z");
  time.FormatIsoTime(out, TimeFormatNoTime | TimeFormatNoFraction);
  EXPECT_EQ(out, "12:34:56Z");

  EXPECT_EQ(Iso(Time(1601, 1, 2, 3, 4, 5, 6, TimeKind::Utc), 0), "1601-01-02T03:04:05.006Z");
  EXPECT_EQ(Iso(Time(30827, 12, 31, 23, 59, 59, 999, TimeKind::Utc), TimeFormatCompact),
            "308271231T235959.999Z");
}

TEST(TimeIsoFormat, LocalTimesEndInTheirOffset) {
  using namespace Tessera;
  {
    ZoneGuard zone(zoneWest0530);
    const Time local(2008, 11, 12, 12, 34, 56, 789, TimeKind::Local);
    EXPECT_EQ(Iso(local, 0), "2008-11-12T12:34:56.789-05:30");
    EXPECT_EQ(Iso(local, TimeFormatCompact), "20081112T123456.789-05:30");
    EXPECT_EQ(Iso(local, TimeFormatShortZone), "2008-11-12T12:34:56.789-05:30");
    EXPECT_EQ(Streamed(local, TimeFormatCompact), "20081112T123456.789-05:30");
  }
  {
    ZoneGuard zone(zoneWest0500);
    const Time local(2008, 11, 12, 12, 34, 56, 789, TimeKind::Local);
    EXPECT_EQ(Iso(local, 0), "2008-11-12T12:34:56.789-05:00");
    EXPECT_EQ(Iso(local, TimeFormatShortZone), "2008-11-12T12:34:56.789-05");
    EXPECT_EQ(Streamed(local, TimeFormatShortZone | TimeFormatNoSeconds), "2008-11-12T12:34-05");
  }
  {
    ZoneGuard zone(zoneEast0100);
    EXPECT_EQ(Iso(Time(2008, 11, 12, TimeKind::Local), TimeFormatNoFraction), "2008-11-12T00:00:00+01:00");
    // The stored ticks are written as they are, whatever the kind.
    EXPECT_EQ(Iso(Time(2008, 11, 12, TimeKind::Utc), 0), "2008-11-12T00:00:00.000Z");
  }
  ZoneGuard zone(zoneWest0030);
  EXPECT_EQ(Iso(Time(2008, 11, 12, TimeKind::Local), TimeFormatShortZone), "2008-11-12T00:00:00.000-00:30");
}

TEST(TimeIsoFormat, StreamKeepsTheZeroFillAndItsOtherText) {
  std::ostringstream stream;
  stream << "at " << std::setw(6) << 42 << ' ';
  Time(2008, 1, 2, 3, 4, 5, 6, TimeKind::Utc).OutputIso(stream, Tessera::TimeFormatNoZone);
  stream << ' ' << std::setw(4) << 7;
  EXPECT_EQ(stream.str(), "at     42 2008-01-02T03:04:05.006 0007");
  EXPECT_EQ(stream.fill(), '0');
}

// Milliseconds since 1970 of a parse in UTC, or -1 when it refuses (then the time must be
// unchanged).
std::int64_t Parsed(const std::string& text) {
  const Time before(std::int64_t{-86400}, TimeKind::Local);
  Time time = before;
  if (!time.ParseIso(text)) {
    EXPECT_EQ(TicksOf(time), TicksOf(before)) << text;
    EXPECT_TRUE(time.IsLocal()) << text;
    return -1;
  }
  EXPECT_TRUE(time.IsUtc()) << text;
  return (static_cast<std::int64_t>(TicksOf(time)) - 116444736000000000) / 10000;
}

constexpr std::int64_t noon = 1226491200000;  // 2008-11-12 12:00:00 UTC, in milliseconds

TEST(TimeIsoParse, ExtendedBasicAndMixedForms) {
  const std::int64_t clock = noon + 2096000;  // 12:34:56
  EXPECT_EQ(Parsed("2008-11-12T12:34:56.789Z"), clock + 789);
  EXPECT_EQ(Parsed("20081112T123456.789Z"), clock + 789);
  EXPECT_EQ(Parsed("2008-11-12 12:34"), noon + 2040000);
  EXPECT_EQ(Parsed("2008-11-12_12:34:56.1"), clock + 100);
  EXPECT_EQ(Parsed("2008-11-12"), noon - 43200000);
  EXPECT_EQ(Parsed("2008-11-12T"), noon - 43200000);
  EXPECT_EQ(Parsed("  2008-11-12 _T "), noon - 43200000);
  EXPECT_EQ(Parsed("2008-1112"), noon - 43200000);
  EXPECT_EQ(Parsed("200811-12T1234"), noon + 2040000);
  EXPECT_EQ(Parsed("2008-11-12T12:34:56.12"), clock + 120);
  EXPECT_EQ(Parsed("2008-11-12T12:34:56.123456"), clock + 123);
  EXPECT_EQ(Parsed("2008-11-12T12:34:56.999999Z"), clock + 999);  // cut, not rounded
  EXPECT_EQ(Parsed("2008-11-12T12:34:56123"), clock + 123);       // the "." may be left out
  EXPECT_EQ(Parsed("2008-11-12T12:34:56.000 garbage"), clock);
  EXPECT_EQ(Parsed("2008-11-12T+2:34"), noon - 36000000 + 2040000);  // fields read as numbers

  EXPECT_EQ(Parsed(""), -1);
  EXPECT_EQ(Parsed("2008-11"), -1);
  EXPECT_EQ(Parsed("2008-1-2"), -1);
  EXPECT_EQ(Parsed("2008-13-01"), -1);
  EXPECT_EQ(Parsed("2008-00-01"), -1);
  EXPECT_EQ(Parsed("2008-11-32"), -1);
  EXPECT_EQ(Parsed("2008-11-00"), -1);
  EXPECT_EQ(Parsed("2008-11-123"), -1);
  EXPECT_EQ(Parsed("2008-02-30"), -1);            // refused by the calendar
  EXPECT_EQ(Parsed("1600-12-31"), -1);
  EXPECT_EQ(Parsed("2008-11-12T23:59:60"), -1);
  EXPECT_EQ(Parsed("2008-11-12T24:00"), -1);
  EXPECT_EQ(Parsed("2008-11-12T12:60"), -1);
  EXPECT_EQ(Parsed("2008-11-12T12:34:61"), -1);
  EXPECT_EQ(Parsed("2008-11-12T12Z"), -1);        // an hour alone
  EXPECT_EQ(Parsed("2008-11-12T12"), -1);
  EXPECT_EQ(Parsed("2008-11-12T12:3"), -1);
  EXPECT_EQ(Parsed("2008-11-12T12:34:"), -1);
  EXPECT_EQ(Parsed("2008-11-12T12:34:5"), -1);
  EXPECT_EQ(Parsed("2008-11-12T12:34:+5"), -1);   // seconds are two plain digits
  EXPECT_EQ(Parsed("2008-11-12T12:34:56."), -1);
  EXPECT_EQ(Parsed("2008-11-12T12:34:56.Z"), -1);
  EXPECT_EQ(Parsed("2008-11-12T12:34:56.1x"), -1);
  EXPECT_EQ(Parsed("2008-11-12t12:34"), -1);      // a lower-case "t" belongs to the date
}

TEST(TimeIsoParse, ZonesAreTakenOff) {
  const std::int64_t hour = 3600000;
  EXPECT_EQ(Parsed("2008-11-12T12:00:00.000+05:00"), noon - 5 * hour);
  EXPECT_EQ(Parsed("2008-11-12T12:00:00.000+05"), noon - 5 * hour);
  EXPECT_EQ(Parsed("2008-11-12T12:00:00.000+0500"), noon - 5 * hour);
  EXPECT_EQ(Parsed("2008-11-12T12:00:00.000-05:30"), noon + 5 * hour + 1800000);
  EXPECT_EQ(Parsed("2008-11-12T12:00:00.000-00:30"), noon + 1800000);
  EXPECT_EQ(Parsed("2008-11-12T12:00:00.000+99:59"), noon - 99 * hour - 59 * 60000);
  EXPECT_EQ(Parsed("2008-11-12T12:00:00z"), noon);
  EXPECT_EQ(Parsed("2008-11-12T12:00:00+05junk"), noon - 5 * hour);  // ignored without ":"
  EXPECT_EQ(Parsed("2008-11-12T12:00:00+05:3"), -1);
  EXPECT_EQ(Parsed("2008-11-12T12:00:00.000+05:"), -1);
  EXPECT_EQ(Parsed("2008-11-12T12:00:00+05:60"), -1);
  EXPECT_EQ(Parsed("2008-11-12T12:00:00+0560"), -1);
  EXPECT_EQ(Parsed("2008-11-12T12:00:00+5"), -1);
  EXPECT_EQ(Parsed("2008-11-12T12:00:00+-5:00"), -1);
  EXPECT_EQ(Parsed("2008-11-12T12:00:00X"), -1);
  EXPECT_EQ(Parsed("2008-11-12T12:00:00Zulu"), -1);

  // A zone straight behind the seconds or the minutes.
  EXPECT_EQ(Parsed("2008-11-12T12:34:56Z"), noon + 2096000);
  EXPECT_EQ(Parsed("2008-11-12T12:34:56+05:00"), noon + 2096000 - 5 * hour);
  EXPECT_EQ(Parsed("20081112T123456Z"), noon + 2096000);
  EXPECT_EQ(Parsed("2008-11-12T12:34+05:00"), noon + 2040000 - 5 * hour);
  EXPECT_EQ(Parsed("2008-11-12T12:34+0500"), noon + 2040000 - 5 * hour);
  EXPECT_EQ(Parsed("2008-11-12T12:34-05:00"), noon + 2040000 + 5 * hour);
  EXPECT_EQ(Parsed("2008-11-12T1234Z"), noon + 2040000);
  EXPECT_EQ(Parsed("2008-11-12T12:34:Z"), -1);
}

TEST(TimeIsoParse, ReadsBackEveryTextWithDateAndTime) {
  using namespace Tessera;
  const std::int32_t pieces[] = {TimeFormatNoZone,         TimeFormatNoFraction, TimeFormatNoSeconds,
                                 TimeFormatSpaceSeparator, TimeFormatShortZone,  TimeFormatCompact};
  for (const char* zoneText : {zoneWest0530, zoneEast0100, zoneWest0500}) {
    ZoneGuard zone(zoneText);
    for (const Time& time : {Time(2008, 11, 12, 12, 34, 56, 789, TimeKind::Local),
                             Time(1601, 1, 2, 0, 0, 0, 1, TimeKind::Utc),
                             Time(9999, 12, 31, 23, 59, 59, 999, TimeKind::Local)}) {
      for (std::int32_t set = 0; set < 64; ++set) {
        std::int32_t flags = 0;
        for (int bit = 0; bit < 6; ++bit) {
          if ((set & (1 << bit)) != 0) flags |= pieces[bit];
        }
        std::string text;
        time.FormatIso(text, flags);
        Time back(0, TimeKind::Local);
        ASSERT_TRUE(back.ParseIso(text)) << text;
        // What the flags leave out is lost; the zone, when written, is taken off.
        Time expected = time;
        Win32::SYSTEMTIME fields;
        time.Render(fields);
        if ((flags & TimeFormatNoSeconds) != 0) {
          expected -= TimeSpan(fields.wSecond * TimeSpan::second.GetTicks() + fields.wMilliseconds * TimeSpan::millisecond.GetTicks());
        } else if ((flags & TimeFormatNoFraction) != 0) {
          expected -= TimeSpan(fields.wMilliseconds * TimeSpan::millisecond.GetTicks());
        }
        if ((flags & TimeFormatNoZone) != 0) expected.SetKind(TimeKind::Utc);
        EXPECT_EQ((back - expected).GetTicks(), 0) << text;
      }
    }
  }
}

}  // namespace
