#include <tessera/timers/WinMMTimerService.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include <tessera/win32/LastError.h>
#include <tessera/win32/MultimediaTimer.h>

#include "tessera/timers/TimerStart.h"
#include "timers/CountingDispatcher.h"
#include "timers/TimerTesting.h"

namespace Tessera {
namespace {

using namespace testing;

TEST(WinMMTimer, ResolutionIsATwentiethRoundedAndCapped) {
  const std::uint32_t table[][2] = {{0, 0},   {9, 0},     {10, 1},     {30, 2},   {50, 3},
                                    {1000, 50}, {1989, 99}, {1990, 100}, {100000, 100}};
  for (const auto& row : table) EXPECT_EQ(detail::MultimediaResolution(row[0]), row[1]) << row[0];
}

// Runs `start` on a running timer and checks the error, its detail and that the timer is
// left stopped.
template <class Error, class Start>
void ExpectStartFailure(Timer& timer, Recorder& recorder, Start start, const std::string& message,
                        const char* name, std::uint32_t code) {
  timer.StartPeriodic(Milliseconds(2));
  ASSERT_TRUE(recorder.WaitForCalls(recorder.Calls() + 1));
  try {
    start();
    ADD_FAILURE() << "no throw for " << message;
  } catch (const Error& error) {
    EXPECT_EQ(error.what(), message);
    EXPECT_STREQ(error.GetContext().function, "Tessera::WinMMTimer::Start");
    EXPECT_NE(std::string(error.GetContext().file).find("WinMMTimerService.cpp"), std::string::npos);
    const char* const* argument = error.template GetInfo<Plaint::ErrorInfo_invalidArgumentName>();
    const std::uint32_t* win32 = error.template GetInfo<Plaint::ErrorInfo_Win32Error>();
    if (name != nullptr) {
      ASSERT_NE(argument, nullptr);
      EXPECT_STREQ(*argument, name);
    } else {
      ASSERT_NE(win32, nullptr);
      EXPECT_EQ(*win32, code);
    }
  }
  const std::size_t calls = recorder.Calls();
  Pause(20);
  EXPECT_EQ(recorder.Calls(), calls);
}

TEST(WinMMTimer, BadArgumentsAndRefusalsLeaveTheTimerStopped) {
  WinMMTimerService service;
  Recorder recorder;
  std::unique_ptr<Timer> timer(service.CreateTimer(recorder));
  const TimeSpan negative(-1);
  const TimeSpan ten = Milliseconds(10);
  ExpectStartFailure<Plaint::InvalidArgument>(
      *timer, recorder, [&] { timer->Start(TimeSpan(-10000), &ten); }, "timer set to fire in the past", "relTime", 0);
  ExpectStartFailure<Plaint::InvalidArgument>(
      *timer, recorder, [&] { timer->Start(ten, &negative); }, "negative timer period", "period", 0);
  Time past(TimeKind::Local);
  past -= TimeSpan::second;
  ExpectStartFailure<Plaint::InvalidArgument>(
      *timer, recorder, [&] { timer->Start(past, nullptr); }, "timer set to fire in the past", "relTime", 0);
  // -9,999 ticks is a delay of 0 ms, which the platform refuses, as it does 1,000,001 ms.
  ExpectStartFailure<Plaint::RuntimeError>(
      *timer, recorder, [&] { timer->Start(TimeSpan(-9999), nullptr); }, "unable to start timer", nullptr,
      Win32::ERROR_INVALID_PARAMETER);
  ExpectStartFailure<Plaint::RuntimeError>(
      *timer, recorder, [&] { timer->Start(Milliseconds(1000001), nullptr); }, "unable to start timer", nullptr,
      Win32::ERROR_INVALID_PARAMETER);
}

TEST(WinMMTimer, ThreeFormsOnTheTimerThreadAndOnTheDispatcher) {
  CountingDispatcher dispatcher;
  for (Skein::EventDispatcher* source : {static_cast<Skein::EventDispatcher*>(nullptr),
                                         static_cast<Skein::EventDispatcher*>(&dispatcher)}) {
    SCOPED_TRACE(source == nullptr ? "timer thread" : "dispatcher");
    WinMMTimerService service(source);
    WinMMTimerService copy(service);
    Recorder periodic, once, staged;
    std::unique_ptr<Timer> periodicTimer(copy.CreateTimer(periodic));
    std::unique_ptr<Timer> onceTimer(service.CreateTimer(once));
    std::unique_ptr<Timer> stagedTimer(service.CreateTimer(staged));
    const TimeSpan below = TimeSpan(9999);  // below 1 ms: a one-shot
    const TimeSpan fifteen = Milliseconds(15);
    const auto start = Clock::now();
    periodicTimer->StartPeriodic(Milliseconds(10));
    onceTimer->Start(Milliseconds(5), &below);
    stagedTimer->Start(Milliseconds(40), &fifteen);
    ASSERT_TRUE(periodic.WaitForCalls(4));
    ASSERT_TRUE(staged.WaitForCalls(3));
    ASSERT_TRUE(once.WaitForCalls(1));
    periodicTimer->Stop();
    stagedTimer->Stop();
    onceTimer->Stop();  // fired as a one-shot: nothing to do
    EXPECT_GE(periodic.moments.front() - start, std::chrono::milliseconds(10));
    EXPECT_GE(staged.moments.front() - start, std::chrono::milliseconds(40));
    EXPECT_GE(staged.moments[2] - staged.moments[0], std::chrono::milliseconds(30));
    Pause(30);
    EXPECT_EQ(once.Calls(), 1u);
    for (Recorder* recorder : {&periodic, &once, &staged})
      for (const std::uint32_t id : recorder->threads) {
        EXPECT_NE(id, Skein::Thread::GetSelfId());
        EXPECT_EQ(id == dispatcher.inner.GetThreadId(), source != nullptr);
      }
  }
  // One registration per arming: the periodic one, the one-shot, and the staged one
  // twice. One unregistration per stop of an armed timer: the periodic and staged Stop,
  // and the firings' own stops of the one-shot and of the staged single firing.
  EXPECT_EQ(dispatcher.registers, 4);
  EXPECT_EQ(dispatcher.unregisters, 4);
}

TEST(WinMMTimer, EndsItselfWhileFiringAndStopsFromAnotherThread) {
  Skein::EpollDispatcher dispatcher;
  for (Skein::EventDispatcher* source : {static_cast<Skein::EventDispatcher*>(nullptr),
                                         static_cast<Skein::EventDispatcher*>(&dispatcher)}) {
    WinMMTimerService service(source);
    Recorder stopper, deleter, slow;
    stopper.action = [](Timer& timer) { timer.Stop(); };
    deleter.action = [](Timer& timer) { delete &timer; };
    slow.action = [](Timer&) { Pause(3); };
    std::unique_ptr<Timer> stopping(service.CreateTimer(stopper));
    stopping->StartPeriodic(Milliseconds(2));
    const TimeSpan three = Milliseconds(3);
    service.CreateTimer(deleter)->Start(Milliseconds(2), &three);
    ASSERT_TRUE(stopper.WaitForCalls(1));
    ASSERT_TRUE(deleter.WaitForCalls(1));
    std::unique_ptr<Timer> racing(service.CreateTimer(slow));
    for (int round = 0; round < 10; ++round) {
      racing->StartPeriodic(Milliseconds(1));
      while (!slow.Inside()) std::this_thread::yield();
      if (round % 2 == 0)
        racing->Stop();
      else
        racing.reset(service.CreateTimer(slow));  // deletion racing the firing
      EXPECT_FALSE(slow.Inside());
    }
    Pause(20);
    EXPECT_EQ(stopper.Calls(), 1u);
    EXPECT_EQ(deleter.Calls(), 1u);
  }
}

TEST(WinMMTimer, RestartsQuicklyWithADifferentPeriod) {
  // A single firing of 1 ms that re-arms itself as periodic may run before the start has
  // stored its identifier; the re-armed timer must be the one that a later Stop kills.
  Skein::EpollDispatcher dispatcher;
  for (Skein::EventDispatcher* source : {static_cast<Skein::EventDispatcher*>(nullptr),
                                         static_cast<Skein::EventDispatcher*>(&dispatcher)}) {
    WinMMTimerService service(source);
    Recorder recorder;
    std::unique_ptr<Timer> timer(service.CreateTimer(recorder));
    const TimeSpan period = Milliseconds(2);
    for (int round = 0; round < 20; ++round) {
      const std::size_t before = recorder.Calls();
      timer->Start(Milliseconds(1), &period);
      ASSERT_TRUE(recorder.WaitForCalls(before + 2));
      timer->Stop();
      const std::size_t after = recorder.Calls();
      Pause(5);
      EXPECT_EQ(recorder.Calls(), after);
    }
  }
}

}  // namespace
}  // namespace Tessera
