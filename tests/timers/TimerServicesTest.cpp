#include <tessera/timers/EventTimerService.h>
#include <tessera/timers/WinMMTimerService.h>
#include <tessera/timers/WindowTimerService.h>

#include <gtest/gtest.h>

#include <poll.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <thread>
#include <tuple>
#include <typeinfo>

#include <plaint/Error.h>
#include <skein/Thread.h>
#include <tessera/win32/LastError.h>

#include "tessera/timers/TimerStart.h"

namespace Tessera {
namespace {

using Clock = std::chrono::steady_clock;
using Condition = std::function<bool()>;

TimeSpan Milliseconds(std::int64_t count) { return TimeSpan(count * TimeSpan::millisecond.GetTicks()); }
void Pause(int milliseconds) { std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds)); }

// True once `done` holds, false after five seconds.
bool WaitUntil(const Condition& done) {
  for (int waited = 0; waited < 5000 && !done(); ++waited) Pause(1);
  return done();
}

// Counts calls once `action` has run, with the thread and the moment of the first call.
struct Recorder : TimerObserver {
  void HandleTimer(Timer& timer) override {
    if (calls == 0) first = Clock::now().time_since_epoch();
    thread = Skein::Thread::GetSelfId();
    inside = true;
    if (action) action(timer);
    inside = false;
    ++calls;
  }
  std::function<void(Timer&)> action;
  std::atomic<int> calls{0};
  std::atomic<bool> inside{false};
  std::atomic<std::uint32_t> thread{0};
  std::atomic<Clock::duration> first{};
};

// A registration left behind by a deleted timer would shadow a later waitable at its address.
struct TrackingDispatcher : Skein::EpollDispatcher {
  void RegisterWaitable(Skein::Waitable& waitable, Skein::EventObserver* observer) override {
    Skein::EpollDispatcher::RegisterWaitable(waitable, observer);
    std::lock_guard<std::mutex> lock(mutex);
    registered.insert(&waitable);
  }
  void UnregisterWaitable(Skein::Waitable& waitable) override {
    Skein::EpollDispatcher::UnregisterWaitable(waitable);
    std::lock_guard<std::mutex> lock(mutex);
    registered.erase(&waitable);
  }
  std::mutex mutex;
  std::set<const Skein::Waitable*> registered;
};

// Runs `start`, which must throw exactly `E` with `message` from `function`, naming the
// argument `name` or carrying the Win32 `code`.
template <class E>
void ExpectStartError(const std::function<void()>& start, const char* message, const char* name, std::uint32_t code,
                      const char* function) {
  try {
    start();
    ADD_FAILURE() << "no throw for " << message;
  } catch (const Plaint::Error& error) {
    EXPECT_TRUE(typeid(error) == typeid(E)) << message;
    EXPECT_STREQ(error.AsException().what(), message);
    EXPECT_STREQ(error.GetContext().function, function);
    const auto* argument = error.GetInfo<Plaint::ErrorInfo_invalidArgumentName>();
    EXPECT_STREQ(argument != nullptr ? *argument : nullptr, name);
    const auto* win32 = error.GetInfo<Plaint::ErrorInfo_Win32Error>();
    EXPECT_EQ(win32 != nullptr ? *win32 : 0u, code);
  }
}

// The argument errors of both platform timers; then the platform's own refusal of a
// delay of 0 ms (-9,999 ticks truncated) by `refused`.
void ExpectStartErrors(Timer& timer, Timer& refused, std::uint32_t code, const char* function) {
  const TimeSpan minusTick(-1), ten = Milliseconds(10);
  Time past(TimeKind::Local);
  past -= TimeSpan::second;
  const char* const inThePast = "timer set to fire in the past";
  using Invalid = Plaint::InvalidArgument;
  ExpectStartError<Invalid>([&] { timer.Start(TimeSpan(-10000), &ten); }, inThePast, "relTime", 0, function);
  ExpectStartError<Invalid>([&] { timer.Start(past, nullptr); }, inThePast, "relTime", 0, function);
  ExpectStartError<Invalid>([&] { timer.Start(ten, &minusTick); }, "negative timer period", "period", 0, function);
  ExpectStartError<Plaint::RuntimeError>([&] { refused.Start(TimeSpan(-9999), nullptr); }, "unable to start timer",
                                         nullptr, code, function);
}

