// The Win32 last-error code: one 32-bit value per thread, as the library's platform calls
// leave it. Failed stand-in operations set it before they return.
#ifndef TESSERA_WIN32_LASTERROR_H
#define TESSERA_WIN32_LASTERROR_H

#include <cstdint>

#include <tessera_export.h>

namespace Win32 {

using DWORD = std::uint32_t;

constexpr DWORD ERROR_SUCCESS = 0;
constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
constexpr DWORD ERROR_INVALID_HANDLE = 6;
constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
constexpr DWORD ERROR_INVALID_PARAMETER = 87;
constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;
constexpr DWORD ERROR_MOD_NOT_FOUND = 126;
constexpr DWORD ERROR_PROC_NOT_FOUND = 127;
constexpr DWORD ERROR_NO_UNICODE_TRANSLATION = 1113;

// The calling thread's last-error code.
TESSERA_API DWORD GetLastError();
TESSERA_API void SetLastError(DWORD code);

}  // namespace Win32

#endif  // TESSERA_WIN32_LASTERROR_H
