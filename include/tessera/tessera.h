// Tessera: the umbrella header. Includes every public header of the library.
#ifndef TESSERA_TESSERA_H
#define TESSERA_TESSERA_H

#include <plaint/Error.h>
#include <skein/EventDispatcher.h>
#include <skein/Lock.h>
#include <skein/Thread.h>
#include <skein/Timer.h>
#include <skein/Waitable.h>
#include <tessera/events/Event.h>
#include <tessera/events/EventDispatch.h>
#include <tessera/events/EventQueue.h>
#include <tessera/events/Win32EventDispatch.h>
#include <tessera/frame/Errors.h>
#include <tessera/frame/Library.h>
#include <tessera/frame/StaticInitialize.h>
#include <tessera/memory/BitReader.h>
#include <tessera/memory/BitWriter.h>
#include <tessera/memory/Buffer.h>
#include <tessera/memory/BufferPoolHelper.h>
#include <tessera/numerics/Fixed.h>
#include <tessera/numerics/Mt19937.h>
#include <tessera/platform/Module.h>
#include <tessera/platform/SystemInfo.h>
#include <tessera/text/StringTokenizer.h>
#include <tessera/text/TextCompare.h>
#include <tessera/text/TextFormatNumber.h>
#include <tessera/text/TextNumeric.h>
#include <tessera/text/Utf8.h>
#include <tessera/time/StopWatch.h>
#include <tessera/time/Time.h>
#include <tessera/time/TimeSpan.h>
#include <tessera/timers/EventTimerService.h>
#include <tessera/timers/Timer.h>
#include <tessera/timers/WinMMTimerService.h>
#include <tessera/timers/WindowTimerService.h>
#include <tessera/win32/Clock.h>
#include <tessera/win32/LastError.h>
#include <tessera/win32/Loader.h>
#include <tessera/win32/MultimediaTimer.h>
#include <tessera/win32/Window.h>

#endif  // TESSERA_TESSERA_H
