#include <tessera/timers/EventTimerService.h>

#include <gtest/gtest.h>

#include <memory>

#include "timers/CountingDispatcher.h"
#include "timers/TimerTesting.h"

namespace Tessera {
namespace {

using namespace testing;

TEST(EventTimer, FiresOnTheDispatcherThreadPeriodicallyAndOnce) {
  CountingDispatcher dispatcher;
  EventTimerService service(dispatcher);
  Recorder periodic;
  Recorder once;
  std::unique_ptr<Timer> ticker(service.CreateTimer(periodic));
  std::unique_ptr<Timer> single(service.CreateTimer(once));

  const auto start = Clock::now();
  ticker->StartPeriodic(Milliseconds(20));
  single->Start(Milliseconds(10), nullptr);
  single->Start(Milliseconds(10), nullptr);  // restarted while running: still one firing
  ASSERT_TRUE(periodic.WaitForCalls(3));
  ticker->Stop();
  EXPECT_GE(periodic.moments.front() - start, std::chrono::milliseconds(20));  // after one period, not at once
  EXPECT_GE(periodic.moments[2] - start, std::chrono::milliseconds(60));
  ASSERT_TRUE(once.WaitForCalls(1));
  Pause(40);
  EXPECT_EQ(once.Calls(), 1u);  // silent though still registered
  for (Recorder* recorder : {&periodic, &once}) {
    for (const std::uint32_t id : recorder->threads) EXPECT_EQ(id, dispatcher.inner.GetThreadId());
    for (Timer* timer : recorder->timers) EXPECT_EQ(timer, recorder == &periodic ? ticker.get() : single.get());
  }
  // Three starts register, Stop unregisters, and so does each deletion.
  EXPECT_EQ(dispatcher.registers, 3);
  EXPECT_EQ(dispatcher.unregisters, 1);
  single.reset();
  ticker.reset();
  EXPECT_EQ(dispatcher.unregisters, 3);
}

TEST(EventTimer, StopStartAndAbsoluteStart) {
  CountingDispatcher dispatcher;
  EventTimerService service(dispatcher);
  Recorder recorder;
  std::unique_ptr<Timer> timer(service.CreateTimer(recorder));
  timer->Stop();  // never ran: one unregistration, nothing else
  timer->Stop();
  EXPECT_EQ(dispatcher.unregisters, 2);
  EXPECT_EQ(dispatcher.registers, 0);

  timer->Start(Milliseconds(5), nullptr);
  ASSERT_TRUE(recorder.WaitForCalls(1));
  timer->Stop();
  timer->Start(Milliseconds(5), nullptr);  // fires again after a Stop
  ASSERT_TRUE(recorder.WaitForCalls(2));

  for (const TimeKind kind : {TimeKind::Utc, TimeKind::Local}) {
    Time when(kind);
    when += Milliseconds(30);
    const TimeSpan period = Milliseconds(10);
    const std::size_t before = recorder.Calls();
    timer->Start(when, &period);
    ASSERT_TRUE(recorder.WaitForCalls(before + 2));
    timer->Stop();
  }
}

TEST(EventTimer, OutlivesItsServiceAndMayEndItselfWhileFiring) {
  Skein::EpollDispatcher dispatcher;
  std::unique_ptr<EventTimerService> service(new EventTimerService(dispatcher));
  Recorder stopper;
  Recorder deleter;
  Timer* stopping = service->CreateTimer(stopper);
  Timer* deleting = service->CreateTimer(deleter);
  service.reset();
  stopper.action = [](Timer& timer) { timer.Stop(); };
  deleter.action = [](Timer& timer) { delete &timer; };
  stopping->StartPeriodic(Milliseconds(2));
  deleting->StartPeriodic(Milliseconds(2));
  ASSERT_TRUE(stopper.WaitForCalls(1));
  ASSERT_TRUE(deleter.WaitForCalls(1));
  Pause(30);
  EXPECT_EQ(stopper.Calls(), 1u);
  EXPECT_EQ(deleter.Calls(), 1u);
  delete stopping;
}

TEST(EventTimer, StoppedFromAnotherThreadWhileFiring) {
  Skein::EpollDispatcher dispatcher;
  EventTimerService service(dispatcher);
  Recorder recorder;
  recorder.action = [](Timer&) { Pause(5); };
  std::unique_ptr<Timer> timer(service.CreateTimer(recorder));
  for (int round = 0; round < 10; ++round) {
    timer->StartPeriodic(Milliseconds(1));
    while (!recorder.Inside()) std::this_thread::yield();
    timer->Stop();
    EXPECT_FALSE(recorder.Inside());  // the call in progress ended before Stop returned
    const std::size_t calls = recorder.Calls();
    Pause(5);
    EXPECT_EQ(recorder.Calls(), calls);
  }
}

}  // namespace
}  // namespace Tessera
