// RFC 822/1123, RFC 850, asctime and HTTP date texts.
#include <tessera/time/Time.h>

#include <cstdint>
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

std::string Rfc822(const Time& time, std::int32_t flags) {
  std::string out = "previous";
  time.FormatRfc822(out, flags);
  return out;
}

template <class Format>
std::string Text(const Time& time, Format format) {
  std::string out = "previous";
  (time.*format)(out);
  return out;
}

TEST(TimeInternetFormat, ExactTextsOfEachFormat) {
  const Time time(2008, 11, 12, 12, 34, 56, 0, TimeKind::Utc);
  EXPECT_EQ(Text(time, &Time::FormatRfc1123), "Wed, 12 Nov 2008 12:34:56 +0000");
  EXPECT_EQ(Text(time, &Time::FormatHttp), "Wed, 12 Nov 2008 12:34:56 GMT");
  EXPECT_EQ(Rfc822(time, Tessera::TimeFormatTwoDigitYear), "Wed, 12 Nov 08 12:34:56 +0000");
  EXPECT_EQ(Rfc822(time, Tessera::TimeFormatGmtZone), "Wed, 12 Nov 2008 12:34:56 GMT");
  EXPECT_EQ(Rfc822(time, Tessera::TimeFormatGmtZone | Tessera::TimeFormatTwoDigitYear | 0x7FF0),
            "Wed, 12 Nov 08 12:34:56 GMT");
  EXPECT_EQ(Text(time, &Time::FormatRfc850), "Wednesday, 12-Nov-08 12:34:56 GMT");
  EXPECT_EQ(Text(time, &Time::FormatAscTime), "Wed Nov 12 12:34:56 2008");

  const Time early(2006, 11, 5, 8, 9, 7, 999, TimeKind::Utc);
  EXPECT_EQ(Text(early, &Time::FormatRfc1123), "Sun, 5 Nov 2006 08:09:07 +0000");
  EXPECT_EQ(Text(early, &Time::FormatRfc850), "Sunday, 05-Nov-06 08:09:07 GMT");
  EXPECT_EQ(Text(early, &Time::FormatAscTime), "Sun Nov 05 08:09:07 2006");

  // Every weekday and month name.
  const char* const expected[] = {
      "Thu, 1 Jan 2009 00:00:00 GMT", "Sun, 1 Feb 2009 00:00:00 GMT", "Sun, 1 Mar 2009 00:00:00 GMT",
      "Wed, 1 Apr 2009 00:00:00 GMT", "Fri, 1 May 2009 00:00:00 GMT", "Mon, 1 Jun 2009 00:00:00 GMT",
      "Wed, 1 Jul 2009 00:00:00 GMT", "Sat, 1 Aug 2009 00:00:00 GMT", "Tue, 1 Sep 2009 00:00:00 GMT",
      "Thu, 1 Oct 2009 00:00:00 GMT", "Sun, 1 Nov 2009 00:00:00 GMT", "Tue, 1 Dec 2009 00:00:00 GMT"};
  for (unsigned month = 1; month <= 12; ++month) {
    EXPECT_EQ(Text(Time(2009, month, 1, TimeKind::Utc), &Time::FormatHttp), expected[month - 1]);
  }
  const char* const longNames[] = {"Thursday", "Friday", "Saturday", "Sunday", "Monday", "Tuesday", "Wednesday"};
  for (unsigned day = 1; day <= 7; ++day) {
    const std::string text = Text(Time(2009, 1, day, TimeKind::Utc), &Time::FormatRfc850);
    EXPECT_EQ(text.substr(0, text.find(',')), longNames[day - 1]);
  }
}

