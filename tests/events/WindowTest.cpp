#include <tessera/win32/Window.h>

#include <gtest/gtest.h>

#include <poll.h>

#include <chrono>
#include <thread>

namespace Win32 {
namespace {

bool Readable(int fd, int milliseconds = 0) {
  pollfd entry{fd, POLLIN, 0};
  return poll(&entry, 1, milliseconds) == 1;
}

TEST(Win32Window, QueueDescriptorIsReadableExactlyWhileSomethingWaits) {
  const HWND window = CreateMessageWindow(), other = CreateMessageWindow();
  const int fd = GetMessageQueueFd();
  ASSERT_GE(fd, 0);
  EXPECT_FALSE(Readable(fd));
  EXPECT_EQ(PostMessageA(window, WM_USER + 1, 7, -7), 1);
  EXPECT_EQ(PostMessageA(other, WM_USER + 2, 0, 0), 1);
  EXPECT_EQ(PostMessageA(nullptr, WM_USER + 3, 0, 0), 1);  // a thread message
  EXPECT_TRUE(Readable(fd));
  MSG msg{};
  // Filters by window, by thread messages and by number; PM_NOREMOVE leaves the message.
  EXPECT_EQ(PeekMessageA(&msg, other, 0, 0, PM_NOREMOVE), 1);
  EXPECT_EQ(msg.message, WM_USER + 2);
  EXPECT_EQ(PeekMessageA(&msg, reinterpret_cast<HWND>(-1), 0, 0, PM_REMOVE), 1);
  EXPECT_EQ(msg.message, WM_USER + 3);
  EXPECT_EQ(PeekMessageA(&msg, nullptr, WM_USER + 2, WM_USER + 9, PM_REMOVE), 1);
  EXPECT_EQ(msg.hwnd, other);
  PostQuitMessage(4);
  EXPECT_EQ(GetMessageA(&msg, nullptr, 0, 0), 1);  // posted messages come before the quit
  EXPECT_EQ(msg.wParam, 7u);
  EXPECT_EQ(msg.lParam, -7);
  EXPECT_EQ(PeekMessageA(&msg, window, 0, 0, PM_REMOVE), 0);  // a window filter never takes WM_QUIT
  EXPECT_TRUE(Readable(fd));
  EXPECT_EQ(GetMessageA(&msg, nullptr, 0, 0), 0);
  EXPECT_EQ(msg.wParam, 4u);
  EXPECT_FALSE(Readable(fd));

  EXPECT_EQ(DestroyWindow(other), 1);
  EXPECT_EQ(PostMessageA(other, WM_USER, 0, 0), 0);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
  EXPECT_EQ(GetMessageA(&msg, other, 0, 0), -1);
  std::thread([&] {
    EXPECT_EQ(DestroyWindow(window), 0);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegisterWindowMessageA("TESSERA TEST MESSAGE"), RegisterWindowMessageA("Tessera test message"));
  }).join();
  EXPECT_GE(RegisterWindowMessageA("Tessera test message"), 0xC000u);
  EXPECT_NE(RegisterWindowMessageA("Tessera test message 2"), RegisterWindowMessageA("Tessera test message"));
  EXPECT_EQ(RegisterWindowMessageA(""), 0u);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(DestroyWindow(window), 1);
}

TEST(Win32Window, TimersComeBehindPostedMessagesOnePendingAtATime) {
  const HWND window = CreateMessageWindow();
  const int fd = GetMessageQueueFd();
  EXPECT_EQ(SetTimer(window, 0, 0, nullptr), 1u);  // timer 0, clamped to 10 ms
  EXPECT_EQ(SetTimer(window, 5, 20, nullptr), 5u);
  EXPECT_FALSE(Readable(fd));
  ASSERT_TRUE(Readable(fd, 10000));
  std::this_thread::sleep_for(std::chrono::milliseconds(45));  // both overdue, several times over
  EXPECT_EQ(PostMessageA(window, WM_USER, 0, 0), 1);
  MSG msg{};
  EXPECT_EQ(GetMessageA(&msg, nullptr, 0, 0), 1);
  EXPECT_EQ(msg.message, WM_USER);
  EXPECT_EQ(PeekMessageA(&msg, nullptr, 0, 0, PM_NOREMOVE), 1);  // a peek leaves it pending
  EXPECT_EQ(msg.message, WM_TIMER);
  EXPECT_EQ(GetMessageA(&msg, window, WM_TIMER, WM_TIMER), 1);
  EXPECT_EQ(msg.wParam, 0u);
  EXPECT_EQ(GetMessageA(&msg, window, 0, 0), 1);
  EXPECT_EQ(msg.wParam, 5u);
  EXPECT_EQ(PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE), 0);  // missed firings collapsed
  EXPECT_FALSE(Readable(fd));
  EXPECT_EQ(KillTimer(window, 0), 1);
  EXPECT_EQ(KillTimer(window, 0), 0);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_TIMER_HANDLE);
  EXPECT_EQ(GetMessageA(&msg, nullptr, 0, 0), 1);  // waits for timer 5's next firing
  EXPECT_EQ(msg.wParam, 5u);
  EXPECT_EQ(DestroyWindow(window), 1);
  EXPECT_FALSE(Readable(fd, 40));  // its timers went with it
}

}  // namespace
}  // namespace Win32
