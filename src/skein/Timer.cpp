#include <skein/Timer.h>

#include <sys/timerfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include <plaint/Error.h>

namespace Skein {

namespace {

constexpr std::int64_t kTicksPerSecond = 10000000;
constexpr std::int64_t kNanosecondsPerTick = 100;

int MakeTimerHandle() {
  const int handle = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK);
  if (handle < 0) {
    const int error = errno;
    throw Plaint::RuntimeError(std::string("unable to create timer: ") + std::strerror(error),
                               PLAINT_CONTEXT("Skein::Timer::Timer"));
  }
  return handle;
}

timespec FromTicks(std::int64_t ticks) {
  timespec value{};
  value.tv_sec = static_cast<time_t>(ticks / kTicksPerSecond);
  value.tv_nsec = static_cast<long>(ticks % kTicksPerSecond * kNanosecondsPerTick);
  return value;
}

void Arm(int handle, std::int64_t delayTicks, const Tessera::TimeSpan* period) {
  itimerspec setting{};
  // A zero value would disarm the timerfd, so "now" is one nanosecond away.
  if (delayTicks > 0)
    setting.it_value = FromTicks(delayTicks);
  else
    setting.it_value.tv_nsec = 1;
  if (period != nullptr && period->GetTicks() > 0) setting.it_interval = FromTicks(period->GetTicks());
  timerfd_settime(handle, 0, &setting, nullptr);
}

}  // namespace

Timer::Timer() : Waitable(MakeTimerHandle()) {}

Timer::~Timer() = default;

void Timer::Start(const Tessera::TimeSpan& delay, const Tessera::TimeSpan* period) {
  Arm(GetHandle(), delay.GetTicks(), period);
}

void Timer::Stop() {
  const itimerspec disarmed{};
  // Setting the timer also drops expirations not yet read.
  timerfd_settime(GetHandle(), 0, &disarmed, nullptr);
}

bool Timer::Consume() {
  std::uint64_t expirations = 0;
  for (;;) {
    if (read(GetHandle(), &expirations, sizeof expirations) == static_cast<ssize_t>(sizeof expirations)) return true;
    if (errno != EINTR) return false;
  }
}

}  // namespace Skein
