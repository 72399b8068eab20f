// Events: workers post to a message-loop thread that dispatches to targets; a producer and a
// consumer share a queue with a timed pull; a poll loop watches a thread's message queue
// beside a pipe.
#include "Tour.h"

#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <tessera/tessera.h>

namespace Tour {

namespace {

struct Printer : Tessera::EventTarget {
  explicit Printer(const char* name) : name(name) {}
  void HandleEvent(Tessera::Event& event) override {
    ++count;
    if (event.GetId().IsText()) std::cout << "  " << name << " got \"" << event.GetId().GetText() << "\"\n";
  }
  const char* name;
  int count = 0;
};

void DispatchToALoopThread() {
  std::atomic<Tessera::Win32EventDispatch*> shared{nullptr};
  std::atomic<Win32::HWND> window{nullptr};
  std::thread loop([&] {
    Printer first("first target"), second("second target");
    Tessera::Win32EventDispatch dispatch(Win32::CreateMessageWindow());
    dispatch.RegisterTarget(first);
    dispatch.RegisterTarget(second);  // registered last, served first
    window = Win32::CreateMessageWindow();
    shared = &dispatch;
    Win32::MSG msg;
    int notices = 0;
    while (Win32::GetMessageA(&msg, nullptr, 0, 0) > 0) {
      if (dispatch.ProcessMessage(msg))
        ++notices;
      else if (msg.message == Win32::WM_USER)
        Win32::PostQuitMessage(0);
    }
    std::cout << "  the loop thread dispatched " << first.count << " events to each target, woken by "
              << notices << " queue message(s) for 2002 posts: one per burst\n";
  });
  while (shared.load() == nullptr) std::this_thread::yield();
  std::vector<std::thread> workers;
  for (int w = 0; w < 2; ++w)
    workers.emplace_back([&] {
      for (std::uint32_t n = 0; n < 1000; ++n)
        shared.load()->PostEvent(boost::shared_ptr<Tessera::Event>(new Tessera::Event(n)));
    });
  for (auto& worker : workers) worker.join();
  shared.load()->PostEvent(boost::shared_ptr<Tessera::Event>(new Tessera::Event(std::string("hello"))));
  boost::shared_ptr<Tessera::Event> bye(new Tessera::Event(Tessera::EventId("bye", 3, true)));
  shared.load()->PostEvent(bye);
  Win32::PostMessageA(window.load(), Win32::WM_USER, 0, 0);
  loop.join();
}

void ProducerAndConsumer() {
  Tessera::EventQueue queue;
  std::thread producer([queue]() mutable {
    for (std::uint32_t n = 1; n <= 3; ++n) queue.PostEvent(boost::shared_ptr<Tessera::Event>(new Tessera::Event(n)));
  });
  std::cout << "  pulled:";
  for (;;) {
    boost::shared_ptr<Tessera::Event> event = queue.PullEvent(Tessera::TimeSpan(100 * 10000));  // 100 ms
    if (!event) break;
    std::cout << ' ' << event->GetId().GetNumber();
  }
  std::cout << ", then a 100 ms pull timed out with nothing\n";
  producer.join();
}

void PollLoopBesideAPipe() {
  int pipeEnds[2];
  if (pipe(pipeEnds) != 0) return;
  std::atomic<Win32::HWND> window{nullptr};
  std::thread looper([&] {
    window = Win32::CreateMessageWindow();
    pollfd watched[2] = {{Win32::GetMessageQueueFd(), POLLIN, 0}, {pipeEnds[0], POLLIN, 0}};
    for (int seen = 0; seen < 2;) {
      if (poll(watched, 2, -1) <= 0) continue;
      if (watched[0].revents & POLLIN) {
        Win32::MSG msg;
        while (Win32::PeekMessageA(&msg, nullptr, 0, 0, Win32::PM_REMOVE) != 0) {
          std::cout << "  poll loop: window message " << std::hex << msg.message << std::dec << '\n';
          ++seen;
        }
      }
      if (watched[1].revents & POLLIN) {
        char byte = 0;
        if (read(pipeEnds[0], &byte, 1) == 1) std::cout << "  poll loop: pipe byte '" << byte << "'\n";
        ++seen;
      }
    }
  });
  while (window.load() == nullptr) std::this_thread::yield();
  if (write(pipeEnds[1], "p", 1) != 1) std::cout << "  (pipe refused)\n";
  Win32::PostMessageA(window.load(), Win32::WM_USER + 1, 0, 0);
  looper.join();
  close(pipeEnds[0]);
  close(pipeEnds[1]);
}

}  // namespace

void ShowEvents() {
  Heading("Events");
  DispatchToALoopThread();
  ProducerAndConsumer();
  PollLoopBesideAPipe();
}

}  // namespace Tour
