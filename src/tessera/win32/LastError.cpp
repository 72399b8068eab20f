#include <tessera/win32/LastError.h>

namespace Win32 {

namespace {
thread_local DWORD lastError = ERROR_SUCCESS;
}

DWORD GetLastError() { return lastError; }
void SetLastError(DWORD code) { lastError = code; }

}  // namespace Win32
