#include <tessera/platform/Module.h>
#include <tessera/win32/LastError.h>
#include <tessera/win32/Loader.h>

#include <dlfcn.h>

#include <tuple>
#include <utility>

#include <gtest/gtest.h>

#include "tessera/platform/ModuleDetail.h"

using Tessera::Module;

namespace {

const char* const modulePath = TESSERA_TEST_MODULE_PATH;
const char* const missingPath = "/nonexistent/libtessera_missing.so";

// Whether the test module is in the process, seen without taking a reference.
bool IsLoaded() {
  void* handle = ::dlopen(modulePath, RTLD_LAZY | RTLD_NOLOAD);
  if (handle != nullptr) ::dlclose(handle);
  return handle != nullptr;
}

// A reference of the test's own, outside any Module.
void* Hold() { return ::dlopen(modulePath, RTLD_LAZY); }

int CallAnswer(Module& module) {
  auto answer = reinterpret_cast<int (*)()>(module.BindSymbol("TesseraTestModuleAnswer"));
  return answer == nullptr ? -1 : answer();
}

// The error that `call` leaves when it fails, 0 when it succeeds.
template <class Call>
Win32::DWORD ErrorOf(Call call) {
  Win32::SetLastError(0);
  return call() ? 0 : Win32::GetLastError();
}

}  // namespace

TEST(Module, LoadHoldsOneReferenceUntilClosed) {
  Module module;
  EXPECT_EQ(std::make_tuple(module.IsValid(), module.GetHandle(), CallAnswer(module)), std::make_tuple(false, nullptr, -1));
  module.Close();
  ASSERT_FALSE(IsLoaded());
  ASSERT_TRUE(module.Load(modulePath, 0));
  const Module::Handle before = module.GetHandle();
  EXPECT_EQ(ErrorOf([&] { return module.BindSymbol("NoSuchSymbol") != nullptr; }), Win32::ERROR_PROC_NOT_FOUND);
  // A failed Load or Open keeps what was held.
  EXPECT_EQ(ErrorOf([&] { return module.Load(missingPath, 0); }), Win32::ERROR_MOD_NOT_FOUND);
  EXPECT_FALSE(module.Open(missingPath, 0));
  EXPECT_EQ(module.GetHandle(), before);
  EXPECT_EQ(CallAnswer(module), 42);
  // Loading again gives back the old reference once the new one is held; another object
  // loading it has a reference of its own.
  EXPECT_TRUE(module.Load(modulePath, Win32::DONT_RESOLVE_DLL_REFERENCES));
  { Module scoped(modulePath, Module::AccessLoad, 0); }
  module.Close();
  EXPECT_FALSE(IsLoaded());
}

TEST(Module, OnlyOwnedReferencesAreGivenBack) {
  void* own = Hold();
  Module module;
  module.Attach(Hold(), true);
  module.Close();  // gives back the attached reference, once
  module.Close();
  ASSERT_TRUE(IsLoaded());
  module.Attach(own, false);
  ASSERT_TRUE(module.Load(modulePath, 0));  // closes the unowned handle: nothing given back
  void* released = module.Release();
  EXPECT_FALSE(module.IsValid());
  ::dlclose(own);
  EXPECT_TRUE(IsLoaded());  // the released reference lives on
  ::dlclose(released);
  EXPECT_FALSE(IsLoaded());
}

TEST(Module, MovesHandOverTheReference) {
  Module loaded(modulePath, Module::AccessLoad, 0);
  const Module::Handle handle = loaded.GetHandle();
  Module moved(std::move(loaded));
  Module assigned;
  ASSERT_TRUE(assigned.Load(modulePath, 0));
  assigned = std::move(moved);  // gives back its own reference first
  EXPECT_EQ(std::make_tuple(assigned.GetHandle(), loaded.IsValid(), moved.IsValid()),
            std::make_tuple(handle, false, false));
  assigned.Close();
  EXPECT_FALSE(IsLoaded());
}

TEST(Module, OpenTakesAReferenceUnlessFlagTwoSaysNot) {
  EXPECT_FALSE(Module(modulePath, Module::AccessOpen, 0).IsValid());  // not loaded yet
  void* own = Hold();
  {
    Module counted(modulePath, static_cast<Module::AccessMode>(7), 0);  // any mode but 1 opens
    EXPECT_EQ(counted.GetHandle(), own);
    ::dlclose(own);
    EXPECT_EQ(CallAnswer(counted), 42);  // held by the object
  }
  EXPECT_FALSE(IsLoaded());

  own = Hold();
  {
    // A bare file name finds the loaded module as well.
    Module uncounted;
    ASSERT_TRUE(uncounted.Open(TESSERA_TEST_MODULE_NAME, Win32::GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT));
    EXPECT_EQ(uncounted.GetHandle(), own);
    // Where the platform lacks GetModuleHandleExA, Open never owns.
    Tessera::detail::GetModuleHandleExFunction& entry = Tessera::detail::ModuleHandleExEntry();
    const Tessera::detail::GetModuleHandleExFunction saved = entry;
    entry = nullptr;
    Module plain(modulePath, Module::AccessOpen, 0);
    entry = saved;
    EXPECT_EQ(plain.GetHandle(), own);
  }
  ASSERT_TRUE(IsLoaded());  // neither gave back a reference
  ::dlclose(own);
  EXPECT_FALSE(IsLoaded());
}

TEST(Win32Loader, FindsModulesAndReportsFailures) {
  EXPECT_NE(Win32::GetModuleHandleA(nullptr), nullptr);  // the main program
  EXPECT_NE(Win32::GetProcAddress(nullptr, "malloc"), nullptr);
  Win32::HMODULE loaded = Win32::LoadLibraryExA(modulePath, nullptr, 0);
  ASSERT_NE(loaded, nullptr);
  Win32::HMODULE byAddress = nullptr;
  const char* inside = static_cast<const char*>(Win32::GetProcAddress(loaded, "TesseraTestModuleAnswer"));
  ASSERT_NE(Win32::GetModuleHandleExA(Win32::GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, inside, &byAddress), 0);
  EXPECT_EQ(byAddress, loaded);
  EXPECT_NE(Win32::FreeLibrary(byAddress), 0);  // the lookup took a reference
  EXPECT_NE(Win32::FreeLibrary(loaded), 0);
  EXPECT_FALSE(IsLoaded());

  EXPECT_EQ(ErrorOf([] { return Win32::GetModuleHandleA(modulePath) != nullptr; }), Win32::ERROR_MOD_NOT_FOUND);
  // PIN together with UNCHANGED_REFCOUNT
  EXPECT_EQ(ErrorOf([&] { return Win32::GetModuleHandleExA(3, nullptr, &byAddress); }), Win32::ERROR_INVALID_PARAMETER);
  EXPECT_EQ(ErrorOf([] { return Win32::FreeLibrary(nullptr); }), Win32::ERROR_INVALID_HANDLE);
}
