#include <tessera/win32/Window.h>

#include <strings.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <ctime>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace Win32 {

namespace {

using Clock = std::chrono::steady_clock;

struct WindowTimer {
  HWND window;
  UINT_PTR id;
  UINT elapse;
  Clock::time_point due;
};

// What GetMessageA and PeekMessageA take: a window filter and a range of numbers.
struct Filter {
  HWND window;
  UINT min;
  UINT max;

  bool ThreadOnly() const { return window == reinterpret_cast<HWND>(-1); }
  bool Number(UINT message) const { return (min == 0 && max == 0) || (message >= min && message <= max); }
  bool Passes(const MSG& msg) const {
    if (ThreadOnly() ? msg.hwnd != nullptr : window != nullptr && msg.hwnd != window) return false;
    return Number(msg.message);
  }
};

DWORD TickOf(Clock::time_point point) {
  return static_cast<DWORD>(
      std::chrono::duration_cast<std::chrono::milliseconds>(point.time_since_epoch()).count());
}

void DrainDescriptor(int fd) {
  std::uint64_t count = 0;
  while (read(fd, &count, sizeof count) < 0 && errno == EINTR) {
  }
}

// One per thread. Posters from any thread touch only what `mutex` guards; the timers and the
// window list belong to the owning thread alone.
class ThreadQueue {
 public:
  ThreadQueue() {
    eventFd_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    timerFd_ = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK);
    pollFd_ = epoll_create1(EPOLL_CLOEXEC);
    if (eventFd_ < 0 || timerFd_ < 0 || pollFd_ < 0 || !Watch(eventFd_) || !Watch(timerFd_)) CloseDescriptors();
  }
  ~ThreadQueue() { CloseDescriptors(); }
  ThreadQueue(const ThreadQueue&) = delete;
  ThreadQueue& operator=(const ThreadQueue&) = delete;

  int PollDescriptor() const { return pollFd_; }

  // False once the owning thread has ended.
  bool Post(const MSG& msg) {
    std::lock_guard<std::mutex> hold(mutex_);
    if (!alive_) return false;
    posted_.push_back(msg);
    Changed();
    return true;
  }

  void PostQuit(int exitCode) {
    std::lock_guard<std::mutex> hold(mutex_);
    quit_ = true;
    quitCode_ = exitCode;
    Changed();
  }

  // Finds the next message that passes `filter`, taking it out when `remove` is set.
  // `*seen` gets the post count that the search saw, for a wait on anything newer.
  bool Find(const Filter& filter, bool remove, MSG* msg, std::uint64_t* seen) {
    {
      std::lock_guard<std::mutex> hold(mutex_);
      *seen = posts_;
      auto found = std::find_if(posted_.begin(), posted_.end(), [&](const MSG& m) { return filter.Passes(m); });
      if (found != posted_.end()) {
        *msg = *found;
        if (remove) {
          posted_.erase(found);
          Mirror();
        }
        return true;
      }
      if (quit_ && filter.window == nullptr && filter.Number(WM_QUIT)) {
        *msg = MSG{nullptr, WM_QUIT, static_cast<WPARAM>(static_cast<LPARAM>(quitCode_)), 0, TickOf(Clock::now())};
        if (remove) {
          quit_ = false;
          Mirror();
        }
        return true;
      }
    }
    return TakeDueTimer(filter, remove, msg);
  }

  // Waits until a post newer than `seen` comes or the earliest timer that passes `filter` is due.
  void Wait(const Filter& filter, std::uint64_t seen) {
    const Clock::time_point* due = nullptr;
    for (const WindowTimer& timer : timers_)
      if (Passes(filter, timer) && (due == nullptr || timer.due < *due)) due = &timer.due;
    std::unique_lock<std::mutex> hold(mutex_);
    ++waiting_;
    if (due == nullptr)
      wake_.wait(hold, [&] { return posts_ != seen; });
    else
      wake_.wait_until(hold, *due, [&] { return posts_ != seen; });
    --waiting_;
  }

  void Retire() {
    std::lock_guard<std::mutex> hold(mutex_);
    alive_ = false;
    posted_.clear();
    quit_ = false;
    Mirror();
  }

  void DropMessagesOf(HWND window) {
    std::lock_guard<std::mutex> hold(mutex_);
    posted_.erase(std::remove_if(posted_.begin(), posted_.end(), [&](const MSG& m) { return m.hwnd == window; }),
                  posted_.end());
    Mirror();
  }

  // Owner-thread state.
  std::vector<HWND> windows;

  UINT_PTR SetTimer(HWND window, UINT_PTR id, UINT elapse) {
    elapse = std::clamp(elapse, USER_TIMER_MINIMUM, USER_TIMER_MAXIMUM);
    const Clock::time_point due = Clock::now() + std::chrono::milliseconds(elapse);
    auto found = FindTimer(window, id);
    if (found != timers_.end())
      *found = WindowTimer{window, id, elapse, due};
    else
      timers_.push_back(WindowTimer{window, id, elapse, due});
    ArmTimerDescriptor();
    return id;
  }

