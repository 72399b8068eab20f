#include <tessera/tessera.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include "Tour.h"

namespace Tour {

namespace {

using Clock = std::chrono::steady_clock;

// Notes how late each firing came against the schedule it was started on.
class Watch : public Tessera::TimerObserver {
 public:
  Watch(const char* name, int firings, std::chrono::milliseconds delay, std::chrono::milliseconds period)
      : name(name), wanted(firings), delay(delay), period(period) {}

  void Begin() { start = Clock::now(); }

  // A window timer is armed anew at each firing, so its next one is due a period after
  // this one; the others keep their schedule from the start.
  void HandleTimer(Tessera::Timer& timer) override {
    const Clock::time_point due = rearmed && fired > 0 ? last + period : start + delay + period * fired;
    last = Clock::now();
    lateness.push_back(std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - due).count());
    if (++fired == wanted) {
      timer.Stop();
      done = true;
    }
  }

  void Print() const {
    std::vector<long long> sorted(lateness);
    std::sort(sorted.begin(), sorted.end());
    std::cout << name << ": " << sorted.size() << " firing(s), lateness median " << sorted[sorted.size() / 2]
              << " us, worst " << sorted.back() << " us\n";
  }

  const char* name;
  int wanted;
  std::chrono::milliseconds delay;
  std::chrono::milliseconds period;
  Clock::time_point start;
  Clock::time_point last;
  bool rearmed = false;
  int fired = 0;
  std::vector<long long> lateness;
  std::atomic<bool> done{false};
};

Tessera::TimeSpan Milliseconds(std::int64_t count) { return Tessera::TimeSpan(count * Tessera::TimeSpan::millisecond.GetTicks()); }

// Window timers fire in this thread's message loop, so the wait pumps it.
Tessera::WindowTimerService* pumped = nullptr;

void Wait(const Watch& periodic, const Watch& once) {
  Win32::MSG msg{};
  while (!periodic.done || !once.done) {
    if (pumped == nullptr)
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    else if (Win32::GetMessageA(&msg, nullptr, 0, 0) > 0)
      pumped->ProcessMessage(msg);
  }
}

// Runs a periodic and a one-shot timer of `service` and prints what they saw.
void Run(Tessera::TimerService& service, const char* periodicName, const char* onceName) {
  Watch periodic(periodicName, 20, std::chrono::milliseconds(10), std::chrono::milliseconds(10));
  Watch once(onceName, 1, std::chrono::milliseconds(25), std::chrono::milliseconds(0));
  periodic.rearmed = pumped != nullptr;
  std::unique_ptr<Tessera::Timer> ticker(service.CreateTimer(periodic));
  std::unique_ptr<Tessera::Timer> single(service.CreateTimer(once));
  periodic.Begin();
  ticker->StartPeriodic(Milliseconds(10));
  once.Begin();
  single->Start(Milliseconds(25), nullptr);
  Wait(periodic, once);
  ticker.reset();
  single.reset();
  periodic.Print();
  once.Print();
}

}  // namespace

void ShowTimers() {
  Heading("timers: event-driven, window and multimedia, periodic every 10 ms and once after 25 ms");
  Skein::EpollDispatcher dispatcher;
  Tessera::EventTimerService events(dispatcher);
  Run(events, "event-driven, periodic       ", "event-driven, once           ");
  const Win32::HWND window = Win32::CreateMessageWindow();
  {
    Tessera::WindowTimerService windows(window);
    pumped = &windows;
    Run(windows, "window, periodic             ", "window, once                 ");
    pumped = nullptr;
  }
  Win32::DestroyWindow(window);
  Tessera::WinMMTimerService multimedia;
  Run(multimedia, "multimedia, periodic         ", "multimedia, once             ");
  Tessera::WinMMTimerService multimediaOnDispatcher(&dispatcher);
  Run(multimediaOnDispatcher, "multimedia on the dispatcher ", "multimedia on the dispatcher ");
}

}  // namespace Tour
