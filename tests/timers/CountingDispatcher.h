// A dispatcher that counts the calls it gets and hands them on to a real one.
#ifndef TESSERA_TESTS_COUNTINGDISPATCHER_H
#define TESSERA_TESTS_COUNTINGDISPATCHER_H

#include <atomic>

#include <skein/EventDispatcher.h>

namespace Tessera {
namespace testing {

class CountingDispatcher : public Skein::EventDispatcher {
 public:
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

}  // namespace testing
}  // namespace Tessera

#endif  // TESSERA_TESTS_COUNTINGDISPATCHER_H