  bool KillTimer(HWND window, UINT_PTR id) {
    auto found = FindTimer(window, id);
    if (found == timers_.end()) return false;
    timers_.erase(found);
    ArmTimerDescriptor();
    return true;
  }

  void KillTimersOf(HWND window) {
    timers_.erase(std::remove_if(timers_.begin(), timers_.end(), [&](const WindowTimer& t) { return t.window == window; }),
                  timers_.end());
    ArmTimerDescriptor();
  }

 private:
  static bool Passes(const Filter& filter, const WindowTimer& timer) {
    if (filter.ThreadOnly() || (filter.window != nullptr && filter.window != timer.window)) return false;
    return filter.Number(WM_TIMER);
  }

  std::vector<WindowTimer>::iterator FindTimer(HWND window, UINT_PTR id) {
    return std::find_if(timers_.begin(), timers_.end(),
                        [&](const WindowTimer& t) { return t.window == window && t.id == id; });
  }

  bool TakeDueTimer(const Filter& filter, bool remove, MSG* msg) {
    const Clock::time_point now = Clock::now();
    WindowTimer* earliest = nullptr;
    for (WindowTimer& timer : timers_)
      if (timer.due <= now && Passes(filter, timer) && (earliest == nullptr || timer.due < earliest->due))
        earliest = &timer;
    if (earliest == nullptr) return false;
    *msg = MSG{earliest->window, WM_TIMER, earliest->id, 0, TickOf(now)};
    if (remove) {
      // Firings missed while nobody took the message collapse into this one.
      earliest->due = now + std::chrono::milliseconds(earliest->elapse);
      ArmTimerDescriptor();
    }
    return true;
  }

  // The timer descriptor expires when the earliest timer is due; arming it again clears it.
  void ArmTimerDescriptor() {
    if (timerFd_ < 0) return;
    itimerspec spec{};
    if (!timers_.empty()) {
      const auto earliest = std::min_element(timers_.begin(), timers_.end(),
                                             [](const WindowTimer& a, const WindowTimer& b) { return a.due < b.due; });
      const auto ns = std::max<std::int64_t>(
          1, std::chrono::duration_cast<std::chrono::nanoseconds>(earliest->due.time_since_epoch()).count());
      spec.it_value.tv_sec = static_cast<time_t>(ns / 1000000000);
      spec.it_value.tv_nsec = static_cast<long>(ns % 1000000000);
    }
    timerfd_settime(timerFd_, TFD_TIMER_ABSTIME, &spec, nullptr);
  }

  // Under `mutex_`: after a post.
  void Changed() {
    ++posts_;
    Mirror();
    if (waiting_ != 0) wake_.notify_one();
  }

  // Under `mutex_`: the event descriptor is readable exactly while a message or quit waits.
  void Mirror() {
    const bool pending = !posted_.empty() || quit_;
    if (pending == signalled_ || eventFd_ < 0) return;
    signalled_ = pending;
    if (pending) {
      const std::uint64_t one = 1;
      while (write(eventFd_, &one, sizeof one) < 0 && errno == EINTR) {
      }
    } else {
      DrainDescriptor(eventFd_);
    }
  }

  bool Watch(int fd) {
    epoll_event entry{};
    entry.events = EPOLLIN;
    entry.data.fd = fd;
    return epoll_ctl(pollFd_, EPOLL_CTL_ADD, fd, &entry) == 0;
  }

  void CloseDescriptors() {
    for (int* fd : {&pollFd_, &timerFd_, &eventFd_}) {
      if (*fd >= 0) close(*fd);
      *fd = -1;
    }
  }

  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<MSG> posted_;
  std::uint64_t posts_ = 0;
  int waiting_ = 0;
  bool quit_ = false;
  int quitCode_ = 0;
  bool alive_ = true;
  bool signalled_ = false;

  std::vector<WindowTimer> timers_;
  int eventFd_ = -1;
  int timerFd_ = -1;
  int pollFd_ = -1;
};

// Windows of every thread, by handle. Never destroyed, so threads ending during process exit
// still find it.
struct Registry {
  std::mutex mutex;
  std::unordered_map<HWND, std::shared_ptr<ThreadQueue>> windows;
  std::uintptr_t nextHandle = 0x10010;
  std::vector<std::string> messageNames;  // number 0xC000 + position
};

Registry& TheRegistry() {
  static Registry* registry = new Registry;
  return *registry;
}

// The thread's queue; its destructor takes the thread's windows and queue down.
struct QueueHolder {
  std::shared_ptr<ThreadQueue> queue;

  ~QueueHolder() {
    if (!queue) return;
    {
      Registry& registry = TheRegistry();
      std::lock_guard<std::mutex> hold(registry.mutex);
      for (HWND window : queue->windows) registry.windows.erase(window);
    }
    queue->Retire();
  }
};

thread_local QueueHolder holder;

