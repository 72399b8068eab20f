#include <tessera/events/EventQueue.h>

#include <cstdint>

namespace Tessera {

bool EventQueueMixIn::IsEmpty() const {
  Skein::Guard<Skein::Lock> guard(lock);
  return events.IsEmpty();
}

void EventQueueMixIn::PostEvent(const boost::shared_ptr<Event>& event) {
  Skein::Guard<Skein::Lock> guard(lock);
  PostEventLocked(event);
}

boost::shared_ptr<Event> EventQueueMixIn::PullEventLocked(const TimeSpan* timeout, Skein::Guard<Skein::Lock>& guard) {
  std::uint64_t remaining = timeout == nullptr
                                ? ~std::uint64_t{0}
                                : static_cast<std::uint64_t>(timeout->GetTicks() / TimeSpan::millisecond.GetTicks());
  bool signalled = true;
  for (;;) {
    boost::shared_ptr<Event> event;
    if (signalled) event = events.PullEvent();
    if (event || remaining == 0) return event;
    // Reset under the lock after the list was seen empty: a post that follows sets it again,
    // so no wake-up is lost.
    available.Reset();
    guard.Release();
    signalled = available.Wait(remaining, &remaining);
    guard.Acquire();
  }
}

boost::shared_ptr<Event> EventQueueMixIn::PullEvent() {
  Skein::Guard<Skein::Lock> guard(lock);
  return PullEventLocked(nullptr, guard);
}

boost::shared_ptr<Event> EventQueueMixIn::PullEvent(const TimeSpan& timeout) {
  Skein::Guard<Skein::Lock> guard(lock);
  return PullEventLocked(&timeout, guard);
}

EventQueue::EventQueue() : body(new EventQueueMixIn) {}

}  // namespace Tessera
