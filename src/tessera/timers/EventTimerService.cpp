#include <tessera/timers/EventTimerService.h>

#include <skein/Timer.h>

namespace Tessera {

struct EventTimerServiceImpl {
  Skein::EventDispatcher* dispatcher;
};

namespace {

// A Skein::Timer under the eye of the dispatcher. It refers to the dispatcher, not to the
// service, so it outlives the service.
class EventTimer : public Timer, public Skein::EventObserver, private boost::noncopyable {
 public:
  EventTimer(TimerObserver& observer, Skein::EventDispatcher& dispatcher)
      : observer(&observer), dispatcher(&dispatcher) {}

  // Unregistering comes first, so that no firing reaches a timer being taken apart.
  ~EventTimer() override {
    dispatcher->UnregisterWaitable(timer);
    timer.Stop();
  }

  // Registering a registered timer again is one registration for the dispatcher.
  void Start(const TimeSpan& relTime, const TimeSpan* period) override {
    timer.Start(relTime, period);
    dispatcher->RegisterWaitable(timer, this);
  }

  void Start(const Time& when, const TimeSpan* period) override {
    timer.Start(when, period);
    dispatcher->RegisterWaitable(timer, this);
  }

  void Stop() override {
    dispatcher->UnregisterWaitable(timer);
    timer.Stop();
  }

  // The observer may stop or delete this timer: nothing of it is touched afterwards.
  void HandleSignal(void*) override { observer->HandleTimer(*this); }

 private:
  TimerObserver* observer;
  Skein::EventDispatcher* dispatcher;
  Skein::Timer timer;
};

}  // namespace

EventTimerService::EventTimerService(Skein::EventDispatcher& dispatcher)
    : impl(new EventTimerServiceImpl{&dispatcher}) {}

EventTimerService::~EventTimerService() = default;

Timer* EventTimerService::CreateTimer(TimerObserver& observer) { return new EventTimer(observer, *impl->dispatcher); }

}  // namespace Tessera
