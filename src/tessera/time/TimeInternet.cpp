// The date texts of mail and HTTP: RFC 822/1123, RFC 850, asctime.
#include <tessera/time/Time.h>

#include <cstring>

#include <tessera/text/StringTokenizer.h>
#include <tessera/text/TextNumeric.h>

#include "TimeText.h"
#include "tessera/detail/Calendar.h"

namespace Tessera {

namespace {

constexpr const char* monthNames[12] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                    "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
constexpr const char* shortDayNames[7] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
const char* const longDayNames[7] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                     "Thursday", "Friday", "Saturday"};

// In search order, with the hours each stands for.
constexpr const char* zoneNames[11] = {"UT", "UTC", "GMT", "EST", "EDT", "CST", "CDT", "MST", "MDT", "PST", "PDT"};
constexpr int zoneNameHours[11] = {0, 0, 0, -5, -4, -6, -5, -7, -6, -8, -7};

constexpr detail::NameTable<12> monthTable(monthNames, 321703);
constexpr detail::NameTable<7> shortDayTable(shortDayNames, 4061);
constexpr detail::NameTable<11> zoneTable(zoneNames, 11511);
static_assert(monthTable.Distinct() && shortDayTable.Distinct() && zoneTable.Distinct(),
              "name tables need one slot per name");

using Tokenizer = BasicStringTokenizer<char>;

using Fields = Win32::detail::Fields;

// The calendar fields of a tick count, for any year the count can reach. Within 1970 to
// 3000 they are those _gmtime64_s gives; beyond it they stay true instead of failing.
Fields FieldsOf(std::uint64_t ticks) { return Win32::detail::FieldsFromTicks(ticks); }

char* PutClock(char* out, const Fields& fields) {
  out = detail::PutTwo(out, fields.hour);
  out = detail::Put(out, ':');
  out = detail::PutTwo(out, fields.minute);
  out = detail::Put(out, ':');
  return detail::PutTwo(out, fields.second);
}

// "GMT" for zero when wanted, otherwise a sign and the value hours*100+minutes in four
// digits: -0530 for five and a half hours west, -0030 for half an hour.
char* PutZone(char* out, std::int64_t zone, bool gmtForZero) {
  if (zone == 0 && gmtForZero) return detail::Put(out, "GMT", 3);
  out = detail::Put(out, zone < 0 ? '-' : '+');
  return detail::PutNumber(out, static_cast<std::uint64_t>(zone < 0 ? -zone : zone), 4);
}

std::int64_t ZoneValue(const Time& time) {
  int hours = 0;
  int minutes = 0;
  time.GetTimeZoneOffset(hours, minutes);
  return static_cast<std::int64_t>(hours) * 100 + minutes;
}

void FormatRfc822Fields(std::string& out, const Fields& fields, std::int64_t zone,
                        std::int32_t flags) {
  char buffer[detail::textBufferSize];
  char* end = detail::Put(buffer, shortDayNames[fields.dayOfWeek], 3);
  end = detail::Put(end, ", ", 2);
  end = fields.day < 10 ? detail::Put(end, static_cast<char>('0' + fields.day)) : detail::PutTwo(end, fields.day);
  end = detail::Put(end, ' ');
  end = detail::Put(end, monthNames[fields.month - 1], 3);
  end = detail::Put(end, ' ');
  end = (flags & TimeFormatTwoDigitYear) != 0 ? detail::PutTwo(end, fields.year % 100u)
                                              : detail::PutFour(end, fields.year);
  end = detail::Put(end, ' ');
  end = PutClock(end, fields);
  end = detail::Put(end, ' ');
  end = PutZone(end, zone, (flags & TimeFormatGmtZone) != 0);
  detail::Assign(out, buffer, end);
}

// The next token under the tokenizer's delimiter, read whole as a decimal int.
bool ReadNumber(Tokenizer& tokens, int& value) {
  const char* token = nullptr;
  unsigned int length = 0;
  return tokens.Next(token, length) && TextNumeric<char, int>(token, length, value, 10);
}

int ExpandTwoDigitYear(int year) { return year >= 50 ? year + 1900 : year + 2000; }

// A 3-letter name out of `names`, as the next token.
template <int count>
bool ReadShortName(Tokenizer& tokens, const detail::NameTable<count>& names, int& index) {
  const char* token = nullptr;
  unsigned int length = 0;
  if (!tokens.Next(token, length) || length != 3) return false;
  index = names.Find(token, length);
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
  const int zone = zoneTable.Find(token, length);
  if (zone < 0) return false;
  hours = zoneNameHours[zone];
  minutes = 0;
  return true;
}

// Sets the parsed fields and takes the zone off; false when the calendar refuses them.
bool SetUtc(Time& time, int year, int month, int day, const Clock& clock, int zoneHours, int zoneMinutes) {
  // Fields the calendar takes as they are go straight to ticks, sparing the SYSTEMTIME
  // route (a fifth of an HTTP date's parse); the rest take that route, which decides.
  std::uint64_t ticks = 0;
  if (Win32::detail::TicksFromFields(static_cast<unsigned>(year), static_cast<unsigned>(month),
                                     static_cast<unsigned>(day), static_cast<unsigned>(clock.hours),
                                     static_cast<unsigned>(clock.minutes),
                                     static_cast<unsigned>(clock.seconds), 0, ticks)) {
    time.Set(Win32::FILETIME{static_cast<std::uint32_t>(ticks), static_cast<std::uint32_t>(ticks >> 32)},
             TimeKind::Utc);
  } else if (!time.Set(static_cast<unsigned int>(year), static_cast<unsigned int>(month), static_cast<unsigned int>(day),
                static_cast<unsigned int>(clock.hours), static_cast<unsigned int>(clock.minutes),
                static_cast<unsigned int>(clock.seconds), 0, TimeKind::Utc)) {
    return false;
  }
  if (zoneHours != 0) time -= TimeSpan(zoneHours * TimeSpan::hour.GetTicks());
  if (zoneMinutes != 0) time -= TimeSpan(zoneMinutes * TimeSpan::minute.GetTicks());
  return true;
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
  return SetUtc(time, year, month, day, clock, zoneHours, zoneMinutes);
}

// The layout that HTTP writes, "Www, D[D] Mmm YYYY hh:mm:ss[ zone[ anything]]" with single
// blanks, read straight off the text. Each field is what the tokenizer-driven reading would
// give for such a text, so a true result is that reading's result; on false nothing is
// touched, and the general reading decides.
bool ParseRfc1123Layout(const std::string& text, Time& time) {
  const char* p = text.data();
  const std::size_t size = text.size();
  if (size < 24 || p[3] != ',' || p[4] != ' ' || !detail::IsDigit(p[5])) return false;
  if (shortDayTable.Find(p, 3) < 0) return false;
  std::size_t at = 6;
  int day = p[5] - '0';
  if (detail::IsDigit(p[at])) day = day * 10 + (p[at++] - '0');
  if (size < at + 18 || p[at] != ' ' || p[at + 4] != ' ' || p[at + 9] != ' ') return false;
  const int month = monthTable.Find(p + at + 1, 3);
  // "YYYY hh:" and "hh:mm:ss" as two words, checked and read as the ISO layout is.
  const std::uint64_t y = detail::Load8(p + at + 5);
  const std::uint64_t c = detail::Load8(p + at + 10);
  constexpr std::uint64_t clockDigits = 0xFFFF00FFFF00FFFFu;
  if (month < 0 || (c & ~clockDigits) != 0x00003A00003A0000u ||
      (detail::NotDigits(y, 0xFFFFFFFFu) | detail::NotDigits(c, clockDigits)) != 0) {
    return false;
  }
  const std::uint64_t yearPairs = detail::DigitPairs(y), clockPairs = detail::DigitPairs(c);
  int year = static_cast<int>(detail::Byte(yearPairs, 0) * 100 + detail::Byte(yearPairs, 2));
  if (year < 100) year = ExpandTwoDigitYear(year);
  Clock clock;
  clock.hours = static_cast<int>(detail::Byte(clockPairs, 0));
  clock.minutes = static_cast<int>(detail::Byte(clockPairs, 3));
  clock.seconds = static_cast<int>(detail::Byte(clockPairs, 6));
  if (day < 1 || day > 31 || clock.hours > 23 || clock.minutes > 59 || clock.seconds > 60) return false;
  at += 18;
  int zoneHours = 0;
  int zoneMinutes = 0;
  if (at < size) {
    if (p[at] != ' ' || at + 1 == size || p[at + 1] == ' ' || p[at + 1] == '\t') return false;
    std::size_t end = at + 1;
    while (end < size && p[end] != ' ' && p[end] != '\t') ++end;
    if (!ParseZone(p + at + 1, static_cast<unsigned int>(end - at - 1), zoneHours, zoneMinutes)) return false;
  }
  return SetUtc(time, year, month + 1, day, clock, zoneHours, zoneMinutes);
}

}  // namespace

