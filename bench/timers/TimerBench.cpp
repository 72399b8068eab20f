// Lateness of a 10 ms periodic timer of each service over two seconds, beside a bare
// timerfd read in a loop and Boost.Asio's steady_timer; the cost of Start and Stop; and a
// thousand concurrent multimedia timers. Lateness is the firing time minus the due time,
// reported as counters in microseconds (median and 99th percentile). A window timer is
// re-armed at each firing, so its due time is the previous firing plus the period.
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <fstream>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>
#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>

#include <skein/EventDispatcher.h>
#include <skein/Thread.h>
#include <tessera/timers/EventTimerService.h>
#include <tessera/timers/WinMMTimerService.h>
#include <tessera/timers/WindowTimerService.h>

namespace {

using Clock = std::chrono::steady_clock;
constexpr auto kPeriod = std::chrono::milliseconds(10);
constexpr int kFirings = 200;  // two seconds

// Firing moments against a drift-free schedule from `start`, or, for a timer re-armed at
// each firing, against the previous firing.
class Lateness {
 public:
  explicit Lateness(std::size_t expected, bool rearmed = false) : rearmed_(rearmed) { moments_.reserve(expected); }
  void Start() { start_ = Clock::now(); }
  void Record() { moments_.push_back(Clock::now()); }
  std::size_t Count() const { return moments_.size(); }

  void Report(benchmark::State& state) {
    std::vector<double> late;
    for (std::size_t i = 0; i < moments_.size(); ++i) {
      const Clock::time_point due =
          rearmed_ && i > 0 ? moments_[i - 1] + kPeriod : start_ + kPeriod * static_cast<int>(i + 1);
      late.push_back(std::chrono::duration<double, std::micro>(moments_[i] - due).count());
    }
    if (late.empty()) return;
    std::sort(late.begin(), late.end());
    state.counters["median_us"] = late[late.size() / 2];
    state.counters["p99_us"] = late[late.size() * 99 / 100];
    state.counters["firings"] = static_cast<double>(late.size());
  }

 private:
  bool rearmed_;
  Clock::time_point start_;
  std::vector<Clock::time_point> moments_;
};

// Counts firings into a Lateness and wakes the benchmark thread after the last one.
class LatenessObserver : public Tessera::TimerObserver {
 public:
  explicit LatenessObserver(int firings, bool rearmed = false) : lateness(firings, rearmed), wanted(firings) {}
  void HandleTimer(Tessera::Timer& timer) override {
    if (lateness.Count() >= static_cast<std::size_t>(wanted)) return;
    lateness.Record();
    if (lateness.Count() == static_cast<std::size_t>(wanted)) {
      timer.Stop();
      done = true;
    }
  }
  void WaitDone() {
    while (!done) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }

  Lateness lateness;
  int wanted;
  std::atomic<bool> done{false};
};

void Lateness_BareTimerfd(benchmark::State& state) {
  for (auto _ : state) {
    Lateness lateness(kFirings);
    const int handle = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC);
    itimerspec setting{};
    setting.it_value.tv_nsec = 10000000;
    setting.it_interval.tv_nsec = 10000000;
    lateness.Start();
    timerfd_settime(handle, 0, &setting, nullptr);
    std::uint64_t expirations = 0;
    for (int i = 0; i < kFirings; ++i) {
      if (read(handle, &expirations, sizeof expirations) != sizeof expirations) break;
      lateness.Record();
    }
    close(handle);
    lateness.Report(state);
  }
}
BENCHMARK(Lateness_BareTimerfd)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();

void Lateness_AsioSteadyTimer(benchmark::State& state) {
  for (auto _ : state) {
    Lateness lateness(kFirings);
    boost::asio::io_context context;
    boost::asio::steady_timer timer(context);
    lateness.Start();
    Clock::time_point due = Clock::now() + kPeriod;
    std::function<void(const boost::system::error_code&)> fired = [&](const boost::system::error_code&) {
      lateness.Record();
      if (lateness.Count() == kFirings) return;
      due += kPeriod;
      timer.expires_at(due);
      timer.async_wait(fired);
    };
    timer.expires_at(due);
    timer.async_wait(fired);
    context.run();
    lateness.Report(state);
  }
}
BENCHMARK(Lateness_AsioSteadyTimer)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();

