#include <tessera/timers/WindowTimerService.h>

#include <gtest/gtest.h>

#include <poll.h>

#include <memory>

#include "timers/TimerTesting.h"

namespace Tessera {
namespace {

using namespace testing;

// Hands this thread's messages to `service` until `done` holds; false after five seconds.
template <class Done>
bool Pump(WindowTimerService& service, Done done) {
  pollfd queue{Win32::GetMessageQueueFd(), POLLIN, 0};
  for (const auto limit = Clock::now() + std::chrono::seconds(5); !done(); poll(&queue, 1, 5)) {
    if (Clock::now() > limit) return false;
    Win32::MSG msg{};
    while (Win32::PeekMessageA(&msg, nullptr, 0, 0, Win32::PM_REMOVE) != 0) service.ProcessMessage(msg);
  }
  return true;
}

void ExpectStartError(const FailedStart& expected) {
  testing::ExpectStartError(expected, "Tessera::WindowTimer::Start", "WindowTimerService.cpp");
}

TEST(WindowTimer, FailedStartsNameTheirCauseAndKeepTheTimerRunning) {
  WindowTimerService idle;
  Recorder recorder;
  std::unique_ptr<Timer> orphan(idle.CreateTimer(recorder));
  const Win32::HWND window = Win32::CreateMessageWindow(), gone = Win32::CreateMessageWindow();
  Win32::DestroyWindow(gone);
  WindowTimerService service(window), broken(gone);
  std::unique_ptr<Timer> timer(service.CreateTimer(recorder)), refused(broken.CreateTimer(recorder));
  timer->StartPeriodic(Milliseconds(10));
  const TimeSpan minusTick(-1);
  const FailedStart cases[] = {
      {[&] { orphan->Start(TimeSpan(), nullptr); }, typeid(Plaint::LogicError), "TimerService not running", nullptr, 0},
      {[&] { timer->Start(TimeSpan(-10000), nullptr); }, typeid(Plaint::InvalidArgument),
       "timer set to fire in the past", "relTime", 0},
      {[&] { timer->Start(TimeSpan(), &minusTick); }, typeid(Plaint::InvalidArgument), "negative timer period",
       "period", 0},
      // -9,999 ticks is a delay of 0 ms and passes, to a window that is gone.
      {[&] { refused->Start(TimeSpan(-9999), nullptr); }, typeid(Plaint::RuntimeError), "unable to start timer",
       nullptr, Win32::ERROR_INVALID_WINDOW_HANDLE},
  };
  for (const FailedStart& failed : cases) ExpectStartError(failed);
  ASSERT_TRUE(Pump(service, [&] { return recorder.calls >= 2; }));  // still running
  timer->Stop();
  Win32::DestroyWindow(window);
}

TEST(WindowTimer, IdentifierTableAndFiringStep) {
  const Win32::HWND window = Win32::CreateMessageWindow();
  WindowTimerService service;
  service.Initialize(window, 0);  // base 1
  Recorder recorder;
  recorder.action = [](Timer& timer) { delete &timer; };
  Recorder keeper;
  std::unique_ptr<Timer> first(service.CreateTimer(keeper));
  Timer* second = service.CreateTimer(recorder);
  std::unique_ptr<Timer> third(service.CreateTimer(keeper));
  const TimeSpan belowOneMs(9999);
  first->Start(TimeSpan::hour, &belowOneMs);  // a one-shot, fired by hand below
  second->Start(TimeSpan::hour, nullptr);
  third->StartPeriodic(TimeSpan::hour);
  const Win32::UINT timer = Win32::WM_TIMER;
  EXPECT_FALSE(service.ProcessMessage(timer, 0, 0));       // below the base
  EXPECT_FALSE(service.ProcessMessage(timer, 4, 0));       // beyond the table
  EXPECT_FALSE(service.ProcessMessage(timer + 1, 1, 0));   // not a timer message
  Win32::MSG elsewhere{Win32::CreateMessageWindow(), timer, 1, 0, 0};
  EXPECT_FALSE(service.ProcessMessage(elsewhere));
  EXPECT_EQ(keeper.calls, 0);
  Win32::MSG mine{window, timer, 1, 0, 0};
  EXPECT_TRUE(service.ProcessMessage(mine));
  EXPECT_FALSE(service.ProcessMessage(mine));  // the one-shot has stopped
  EXPECT_TRUE(service.ProcessMessage(timer, 3, 0));
  EXPECT_TRUE(service.ProcessMessage(timer, 3, 0));  // periodic: still running
  EXPECT_EQ(keeper.calls, 3);
  EXPECT_TRUE(service.ProcessMessage(timer, 2, 0));  // its observer deletes it
  EXPECT_FALSE(service.ProcessMessage(timer, 2, 0));
  std::unique_ptr<Timer> reused(service.CreateTimer(keeper));  // takes identifier 2 again
  reused->Start(TimeSpan::hour, nullptr);
  EXPECT_TRUE(service.ProcessMessage(timer, 2, 0));
  EXPECT_EQ(keeper.calls, 4);
  std::unique_ptr<Timer> fourth(service.CreateTimer(keeper));  // and the table grows
  fourth->Start(TimeSpan::hour, nullptr);
  EXPECT_TRUE(service.ProcessMessage(timer, 4, 0));

  WindowTimerService defaults(window);
  std::unique_ptr<Timer> based(defaults.CreateTimer(keeper));
  based->Start(TimeSpan::hour, nullptr);
  EXPECT_FALSE(defaults.ProcessMessage(timer, WindowTimerService::timerIdBaseDefault - 1, 0));
  EXPECT_TRUE(defaults.ProcessMessage(timer, 0x10000, 0));
}

TEST(WindowTimer, FiresThroughTheLoopAndOrphansOutliveTheService) {
  const Win32::HWND window = Win32::CreateMessageWindow();
  auto service = std::make_unique<WindowTimerService>(window);
  Recorder staged, once;
  std::unique_ptr<Timer> stagedTimer(service->CreateTimer(staged));
  std::unique_ptr<Timer> onceTimer(service->CreateTimer(once));
  const TimeSpan period = Milliseconds(15);
  const auto start = Clock::now() - Clock::time_point();
  stagedTimer->Start(Milliseconds(40), &period);
  Time when(TimeKind::Local);
  when += Milliseconds(20);
  onceTimer->Start(when, nullptr);
  ASSERT_TRUE(Pump(*service, [&] { return staged.calls >= 3 && once.calls >= 1; }));
  EXPECT_GE(staged.first.load() - start, std::chrono::milliseconds(40));
  EXPECT_EQ(once.calls, 1);

  service.reset();  // the running timer stops
  const int calls = staged.calls;
  Pause(40);
  Win32::MSG msg{};
  EXPECT_EQ(Win32::PeekMessageA(&msg, nullptr, 0, 0, Win32::PM_REMOVE), 0);
  EXPECT_EQ(staged.calls, calls);
  ExpectStartError({[&] { stagedTimer->Start(TimeSpan(), nullptr); }, typeid(Plaint::LogicError),
                    "TimerService not running", nullptr, 0});
  stagedTimer->Stop();
  Win32::DestroyWindow(window);
}

}  // namespace
}  // namespace Tessera
