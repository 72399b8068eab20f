// Time: a point in time as one 64-bit word, the kind (UTC or local) in bit 0 and in bits
// 1 to 63 the 100-nanosecond ticks since 1601-01-01 00:00:00 on the clock of that kind.
//
// Converts to and from FILETIME, SYSTEMTIME, tm, timeval and Unix seconds, reads the two
// clocks, moves between the kinds by the zone offset in force at the call, and writes and
// reads the Internet date texts (RFC 822/1123, RFC 850, asctime, HTTP) and ISO 8601.
// Parsers report by their result and leave the object as it was when they refuse.
#ifndef TESSERA_TIME_TIME_H
#define TESSERA_TIME_TIME_H

#include <cstdint>
#include <ctime>
#include <iosfwd>
#include <string>

#include <sys/time.h>

#include <plaint/Error.h>
#include <tessera_export.h>
#include <tessera/time/TimeSpan.h>
#include <tessera/win32/Clock.h>

namespace Tessera {

// The clock a Time is read on. Where a kind is stored, its lowest bit alone counts.
enum class TimeKind : std::uint32_t { Utc = 0, Local = 1 };

// Flags of the date formats; other bits are ignored.
enum TimeFormatFlags : std::int32_t {
  // FormatRfc822: a two-digit year.
  TimeFormatTwoDigitYear = 0x1,
  // FormatRfc822: a zero offset as "GMT" rather than "+0000".
  TimeFormatGmtZone = 0x8,
  // ISO 8601 texts: each takes a piece away or changes it; 0 gives the complete text.
  TimeFormatNoZone = 0x10,
  TimeFormatNoFraction = 0x20,
  TimeFormatNoSeconds = 0x40,       // and so no fraction
  TimeFormatSpaceSeparator = 0x80,  // " " between date and time instead of "T"
  TimeFormatShortZone = 0x100,      // zone minutes left out when 0
  TimeFormatNoDate = 0x200,
  TimeFormatNoTime = 0x400,         // and so no zone
  TimeFormatCompact = 0x800,        // no "-" in the date, no ":" in the time
};

class Time;

// The first value's UTC ticks minus the second's: correct across kinds.
TESSERA_API TimeSpan operator-(const Time& left, const Time& right);

class TESSERA_API Time {
 public:
  // The current local time.
  Time();
  // The current time: UTC at the clock's full resolution, local in whole milliseconds.
  explicit Time(TimeKind kind);
  // Unix seconds read on the clock of `kind`: no zone is applied.
  Time(std::int32_t seconds, TimeKind kind);
  Time(std::int64_t seconds, TimeKind kind);
  // As Set(const timeval&, kind).
  Time(const ::timeval& value, TimeKind kind);
  // The FILETIME count as ticks, with no conversion.
  Time(const Win32::FILETIME& value, TimeKind kind);
  // As the matching Set; refused fields give the zero word (1601-01-01, UTC).
  Time(const ::tm& value, TimeKind kind);
  Time(const Win32::SYSTEMTIME& value, TimeKind kind);
  // As the matching Set. Refused fields throw Plaint::RuntimeError "unable to initialize
  // Time" with the Win32 error code attached.
  Time(unsigned int year, unsigned int month, unsigned int day, TimeKind kind);
  Time(unsigned int year, unsigned int month, unsigned int day, unsigned int hour,
       unsigned int minute, unsigned int second, unsigned int millisecond, TimeKind kind);
  Time(const Time&) = default;
  Time& operator=(const Time&) = default;

