// Fixed-point arithmetic beside double, and the Mersenne Twister beside std::mt19937.
#include <tessera/numerics/Fixed.h>
#include <tessera/numerics/Mt19937.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

constexpr int kValues = 1024;

std::vector<double> Operands() {
  std::vector<double> values(kValues);
  std::mt19937 generator(42);
  std::uniform_real_distribution<double> distribution(0.5, 40.0);
  for (double& value : values) value = distribution(generator);
  return values;
}

void BM_Mt19937Words(benchmark::State& state) {
  Tessera::Mt19937 generator(5489);
  for (auto _ : state) {
    std::uint32_t sum = 0;
    for (int i = 0; i < 4096; ++i) sum += generator();
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * 4096);
}
BENCHMARK(BM_Mt19937Words);

void BM_StdMt19937Words(benchmark::State& state) {
  std::mt19937 generator(5489);
  for (auto _ : state) {
    std::uint32_t sum = 0;
    for (int i = 0; i < 4096; ++i) sum += static_cast<std::uint32_t>(generator());
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * 4096);
}
BENCHMARK(BM_StdMt19937Words);

void BM_Int16WhiteNoise(benchmark::State& state) {
  Tessera::Int16WhiteNoise noise;
  for (auto _ : state) {
    std::int32_t sum = 0;
    for (int i = 0; i < 1024; ++i) sum += noise();
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * 1024);
}
BENCHMARK(BM_Int16WhiteNoise);

void BM_FixedMultiplyDivide(benchmark::State& state) {
  std::vector<Tessera::fixed> values;
  for (double value : Operands()) values.emplace_back(value);
  for (auto _ : state) {
    Tessera::fixed sum;
    for (int i = 0; i + 1 < kValues; ++i) sum += values[i] * values[i + 1] / values[i + 1];
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * (kValues - 1));
}
BENCHMARK(BM_FixedMultiplyDivide);

void BM_DoubleMultiplyDivide(benchmark::State& state) {
  const std::vector<double> values = Operands();
  for (auto _ : state) {
    double sum = 0;
    for (int i = 0; i + 1 < kValues; ++i) sum += values[i] * values[i + 1] / values[i + 1];
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * (kValues - 1));
}
BENCHMARK(BM_DoubleMultiplyDivide);

void BM_FixedSqrt(benchmark::State& state) {
  std::vector<Tessera::fixed> values;
  for (double value : Operands()) values.emplace_back(value);
  for (auto _ : state) {
    Tessera::fixed sum;
    for (const Tessera::fixed& value : values) sum += value.sqrt();
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * kValues);
}
BENCHMARK(BM_FixedSqrt);

void BM_DoubleSqrt(benchmark::State& state) {
  const std::vector<double> values = Operands();
  for (auto _ : state) {
    double sum = 0;
    for (double value : values) sum += std::sqrt(value);
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * kValues);
}
BENCHMARK(BM_DoubleSqrt);

}  // namespace
BENCHMARK_MAIN();
