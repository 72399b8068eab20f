// StaticInitialize: a lazily created instance with an explicit end of life, for clients'
// own statics. Fresh -> Live on the first GetInstanceLazy; Live -> Disposed on Dispose or
// destruction. A disposed instance is never made again.
#ifndef TESSERA_FRAME_STATICINITIALIZE_H
#define TESSERA_FRAME_STATICINITIALIZE_H

#include <atomic>

#include <tessera_export.h>

namespace Tessera {

class TESSERA_API StaticInitialize {
 public:
  using CreateFunction = void* (*)(void* param);
  using DestroyFunction = void (*)(void* instance, void* param);

  struct LifetimeTraits {
    CreateFunction create;
    DestroyFunction destroy;
    void* param;
  };

  // Both constructors are constexpr so that a namespace-scope object needs no
  // initialiser at run time.
  constexpr StaticInitialize(CreateFunction onCreate, DestroyFunction onDestroy, void* parameter)
      : initialized(false), instance(nullptr), create(onCreate), destroy(onDestroy), param(parameter) {}
  constexpr explicit StaticInitialize(const LifetimeTraits& traits)
      : StaticInitialize(traits.create, traits.destroy, traits.param) {}
  ~StaticInitialize();

  StaticInitialize(const StaticInitialize&) = delete;
  StaticInitialize& operator=(const StaticInitialize&) = delete;

  static LifetimeTraits MakeAny(CreateFunction onCreate, DestroyFunction onDestroy, void* parameter) {
    return LifetimeTraits{onCreate, onDestroy, parameter};
  }

  // The instance, created on first call. Threads may race here without a lock: each
  // loser's object goes to `destroy` on its own thread and all get the one that stayed.
  // Throws Plaint::LogicError "static instance already disposed" once disposed (or when
  // `create` gave null). Exceptions of `create` pass through and the next call retries.
  void* GetInstanceLazy() {
    if (initialized.load(std::memory_order_relaxed)) {
      if (void* current = instance.load(std::memory_order_acquire)) return current;
    }
    return CreateOrThrow();
  }

  // Destroys the instance, once; later calls and a Fresh object do nothing.
  void Dispose();

 private:
  void Initialize(CreateFunction create, DestroyFunction destroy, void* param);
  void* CreateOrThrow();

  // A plain flag in effect (relaxed loads and stores compile to ordinary moves); at worst a
  // thread that misses it takes the creating path once more.
  std::atomic<bool> initialized;
  std::atomic<void*> instance;
  CreateFunction create;
  DestroyFunction destroy;
  void* param;
};

}  // namespace Tessera

#endif  // TESSERA_FRAME_STATICINITIALIZE_H