  // Setters replace ticks and kind together; those with a result leave the object
  // unchanged when they return false.
  void Set(std::int32_t seconds, TimeKind kind);
  void Set(std::int64_t seconds, TimeKind kind);
  void Set(const Win32::FILETIME& value, TimeKind kind);
  // Seconds and microseconds, both low 32 bits sign-extended; tv_usec has no range test.
  // Always true.
  bool Set(const ::timeval& value, TimeKind kind);
  // tm_year + 1900, tm_mon + 1, tm_mday, tm_hour, tm_min, tm_sec, each cut to 16 bits;
  // tm_wday, tm_yday and tm_isdst are not read.
  [[nodiscard]] bool Set(const ::tm& value, TimeKind kind);
  [[nodiscard]] bool Set(const Win32::SYSTEMTIME& value, TimeKind kind);
  // Midnight of the day. Each field is cut to 16 bits, then validated: year 1601-30827,
  // no carrying of out-of-range fields.
  // Kept for compatibility: the cut comes before any check, so a year of 67137 is 1601;
  // ported callers get the same acceptances and refusals.
  [[nodiscard]] bool Set(unsigned int year, unsigned int month, unsigned int day, TimeKind kind);
  // Second 60 and milliseconds 1000 are refused.
  [[nodiscard]] bool Set(unsigned int year, unsigned int month, unsigned int day, unsigned int hour,
                         unsigned int minute, unsigned int second, unsigned int millisecond,
                         TimeKind kind);

  // Renderers use the stored ticks on the clock of the kind, without conversion.
  // Unix seconds, by unsigned arithmetic: a time before 1970 gives the wrapped quotient.
  void Render(std::int32_t& seconds) const;  // low 32 bits
  void Render(std::int64_t& seconds) const;
  void Render(Win32::FILETIME& value) const;
  // Left as FileTimeToSystemTime leaves it.
  void Render(Win32::SYSTEMTIME& value) const;
  // Through _gmtime64_s: outside 1970 to 3000 every field is -1.
  void Render(::tm& value) const;

  TimeKind GetKind() const { return static_cast<TimeKind>(word_ & 1); }
  bool IsLocal() const { return (word_ & 1) != 0; }
  bool IsUtc() const { return (word_ & 1) == 0; }
  // Relabels the ticks; no conversion.
  void SetKind(TimeKind kind) { word_ = (word_ & ~std::uint64_t{1}) | KindBit(kind); }

  // The local wall clock in whole milliseconds.
  static Time NowLocal();
  // The UTC clock at full resolution.
  static Time NowUtc();

  // Convert in place by the zone offset in force now; no-ops when the kind matches.
  Time& MakeUtc();
  Time& MakeLocal();
  Time AsUtc() const;
  Time AsLocal() const;

  // Move the ticks on the clock of the kind, wrapping modulo 2^63; the kind stays.
  Time& operator+=(const TimeSpan& span);
  Time& operator-=(const TimeSpan& span);

  friend TimeSpan operator-(const Time& left, const Time& right);

  // Gregorian: divisible by 4, and not by 100 unless by 400.
  static bool IsLeapYear(unsigned short year);
  // Days before `month` (0-based, 12 is the whole year) plus `day`, cut to 16 bits;
  // 65535 for a month above 12.
  static unsigned short GetYearDay(unsigned short year, unsigned short month, unsigned short day);

  // Local minus UTC, positive east of Greenwich; zero for a UTC time without any
  // platform call. Hours and minutes truncate toward zero and share the sign: -5, -30.
  TimeSpan GetTimeZoneOffset() const;
  void GetTimeZoneOffset(int& hours, int& minutes) const;
  float GetTimeZoneOffsetHours() const;

  // Internet date texts. Fields are those of the clock of the kind; a year outside 1970
  // to 3000 is written as its true calendar value.
  // "Wed, 12 Nov 2008 12:34:56 +0000"; flags TimeFormatTwoDigitYear, TimeFormatGmtZone.
  void FormatRfc822(std::string& out, std::int32_t flags) const;
  void FormatRfc1123(std::string& out) const;
  // RFC 1123 text of the same moment in UTC, ending in "GMT".
  void FormatHttp(std::string& out) const;
  // "Wednesday, 12-Nov-08 12:34:56 GMT".
  void FormatRfc850(std::string& out) const;
  // "Wed Nov 12 12:34:56 2008", no zone.
  void FormatAscTime(std::string& out) const;
  // Each reads its form tolerantly; on success the result is UTC, a text without a zone
  // being read as UTC. On false the object is unchanged.
  [[nodiscard]] bool ParseRfc822(const std::string& text);
  [[nodiscard]] bool ParseRfc850(const std::string& text);
  [[nodiscard]] bool ParseAscTime(const std::string& text);
  // RFC 822, then RFC 850, then asctime; the first that reads the text wins.
  [[nodiscard]] bool ParseHttp(const std::string& text);

