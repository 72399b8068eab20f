#include <tessera/timers/WinMMTimerService.h>

#include <atomic>
#include <cstdint>
#include <memory>

#include <boost/noncopyable.hpp>

#include <skein/Waitable.h>
#include <tessera/win32/MultimediaTimer.h>

#include "TimerStart.h"

namespace Tessera {

namespace {

class WinMMTimer : public Timer, private boost::noncopyable, private Skein::EventObserver {
 public:
  WinMMTimer(TimerObserver& observer, Skein::EventDispatcher* dispatcher)
      : observer(&observer),
        dispatcher(dispatcher),
        event(dispatcher != nullptr ? new Skein::AutoEvent(false) : nullptr) {}

  // Stopping kills the platform timer before the event it sets goes.
  ~WinMMTimer() override { Stop(); }

  void Start(const TimeSpan& relTime, const TimeSpan* newPeriod) override {
    Stop();
    const std::int64_t delay = detail::StartDelayMilliseconds(relTime, PLAINT_CONTEXT("Tessera::WinMMTimer::Start"));
    period = detail::StartPeriodMilliseconds(newPeriod, PLAINT_CONTEXT("Tessera::WinMMTimer::Start"));
    // Kept for compatibility: the platform takes the low 32 bits of a longer delay.
    const auto milliseconds = static_cast<std::uint32_t>(delay);
    if (!Arm(milliseconds, milliseconds == period)) detail::ThrowUnableToStart(PLAINT_CONTEXT("Tessera::WinMMTimer::Start"));
  }

  void Start(const Time& when, const TimeSpan* newPeriod) override { Start(detail::DelayUntil(when), newPeriod); }

  void Stop() override {
    const std::uint64_t old = armed.exchange(kStopped);
    if (old == kStopped) return;
    // An arming still in flight has no identifier yet; it sees the change and kills its
    // own timer.
    const auto timerId = static_cast<Win32::UINT>(old);
    if (timerId != 0) Win32::timeKillEvent(timerId);
    // Killed first, so that nothing sets the event any more.
    if (event) dispatcher->UnregisterWaitable(*event);
  }

 private:
  static constexpr std::uint64_t kStopped = 0;

  // The platform timer that stays is the one of the latest arming. Each arming publishes
  // a token of its own before timeSetEvent and its identifier after; a firing can come
  // between the two and stop or re-arm the timer, and then the late identifier is
  // dropped instead of overwriting the live one.
  bool Arm(std::uint32_t milliseconds, bool periodicNow) {
    Win32::LPTIMECALLBACK callback = &Fired;
    Win32::UINT flags = Win32::TIME_KILL_SYNCHRONOUS;
    if (event) {
      callback = Win32::EventHandleAsCallback(event->GetHandle());
      flags = Win32::TIME_CALLBACK_EVENT_SET;
      event->Reset();
    }
    if (periodicNow) flags |= Win32::TIME_PERIODIC;
    periodic = periodicNow;
    std::uint32_t token = ++tokens;
    if (token == 0) token = ++tokens;
    const std::uint64_t pending = std::uint64_t{token} << 32;
    armed.store(pending);
    const Win32::UINT timerId = Win32::timeSetEvent(milliseconds, detail::MultimediaResolution(milliseconds), callback,
                                                    reinterpret_cast<Win32::DWORD_PTR>(this), flags);
    std::uint64_t expected = pending;
    if (timerId == 0) {
      armed.compare_exchange_strong(expected, kStopped);
      return false;
    }
    if (event) dispatcher->RegisterWaitable(*event, this);
    if (!armed.compare_exchange_strong(expected, pending | timerId)) Win32::timeKillEvent(timerId);
    return true;
  }

  // Every firing: a single-shot platform timer is over, so stop, and
  // re-arm as periodic where a period follows; the observer sees the next state.
  void Fire() {
    if (!periodic) {
      Stop();
      if (period != 0) Arm(period, true);
    }
    observer->HandleTimer(*this);
  }

  static void Fired(Win32::UINT, Win32::UINT, Win32::DWORD_PTR user, Win32::DWORD_PTR, Win32::DWORD_PTR) {
    reinterpret_cast<WinMMTimer*>(user)->Fire();
  }

  void HandleSignal(void*) override { Fire(); }

  TimerObserver* observer;
  Skein::EventDispatcher* dispatcher;
  std::unique_ptr<Skein::AutoEvent> event;
  // The token of the latest arming in the high half, the platform's identifier in the
  // low half (0 until timeSetEvent has answered); kStopped when not armed.
  std::atomic<std::uint64_t> armed{kStopped};
  std::atomic<std::uint32_t> tokens{0};
  std::uint32_t period = 0;
  bool periodic = false;
};

}  // namespace

WinMMTimerService::~WinMMTimerService() = default;

Timer* WinMMTimerService::CreateTimer(TimerObserver& observer) { return new WinMMTimer(observer, dispatcher); }

}  // namespace Tessera
