// The event queue: an EventSink that threads pull from, first in, first out, with or without
// a time-out.
//
// EventQueueMixIn is the body, public so that a client can do several steps under one hold of
// its lock; EventQueue is the sink that copies share. Posting and pulling allocate nothing, and
// a post into a queue that is not empty makes no system call.
#ifndef TESSERA_EVENTS_EVENTQUEUE_H
#define TESSERA_EVENTS_EVENTQUEUE_H

#include <boost/shared_ptr.hpp>

#include <skein/Lock.h>
#include <skein/Waitable.h>
#include <tessera_export.h>
#include <tessera/events/Event.h>
#include <tessera/time/TimeSpan.h>

namespace Tessera {

class TESSERA_API EventQueueMixIn {
 public:
  EventQueueMixIn() = default;
  EventQueueMixIn(const EventQueueMixIn&) = delete;
  EventQueueMixIn& operator=(const EventQueueMixIn&) = delete;

  Skein::Lock& GetLock() const { return lock; }

  bool IsEmptyLocked() const { return events.IsEmpty(); }
  bool IsEmpty() const;

  // Links the event (a null event or one still linked is left out) and wakes the pullers
  // when the list was empty before, whatever was linked.
  void PostEventLocked(const boost::shared_ptr<Event>& event) {
    const bool wasEmpty = events.IsEmpty();
    events.PostEvent(event);
    if (wasEmpty) available.Set();
  }
  void PostEvent(const boost::shared_ptr<Event>& event);

  // Gives the first event, waiting for one at most `timeout` (null: no limit) with the lock
  // held by `guard` on entry and on return; it is let go while waiting. The limit is in whole
  // milliseconds, truncated toward zero and taken as unsigned: below one millisecond is a
  // single try, -1 ms waits without limit. After a wait that timed out the list is not tried
  // again: the result is null. A waiter woken for an event that another puller took waits on
  // for the rest of its time.
  boost::shared_ptr<Event> PullEventLocked(const TimeSpan* timeout, Skein::Guard<Skein::Lock>& guard);
  // Waits without limit; never null.
  boost::shared_ptr<Event> PullEvent();
  // Null when `timeout` passed without an event.
  boost::shared_ptr<Event> PullEvent(const TimeSpan& timeout);

 private:
  mutable Skein::Lock lock;
  EventListImpl events;
  Skein::ManualEvent available;
};

// A queue; copies share one body, which dies with the last copy (releasing what it holds).
// Kept for compatibility: no virtual destructor, as EventSink has none; silenced for clients.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
class TESSERA_API EventQueue : public EventSink {
 public:
  EventQueue();
  EventQueue(const EventQueue&) = default;
  EventQueue& operator=(const EventQueue&) = default;
  ~EventQueue() = default;

  void PostEvent(const boost::shared_ptr<Event>& event) override { body->PostEvent(event); }
  boost::shared_ptr<Event> PullEvent() { return body->PullEvent(); }
  boost::shared_ptr<Event> PullEvent(const TimeSpan& timeout) { return body->PullEvent(timeout); }

 private:
  boost::shared_ptr<EventQueueMixIn> body;
};
#pragma GCC diagnostic pop

}  // namespace Tessera

#endif  // TESSERA_EVENTS_EVENTQUEUE_H
