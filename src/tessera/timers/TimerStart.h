// The start arithmetic that window and multimedia timers share: whole milliseconds from a
// TimeSpan with the checks and errors of their Start, the delay until an absolute time,
// and the accuracy a multimedia timer asks for.
#ifndef TESSERA_TIMERS_TIMERSTART_H
#define TESSERA_TIMERS_TIMERSTART_H

#include <cstdint>

#include <plaint/Error.h>
#include <tessera/time/Time.h>
#include <tessera/time/TimeSpan.h>

namespace Tessera {
namespace detail {

// relTime in whole milliseconds, truncated toward zero. Throws Plaint::InvalidArgument
// "timer set to fire in the past" naming "relTime" when that is below zero, so -1 tick
// passes as 0. `context` is the caller's throw site.
std::int64_t StartDelayMilliseconds(const TimeSpan& relTime, const Plaint::Context& context);

// The period in whole milliseconds, 0 for a null one. Throws Plaint::InvalidArgument
// "negative timer period" naming "period" for a negative tick count, -1 included.
std::uint32_t StartPeriodMilliseconds(const TimeSpan* period, const Plaint::Context& context);

// Throws Plaint::RuntimeError "unable to start timer" with the thread's GetLastError code,
// which the caller has left untouched since the failed platform call.
[[noreturn]] void ThrowUnableToStart(const Plaint::Context& context);

// From now to `when`, both read on the clock of `when`'s kind and compared in UTC.
TimeSpan DelayUntil(const Time& when);

// A twentieth of `milliseconds`, rounded through a float, at most 100: 9 -> 0, 10 -> 1,
// 30 -> 2, 50 -> 3, 1989 -> 99, 1990 and above -> 100.
std::uint32_t MultimediaResolution(std::uint32_t milliseconds);

}  // namespace detail
}  // namespace Tessera

#endif  // TESSERA_TIMERS_TIMERSTART_H
