#include <tessera/platform/Module.h>

#include <tessera/win32/Loader.h>

#include "tessera/platform/ModuleDetail.h"

namespace Tessera {

namespace detail {

GetModuleHandleExFunction& ModuleHandleExEntry() {
  // The loader here always has the counted lookup; on Windows this is where it would be
  // found in kernel32 at run time, for systems that lack it.
  static GetModuleHandleExFunction entry = &Win32::GetModuleHandleExA;
  return entry;
}

}  // namespace detail

Module::Module(const char* name, AccessMode mode, unsigned int flags) : handle_(nullptr), owned_(false) {
  // A failure leaves the object empty, which IsValid reports.
  const bool loaded = mode == AccessLoad ? Load(name, flags) : Open(name, flags);
  static_cast<void>(loaded);
}

bool Module::Load(const char* name, unsigned int flags) {
  const Handle handle = Win32::LoadLibraryExA(name, nullptr, flags);
  if (handle == nullptr) return false;
  Attach(handle, true);
  return true;
}

bool Module::Open(const char* name, unsigned int flags) {
  const detail::GetModuleHandleExFunction handleEx = detail::ModuleHandleExEntry();
  Handle handle = nullptr;
  bool owned = false;
  if (handleEx != nullptr) {
    if (handleEx(flags, name, &handle) == 0) return false;
    owned = (flags & Win32::GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT) == 0;
  } else {
    handle = Win32::GetModuleHandleA(name);
    if (handle == nullptr) return false;
  }
  Attach(handle, owned);
  return true;
}

void Module::Attach(Handle handle, bool owned) {
  Close();
  handle_ = handle;
  owned_ = owned;
}

Module::Handle Module::Release() {
  const Handle handle = handle_;
  handle_ = nullptr;
  owned_ = false;
  return handle;
}

void Module::Close() {
  if (handle_ == nullptr) return;
  if (owned_) Win32::FreeLibrary(handle_);
  handle_ = nullptr;
  owned_ = false;
}

void* Module::BindSymbol(const char* name) {
  if (handle_ == nullptr) return nullptr;
  return Win32::GetProcAddress(handle_, name);
}

}  // namespace Tessera
