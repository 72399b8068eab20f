#include <tessera/win32/MultimediaTimer.h>

#include <gtest/gtest.h>

#include <atomic>

#include <skein/Waitable.h>

#include "timers/TimerTesting.h"

namespace Win32 {
namespace {

using Tessera::testing::Pause;

struct Counter {
  std::atomic<int> calls{0};
  std::atomic<bool> inside{false};
  std::atomic<UINT> lastId{0};
  std::atomic<bool> killSelf{false};
  std::atomic<MMRESULT> selfKill{99};
};

void Count(UINT timerId, UINT message, DWORD_PTR user, DWORD_PTR reserved1, DWORD_PTR reserved2) {
  auto* counter = reinterpret_cast<Counter*>(user);
  EXPECT_EQ(message + reserved1 + reserved2, 0u);
  counter->inside = true;
  counter->lastId = timerId;
  if (counter->killSelf) counter->selfKill = timeKillEvent(timerId);  // must not wait for itself
  Pause(2);
  ++counter->calls;
  counter->inside = false;
}

bool WaitForCalls(const Counter& counter, int count) {
  for (int waited = 0; waited < 5000 && counter.calls < count; ++waited) Pause(1);
  return counter.calls >= count;
}

TEST(MultimediaTimer, RefusesBadDelaysAndUnknownIdentifiers) {
  Counter counter;
  const DWORD_PTR user = reinterpret_cast<DWORD_PTR>(&counter);
  for (const UINT delay : {0u, TIME_DELAY_MAX + 1}) {
    SetLastError(0);
    EXPECT_EQ(timeSetEvent(delay, 0, &Count, user, TIME_PERIODIC), 0u) << delay;
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  }
  SetLastError(0);
  EXPECT_EQ(timeSetEvent(10, 0, nullptr, user, TIME_ONESHOT), 0u);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(timeKillEvent(0), MMSYSERR_INVALPARAM);

  // A one-shot is gone once it has fired; identifiers are distinct and never 0.
  const UINT first = timeSetEvent(TIME_DELAY_MIN, 0, &Count, user, TIME_ONESHOT | TIME_KILL_SYNCHRONOUS);
  const UINT second = timeSetEvent(TIME_DELAY_MAX, 0, &Count, user, TIME_ONESHOT);
  ASSERT_NE(first, 0u);
  ASSERT_NE(second, 0u);
  EXPECT_NE(first, second);
  ASSERT_TRUE(WaitForCalls(counter, 1));
  EXPECT_EQ(counter.lastId, first);
  EXPECT_EQ(timeKillEvent(first), MMSYSERR_INVALPARAM);
  EXPECT_EQ(timeKillEvent(second), TIMERR_NOERROR);
  EXPECT_EQ(timeKillEvent(second), MMSYSERR_INVALPARAM);
  Pause(10);
  EXPECT_EQ(counter.calls, 1);
}

TEST(MultimediaTimer, SetsAnEventHandleAtEachFiring) {
  Skein::AutoEvent event(false);
  const UINT id = timeSetEvent(2, 0, EventHandleAsCallback(event.GetHandle()), 0,
                               TIME_PERIODIC | TIME_CALLBACK_EVENT_SET);
  ASSERT_NE(id, 0u);
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(event.Wait(5000, nullptr));
  EXPECT_EQ(timeKillEvent(id), TIMERR_NOERROR);
  event.Reset();
  EXPECT_FALSE(event.Wait(20, nullptr));  // no set after the kill
}

TEST(MultimediaTimer, SynchronousKillRacesTheCallbackAndMayComeFromIt) {
  Counter counter;
  const DWORD_PTR user = reinterpret_cast<DWORD_PTR>(&counter);
  for (int round = 0; round < 10; ++round) {
    const UINT id = timeSetEvent(1, 0, &Count, user, TIME_PERIODIC | TIME_KILL_SYNCHRONOUS);
    ASSERT_NE(id, 0u);
    while (!counter.inside) std::this_thread::yield();
    EXPECT_EQ(timeKillEvent(id), TIMERR_NOERROR);
    EXPECT_FALSE(counter.inside);  // the call under way has ended
    const int calls = counter.calls;
    Pause(5);
    EXPECT_EQ(counter.calls, calls);
  }
  counter.killSelf = true;
  const int before = counter.calls;
  const UINT id = timeSetEvent(1, 0, &Count, user, TIME_PERIODIC | TIME_KILL_SYNCHRONOUS);
  ASSERT_TRUE(WaitForCalls(counter, before + 1));
  Pause(10);
  EXPECT_EQ(counter.calls, before + 1);
  EXPECT_EQ(counter.selfKill, TIMERR_NOERROR);
  EXPECT_EQ(timeKillEvent(id), MMSYSERR_INVALPARAM);
}

}  // namespace
}  // namespace Win32
