#include <tessera/win32/Loader.h>

#include <cstdint>
#include <cstring>
#include <string>

#include <dlfcn.h>
#include <link.h>

namespace Win32 {

namespace {

struct BaseNameSearch {
  const char* name;
  std::string path;
};

int MatchBaseName(::dl_phdr_info* info, std::size_t, void* data) {
  auto* search = static_cast<BaseNameSearch*>(data);
  const char* path = info->dlpi_name;
  if (path == nullptr || *path == '\0') return 0;
  const char* slash = std::strrchr(path, '/');
  if (std::strcmp(slash == nullptr ? path : slash + 1, search->name) != 0) return 0;
  search->path = path;
  return 1;
}

// dlopen with RTLD_NOLOAD, which knows a module by the path it was loaded with or by its
// soname; a bare file name also finds it by the last part of its path, as Windows does.
void* OpenLoaded(const char* name, int mode) {
  void* handle = ::dlopen(name, mode | RTLD_NOLOAD);
  if (handle != nullptr || name == nullptr || std::strchr(name, '/') != nullptr) return handle;
  BaseNameSearch search{name, {}};
  if (::dl_iterate_phdr(MatchBaseName, &search) == 0) return nullptr;
  return ::dlopen(search.path.c_str(), mode | RTLD_NOLOAD);
}

// A handle of a module that is loaded, without keeping the reference that the lookup
// takes: someone else holds the module, so the handle stays good.
void* FindLoaded(const char* name) {
  void* handle = OpenLoaded(name, RTLD_LAZY);
  if (handle != nullptr) ::dlclose(handle);
  return handle;
}

}  // namespace

HMODULE LoadLibraryExA(const char* name, HANDLE file, DWORD flags) {
  if (name == nullptr || file != nullptr) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  const int mode = ((flags & DONT_RESOLVE_DLL_REFERENCES) != 0 ? RTLD_LAZY : RTLD_NOW) | RTLD_LOCAL;
  void* handle = ::dlopen(name, mode);
  if (handle == nullptr) SetLastError(ERROR_MOD_NOT_FOUND);
  return handle;
}

BOOL FreeLibrary(HMODULE module) {
  if (module == nullptr || ::dlclose(module) != 0) {
    SetLastError(ERROR_INVALID_HANDLE);
    return 0;
  }
  return 1;
}

FARPROC GetProcAddress(HMODULE module, const char* name) {
  if (reinterpret_cast<std::uintptr_t>(name) < 0x10000) {
    SetLastError(ERROR_PROC_NOT_FOUND);
    return nullptr;
  }
  void* address = ::dlsym(module == nullptr ? RTLD_DEFAULT : module, name);
  if (address == nullptr) SetLastError(ERROR_PROC_NOT_FOUND);
  return address;
}

HMODULE GetModuleHandleA(const char* name) {
  void* handle = FindLoaded(name);
  if (handle == nullptr) SetLastError(ERROR_MOD_NOT_FOUND);
  return handle;
}

BOOL GetModuleHandleExA(DWORD flags, const char* name, HMODULE* module) {
  if (module == nullptr) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  *module = nullptr;
  if ((flags & GET_MODULE_HANDLE_EX_FLAG_PIN) != 0 && (flags & GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT) != 0) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  const char* path = name;
  if ((flags & GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS) != 0) {
    ::Dl_info info;
    if (::dladdr(name, &info) == 0 || info.dli_fname == nullptr) {
      SetLastError(ERROR_MOD_NOT_FOUND);
      return 0;
    }
    // The main program is known to dladdr by its file but to dlopen only as null.
    path = FindLoaded(info.dli_fname) != nullptr ? info.dli_fname : nullptr;
  }
  int mode = RTLD_LAZY;
  if ((flags & GET_MODULE_HANDLE_EX_FLAG_PIN) != 0) mode |= RTLD_NODELETE;
  void* handle = OpenLoaded(path, mode);
  if (handle == nullptr) {
    SetLastError(ERROR_MOD_NOT_FOUND);
    return 0;
  }
  if ((flags & GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT) != 0) ::dlclose(handle);
  *module = handle;
  return 1;
}

}  // namespace Win32