bool Time::ParseRfc822(const std::string& text) {
  if (ParseRfc1123Layout(text, *this)) return true;
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
    if (wordLength != 3 || shortDayTable.Find(word, wordLength) < 0) return false;
  } else {
    tokens.SetPosition(0);
  }
  tokens.SetDelimiter(" \t", DelimitModeAnyOf);
  int day = 0;
  if (!ReadNumber(tokens, day) || day < 1 || day > 31) return false;
  int month = 0;
  if (!ReadShortName(tokens, monthTable, month)) return false;
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
  if (!ReadShortName(tokens, monthTable, month)) return false;
  tokens.SkipDelimitersAndSet(" \t");
  return ParseYearClockZone(tokens, day, month + 1, *this);
}

bool Time::ParseAscTime(const std::string& text) {
  Tokenizer tokens(text.data(), static_cast<unsigned int>(text.size()), " \t", DelimitModeAnyOf);
  int weekday = 0;
  if (!ReadShortName(tokens, shortDayTable, weekday)) return false;
  int month = 0;
  if (!ReadShortName(tokens, monthTable, month)) return false;
  int day = 0;
  if (!ReadNumber(tokens, day) || day < 1 || day > 31) return false;
  const char* token = nullptr;
  unsigned int length = 0;
  Clock clock;
  if (!tokens.Next(token, length) || !ParseClock(token, length, clock)) return false;
  int year = 0;
  if (!ReadNumber(tokens, year)) return false;
  if (year < 100) year = ExpandTwoDigitYear(year);
  return SetUtc(*this, year, month + 1, day, clock, 0, 0);
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
  const Fields fields = FieldsOf(Ticks());
  char buffer[detail::textBufferSize];
  const char* name = longDayNames[fields.dayOfWeek];
  char* end = detail::Put(buffer, name, static_cast<unsigned>(std::strlen(name)));
  end = detail::Put(end, ", ", 2);
  end = detail::PutTwo(end, fields.day);
  end = detail::Put(end, '-');
  end = detail::Put(end, monthNames[fields.month - 1], 3);
  end = detail::Put(end, '-');
  end = detail::PutTwo(end, fields.year % 100u);
  end = detail::Put(end, ' ');
  end = PutClock(end, fields);
  end = detail::Put(end, ' ');
  end = PutZone(end, ZoneValue(*this), true);
  detail::Assign(out, buffer, end);
}

void Time::FormatAscTime(std::string& out) const {
  const Fields fields = FieldsOf(Ticks());
  char buffer[detail::textBufferSize];
  char* end = detail::Put(buffer, shortDayNames[fields.dayOfWeek], 3);
  end = detail::Put(end, ' ');
  end = detail::Put(end, monthNames[fields.month - 1], 3);
  end = detail::Put(end, ' ');
  end = detail::PutTwo(end, fields.day);
  end = detail::Put(end, ' ');
  end = PutClock(end, fields);
  end = detail::Put(end, ' ');
  end = detail::PutFour(end, fields.year);
  detail::Assign(out, buffer, end);
}

}  // namespace Tessera