// A periodic timer, one with a first delay and then another period, and a one-shot at an
// absolute time that replaces a running start, until `wait` has seen them fire. Gives the
// thread that every call ran on.
std::uint32_t ExpectFiringForms(TimerService& service, const std::function<bool(const Condition&)>& wait,
                                const TimeSpan* oneShotPeriod) {
  Recorder periodic, staged, once;
  std::unique_ptr<Timer> periodicTimer(service.CreateTimer(periodic)), stagedTimer(service.CreateTimer(staged)),
      onceTimer(service.CreateTimer(once));
  const TimeSpan fifteen = Milliseconds(15);
  Time when(TimeKind::Local);
  when += Milliseconds(20);
  const Clock::duration start = Clock::now().time_since_epoch();
  periodicTimer->StartPeriodic(Milliseconds(10));
  stagedTimer->Start(Milliseconds(40), &fifteen);
  onceTimer->Start(Milliseconds(5), &fifteen);
  onceTimer->Start(when, oneShotPeriod);
  EXPECT_TRUE(wait([&] { return periodic.calls >= 4 && staged.calls >= 3; }));
  stagedTimer->Stop();
  stagedTimer->Stop();
  EXPECT_EQ(once.calls, 1);
  EXPECT_GE(periodic.first.load() - start, std::chrono::milliseconds(10));  // after a period, not at once
  EXPECT_GE(staged.first.load() - start, std::chrono::milliseconds(40));
  EXPECT_EQ(periodic.thread, staged.thread);
  EXPECT_EQ(periodic.thread, once.thread);
  return periodic.thread;
}

// With the service gone: Stop and delete from the timer's own HandleTimer, Stop or delete
// from this thread while a call runs (which ends first), and Stop racing a re-arming.
void ExpectSafeEnds(std::unique_ptr<TimerService> service) {
  Recorder stopper, deleter, slow, quick;
  stopper.action = [](Timer& timer) { timer.Stop(); };
  deleter.action = [](Timer& timer) { delete &timer; };
  slow.action = [](Timer&) { Pause(3); };
  const TimeSpan three = Milliseconds(3);
  std::unique_ptr<Timer> stopping(service->CreateTimer(stopper)), racing(service->CreateTimer(slow)),
      restarting(service->CreateTimer(quick));
  service->CreateTimer(deleter)->Start(Milliseconds(2), &three);
  service.reset();
  stopping->StartPeriodic(Milliseconds(2));
  for (int round = 0; round < 10; ++round) {
    racing->StartPeriodic(Milliseconds(1));
    ASSERT_TRUE(WaitUntil([&] { return slow.inside.load(); }));
    round < 9 ? racing->Stop() : racing.reset();
    EXPECT_FALSE(slow.inside);
    // A first firing of 1 ms re-arms at the period, perhaps before Start has returned.
    restarting->Start(Milliseconds(1), &three);
    ASSERT_TRUE(WaitUntil([&] { return quick.calls >= 2; }));
    restarting->Stop();
    quick.calls = 0;
    Pause(5);
    EXPECT_EQ(quick.calls, 0);
  }
  EXPECT_EQ(std::make_tuple(stopper.calls.load(), deleter.calls.load()), std::make_tuple(1, 1));
}

TEST(EventTimer, FiresOnTheDispatcherThreadAndEndsSafely) {
  TrackingDispatcher dispatcher;
  EventTimerService service(dispatcher);
  EXPECT_EQ(ExpectFiringForms(service, WaitUntil, nullptr), dispatcher.GetThreadId());
  EXPECT_TRUE(dispatcher.registered.empty());
  ExpectSafeEnds(std::unique_ptr<TimerService>(new EventTimerService(dispatcher)));
}

TEST(WinMMTimer, ResolutionIsATwentiethRoundedAndCapped) {
  const std::uint32_t table[][2] = {{9, 0}, {10, 1}, {50, 3}, {1000, 50}, {1989, 99}, {1990, 100}, {100000, 100}};
  for (const auto& row : table) EXPECT_EQ(detail::MultimediaResolution(row[0]), row[1]) << row[0];
}

TEST(WinMMTimer, FiresOnTheTimerThreadOrTheDispatcherStopsOnAFailedStartAndEndsSafely) {
  TrackingDispatcher dispatcher;
  const TimeSpan belowOneMs(9999);  // a one-shot
  WinMMTimerService onTimerThread, onDispatcher(&dispatcher);
  EXPECT_NE(ExpectFiringForms(onTimerThread, WaitUntil, &belowOneMs), dispatcher.GetThreadId());
  EXPECT_EQ(ExpectFiringForms(onDispatcher, WaitUntil, &belowOneMs), dispatcher.GetThreadId());
  EXPECT_TRUE(dispatcher.registered.empty());
  Recorder recorder;
  std::unique_ptr<Timer> timer(onTimerThread.CreateTimer(recorder));
  timer->StartPeriodic(Milliseconds(2));
  ASSERT_TRUE(WaitUntil([&] { return recorder.calls > 0; }));
  ExpectStartErrors(*timer, *timer, Win32::ERROR_INVALID_PARAMETER, "Tessera::WinMMTimer::Start");
  recorder.calls = 0;
  Pause(10);
  EXPECT_EQ(recorder.calls, 0);  // stopped by the first failure
  ExpectSafeEnds(std::unique_ptr<TimerService>(new WinMMTimerService));
  ExpectSafeEnds(std::unique_ptr<TimerService>(new WinMMTimerService(&dispatcher)));
}

