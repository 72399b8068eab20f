#include <tessera/platform/Module.h>
#include <tessera/win32/LastError.h>
#include <tessera/win32/Loader.h>

#include <dlfcn.h>

#include <gtest/gtest.h>

#include "tessera/platform/ModuleDetail.h"

using Tessera::Module;

namespace {

const char* const modulePath = TESSERA_TEST_MODULE_PATH;
const char* const missingPath = "/nonexistent/libtessera_missing.so";

bool IsLoaded() {
  void* handle = ::dlopen(modulePath, RTLD_LAZY | RTLD_NOLOAD);
  if (handle == nullptr) return false;
  ::dlclose(handle);
  return true;
}

// A reference of the test's own, outside any Module.
void* Hold() { return ::dlopen(modulePath, RTLD_LAZY); }

int CallAnswer(Module& module) {
  auto answer = reinterpret_cast<int (*)()>(module.BindSymbol("TesseraTestModuleAnswer"));
  return answer == nullptr ? -1 : answer();
}

// Stands for a platform without GetModuleHandleExA while it lives.
class WithoutHandleEx {
 public:
  WithoutHandleEx() : saved_(Tessera::detail::ModuleHandleExEntry()) { Tessera::detail::ModuleHandleExEntry() = nullptr; }
  ~WithoutHandleEx() { Tessera::detail::ModuleHandleExEntry() = saved_; }

 private:
  Tessera::detail::GetModuleHandleExFunction saved_;
};

}  // namespace

TEST(Module, EmptyObjectHoldsNothing) {
  Module module;
  EXPECT_FALSE(module.IsValid());
  EXPECT_EQ(module.GetHandle(), nullptr);
  EXPECT_EQ(module.BindSymbol("TesseraTestModuleAnswer"), nullptr);
  module.Close();
  EXPECT_EQ(module.Release(), nullptr);
  EXPECT_FALSE(module.IsValid());
}

TEST(Module, LoadBindsAndUnloadsWithTheObject) {
  ASSERT_FALSE(IsLoaded());
  {
    Module module;
    ASSERT_TRUE(module.Load(modulePath, 0));
    EXPECT_TRUE(module.IsValid());
    EXPECT_TRUE(IsLoaded());
    EXPECT_EQ(CallAnswer(module), 42);
    auto add = reinterpret_cast<int (*)(int, int)>(module.BindSymbol("TesseraTestModuleAdd"));
    ASSERT_NE(add, nullptr);
    EXPECT_EQ(add(40, 2), 42);
    Win32::SetLastError(0);
    EXPECT_EQ(module.BindSymbol("NoSuchSymbol"), nullptr);
    EXPECT_EQ(Win32::GetLastError(), Win32::ERROR_PROC_NOT_FOUND);
  }
  EXPECT_FALSE(IsLoaded());
}

TEST(Module, FailedLoadKeepsWhatWasHeld) {
  Module module;
  ASSERT_TRUE(module.Load(modulePath, 0));
  const Module::Handle before = module.GetHandle();
  Win32::SetLastError(0);
  EXPECT_FALSE(module.Load(missingPath, 0));
  EXPECT_EQ(Win32::GetLastError(), Win32::ERROR_MOD_NOT_FOUND);
  EXPECT_EQ(module.GetHandle(), before);
  EXPECT_EQ(CallAnswer(module), 42);
  // A second load of the same module takes the new reference before the old goes.
  EXPECT_TRUE(module.Load(modulePath, Win32::DONT_RESOLVE_DLL_REFERENCES));
  EXPECT_TRUE(IsLoaded());
  module.Close();
  EXPECT_FALSE(IsLoaded());
  EXPECT_FALSE(module.IsValid());
}

TEST(Module, AttachReleaseAndCloseGiveBackOnlyOwnedReferences) {
  void* own = Hold();
  ASSERT_NE(own, nullptr);
  {
    Module module;
    module.Attach(Hold(), true);
    module.Close();  // gives back the attached reference, once
    module.Close();
    EXPECT_TRUE(IsLoaded());
  }
  {
    Module module;
    module.Attach(own, false);
    EXPECT_EQ(CallAnswer(module), 42);
  }
  EXPECT_TRUE(IsLoaded());  // not owned: no FreeLibrary
  void* released;
  {
    Module module;
    ASSERT_TRUE(module.Load(modulePath, 0));
    released = module.Release();
    EXPECT_FALSE(module.IsValid());
  }
  ::dlclose(own);
  EXPECT_TRUE(IsLoaded());  // the released reference lives on
  ::dlclose(released);
  EXPECT_FALSE(IsLoaded());
}