// Starts a periodic timer of `service` and waits for its firings.
void ServiceLateness(benchmark::State& state, Tessera::TimerService& service) {
  for (auto _ : state) {
    LatenessObserver observer(kFirings);
    std::unique_ptr<Tessera::Timer> timer(service.CreateTimer(observer));
    observer.lateness.Start();
    timer->StartPeriodic(Tessera::TimeSpan(10 * Tessera::TimeSpan::millisecond.GetTicks()));
    observer.WaitDone();
    timer.reset();
    observer.lateness.Report(state);
  }
}

void Lateness_EventTimer(benchmark::State& state) {
  Skein::EpollDispatcher dispatcher;
  Tessera::EventTimerService service(dispatcher);
  ServiceLateness(state, service);
}
BENCHMARK(Lateness_EventTimer)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();

void Lateness_WinMMTimer(benchmark::State& state) {
  Tessera::WinMMTimerService service;
  ServiceLateness(state, service);
}
BENCHMARK(Lateness_WinMMTimer)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();

void Lateness_WinMMTimerOnDispatcher(benchmark::State& state) {
  Skein::EpollDispatcher dispatcher;
  Tessera::WinMMTimerService service(&dispatcher);
  ServiceLateness(state, service);
}
BENCHMARK(Lateness_WinMMTimerOnDispatcher)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();

// The window's thread is the benchmark's: it runs the message loop itself.
void Lateness_WindowTimer(benchmark::State& state) {
  const Win32::HWND window = Win32::CreateMessageWindow();
  Tessera::WindowTimerService service(window);
  for (auto _ : state) {
    LatenessObserver observer(kFirings, true);
    std::unique_ptr<Tessera::Timer> timer(service.CreateTimer(observer));
    observer.lateness.Start();
    timer->StartPeriodic(Tessera::TimeSpan(10 * Tessera::TimeSpan::millisecond.GetTicks()));
    Win32::MSG msg{};
    while (!observer.done && Win32::GetMessageA(&msg, nullptr, 0, 0) > 0) service.ProcessMessage(msg);
    timer.reset();
    observer.lateness.Report(state);
  }
  Win32::DestroyWindow(window);
}
BENCHMARK(Lateness_WindowTimer)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();

class NoObserver : public Tessera::TimerObserver {
 public:
  void HandleTimer(Tessera::Timer&) override {}
};

// Start and Stop of a timer that never gets to fire.
void StartStop(benchmark::State& state, Tessera::TimerService& service) {
  NoObserver observer;
  std::unique_ptr<Tessera::Timer> timer(service.CreateTimer(observer));
  const Tessera::TimeSpan second = Tessera::TimeSpan::second;
  for (auto _ : state) {
    timer->Start(second, &second);
    timer->Stop();
  }
}

void StartStop_EventTimer(benchmark::State& state) {
  Skein::EpollDispatcher dispatcher;
  Tessera::EventTimerService service(dispatcher);
  StartStop(state, service);
}
BENCHMARK(StartStop_EventTimer);

void StartStop_WinMMTimer(benchmark::State& state) {
  Tessera::WinMMTimerService service;
  StartStop(state, service);
}
BENCHMARK(StartStop_WinMMTimer);

void StartStop_WinMMTimerOnDispatcher(benchmark::State& state) {
  Skein::EpollDispatcher dispatcher;
  Tessera::WinMMTimerService service(&dispatcher);
  StartStop(state, service);
}
BENCHMARK(StartStop_WinMMTimerOnDispatcher);

