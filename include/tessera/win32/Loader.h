// The Win32 loader over the system's dynamic loader (dlopen, dlsym, dlclose).
//
// A module handle is the dlopen handle. Each successful LoadLibraryExA, and each
// GetModuleHandleExA without GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT, holds one
// reference that FreeLibrary gives back; GetModuleHandleA holds none. Failures set the
// calling thread's last error (LastError.h) and give null or FALSE.
#ifndef TESSERA_WIN32_LOADER_H
#define TESSERA_WIN32_LOADER_H

#include <tessera_export.h>
#include <tessera/win32/LastError.h>

namespace Win32 {

using BOOL = int;
using HMODULE = void*;
using HANDLE = void*;
using FARPROC = void*;

// Flags of LoadLibraryExA. Only the first changes anything here: the module's own
// references are bound lazily instead of at once. The others are accepted and ignored.
constexpr DWORD DONT_RESOLVE_DLL_REFERENCES = 0x00000001;
constexpr DWORD LOAD_LIBRARY_AS_DATAFILE = 0x00000002;
constexpr DWORD LOAD_WITH_ALTERED_SEARCH_PATH = 0x00000008;

// Flags of GetModuleHandleExA.
constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_PIN = 0x00000001;
constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT = 0x00000002;
constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS = 0x00000004;

// Loads `name` (a path, or a file name searched as dlopen searches) and takes a reference.
// `file` must be null. Null on failure, with ERROR_MOD_NOT_FOUND, or
// ERROR_INVALID_PARAMETER for a null name or a non-null `file`.
TESSERA_API HMODULE LoadLibraryExA(const char* name, HANDLE file, DWORD flags);

// Gives back one reference; the module is unloaded with its last one. FALSE with
// ERROR_INVALID_HANDLE for a null handle or when the system refuses.
TESSERA_API BOOL FreeLibrary(HMODULE module);

// The address of the symbol `name` in `module`, or, for a null module, in the process's
// global scope. Null with ERROR_PROC_NOT_FOUND when there is none; ordinals (names below
// 0x10000) are not supported and fail the same way.
TESSERA_API FARPROC GetProcAddress(HMODULE module, const char* name);

// The handle of a module already loaded, without a reference; null `name` gives the main
// program. A module is found by the path it was loaded with, by its soname, or, for a name
// without a slash, by the last part of its path. Null with ERROR_MOD_NOT_FOUND when no such module is loaded.
TESSERA_API HMODULE GetModuleHandleA(const char* name);

// The handle of a module already loaded, into `*module`: with a reference that FreeLibrary
// gives back, or none with GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT, or pinned for the
// life of the process with GET_MODULE_HANDLE_EX_FLAG_PIN. With
// GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS `name` is an address inside the module. FALSE with
// `*module` null on failure: ERROR_MOD_NOT_FOUND, or ERROR_INVALID_PARAMETER for a null
// `module` or both PIN and UNCHANGED_REFCOUNT.
TESSERA_API BOOL GetModuleHandleExA(DWORD flags, const char* name, HMODULE* module);

}  // namespace Win32

#endif  // TESSERA_WIN32_LOADER_H
