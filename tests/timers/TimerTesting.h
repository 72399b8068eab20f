// Helpers of the timer tests: an observer that counts its calls, a dispatcher that counts
// the calls it hands on, bounded waits, and the check of a failed Start.
#ifndef TESSERA_TESTS_TIMERTESTING_H
#define TESSERA_TESTS_TIMERTESTING_H

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <typeinfo>

#include <plaint/Error.h>
#include <skein/EventDispatcher.h>
#include <skein/Thread.h>
#include <tessera/timers/Timer.h>

namespace Tessera {
namespace testing {

using Clock = std::chrono::steady_clock;

inline TimeSpan Milliseconds(std::int64_t count) { return TimeSpan(count * TimeSpan::millisecond.GetTicks()); }
inline void Pause(int milliseconds) { std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds)); }

// True once `calls` reaches `count`, false after five seconds.
inline bool WaitFor(const std::atomic<int>& calls, int count) {
  for (int waited = 0; waited < 5000 && calls < count; ++waited) Pause(1);
  return calls >= count;
}

// Counts calls once `action` has run, with the thread and the moment of the first call.
struct Recorder : TimerObserver {
  void HandleTimer(Timer& timer) override {
    if (calls == 0) first = Clock::now() - Clock::time_point();
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

struct CountingDispatcher : Skein::EventDispatcher {
  void RegisterWaitable(Skein::Waitable& waitable, Skein::EventObserver* observer) override {
    ++registers;
    inner.RegisterWaitable(waitable, observer);
  }
  void UnregisterWaitable(Skein::Waitable& waitable) override {
    ++unregisters;
    inner.UnregisterWaitable(waitable);
  }
  Skein::EpollDispatcher inner;
  std::atomic<int> registers{0};
  std::atomic<int> unregisters{0};
};

// A Start that must fail: its call, and the class, message, argument name or Win32 code
// of the error it throws.
struct FailedStart {
  std::function<void()> start;
  const std::type_info& type;
  const char* message;
  const char* name;
  std::uint32_t code;
};

// The error comes from `function` in the source file `source`.
inline void ExpectStartError(const FailedStart& expected, const char* function, const char* source) {
  try {
    expected.start();
    ADD_FAILURE() << "no throw for " << expected.message;
  } catch (const Plaint::Error& error) {
    EXPECT_TRUE(typeid(error) == expected.type) << expected.message;
    EXPECT_STREQ(error.AsException().what(), expected.message);
    EXPECT_STREQ(error.GetContext().function, function);
    EXPECT_NE(std::string(error.GetContext().file).find(source), std::string::npos);
    const auto* argument = error.GetInfo<Plaint::ErrorInfo_invalidArgumentName>();
    EXPECT_STREQ(argument != nullptr ? *argument : nullptr, expected.name);
    const auto* win32 = error.GetInfo<Plaint::ErrorInfo_Win32Error>();
    EXPECT_EQ(win32 != nullptr ? *win32 : 0u, expected.code);
  }
}

}  // namespace testing
}  // namespace Tessera

#endif  // TESSERA_TESTS_TIMERTESTING_H
