// The date texts of mail and HTTP: RFC 822/1123, RFC 850, asctime.
#include <tessera/time/Time.h>

#include <cstdlib>

#include "TimeText.h"

namespace Tessera {

namespace {

const char* const monthNames[12] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                    "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
const char* const shortDayNames[7] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
const char* const longDayNames[7] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                     "Thursday", "Friday", "Saturday"};

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

}  // namespace

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
