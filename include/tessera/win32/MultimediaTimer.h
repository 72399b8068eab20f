// The Win32 multimedia timers on Linux: timeSetEvent and timeKillEvent on one timer thread
// that the process shares, started by the first timeSetEvent.
//
// A timer calls a function on that thread, or signals an event handle (the eventfd of a
// Skein::AutoEvent), once or at a period. Periodic timers keep their schedule without
// drift; a timer that has fallen a whole period behind skips what it missed and counts
// its period again from now.
#ifndef TESSERA_WIN32_MULTIMEDIATIMER_H
#define TESSERA_WIN32_MULTIMEDIATIMER_H

#include <cstdint>

#include <tessera_export.h>
#include <tessera/win32/LastError.h>

namespace Win32 {

using UINT = std::uint32_t;
using DWORD_PTR = std::uintptr_t;
using MMRESULT = UINT;

// Called on the timer thread with the timer's identifier and the `user` value given to
// timeSetEvent; the other arguments are 0.
using LPTIMECALLBACK = void (*)(UINT timerId, UINT message, DWORD_PTR user, DWORD_PTR reserved1,
                                DWORD_PTR reserved2);

constexpr UINT TIME_ONESHOT = 0;
constexpr UINT TIME_PERIODIC = 1;
constexpr UINT TIME_CALLBACK_FUNCTION = 0;
constexpr UINT TIME_CALLBACK_EVENT_SET = 0x10;
constexpr UINT TIME_KILL_SYNCHRONOUS = 0x100;

constexpr MMRESULT TIMERR_NOERROR = 0;
constexpr MMRESULT MMSYSERR_INVALPARAM = 11;

// The delays a timer accepts, in milliseconds.
constexpr UINT TIME_DELAY_MIN = 1;
constexpr UINT TIME_DELAY_MAX = 1000000;

// The form an event handle takes in timeSetEvent's callback argument, as on Windows.
inline LPTIMECALLBACK EventHandleAsCallback(int handle) {
  return reinterpret_cast<LPTIMECALLBACK>(static_cast<std::uintptr_t>(handle));
}

// Arms a timer that fires `delay` milliseconds from now, and with TIME_PERIODIC every
// `delay` milliseconds after. With TIME_CALLBACK_EVENT_SET `callback` is an event handle
// (EventHandleAsCallback) that each firing sets; otherwise each firing calls `callback`.
// `resolution` is accepted and not needed: the thread fires as early as it can. Gives the
// timer's identifier, never 0; gives 0 and sets ERROR_INVALID_PARAMETER for a delay
// outside TIME_DELAY_MIN to TIME_DELAY_MAX or a null callback. A one-shot timer is gone
// once it has fired.
TESSERA_API MMRESULT timeSetEvent(UINT delay, UINT resolution, LPTIMECALLBACK callback, DWORD_PTR user,
                                  UINT flags);

// Disarms a timer: no firing starts after it returns. For a timer with
// TIME_KILL_SYNCHRONOUS it also waits for a call of its callback in progress, unless it is
// called from the timer thread, where it returns at once. Gives TIMERR_NOERROR, or
// MMSYSERR_INVALPARAM for an identifier that is not armed.
TESSERA_API MMRESULT timeKillEvent(UINT timerId);

}  // namespace Win32

#endif  // TESSERA_WIN32_MULTIMEDIATIMER_H
