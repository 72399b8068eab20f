// The Win32 clock and calendar operations on Linux: the two wall clocks, proleptic
// Gregorian conversion between file times and calendar fields, local/UTC conversion with
// the zone offset in force at the call, the C run-time's _gmtime64_s, and the performance
// counter on CLOCK_MONOTONIC.
//
// A file time counts 100-nanosecond ticks since 1601-01-01 00:00:00. A failing operation
// returns 0 (or an errno value for _gmtime64_s) and sets the thread's last-error code.
#ifndef TESSERA_WIN32_CLOCK_H
#define TESSERA_WIN32_CLOCK_H

#include <cstdint>
#include <ctime>

#include <tessera_export.h>
#include <tessera/win32/LastError.h>

namespace Win32 {

using BOOL = int;
using WORD = std::uint16_t;
using LONGLONG = std::int64_t;

// A 64-bit tick count in two halves.
struct FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
};

// Calendar fields. wDayOfWeek counts from Sunday = 0.
struct SYSTEMTIME {
  WORD wYear;
  WORD wMonth;
  WORD wDayOfWeek;
  WORD wDay;
  WORD wHour;
  WORD wMinute;
  WORD wSecond;
  WORD wMilliseconds;
};

union LARGE_INTEGER {
  struct {
    DWORD LowPart;
    std::int32_t HighPart;
  } u;
  LONGLONG QuadPart;
};

// The current UTC time at the full resolution of CLOCK_REALTIME (one tick).
TESSERA_API void GetSystemTimeAsFileTime(FILETIME* systemTimeAsFileTime);

// The current local wall-clock time, in whole milliseconds, with its day of the week.
TESSERA_API void GetLocalTime(SYSTEMTIME* systemTime);

// Calendar fields to ticks. Refuses, with ERROR_INVALID_PARAMETER and the output
// untouched, any field outside year 1601-30827, month 1-12, day 1 to the month's length,
// hour 0-23, minute 0-59, second 0-59, milliseconds 0-999; nothing is carried over into
// the next unit. wDayOfWeek is not read.
TESSERA_API BOOL SystemTimeToFileTime(const SYSTEMTIME* systemTime, FILETIME* fileTime);

// Ticks to calendar fields, day of the week included. Refuses a count with its top bit
// set (ERROR_INVALID_PARAMETER, output untouched); the largest accepted count lies in
// the year 30828.
TESSERA_API BOOL FileTimeToSystemTime(const FILETIME* fileTime, SYSTEMTIME* systemTime);

// Local ticks to UTC ticks and back, by the zone offset in force at the moment of the
// call (daylight saving included), whatever the date converted. TZ is read anew on each
// call. The arithmetic wraps modulo 2^64; both always succeed.
TESSERA_API BOOL LocalFileTimeToFileTime(const FILETIME* localFileTime, FILETIME* fileTime);
TESSERA_API BOOL FileTimeToLocalFileTime(const FILETIME* fileTime, FILETIME* localFileTime);

// Unix seconds to UTC calendar fields, for 0 to 32535215999 (3000-12-31 23:59:59). Any
// other value, or a null argument, gives EINVAL; with a `tm` to write to, its nine
// standard fields are then all -1. On success tm_isdst is 0 and tm_gmtoff 0.
TESSERA_API int _gmtime64_s(::tm* result, const std::int64_t* time);

// A monotonic counter that never goes back, and its fixed frequency in counts per second.
TESSERA_API BOOL QueryPerformanceCounter(LARGE_INTEGER* performanceCount);
TESSERA_API BOOL QueryPerformanceFrequency(LARGE_INTEGER* frequency);

}  // namespace Win32

#endif  // TESSERA_WIN32_CLOCK_H
