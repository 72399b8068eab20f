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

void Lock::AcquireContended() noexcept {
  // Holders keep the lock for a few list operations, so spinning for a while is far cheaper
  // than a sleep in the kernel and the wake-up behind it. Each look at the word pulls its
  // line away from the holder, so the pauses between looks double: a holder that takes the
  // lock again at once then runs on with the line in its own cache. Both counts are in
  // pauses, of some ten to a hundred and fifty cycles each, depending on the processor.
  constexpr int kSpins = 8000;
  constexpr int kLongestPause = 256;
  // Once this thread has slept, others may still sleep: it then takes the lock marked as
  // contended, so that its Release wakes the next one.
  int taken = kHeld;
  for (;;) {
    for (int spun = 0, pause = 1; spun < kSpins; spun += pause) {
      int expected = kFree;
      if (state_.load(std::memory_order_relaxed) == kFree &&
          state_.compare_exchange_weak(expected, taken, std::memory_order_acquire, std::memory_order_relaxed))
        return;
      for (int i = 0; i < pause; ++i) CpuRelax();
      if (pause < kLongestPause) pause *= 2;
    }
    if (state_.exchange(kHeldWithWaiters, std::memory_order_acquire) == kFree) return;
    FutexWait(&state_, kHeldWithWaiters);
    taken = kHeldWithWaiters;
  }
}

void Lock::WakeOne() noexcept { FutexWake(&state_); }

}  // namespace Skein
