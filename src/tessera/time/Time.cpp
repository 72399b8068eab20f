#include <tessera/time/Time.h>

#include <tessera/win32/LastError.h>

#include "tessera/detail/Calendar.h"

namespace Tessera {

namespace {

using Win32::detail::epochSeconds;
using Win32::detail::epochTicks;
using Win32::detail::Join;
using Win32::detail::Low32;
using Win32::detail::Split;
using Win32::detail::ticksPerMicrosecond;
using Win32::detail::ticksPerSecond;

constexpr std::uint64_t microsecondsPerSecond = 1000000;

// All unsigned, so that huge or negative seconds wrap instead of overflowing.
std::uint64_t TicksFromUnix(std::int64_t seconds) {
  return (static_cast<std::uint64_t>(seconds) + epochSeconds) * ticksPerSecond;
}

std::uint64_t TicksFromTimeval(const ::timeval& value) {
  const std::uint64_t seconds = static_cast<std::uint64_t>(std::int64_t{Low32(value.tv_sec)});
  const std::uint64_t micro = static_cast<std::uint64_t>(std::int64_t{Low32(value.tv_usec)});
  return ((seconds + epochSeconds) * microsecondsPerSecond + micro) * ticksPerMicrosecond;
}

std::uint64_t UnixFromTicks(std::uint64_t ticks) { return (ticks - epochTicks) / ticksPerSecond; }

// Kept for compatibility: every field is cut to 16 bits before any check, as a SYSTEMTIME
// holds it (67137 is the year 1601); ported callers get the same acceptances and refusals.
Win32::SYSTEMTIME Fields(unsigned int year, unsigned int month, unsigned int day, unsigned int hour,
                         unsigned int minute, unsigned int second, unsigned int millisecond) {
  Win32::SYSTEMTIME fields;
  fields.wYear = static_cast<Win32::WORD>(year);
  fields.wMonth = static_cast<Win32::WORD>(month);
  fields.wDayOfWeek = 0;
  fields.wDay = static_cast<Win32::WORD>(day);
  fields.wHour = static_cast<Win32::WORD>(hour);
  fields.wMinute = static_cast<Win32::WORD>(minute);
  fields.wSecond = static_cast<Win32::WORD>(second);
  fields.wMilliseconds = static_cast<Win32::WORD>(millisecond);
  return fields;
}

}  // namespace

Time::Time() : Time(TimeKind::Local) {}

Time::Time(TimeKind kind)
    : Time(kind == TimeKind::Utc ? NowUtc().Ticks() : NowLocal().Ticks(), kind, tagTicks) {}

Time::Time(std::int32_t seconds, TimeKind kind) : word_(0) { Set(seconds, kind); }

Time::Time(std::int64_t seconds, TimeKind kind) : word_(0) { Set(seconds, kind); }

Time::Time(const ::timeval& value, TimeKind kind) : word_(0) { Set(value, kind); }

Time::Time(const Win32::FILETIME& value, TimeKind kind) : word_(0) { Set(value, kind); }

// Kept for compatibility: refused fields leave tick 0 and throw nothing, as ported callers expect.
Time::Time(const ::tm& value, TimeKind kind) : word_(0) {
  const bool set = Set(value, kind);
  static_cast<void>(set);
}

Time::Time(const Win32::SYSTEMTIME& value, TimeKind kind) : word_(0) { SetSystemTime(value, kind); }

Time::Time(unsigned int year, unsigned int month, unsigned int day, TimeKind kind) : word_(0) {
  Verify(Set(year, month, day, kind), PLAINT_CONTEXT("Tessera::Time::Time"));
}

Time::Time(unsigned int year, unsigned int month, unsigned int day, unsigned int hour,
           unsigned int minute, unsigned int second, unsigned int millisecond, TimeKind kind)
    : word_(0) {
  Verify(Set(year, month, day, hour, minute, second, millisecond, kind),
         PLAINT_CONTEXT("Tessera::Time::Time"));
}

void Time::Set(std::int32_t seconds, TimeKind kind) { Store(TicksFromUnix(seconds), kind); }

void Time::Set(std::int64_t seconds, TimeKind kind) { Store(TicksFromUnix(seconds), kind); }

void Time::Set(const Win32::FILETIME& value, TimeKind kind) { Store(Join(value), kind); }

bool Time::Set(const ::timeval& value, TimeKind kind) {
  Store(TicksFromTimeval(value), kind);
  return true;
}

bool Time::Set(const ::tm& value, TimeKind kind) {
  // Unsigned, so that the sums wrap; Fields keeps their low 16 bits.
  const auto field = [](int v) { return static_cast<unsigned int>(v); };
  return SetSystemTime(Fields(field(value.tm_year) + 1900, field(value.tm_mon) + 1, field(value.tm_mday),
                              field(value.tm_hour), field(value.tm_min), field(value.tm_sec), 0),
                       kind);
}

bool Time::Set(const Win32::SYSTEMTIME& value, TimeKind kind) { return SetSystemTime(value, kind); }

bool Time::Set(unsigned int year, unsigned int month, unsigned int day, TimeKind kind) {
  return SetSystemTime(Fields(year, month, day, 0, 0, 0, 0), kind);
}

bool Time::Set(unsigned int year, unsigned int month, unsigned int day, unsigned int hour,
               unsigned int minute, unsigned int second, unsigned int millisecond, TimeKind kind) {
  return SetSystemTime(Fields(year, month, day, hour, minute, second, millisecond), kind);
}

bool Time::SetSystemTime(const Win32::SYSTEMTIME& value, TimeKind kind) {
  Win32::FILETIME ticks;
  if (!Win32::SystemTimeToFileTime(&value, &ticks)) return false;
  Store(Join(ticks), kind);
  return true;
}

void Time::Render(std::int32_t& seconds) const { seconds = Low32(UnixFromTicks(Ticks())); }

void Time::Render(std::int64_t& seconds) const {
  seconds = static_cast<std::int64_t>(UnixFromTicks(Ticks()));
}

void Time::Render(Win32::FILETIME& value) const { value = Split(Ticks()); }

void Time::Render(Win32::SYSTEMTIME& value) const {
  const Win32::FILETIME ticks = Split(Ticks());
  Win32::FileTimeToSystemTime(&ticks, &value);
}

void Time::Render(::tm& value) const {
  const std::int64_t seconds = static_cast<std::int64_t>(UnixFromTicks(Ticks()));
  Win32::_gmtime64_s(&value, &seconds);
}

Time Time::NowLocal() {
  Win32::SYSTEMTIME fields;
  Win32::GetLocalTime(&fields);
  Win32::FILETIME ticks{0, 0};
  Win32::SystemTimeToFileTime(&fields, &ticks);
  return Time(Join(ticks), TimeKind::Local, tagTicks);
}

Time Time::NowUtc() {
  Win32::FILETIME ticks;
  Win32::GetSystemTimeAsFileTime(&ticks);
  return Time(Join(ticks), TimeKind::Utc, tagTicks);
}

Time& Time::MakeUtc() {
  Store(TicksUtc(), TimeKind::Utc);
  return *this;
}

Time& Time::MakeLocal() {
  Store(TicksLocal(), TimeKind::Local);
  return *this;
}

Time Time::AsUtc() const { return Time(TicksUtc(), TimeKind::Utc, tagTicks); }

Time Time::AsLocal() const { return Time(TicksLocal(), TimeKind::Local, tagTicks); }

std::uint64_t Time::TicksUtc() const { return IsUtc() ? Ticks() : TicksUtcConvert(); }

std::uint64_t Time::TicksLocal() const { return IsLocal() ? Ticks() : TicksLocalConvert(); }

std::uint64_t Time::TicksUtcConvert() const {
  const Win32::FILETIME local = Split(Ticks());
  Win32::FILETIME utc;
  Win32::LocalFileTimeToFileTime(&local, &utc);
  return Join(utc);
}

std::uint64_t Time::TicksLocalConvert() const {
  const Win32::FILETIME utc = Split(Ticks());
  Win32::FILETIME local;
  Win32::FileTimeToLocalFileTime(&utc, &local);
  return Join(local);
}

// The word moves by twice the span, so the kind bit is never touched.
Time& Time::operator+=(const TimeSpan& span) {
  word_ += static_cast<std::uint64_t>(span.GetTicks()) << 1;
  return *this;
}

Time& Time::operator-=(const TimeSpan& span) {
  word_ -= static_cast<std::uint64_t>(span.GetTicks()) << 1;
  return *this;
}

TimeSpan operator-(const Time& left, const Time& right) {
  return TimeSpan(static_cast<std::int64_t>(left.TicksUtc() - right.TicksUtc()));
}

bool Time::IsLeapYear(unsigned short year) { return Win32::detail::IsLeap(year); }

unsigned short Time::GetYearDay(unsigned short year, unsigned short month, unsigned short day) {
  static constexpr unsigned short daysBefore[2][13] = {
      {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365},
      {0, 31, 60, 91, 121, 152, 182, 213, 244, 274, 305, 335, 366}};
  if (month > 12) return 0xFFFF;
  return static_cast<unsigned short>(daysBefore[IsLeapYear(year) ? 1 : 0][month] + day);
}

TimeSpan Time::GetTimeZoneOffset() const {
  if (IsUtc()) return TimeSpan();
  return TimeSpan(static_cast<std::int64_t>(Ticks() - TicksUtcConvert()));
}

void Time::GetTimeZoneOffset(int& hours, int& minutes) const {
  const std::int64_t offset = GetTimeZoneOffset().GetTicks();
  const std::int64_t wholeHours = offset / TimeSpan::hour.GetTicks();
  hours = static_cast<int>(wholeHours);
  minutes = static_cast<int>((offset - wholeHours * TimeSpan::hour.GetTicks()) /
                             TimeSpan::minute.GetTicks());
}

float Time::GetTimeZoneOffsetHours() const {
  int hours = 0;
  int minutes = 0;
  GetTimeZoneOffset(hours, minutes);
  return static_cast<float>(minutes / 60.0 + hours);
}

void Time::Verify(bool ok, const Plaint::Context& context) {
  if (ok) return;
  // Read before anything else can disturb it.
  const Win32::DWORD code = Win32::GetLastError();
  Plaint::RuntimeError error("unable to initialize Time", context);
  Plaint::AddInfo<Plaint::ErrorInfo_Win32Error>(error, code);
  throw error;
}

void UnixTimeToFileTime(std::int32_t seconds, Win32::FILETIME& out) {
  out = Split(TicksFromUnix(seconds));
}

void UnixTimeToFileTime(std::int64_t seconds, Win32::FILETIME& out) {
  out = Split(TicksFromUnix(seconds));
}

void UnixTimeToFileTime(const ::timeval& value, Win32::FILETIME& out) {
  out = Split(TicksFromTimeval(value));
}

void FileTimeToUnixTime(const Win32::FILETIME& value, std::int32_t& seconds) {
  seconds = Low32(UnixFromTicks(Join(value)));
}

void FileTimeToUnixTime(const Win32::FILETIME& value, std::int64_t& seconds) {
  seconds = static_cast<std::int64_t>(UnixFromTicks(Join(value)));
}

void FileTimeToUnixTime(const Win32::FILETIME& value, ::timeval& out) {
  const std::uint64_t since = Join(value) - epochTicks;
  out.tv_sec = Low32(since / ticksPerSecond);
  out.tv_usec = Low32(since % ticksPerSecond / ticksPerMicrosecond);
}

}  // namespace Tessera
