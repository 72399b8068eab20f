// Skein locks: a small mutual-exclusion Lock and Guard, its scoped holder that can give
// the lock up for a while and take it back.
#ifndef SKEIN_LOCK_H
#define SKEIN_LOCK_H

#include <sys/single_threaded.h>

#include <atomic>

#include <tessera_export.h>

namespace Skein {

// A non-recursive lock. Uncontended Acquire and Release are one atomic operation each;
// waiters sleep in the kernel. A thread must not acquire a lock it holds.
class TESSERA_API Lock {
 public:
  Lock() = default;
  ~Lock() = default;
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

  // Blocks until the lock is held.
  void Acquire() {
    // While the process has one thread nobody can hold or want the lock, so plain stores
    // do; a thread can only start from this one, and thread creation orders the two.
    if (__libc_single_threaded) {
      state_.store(kHeld, std::memory_order_relaxed);
      return;
    }
    int expected = kFree;
    if (!state_.compare_exchange_strong(expected, kHeld, std::memory_order_acquire,
                                        std::memory_order_relaxed))
      AcquireContended();
  }

  // Takes the lock if it is free at this moment; true when it did. Never waits. As with
  // Acquire, a thread must not try a lock it holds.
  bool TryAcquire() {
    if (__libc_single_threaded) {
      state_.store(kHeld, std::memory_order_relaxed);
      return true;
    }
    int expected = kFree;
    return state_.compare_exchange_strong(expected, kHeld, std::memory_order_acquire, std::memory_order_relaxed);
  }

  void Release() {
    if (__libc_single_threaded) {
      state_.store(kFree, std::memory_order_relaxed);
      return;
    }
    if (state_.exchange(kFree, std::memory_order_release) == kHeldWithWaiters) WakeOne();
  }

 private:
  static constexpr int kFree = 0;
  static constexpr int kHeld = 1;
  static constexpr int kHeldWithWaiters = 2;

  void AcquireContended() noexcept;
  void WakeOne() noexcept;

  std::atomic<int> state_{kFree};
};

// Holds a lock from construction to destruction. Release and Acquire give the lock up
// and take it back in between; each does nothing when `held` already says so.
template <class LockType>
class Guard {
 public:
  explicit Guard(LockType& target) : lock(&target), held(true) { target.Acquire(); }
  ~Guard() {
    if (held) lock->Release();
  }
  Guard(const Guard&) = delete;
  Guard& operator=(const Guard&) = delete;

  void Release() {
    if (!held) return;
    lock->Release();
    held = false;
  }
  void Acquire() {
    if (held) return;
    lock->Acquire();
    held = true;
  }
  bool IsHeld() const { return held; }

 private:
  LockType* lock;
  bool held;
};

}  // namespace Skein

#endif  // SKEIN_LOCK_H
