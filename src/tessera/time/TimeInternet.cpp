// The date texts of mail and HTTP: RFC 822/1123, RFC 850, asctime.
#include <tessera/time/Time.h>

#include <cstring>

#include <tessera/text/StringTokenizer.h>
#include <tessera/text/TextNumeric.h>

#include "TimeText.h"

namespace Tessera {

namespace {

const char* const monthNames[12] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                    "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
const char* const shortDayNames[7] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
const char* const longDayNames[7] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                     "Thursday", "Friday", "Saturday"};

struct ZoneName {
  const char* name;
  int hours;
};

// In search order.
const ZoneName zoneNames[] = {{"UT", 0},   {"UTC", 0},  {"GMT", 0},  {"EST", -5},
                              {"EDT", -4}, {"CST", -6}, {"CDT", -5}, {"MST", -7},
                              {"MDT", -6}, {"PST", -8}, {"PDT", -7}};

using Tokenizer = BasicStringTokenizer<char>;

// The calendar fields of a tick count, for any year the count can reach. Within 1970 to
// 3000 they are those _gmtime64_s gives; beyond it they stay true instead of failing.
Win32::SYSTEMTIME FieldsOf(std::uint64_t ticks) {
  Win32::FILETIME value;
  value.dwLowDateTime = static_cast<Win32::DWORD>(ticks);
  value.dwHighDateTime = static_cast<Win32::DWORD>(ticks >> 32);
  Win32::SYSTEMTIME fields{};
  Win32::FileTimeToSystemTime(&value, &fields);
  return fields;
}

void PutClock(detail::TextBuffer& text, const Win32::SYSTEMTIME& fields) {
  text.Two(fields.wHour);
  text.Put(':');
  text.Two(fields.wMinute);
  text.Put(':');
  text.Two(fields.wSecond);
}

// "GMT" for zero when wanted, otherwise a sign and the value hours*100+minutes in four
// digits: -0530 for five and a half hours west, -0030 for half an hour.
void PutZone(detail::TextBuffer& text, std::int64_t zone, bool gmtForZero) {
  if (zone == 0 && gmtForZero) {
    text.Put("GMT", 3);
    return;
  }
  text.Put(zone < 0 ? '-' : '+');
  text.Number(static_cast<std::uint64_t>(zone < 0 ? -zone : zone), 4);
}

std::int64_t ZoneValue(const Time& time) {
  int hours = 0;
  int minutes = 0;
  time.GetTimeZoneOffset(hours, minutes);
  return static_cast<std::int64_t>(hours) * 100 + minutes;
}

void PutName(detail::TextBuffer& text, const char* name) {
  text.Put(name, static_cast<unsigned>(std::strlen(name)));
}

void FormatRfc822Fields(std::string& out, const Win32::SYSTEMTIME& fields, std::int64_t zone,
                        std::int32_t flags) {
  detail::TextBuffer text;
  text.Put(shortDayNames[fields.wDayOfWeek], 3);
  text.Put(", ", 2);
  text.Number(fields.wDay, 1);
  text.Put(' ');
  text.Put(monthNames[fields.wMonth - 1], 3);
  text.Put(' ');
  if ((flags & TimeFormatTwoDigitYear) != 0) {
    text.Two(fields.wYear % 100u);
  } else {
    text.Number(fields.wYear, 4);
  }
  text.Put(' ');
  PutClock(text, fields);
  text.Put(' ');
  PutZone(text, zone, (flags & TimeFormatGmtZone) != 0);
  text.AssignTo(out);
}

// The next token under the tokenizer's delimiter, read whole as a decimal int.
bool ReadNumber(Tokenizer& tokens, int& value) {
  const char* token = nullptr;
  unsigned int length = 0;
  return tokens.Next(token, length) && TextNumeric<char, int>(token, length, value, 10);
}

int ExpandTwoDigitYear(int year) { return year >= 50 ? year + 1900 : year + 2000; }

// A 3-letter name out of `names`, as the next token.
bool ReadShortName(Tokenizer& tokens, const char* const* names, int count, int& index) {
  const char* token = nullptr;
  unsigned int length = 0;
  if (!tokens.Next(token, length) || length != 3) return false;
  index = detail::MatchName(token, length, names, count);
  return index >= 0;
}

struct Clock {
  int hours = 0;
  int minutes = 0;
  int seconds = 0;
};

// "hh:mm[:ss]"; a missing or unreadable seconds field is 0, and a leap second passes here
// for the calendar to refuse.
bool ParseClock(const char* text, unsigned int length, Clock& clock) {
  Tokenizer tokens(text, length, ":", DelimitModeAnyOf);
  if (!ReadNumber(tokens, clock.hours) || clock.hours < 0 || clock.hours > 23) return false;
  if (!ReadNumber(tokens, clock.minutes) || clock.minutes < 0 || clock.minutes > 59) return false;
  if (!ReadNumber(tokens, clock.seconds)) {
    clock.seconds = 0;
    return true;
  }
  return clock.seconds >= 0 && clock.seconds <= 60;
}

// Single-letter military zones: A-I +1..+9, K-M +10..+12, N-Y -1..-12, Z 0; J is none.
bool LetterZone(char letter, int& hours) {
  const char c = detail::FoldAscii(letter);
  if (c >= 'A' && c <= 'I') {
    hours = c - 'A' + 1;
  } else if (c >= 'K' && c <= 'M') {
    hours = c - 'K' + 10;
  } else if (c >= 'N' && c <= 'Y') {
    hours = -(c - 'N' + 1);
  } else if (c == 'Z') {
    hours = 0;
  } else {
    return false;
  }
  return true;
}

// "+hhmm" (or four or five characters that read as a number), a military letter or a name.
bool ParseZone(const char* token, unsigned int length, int& hours, int& minutes) {
  int value = 0;
  if ((length == 4 || length == 5) && TextNumeric<char, int>(token, length, value, 10)) {
    hours = value / 100;
    minutes = value % 100;
    return minutes >= -59 && minutes <= 59;
  }
  if (length == 1 && LetterZone(token[0], hours)) {
    minutes = 0;
    return true;
  }
  for (const ZoneName& zone : zoneNames) {
    if (detail::EqualCaseless(token, length, zone.name)) {
      hours = zone.hours;
      minutes = 0;
      return true;
    }
  }
  return false;
}

// Year, clock and zone, common to RFC 822 and RFC 850; the tokenizer's delimiter is blank
// and tab. The object is touched only once the calendar has accepted the fields.
bool ParseYearClockZone(Tokenizer& tokens, int day, int month, Time& time) {
  int year = 0;
  if (!ReadNumber(tokens, year) || year < 0) return false;
  if (year < 100) year = ExpandTwoDigitYear(year);
  const char* token = nullptr;
  unsigned int length = 0;
  Clock clock;
  if (!tokens.Next(token, length) || !ParseClock(token, length, clock)) return false;
  int zoneHours = 0;
  int zoneMinutes = 0;
  if (tokens.Next(token, length) && !ParseZone(token, length, zoneHours, zoneMinutes)) return false;
  if (!time.Set(static_cast<unsigned int>(year), static_cast<unsigned int>(month), static_cast<unsigned int>(day),
           static_cast<unsigned int>(clock.hours), static_cast<unsigned int>(clock.minutes),
           static_cast<unsigned int>(clock.seconds), 0, TimeKind::Utc)) {
    return false;
  }
  time -= TimeSpan(zoneHours * TimeSpan::hour.GetTicks());
  time -= TimeSpan(zoneMinutes * TimeSpan::minute.GetTicks());
  return true;
}

}  // namespace