ThreadQueue& CurrentQueue() {
  if (!holder.queue) holder.queue = std::make_shared<ThreadQueue>();
  return *holder.queue;
}

std::shared_ptr<ThreadQueue> QueueOf(HWND window) {
  Registry& registry = TheRegistry();
  std::lock_guard<std::mutex> hold(registry.mutex);
  auto found = registry.windows.find(window);
  return found != registry.windows.end() ? found->second : nullptr;
}

// The calling thread's queue if it owns `window`; otherwise null with the error set.
ThreadQueue* OwnQueueOf(HWND window) {
  std::shared_ptr<ThreadQueue> queue = window != nullptr ? QueueOf(window) : nullptr;
  if (!queue) {
    SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return nullptr;
  }
  if (queue != holder.queue) {
    SetLastError(ERROR_ACCESS_DENIED);
    return nullptr;
  }
  return queue.get();
}

bool CheckFilterWindow(HWND window) {
  if (window == nullptr || window == reinterpret_cast<HWND>(-1)) return true;
  std::shared_ptr<ThreadQueue> queue = QueueOf(window);
  if (queue && queue == holder.queue) return true;
  SetLastError(ERROR_INVALID_WINDOW_HANDLE);
  return false;
}

}  // namespace

HWND CreateMessageWindow() {
  ThreadQueue& queue = CurrentQueue();
  Registry& registry = TheRegistry();
  HWND window;
  {
    std::lock_guard<std::mutex> hold(registry.mutex);
    window = reinterpret_cast<HWND>(registry.nextHandle);
    registry.nextHandle += 4;
    registry.windows.emplace(window, holder.queue);
  }
  queue.windows.push_back(window);
  return window;
}

BOOL DestroyWindow(HWND window) {
  ThreadQueue* queue = OwnQueueOf(window);
  if (queue == nullptr) return 0;
  {
    Registry& registry = TheRegistry();
    std::lock_guard<std::mutex> hold(registry.mutex);
    registry.windows.erase(window);
  }
  queue->windows.erase(std::find(queue->windows.begin(), queue->windows.end(), window));
  queue->KillTimersOf(window);
  queue->DropMessagesOf(window);
  return 1;
}

BOOL PostMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  const MSG msg{window, message, wParam, lParam, GetTickCount()};
  if (window == nullptr) return CurrentQueue().Post(msg) ? 1 : 0;
  std::shared_ptr<ThreadQueue> queue = QueueOf(window);
  if (queue && queue->Post(msg)) return 1;
  SetLastError(ERROR_INVALID_WINDOW_HANDLE);
  return 0;
}

BOOL GetMessageA(MSG* msg, HWND window, UINT filterMin, UINT filterMax) {
  if (!CheckFilterWindow(window)) return -1;
  ThreadQueue& queue = CurrentQueue();
  const Filter filter{window, filterMin, filterMax};
  std::uint64_t seen = 0;
  while (!queue.Find(filter, true, msg, &seen)) queue.Wait(filter, seen);
  return msg->message == WM_QUIT ? 0 : 1;
}

BOOL PeekMessageA(MSG* msg, HWND window, UINT filterMin, UINT filterMax, UINT flags) {
  if (!CheckFilterWindow(window)) return 0;
  std::uint64_t seen = 0;
  return CurrentQueue().Find(Filter{window, filterMin, filterMax}, (flags & PM_REMOVE) != 0, msg, &seen) ? 1 : 0;
}

void PostQuitMessage(int exitCode) { CurrentQueue().PostQuit(exitCode); }

UINT RegisterWindowMessageA(const char* name) {
  if (name == nullptr || *name == '\0') {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  Registry& registry = TheRegistry();
  std::lock_guard<std::mutex> hold(registry.mutex);
  auto& names = registry.messageNames;
  auto found = std::find_if(names.begin(), names.end(), [&](const std::string& known) {
    return strcasecmp(known.c_str(), name) == 0;
  });
  if (found != names.end()) return 0xC000 + static_cast<UINT>(found - names.begin());
  if (names.size() >= 0x4000) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return 0;
  }
  names.emplace_back(name);
  return 0xC000 + static_cast<UINT>(names.size() - 1);
}

UINT_PTR SetTimer(HWND window, UINT_PTR id, UINT elapse, void* timerProc) {
  if (timerProc != nullptr) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  ThreadQueue* queue = OwnQueueOf(window);
  if (queue == nullptr) return 0;
  const UINT_PTR armed = queue->SetTimer(window, id, elapse);
  return armed != 0 ? armed : 1;
}

BOOL KillTimer(HWND window, UINT_PTR id) {
  ThreadQueue* queue = OwnQueueOf(window);
  if (queue == nullptr) return 0;
  if (queue->KillTimer(window, id)) return 1;
  SetLastError(ERROR_INVALID_TIMER_HANDLE);
  return 0;
}

int GetMessageQueueFd() { return CurrentQueue().PollDescriptor(); }

DWORD GetTickCount() { return TickOf(Clock::now()); }

}  // namespace Win32
