// Event dispatch: a sink that calls registered targets on one thread, the dispatching thread.
//
// EventDispatch is the interface; EventDispatchMixIn is the machine behind it: the list, the
// lock, the target table and the drain loop. A derived class says how the dispatching thread
// is told that there is work (PostNotify) and withdraws spare notices (CancelNotify); one
// notice stands for any number of posts until the list runs empty.
#ifndef TESSERA_EVENTS_EVENTDISPATCH_H
#define TESSERA_EVENTS_EVENTDISPATCH_H

#include <atomic>
#include <cstdint>
#include <vector>

#include <boost/noncopyable.hpp>
#include <boost/shared_ptr.hpp>

#include <skein/Lock.h>
#include <tessera_export.h>
#include <tessera/events/Event.h>

namespace Tessera {

class TESSERA_API EventDispatch : public EventSink {
 public:
  void PostEvent(const boost::shared_ptr<Event>& event) override = 0;
  virtual ~EventDispatch();
  virtual void RegisterTarget(EventTarget& target) = 0;
  virtual void UnregisterTarget(EventTarget& target) = 0;
  virtual bool WithinHandler() const = 0;

 protected:
  EventDispatch() = default;
  EventDispatch(const EventDispatch&) = default;
  EventDispatch& operator=(const EventDispatch&) = default;
};

// Kept for compatibility: a public destructor that is not virtual, as ported callers' layouts
// have it; the warning a client's -Wnon-virtual-dtor would give is silenced here alone.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
class TESSERA_API EventDispatchMixIn : private boost::noncopyable {
 public:
  explicit EventDispatchMixIn(bool initiallyInitialized = false) : initialized(initiallyInitialized) {}
  // Releases the events still listed, unseen.
  ~EventDispatchMixIn() = default;

  Skein::Lock& GetLock() const { return lock; }
  void SetInitialized(bool value);

  // Links the event (a null or still linked event is left out) and calls PostNotify when the
  // list was empty. Throws Plaint::LogicError "invalid object state" when not initialised;
  // the event is not linked then.
  void PostEvent(const boost::shared_ptr<Event>& event);

  // Appends a target that is not registered yet. Dispatching thread only (or any thread
  // before the first dispatch); safe from inside a handler.
  void RegisterTarget(EventTarget& target);
  // Removes a registered target; the walk under way serves every remaining target once.
  void UnregisterTarget(EventTarget& target);
  // True on the dispatching thread while a handler runs.
  bool WithinHandler() const;

 protected:
  // Dispatches every listed event, then withdraws spare notices. Each event goes to its
  // target, or to every target when it has none, latest registration first, with the lock
  // let go during the handlers. An exception from a handler leaves here with the lock free;
  // the events behind it stay listed.
  void HandleNotify();

  // All events are taken; notices still on their way may be withdrawn. Lock held by `guard`.
  virtual void CancelNotify(Skein::Guard<Skein::Lock>& guard) = 0;
  // The list went from empty to not empty. Lock held by `guard`.
  virtual void PostNotify(Skein::Guard<Skein::Lock>& guard) = 0;

 private:
  void DispatchEventLocked(boost::shared_ptr<Event>& event, Skein::Guard<Skein::Lock>& guard);

  mutable Skein::Lock lock;
  EventListImpl events;
  std::vector<EventTarget*> targets;  // in order of registration, not owned
  std::int32_t current = -1;          // position of the target being served
  // Read by WithinHandler from any thread, hence atomic.
  std::atomic<std::uint32_t> threadId{0};
  std::atomic<bool> inHandler{false};
  bool initialized;
};
#pragma GCC diagnostic pop

}  // namespace Tessera

#endif  // TESSERA_EVENTS_EVENTDISPATCH_H
