// RFC 822/1123, RFC 850, asctime and HTTP date texts.
#include <tessera/time/Time.h>

#include "TimeTesting.h"

namespace {

using Tessera::Time;
using Tessera::TimeKind;

using Format = void (Time::*)(std::string&) const;
const Format rfc822 = nullptr, rfc1123 = &Time::FormatRfc1123, http = &Time::FormatHttp,
             rfc850 = &Time::FormatRfc850, asctime = &Time::FormatAscTime;

// `rfc822` stands for FormatRfc822 with `flags`.
std::string Text(const Time& time, Format format, std::int32_t flags = 0) {
  std::string out = "previous";
  format == rfc822 ? time.FormatRfc822(out, flags) : (time.*format)(out);
  return out;
}

// Local rows show their wall clock and the offset in force; stored ticks are never shifted.
TEST(TimeInternetFormat, ExactTexts) {
  using namespace Tessera;
  const Time time(2008, 11, 12, 12, 34, 56, 0, TimeKind::Utc), early(2006, 11, 5, 8, 9, 7, 999, TimeKind::Utc);
  const Time old(1601, 1, 1, TimeKind::Utc), late(30827, 12, 31, 23, 59, 59, 999, TimeKind::Utc);
  const Time west(2008, 11, 12, 12, 34, 0, 0, TimeKind::Local), east(2008, 11, 12, 0, 30, 0, 0, TimeKind::Local);
  const char* const utc = zoneWest0530;  // UTC rows under a zone that must not show
  const struct { const char* zone; const Time& time; Format format; std::int32_t flags; const char* text; } cases[] = {
      {utc, time, rfc1123, 0, "Wed, 12 Nov 2008 12:34:56 +0000"}, {utc, time, http, 0, "Wed, 12 Nov 2008 12:34:56 GMT"},
      {utc, time, rfc850, 0, "Wednesday, 12-Nov-08 12:34:56 GMT"}, {utc, time, asctime, 0, "Wed Nov 12 12:34:56 2008"},
      {utc, time, rfc822, TimeFormatTwoDigitYear, "Wed, 12 Nov 08 12:34:56 +0000"},
      {utc, time, rfc822, TimeFormatGmtZone, "Wed, 12 Nov 2008 12:34:56 GMT"},
      {utc, time, rfc822, TimeFormatGmtZone | TimeFormatTwoDigitYear | 0x7FF0, "Wed, 12 Nov 08 12:34:56 GMT"},
      {utc, early, rfc1123, 0, "Sun, 5 Nov 2006 08:09:07 +0000"}, {utc, early, asctime, 0, "Sun Nov 05 08:09:07 2006"},
      {utc, early, rfc850, 0, "Sunday, 05-Nov-06 08:09:07 GMT"},
      // Outside the 1970 to 3000 of _gmtime64_s the true fields are written.
      {utc, old, http, 0, "Mon, 1 Jan 1601 00:00:00 GMT"}, {utc, old, rfc850, 0, "Monday, 01-Jan-01 00:00:00 GMT"},
      {utc, old, asctime, 0, "Mon Jan 01 00:00:00 1601"}, {utc, late, http, 0, "Fri, 31 Dec 30827 23:59:59 GMT"},
      {utc, late, asctime, 0, "Fri Dec 31 23:59:59 30827"}, {utc, late, rfc850, 0, "Friday, 31-Dec-27 23:59:59 GMT"},
      {utc, Time(1969, 12, 31, 23, 59, 59, 0, TimeKind::Utc), http, 0, "Wed, 31 Dec 1969 23:59:59 GMT"},
      {zoneWest0530, west, rfc1123, 0, "Wed, 12 Nov 2008 12:34:00 -0530"},
      {zoneWest0530, west, rfc822, TimeFormatGmtZone, "Wed, 12 Nov 2008 12:34:00 -0530"},
      {zoneWest0530, west, rfc850, 0, "Wednesday, 12-Nov-08 12:34:00 -0530"},
      {zoneWest0530, west, http, 0, "Wed, 12 Nov 2008 18:04:00 GMT"},
      {zoneWest0530, west, asctime, 0, "Wed Nov 12 12:34:00 2008"},
      {zoneEast0100, east, rfc1123, 0, "Wed, 12 Nov 2008 00:30:00 +0100"},
      {zoneEast0100, east, http, 0, "Tue, 11 Nov 2008 23:30:00 GMT"},
      {zoneWest0030, Time(2008, 11, 12, TimeKind::Local), rfc1123, 0, "Wed, 12 Nov 2008 00:00:00 -0030"}};
  for (const auto& c : cases) {
    ZoneGuard zone(c.zone);
    EXPECT_EQ(Text(c.time, c.format, c.flags), c.text) << c.zone;
  }
}

constexpr std::int64_t noon = 1226491200, sunday = 784111777;  // 2008-11-12 12:00, 1994-11-06 08:49:37

TEST(TimeInternetParse, Rfc822ToleratesWhatMailWrites) {
  Expect(&Time::ParseRfc822, 1000, {
      {"Wed, 12 Nov 2008 12:34:56 GMT", noon + 2096}, {"12 Nov 2008 12:34:56 GMT", noon + 2096},
      {"wed , 12 nov 2008 12:34 gmt", noon + 2040}, {"Wed,12 Nov 2008 12:34:56", noon + 2096},
      {"  Mon ,, \t 12\tNov   2008 12:34:56 +0000", noon + 2096},  // the weekday is not checked
      {"Wed, 5 Nov 2008 00:00:00", noon - 7 * 86400 - 43200}, {"12 Nov 2008 12:34:xx", noon + 2040},
      {"12 Nov 2008 12:34:56:99 GMT", noon + 2096}, {"12 Nov 2008 12::34 GMT", noon + 2040},
      {"12 Nov 2008 12:00:00 GMT (comment)", noon}, {"12 Nov 49 00:00:00", 2520288000},
      {"12 Nov 50 00:00:00", -603936000}, {"12 Nov 0 00:00:00", 973987200},
      {"12 Nov 67544 12:00:00", noon}});  // 16 bits: 2008
  ExpectRefused(&Time::ParseRfc822, {
      "12 Nov 100 00:00:00", "Wed 12 Nov 2008 12:34:56 GMT", "Xyz, 12 Nov 2008 12:34:56 GMT", "", "12 Nov 2008",
      "32 Nov 2008 00:00:00", "12 November 2008 00:00:00", "12 Nov -2008 00:00:00", "12 Nov 2008 24:00:00",
      "12 Nov 2008 12:60:00", "12 Nov 2008 12", "31 Feb 2008 00:00:00", "12 Nov 2008 23:59:60"});
}

TEST(TimeInternetParse, ZonesByNumberLetterAndName) {
  // Seconds since 1970: noon less the offset east of Greenwich.
  // Not the name table row by row: its ends, case, and the letters around the gap at J.
  Expect(&Time::ParseRfc822, 1000, {
      {"+0100", noon - 3600}, {"-0530", noon + 19800}, {"0530", noon - 19800}, {"+530", noon - 19800},
      {"-0059", noon + 3540}, {"+9959", noon - 359940},
      {"UT", noon},            {"gmt", noon},           {"EST", noon + 5 * 3600}, {"PDT", noon + 7 * 3600},
      {"A", noon - 3600},      {"i", noon - 9 * 3600},  {"K", noon - 10 * 3600}, {"M", noon - 12 * 3600},
      {"N", noon + 3600},      {"y", noon + 12 * 3600}, {"z", noon}}, "12 Nov 2008 12:00:00 ");
  ExpectRefused(&Time::ParseRfc822, {"J", "j", "+01:00", "+0160", "XYZ", "+01", "1", "+010000", "GMTX", "EST5"},
                "12 Nov 2008 12:00:00 ");
}

TEST(TimeInternetParse, Rfc850AscTimeAndHttp) {
  Expect(&Time::ParseRfc850, 1000, {{"Sunday, 06-Nov-94 08:49:37 GMT", sunday},
                                    {"sunday,06-nov-1994 08:49:37", sunday},
                                    {"Sunday,  \t06-Nov-94 09:49:37 +0100", sunday}});
  ExpectRefused(&Time::ParseRfc850, {"Sun, 06-Nov-94 08:49:37 GMT", "Sunday , 06-Nov-94 08:49:37 GMT",
      "Sunday 06-Nov-94 08:49:37 GMT", "Sunday, 06-November-94 08:49:37 GMT", "Sunday, 31-Nov-94 08:49:37 GMT"});
  Expect(&Time::ParseAscTime, 1000, {{"Sun Nov  6 08:49:37 1994", sunday}, {"Sun Nov 06 08:49:37 1994 and", sunday},
                                     {"SUN NOV 6 08:49 94", sunday - 37},
                                     {"Sun Nov 6 08:49:37 -6", sunday}});  // 2000 - 6
  ExpectRefused(&Time::ParseAscTime, {"Sunday Nov 6 08:49:37 1994", "Sun, Nov 6 08:49:37 1994", "Sun Nov 6 08:49:37",
                                      "Sun Nov 6 08:49:37 1994x"});
  Expect(&Time::ParseHttp, 1000, {{"Sun, 06 Nov 1994 08:49:37 GMT", sunday},
                                  {"Sunday, 06-Nov-94 08:49:37 GMT", sunday}, {"Sun Nov  6 08:49:37 1994", sunday}});
  ExpectRefused(&Time::ParseHttp, {"garbage", "Sun, 06 Nov 1994 08:49:60 GMT"});
}

}  // namespace
