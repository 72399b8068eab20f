#include <skein/Lock.h>

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Skein {

namespace {

void FutexWait(std::atomic<int>* word, int expected) {
  syscall(SYS_futex, reinterpret_cast<int*>(word), FUTEX_WAIT_PRIVATE, expected, nullptr, nullptr, 0);
}

void FutexWake(std::atomic<int>* word) {
  syscall(SYS_futex, reinterpret_cast<int*>(word), FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

void CpuRelax() {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_ia32_pause();
#endif
}

}  // namespace

void Lock::AcquireContended() {
  // Holders keep the lock for a few list operations, so spinning for a while is far cheaper
  // than a sleep in the kernel and the wake-up behind it.
  constexpr int kSpins = 2000;
  for (int spin = 0; spin < kSpins; ++spin) {
    int expected = kFree;
    if (state_.load(std::memory_order_relaxed) == kFree &&
        state_.compare_exchange_weak(expected, kHeld, std::memory_order_acquire, std::memory_order_relaxed))
      return;
    CpuRelax();
  }
  // Marking the lock as contended makes the holder's Release wake one sleeper.
  while (state_.exchange(kHeldWithWaiters, std::memory_order_acquire) != kFree)
    FutexWait(&state_, kHeldWithWaiters);
}

void Lock::WakeOne() { FutexWake(&state_); }

}  // namespace Skein
