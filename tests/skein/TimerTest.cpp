#include <gtest/gtest.h>
#include <skein/EventDispatcher.h>
#include <skein/Timer.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

namespace Skein {
namespace {

void Pause(int milliseconds) { std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds)); }

// Counts calls once `action` has run; notes the last argument.
struct Recorder : EventObserver {
  void HandleSignal(void* argument) override {
    last = argument;
    inside = true;
    if (action) action(argument);
    inside = false;
    ++calls;
  }
  std::function<void(void*)> action;
  std::atomic<int> calls{0};
  std::atomic<bool> inside{false};
  std::atomic<void*> last{nullptr};
};

TEST(EpollDispatcher, RegistrationChangesFromInsideACall) {
  EpollDispatcher dispatcher;
  AutoEvent self(false), other(false), added(false);
  Recorder recorder;
  // Whichever of the two comes first unregisters both and registers a third, all from the
  // dispatcher's own thread: the other is never called, even if epoll has reported it.
  recorder.action = [&](void* argument) {
    if (argument == &added) return;
    dispatcher.UnregisterWaitable(self);
    dispatcher.UnregisterWaitable(other);
    dispatcher.UnregisterWaitable(other);  // no longer registered: harmless
    dispatcher.RegisterWaitable(added, &recorder);
    added.Set();
  };
  dispatcher.RegisterWaitable(self, &recorder);
  dispatcher.RegisterWaitable(other, &recorder);
  self.Set();
  other.Set();
  for (int waited = 0; waited < 5000 && recorder.calls < 2; ++waited) Pause(1);
  Pause(20);
  EXPECT_EQ(recorder.calls, 2);
  EXPECT_EQ(recorder.last, static_cast<void*>(&added));
  EXPECT_FALSE(added.Wait(0, nullptr));  // the call took the signal
}

// Unregistering from another thread is checked through the timers' Stop.
TEST(EpollDispatcher, DestructionWaitsForTheCallInProgress) {
  Recorder recorder;
  recorder.action = [](void*) { Pause(10); };
  Timer timer;
  const Tessera::TimeSpan period(10000);
  timer.Start(Tessera::TimeSpan(0), &period);  // a zero delay fires at once
  {
    EpollDispatcher busy;
    busy.RegisterWaitable(timer, &recorder);
    for (int waited = 0; waited < 5000 && !recorder.inside; ++waited) Pause(1);
  }
  EXPECT_FALSE(recorder.inside);
  const int calls = recorder.calls;
  EXPECT_GE(calls, 1);
  Pause(20);
  EXPECT_EQ(recorder.calls, calls);
}

}  // namespace
}  // namespace Skein
