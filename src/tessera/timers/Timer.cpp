#include <tessera/timers/Timer.h>

#include <tessera/win32/LastError.h>

#include "TimerStart.h"

namespace Tessera {

Timer::~Timer() = default;
TimerService::~TimerService() = default;

namespace detail {

std::int64_t StartDelayMilliseconds(const TimeSpan& relTime, const Plaint::Context& context) {
  const std::int64_t delay = relTime.GetTicks() / TimeSpan::millisecond.GetTicks();
  if (delay < 0) {
    Plaint::InvalidArgument error("timer set to fire in the past", context);
    Plaint::AddInfo<Plaint::ErrorInfo_invalidArgumentName>(error, "relTime");
    throw error;
  }
  return delay;
}

std::uint32_t StartPeriodMilliseconds(const TimeSpan* period, const Plaint::Context& context) {
  if (period == nullptr) return 0;
  if (period->GetTicks() < 0) {
    Plaint::InvalidArgument error("negative timer period", context);
    Plaint::AddInfo<Plaint::ErrorInfo_invalidArgumentName>(error, "period");
    throw error;
  }
  // Kept for compatibility: the platform takes the low 32 bits of a longer period.
  return static_cast<std::uint32_t>(period->GetTicks() / TimeSpan::millisecond.GetTicks());
}

void ThrowUnableToStart(const Plaint::Context& context) {
  const Win32::DWORD code = Win32::GetLastError();
  Plaint::RuntimeError error("unable to start timer", context);
  Plaint::AddInfo<Plaint::ErrorInfo_Win32Error>(error, code);
  throw error;
}

TimeSpan DelayUntil(const Time& when) { return when - Time(when.GetKind()); }

std::uint32_t MultimediaResolution(std::uint32_t milliseconds) {
  const float twentieth = static_cast<float>(milliseconds / 20.0);
  const auto rounded = static_cast<std::uint32_t>(twentieth + 0.5);
  return rounded < 100 ? rounded : 100;
}

}  // namespace detail
}  // namespace Tessera
