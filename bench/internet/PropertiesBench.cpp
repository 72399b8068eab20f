// Properties::Set and Get beside std::map<std::string, std::string>, for 16 and 1000 keys of
// the kind query strings and headers carry. Set fills a fresh collection; Get looks up every
// key once in a filled one.
#include <tessera/internet/Properties.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

std::vector<std::string> Keys(std::size_t count) {
  std::vector<std::string> keys;
  std::mt19937 random(7);
  const char* stems[] = {"utm_", "filter[", "x-request-", "page", "sort_", "session."};
  for (std::size_t i = 0; i < count; ++i)
    keys.push_back(stems[random() % 6] + std::to_string(random() % 100000) + "_" + std::to_string(i));
  std::shuffle(keys.begin(), keys.end(), random);
  return keys;
}

void BM_PropertiesSet(benchmark::State& state) {
  const auto keys = Keys(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    Tessera::Properties properties;
    for (const std::string& key : keys) properties.Set(key, "value");
    benchmark::DoNotOptimize(properties.GetCount());
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * keys.size()));
}
BENCHMARK(BM_PropertiesSet)->Arg(16)->Arg(1000);

void BM_StdMapSet(benchmark::State& state) {
  const auto keys = Keys(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    std::map<std::string, std::string> map;
    for (const std::string& key : keys) map[key] = "value";
    benchmark::DoNotOptimize(map.size());
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * keys.size()));
}
BENCHMARK(BM_StdMapSet)->Arg(16)->Arg(1000);

void BM_PropertiesGet(benchmark::State& state) {
  const auto keys = Keys(static_cast<std::size_t>(state.range(0)));
  Tessera::Properties properties;
  for (const std::string& key : keys) properties.Set(key, "value");
  for (auto _ : state)
    for (const std::string& key : keys) benchmark::DoNotOptimize(properties.Get(key));
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * keys.size()));
}
BENCHMARK(BM_PropertiesGet)->Arg(16)->Arg(1000);

void BM_StdMapGet(benchmark::State& state) {
  const auto keys = Keys(static_cast<std::size_t>(state.range(0)));
  std::map<std::string, std::string> map;
  for (const std::string& key : keys) map[key] = "value";
  for (auto _ : state)
    for (const std::string& key : keys) benchmark::DoNotOptimize(map.find(key));
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * keys.size()));
}
BENCHMARK(BM_StdMapGet)->Arg(16)->Arg(1000);

}  // namespace