TEST(Module, OpenTakesAReferenceUnlessAskedNotTo) {
  EXPECT_FALSE(Module(modulePath, Module::AccessOpen, 0).IsValid());  // not loaded yet
  void* own = Hold();
  ASSERT_NE(own, nullptr);
  {
    Module counted(modulePath, Module::AccessOpen, 0);
    ASSERT_TRUE(counted.IsValid());
    EXPECT_EQ(counted.GetHandle(), own);
    ::dlclose(own);
    EXPECT_TRUE(IsLoaded());  // held by the object
    EXPECT_EQ(CallAnswer(counted), 42);
  }
  EXPECT_FALSE(IsLoaded());

  own = Hold();
  {
    Module uncounted;
    ASSERT_TRUE(uncounted.Open(modulePath, Win32::GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT));
    EXPECT_EQ(uncounted.GetHandle(), own);
  }
  EXPECT_TRUE(IsLoaded());  // nothing was given back
  {
    // Open by the file name alone finds the loaded module as well.
    Module byName(TESSERA_TEST_MODULE_NAME, static_cast<Module::AccessMode>(7), 2);
    EXPECT_EQ(byName.GetHandle(), own);
  }
  ::dlclose(own);
  EXPECT_FALSE(IsLoaded());
}

TEST(Module, FailedOpenKeepsWhatWasHeld) {
  Module module;
  ASSERT_TRUE(module.Load(modulePath, 0));
  const Module::Handle before = module.GetHandle();
  Win32::SetLastError(0);
  EXPECT_FALSE(module.Open(missingPath, 0));
  EXPECT_EQ(Win32::GetLastError(), Win32::ERROR_MOD_NOT_FOUND);
  EXPECT_EQ(module.GetHandle(), before);
  EXPECT_EQ(CallAnswer(module), 42);
}

TEST(Module, OpenWithoutHandleExIsNeverOwned) {
  WithoutHandleEx platform;
  void* own = Hold();
  {
    Module module(modulePath, Module::AccessOpen, 0);
    ASSERT_TRUE(module.IsValid());
    EXPECT_EQ(module.GetHandle(), own);
  }
  EXPECT_TRUE(IsLoaded());
  ::dlclose(own);
  EXPECT_FALSE(IsLoaded());
  Module module;
  EXPECT_FALSE(module.Open(modulePath, 0));
  EXPECT_FALSE(module.IsValid());
}

TEST(Module, ConstructorModeOneLoads) {
  {
    Module module(modulePath, Module::AccessLoad, 0);
    ASSERT_TRUE(module.IsValid());
    EXPECT_EQ(CallAnswer(module), 42);
  }
  EXPECT_FALSE(IsLoaded());
  Module missing(missingPath, Module::AccessLoad, 0);
  EXPECT_FALSE(missing.IsValid());
}

TEST(Win32Loader, ReportsFailuresThroughTheLastError) {
  Win32::SetLastError(0);
  EXPECT_EQ(Win32::LoadLibraryExA(nullptr, nullptr, 0), nullptr);
  EXPECT_EQ(Win32::GetLastError(), Win32::ERROR_INVALID_PARAMETER);
  EXPECT_EQ(Win32::FreeLibrary(nullptr), 0);
  EXPECT_EQ(Win32::GetLastError(), Win32::ERROR_INVALID_HANDLE);
  EXPECT_EQ(Win32::GetModuleHandleA(missingPath), nullptr);
  EXPECT_EQ(Win32::GetLastError(), Win32::ERROR_MOD_NOT_FOUND);
  Win32::HMODULE handle = reinterpret_cast<Win32::HMODULE>(1);
  EXPECT_EQ(Win32::GetModuleHandleExA(0, missingPath, &handle), 0);
  EXPECT_EQ(handle, nullptr);
  EXPECT_EQ(Win32::GetModuleHandleExA(3, modulePath, &handle), 0);
  EXPECT_EQ(Win32::GetLastError(), Win32::ERROR_INVALID_PARAMETER);
  EXPECT_EQ(Win32::GetModuleHandleExA(0, modulePath, nullptr), 0);
  EXPECT_EQ(Win32::GetProcAddress(nullptr, reinterpret_cast<const char*>(5)), nullptr);
  EXPECT_EQ(Win32::GetLastError(), Win32::ERROR_PROC_NOT_FOUND);
}

TEST(Win32Loader, FindsLoadedModulesByNameAndAddress) {
  // The main program and the process's global scope.
  EXPECT_NE(Win32::GetModuleHandleA(nullptr), nullptr);
  EXPECT_NE(Win32::GetProcAddress(nullptr, "malloc"), nullptr);

  Win32::HMODULE loaded = Win32::LoadLibraryExA(modulePath, nullptr, 0);
  ASSERT_NE(loaded, nullptr);
  EXPECT_EQ(Win32::GetModuleHandleA(modulePath), loaded);
  void* function = Win32::GetProcAddress(loaded, "TesseraTestModuleAnswer");
  ASSERT_NE(function, nullptr);
  Win32::HMODULE byAddress = nullptr;
  ASSERT_NE(Win32::GetModuleHandleExA(Win32::GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, static_cast<const char*>(function),
                                      &byAddress),
            0);
  EXPECT_EQ(byAddress, loaded);
  EXPECT_NE(Win32::FreeLibrary(byAddress), 0);
  EXPECT_TRUE(IsLoaded());
  EXPECT_NE(Win32::FreeLibrary(loaded), 0);
  EXPECT_FALSE(IsLoaded());
}
