#include <skein/EventDispatcher.h>
#include <skein/Thread.h>
#include <skein/Timer.h>
#include <skein/Waitable.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace Skein {
namespace {

using Clock = std::chrono::steady_clock;
using Tessera::TimeSpan;

long long MillisecondsSince(Clock::time_point start) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
}

TimeSpan Milliseconds(std::int64_t count) { return TimeSpan(count * TimeSpan::millisecond.GetTicks()); }

// Records each call: the argument, the thread, and runs an optional action.
class Recorder : public EventObserver {
 public:
  void HandleSignal(void* argument) override {
    if (action) action(argument);
    std::lock_guard<std::mutex> lock(mutex);
    arguments.push_back(argument);
    threads.push_back(Thread::GetSelfId());
    changed.notify_all();
  }
  bool WaitForCalls(std::size_t count) {
    std::unique_lock<std::mutex> lock(mutex);
    return changed.wait_for(lock, std::chrono::seconds(5), [&] { return arguments.size() >= count; });
  }
  std::size_t Calls() {
    std::lock_guard<std::mutex> lock(mutex);
    return arguments.size();
  }

  std::function<void(void*)> action;
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<void*> arguments;
  std::vector<std::uint32_t> threads;
};

TEST(Timer, OnceAndPeriodicAndStop) {
  Timer timer;
  EXPECT_FALSE(timer.Wait(0, nullptr));  // made stopped
  timer.Stop();                          // harmless when stopped

  auto start = Clock::now();
  timer.Start(Milliseconds(30), nullptr);
  EXPECT_TRUE(timer.Wait(5000, nullptr));
  EXPECT_GE(MillisecondsSince(start), 30);
  EXPECT_FALSE(timer.Wait(60, nullptr));  // once only

  const TimeSpan period = Milliseconds(10);
  start = Clock::now();
  timer.Start(Milliseconds(20), &period);
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(timer.Wait(5000, nullptr));
  EXPECT_GE(MillisecondsSince(start), 40);
  timer.Stop();
  EXPECT_FALSE(timer.Wait(40, nullptr));  // a signal not yet taken is gone too

  // A delay of zero or less fires at once; a period of zero fires once.
  const TimeSpan zero;
  for (const TimeSpan delay : {TimeSpan(0), TimeSpan(-1), TimeSpan(-TimeSpan::day.GetTicks())}) {
    timer.Start(delay, &zero);
    EXPECT_TRUE(timer.Wait(5000, nullptr));
    EXPECT_FALSE(timer.Wait(30, nullptr));
  }
}

TEST(Timer, AbsoluteStartInEitherKind) {
  Timer timer;
  for (const Tessera::TimeKind kind : {Tessera::TimeKind::Utc, Tessera::TimeKind::Local}) {
    Tessera::Time when(kind);
    when += Milliseconds(50);
    const auto start = Clock::now();
    timer.Start(when, nullptr);
    EXPECT_TRUE(timer.Wait(5000, nullptr));
    // The local clock counts whole milliseconds, so a millisecond may be lost on the way.
    EXPECT_GE(MillisecondsSince(start), 48);
    Tessera::Time past(kind);
    past -= TimeSpan::hour;
    timer.Start(past, nullptr);
    EXPECT_TRUE(timer.Wait(5000, nullptr));
  }
}

TEST(EpollDispatcher, CallsObserverOnItsThreadOncePerSignal) {
  EpollDispatcher dispatcher;
  Recorder first;
  Recorder second;
  AutoEvent event(false);
  Timer timer;
  dispatcher.UnregisterWaitable(event);  // not registered: harmless
  dispatcher.RegisterWaitable(event, &first);
  dispatcher.RegisterWaitable(event, &second);  // one registration, the new observer
  dispatcher.RegisterWaitable(timer, &second);
  event.Set();
  ASSERT_TRUE(second.WaitForCalls(1));
  const TimeSpan period = Milliseconds(5);
  timer.Start(period, &period);
  ASSERT_TRUE(second.WaitForCalls(4));
  dispatcher.UnregisterWaitable(timer);
  const std::size_t calls = second.Calls();
  event.Set();
  ASSERT_TRUE(second.WaitForCalls(calls + 1));
  EXPECT_FALSE(event.Wait(0, nullptr));  // the call took the signal
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  EXPECT_EQ(second.Calls(), calls + 1);
  EXPECT_EQ(first.Calls(), 0u);
  EXPECT_EQ(second.arguments.front(), static_cast<void*>(&event));
  EXPECT_EQ(second.arguments[1], static_cast<void*>(&timer));
  for (const std::uint32_t id : second.threads) EXPECT_EQ(id, dispatcher.GetThreadId());
  EXPECT_NE(dispatcher.GetThreadId(), Thread::GetSelfId());
  dispatcher.UnregisterWaitable(event);
}

TEST(EpollDispatcher, UnregisterFromAnotherThreadWaitsForTheCallInProgress) {
  EpollDispatcher dispatcher;
  Recorder recorder;
  std::atomic<bool> inside{false};
  std::atomic<int> afterReturn{0};
  recorder.action = [&](void*) {
    inside = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    inside = false;
  };
  Timer timer;
  const TimeSpan period = Milliseconds(1);
  for (int round = 0; round < 5; ++round) {
    timer.Start(period, &period);
    dispatcher.RegisterWaitable(timer, &recorder);
    while (!inside) std::this_thread::yield();
    dispatcher.UnregisterWaitable(timer);
    afterReturn += inside ? 1 : 0;
    const std::size_t calls = recorder.Calls();
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(recorder.Calls(), calls);
  }
  EXPECT_EQ(afterReturn, 0);
}

TEST(EpollDispatcher, RegistrationChangesFromInsideACall) {
  EpollDispatcher dispatcher;
  AutoEvent self(false);
  AutoEvent other(false);
  AutoEvent added(false);
  Recorder recorder;
  // The first call unregisters itself and the other event, both signalled in one batch,
  // and registers a third: only the third is called after that.
  recorder.action = [&](void* argument) {
    if (argument != &self && argument != &other) return;
    dispatcher.UnregisterWaitable(self);  // its own thread: returns at once
    dispatcher.UnregisterWaitable(other);
    dispatcher.RegisterWaitable(added, &recorder);
    added.Set();
  };
  dispatcher.RegisterWaitable(self, &recorder);
  dispatcher.RegisterWaitable(other, &recorder);
  self.Set();
  other.Set();
  ASSERT_TRUE(recorder.WaitForCalls(2));
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  ASSERT_EQ(recorder.Calls(), 2u);
  EXPECT_EQ(recorder.arguments[1], static_cast<void*>(&added));
  dispatcher.UnregisterWaitable(added);
}

TEST(EpollDispatcher, DestroyedWhileIdleAndWhileBusy) {
  { EpollDispatcher idle; }
  Recorder recorder;
  std::atomic<int> started{0};
  std::atomic<int> finished{0};
  recorder.action = [&](void*) {
    ++started;
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    ++finished;
  };
  AutoEvent event(false);
  Timer timer;
  {
    EpollDispatcher busy;
    busy.RegisterWaitable(event, &recorder);
    busy.RegisterWaitable(timer, &recorder);
    const TimeSpan period = Milliseconds(1);
    timer.Start(period, &period);
    event.Set();
    while (started == 0) std::this_thread::yield();
  }  // waits for the call in progress, then no more calls
  const int calls = finished;
  EXPECT_EQ(calls, started);
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_EQ(finished, calls);
}

}  // namespace
}  // namespace Skein
