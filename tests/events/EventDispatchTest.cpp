#include <tessera/events/Win32EventDispatch.h>

#include <gtest/gtest.h>

#include <poll.h>

#include <atomic>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <plaint/Error.h>

namespace Tessera {
namespace {

// A dispatcher whose notices are counted, and delivered by calling Drain.
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

// Logs "<name><event number>" for every event it gets, and runs an optional action.
struct Recorder : EventTarget {
  Recorder(std::string name, std::string& log) : name(std::move(name)), log(log) {}
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

TEST(EventDispatch, PostsCoalesceIntoOneNoticeAndBroadcastsGoLatestFirst) {
  std::string log;
  Recorder a("A", log), b("B", log), c("C", log);
  CountingDispatch dispatch;
  for (Recorder* target : {&a, &b, &c, &a}) dispatch.RegisterTarget(*target);
  dispatch.PostEvent(Make(1));
  dispatch.PostEvent(Make(2, &b));
  dispatch.PostEvent(nullptr);
  auto unregistered = Make(3, &c);
  dispatch.PostEvent(unregistered);
  EXPECT_EQ(dispatch.posted, 1);
  dispatch.UnregisterTarget(c);  // its queued event now reaches nobody
  dispatch.Drain();
  EXPECT_EQ(log, "B1 A1 B2 ");
  EXPECT_EQ(dispatch.cancelled, 1);
  dispatch.Drain();  // nothing listed: only the withdrawal
  EXPECT_EQ(dispatch.cancelled, 2);
  EXPECT_EQ(dispatch.posted, 1);

  EventInterface swallow(&a, nullptr);
  auto kept = Make(4, &b);
  swallow.PostEvent(kept);
  EXPECT_EQ(kept->GetTarget(), &b);
  EventInterface address(&a, &dispatch);
  address.PostEvent(kept);
  dispatch.Drain();
  EXPECT_EQ(log, "B1 A1 B2 A4 ");
}

TEST(EventDispatch, HandlersMayChangeTheTableAndPostAsTheyRun) {
  std::string log;
  Recorder a("A", log), b("B", log), c("C", log);
  CountingDispatch dispatch;
  for (Recorder* target : {&a, &b, &c}) dispatch.RegisterTarget(*target);
  c.action = [&](Event& e) { if (e.GetId() == 1u) dispatch.UnregisterTarget(a); };
  dispatch.PostEvent(Make(1));
  dispatch.Drain();
  EXPECT_EQ(log, "C1 B1 ");
  dispatch.RegisterTarget(a);  // now B, C, A: A's handler removes itself and posts once
  c.action = nullptr;
  a.action = [&](Event& e) {
    dispatch.UnregisterTarget(a);
    if (e.GetId() == 2u) dispatch.PostEvent(Make(3));
    dispatch.RegisterTarget(a);  // behind the walk: serves the next event only
  };
  log.clear();
  dispatch.PostEvent(Make(2));
  dispatch.Drain();
  EXPECT_EQ(log, "A2 C2 B2 A3 C3 B3 ");
  EXPECT_EQ(dispatch.posted, 3);  // the handler's post found the list empty; the drain withdraws it
  EXPECT_EQ(dispatch.cancelled, 2);
  a.action = nullptr;
  b.action = [&](Event&) { dispatch.UnregisterTarget(c); };  // C is behind B's walk position: served already
  log.clear();
  dispatch.PostEvent(Make(4));
  dispatch.Drain();
  EXPECT_EQ(log, "A4 C4 B4 ");
}

TEST(EventDispatch, FailuresLeaveTheRestQueuedAndTheLockFree) {
  CountingDispatch dispatch;
  std::string log;
  Recorder a("A", log), b("B", log);
  dispatch.RegisterTarget(a);
  dispatch.RegisterTarget(b);
  b.action = [&](Event& e) {
    EXPECT_TRUE(dispatch.WithinHandler());
    bool elsewhere = true;
    std::thread([&] { elsewhere = dispatch.WithinHandler(); }).join();
    EXPECT_FALSE(elsewhere);
    if (e.GetId() == 1u) throw std::runtime_error("handler");
  };
  EXPECT_FALSE(dispatch.WithinHandler());
  dispatch.PostEvent(Make(1));
  dispatch.PostEvent(Make(2));
  EXPECT_THROW(dispatch.Drain(), std::runtime_error);
  EXPECT_FALSE(dispatch.WithinHandler());
  EXPECT_EQ(log, "B1 ");
  EXPECT_EQ(dispatch.cancelled, 0);
  dispatch.PostEvent(Make(3));  // the list is not empty: no new notice
  EXPECT_EQ(dispatch.posted, 1);
  dispatch.Drain();
  EXPECT_EQ(log, "B1 B2 A2 B3 A3 ");

  dispatch.SetInitialized(false);
  try {
    dispatch.PostEvent(Make(4));
    FAIL();
  } catch (const Plaint::LogicError& error) {
    EXPECT_STREQ(error.what(), "invalid object state");
    EXPECT_STREQ(error.GetContext().function, "Tessera::EventDispatchMixIn::PostEvent");
  }
  dispatch.SetInitialized(true);
  dispatch.PostEvent(Make(5));
  EXPECT_EQ(dispatch.posted, 2);
}

int CountQueued(Win32::HWND window, Win32::UINT message) {
  int count = 0;
  Win32::MSG msg;
  while (Win32::PeekMessageA(&msg, window, message, message, Win32::PM_REMOVE) != 0) ++count;
  return count;
}

TEST(Win32EventDispatch, OneNoticePerBurstFromAnyThread) {
  const Win32::UINT id = Win32EventDispatch::GetMessageId();
  EXPECT_GE(id, 0xC000u);
  EXPECT_EQ(Win32::RegisterWindowMessageA("tessera::win32eventdispatch {caf20a60-7250-48a6-9e0a-ace5e4207c66}"), id);
  Win32::HWND window = Win32::CreateMessageWindow();
  std::string log;
  Recorder target("T", log);
  Win32EventDispatch dispatch;
  dispatch.RegisterTarget(target);
  EXPECT_THROW(dispatch.PostEvent(Make(0)), Plaint::LogicError);
  dispatch.Initialize(window);

  std::thread([&] {
    for (std::uint32_t n = 1; n <= 100; ++n) dispatch.PostEvent(Make(n));
  }).join();
  Win32::MSG msg;
  ASSERT_EQ(Win32::PeekMessageA(&msg, nullptr, 0, 0, Win32::PM_NOREMOVE), 1);
  EXPECT_EQ(msg.message, id);
  EXPECT_EQ(msg.hwnd, window);
  EXPECT_EQ(msg.wParam, 0u);
  EXPECT_EQ(CountQueued(nullptr, id), 1);
  Win32::MSG foreign{nullptr, id, 0, 0, 0};
  EXPECT_FALSE(dispatch.ProcessMessage(foreign));
  foreign = Win32::MSG{window, id + 1, 0, 0, 0};
  EXPECT_FALSE(dispatch.ProcessMessage(foreign));
  EXPECT_TRUE(log.empty());
  EXPECT_TRUE(dispatch.ProcessMessage(msg));
  std::string expected;
  for (int n = 1; n <= 100; ++n) expected += "T" + std::to_string(n) + " ";
  EXPECT_EQ(log, expected);

  // Posts from a handler are dispatched in the same run, and no spare notice is left.
  target.action = [&](Event& e) { if (e.GetId() == 7u) dispatch.PostEvent(Make(8)); };
  log.clear();
  dispatch.PostEvent(Make(7));
  EXPECT_TRUE(dispatch.ProcessMessage(id, 0, 0));
  EXPECT_EQ(log, "T7 T8 ");
  EXPECT_EQ(CountQueued(nullptr, id), 0);
  EXPECT_TRUE(dispatch.ProcessMessage(id, 0, 0));  // nothing listed: still ours

  dispatch.Initialize(nullptr);
  EXPECT_THROW(dispatch.PostEvent(Make(9)), Plaint::LogicError);
  EXPECT_EQ(Win32::DestroyWindow(window), 1);
}

TEST(Win32EventDispatch, WorkersPostToAMessageLoopThread) {
  constexpr std::uint32_t kEach = 20000;
  std::atomic<Win32EventDispatch*> shared{nullptr};
  std::atomic<Win32::HWND> window{nullptr};
  constexpr std::uint32_t kEcho = 0xEC40;
  std::uint32_t handled = 0, echoes = 0;
  std::thread loop([&] {
    Win32EventDispatch dispatch(Win32::CreateMessageWindow());
    std::string unused;
    Recorder bystander("", unused);
    // Every thousandth event makes the handler change the table and post an echo, while
    // the workers go on posting.
    struct Counter : EventTarget {
      void HandleEvent(Event& event) override {
        if (event.GetId() == kEcho) {
          ++*echoes;
          return;
        }
        ++*handled;
        if (event.GetId().GetNumber() % 1000 != 0) return;
        dispatch->UnregisterTarget(*bystander);
        dispatch->RegisterTarget(*bystander);
        dispatch->PostEvent(Make(kEcho));
      }
      std::uint32_t* handled;
      std::uint32_t* echoes;
      Win32EventDispatch* dispatch;
      EventTarget* bystander;
    } counter;
    counter.handled = &handled;
    counter.echoes = &echoes;
    counter.dispatch = &dispatch;
    counter.bystander = &bystander;
    dispatch.RegisterTarget(counter);
    window = Win32::CreateMessageWindow();
    shared = &dispatch;
    Win32::MSG msg;
    while (Win32::GetMessageA(&msg, nullptr, 0, 0) > 0) {
      if (dispatch.ProcessMessage(msg)) continue;
      if (msg.message == Win32::WM_USER) Win32::PostQuitMessage(3);
    }
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
  // Every notice precedes this message, so the loop has dispatched everything when it comes.
  EXPECT_EQ(Win32::PostMessageA(window.load(), Win32::WM_USER, 0, 0), 1);
  loop.join();
  EXPECT_EQ(handled, 2 * kEach);
  EXPECT_EQ(echoes, 2 * kEach / 1000);
  // The loop's thread has ended: its windows went with it.
  EXPECT_EQ(Win32::PostMessageA(window.load(), Win32::WM_USER, 0, 0), 0);
  EXPECT_EQ(Win32::GetLastError(), Win32::ERROR_INVALID_WINDOW_HANDLE);
}

}  // namespace
}  // namespace Tessera