bool Time::ParseRfc822(const std::string& text) {
  Tokenizer tokens(text.data(), static_cast<unsigned int>(text.size()), " \t,", DelimitModeAnyOf);
  const char* word = nullptr;
  unsigned int wordLength = 0;
  if (!tokens.Next(word, wordLength)) return false;
  // What follows the first word tells whether it was a weekday: a comma does.
  tokens.SetDelimitMode(DelimitModeNoneOf);
  const char* run = nullptr;
  unsigned int runLength = 0;
  if (!tokens.Next(run, runLength)) return false;
  if (std::memchr(run, ',', runLength) != nullptr) {
    if (wordLength != 3 || detail::MatchName(word, wordLength, shortDayNames, 7) < 0) return false;
  } else {
    tokens.SetPosition(0);
  }
  tokens.SetDelimiter(" \t", DelimitModeAnyOf);
  int day = 0;
  if (!ReadNumber(tokens, day) || day < 1 || day > 31) return false;
  int month = 0;
  if (!ReadShortName(tokens, monthNames, 12, month)) return false;
  return ParseYearClockZone(tokens, day, month + 1, *this);
}

bool Time::ParseRfc850(const std::string& text) {
  Tokenizer tokens(text.data(), static_cast<unsigned int>(text.size()), ",", DelimitModeAnyOf);
  const char* word = nullptr;
  unsigned int wordLength = 0;
  if (!tokens.Next(word, wordLength) || detail::MatchName(word, wordLength, longDayNames, 7) < 0) return false;
  tokens.SkipDelimitersAndSet(" \t");
  tokens.SkipDelimitersAndSet("-");
  int day = 0;
  if (!ReadNumber(tokens, day) || day < 1 || day > 31) return false;
  int month = 0;
  if (!ReadShortName(tokens, monthNames, 12, month)) return false;
  tokens.SkipDelimitersAndSet(" \t");
  return ParseYearClockZone(tokens, day, month + 1, *this);
}

