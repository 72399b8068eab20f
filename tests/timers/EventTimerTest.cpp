#include <tessera/timers/EventTimerService.h>

#include <gtest/gtest.h>

#include <memory>

#include "timers/TimerTesting.h"

namespace Tessera {
namespace {

using namespace testing;

TEST(EventTimer, PeriodicOnceRestartAndAbsoluteOnTheDispatcherThread) {
  CountingDispatcher dispatcher;
  EventTimerService service(dispatcher);
  Recorder periodic, once;
  std::unique_ptr<Timer> ticker(service.CreateTimer(periodic));
  std::unique_ptr<Timer> single(service.CreateTimer(once));
  single->Stop();  // never ran: one unregistration and nothing else
  const auto start = Clock::now() - Clock::time_point();
  ticker->StartPeriodic(Milliseconds(20));
  single->Start(Milliseconds(50), nullptr);
  single->Start(TimeSpan(0), nullptr);  // restarted while running: one registration, one firing
  ASSERT_TRUE(WaitFor(periodic.calls, 3));
  ticker->Stop();
  EXPECT_GE(periodic.first.load() - start, std::chrono::milliseconds(20));  // after a period, not at once
  Pause(20);
  EXPECT_EQ(once.calls, 1);  // silent, though still registered
  EXPECT_EQ(periodic.thread, dispatcher.inner.GetThreadId());
  EXPECT_EQ(once.thread, dispatcher.inner.GetThreadId());
  EXPECT_EQ(dispatcher.registers, 3);
  EXPECT_EQ(dispatcher.unregisters, 2);

  const TimeSpan period = Milliseconds(5);
  for (const TimeKind kind : {TimeKind::Utc, TimeKind::Local}) {  // fires again after Stop
    Time when(kind);
    when += Milliseconds(10);
    ticker->Start(when, &period);
    ASSERT_TRUE(WaitFor(periodic.calls, periodic.calls + 2));
    ticker->Stop();
  }
  single.reset();
  EXPECT_EQ(dispatcher.unregisters, 5);
}

TEST(EventTimer, OutlivesItsServiceAndEndsItselfOrIsStoppedWhileFiring) {
  Skein::EpollDispatcher dispatcher;
  std::unique_ptr<EventTimerService> service(new EventTimerService(dispatcher));
  Recorder stopper, deleter, slow;
  stopper.action = [](Timer& timer) { timer.Stop(); };
  deleter.action = [](Timer& timer) { delete &timer; };
  slow.action = [](Timer&) { Pause(3); };
  std::unique_ptr<Timer> stopping(service->CreateTimer(stopper));
  std::unique_ptr<Timer> racing(service->CreateTimer(slow));
  Timer* deleting = service->CreateTimer(deleter);
  service.reset();
  stopping->StartPeriodic(Milliseconds(2));
  deleting->StartPeriodic(Milliseconds(2));
  for (int round = 0; round < 10; ++round) {
    racing->StartPeriodic(Milliseconds(1));
    while (!slow.inside) std::this_thread::yield();
    racing->Stop();
    EXPECT_FALSE(slow.inside);  // the call under way ended before Stop returned
  }
  Pause(20);
  EXPECT_EQ(stopper.calls, 1);
  EXPECT_EQ(deleter.calls, 1);
}

}  // namespace
}  // namespace Tessera
