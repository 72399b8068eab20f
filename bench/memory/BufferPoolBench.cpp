// BufferPool::Allocate plus release of 48-byte blocks in bursts of 64, beside malloc/free of
// the same size: in a process that has started no thread (the C library and the pool's lock
// then skip their atomic operations), on one thread of a process with several, and on two
// threads sharing one pool. The first pair needs a process of its own:
//   bench_memory --benchmark_filter=NoThreadStarted
// The two-thread pair shows the lock's contention only while both threads run at once: on a
// loaded machine they take turns, and the pool looks better than it is.
#include <tessera/memory/Buffer.h>

#include <benchmark/benchmark.h>

#include <sys/single_threaded.h>

#include <array>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <thread>

namespace {

constexpr int kBurst = 64;
constexpr std::uint32_t kSize = 48;

Tessera::BufferPool& SharedPool() {
  static Tessera::BufferPool pool(kSize, 256);
  return pool;
}

// Starts one idle thread for the rest of the process, so that everything after it runs on
// the C library's and the lock's multi-threaded paths.
void StartIdleThread() {
  static std::thread* idle = [] {
    auto* thread = new std::thread([] {
      std::mutex mutex;
      std::condition_variable never;
      std::unique_lock<std::mutex> hold(mutex);
      never.wait(hold, [] { return false; });
    });
    thread->detach();
    return thread;
  }();
  benchmark::DoNotOptimize(idle);
}

void PoolBursts(benchmark::State& state) {
  Tessera::BufferPool& pool = SharedPool();
  std::array<Tessera::Buffer, kBurst> held;
  for (auto _ : state) {
    for (auto& buffer : held) buffer = pool.Allocate();
    benchmark::DoNotOptimize(held.data());
    for (auto& buffer : held) buffer = Tessera::Buffer();
  }
  state.SetItemsProcessed(state.iterations() * kBurst);
}

void MallocBursts(benchmark::State& state) {
  std::array<void*, kBurst> held;
  for (auto _ : state) {
    for (auto& block : held) block = std::malloc(kSize);
    benchmark::DoNotOptimize(held.data());
    benchmark::ClobberMemory();
    for (void* block : held) std::free(block);
  }
  state.SetItemsProcessed(state.iterations() * kBurst);
}

template <void (*Bursts)(benchmark::State&)>
void NoThreadStarted(benchmark::State& state) {
  if (!__libc_single_threaded) {
    state.SkipWithError("a thread has started: run with --benchmark_filter=NoThreadStarted");
    return;
  }
  Bursts(state);
}

template <void (*Bursts)(benchmark::State&)>
void ThreadedProcess(benchmark::State& state) {
  if (state.thread_index() == 0) StartIdleThread();
  Bursts(state);
}

void BM_BufferPool_NoThreadStarted(benchmark::State& state) { NoThreadStarted<PoolBursts>(state); }
void BM_Malloc_NoThreadStarted(benchmark::State& state) { NoThreadStarted<MallocBursts>(state); }
void BM_BufferPool_ThreadedProcess(benchmark::State& state) { ThreadedProcess<PoolBursts>(state); }
void BM_Malloc_ThreadedProcess(benchmark::State& state) { ThreadedProcess<MallocBursts>(state); }

BENCHMARK(BM_BufferPool_NoThreadStarted);
BENCHMARK(BM_Malloc_NoThreadStarted);
BENCHMARK(BM_BufferPool_ThreadedProcess)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_Malloc_ThreadedProcess)->Threads(1)->Threads(2)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
