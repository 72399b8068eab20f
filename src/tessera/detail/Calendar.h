// Internal: the one home of the tick and calendar arithmetic that the Win32 clock stand-in,
// Time, their tests and their fuzzers share: the two halves of a file time, the 1601 to 1970
// distance, the cut to a 32-bit field, and the proleptic Gregorian conversions, inline so that
// the date formatters can use them without the SYSTEMTIME round trip.
#ifndef TESSERA_DETAIL_CALENDAR_H
#define TESSERA_DETAIL_CALENDAR_H

#include <cstdint>

#include <tessera/win32/Clock.h>

namespace Win32 {
namespace detail {

constexpr std::uint64_t ticksPerSecond = 10000000;
constexpr std::uint64_t ticksPerMillisecond = 10000;
constexpr std::uint64_t ticksPerMicrosecond = 10;
constexpr std::uint64_t secondsPerDay = 86400;
// 1601-01-01 to 1970-01-01.
constexpr std::uint64_t epochSeconds = 11644473600u;
constexpr std::uint64_t epochTicks = epochSeconds * ticksPerSecond;

constexpr std::uint64_t Join(const FILETIME& value) {
  return (static_cast<std::uint64_t>(value.dwHighDateTime) << 32) | value.dwLowDateTime;
}

constexpr FILETIME Split(std::uint64_t ticks) {
  return FILETIME{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

// The low 32 bits as a signed value: fields that were 32-bit `long` where the library was born.
constexpr std::int32_t Low32(std::uint64_t value) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}
constexpr std::int32_t Low32(std::int64_t value) { return Low32(static_cast<std::uint64_t>(value)); }
// Days from 0000-03-01 of the proleptic calendar to 1601-01-01: the origin of the
// arithmetic below, which counts years from March so that the leap day comes last.
constexpr std::uint32_t daysFromMarchZeroTo1601 = 584694;

constexpr bool IsLeap(unsigned year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

inline unsigned DaysInMonth(unsigned year, unsigned month) {
  static constexpr unsigned char lengths[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && IsLeap(year) ? 29 : lengths[month - 1];
}

// Days since 1601-01-01 of a valid date (year at least 1601), in Neri and Schneider's form.
inline std::uint32_t DaysFromCivil(unsigned year, unsigned month, unsigned day) {
  const unsigned early = month <= 2 ? 1 : 0;
  const std::uint32_t y = year - early;
  const std::uint32_t m = early != 0 ? month + 12 : month;
  const std::uint32_t century = y / 100;
  const std::uint32_t yearDays = 1461 * y / 4 - century + century / 4;
  const std::uint32_t monthDays = (979 * m - 2919) / 32;
  return yearDays + monthDays + day - 1 - daysFromMarchZeroTo1601;
}

// The ticks of calendar fields, or false for a field out of range: year 1601 to 30827,
// month 1 to 12, day within that month, hour below 24, minute and second below 60,
// millisecond below 1000. Nothing is carried into the next unit.
inline bool TicksFromFields(unsigned year, unsigned month, unsigned day, unsigned hour, unsigned minute,
                            unsigned second, unsigned millisecond, std::uint64_t& ticks) {
  // One test for all ranges but the month's length, which needs a valid month.
  const bool inRange = (year - 1601u <= 30827u - 1601u) & (month - 1u < 12u) & (day - 1u < 31u) &
                       (hour < 24u) & (minute < 60u) & (second < 60u) & (millisecond < 1000u);
  if (!inRange || (day > 28 && day > DaysInMonth(year, month))) return false;
  const std::uint64_t seconds =
      std::uint64_t{DaysFromCivil(year, month, day)} * secondsPerDay + (hour * 3600u + minute * 60u + second);
  ticks = seconds * ticksPerSecond + millisecond * ticksPerMillisecond;
  return true;
}

struct Civil {
  std::uint32_t year;
  unsigned month;
  unsigned day;
};

// Inverse of DaysFromCivil for any day count that a 63-bit tick count reaches; 32-bit
// arithmetic throughout.
inline Civil CivilFromDays(std::uint32_t days) {
  const std::uint32_t n1 = 4 * (days + daysFromMarchZeroTo1601) + 3;
  const std::uint32_t century = n1 / 146097;
  const std::uint32_t n2 = (n1 % 146097) | 3;
  const std::uint64_t p2 = std::uint64_t{2939745} * n2;
  const std::uint32_t yearOfCentury = static_cast<std::uint32_t>(p2 >> 32);
  const std::uint32_t dayOfYear = static_cast<std::uint32_t>(p2) / 2939745 / 4;
  const std::uint32_t n3 = 2141 * dayOfYear + 197913;
  const unsigned late = dayOfYear >= 306 ? 1 : 0;  // January or February of the next year
  Civil civil;
  civil.year = 100 * century + yearOfCentury + late;
  civil.month = (n3 >> 16) - (late != 0 ? 12 : 0);
  civil.day = (n3 & 0xFFFF) / 2141 + 1;
  return civil;
}

// Calendar fields of a tick count below 2^63.
struct Fields {
  unsigned year;
  unsigned month;
  unsigned dayOfWeek;  // Sunday 0
  unsigned day;
  unsigned hour;
  unsigned minute;
  unsigned second;
  unsigned millisecond;
};

inline Fields FieldsFromTicks(std::uint64_t ticks) {
  const std::uint64_t seconds = ticks / ticksPerSecond;
  const unsigned subSecond = static_cast<unsigned>(ticks - seconds * ticksPerSecond);
  const std::uint32_t days = static_cast<std::uint32_t>(seconds / secondsPerDay);
  const unsigned secondOfDay = static_cast<unsigned>(seconds - std::uint64_t{days} * secondsPerDay);
  const Civil civil = CivilFromDays(days);
  Fields fields;
  fields.year = civil.year;
  fields.month = civil.month;
  fields.dayOfWeek = (days + 1) % 7;  // 1601-01-01 was a Monday
  fields.day = civil.day;
  fields.hour = secondOfDay / 3600;
  fields.minute = secondOfDay / 60 % 60;
  fields.second = secondOfDay % 60;
  fields.millisecond = subSecond / static_cast<unsigned>(ticksPerMillisecond);
  return fields;
}

}  // namespace detail
}  // namespace Win32

#endif  // TESSERA_DETAIL_CALENDAR_H