TEST(TimeInternetFormat, LocalTimesShowTheirWallClockAndOffset) {
  {
    ZoneGuard zone(zoneWest0530);
    const Time local(2008, 11, 12, 12, 34, 56, 0, TimeKind::Local);
    EXPECT_EQ(Text(local, &Time::FormatRfc1123), "Wed, 12 Nov 2008 12:34:56 -0530");
    EXPECT_EQ(Rfc822(local, Tessera::TimeFormatGmtZone), "Wed, 12 Nov 2008 12:34:56 -0530");
    EXPECT_EQ(Text(local, &Time::FormatRfc850), "Wednesday, 12-Nov-08 12:34:56 -0530");
    EXPECT_EQ(Text(local, &Time::FormatHttp), "Wed, 12 Nov 2008 18:04:56 GMT");
    EXPECT_EQ(Text(local, &Time::FormatAscTime), "Wed Nov 12 12:34:56 2008");
  }
  {
    ZoneGuard zone(zoneEast0100);
    const Time local(2008, 11, 12, 0, 30, 0, 0, TimeKind::Local);
    EXPECT_EQ(Text(local, &Time::FormatRfc1123), "Wed, 12 Nov 2008 00:30:00 +0100");
    EXPECT_EQ(Text(local, &Time::FormatHttp), "Tue, 11 Nov 2008 23:30:00 GMT");
  }
  ZoneGuard zone(zoneWest0030);
  EXPECT_EQ(Text(Time(2008, 11, 12, TimeKind::Local), &Time::FormatRfc1123), "Wed, 12 Nov 2008 00:00:00 -0030");
}

TEST(TimeInternetFormat, YearsOutsideTheRuntimeRangeKeepTheirTrueFields) {
  const Time old(1601, 1, 1, 0, 0, 0, 0, TimeKind::Utc);
  EXPECT_EQ(Text(old, &Time::FormatHttp), "Mon, 1 Jan 1601 00:00:00 GMT");
  EXPECT_EQ(Rfc822(old, Tessera::TimeFormatTwoDigitYear), "Mon, 1 Jan 01 00:00:00 +0000");
  EXPECT_EQ(Text(old, &Time::FormatRfc850), "Monday, 01-Jan-01 00:00:00 GMT");
  EXPECT_EQ(Text(old, &Time::FormatAscTime), "Mon Jan 01 00:00:00 1601");
  const Time before(1969, 12, 31, 23, 59, 59, 0, TimeKind::Utc);
  EXPECT_EQ(Text(before, &Time::FormatHttp), "Wed, 31 Dec 1969 23:59:59 GMT");
  const Time late(30827, 12, 31, 23, 59, 59, 999, TimeKind::Utc);
  EXPECT_EQ(Text(late, &Time::FormatHttp), "Fri, 31 Dec 30827 23:59:59 GMT");
  EXPECT_EQ(Text(late, &Time::FormatAscTime), "Fri Dec 31 23:59:59 30827");
  EXPECT_EQ(Text(late, &Time::FormatRfc850), "Friday, 31-Dec-27 23:59:59 GMT");
}

// Unix seconds of a parse in UTC, or -1 when it refuses (then the time must be unchanged).
template <class Parse>
std::int64_t Parsed(Parse parse, const std::string& text) {
  const Time before(std::int64_t{-86400}, TimeKind::Local);
  Time time = before;
  if (!(time.*parse)(text)) {
    EXPECT_EQ(TicksOf(time), TicksOf(before)) << text;
    EXPECT_TRUE(time.IsLocal()) << text;
    return -1;
  }
  EXPECT_TRUE(time.IsUtc()) << text;
  return (static_cast<std::int64_t>(TicksOf(time)) - 116444736000000000) / 10000000;
}

constexpr std::int64_t noon = 1226491200;  // 2008-11-12 12:00:00 UTC

