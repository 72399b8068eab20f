// TextFind beside std::string_view::find and glibc's memmem: a 12-byte needle at the very
// end of 64 KiB of running prose, so every search reads the whole text.
#include <tessera/text/TextCompare.h>

#include <cstring>
#include <string>
#include <string_view>

#include <benchmark/benchmark.h>

namespace {

constexpr std::size_t kTextSize = 64 * 1024;
const char kNeedle[] = "quintessence";  // 12 bytes

const std::string& Haystack() {
  static const std::string text = [] {
    const std::string prose =
        "It was the best of times, it was the worst of times, it was the age of wisdom, it was "
        "the age of foolishness, it was the epoch of belief, it was the epoch of incredulity, "
        "it was the season of Light, it was the season of Darkness. ";
    std::string result;
    while (result.size() < kTextSize - 12) result += prose;
    result.resize(kTextSize - 12);
    return result + kNeedle;
  }();
  return text;
}

void BM_TextFind(benchmark::State& state) {
  const std::string& text = Haystack();
  for (auto _ : state) {
    unsigned int at = Tessera::TextFind(text.data(), static_cast<unsigned int>(text.size()), kNeedle, 12);
    benchmark::DoNotOptimize(at);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_TextFind);

void BM_StringViewFind(benchmark::State& state) {
  const std::string_view text = Haystack();
  for (auto _ : state) {
    std::size_t at = text.find(std::string_view(kNeedle, 12));
    benchmark::DoNotOptimize(at);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_StringViewFind);

void BM_Memmem(benchmark::State& state) {
  const std::string& text = Haystack();
  for (auto _ : state) {
    const void* at = memmem(text.data(), text.size(), kNeedle, 12);
    benchmark::DoNotOptimize(at);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_Memmem);

}  // namespace

BENCHMARK_MAIN();
