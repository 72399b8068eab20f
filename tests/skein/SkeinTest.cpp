#include <skein/Lock.h>
#include <skein/Thread.h>
#include <skein/Waitable.h>

#include <gtest/gtest.h>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <set>
#include <thread>
#include <vector>

namespace Skein {
namespace {

using Clock = std::chrono::steady_clock;

long long MillisecondsSince(Clock::time_point start) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
}

TEST(Lock, ExcludesAcrossThreadsAndGuardReleasesAndRetakes) {
  Lock lock;
  long long counter = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&] {
      for (int i = 0; i < 20000; ++i) {
        Guard<Lock> guard(lock);
        ++counter;
        if (i % 1000 == 0) {
          guard.Release();
          guard.Release();  // a second release is a no-op
          EXPECT_FALSE(guard.IsHeld());
          guard.Acquire();
          guard.Acquire();
          ++counter;
        }
      }
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(counter, 4 * (20000 + 20));
}

TEST(Waitable, TimeoutRemainingAndAliasing) {
  ManualEvent event(false);
  std::uint64_t remaining = 12345;
  auto start = Clock::now();
  EXPECT_FALSE(event.Wait(30, &remaining));
  EXPECT_GE(MillisecondsSince(start), 30);
  EXPECT_EQ(remaining, 0u);

  EXPECT_FALSE(event.Wait(0, &remaining));  // a zero wait polls once

  event.Set();
  std::uint64_t timeout = 10000;
  EXPECT_TRUE(event.Wait(timeout, &timeout));  // remaining written over the timeout itself
  EXPECT_GT(timeout, 9000u);
  EXPECT_LE(timeout, 10000u);

  std::uint64_t unlimited = Waitable::infinite;
  EXPECT_TRUE(event.Wait(unlimited, &unlimited));
  EXPECT_EQ(unlimited, Waitable::infinite);
  EXPECT_TRUE(event.Wait(0, nullptr));  // manual: stays set
  event.Reset();
  EXPECT_FALSE(event.Wait(0, nullptr));
}

TEST(Waitable, AutoEventLetsOneWaiterPassPerSet) {
  AutoEvent event(true);
  EXPECT_TRUE(event.Wait(0, nullptr));
  EXPECT_FALSE(event.Wait(0, nullptr));  // cleared by the wait that passed
  event.Set();
  event.Set();  // setting a set event keeps it set once
  EXPECT_TRUE(event.Wait(0, nullptr));
  EXPECT_FALSE(event.Wait(0, nullptr));

  std::atomic<int> passed{0};
  std::vector<std::thread> waiters;
  for (int i = 0; i < 3; ++i)
    waiters.emplace_back([&] {
      if (event.Wait(2000, nullptr)) ++passed;
    });
  for (int i = 0; i < 3; ++i) {
    event.Set();
    for (int spin = 0; spin < 200 && passed.load() <= i; ++spin)
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  for (auto& waiter : waiters) waiter.join();
  EXPECT_EQ(passed, 3);
}

TEST(Waitable, WakesAcrossThreadsAndThroughItsHandle) {
  ManualEvent manual(false);
  std::thread setter([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    manual.Set();
  });
  auto start = Clock::now();
  manual.Wait();
  EXPECT_GE(MillisecondsSince(start), 15);
  setter.join();

  // A timer thread signals an AutoEvent by writing to its descriptor; an epoll or poll loop
  // sees it readable.
  AutoEvent event(false);
  pollfd entry{event.GetHandle(), POLLIN, 0};
  EXPECT_EQ(poll(&entry, 1, 0), 0);
  std::thread signaller([fd = event.GetHandle()] { eventfd_write(fd, 1); });
  signaller.join();
  EXPECT_EQ(poll(&entry, 1, 1000), 1);
  EXPECT_TRUE(event.Wait(1000, nullptr));
  EXPECT_EQ(poll(&entry, 1, 0), 0);
}

TEST(Thread, SelfIdIsNonZeroStableAndDistinct) {
  const std::uint32_t mine = Thread::GetSelfId();
  EXPECT_NE(mine, 0u);
  EXPECT_EQ(Thread::GetSelfId(), mine);
  std::set<std::uint32_t> ids{mine};
  std::vector<std::thread> threads;
  Lock lock;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&] {
      Guard<Lock> guard(lock);
      ids.insert(Thread::GetSelfId());
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(ids.size(), 5u);
  EXPECT_EQ(ids.count(0), 0u);
}

}  // namespace
}  // namespace Skein
