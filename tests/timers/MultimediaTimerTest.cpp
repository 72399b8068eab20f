#include <tessera/win32/MultimediaTimer.h>

#include <gtest/gtest.h>

#include "timers/TimerTesting.h"

namespace Win32 {
namespace {

using Tessera::testing::Pause;

struct Counter {
  std::atomic<int> calls{0};
  std::atomic<bool> inside{false};
  std::atomic<bool> killSelf{false};
  std::atomic<MMRESULT> selfKill{99};
};

void Count(UINT timerId, UINT, DWORD_PTR user, DWORD_PTR, DWORD_PTR) {
  auto* counter = reinterpret_cast<Counter*>(user);
  counter->inside = true;
  if (counter->killSelf) counter->selfKill = timeKillEvent(timerId);  // must not wait for itself
  Pause(2);
  counter->inside = false;
  ++counter->calls;
}

TEST(MultimediaTimer, SynchronousKillRacesTheCallbackAndMayComeFromIt) {
  Counter counter;
  const auto user = reinterpret_cast<DWORD_PTR>(&counter);
  for (int round = 0; round < 10; ++round) {
    const UINT id = timeSetEvent(1, 0, &Count, user, TIME_PERIODIC | TIME_KILL_SYNCHRONOUS);
    ASSERT_NE(id, 0u);
    while (!counter.inside) std::this_thread::yield();
    EXPECT_EQ(timeKillEvent(id), TIMERR_NOERROR);
    EXPECT_FALSE(counter.inside);
    const int calls = counter.calls;
    Pause(5);
    EXPECT_EQ(counter.calls, calls);
    EXPECT_EQ(timeKillEvent(id), MMSYSERR_INVALPARAM);
  }
  counter.killSelf = true;
  const int before = counter.calls;
  timeSetEvent(1, 0, &Count, user, TIME_PERIODIC | TIME_KILL_SYNCHRONOUS);
  ASSERT_TRUE(Tessera::testing::WaitFor(counter.calls, before + 1));
  Pause(10);
  EXPECT_EQ(counter.calls, before + 1);
  EXPECT_EQ(counter.selfKill, TIMERR_NOERROR);
}

}  // namespace
}  // namespace Win32
