// Skein waitables: objects a thread can block on until they are signalled.
//
// Each waitable is backed by a descriptor that polls readable while it is signalled (an
// eventfd for the events), so another thread, a timer thread or an epoll loop can signal
// or watch it.
#ifndef SKEIN_WAITABLE_H
#define SKEIN_WAITABLE_H

#include <atomic>
#include <cstdint>

#include <skein/Lock.h>
#include <tessera_export.h>

namespace Skein {

class TESSERA_API Waitable {
 public:
  // A timeout of all ones waits without limit.
  static constexpr std::uint64_t infinite = ~std::uint64_t{0};

  virtual ~Waitable();
  Waitable(const Waitable&) = delete;
  Waitable& operator=(const Waitable&) = delete;

  // The descriptor that polls readable while the object is signalled.
  int GetHandle() const { return handle_; }

 protected:
  // Takes ownership of `handle`.
  explicit Waitable(int handle) : handle_(handle) {}

  // Blocks until signalled (true) or until `timeout` milliseconds have passed (false).
  // Writes the unspent part of `timeout` to `*remaining` when it is not null: 0 when the
  // time ran out, all ones for an unlimited wait. `remaining` may point at the variable
  // `timeout` was read from.
  bool Wait(std::uint64_t timeout, std::uint64_t* remaining);

  // Called when the descriptor polls readable: takes the signal (an auto-reset event
  // clears itself here). False when another waiter took it first.
  virtual bool Consume() = 0;

 private:
  int handle_;
};

// An event that is set and reset explicitly or by its own waits.
class TESSERA_API WaitableEvent : public Waitable {
 public:
  // Setting a set manual event and resetting a reset one make no system call.
  void Set();
  void Reset();

  using Waitable::Wait;
  // Waits without limit.
  void Wait() { Wait(infinite, nullptr); }

 protected:
  // Makes the eventfd; throws Plaint::RuntimeError if the system refuses. A manual event
  // mirrors its state in memory; an auto event's state lives in the descriptor alone, since
  // waits and other parties (a timer thread writing to it) change it there.
  WaitableEvent(bool initialState, bool manual, const char* function);

 private:
  void Signal();
  void Unsignal();

  const bool manual_;
  std::atomic<bool> set_;  // manual events: the descriptor's state, changed under mirrorLock_
  Lock mirrorLock_;
};

// Stays signalled until Reset: every waiter passes.
class TESSERA_API ManualEvent : public WaitableEvent {
 public:
  explicit ManualEvent(bool initialState = false);
  ~ManualEvent() override;

 protected:
  bool Consume() override;
};

// Clears itself when one waiter passes. Setting a signalled event leaves it signalled once.
// GetHandle() is the eventfd a timer thread signals by writing to it.
class TESSERA_API AutoEvent : public WaitableEvent {
 public:
  explicit AutoEvent(bool initialState = false);
  ~AutoEvent() override;

 protected:
  bool Consume() override;
};

}  // namespace Skein

#endif  // SKEIN_WAITABLE_H
