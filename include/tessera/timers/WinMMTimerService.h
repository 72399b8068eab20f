// WinMMTimerService: timers on the platform's multimedia timers. Without a dispatcher,
// HandleTimer runs on the process's multimedia timer thread; with one, the platform sets
// an auto event of the timer and HandleTimer runs on the dispatcher's thread.
//
// WinMMTimer::Start(relTime, period) stops the timer first, then checks and arms:
//   - a relTime below 0 ms (after truncation toward zero) throws Plaint::InvalidArgument
//     "timer set to fire in the past" naming "relTime"; a negative period (by the tick)
//     throws "negative timer period" naming "period"; the timer is left stopped;
//   - a period below 1 ms makes a one-shot; a period equal to the delay in whole
//     milliseconds one periodic platform timer; another period a single firing that
//     re-arms as periodic at its first firing, before the observer is called;
//   - a platform refusal (a delay of 0 or above 1,000,000 ms) throws Plaint::RuntimeError
//     "unable to start timer" with the Win32 code from GetLastError.
// Each platform timer asks for an accuracy of 5% of its interval, capped at 100 ms.
// Stop and delete may be called from HandleTimer; after they return from another thread,
// no call of the observer is under way. Start, Stop and delete of one timer are for one
// thread at a time, and not for another thread while the timer fires.
#ifndef TESSERA_TIMERS_WINMMTIMERSERVICE_H
#define TESSERA_TIMERS_WINMMTIMERSERVICE_H

#include <skein/EventDispatcher.h>
#include <tessera_export.h>
#include <tessera/timers/Timer.h>

namespace Tessera {

class TESSERA_API WinMMTimerService : public TimerService {
 public:
  // A null dispatcher calls observers on the multimedia timer thread.
  explicit WinMMTimerService(Skein::EventDispatcher* callingThread = nullptr) : dispatcher(callingThread) {}
  WinMMTimerService(const WinMMTimerService&) = default;
  WinMMTimerService& operator=(const WinMMTimerService&) = default;
  // Nothing to do: the service keeps no list of its timers.
  ~WinMMTimerService() override;

  // A stopped timer; with a dispatcher it owns an auto event, made here.
  Timer* CreateTimer(TimerObserver& observer) override;

 private:
  Skein::EventDispatcher* dispatcher;
};

}  // namespace Tessera

#endif  // TESSERA_TIMERS_WINMMTIMERSERVICE_H
