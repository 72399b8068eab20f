#include <tessera/win32/MultimediaTimer.h>

#include <sys/prctl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <queue>
#include <thread>
#include <unordered_map>
#include <vector>

namespace Win32 {

namespace {

using Clock = std::chrono::steady_clock;

class TimerThread {
 public:
  TimerThread() : thread_([this] { Run(); }) {
    threadId_ = thread_.get_id();
    // The process keeps the thread to its end, as the platform's timer thread.
    thread_.detach();
  }

  MMRESULT Set(UINT delay, LPTIMECALLBACK callback, DWORD_PTR user, UINT flags) {
    std::lock_guard<std::mutex> lock(mutex_);
    do {
      ++lastId_;
    } while (lastId_ == 0 || timers_.count(lastId_) != 0);
    const Clock::time_point due = Clock::now() + std::chrono::milliseconds(delay);
    const Clock::duration period =
        (flags & TIME_PERIODIC) != 0 ? Clock::duration(std::chrono::milliseconds(delay)) : Clock::duration::zero();
    timers_.emplace(lastId_, Entry{due, period, callback, user, flags});
    queue_.push(Slot{due, lastId_});
    wake_.notify_one();
    return lastId_;
  }

  MMRESULT Kill(UINT timerId) {
    std::unique_lock<std::mutex> lock(mutex_);
    const bool armed = timers_.erase(timerId) != 0;
    // A one-shot is gone from the table while its call runs, yet the kill still waits.
    if (calling_ == timerId && callingWaits_ && std::this_thread::get_id() != threadId_)
      finished_.wait(lock, [&] { return calling_ != timerId; });
    return armed ? TIMERR_NOERROR : MMSYSERR_INVALPARAM;
  }

 private:
  struct Entry {
    Clock::time_point due;
    Clock::duration period;  // zero for a one-shot
    LPTIMECALLBACK callback;
    DWORD_PTR user;
    UINT flags;
  };
  // A place in the schedule; stale once its timer is killed or has moved on.
  struct Slot {
    Clock::time_point due;
    UINT id;
    bool operator>(const Slot& other) const { return due > other.due; }
  };

  void Run() {
    // Timers of a millisecond need a wake-up closer than the default slack of 50 us.
    prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
      if (queue_.empty()) {
        wake_.wait(lock);
        continue;
      }
      const Slot slot = queue_.top();
      const auto found = timers_.find(slot.id);
      if (found == timers_.end() || found->second.due != slot.due) {
        queue_.pop();
        continue;
      }
      const Clock::time_point now = Clock::now();
      if (slot.due > now) {
        wake_.wait_until(lock, slot.due);
        continue;
      }
      queue_.pop();
      const Entry entry = found->second;
      if (entry.period != Clock::duration::zero()) {
        Clock::time_point next = entry.due + entry.period;
        if (next <= now) next = now + entry.period;
        found->second.due = next;
        queue_.push(Slot{next, slot.id});
      } else {
        timers_.erase(found);
      }
      if ((entry.flags & TIME_CALLBACK_EVENT_SET) != 0) {
        // Under the lock, so that a killed timer's handle, perhaps closed and reused
        // by now, is never written.
        const std::uint64_t one = 1;
        const int handle = static_cast<int>(reinterpret_cast<std::uintptr_t>(entry.callback));
        while (write(handle, &one, sizeof one) < 0 && errno == EINTR) {
        }
        continue;
      }
      calling_ = slot.id;
      callingWaits_ = (entry.flags & TIME_KILL_SYNCHRONOUS) != 0;
      lock.unlock();
      entry.callback(slot.id, 0, entry.user, 0, 0);
      lock.lock();
      calling_ = 0;
      finished_.notify_all();
    }
  }

  std::mutex mutex_;
  std::condition_variable wake_;
  std::condition_variable finished_;
  std::unordered_map<UINT, Entry> timers_;
  std::priority_queue<Slot, std::vector<Slot>, std::greater<Slot>> queue_;
  UINT lastId_ = 0;
  UINT calling_ = 0;
  bool callingWaits_ = false;
  std::thread thread_;
  std::thread::id threadId_;
};

TimerThread& GetTimerThread() {
  // Never destroyed: callbacks may still come while static objects are torn down.
  static TimerThread* const instance = new TimerThread;
  return *instance;
}

}  // namespace

MMRESULT timeSetEvent(UINT delay, UINT resolution, LPTIMECALLBACK callback, DWORD_PTR user, UINT flags) {
  static_cast<void>(resolution);
  if (delay < TIME_DELAY_MIN || delay > TIME_DELAY_MAX || callback == nullptr) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  return GetTimerThread().Set(delay, callback, user, flags);
}

MMRESULT timeKillEvent(UINT timerId) { return GetTimerThread().Kill(timerId); }

}  // namespace Win32
