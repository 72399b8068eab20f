// Module: a handle on a dynamically loaded module, with the knowledge of whether that
// handle holds a reference to give back.
//
// A Module loads a module, opens one that the process already has, or takes over a
// handle, and looks up symbols. It throws nothing: Load and Open report by a false result
// and leave the platform's error (Win32::GetLastError) for the caller; BindSymbol gives
// null. A replacing call that fails leaves the object as it was, and the old module stays
// loaded until the new one is in hand. One thread at a time; not copyable, but movable.
//
// Conveniences: a noexcept move, which leaves the Module moved from holding nothing.
#ifndef TESSERA_PLATFORM_MODULE_H
#define TESSERA_PLATFORM_MODULE_H

#include <tessera_export.h>

namespace Tessera {

class TESSERA_API Module {
 public:
  // The dlopen handle of a module (Win32::HMODULE).
  using Handle = void*;

  enum AccessMode : unsigned int {
    AccessOpen = 0,  // as Open; every mode but 1 means this
    AccessLoad = 1,  // as Load
  };

  // Holds nothing.
  Module() : handle_(nullptr), owned_(false) {}
  // Holds nothing, then Load(name, flags) for mode 1 and Open(name, flags) otherwise. A
  // failure leaves an object that holds nothing; IsValid tells.
  Module(const char* name, AccessMode mode, unsigned int flags);
  // As Close.
  ~Module() { Close(); }

  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;
  Module(Module&& other) noexcept : handle_(other.handle_), owned_(other.owned_) {
    other.handle_ = nullptr;
    other.owned_ = false;
  }
  // Closes the old content first.
  Module& operator=(Module&& other) noexcept {
    if (this != &other) {
      Close();
      handle_ = other.handle_;
      owned_ = other.owned_;
      other.handle_ = nullptr;
      other.owned_ = false;
    }
    return *this;
  }

  // Win32::LoadLibraryExA(name, null, flags). On success closes the old content and takes
  // the new handle as owned; on failure false, with the old content kept.
  [[nodiscard]] bool Load(const char* name, unsigned int flags);

  // Takes a module that the process has already loaded, with a reference where the
  // platform gives one: owned unless bit 1 of `flags` (value 2,
  // GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT) is set, and never owned where the
  // platform has no GetModuleHandleExA. False, with the old content kept, when no such
  // module is loaded.
  [[nodiscard]] bool Open(const char* name, unsigned int flags);

  // Closes the old content and takes `handle` with the given ownership.
  void Attach(Handle handle, bool owned);

  // Gives the handle to the caller, with whatever reference it holds; the object then
  // holds nothing.
  Handle Release();

  // Gives back the reference if owned (ignoring a failure) and then holds nothing. Closing
  // an empty object does nothing.
  void Close();

  // The address of symbol `name`, or null when it is missing or the object is empty.
  [[nodiscard]] void* BindSymbol(const char* name);

  bool IsValid() const { return handle_ != nullptr; }
  Handle GetHandle() const { return handle_; }

 private:
  Handle handle_;
  bool owned_;
};

}  // namespace Tessera

#endif  // TESSERA_PLATFORM_MODULE_H