  // ISO 8601 under the TimeFormat flags ("2008-11-12T12:34:56.789Z" with 0). Numbers
  // go through the stream in fixed widths; the fill character '0' stays set afterwards.
  void OutputIso(std::ostream& stream, std::int32_t flags) const;
  // The text OutputIso writes to a fresh stream, replacing `out`.
  void FormatIso(std::string& out, std::int32_t flags) const;
  void FormatIsoDate(std::string& out) const;
  // As FormatIso with TimeFormatNoDate set and TimeFormatNoTime cleared.
  void FormatIsoTime(std::string& out, std::int32_t flags) const;
  // Extended or basic form, "T", "_" or " " between date and time, optional time,
  // seconds, fraction and zone; the result is UTC. On false the object is unchanged.
  [[nodiscard]] bool ParseIso(const std::string& text);

 private:
  enum Tag { tagTicks };

  Time(std::uint64_t ticks, TimeKind kind, Tag) : word_((ticks << 1) | KindBit(kind)) {}

  static constexpr std::uint64_t KindBit(TimeKind kind) {
    return static_cast<std::uint64_t>(kind) & 1;
  }
  std::uint64_t Ticks() const { return word_ >> 1; }
  void Store(std::uint64_t ticks, TimeKind kind) { word_ = (ticks << 1) | KindBit(kind); }

  bool SetSystemTime(const Win32::SYSTEMTIME& value, TimeKind kind);
  std::uint64_t TicksUtc() const;
  std::uint64_t TicksLocal() const;
  std::uint64_t TicksUtcConvert() const;
  std::uint64_t TicksLocalConvert() const;
  static void Verify(bool ok, const Plaint::Context& context);

  std::uint64_t word_;
};

// Unix seconds (sign-extended) to ticks: (seconds + 11644473600) * 10000000.
TESSERA_API void UnixTimeToFileTime(std::int32_t seconds, Win32::FILETIME& out);
TESSERA_API void UnixTimeToFileTime(std::int64_t seconds, Win32::FILETIME& out);
TESSERA_API void UnixTimeToFileTime(const ::timeval& value, Win32::FILETIME& out);
// Ticks to Unix seconds by unsigned arithmetic, so a time before 1970 wraps.
TESSERA_API void FileTimeToUnixTime(const Win32::FILETIME& value, std::int32_t& seconds);
TESSERA_API void FileTimeToUnixTime(const Win32::FILETIME& value, std::int64_t& seconds);
// tv_sec as above (low 32 bits); tv_usec the remaining ticks over 10.
TESSERA_API void FileTimeToUnixTime(const Win32::FILETIME& value, ::timeval& out);

// Conveniences beside the ported API: Time values compare as moments, by the same rule as
// operator-. A local value is taken to UTC by the zone offset in force at the call, and the
// kind takes no part, so a UTC value and a local value of the same moment are equal.
inline bool operator==(const Time& a, const Time& b) { return (a - b).GetTicks() == 0; }
inline bool operator!=(const Time& a, const Time& b) { return (a - b).GetTicks() != 0; }
inline bool operator<(const Time& a, const Time& b) { return (a - b).GetTicks() < 0; }
inline bool operator<=(const Time& a, const Time& b) { return (a - b).GetTicks() <= 0; }
inline bool operator>(const Time& a, const Time& b) { return (a - b).GetTicks() > 0; }
inline bool operator>=(const Time& a, const Time& b) { return (a - b).GetTicks() >= 0; }

}  // namespace Tessera

#endif  // TESSERA_TIME_TIME_H
