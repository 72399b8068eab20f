// The run-time lookup behind Module::Open, reachable by the tests.
#ifndef TESSERA_PLATFORM_MODULEDETAIL_H
#define TESSERA_PLATFORM_MODULEDETAIL_H

#include <tessera/win32/Loader.h>

namespace Tessera {
namespace detail {

using GetModuleHandleExFunction = Win32::BOOL (*)(Win32::DWORD, const char*, Win32::HMODULE*);

// The GetModuleHandleExA that Module::Open calls, looked up once on first use; null where
// the platform has none. Tests assign it to stand for such a platform.
GetModuleHandleExFunction& ModuleHandleExEntry();

}  // namespace detail
}  // namespace Tessera

#endif  // TESSERA_PLATFORM_MODULEDETAIL_H