TEST(WindowTimer, IdentifierTableAndFiringStep) {
  const Win32::HWND window = Win32::CreateMessageWindow();
  WindowTimerService service;
  service.Initialize(window, 0);  // base 1
  Recorder deleter, keeper;
  deleter.action = [](Timer& timer) { delete &timer; };
  std::unique_ptr<Timer> first(service.CreateTimer(keeper));
  Timer* second = service.CreateTimer(deleter);
  std::unique_ptr<Timer> third(service.CreateTimer(keeper));
  first->Start(TimeSpan::hour, nullptr);
  second->Start(TimeSpan::hour, nullptr);
  third->StartPeriodic(TimeSpan::hour);
  const Win32::UINT timer = Win32::WM_TIMER;
  Win32::MSG elsewhere{Win32::CreateMessageWindow(), timer, 1, 0, 0}, mine{window, timer, 1, 0, 0};
  // Below the base, beyond the table, not a timer message, another window's; then two hits.
  EXPECT_EQ(std::make_tuple(service.ProcessMessage(timer, 0, 0), service.ProcessMessage(timer, 4, 0),
                            service.ProcessMessage(timer + 1, 1, 0), service.ProcessMessage(elsewhere),
                            service.ProcessMessage(mine), service.ProcessMessage(timer, 3, 0)),
            std::make_tuple(false, false, false, false, true, true));
  EXPECT_TRUE(service.ProcessMessage(timer, 2, 0));  // its observer deletes it
  EXPECT_FALSE(service.ProcessMessage(timer, 2, 0));
  std::unique_ptr<Timer> reused(service.CreateTimer(keeper)), grown(service.CreateTimer(keeper));
  reused->Start(TimeSpan::hour, nullptr);  // identifier 2 again, then the table grows
  grown->Start(TimeSpan::hour, nullptr);
  EXPECT_TRUE(service.ProcessMessage(timer, 2, 0));
  EXPECT_TRUE(service.ProcessMessage(timer, 4, 0));
  EXPECT_EQ(keeper.calls, 4);
}

TEST(WindowTimer, FailedStartsKeepItRunningItFiresThroughTheLoopAndOrphansOutliveTheService) {
  Recorder recorder;
  WindowTimerService idle;
  std::unique_ptr<Timer> orphan(idle.CreateTimer(recorder));
  ExpectStartError<Plaint::LogicError>([&] { orphan->Start(TimeSpan(), nullptr); }, "TimerService not running", nullptr,
                                       0, "Tessera::WindowTimer::Start");
  const Win32::HWND window = Win32::CreateMessageWindow(), gone = Win32::CreateMessageWindow();
  Win32::DestroyWindow(gone);
  auto service = std::make_unique<WindowTimerService>(window);
  WindowTimerService broken(gone);
  std::unique_ptr<Timer> timer(service->CreateTimer(recorder)), refused(broken.CreateTimer(recorder));
  timer->Start(TimeSpan::hour, nullptr);
  ExpectStartErrors(*timer, *refused, Win32::ERROR_INVALID_WINDOW_HANDLE, "Tessera::WindowTimer::Start");
  EXPECT_TRUE(service->ProcessMessage(Win32::WM_TIMER, 0x10000, 0));  // still running, at the default base
  // Hands this thread's messages to the service until `done` holds, for five seconds at most.
  const auto pump = [&](const Condition& done) {
    pollfd queue{Win32::GetMessageQueueFd(), POLLIN, 0};
    for (const auto limit = Clock::now() + std::chrono::seconds(5); !done() && Clock::now() < limit; poll(&queue, 1, 5))
      for (Win32::MSG msg{}; Win32::PeekMessageA(&msg, nullptr, 0, 0, Win32::PM_REMOVE) != 0;)
        service->ProcessMessage(msg);
    return done();
  };
  const TimeSpan belowOneMs(9999);
  EXPECT_EQ(ExpectFiringForms(*service, pump, &belowOneMs), Skein::Thread::GetSelfId());
  timer->StartPeriodic(Milliseconds(5));
  service.reset();  // the running timer stops
  Pause(20);
  Win32::MSG msg{};
  EXPECT_EQ(Win32::PeekMessageA(&msg, nullptr, 0, 0, Win32::PM_REMOVE), 0);
  EXPECT_THROW(timer->Start(TimeSpan(), nullptr), Plaint::LogicError);
  timer->Stop();
  Win32::DestroyWindow(window);
}

}  // namespace
}  // namespace Tessera
