// WindowTimerService: timers on the window timers of a thread with a message window. A
// firing is a WM_TIMER in the window's queue; the owner of the message loop hands each
// message to ProcessMessage, and HandleTimer runs there, on the window's thread. The
// service, its timers and ProcessMessage all belong to that thread; there is no lock.
//
// Each timer has an identifier, timerIdBase plus its place in the service's table; a
// freed place is reused, the lowest first, before the table grows. The platform timer
// repeats at one interval, so each firing re-arms it with the period, counted from the
// moment the message is handled: lateness adds up over firings.
//
// WindowTimer::Start(relTime, period) checks, in this order, and throws with the context
// "Tessera::WindowTimer::Start":
//   - Plaint::LogicError "TimerService not running" when the service has gone or has no
//     window;
//   - Plaint::InvalidArgument "timer set to fire in the past" naming "relTime" when relTime
//     is below 0 ms after truncation toward zero (so -1 tick passes as 0);
//   - Plaint::InvalidArgument "negative timer period" naming "period" for a negative tick
//     count; a period below 1 ms makes a one-shot;
//   - Plaint::RuntimeError "unable to start timer" with the Win32 code when SetTimer fails;
//     the new period is then kept and the running state is as it was.
// Other failures leave the timer as it was, running or not. Start on a running timer
// re-arms it; Stop is harmless on a stopped timer. When the service dies its timers stop
// and become orphans: Start throws, Stop does nothing, delete is safe.
#ifndef TESSERA_TIMERS_WINDOWTIMERSERVICE_H
#define TESSERA_TIMERS_WINDOWTIMERSERVICE_H

#include <memory>

#include <boost/noncopyable.hpp>

#include <tessera_export.h>
#include <tessera/timers/Timer.h>
#include <tessera/win32/Window.h>

namespace Tessera {

struct WindowTimerServiceImpl;

class TESSERA_API WindowTimerService : public TimerService, private boost::noncopyable {
 public:
  static const unsigned int timerIdBaseDefault = 0x10000;

  // With a null window the service has none, and its base stays 0 whatever is passed;
  // otherwise as Initialize.
  explicit WindowTimerService(Win32::HWND window = nullptr, unsigned int timerIdBase = timerIdBaseDefault);
  // Stops the running timers and leaves every timer an orphan.
  ~WindowTimerService() override;

  // Gives the service its window and identifier base, a base of 0 being taken as 1. Make
  // timers after this: a timer keeps the identifier it was made with.
  void Initialize(Win32::HWND window, unsigned int timerIdBase);

  // A stopped timer with the lowest free identifier.
  Timer* CreateTimer(TimerObserver& observer) override;

  // A WM_TIMER of the service's window for one of its running timers: re-arms the timer
  // (or stops a one-shot), calls its observer, and gives true. Anything else, including
  // the client's own timers with identifiers outside the table, gives false untouched.
  bool ProcessMessage(Win32::MSG& msg);
  // The same without comparing windows; lParam is not read.
  bool ProcessMessage(Win32::UINT msg, Win32::WPARAM wParam, Win32::LPARAM lParam);

 private:
  std::unique_ptr<WindowTimerServiceImpl> impl;
};

}  // namespace Tessera

#endif  // TESSERA_TIMERS_WINDOWTIMERSERVICE_H
