// ISO 8601 date texts.
#include <tessera/time/Time.h>

#include <cstring>
#include <iomanip>
#include <ostream>

#include <tessera/text/StringTokenizer.h>
#include <tessera/text/TextNumeric.h>

#include "TimeText.h"
#include "tessera/detail/Calendar.h"

namespace Tessera {

namespace {

struct Zone {
  bool utc;       // both parts zero: "Z"
  bool negative;
  int hours;      // absolute
  int minutes;    // absolute
};

Zone ZoneOf(const Time& time) {
  int hours = 0;
  int minutes = 0;
  time.GetTimeZoneOffset(hours, minutes);
  Zone zone;
  zone.utc = hours == 0 && minutes == 0;
  zone.negative = hours < 0 || minutes < 0;
  zone.hours = hours < 0 ? -hours : hours;
  zone.minutes = minutes < 0 ? -minutes : minutes;
  return zone;
}

bool Field(const char* text, unsigned int count, unsigned short& value) {
  return detail::ReadField(text, count, value);
}

using detail::IsDigit;

bool StartsZone(char c) { return c == 'Z' || c == 'z' || c == '+' || c == '-'; }

// A cursor over one token.
struct Cursor {
  const char* text;
  unsigned int left;

  void Step(unsigned int count) {
    text += count;
    left -= count;
  }
  bool StepOver(char c) {
    if (left == 0 || *text != c) return false;
    Step(1);
    return true;
  }
};

struct IsoZone {
  short hours = 0;
  short minutes = 0;
};

// "YYYY[-]MM[-]DD".
bool ParseIsoDate(Cursor date, Win32::SYSTEMTIME& fields) {
  if (date.left < 8 || !Field(date.text, 4, fields.wYear)) return false;
  date.Step(4);
  date.StepOver('-');
  if (!Field(date.text, 2, fields.wMonth) || fields.wMonth < 1 || fields.wMonth > 12) return false;
  date.Step(2);
  date.StepOver('-');
  return date.left == 2 && Field(date.text, 2, fields.wDay) && fields.wDay >= 1 && fields.wDay <= 31;
}

// "Z", or a sign, two hour digits and optionally "[:]mm"; other text behind the hours is
// ignored unless a ":" announced the minutes.
bool ParseIsoZone(Cursor zone, IsoZone& result) {
  if (zone.left == 0) return true;
  if (zone.left == 1) return *zone.text == 'Z' || *zone.text == 'z';
  const bool negative = *zone.text == '-';
  if (!negative && *zone.text != '+') return false;
  zone.Step(1);
  short hours = 0;
  if (zone.left < 2 || !detail::ReadField(zone.text, 2, hours) || hours < 0) return false;
  result.hours = static_cast<short>(negative ? -hours : hours);
  zone.Step(2);
  if (zone.left == 0) return true;
  const bool colon = zone.StepOver(':');
  short minutes = 0;
  if (zone.left == 2 && detail::ReadField(zone.text, 2, minutes)) {
    if (minutes < 0 || minutes > 59) return false;
    result.minutes = static_cast<short>(negative ? -minutes : minutes);
    return true;
  }
  return !colon;
}

// "hh[:]mm[[:]ss[[.]fff...]][zone]". The seconds are two plain digits, so that a zone may
// follow the minutes or the seconds directly ("12:34+05:00", "123456Z").
bool ParseIsoClock(Cursor clock, Win32::SYSTEMTIME& fields, IsoZone& zone) {
  if (clock.left < 2 || !Field(clock.text, 2, fields.wHour) || fields.wHour > 23) return false;
  clock.Step(2);
  if (clock.left < 1) return false;  // an hour alone is no time
  clock.StepOver(':');
  if (clock.left < 2 || !Field(clock.text, 2, fields.wMinute) || fields.wMinute > 59) return false;
  clock.Step(2);
  if (clock.left == 0) return true;
  const bool colon = clock.StepOver(':');
  if (clock.left < 2 || !IsDigit(clock.text[0]) || !IsDigit(clock.text[1])) {
    return !colon && ParseIsoZone(clock, zone);
  }
  fields.wSecond = static_cast<unsigned short>((clock.text[0] - '0') * 10 + (clock.text[1] - '0'));
  if (fields.wSecond > 60) return false;  // 60 is left for the calendar to refuse
  clock.Step(2);
  if (clock.left == 0) return true;
  const bool dot = clock.StepOver('.');
  unsigned int fraction = 0;
  while (fraction < clock.left && !StartsZone(clock.text[fraction])) ++fraction;
  if (fraction == 0) {
    if (dot) return false;
  } else {
    // Digits past the third are skipped unread: cut, not rounded.
    const unsigned int digits = fraction < 3 ? fraction : 3;
    unsigned short value = 0;
    if (!Field(clock.text, digits, value)) return false;
    fields.wMilliseconds = static_cast<unsigned short>(value * (digits == 1 ? 100 : digits == 2 ? 10 : 1));
  }
  clock.Step(fraction);
  return ParseIsoZone(clock, zone);
}

bool IsSeparator(char c) { return c == 'T' || c == '_' || c == ' '; }

// The date and time tokens, as the tokenizer would give them, when the text starts with
// the date and one separator stands before the time. False for any other layout.
bool SplitSimple(const std::string& text, Cursor& date, Cursor& clock) {
  const char* p = text.data();
  const std::size_t size = text.size();
  std::size_t at = 0;
  // The extended date is the usual start: its digits and dashes are no separators.
  if (size >= 10 && p[4] == '-' && p[7] == '-' && IsDigit(p[0]) && IsDigit(p[1]) && IsDigit(p[2]) &&
      IsDigit(p[3]) && IsDigit(p[5]) && IsDigit(p[6]) && IsDigit(p[8]) && IsDigit(p[9])) {
    at = 10;
  } else if (size == 0 || IsSeparator(p[0])) {
    return false;
  }
  while (at < size && !IsSeparator(p[at])) ++at;
  date = Cursor{p, static_cast<unsigned int>(at)};
  clock = Cursor{p + at, 0};
  if (at == size) return true;
  if (++at == size || IsSeparator(p[at])) return false;
  const std::size_t start = at;
  while (at < size && !IsSeparator(p[at])) ++at;
  clock = Cursor{p + start, static_cast<unsigned int>(at - start)};
  return true;
}

using detail::Byte;
using detail::DigitPairs;
using detail::Load8;
using detail::NotDigits;

struct UsualFields {
  unsigned year, month, day, hour, minute, second, millisecond;
};

// "YYYY-MM-DD?hh:mm:ss[.fff][Z]", what FormatIso writes for a UTC time with or without the
// fraction, read as three words at fixed places: the fields are those that the general
// steps find in such a text, not yet checked for range. False for any other text.
bool ReadUsualLayout(const std::string& text, UsualFields& fields) {
  const char* p = text.data();
  const std::size_t size = text.size();
  if (size < 19 || size > 24 || !IsSeparator(p[10])) return false;
  const std::uint64_t date = Load8(p);        // "YYYY-MM-"
  const std::uint64_t day = Load8(p + 8);     // "DD" and what follows
  const std::uint64_t clock = Load8(p + 11);  // "hh:mm:ss"
  constexpr std::uint64_t dateDigits = 0x00FFFF00FFFFFFFFu, clockDigits = 0xFFFF00FFFF00FFFFu;
  if ((date & ~dateDigits) != 0x2D00002D00000000u || (clock & ~clockDigits) != 0x00003A00003A0000u ||
      (NotDigits(date, dateDigits) | NotDigits(day, 0xFFFF) | NotDigits(clock, clockDigits)) != 0) {
    return false;
  }
  unsigned millisecond = 0;
  std::size_t at = 19;
  if (size - at >= 4 && p[at] == '.') {
    if (!IsDigit(p[at + 1]) || !IsDigit(p[at + 2]) || !IsDigit(p[at + 3])) return false;
    millisecond = static_cast<unsigned>(p[at + 1] - '0') * 100 + static_cast<unsigned>(p[at + 2] - '0') * 10 +
                  static_cast<unsigned>(p[at + 3] - '0');
    at += 4;
  }
  if (at < size && (p[at] == 'Z' || p[at] == 'z')) ++at;
  if (at != size) return false;
  const std::uint64_t datePairs = DigitPairs(date), clockPairs = DigitPairs(clock);
  fields.year = Byte(datePairs, 0) * 100 + Byte(datePairs, 2);
  fields.month = Byte(datePairs, 5);
  fields.day = Byte(DigitPairs(day), 0);
  fields.hour = Byte(clockPairs, 0);
  fields.minute = Byte(clockPairs, 3);
  fields.second = Byte(clockPairs, 6);
  fields.millisecond = millisecond;
  return true;
}

// The fields and zone of any text by the general steps. Kept out of line, so that the
// usual layout is read without its frame.
[[gnu::noinline]] bool ReadIsoFields(const std::string& text, Win32::SYSTEMTIME& fields, IsoZone& zone) {
  Cursor date{nullptr, 0};
  Cursor clock{nullptr, 0};
  if (!SplitSimple(text, date, clock)) {
    BasicStringTokenizer<char> tokens(text.data(), static_cast<unsigned int>(text.size()), "T_ ",
                                      DelimitModeAnyOf);
    const char* token = nullptr;
    unsigned int length = 0;
    if (!tokens.Next(token, length)) return false;
    date = Cursor{token, length};
    if (tokens.Next(token, length)) clock = Cursor{token, length};  // never empty
  }
  return ParseIsoDate(date, fields) && (clock.left == 0 || ParseIsoClock(clock, fields, zone));
}

}  // namespace

bool Time::ParseIso(const std::string& text) {
  UsualFields usual;
  std::uint64_t ticks = 0;
  if (ReadUsualLayout(text, usual) &&
      Win32::detail::TicksFromFields(usual.year, usual.month, usual.day, usual.hour, usual.minute, usual.second,
                                     usual.millisecond, ticks)) {
    Store(ticks, TimeKind::Utc);
    return true;
  }
  // Any other text, and fields that the calendar refuses, take the general steps.
  Win32::SYSTEMTIME fields{};
  IsoZone zone;
  if (!ReadIsoFields(text, fields, zone) || !SetSystemTime(fields, TimeKind::Utc)) return false;
  if (zone.hours != 0) *this -= TimeSpan(zone.hours * TimeSpan::hour.GetTicks());
  if (zone.minutes != 0) *this -= TimeSpan(zone.minutes * TimeSpan::minute.GetTicks());
  return true;
}

void Time::OutputIso(std::ostream& stream, std::int32_t flags) const {
  Win32::SYSTEMTIME fields{};
  Render(fields);
  const bool compact = (flags & TimeFormatCompact) != 0;
  stream.fill('0');
  if ((flags & TimeFormatNoDate) == 0) {
    stream << std::setw(4) << fields.wYear;
    if (!compact) stream << '-';
    stream << std::setw(2) << fields.wMonth;
    if (!compact) stream << '-';
    stream << std::setw(2) << fields.wDay;
    if ((flags & TimeFormatNoTime) == 0) stream << ((flags & TimeFormatSpaceSeparator) != 0 ? ' ' : 'T');
  }
  if ((flags & TimeFormatNoTime) != 0) return;
  stream << std::setw(2) << fields.wHour;
  if (!compact) stream << ':';
  stream << std::setw(2) << fields.wMinute;
  if ((flags & TimeFormatNoSeconds) == 0) {
    if (!compact) stream << ':';
    stream << std::setw(2) << fields.wSecond;
    if ((flags & TimeFormatNoFraction) == 0) stream << '.' << std::setw(3) << fields.wMilliseconds;
  }
  if ((flags & TimeFormatNoZone) != 0) return;
  const Zone zone = ZoneOf(*this);
  if (zone.utc) {
    stream << 'Z';
    return;
  }
  stream << (zone.negative ? '-' : '+') << std::setw(2) << zone.hours;
  if (zone.minutes != 0 || (flags & TimeFormatShortZone) == 0) stream << ':' << std::setw(2) << zone.minutes;
}

// The same pieces as OutputIso writes to a fresh stream, without the stream.
void Time::FormatIso(std::string& out, std::int32_t flags) const {
  const Win32::detail::Fields fields = Win32::detail::FieldsFromTicks(Ticks());
  const bool compact = (flags & TimeFormatCompact) != 0;
  char buffer[detail::textBufferSize];
  char* end = buffer;
  if ((flags & TimeFormatNoDate) == 0) {
    end = detail::PutFour(end, fields.year);
    if (!compact) end = detail::Put(end, '-');
    end = detail::PutTwo(end, fields.month);
    if (!compact) end = detail::Put(end, '-');
    end = detail::PutTwo(end, fields.day);
    if ((flags & TimeFormatNoTime) == 0) end = detail::Put(end, (flags & TimeFormatSpaceSeparator) != 0 ? ' ' : 'T');
  }
  if ((flags & TimeFormatNoTime) == 0) {
    end = detail::PutTwo(end, fields.hour);
    if (!compact) end = detail::Put(end, ':');
    end = detail::PutTwo(end, fields.minute);
    if ((flags & TimeFormatNoSeconds) == 0) {
      if (!compact) end = detail::Put(end, ':');
      end = detail::PutTwo(end, fields.second);
      if ((flags & TimeFormatNoFraction) == 0) {
        end = detail::Put(end, '.');
        end = detail::PutThree(end, fields.millisecond);
      }
    }
    if ((flags & TimeFormatNoZone) == 0) {
      const Zone zone = IsUtc() ? Zone{true, false, 0, 0} : ZoneOf(*this);
      if (zone.utc) {
        end = detail::Put(end, 'Z');
      } else {
        end = detail::Put(end, zone.negative ? '-' : '+');
        end = detail::PutTwo(end, static_cast<unsigned>(zone.hours));
        if (zone.minutes != 0 || (flags & TimeFormatShortZone) == 0) {
          end = detail::Put(end, ':');
          end = detail::PutTwo(end, static_cast<unsigned>(zone.minutes));
        }
      }
    }
  }
  detail::Assign(out, buffer, end);
}

void Time::FormatIsoDate(std::string& out) const { FormatIso(out, TimeFormatNoTime); }

void Time::FormatIsoTime(std::string& out, std::int32_t flags) const {
  FormatIso(out, (flags & ~TimeFormatNoTime) | TimeFormatNoDate);
}

}  // namespace Tessera