bool Time::ParseAscTime(const std::string& text) {
  Tokenizer tokens(text.data(), static_cast<unsigned int>(text.size()), " \t", DelimitModeAnyOf);
  int weekday = 0;
  if (!ReadShortName(tokens, shortDayNames, 7, weekday)) return false;
  int month = 0;
  if (!ReadShortName(tokens, monthNames, 12, month)) return false;
  int day = 0;
  if (!ReadNumber(tokens, day) || day < 1 || day > 31) return false;
  const char* token = nullptr;
  unsigned int length = 0;
  Clock clock;
  if (!tokens.Next(token, length) || !ParseClock(token, length, clock)) return false;
  int year = 0;
  if (!ReadNumber(tokens, year)) return false;
  if (year < 100) year = ExpandTwoDigitYear(year);
  return Set(static_cast<unsigned int>(year), static_cast<unsigned int>(month + 1), static_cast<unsigned int>(day),
             static_cast<unsigned int>(clock.hours), static_cast<unsigned int>(clock.minutes),
             static_cast<unsigned int>(clock.seconds), 0, TimeKind::Utc);
}

bool Time::ParseHttp(const std::string& text) {
  return ParseRfc822(text) || ParseRfc850(text) || ParseAscTime(text);
}

void Time::FormatRfc822(std::string& out, std::int32_t flags) const {
  FormatRfc822Fields(out, FieldsOf(Ticks()), ZoneValue(*this), flags);
}

void Time::FormatRfc1123(std::string& out) const { FormatRfc822(out, 0); }

void Time::FormatHttp(std::string& out) const {
  FormatRfc822Fields(out, FieldsOf(TicksUtc()), 0, TimeFormatGmtZone);
}

void Time::FormatRfc850(std::string& out) const {
  const Win32::SYSTEMTIME fields = FieldsOf(Ticks());
  detail::TextBuffer text;
  PutName(text, longDayNames[fields.wDayOfWeek]);
  text.Put(", ", 2);
  text.Two(fields.wDay);
  text.Put('-');
  text.Put(monthNames[fields.wMonth - 1], 3);
  text.Put('-');
  text.Two(fields.wYear % 100u);
  text.Put(' ');
  PutClock(text, fields);
  text.Put(' ');
  PutZone(text, ZoneValue(*this), true);
  text.AssignTo(out);
}

void Time::FormatAscTime(std::string& out) const {
  const Win32::SYSTEMTIME fields = FieldsOf(Ticks());
  detail::TextBuffer text;
  text.Put(shortDayNames[fields.wDayOfWeek], 3);
  text.Put(' ');
  text.Put(monthNames[fields.wMonth - 1], 3);
  text.Put(' ');
  text.Two(fields.wDay);
  text.Put(' ');
  PutClock(text, fields);
  text.Put(' ');
  text.Number(fields.wYear, 4);
  text.AssignTo(out);
}

}  // namespace Tessera
