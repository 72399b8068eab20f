// Skein event dispatch: a thread that watches waitables (timers and auto-reset events) and
// calls an observer each time one is signalled.
//
// EventDispatcher is the contract; EpollDispatcher the concrete dispatcher, one thread on
// epoll.
#ifndef SKEIN_EVENTDISPATCHER_H
#define SKEIN_EVENTDISPATCHER_H

#include <cstdint>
#include <memory>

#include <skein/Waitable.h>
#include <tessera_export.h>

namespace Skein {

// Called by a dispatcher on its own thread. `argument` is the signalled waitable.
class EventObserver {
 public:
  virtual void HandleSignal(void* argument) = 0;

 protected:
  // Observers are not owned by the dispatcher and are never deleted through this class.
  ~EventObserver() = default;
};

class TESSERA_API EventDispatcher {
 public:
  virtual ~EventDispatcher();

  // From now on `observer` is called on the dispatcher's thread each time `waitable` is
  // signalled; the call takes the signal first. Registering a registered waitable again
  // keeps one registration, with the new observer. Callable from any thread and from
  // inside HandleSignal. The waitable must be a Timer or an AutoEvent, and must outlive
  // its registration.
  virtual void RegisterWaitable(Waitable& waitable, EventObserver* observer) = 0;
  // Ends the registration: once it has returned, no call for `waitable` is running or
  // will come, except the call that this is made from. Harmless for a waitable that is
  // not registered.
  virtual void UnregisterWaitable(Waitable& waitable) = 0;
};

// One thread, started by the constructor, waiting on epoll for the registered waitables.
// A thread blocked in UnregisterWaitable waits only for a call in progress for that
// waitable; from the dispatcher's own thread it returns at once.
class TESSERA_API EpollDispatcher : public EventDispatcher {
 public:
  // Starts the thread. Throws Plaint::RuntimeError "unable to start dispatcher" if the
  // system refuses the epoll set, the wake-up event or the thread.
  EpollDispatcher();
  // Waits for a call in progress, stops and joins the thread; registrations are dropped.
  // Must not run on the dispatcher's own thread.
  ~EpollDispatcher() override;
  EpollDispatcher(const EpollDispatcher&) = delete;
  EpollDispatcher& operator=(const EpollDispatcher&) = delete;

  void RegisterWaitable(Waitable& waitable, EventObserver* observer) override;
  void UnregisterWaitable(Waitable& waitable) override;

  // Skein::Thread::GetSelfId of the dispatcher's thread.
  std::uint32_t GetThreadId() const;

  // Implementation details follow.
  struct State;

 private:
  std::unique_ptr<State> state_;
};

}  // namespace Skein

#endif  // SKEIN_EVENTDISPATCHER_H
