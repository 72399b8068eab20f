#include <skein/Lock.h>
#include <skein/Thread.h>
#include <skein/Waitable.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace Skein {
namespace {

TEST(Lock, ExcludesAcrossThreadsWhileGuardsGiveItUpAndRetake) {
  Lock lock;
  long long counter = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&] {
      for (int i = 0; i < 20000; ++i) {
        Guard<Lock> guard(lock);
        ++counter;
        if (i % 1000 != 0) continue;
        guard.Release();
        guard.Release();  // a second release does nothing
        EXPECT_FALSE(guard.IsHeld());
        guard.Acquire();
        guard.Acquire();
        ++counter;
      }
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(counter, 4 * (20000 + 20));
}

TEST(Waitable, TimeoutRemainingAndAliasing) {
  ManualEvent event(false);
  std::uint64_t remaining = 12345;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(event.Wait(30, &remaining));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));
  EXPECT_EQ(remaining, 0u);

  event.Set();
  std::uint64_t timeout = 10000;
  EXPECT_TRUE(event.Wait(timeout, &timeout));  // the unspent time written over the timeout
  EXPECT_GT(timeout, 9000u);
  EXPECT_LE(timeout, 10000u);
  std::uint64_t unlimited = Waitable::infinite;
  EXPECT_TRUE(event.Wait(unlimited, &unlimited));
  EXPECT_EQ(unlimited, Waitable::infinite);
  event.Reset();
  EXPECT_FALSE(event.Wait(0, nullptr));
}

TEST(Waitable, AutoEventLetsOneWaiterPassPerSetAcrossThreads) {
  AutoEvent event(true);
  EXPECT_TRUE(event.Wait(0, nullptr));
  event.Set();
  event.Set();  // setting a set event keeps it set once
  EXPECT_TRUE(event.Wait(0, nullptr));
  EXPECT_FALSE(event.Wait(0, nullptr));

  std::atomic<int> passed{0};
  std::vector<std::thread> waiters;
  for (int i = 0; i < 3; ++i) waiters.emplace_back([&] { passed += event.Wait(2000, nullptr); });
  for (int i = 0; i < 3; ++i) {
    event.Set();
    for (int spin = 0; spin < 200 && passed.load() <= i; ++spin)
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  for (auto& waiter : waiters) waiter.join();
  EXPECT_EQ(passed, 3);
}

}  // namespace
}  // namespace Skein
