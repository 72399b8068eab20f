// TextNumeric beside std::from_chars, and TextFormatNumber beside std::to_chars (with the
// same text: the general format with precision 6 for double) and beside the fresh
// std::ostringstream whose text it gives. Each run goes over 1024 varied values.
#include <tessera/text/TextFormatNumber.h>
#include <tessera/text/TextNumeric.h>

#include <charconv>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

constexpr std::size_t kCount = 1024;

const std::vector<int>& Integers() {
  static const std::vector<int> values = [] {
    std::vector<int> result;
    std::mt19937 random(3);
    for (std::size_t i = 0; i < kCount; ++i)
      result.push_back(static_cast<int>(random()) >> (random() % 31));
    return result;
  }();
  return values;
}

// Plain decimal fractions, as a parser of this kind meets them.
const std::vector<double>& Reals() {
  static const std::vector<double> values = [] {
    std::vector<double> result;
    std::mt19937 random(4);
    for (std::size_t i = 0; i < kCount; ++i)
      result.push_back(static_cast<double>(random() % 10000000) / 1000.0 - 5000.0);
    return result;
  }();
  return values;
}

template <class T>
std::vector<std::string> Texts(const std::vector<T>& values) {
  std::vector<std::string> texts;
  for (T value : values) {
    char buffer[64];
    auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    texts.emplace_back(buffer, result.ptr);
  }
  return texts;
}

template <class T>
void ParseTextNumeric(benchmark::State& state, const std::vector<std::string>& texts) {
  for (auto _ : state) {
    for (const std::string& text : texts) {
      T value{};
      bool ok =
          Tessera::TextNumeric(text.data(), static_cast<unsigned int>(text.size()), value, 10);
      benchmark::DoNotOptimize(ok);
      benchmark::DoNotOptimize(value);
    }
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * texts.size()));
}

template <class T>
void ParseFromChars(benchmark::State& state, const std::vector<std::string>& texts) {
  for (auto _ : state) {
    for (const std::string& text : texts) {
      T value{};
      auto result = std::from_chars(text.data(), text.data() + text.size(), value);
      benchmark::DoNotOptimize(result);
      benchmark::DoNotOptimize(value);
    }
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * texts.size()));
}

void BM_TextNumericInt(benchmark::State& state) { ParseTextNumeric<int>(state, Texts(Integers())); }
void BM_FromCharsInt(benchmark::State& state) { ParseFromChars<int>(state, Texts(Integers())); }
void BM_TextNumericDouble(benchmark::State& state) {
  ParseTextNumeric<double>(state, Texts(Reals()));
}
void BM_FromCharsDouble(benchmark::State& state) { ParseFromChars<double>(state, Texts(Reals())); }
BENCHMARK(BM_TextNumericInt);
BENCHMARK(BM_FromCharsInt);
BENCHMARK(BM_TextNumericDouble);
BENCHMARK(BM_FromCharsDouble);

template <class T>
void FormatTextFormatNumber(benchmark::State& state, const std::vector<T>& values) {
  std::string out;
  for (auto _ : state) {
    for (T value : values) {
      Tessera::TextFormatNumber(value, out);
      benchmark::DoNotOptimize(out.data());
    }
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * values.size()));
}

// to_chars into a buffer, then into a string as TextFormatNumber delivers it.
template <class T, class... Format>
void FormatToChars(benchmark::State& state, const std::vector<T>& values, Format... format) {
  std::string out;
  for (auto _ : state) {
    for (T value : values) {
      char buffer[64];
      auto result = std::to_chars(buffer, buffer + sizeof buffer, value, format...);
      out.assign(buffer, result.ptr);
      benchmark::DoNotOptimize(out.data());
    }
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * values.size()));
}

template <class T>
void FormatStream(benchmark::State& state, const std::vector<T>& values) {
  std::string out;
  for (auto _ : state) {
    for (T value : values) {
      std::ostringstream stream;
      stream << value;
      out = stream.str();
      benchmark::DoNotOptimize(out.data());
    }
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * values.size()));
}

void BM_TextFormatNumberInt(benchmark::State& state) { FormatTextFormatNumber(state, Integers()); }
void BM_ToCharsInt(benchmark::State& state) { FormatToChars(state, Integers()); }
void BM_OstringstreamInt(benchmark::State& state) { FormatStream(state, Integers()); }
void BM_TextFormatNumberDouble(benchmark::State& state) { FormatTextFormatNumber(state, Reals()); }
void BM_ToCharsDoubleGeneral6(benchmark::State& state) {
  FormatToChars(state, Reals(), std::chars_format::general, 6);
}
void BM_ToCharsDoubleShortest(benchmark::State& state) { FormatToChars(state, Reals()); }
void BM_OstringstreamDouble(benchmark::State& state) { FormatStream(state, Reals()); }
BENCHMARK(BM_TextFormatNumberInt);
BENCHMARK(BM_ToCharsInt);
BENCHMARK(BM_OstringstreamInt);
BENCHMARK(BM_TextFormatNumberDouble);
BENCHMARK(BM_ToCharsDoubleGeneral6);
BENCHMARK(BM_ToCharsDoubleShortest);
BENCHMARK(BM_OstringstreamDouble);

}  // namespace
