#include <skein/EventDispatcher.h>

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <unordered_map>

#include <plaint/Error.h>
#include <skein/Thread.h>

namespace Skein {

namespace {

// Epoll data of the wake-up event; registrations count from 1.
constexpr std::uint64_t kWakeKey = 0;

[[noreturn]] void ThrowSystem(const char* message, int error, const char* function) {
  throw Plaint::RuntimeError(std::string(message) + ": " + std::strerror(error), PLAINT_CONTEXT(function));
}

// Timers (timerfd) and auto events (eventfd) are both counters that one read clears.
bool TakeSignal(int handle) {
  std::uint64_t count = 0;
  for (;;) {
    if (read(handle, &count, sizeof count) == static_cast<ssize_t>(sizeof count)) return true;
    if (errno != EINTR) return false;
  }
}

}  // namespace

EventDispatcher::~EventDispatcher() = default;

struct EpollDispatcher::State {
  struct Registration {
    std::uint64_t key;
    int handle;
    EventObserver* observer;
  };

  int epoll = -1;
  int wake = -1;
  std::thread thread;

  std::mutex mutex;
  std::condition_variable changed;
  // A waitable's key changes with each registration, so an event that epoll reported
  // before an unregistration can't reach a later registration of the same address.
  std::unordered_map<const Waitable*, Registration> byWaitable;
  std::unordered_map<std::uint64_t, Waitable*> byKey;
  std::uint64_t nextKey = 1;
  std::uint64_t calling = 0;  // key whose observer runs now, 0 for none
  bool stopping = false;
  std::uint32_t threadId = 0;

  ~State() {
    if (epoll >= 0) close(epoll);
    if (wake >= 0) close(wake);
  }

  void Run();
  // Calls the observer of `key` if it is still registered; false when stopping.
  bool Dispatch(std::uint64_t key);
};

void EpollDispatcher::State::Run() {
  {
    std::lock_guard<std::mutex> lock(mutex);
    threadId = Thread::GetSelfId();
  }
  changed.notify_all();
  constexpr int kBatch = 64;
  epoll_event events[kBatch];
  for (;;) {
    const int count = epoll_wait(epoll, events, kBatch, -1);
    for (int i = 0; i < count; ++i)
      if (!Dispatch(events[i].data.u64)) return;
  }
}

bool EpollDispatcher::State::Dispatch(std::uint64_t key) {
  std::unique_lock<std::mutex> lock(mutex);
  if (stopping) return false;
  const auto found = byKey.find(key);
  if (found == byKey.end()) return true;
  Waitable* waitable = found->second;
  const Registration& registration = byWaitable.at(waitable);
  EventObserver* observer = registration.observer;
  const int handle = registration.handle;
  calling = key;
  lock.unlock();
  // A timer started or stopped since epoll saw it has lost its signal; then no call.
  if (TakeSignal(handle)) observer->HandleSignal(waitable);
  lock.lock();
  calling = 0;
  lock.unlock();
  changed.notify_all();
  return true;
}

EpollDispatcher::EpollDispatcher() : state_(new State) {
  constexpr const char* function = "Skein::EpollDispatcher::EpollDispatcher";
  state_->epoll = epoll_create1(EPOLL_CLOEXEC);
  if (state_->epoll < 0) ThrowSystem("unable to start dispatcher", errno, function);
  state_->wake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (state_->wake < 0) ThrowSystem("unable to start dispatcher", errno, function);
  epoll_event wake{};
  wake.events = EPOLLIN;
  wake.data.u64 = kWakeKey;
  if (epoll_ctl(state_->epoll, EPOLL_CTL_ADD, state_->wake, &wake) < 0)
    ThrowSystem("unable to start dispatcher", errno, function);
  try {
    state_->thread = std::thread([state = state_.get()] { state->Run(); });
  } catch (const std::system_error& error) {
    ThrowSystem("unable to start dispatcher", error.code().value(), function);
  }
  std::unique_lock<std::mutex> lock(state_->mutex);
  state_->changed.wait(lock, [this] { return state_->threadId != 0; });
}

EpollDispatcher::~EpollDispatcher() {
  {
    std::lock_guard<std::mutex> lock(state_->mutex);
    state_->stopping = true;
  }
  const std::uint64_t one = 1;
  while (write(state_->wake, &one, sizeof one) < 0 && errno == EINTR) {
  }
  state_->thread.join();
}

void EpollDispatcher::RegisterWaitable(Waitable& waitable, EventObserver* observer) {
  std::lock_guard<std::mutex> lock(state_->mutex);
  const auto found = state_->byWaitable.find(&waitable);
  if (found != state_->byWaitable.end()) {
    found->second.observer = observer;
    return;
  }
  const std::uint64_t key = state_->nextKey++;
  epoll_event interest{};
  interest.events = EPOLLIN;
  interest.data.u64 = key;
  if (epoll_ctl(state_->epoll, EPOLL_CTL_ADD, waitable.GetHandle(), &interest) < 0)
    ThrowSystem("unable to register waitable", errno, "Skein::EpollDispatcher::RegisterWaitable");
  state_->byWaitable.emplace(&waitable, State::Registration{key, waitable.GetHandle(), observer});
  state_->byKey.emplace(key, &waitable);
}

void EpollDispatcher::UnregisterWaitable(Waitable& waitable) {
  std::unique_lock<std::mutex> lock(state_->mutex);
  const auto found = state_->byWaitable.find(&waitable);
  if (found == state_->byWaitable.end()) return;
  const std::uint64_t key = found->second.key;
  epoll_ctl(state_->epoll, EPOLL_CTL_DEL, found->second.handle, nullptr);
  state_->byKey.erase(key);
  state_->byWaitable.erase(found);
  // The dispatcher's own thread is the one making the call in progress, if any.
  if (Thread::GetSelfId() == state_->threadId) return;
  state_->changed.wait(lock, [&] { return state_->calling != key; });
}

std::uint32_t EpollDispatcher::GetThreadId() const { return state_->threadId; }

}  // namespace Skein
