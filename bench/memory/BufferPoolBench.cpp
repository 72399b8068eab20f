// BufferPool::Allocate plus release of 48-byte blocks in bursts of 64, beside malloc/free
// of the same size, on one thread and on two threads sharing the pool.
#include <tessera/memory/Buffer.h>

#include <benchmark/benchmark.h>

#include <array>
#include <cstdlib>

namespace {

constexpr int kBurst = 64;
constexpr std::uint32_t kSize = 48;

Tessera::BufferPool& SharedPool() {
  static Tessera::BufferPool pool(kSize, 256);
  return pool;
}

void BM_BufferPool_AllocateRelease(benchmark::State& state) {
  Tessera::BufferPool& pool = SharedPool();
  std::array<Tessera::Buffer, kBurst> held;
  for (auto _ : state) {
    for (auto& buffer : held) buffer = pool.Allocate();
    benchmark::DoNotOptimize(held.data());
    for (auto& buffer : held) buffer = Tessera::Buffer();
  }
  state.SetItemsProcessed(state.iterations() * kBurst);
}

void BM_Malloc_Free(benchmark::State& state) {
  std::array<void*, kBurst> held;
  for (auto _ : state) {
    for (auto& block : held) block = std::malloc(kSize);
    benchmark::DoNotOptimize(held.data());
    benchmark::ClobberMemory();
    for (void* block : held) std::free(block);
  }
  state.SetItemsProcessed(state.iterations() * kBurst);
}

BENCHMARK(BM_BufferPool_AllocateRelease)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_Malloc_Free)->Threads(1)->Threads(2)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