TEST(TimeInternetParse, Rfc822ToleratesWhatMailWrites) {
  const auto parse = &Time::ParseRfc822;
  EXPECT_EQ(Parsed(parse, "Wed, 12 Nov 2008 12:34:56 GMT"), noon + 2096);
  EXPECT_EQ(Parsed(parse, "12 Nov 2008 12:34:56 GMT"), noon + 2096);
  EXPECT_EQ(Parsed(parse, "wed , 12 nov 2008 12:34 gmt"), noon + 2040);
  EXPECT_EQ(Parsed(parse, "Wed,12 Nov 2008 12:34:56"), noon + 2096);
  EXPECT_EQ(Parsed(parse, "  Mon ,, \t 12\tNov   2008 12:34:56 +0000"), noon + 2096);  // weekday unchecked
  EXPECT_EQ(Parsed(parse, "Wed, 5 Nov 2008 00:00:00"), noon - 7 * 86400 - 43200);
  EXPECT_EQ(Parsed(parse, "12 Nov 2008 12:34:xx"), noon + 2040);
  EXPECT_EQ(Parsed(parse, "12 Nov 2008 12:34:56:99 GMT"), noon + 2096);
  EXPECT_EQ(Parsed(parse, "12 Nov 2008 12::34 GMT"), noon + 2040);  // a run of ":" is one
  EXPECT_EQ(Parsed(parse, "12 Nov 2008 12:00:00 GMT (comment)"), noon);
  EXPECT_EQ(Parsed(parse, "12 Nov 2008 00:00"), noon - 43200);
  EXPECT_EQ(Parsed(parse, "12 Nov 49 00:00:00"), 2520288000);        // 2049
  EXPECT_EQ(Parsed(parse, "12 Nov 50 00:00:00"), -603936000);        // 1950: wraps in Render
  EXPECT_EQ(Parsed(parse, "12 Nov 0 00:00:00"), 973987200);          // 2000
  EXPECT_EQ(Parsed(parse, "12 Nov 100 00:00:00"), -1);               // the year 100 itself
  EXPECT_EQ(Parsed(parse, "12 Nov 67544 12:00:00"), noon);           // cut to 16 bits: 2008

  EXPECT_EQ(Parsed(parse, "Wed 12 Nov 2008 12:34:56 GMT"), -1);      // no comma: the day first
  EXPECT_EQ(Parsed(parse, "Xyz, 12 Nov 2008 12:34:56 GMT"), -1);
  EXPECT_EQ(Parsed(parse, "Wednesday, 12 Nov 2008 12:34:56 GMT"), -1);
  EXPECT_EQ(Parsed(parse, "Wed"), -1);
  EXPECT_EQ(Parsed(parse, ""), -1);
  EXPECT_EQ(Parsed(parse, "32 Nov 2008 00:00:00"), -1);
  EXPECT_EQ(Parsed(parse, "0 Nov 2008 00:00:00"), -1);
  EXPECT_EQ(Parsed(parse, "12 November 2008 00:00:00"), -1);
  EXPECT_EQ(Parsed(parse, "12 Nov -2008 00:00:00"), -1);
  EXPECT_EQ(Parsed(parse, "12 Nov 2008"), -1);
  EXPECT_EQ(Parsed(parse, "12 Nov 2008 24:00:00"), -1);
  EXPECT_EQ(Parsed(parse, "12 Nov 2008 12:60:00"), -1);
  EXPECT_EQ(Parsed(parse, "12 Nov 2008 12:00:61"), -1);
  EXPECT_EQ(Parsed(parse, "12 Nov 2008 12"), -1);
  EXPECT_EQ(Parsed(parse, "31 Feb 2008 00:00:00"), -1);              // refused by the calendar
  EXPECT_EQ(Parsed(parse, "12 Nov 2008 23:59:60"), -1);
}

TEST(TimeInternetParse, ZonesByNumberLetterAndName) {
  const auto parse = &Time::ParseRfc822;
  const std::string base = "12 Nov 2008 12:00:00 ";
  const struct {
    const char* zone;
    std::int64_t hoursWest;
    std::int64_t minutesWest;
  } accepted[] = {{"+0100", -1, 0},  {"-0100", 1, 0},  {"+0530", -5, -30}, {"-0530", 5, 30},
                  {"0530", -5, -30}, {"+530", -5, -30}, {"-0059", 0, 59},  {"+9959", -99, -59},
                  {"UT", 0, 0},      {"UTC", 0, 0},     {"gmt", 0, 0},      {"EST", 5, 0},
                  {"EDT", 4, 0},     {"CST", 6, 0},     {"CDT", 5, 0},      {"MST", 7, 0},
                  {"mdt", 6, 0},     {"PST", 8, 0},     {"PDT", 7, 0},      {"A", -1, 0},
                  {"i", -9, 0},      {"K", -10, 0},     {"M", -12, 0},      {"N", 1, 0},
                  {"y", 12, 0},      {"Z", 0, 0},       {"z", 0, 0}};
  for (const auto& c : accepted) {
    EXPECT_EQ(Parsed(parse, base + c.zone), noon + c.hoursWest * 3600 + c.minutesWest * 60) << c.zone;
  }
  for (const char* zone : {"J", "j", "+01:00", "+0160", "XYZ", "+01", "+010000", "GMTX", "1", "EST5"}) {
    EXPECT_EQ(Parsed(parse, base + zone), -1) << zone;
  }
}

