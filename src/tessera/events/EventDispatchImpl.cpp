#include <tessera/events/EventDispatch.h>

#include <algorithm>

#include <plaint/Error.h>
#include <skein/Thread.h>

namespace Tessera {

EventDispatch::~EventDispatch() = default;

void EventDispatchMixIn::SetInitialized(bool value) {
  Skein::Guard<Skein::Lock> guard(lock);
  initialized = value;
}

void EventDispatchMixIn::PostEvent(const boost::shared_ptr<Event>& event) {
  Skein::Guard<Skein::Lock> guard(lock);
  if (!initialized) throw Plaint::LogicError("invalid object state", PLAINT_CONTEXT("Tessera::EventDispatchMixIn::PostEvent"));
  const bool wasEmpty = events.IsEmpty();
  events.PostEvent(event);
  // One notice stands for every post until the drain loop empties the list.
  if (wasEmpty) PostNotify(guard);
}

void EventDispatchMixIn::RegisterTarget(EventTarget& target) {
  if (std::find(targets.begin(), targets.end(), &target) == targets.end()) targets.push_back(&target);
}

void EventDispatchMixIn::UnregisterTarget(EventTarget& target) {
  auto found = std::find(targets.begin(), targets.end(), &target);
  if (found == targets.end()) return;
  // The walk runs from the back: a removal in front of it moves the served entry down.
  if (found - targets.begin() < current) --current;
  targets.erase(found);
}

bool EventDispatchMixIn::WithinHandler() const {
  return inHandler.load(std::memory_order_relaxed) &&
         threadId.load(std::memory_order_relaxed) == Skein::Thread::GetSelfId();
}

void EventDispatchMixIn::HandleNotify() {
  Skein::Guard<Skein::Lock> guard(lock);
  if (threadId.load(std::memory_order_relaxed) == 0)
    threadId.store(Skein::Thread::GetSelfId(), std::memory_order_relaxed);
  boost::shared_ptr<Event> event;
  // The event of the turn before is let go here, under the lock.
  while ((event = events.PullEvent())) DispatchEventLocked(event, guard);
  CancelNotify(guard);
}

void EventDispatchMixIn::DispatchEventLocked(boost::shared_ptr<Event>& event, Skein::Guard<Skein::Lock>& guard) {
  inHandler.store(true, std::memory_order_relaxed);
  EventTarget* const addressee = event->GetTarget();
  guard.Release();
  try {
    // By position, from the last registered: handlers may change the table as they run.
    for (current = static_cast<std::int32_t>(targets.size()) - 1; current >= 0; --current) {
      EventTarget* entry = targets[static_cast<std::size_t>(current)];
      if (addressee == nullptr || addressee == entry) entry->HandleEvent(*event);
    }
  } catch (...) {
    inHandler.store(false, std::memory_order_relaxed);
    guard.Acquire();
    throw;
  }
  guard.Acquire();
  inHandler.store(false, std::memory_order_relaxed);
}

}  // namespace Tessera
