#include <tessera/timers/WinMMTimerService.h>

#include <gtest/gtest.h>

#include <memory>

#include <tessera/win32/LastError.h>

#include "tessera/timers/TimerStart.h"
#include "timers/TimerTesting.h"

namespace Tessera {
namespace {

using namespace testing;

TEST(WinMMTimer, ResolutionIsATwentiethRoundedAndCapped) {
  const std::uint32_t table[][2] = {{9, 0}, {10, 1}, {30, 2}, {50, 3}, {1000, 50}, {1989, 99}, {1990, 100}, {100000, 100}};
  for (const auto& row : table) EXPECT_EQ(detail::MultimediaResolution(row[0]), row[1]) << row[0];
}

TEST(WinMMTimer, FailedStartsNameTheCauseAndLeaveTheTimerStopped) {
  WinMMTimerService service;
  Recorder recorder;
  std::unique_ptr<Timer> timer(service.CreateTimer(recorder));
  const TimeSpan minusTick(-1), ten = Milliseconds(10);
  Time past(TimeKind::Local);
  past -= TimeSpan::second;
  const FailedStart cases[] = {
      {[&] { timer->Start(TimeSpan(-10000), &ten); }, typeid(Plaint::InvalidArgument),
       "timer set to fire in the past", "relTime", 0},
      {[&] { timer->Start(ten, &minusTick); }, typeid(Plaint::InvalidArgument), "negative timer period", "period", 0},
      {[&] { timer->Start(past, nullptr); }, typeid(Plaint::InvalidArgument), "timer set to fire in the past",
       "relTime", 0},
      // -9,999 ticks is a delay of 0 ms, which the platform refuses.
      {[&] { timer->Start(TimeSpan(-9999), nullptr); }, typeid(Plaint::RuntimeError), "unable to start timer",
       nullptr, Win32::ERROR_INVALID_PARAMETER},
  };
  for (const FailedStart& failed : cases) {
    timer->StartPeriodic(Milliseconds(2));
    ASSERT_TRUE(WaitFor(recorder.calls, recorder.calls + 1));
    ExpectStartError(failed, "Tessera::WinMMTimer::Start", "WinMMTimerService.cpp");
    const int calls = recorder.calls;
    Pause(10);
    EXPECT_EQ(recorder.calls, calls) << failed.message;
  }
}

TEST(WinMMTimer, ThreeFormsOnTheTimerThreadAndOnTheDispatcher) {
  CountingDispatcher dispatcher;
  for (Skein::EventDispatcher* source : {static_cast<Skein::EventDispatcher*>(nullptr),
                                         static_cast<Skein::EventDispatcher*>(&dispatcher)}) {
    WinMMTimerService service(source);
    WinMMTimerService copy(service);
    Recorder periodic, once, staged;
    std::unique_ptr<Timer> periodicTimer(copy.CreateTimer(periodic));
    std::unique_ptr<Timer> onceTimer(service.CreateTimer(once));
    std::unique_ptr<Timer> stagedTimer(service.CreateTimer(staged));
    const TimeSpan belowOneMs(9999), fifteen = Milliseconds(15);
    const auto start = Clock::now() - Clock::time_point();
    periodicTimer->StartPeriodic(Milliseconds(10));
    onceTimer->Start(Milliseconds(5), &belowOneMs);  // a one-shot
    stagedTimer->Start(Milliseconds(40), &fifteen);  // single firing, then periodic
    ASSERT_TRUE(WaitFor(periodic.calls, 4));
    ASSERT_TRUE(WaitFor(staged.calls, 3));
    periodicTimer->Stop();
    periodicTimer->Stop();
    stagedTimer->Stop();
    onceTimer->Stop();  // fired as a one-shot: nothing left to stop
    EXPECT_GE(periodic.first.load() - start, std::chrono::milliseconds(10));
    EXPECT_GE(staged.first.load() - start, std::chrono::milliseconds(40));
    EXPECT_EQ(once.calls, 1);
    for (const Recorder* recorder : {&periodic, &once, &staged})
      EXPECT_EQ(recorder->thread == dispatcher.inner.GetThreadId(), source != nullptr);
  }
  // One registration per arming: periodic, one-shot, and the staged timer twice; one
  // unregistration per stop of an armed timer: two Stops and the firings' own two.
  EXPECT_EQ(dispatcher.registers, 4);
  EXPECT_EQ(dispatcher.unregisters, 4);
}

TEST(WinMMTimer, EndsItselfWhileFiringAndIsStoppedOrDeletedFromAnotherThread) {
  Skein::EpollDispatcher dispatcher;
  for (Skein::EventDispatcher* source : {static_cast<Skein::EventDispatcher*>(nullptr),
                                         static_cast<Skein::EventDispatcher*>(&dispatcher)}) {
    WinMMTimerService service(source);
    Recorder stopper, deleter, slow, quick;
    stopper.action = [](Timer& timer) { timer.Stop(); };
    deleter.action = [](Timer& timer) { delete &timer; };
    slow.action = [](Timer&) { Pause(3); };
    std::unique_ptr<Timer> stopping(service.CreateTimer(stopper));
    std::unique_ptr<Timer> racing(service.CreateTimer(slow));
    std::unique_ptr<Timer> restarting(service.CreateTimer(quick));
    const TimeSpan three = Milliseconds(3);
    stopping->StartPeriodic(Milliseconds(2));
    service.CreateTimer(deleter)->Start(Milliseconds(2), &three);
    for (int round = 0; round < 10; ++round) {
      racing->StartPeriodic(Milliseconds(1));
      while (!slow.inside) std::this_thread::yield();
      if (round % 2 == 0)
        racing->Stop();
      else
        racing.reset(service.CreateTimer(slow));
      EXPECT_FALSE(slow.inside);  // the call under way ended first
      // A 1 ms single firing re-arms itself, perhaps before its Start has stored the
      // identifier: the re-armed timer must be the one that Stop ends.
      restarting->Start(Milliseconds(1), &three);
      ASSERT_TRUE(WaitFor(quick.calls, quick.calls + 2));
      restarting->Stop();
      const int calls = quick.calls;
      Pause(5);
      EXPECT_EQ(quick.calls, calls);
    }
    EXPECT_EQ(stopper.calls, 1);
    EXPECT_EQ(deleter.calls, 1);
  }
}

}  // namespace
}  // namespace Tessera