TEST(TimeInternetParse, Rfc850AndAscTime) {
  EXPECT_EQ(Parsed(&Time::ParseRfc850, "Sunday, 06-Nov-94 08:49:37 GMT"), 784111777);
  EXPECT_EQ(Parsed(&Time::ParseRfc850, "sunday,06-nov-1994 08:49:37"), 784111777);
  EXPECT_EQ(Parsed(&Time::ParseRfc850, "Sunday,  \t06-Nov-94 09:49:37 +0100"), 784111777);
  EXPECT_EQ(Parsed(&Time::ParseRfc850, "Sun, 06-Nov-94 08:49:37 GMT"), -1);
  EXPECT_EQ(Parsed(&Time::ParseRfc850, "Sunday , 06-Nov-94 08:49:37 GMT"), -1);
  EXPECT_EQ(Parsed(&Time::ParseRfc850, "Sunday 06-Nov-94 08:49:37 GMT"), -1);
  EXPECT_EQ(Parsed(&Time::ParseRfc850, "Sunday, 06-November-94 08:49:37 GMT"), -1);
  EXPECT_EQ(Parsed(&Time::ParseRfc850, "Sunday, 31-Nov-94 08:49:37 GMT"), -1);

  EXPECT_EQ(Parsed(&Time::ParseAscTime, "Sun Nov  6 08:49:37 1994"), 784111777);
  EXPECT_EQ(Parsed(&Time::ParseAscTime, "Sun Nov 06 08:49:37 1994 trailing"), 784111777);
  EXPECT_EQ(Parsed(&Time::ParseAscTime, "SUN NOV 6 08:49 94"), 784111740);
  EXPECT_EQ(Parsed(&Time::ParseAscTime, "Sun Nov 6 08:49:37 -6"), Parsed(&Time::ParseAscTime, "Sun Nov 6 08:49:37 1994"));
  EXPECT_EQ(Parsed(&Time::ParseAscTime, "Sunday Nov 6 08:49:37 1994"), -1);
  EXPECT_EQ(Parsed(&Time::ParseAscTime, "Sun, Nov 6 08:49:37 1994"), -1);
  EXPECT_EQ(Parsed(&Time::ParseAscTime, "Sun Nov 6 08:49:37"), -1);
  EXPECT_EQ(Parsed(&Time::ParseAscTime, "Sun Nov 6 08:49:37 1994x"), -1);
}

TEST(TimeInternetParse, HttpTakesTheFirstFormThatReadsTheText) {
  const auto parse = &Time::ParseHttp;
  EXPECT_EQ(Parsed(parse, "Sun, 06 Nov 1994 08:49:37 GMT"), 784111777);
  EXPECT_EQ(Parsed(parse, "Sunday, 06-Nov-94 08:49:37 GMT"), 784111777);
  EXPECT_EQ(Parsed(parse, "Sun Nov  6 08:49:37 1994"), 784111777);
  EXPECT_EQ(Parsed(parse, "garbage"), -1);
  EXPECT_EQ(Parsed(parse, "Sun, 06 Nov 1994 08:49:60 GMT"), -1);

  // Every moment that the HTTP form writes reads back as itself.
  ZoneGuard zone(zoneWest0530);
  for (const Time& time : {Time(1601, 1, 1, TimeKind::Utc), Time(2008, 11, 12, 12, 34, 56, 0, TimeKind::Local),
                           Time(30827, 12, 31, 23, 59, 59, 0, TimeKind::Utc)}) {
    std::string text;
    time.FormatHttp(text);
    Time back(0, TimeKind::Local);
    ASSERT_TRUE(back.ParseHttp(text)) << text;
    EXPECT_EQ(TicksOf(back), TicksOf(time.AsUtc())) << text;
  }
  const Time local(2008, 11, 12, 12, 34, 56, 0, TimeKind::Local);
  for (const auto format : {&Time::FormatRfc1123, &Time::FormatRfc850, &Time::FormatAscTime}) {
    std::string text;
    (local.*format)(text);
    Time back(0, TimeKind::Local);
    ASSERT_TRUE(back.ParseHttp(text)) << text;
    // asctime has no zone: its wall clock reads back as UTC.
    EXPECT_EQ((back - local).GetTicks(), format == &Time::FormatAscTime ? -198000000000 : 0) << text;
  }
}

}  // namespace