void StartStop_WindowTimer(benchmark::State& state) {
  const Win32::HWND window = Win32::CreateMessageWindow();
  {
    Tessera::WindowTimerService service(window);
    StartStop(state, service);
  }
  Win32::DestroyWindow(window);
}
BENCHMARK(StartStop_WindowTimer);

void StartStop_BareTimerfd(benchmark::State& state) {
  const int handle = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC);
  itimerspec armed{};
  armed.it_value.tv_sec = 1;
  armed.it_interval.tv_sec = 1;
  const itimerspec disarmed{};
  for (auto _ : state) {
    timerfd_settime(handle, 0, &armed, nullptr);
    timerfd_settime(handle, 0, &disarmed, nullptr);
  }
  close(handle);
}
BENCHMARK(StartStop_BareTimerfd);

void StartStop_AsioSteadyTimer(benchmark::State& state) {
  boost::asio::io_context context;
  boost::asio::steady_timer timer(context);
  for (auto _ : state) {
    timer.expires_after(std::chrono::seconds(1));
    timer.async_wait([](const boost::system::error_code&) {});
    timer.cancel();
    context.poll();  // runs the cancelled handler, as a Stop would be complete
    context.restart();
  }
}
BENCHMARK(StartStop_AsioSteadyTimer);

// Nanoseconds that thread `tid` of this process has spent on a CPU.
std::uint64_t ThreadCpuNanoseconds(std::uint32_t tid) {
  std::ifstream schedstat("/proc/self/task/" + std::to_string(tid) + "/schedstat");
  std::uint64_t running = 0;
  schedstat >> running;
  return running;
}

// A thousand periodic 10 ms timers on the multimedia timer thread for two seconds: the
// lateness of all their firings and the share of a CPU the timer thread took.
void WinMMTimer_Thousand(benchmark::State& state) {
  constexpr int kTimers = 1000;
  // All calls come on the one timer thread, so the shared list needs no lock.
  struct Schedule : Tessera::TimerObserver {
    void HandleTimer(Tessera::Timer&) override {
      ++count;
      const Clock::time_point due = start + kPeriod * count;
      late->push_back(std::chrono::duration<double, std::micro>(Clock::now() - due).count());
      threadId = Skein::Thread::GetSelfId();
    }
    Clock::time_point start;
    int count = 0;
    std::vector<double>* late = nullptr;
    std::atomic<std::uint32_t> threadId{0};
  };
  for (auto _ : state) {
    std::vector<double> late;
    late.reserve(kTimers * (kFirings + 20));
    std::vector<Schedule> schedules(kTimers);
    Tessera::WinMMTimerService service;
    std::vector<std::unique_ptr<Tessera::Timer>> timers;
    for (Schedule& schedule : schedules) {
      schedule.late = &late;
      timers.emplace_back(service.CreateTimer(schedule));
    }
    for (int i = 0; i < kTimers; ++i) {
      schedules[i].start = Clock::now();
      timers[i]->StartPeriodic(Tessera::TimeSpan(10 * Tessera::TimeSpan::millisecond.GetTicks()));
    }
    while (schedules[0].threadId == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    const std::uint32_t tid = schedules[0].threadId;
    const std::uint64_t cpuBefore = ThreadCpuNanoseconds(tid);
    const Clock::time_point measureStart = Clock::now();
    std::this_thread::sleep_for(std::chrono::seconds(2));
    const std::uint64_t cpuAfter = ThreadCpuNanoseconds(tid);
    const double wall = std::chrono::duration<double, std::nano>(Clock::now() - measureStart).count();
    timers.clear();  // each kill waits for a call under way
    std::sort(late.begin(), late.end());
    state.counters["median_us"] = late.empty() ? 0 : late[late.size() / 2];
    state.counters["p99_us"] = late.empty() ? 0 : late[late.size() * 99 / 100];
    state.counters["firings"] = static_cast<double>(late.size());
    state.counters["timer_thread_cpu_pct"] = 100.0 * static_cast<double>(cpuAfter - cpuBefore) / wall;
  }
}
BENCHMARK(WinMMTimer_Thousand)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
