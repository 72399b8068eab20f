// Win32 stand-in: message windows, per-thread message queues and window timers.
//
// Each thread that touches these calls gets one queue. A message window belongs to the thread
// that made it; any thread may post to it, and its thread takes the messages out with
// GetMessageA or PeekMessageA. WM_TIMER is synthesised when a window timer is due and no
// posted message waits, at most one pending per timer. GetMessageQueueFd lets any poll loop
// (epoll, poll, Boost.Asio) watch the calling thread's queue. When a thread ends, its windows,
// their timers and its queue go with it. Failures report through GetLastError.
#ifndef TESSERA_WIN32_WINDOW_H
#define TESSERA_WIN32_WINDOW_H

#include <cstdint>

#include <tessera_export.h>
#include <tessera/win32/LastError.h>

namespace Win32 {

struct HWND__;
using HWND = HWND__*;
using UINT = std::uint32_t;
using BOOL = std::int32_t;
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using UINT_PTR = std::uintptr_t;

struct MSG {
  HWND hwnd;
  UINT message;
  WPARAM wParam;
  LPARAM lParam;
  DWORD time;  // milliseconds of the monotonic clock when the message was posted or made
};

constexpr UINT WM_NULL = 0x0000;
constexpr UINT WM_QUIT = 0x0012;
constexpr UINT WM_TIMER = 0x0113;
constexpr UINT WM_USER = 0x0400;

constexpr UINT PM_NOREMOVE = 0;
constexpr UINT PM_REMOVE = 1;
constexpr UINT PM_NOYIELD = 2;

// SetTimer clamps its interval into this range, as Windows does.
constexpr UINT USER_TIMER_MINIMUM = 0x0000000A;
constexpr UINT USER_TIMER_MAXIMUM = 0x7FFFFFFF;

constexpr DWORD ERROR_ACCESS_DENIED = 5;
constexpr DWORD ERROR_INVALID_WINDOW_HANDLE = 1400;
constexpr DWORD ERROR_INVALID_TIMER_HANDLE = 1402;

// A message-only window owned by the calling thread. Never null; handles are not reused.
TESSERA_API HWND CreateMessageWindow();

// Destroys a window of the calling thread, with its timers and the messages queued for it.
// FALSE with ERROR_INVALID_WINDOW_HANDLE for an unknown window, ERROR_ACCESS_DENIED for a
// window of another thread.
TESSERA_API BOOL DestroyWindow(HWND window);

// Queues a message for `window`'s thread (for the calling thread itself when `window` is
// null) and returns at once; any thread may call it. FALSE with ERROR_INVALID_WINDOW_HANDLE
// when the window is unknown or destroyed.
TESSERA_API BOOL PostMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// Takes the next message of the calling thread that passes the filters, waiting as long as it
// takes. `window` null takes any message of the thread, (HWND)-1 only those posted with a null
// window; `filterMin` and `filterMax` both 0 take every number. Order: posted messages first
// in, first out, then WM_QUIT, then WM_TIMER of the earliest due timer. Gives 0 for WM_QUIT,
// -1 with ERROR_INVALID_WINDOW_HANDLE when `window` is not one of the thread's windows, and 1
// otherwise.
TESSERA_API BOOL GetMessageA(MSG* msg, HWND window, UINT filterMin, UINT filterMax);

// GetMessageA without waiting: nonzero when a message was there. With PM_REMOVE it is taken
// out; otherwise it stays (a peeked WM_TIMER stays pending). PM_NOYIELD changes nothing here.
TESSERA_API BOOL PeekMessageA(MSG* msg, HWND window, UINT filterMin, UINT filterMax, UINT flags);

// Asks the calling thread's loop to end: WM_QUIT with `exitCode` in wParam comes after the
// messages already posted.
TESSERA_API void PostQuitMessage(int exitCode);

// The process-wide number for `name` (ASCII case ignored), from 0xC000 up; the same name
// always gives the same number. 0 with ERROR_INVALID_PARAMETER for a null or empty name.
TESSERA_API UINT RegisterWindowMessageA(const char* name);

// Arms timer `id` of a window of the calling thread: WM_TIMER with `id` in wParam comes every
// `elapse` milliseconds (clamped to USER_TIMER_MINIMUM..USER_TIMER_MAXIMUM), replacing a timer
// of the same id. A timer procedure is not supported: it must be null. Gives `id` (1 for id
// 0, which still arms timer 0), or 0 with ERROR_INVALID_WINDOW_HANDLE / ERROR_ACCESS_DENIED / ERROR_INVALID_PARAMETER.
TESSERA_API UINT_PTR SetTimer(HWND window, UINT_PTR id, UINT elapse, void* timerProc);

// Disarms the timer; a pending WM_TIMER of it is not delivered. FALSE with
// ERROR_INVALID_TIMER_HANDLE when there is no such timer, or the window errors of SetTimer.
TESSERA_API BOOL KillTimer(HWND window, UINT_PTR id);

// A descriptor, owned by the calling thread's queue, that polls readable exactly while
// GetMessageA without filters would return at once: a posted message, a quit request or a due
// timer. It stays valid until the thread ends. -1 if the system refuses the descriptors.
TESSERA_API int GetMessageQueueFd();

// Milliseconds of the monotonic clock, in 32 bits (the time field of MSG).
TESSERA_API DWORD GetTickCount();

}  // namespace Win32

#endif  // TESSERA_WIN32_WINDOW_H
