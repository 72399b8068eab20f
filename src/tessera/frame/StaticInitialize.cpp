#include <tessera/frame/StaticInitialize.h>

#include <plaint/Error.h>

namespace Tessera {

StaticInitialize::~StaticInitialize() { Dispose(); }

void StaticInitialize::Initialize(CreateFunction newCreate, DestroyFunction newDestroy, void* newParam) {
  initialized.store(false, std::memory_order_relaxed);
  instance.store(nullptr, std::memory_order_relaxed);
  create = newCreate;
  destroy = newDestroy;
  param = newParam;
}

void* StaticInitialize::CreateOrThrow() {
  if (!initialized.load(std::memory_order_relaxed)) {
    void* made = create(param);
    void* expected = nullptr;
    if (!instance.compare_exchange_strong(expected, made, std::memory_order_acq_rel) && made != nullptr)
      destroy(made, param);
    initialized.store(true, std::memory_order_relaxed);
  }
  if (void* current = instance.load(std::memory_order_acquire)) return current;
  throw Plaint::LogicError("static instance already disposed",
                           PLAINT_CONTEXT("Tessera::StaticInitialize::GetInstanceLazy"));
}

void StaticInitialize::Dispose() {
  if (!initialized.load(std::memory_order_relaxed)) return;
  if (void* old = instance.exchange(nullptr, std::memory_order_acq_rel)) destroy(old, param);
}

}  // namespace Tessera
