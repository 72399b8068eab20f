#include <tessera/events/Win32EventDispatch.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <plaint/Error.h>

namespace Tessera {
namespace {

// A dispatcher whose notices are counted and delivered by Drain.
class CountingDispatch : public EventDispatchMixIn, public EventSink {
 public:
  CountingDispatch() : EventDispatchMixIn(true) {}
  void PostEvent(const boost::shared_ptr<Event>& event) override { EventDispatchMixIn::PostEvent(event); }
  void Drain() { HandleNotify(); }
  int posted = 0, cancelled = 0;

 private:
  void PostNotify(Skein::Guard<Skein::Lock>&) override { ++posted; }
  void CancelNotify(Skein::Guard<Skein::Lock>&) override { ++cancelled; }
};

// Logs "<name><event number> " for every event, then runs its action.
struct Recorder : EventTarget {
  Recorder(const char* name, std::string& log) : name(name), log(log) {}
  void HandleEvent(Event& event) override {
    log += name + std::to_string(event.GetId().GetNumber()) + " ";
    if (action) action(event);
  }
  std::string name;
  std::string& log;
  std::function<void(Event&)> action;
};

boost::shared_ptr<Event> Make(std::uint32_t number, EventTarget* target = nullptr) {
  boost::shared_ptr<Event> event(new Event(number));
  event->SetTarget(target);
  return event;
}

TEST(EventDispatch, OneNoticePerBurstTargetsLatestFirstAndTableChangesInHandlers) {
  std::string log;
  Recorder a("A", log), b("B", log), c("C", log);
  CountingDispatch dispatch;
  for (Recorder* target : {&a, &b, &c, &a}) dispatch.RegisterTarget(*target);
  for (const auto& event : {Make(1), Make(2, &b), boost::shared_ptr<Event>(), Make(3, &c)}) dispatch.PostEvent(event);
  EXPECT_EQ(dispatch.posted, 1);
  c.action = [&](Event& e) { if (e.GetId() == 1u) dispatch.UnregisterTarget(a); };  // in front of the walk
  dispatch.Drain();
  EXPECT_EQ(log, "C1 B1 B2 C3 ");
  EXPECT_EQ(dispatch.cancelled, 1);
  dispatch.Drain();  // nothing listed: only the withdrawal
  EXPECT_EQ(dispatch.cancelled, 2);

  // B, C, A: A removes and re-adds itself (behind the walk) and posts; B, served last,
  // removes C, which it has served already.
  dispatch.RegisterTarget(a);
  c.action = nullptr;
  a.action = [&](Event& e) {
    dispatch.UnregisterTarget(a);
    if (e.GetId() == 2u) dispatch.PostEvent(Make(3));
    dispatch.RegisterTarget(a);
  };
  b.action = [&](Event& e) { if (e.GetId() == 3u) dispatch.UnregisterTarget(c); };
  log.clear();
  dispatch.PostEvent(Make(2));
  dispatch.Drain();
  EXPECT_EQ(log, "A2 C2 B2 A3 C3 B3 ");
  EXPECT_EQ(dispatch.posted, 3);  // the handler's post found the list empty; the drain withdraws it
  EXPECT_EQ(dispatch.cancelled, 3);
  EventInterface(&a, nullptr).PostEvent(Make(5, &b));  // no sink: swallowed
  EventInterface(&c, &dispatch).PostEvent(Make(4, &b));  // addressed to C, which is gone
  EventInterface(&a, &dispatch).PostEvent(Make(6, &b));
  log.clear();
  dispatch.Drain();
  EXPECT_EQ(log, "A6 ");
}

TEST(EventDispatch, FailuresLeaveTheRestQueuedAndTheLockFree) {
  CountingDispatch dispatch;
  std::string log;
  Recorder a("A", log), b("B", log);
  dispatch.RegisterTarget(a);
  dispatch.RegisterTarget(b);
  b.action = [&](Event& e) {
    bool elsewhere = true;
    std::thread([&] { elsewhere = dispatch.WithinHandler(); }).join();
    EXPECT_FALSE(elsewhere);
    EXPECT_TRUE(dispatch.WithinHandler());
    if (e.GetId() == 1u) throw std::runtime_error("handler");
  };
  dispatch.PostEvent(Make(1));
  dispatch.PostEvent(Make(2));
  EXPECT_THROW(dispatch.Drain(), std::runtime_error);
  EXPECT_FALSE(dispatch.WithinHandler());
  EXPECT_EQ(dispatch.cancelled, 0);
  dispatch.PostEvent(Make(3));  // the list is not empty: no new notice
  EXPECT_EQ(dispatch.posted, 1);
  dispatch.Drain();
  EXPECT_EQ(log, "B1 B2 A2 B3 A3 ");
}

TEST(Win32EventDispatch, OneQueueMessagePerBurstFromAnyThread) {
  const Win32::UINT id = Win32EventDispatch::GetMessageId();
  EXPECT_EQ(Win32::RegisterWindowMessageA("Tessera::Win32EventDispatch {CAF20A60-7250-48a6-9E0A-ACE5E4207C66}"), id);
  Win32::HWND window = Win32::CreateMessageWindow();
  std::string log, expected;
  Recorder target("T", log);
  Win32EventDispatch dispatch;
  dispatch.RegisterTarget(target);
  try {
    dispatch.PostEvent(Make(0));  // no window yet
    FAIL();
  } catch (const Plaint::LogicError& error) {
    EXPECT_STREQ(error.what(), "invalid object state");
    EXPECT_STREQ(error.GetContext().function, "Tessera::EventDispatchMixIn::PostEvent");
  }
  dispatch.Initialize(window);
  std::thread([&] {
    for (std::uint32_t n = 1; n <= 100; ++n) dispatch.PostEvent(Make(n));
  }).join();
  Win32::MSG msg, spare;
  ASSERT_EQ(Win32::PeekMessageA(&msg, nullptr, 0, 0, Win32::PM_REMOVE), 1);
  EXPECT_EQ(Win32::PeekMessageA(&spare, nullptr, 0, 0, Win32::PM_REMOVE), 0);
  EXPECT_EQ(msg.message, id);
  EXPECT_EQ(msg.hwnd, window);
  Win32::MSG foreign{nullptr, id, 0, 0, 0}, otherNumber{window, id + 1, 0, 0, 0};
  EXPECT_FALSE(dispatch.ProcessMessage(foreign));
  EXPECT_FALSE(dispatch.ProcessMessage(otherNumber));
  EXPECT_TRUE(dispatch.ProcessMessage(msg));
  for (int n = 1; n <= 100; ++n) expected += "T" + std::to_string(n) + " ";
  EXPECT_EQ(log, expected);
  // Posts from a handler are dispatched in the same run, and no spare message is left.
  target.action = [&](Event& e) { if (e.GetId() == 7u) dispatch.PostEvent(Make(8)); };
  log.clear();
  dispatch.PostEvent(Make(7));
  EXPECT_TRUE(dispatch.ProcessMessage(id, 0, 0));
  EXPECT_EQ(log, "T7 T8 ");
  EXPECT_EQ(Win32::PeekMessageA(&spare, nullptr, 0, 0, Win32::PM_REMOVE), 0);
  dispatch.Initialize(nullptr);
  EXPECT_THROW(dispatch.PostEvent(Make(9)), Plaint::LogicError);
}

TEST(Win32EventDispatch, WorkersPostWhileHandlersChangeTheTableAndPost) {
  constexpr std::uint32_t kEach = 20000, kEcho = 0xEC40;
  std::atomic<Win32EventDispatch*> shared{nullptr};
  std::atomic<Win32::HWND> window{nullptr};
  std::uint32_t handled = 0, echoes = 0;
  std::thread loop([&] {
    Win32EventDispatch dispatch(Win32::CreateMessageWindow());
    std::string unused;
    Recorder bystander("", unused), counter("", unused);
    counter.action = [&](Event& event) {
      if (event.GetId() == kEcho) return void(++echoes);
      if (++handled % 1000 != 0) return;
      dispatch.UnregisterTarget(bystander);
      dispatch.RegisterTarget(bystander);
      dispatch.PostEvent(Make(kEcho));
    };
    dispatch.RegisterTarget(counter);
    window = Win32::CreateMessageWindow();
    shared = &dispatch;
    Win32::MSG msg;
    while (Win32::GetMessageA(&msg, nullptr, 0, 0) > 0)
      if (!dispatch.ProcessMessage(msg) && msg.message == Win32::WM_USER) Win32::PostQuitMessage(3);
    EXPECT_EQ(msg.message, Win32::WM_QUIT);
    EXPECT_EQ(msg.wParam, 3u);
  });
  while (shared.load() == nullptr) std::this_thread::yield();
  std::vector<std::thread> workers;
  for (int w = 0; w < 2; ++w)
    workers.emplace_back([&] {
      for (std::uint32_t n = 0; n < kEach; ++n) shared.load()->PostEvent(Make(n));
    });
  for (auto& worker : workers) worker.join();
  // Every notice precedes this message, so everything has been dispatched when it comes.
  EXPECT_EQ(Win32::PostMessageA(window.load(), Win32::WM_USER, 0, 0), 1);
  loop.join();
  EXPECT_EQ(handled, 2 * kEach);
  EXPECT_EQ(echoes, 2 * kEach / 1000);
  // The loop's thread has ended and taken its windows along.
  EXPECT_EQ(Win32::PostMessageA(window.load(), Win32::WM_USER, 0, 0), 0);
  EXPECT_EQ(Win32::GetLastError(), Win32::ERROR_INVALID_WINDOW_HANDLE);
}

}  // namespace
}  // namespace Tessera
