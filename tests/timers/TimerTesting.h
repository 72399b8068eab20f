// Helpers of the timer tests: an observer that records its calls and waits for them with
// a bound, and durations in milliseconds.
#ifndef TESSERA_TESTS_TIMERTESTING_H
#define TESSERA_TESTS_TIMERTESTING_H

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include <skein/Thread.h>
#include <tessera/time/TimeSpan.h>
#include <tessera/timers/Timer.h>

namespace Tessera {
namespace testing {

using Clock = std::chrono::steady_clock;

inline TimeSpan Milliseconds(std::int64_t count) { return TimeSpan(count * TimeSpan::millisecond.GetTicks()); }

inline long long MillisecondsSince(Clock::time_point start) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
}

inline void Pause(int milliseconds) { std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds)); }

// Records the thread and the moment of each call, then runs `action` if set.
class Recorder : public TimerObserver {
 public:
  void HandleTimer(Timer& timer) override {
    {
      std::lock_guard<std::mutex> lock(mutex);
      timers.push_back(&timer);
      threads.push_back(Skein::Thread::GetSelfId());
      moments.push_back(Clock::now());
      inside = true;
    }
    if (action) action(timer);
    std::lock_guard<std::mutex> lock(mutex);
    inside = false;
    changed.notify_all();
  }
  // True once `count` calls have come, false after five seconds.
  bool WaitForCalls(std::size_t count) {
    std::unique_lock<std::mutex> lock(mutex);
    return changed.wait_for(lock, std::chrono::seconds(5), [&] { return timers.size() >= count && !inside; });
  }
  std::size_t Calls() {
    std::lock_guard<std::mutex> lock(mutex);
    return timers.size();
  }
  bool Inside() {
    std::lock_guard<std::mutex> lock(mutex);
    return inside;
  }

  std::function<void(Timer&)> action;
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<Timer*> timers;
  std::vector<std::uint32_t> threads;
  std::vector<Clock::time_point> moments;
  bool inside = false;
};

}  // namespace testing
}  // namespace Tessera

#endif  // TESSERA_TESTS_TIMERTESTING_H
