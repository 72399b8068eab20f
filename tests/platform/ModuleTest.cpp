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
  if (handle != nullptr) ::dlclose(handle);
  return handle != nullptr;
}

// A reference of the test's own, outside any Module.
void* Hold() { return ::dlopen(modulePath, RTLD_LAZY); }

int CallAnswer(Module& module) {
  auto answer = reinterpret_cast<int (*)()>(module.BindSymbol("TesseraTestModuleAnswer"));
  return answer == nullptr ? -1 : answer();
}

}  // namespace

TEST(Module, LoadBindsAndUnloadsWithTheObject) {
  Module empty;
  EXPECT_FALSE(empty.IsValid());
  EXPECT_EQ(empty.BindSymbol("TesseraTestModuleAnswer"), nullptr);
  empty.Close();
  EXPECT_EQ(empty.Release(), nullptr);
  ASSERT_FALSE(IsLoaded());
  {
    Module module(modulePath, Module::AccessLoad, 0);
    ASSERT_TRUE(module.IsValid());
    EXPECT_EQ(CallAnswer(module), 42);
    Win32::SetLastError(0);
    EXPECT_EQ(module.BindSymbol("NoSuchSymbol"), nullptr);
    EXPECT_EQ(Win32::GetLastError(), Win32::ERROR_PROC_NOT_FOUND);
  }
  EXPECT_FALSE(IsLoaded());
  EXPECT_FALSE(Module(missingPath, Module::AccessLoad, 0).IsValid());
}

TEST(Module, FailedLoadOrOpenKeepsWhatWasHeld) {
  Module module;
  ASSERT_TRUE(module.Load(modulePath, 0));
  const Module::Handle before = module.GetHandle();
  Win32::SetLastError(0);
  EXPECT_FALSE(module.Load(missingPath, 0));
  EXPECT_EQ(Win32::GetLastError(), Win32::ERROR_MOD_NOT_FOUND);
  EXPECT_FALSE(module.Open(missingPath, 0));
  EXPECT_EQ(module.GetHandle(), before);
  EXPECT_EQ(CallAnswer(module), 42);
  // Loading the same module again takes the new reference before the old one goes.
  EXPECT_TRUE(module.Load(modulePath, Win32::DONT_RESOLVE_DLL_REFERENCES));
  module.Close();
  EXPECT_FALSE(IsLoaded());
}

TEST(Module, OnlyOwnedReferencesAreGivenBack) {
  void* own = Hold();
  Module attached;
  attached.Attach(Hold(), true);
  attached.Close();  // gives back the attached reference, once
  attached.Close();
  EXPECT_TRUE(IsLoaded());
  attached.Attach(own, false);
  attached.Close();  // not owned
  void* released;
  {
    Module module(modulePath, Module::AccessLoad, 0);
    released = module.Release();
    EXPECT_FALSE(module.IsValid());
  }
  ::dlclose(own);
  EXPECT_TRUE(IsLoaded());  // the released reference lives on
  ::dlclose(released);
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
    Module uncounted;
    ASSERT_TRUE(uncounted.Open(modulePath, Win32::GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT));
    EXPECT_EQ(uncounted.GetHandle(), own);
    // A bare file name finds the loaded module as well.
    Module byName(TESSERA_TEST_MODULE_NAME, Module::AccessOpen, 2);
    EXPECT_EQ(byName.GetHandle(), own);
  }
  {
    // Where the platform lacks GetModuleHandleExA, Open never owns.
    Tessera::detail::GetModuleHandleExFunction& entry = Tessera::detail::ModuleHandleExEntry();
    const Tessera::detail::GetModuleHandleExFunction saved = entry;
    entry = nullptr;
    Module plain(modulePath, Module::AccessOpen, 0);
    EXPECT_EQ(plain.GetHandle(), own);
    entry = saved;
  }
  ::dlclose(own);
  EXPECT_FALSE(IsLoaded());
}

TEST(Win32Loader, FindsModulesAndReportsFailures) {
  EXPECT_NE(Win32::GetModuleHandleA(nullptr), nullptr);  // the main program
  EXPECT_NE(Win32::GetProcAddress(nullptr, "malloc"), nullptr);
  Win32::HMODULE loaded = Win32::LoadLibraryExA(modulePath, nullptr, 0);
  ASSERT_NE(loaded, nullptr);
  EXPECT_EQ(Win32::GetModuleHandleA(modulePath), loaded);
  Win32::HMODULE byAddress = nullptr;
  const char* inside = static_cast<const char*>(Win32::GetProcAddress(loaded, "TesseraTestModuleAnswer"));
  ASSERT_NE(Win32::GetModuleHandleExA(Win32::GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, inside, &byAddress), 0);
  EXPECT_EQ(byAddress, loaded);
  EXPECT_NE(Win32::FreeLibrary(byAddress), 0);
  EXPECT_NE(Win32::FreeLibrary(loaded), 0);
  EXPECT_FALSE(IsLoaded());

  Win32::SetLastError(0);
  EXPECT_EQ(Win32::GetModuleHandleA(modulePath), nullptr);
  EXPECT_EQ(Win32::GetLastError(), Win32::ERROR_MOD_NOT_FOUND);
  EXPECT_EQ(Win32::GetModuleHandleExA(3, nullptr, &byAddress), 0);  // PIN with UNCHANGED_REFCOUNT
  EXPECT_EQ(Win32::GetLastError(), Win32::ERROR_INVALID_PARAMETER);
  EXPECT_EQ(Win32::FreeLibrary(nullptr), 0);
  EXPECT_EQ(Win32::GetLastError(), Win32::ERROR_INVALID_HANDLE);
}
