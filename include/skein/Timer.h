// Skein timers: a waitable that becomes signalled after a delay or at a point in time, once
// or at a period, for a thread to wait on or an EventDispatcher to watch.
//
// The timer is a timerfd on the monotonic clock, so a change of the wall clock after Start
// moves no firing.
#ifndef SKEIN_TIMER_H
#define SKEIN_TIMER_H

#include <skein/Waitable.h>
#include <tessera_export.h>
#include <tessera/time/Time.h>
#include <tessera/time/TimeSpan.h>

namespace Skein {

class TESSERA_API Timer : public Waitable {
 public:
  // A stopped timer. Throws Plaint::RuntimeError "unable to create timer" if the system
  // refuses a timerfd.
  Timer();
  ~Timer() override;

  // Signalled `delay` from now (at once for a delay of zero or less); then, with a
  // `period` above zero, every `period`, counted from the first firing without drift. A
  // null period, or one of zero or less, fires once. A running timer starts anew.
  void Start(const Tessera::TimeSpan& delay, const Tessera::TimeSpan* period);
  // The same with the first firing at `when`, a UTC or a local time; a local time is read
  // by the zone offset in force at the call. A moment in the past fires at once.
  // Inline, so that Skein's objects need the time area only where this form is used.
  void Start(const Tessera::Time& when, const Tessera::TimeSpan* period) {
    // Both read on the clock of `when`'s kind and compared in UTC.
    Start(when - Tessera::Time(when.GetKind()), period);
  }
  // Disarms the timer and clears a signal not yet taken. Harmless on a stopped timer.
  void Stop();

  // Blocks until the timer fires (true) or `timeout` milliseconds pass (false); taking the
  // signal clears it, however many periods passed since it was last taken.
  using Waitable::Wait;

 protected:
  bool Consume() override;
};

}  // namespace Skein

#endif  // SKEIN_TIMER_H
