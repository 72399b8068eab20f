// ISO 8601 texts: every flag, zones, and the tolerant parser.
#include <tessera/time/Time.h>

#include <iomanip>
#include <sstream>

#include "TimeTesting.h"

namespace {

using Tessera::Time;
using Tessera::TimeKind;

constexpr std::int32_t noZone = Tessera::TimeFormatNoZone, noFraction = Tessera::TimeFormatNoFraction,
                       noSeconds = Tessera::TimeFormatNoSeconds, space = Tessera::TimeFormatSpaceSeparator,
                       shortZone = Tessera::TimeFormatShortZone, noDate = Tessera::TimeFormatNoDate,
                       noTime = Tessera::TimeFormatNoTime, compact = Tessera::TimeFormatCompact;

std::string Iso(const Time& time, std::int32_t flags) {
  std::string out = "previous";
  time.FormatIso(out, flags);
  return out;
}

TEST(TimeIsoFormat, EachFlagTakesItsPieceAwayAndLocalTimesShowTheirOffset) {
  const Time time(2008, 11, 12, 12, 34, 56, 789, TimeKind::Utc);
  const struct { std::int32_t flags; const char* text; } cases[] = {
      {0, "2008-11-12T12:34:56.789Z"},       {noFraction, "2008-11-12T12:34:56Z"}, {noSeconds, "2008-11-12T12:34Z"},
      {noSeconds | noFraction, "2008-11-12T12:34Z"},    {noZone, "2008-11-12T12:34:56.789"},
      {space, "2008-11-12 12:34:56.789Z"},   {shortZone, "2008-11-12T12:34:56.789Z"},
      {compact, "20081112T123456.789Z"},     {compact | noFraction | space, "20081112 123456Z"},
      {compact | noSeconds | noZone, "20081112T1234"},  {noTime, "2008-11-12"}, {noTime | compact | space, "20081112"},
      {noDate, "12:34:56.789Z"},             {noDate | noSeconds, "12:34Z"}, {noDate | compact | noZone, "123456.789"},
      {noDate | noTime, ""},                 {Tessera::TimeFormatTwoDigitYear | Tessera::TimeFormatGmtZone | 0x7000,
                                              "2008-11-12T12:34:56.789Z"}};
  for (const auto& c : cases) EXPECT_EQ(Iso(time, c.flags), c.text) << std::hex << c.flags;

  std::string date = "previous", clock = "previous", clockOnly = "previous";
  time.FormatIsoDate(date);
  time.FormatIsoTime(clock, noSeconds);
  time.FormatIsoTime(clockOnly, noTime | noFraction);  // the time, whatever the flags
  EXPECT_EQ(date + " " + clock + " " + clockOnly, "2008-11-12 12:34Z 12:34:56Z");
  EXPECT_EQ(Iso(Time(1601, 1, 2, 3, 4, 5, 6, TimeKind::Utc), 0), "1601-01-02T03:04:05.006Z");
  EXPECT_EQ(Iso(Time(30827, 12, 31, 23, 59, 59, 999, TimeKind::Utc), compact), "308271231T235959.999Z");

  std::ostringstream stream;  // the stream's own text and width survive; its fill becomes '0'
  stream << "at " << std::setw(6) << 42 << ' ';
  Time(2008, 1, 2, 3, 4, 5, 6, TimeKind::Utc).OutputIso(stream, noZone);
  stream << ' ' << std::setw(4) << 7;
  EXPECT_EQ(stream.str(), "at     42 2008-01-02T03:04:05.006 0007");

  // Local times end in the offset in force; UTC ones keep their stored ticks under any zone.
  const struct { const char* zone; std::int32_t flags; const char* text; } locals[] = {
      {zoneWest0530, 0, "2008-11-12T12:34:56.789-05:30"},  {zoneWest0530, compact, "20081112T123456.789-05:30"},
      {zoneWest0530, shortZone, "2008-11-12T12:34:56.789-05:30"},
      {zoneWest0500, 0, "2008-11-12T12:34:56.789-05:00"},  {zoneWest0500, shortZone, "2008-11-12T12:34:56.789-05"},
      {zoneWest0500, shortZone | noSeconds, "2008-11-12T12:34-05"},
      {zoneEast0100, noFraction, "2008-11-12T12:34:56+01:00"},
      {zoneWest0030, shortZone, "2008-11-12T12:34:56.789-00:30"}};
  for (const auto& c : locals) {
    ZoneGuard zone(c.zone);
    EXPECT_EQ(Iso(Time(2008, 11, 12, 12, 34, 56, 789, TimeKind::Local), c.flags), c.text);
    EXPECT_EQ(Iso(time, 0), "2008-11-12T12:34:56.789Z");
  }
}

constexpr std::int64_t noon = 1226491200000, hour = 3600000;  // 2008-11-12 12:00:00 UTC, ms
constexpr std::int64_t clock = noon + 2096000, midnight = noon - 43200000;  // 12:34:56, 00:00

// What the formats write reads back in the fuzz target (ParseIsoFuzz); here the other forms.
TEST(TimeIsoParse, ExtendedBasicAndMixedForms) {
  Expect(&Time::ParseIso, 1, {
      {"2008-11-12", midnight}, {"2008-11-12_12:34:56.1", clock + 100}, {"2008-11-12T", midnight},
      {"  2008-11-12 _T ", midnight}, {"2008-1112", midnight}, {"200811-12T1234", noon + 2040000},
      {"2008-11-12T12:34:56.12", clock + 120}, {"2008-11-12T12:34:56.123456", clock + 123},
      {"2008-11-12T12:34:56.999999Z", clock + 999},  // cut, not rounded
      {"2008-11-12T12:34:56123", clock + 123},       // the "." may be left out
      {"2008-11-12T12:34:56.000 garbage", clock}, {"2008-11-12T+2:34", midnight + 2 * hour + 2040000}});
  ExpectRefused(&Time::ParseIso, {
      "", "2008-11", "2008-1-2", "2008-13-01", "2008-11-32", "2008-11-123", "2008-02-30", "1600-12-31",
      "2008-11-12T23:59:60", "2008-11-12T24:00", "2008-11-12T12:60", "2008-11-12T12", "2008-11-12T12:3",
      "2008-11-12T12:34:5", "2008-11-12T12:34:+5", "2008-11-12T12:34:56.", "2008-11-12T12:34:56.1x",
      "2008-11-12t12:34"});  // a lower-case "t" belongs to the date
}

TEST(TimeIsoParse, ZonesAreTakenOff) {
  const std::int64_t clock34 = noon + 2040000;  // 12:34
  Expect(&Time::ParseIso, 1, {
      {"12:00:00.000+05:00", noon - 5 * hour}, {"12:00:00.000+05", noon - 5 * hour}, {"12:00:00z", noon},
      {"12:00:00.000+0500", noon - 5 * hour}, {"12:00:00.000-05:30", noon + 5 * hour + 1800000},
      {"12:00:00.000-00:30", noon + 1800000},
      {"12:00:00.000+99:59", noon - 99 * hour - 3540000}, {"12:00:00+05junk", noon - 5 * hour},  // ignored without ":"
      // Straight behind the seconds or the minutes.
      {"12:34:56Z", clock}, {"12:34:56+05:00", clock - 5 * hour}, {"12:34-05:00", clock34 + 5 * hour},
      {"1234Z", clock34}}, "2008-11-12T");
  ExpectRefused(&Time::ParseIso, {"12:00:00+05:3", "12:00:00+05:60", "12:00:00+5", "12:00:00+-5:00", "12:00:00X",
                                  "12:00:00Zulu", "12:34:Z"}, "2008-11-12T");
}

}  // namespace
