// The timer contract: a TimerObserver asks a TimerService for a Timer and starts it, to be
// called after a delay, once or at a period. The contract knows nothing of the source of
// time; EventTimerService, WindowTimerService and WinMMTimerService are its three sources.
#ifndef TESSERA_TIMERS_TIMER_H
#define TESSERA_TIMERS_TIMER_H

#include <tessera_export.h>
#include <tessera/time/Time.h>
#include <tessera/time/TimeSpan.h>

namespace Tessera {

// A timer made by a TimerService; the caller owns it and ends it with delete.
class TESSERA_API Timer {
 public:
  Timer() = default;
  Timer(const Timer&) = default;
  Timer& operator=(const Timer&) = default;
  virtual ~Timer();

  // The first firing comes `relTime` from now; then, with a non-null `period`, one every
  // `period`. A running timer starts anew.
  virtual void Start(const TimeSpan& relTime, const TimeSpan* period) = 0;
  // The same with the first firing at `when`.
  virtual void Start(const Time& when, const TimeSpan* period) = 0;
  // No firing follows until the next Start; harmless on a timer that is not running.
  virtual void Stop() = 0;

  // Fires every `period`, the first time one period from now.
  void StartPeriodic(const TimeSpan& period) { Start(period, &period); }
};

// Called at each firing with the timer that fired, so one observer can serve several.
class TimerObserver {
 public:
  TimerObserver() = default;
  TimerObserver(const TimerObserver&) = default;
  TimerObserver& operator=(const TimerObserver&) = default;

  virtual void HandleTimer(Timer& timer) = 0;

 protected:
  // Timers hold their observer by plain pointer and never delete it.
  ~TimerObserver() = default;
};

class TESSERA_API TimerService {
 public:
  TimerService() = default;
  TimerService(const TimerService&) = default;
  TimerService& operator=(const TimerService&) = default;
  virtual ~TimerService();

  // A new timer, stopped, that calls `observer`; the observer must outlive it.
  virtual Timer* CreateTimer(TimerObserver& observer) = 0;
};

}  // namespace Tessera

#endif  // TESSERA_TIMERS_TIMER_H
