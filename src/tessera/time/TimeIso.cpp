// ISO 8601 date texts.
#include <tessera/time/Time.h>

#include <iomanip>
#include <ostream>

#include "TimeText.h"

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

}  // namespace

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
  Win32::SYSTEMTIME fields{};
  Render(fields);
  const bool compact = (flags & TimeFormatCompact) != 0;
  detail::TextBuffer text;
  if ((flags & TimeFormatNoDate) == 0) {
    text.Number(fields.wYear, 4);
    if (!compact) text.Put('-');
    text.Two(fields.wMonth);
    if (!compact) text.Put('-');
    text.Two(fields.wDay);
    if ((flags & TimeFormatNoTime) == 0) text.Put((flags & TimeFormatSpaceSeparator) != 0 ? ' ' : 'T');
  }
  if ((flags & TimeFormatNoTime) == 0) {
    text.Two(fields.wHour);
    if (!compact) text.Put(':');
    text.Two(fields.wMinute);
    if ((flags & TimeFormatNoSeconds) == 0) {
      if (!compact) text.Put(':');
      text.Two(fields.wSecond);
      if ((flags & TimeFormatNoFraction) == 0) {
        text.Put('.');
        text.Number(fields.wMilliseconds, 3);
      }
    }
    if ((flags & TimeFormatNoZone) == 0) {
      const Zone zone = ZoneOf(*this);
      if (zone.utc) {
        text.Put('Z');
      } else {
        text.Put(zone.negative ? '-' : '+');
        text.Number(static_cast<unsigned>(zone.hours), 2);
        if (zone.minutes != 0 || (flags & TimeFormatShortZone) == 0) {
          text.Put(':');
          text.Number(static_cast<unsigned>(zone.minutes), 2);
        }
      }
    }
  }
  text.AssignTo(out);
}

void Time::FormatIsoDate(std::string& out) const { FormatIso(out, TimeFormatNoTime); }

void Time::FormatIsoTime(std::string& out, std::int32_t flags) const {
  FormatIso(out, (flags & ~TimeFormatNoTime) | TimeFormatNoDate);
}

}  // namespace Tessera
