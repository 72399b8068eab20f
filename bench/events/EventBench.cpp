// The event queue beside POCO's NotificationQueue and a plain mutex + condition variable +
// deque of shared pointers: post and pull on one thread (bursts of 1 and 64), and from a
// producer thread to a consumer thread. Also the making of a small event from the pool beside
// boost::make_shared, and the window-message dispatcher fed by two posting threads.
#include <tessera/events/EventQueue.h>
#include <tessera/events/Win32EventDispatch.h>

#include <benchmark/benchmark.h>

#include <Poco/Notification.h>
#include <Poco/NotificationQueue.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include <boost/make_shared.hpp>

namespace {

constexpr int kCrossThreadEvents = 20000;

struct Note : Poco::Notification {
  explicit Note(std::uint32_t n) : number(n) {}
  std::uint32_t number;
};

struct PlainEvent {
  explicit PlainEvent(std::uint32_t n) : number(n) {}
  std::uint32_t number;
};

// The queue people write by hand.
class PlainQueue {
 public:
  void Post(std::shared_ptr<PlainEvent> event) {
    {
      std::lock_guard<std::mutex> hold(mutex_);
      events_.push_back(std::move(event));
    }
    ready_.notify_one();
  }
  std::shared_ptr<PlainEvent> Pull() {
    std::unique_lock<std::mutex> hold(mutex_);
    ready_.wait(hold, [this] { return !events_.empty(); });
    std::shared_ptr<PlainEvent> event = std::move(events_.front());
    events_.pop_front();
    return event;
  }

 private:
  std::mutex mutex_;
  std::condition_variable ready_;
  std::deque<std::shared_ptr<PlainEvent>> events_;
};

struct Tessera_ {
  Tessera::EventQueue queue;
  void Post(std::uint32_t n) { queue.PostEvent(boost::shared_ptr<Tessera::Event>(new Tessera::Event(n))); }
  std::uint32_t Pull() { return queue.PullEvent()->GetId().GetNumber(); }
};
struct Poco_ {
  Poco::NotificationQueue queue;
  void Post(std::uint32_t n) { queue.enqueueNotification(new Note(n)); }
  std::uint32_t Pull() {
    Poco::AutoPtr<Poco::Notification> note(queue.waitDequeueNotification());
    return static_cast<Note*>(note.get())->number;
  }
};
struct Plain_ {
  PlainQueue queue;
  void Post(std::uint32_t n) { queue.Post(std::make_shared<PlainEvent>(n)); }
  std::uint32_t Pull() { return queue.Pull()->number; }
};

template <class Queue>
void BM_PostPull_OneThread(benchmark::State& state) {
  Queue queue;
  const auto burst = static_cast<std::uint32_t>(state.range(0));
  for (auto _ : state) {
    for (std::uint32_t n = 0; n < burst; ++n) queue.Post(n);
    for (std::uint32_t n = 0; n < burst; ++n) benchmark::DoNotOptimize(queue.Pull());
  }
  state.SetItemsProcessed(state.iterations() * burst);
}

template <class Queue>
void BM_PostPull_TwoThreads(benchmark::State& state) {
  Queue queue;
  for (auto _ : state) {
    std::thread producer([&queue] {
      for (std::uint32_t n = 0; n < kCrossThreadEvents; ++n) queue.Post(n);
    });
    for (int n = 0; n < kCrossThreadEvents; ++n) benchmark::DoNotOptimize(queue.Pull());
    producer.join();
  }
  state.SetItemsProcessed(state.iterations() * kCrossThreadEvents);
}

BENCHMARK_TEMPLATE(BM_PostPull_OneThread, Tessera_)->Arg(1)->Arg(64);
BENCHMARK_TEMPLATE(BM_PostPull_OneThread, Poco_)->Arg(1)->Arg(64);
BENCHMARK_TEMPLATE(BM_PostPull_OneThread, Plain_)->Arg(1)->Arg(64);
BENCHMARK_TEMPLATE(BM_PostPull_TwoThreads, Tessera_)->UseRealTime();
BENCHMARK_TEMPLATE(BM_PostPull_TwoThreads, Poco_)->UseRealTime();
BENCHMARK_TEMPLATE(BM_PostPull_TwoThreads, Plain_)->UseRealTime();

// An event of 40 bytes payload-free: Tessera's from the pool (plus boost's count block),
// the peer's in one make_shared block.
void BM_MakeEvent_Pool(benchmark::State& state) {
  for (auto _ : state) {
    boost::shared_ptr<Tessera::Event> event(new Tessera::Event(7u));
    benchmark::DoNotOptimize(event.get());
  }
}
void BM_MakeEvent_BoostMakeShared(benchmark::State& state) {
  for (auto _ : state) {
    boost::shared_ptr<Tessera::Event> event = boost::make_shared<Tessera::Event>(7u);
    benchmark::DoNotOptimize(event.get());
  }
}
BENCHMARK(BM_MakeEvent_Pool);
BENCHMARK(BM_MakeEvent_BoostMakeShared);

// Two threads post to a dispatcher whose window's thread runs a message loop; the counters
// give events per second and queue messages per burst.
void BM_Win32EventDispatch_TwoPosters(benchmark::State& state) {
  constexpr std::uint32_t kEach = 20000;
  std::uint64_t notices = 0;
  for (auto _ : state) {
    std::atomic<Tessera::Win32EventDispatch*> shared{nullptr};
    std::atomic<Win32::HWND> window{nullptr};
    std::thread loop([&] {
      Tessera::Win32EventDispatch dispatch(Win32::CreateMessageWindow());
      struct Sink : Tessera::EventTarget {
        void HandleEvent(Tessera::Event&) override {}
      } sink;
      dispatch.RegisterTarget(sink);
      window = Win32::CreateMessageWindow();
      shared = &dispatch;
      Win32::MSG msg;
      while (Win32::GetMessageA(&msg, nullptr, 0, 0) > 0) {
        if (dispatch.ProcessMessage(msg))
          ++notices;
        else if (msg.message == Win32::WM_USER)
          Win32::PostQuitMessage(0);
      }
    });
    while (shared.load() == nullptr) std::this_thread::yield();
    std::vector<std::thread> posters;
    for (int p = 0; p < 2; ++p)
      posters.emplace_back([&] {
        for (std::uint32_t n = 0; n < kEach; ++n)
          shared.load()->PostEvent(boost::shared_ptr<Tessera::Event>(new Tessera::Event(n)));
      });
    for (auto& poster : posters) poster.join();
    Win32::PostMessageA(window.load(), Win32::WM_USER, 0, 0);
    loop.join();
  }
  state.SetItemsProcessed(state.iterations() * 2 * kEach);
  state.counters["events_per_notice"] =
      static_cast<double>(state.iterations() * 2 * kEach) / static_cast<double>(notices == 0 ? 1 : notices);
}
BENCHMARK(BM_Win32EventDispatch_TwoPosters)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
