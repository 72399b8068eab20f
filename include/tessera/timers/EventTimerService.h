// EventTimerService: timers on Skein::Timer, watched by a Skein::EventDispatcher, whose
// thread runs HandleTimer. ("Event" names the dispatcher: these timers post no Event.)
#ifndef TESSERA_TIMERS_EVENTTIMERSERVICE_H
#define TESSERA_TIMERS_EVENTTIMERSERVICE_H

#include <memory>

#include <boost/noncopyable.hpp>

#include <skein/EventDispatcher.h>
#include <tessera_export.h>
#include <tessera/timers/Timer.h>

namespace Tessera {

struct EventTimerServiceImpl;

class TESSERA_API EventTimerService : public TimerService, private boost::noncopyable {
 public:
  // Keeps the reference; the dispatcher must outlive every timer of the service.
  explicit EventTimerService(Skein::EventDispatcher& dispatcher);
  ~EventTimerService() override;

  // A stopped timer on the service's dispatcher. Timers keep no tie to the service and
  // go on working after it is gone. Start and Stop throw only what Skein throws; Stop and
  // delete may be called from the timer's own HandleTimer. A one-shot that has fired
  // stays registered with the dispatcher, silent, until Stop or delete.
  Timer* CreateTimer(TimerObserver& observer) override;

 private:
  std::unique_ptr<EventTimerServiceImpl> impl;
};

}  // namespace Tessera

#endif  // TESSERA_TIMERS_EVENTTIMERSERVICE_H
