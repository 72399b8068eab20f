#include <tessera/timers/WindowTimerService.h>

#include <cstdint>
#include <vector>

#include "TimerStart.h"

namespace Tessera {

namespace detail {
class WindowTimer;
}

struct WindowTimerServiceImpl {
  unsigned int timerIdBase = 0;
  Win32::HWND window = nullptr;
  std::vector<detail::WindowTimer*> timers;  // a timer's place is its identifier minus the base
  unsigned int timerCount = 0;
};

namespace detail {

class WindowTimer : public Timer, private boost::noncopyable {
 public:
  WindowTimer(WindowTimerServiceImpl& service, TimerObserver& observer, unsigned int timerId)
      : service(&service), observer(&observer), timerId(timerId) {}

  ~WindowTimer() override {
    Stop();
    if (service == nullptr) return;
    const unsigned int position = timerId - service->timerIdBase;
    if (position < service->timers.size() && service->timers[position] == this) {
      service->timers[position] = nullptr;
      --service->timerCount;
    }
  }

  void Start(const TimeSpan& relTime, const TimeSpan* newPeriod) override {
    if (service == nullptr || service->window == nullptr)
      throw Plaint::LogicError("TimerService not running", PLAINT_CONTEXT("Tessera::WindowTimer::Start"));
    const std::int64_t delay = StartDelayMilliseconds(relTime, PLAINT_CONTEXT("Tessera::WindowTimer::Start"));
    period = StartPeriodMilliseconds(newPeriod, PLAINT_CONTEXT("Tessera::WindowTimer::Start"));
    // Kept for compatibility: the platform takes the low 32 bits of a longer delay.
    if (Win32::SetTimer(service->window, timerId, static_cast<Win32::UINT>(delay), nullptr) == 0)
      ThrowUnableToStart(PLAINT_CONTEXT("Tessera::WindowTimer::Start"));
    running = true;
  }

  void Start(const Time& when, const TimeSpan* newPeriod) override { Start(DelayUntil(when), newPeriod); }

  void Stop() override {
    if (!running || service == nullptr) return;
    running = false;
    Win32::KillTimer(service->window, timerId);
  }

  // The timer is in its next state before the observer sees it, so the observer may
  // stop, restart or delete it; nothing touches it afterwards.
  bool Fire() {
    if (!running) return false;
    if (period != 0) {
      // Armed anew even when the interval is unchanged: the period counts from now.
      Win32::SetTimer(service->window, timerId, period, nullptr);
    } else {
      Win32::KillTimer(service->window, timerId);
      running = false;
    }
    observer->HandleTimer(*this);
    return true;
  }

  // The service is going: stop, and touch nothing of it from now on.
  void Orphan() {
    Stop();
    service = nullptr;
  }

 private:
  WindowTimerServiceImpl* service;
  TimerObserver* observer;
  unsigned int timerId;
  unsigned int period = 0;  // milliseconds; 0 for a one-shot
  bool running = false;
};

}  // namespace detail

const unsigned int WindowTimerService::timerIdBaseDefault;

namespace {

bool FireTimer(WindowTimerServiceImpl& service, Win32::WPARAM timerId) {
  if (timerId < service.timerIdBase) return false;
  const Win32::WPARAM position = timerId - service.timerIdBase;
  if (position >= service.timers.size() || service.timers[position] == nullptr) return false;
  return service.timers[position]->Fire();
}

}  // namespace

WindowTimerService::WindowTimerService(Win32::HWND window, unsigned int timerIdBase) : impl(new WindowTimerServiceImpl) {
  if (window != nullptr) Initialize(window, timerIdBase);
}

WindowTimerService::~WindowTimerService() {
  if (impl->timerCount == 0) return;
  for (detail::WindowTimer* timer : impl->timers)
    if (timer != nullptr) timer->Orphan();
}

void WindowTimerService::Initialize(Win32::HWND window, unsigned int timerIdBase) {
  impl->window = window;
  impl->timerIdBase = timerIdBase == 0 ? 1 : timerIdBase;
}

Timer* WindowTimerService::CreateTimer(TimerObserver& observer) {
  std::vector<detail::WindowTimer*>& timers = impl->timers;
  std::size_t position = timers.size();
  if (impl->timerCount != timers.size()) {
    position = 0;
    while (timers[position] != nullptr) ++position;
  }
  // The table grows by exactly one place, and only when every place is taken.
  if (position == timers.size()) timers.push_back(nullptr);
  auto* timer = new detail::WindowTimer(*impl, observer, impl->timerIdBase + static_cast<unsigned int>(position));
  timers[position] = timer;
  ++impl->timerCount;
  return timer;
}

bool WindowTimerService::ProcessMessage(Win32::MSG& msg) {
  if (msg.hwnd != impl->window || msg.message != Win32::WM_TIMER) return false;
  return FireTimer(*impl, msg.wParam);
}

bool WindowTimerService::ProcessMessage(Win32::UINT msg, Win32::WPARAM wParam, Win32::LPARAM) {
  if (msg != Win32::WM_TIMER) return false;
  return FireTimer(*impl, wParam);
}

}  // namespace Tessera
