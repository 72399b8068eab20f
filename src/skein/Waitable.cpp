#include <skein/Waitable.h>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <string>

#include <plaint/Error.h>

namespace Skein {

namespace {

std::uint64_t NowNanoseconds() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::uint64_t>(now.tv_sec) * 1000000000u + static_cast<std::uint64_t>(now.tv_nsec);
}

// Polls `handle` for at most `nanoseconds` (forever when null). True when readable.
bool PollReadable(int handle, const std::uint64_t* nanoseconds) {
  pollfd entry{handle, POLLIN, 0};
  timespec limit{};
  if (nanoseconds != nullptr) {
    limit.tv_sec = static_cast<time_t>(*nanoseconds / 1000000000u);
    limit.tv_nsec = static_cast<long>(*nanoseconds % 1000000000u);
  }
  const int ready = ppoll(&entry, 1, nanoseconds != nullptr ? &limit : nullptr, nullptr);
  return ready > 0;
}

}  // namespace

Waitable::~Waitable() { close(handle_); }

bool Waitable::Wait(std::uint64_t timeout, std::uint64_t* remaining) {
  const bool unlimited = timeout == infinite;
  // Beyond this a deadline in nanoseconds would overflow; such waits are unlimited in practice.
  constexpr std::uint64_t kLongestMilliseconds = ~std::uint64_t{0} / 2000000u;
  const std::uint64_t capped = timeout < kLongestMilliseconds ? timeout : kLongestMilliseconds;
  const std::uint64_t start = NowNanoseconds();
  const std::uint64_t deadline = start + capped * 1000000u;
  for (;;) {
    std::uint64_t left = 0;
    if (!unlimited) {
      const std::uint64_t now = NowNanoseconds();
      left = now < deadline ? deadline - now : 0;
    }
    const bool readable = PollReadable(handle_, unlimited ? nullptr : &left);
    if (readable && Consume()) {
      if (remaining != nullptr) {
        if (unlimited) {
          *remaining = infinite;
        } else {
          const std::uint64_t spent = (NowNanoseconds() - start) / 1000000u;
          *remaining = spent < timeout ? timeout - spent : 0;
        }
      }
      return true;
    }
    if (!unlimited && !readable && NowNanoseconds() >= deadline) {
      if (remaining != nullptr) *remaining = 0;
      return false;
    }
  }
}

WaitableEvent::WaitableEvent(bool initialState, bool manual, const char* function)
    : Waitable(eventfd(initialState ? 1 : 0, EFD_CLOEXEC | EFD_NONBLOCK)), manual_(manual), set_(initialState) {
  if (GetHandle() < 0) {
    const int error = errno;
    throw Plaint::RuntimeError(std::string("unable to create event: ") + std::strerror(error),
                               PLAINT_CONTEXT(function));
  }
}

void WaitableEvent::Set() {
  if (!manual_) return Signal();
  // Queues set their event on every step from empty: most of those find it set already.
  if (set_.load(std::memory_order_acquire)) return;
  Guard<Lock> guard(mirrorLock_);
  if (set_.load(std::memory_order_relaxed)) return;
  Signal();
  set_.store(true, std::memory_order_release);
}

void WaitableEvent::Reset() {
  if (!manual_) return Unsignal();
  if (!set_.load(std::memory_order_acquire)) return;
  Guard<Lock> guard(mirrorLock_);
  if (!set_.load(std::memory_order_relaxed)) return;
  Unsignal();
  set_.store(false, std::memory_order_release);
}

void WaitableEvent::Signal() {
  const std::uint64_t one = 1;
  while (write(GetHandle(), &one, sizeof one) < 0 && errno == EINTR) {
  }
}

void WaitableEvent::Unsignal() {
  std::uint64_t count = 0;
  while (read(GetHandle(), &count, sizeof count) < 0 && errno == EINTR) {
  }
}

ManualEvent::ManualEvent(bool initialState) : WaitableEvent(initialState, true, "Skein::ManualEvent::ManualEvent") {}
ManualEvent::~ManualEvent() = default;

bool ManualEvent::Consume() { return true; }

AutoEvent::AutoEvent(bool initialState) : WaitableEvent(initialState, false, "Skein::AutoEvent::AutoEvent") {}
AutoEvent::~AutoEvent() = default;

bool AutoEvent::Consume() {
  std::uint64_t count = 0;
  for (;;) {
    if (read(GetHandle(), &count, sizeof count) == static_cast<ssize_t>(sizeof count)) return true;
    if (errno != EINTR) return false;
  }
}

}  // namespace Skein
