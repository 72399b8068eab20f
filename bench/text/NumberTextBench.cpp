// TextNumeric beside std::from_chars, and TextFormatNumber beside std::to_chars (with the
// same text: the general format with precision 6 for double), beside the fresh
// std::ostringstream whose text it gives and beside one stream reused for every value. Each
// run goes over 1024 values of one set ("values"):
//   int     0: varied lengths, 1: uniform over the whole range;
//   double  0: three decimals between -5000 and 5000, 1: magnitudes from 1e-300 to 1e300.
// Doubles are parsed from their shortest text in plain decimal (TextNumeric has no exponent).
#include <tessera/text/TextFormatNumber.h>
#include <tessera/text/TextNumeric.h>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <random>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

constexpr std::size_t kCount = 1024;

const std::vector<int>& Integers(std::int64_t set) {
  static const std::vector<int> values[2] = {[] {
    std::vector<int> result;
    std::mt19937 random(3);
    for (std::size_t i = 0; i < kCount; ++i)
      result.push_back(static_cast<int>(random()) >> (random() % 31));
    return result;
  }(), [] {
    std::vector<int> result;
    std::mt19937 random(5);
    for (std::size_t i = 0; i < kCount; ++i) result.push_back(static_cast<int>(random()));
    return result;
  }()};
  return values[set];
}

const std::vector<double>& Reals(std::int64_t set) {
  static const std::vector<double> values[2] = {[] {
    std::vector<double> result;
    std::mt19937 random(4);
    for (std::size_t i = 0; i < kCount; ++i)
      result.push_back(static_cast<double>(random() % 10000000) / 1000.0 - 5000.0);
    return result;
  }(), [] {
    std::vector<double> result;
    std::mt19937_64 random(6);
    std::uniform_real_distribution<double> exponent(-300.0, 300.0);
    for (std::size_t i = 0; i < kCount; ++i) {
      const double magnitude = std::pow(10.0, exponent(random));
      result.push_back(random() & 1 ? -magnitude : magnitude);
    }
    return result;
  }()};
  return values[set];
}

template <class T>
std::vector<std::string> Texts(const std::vector<T>& values) {
  std::vector<std::string> texts;
  for (T value : values) {
    char buffer[400];
    std::to_chars_result result;
    if constexpr (std::is_floating_point<T>::value)
      result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed);
    else
      result = std::to_chars(buffer, buffer + sizeof buffer, value);
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

void BM_TextNumericInt(benchmark::State& state) {
  ParseTextNumeric<int>(state, Texts(Integers(state.range(0))));
}
void BM_FromCharsInt(benchmark::State& state) {
  ParseFromChars<int>(state, Texts(Integers(state.range(0))));
}
void BM_TextNumericDouble(benchmark::State& state) {
  ParseTextNumeric<double>(state, Texts(Reals(state.range(0))));
}
void BM_FromCharsDouble(benchmark::State& state) {
  ParseFromChars<double>(state, Texts(Reals(state.range(0))));
}
BENCHMARK(BM_TextNumericInt)->ArgName("values")->Arg(0)->Arg(1);
BENCHMARK(BM_FromCharsInt)->ArgName("values")->Arg(0)->Arg(1);
BENCHMARK(BM_TextNumericDouble)->ArgName("values")->Arg(0)->Arg(1);
BENCHMARK(BM_FromCharsDouble)->ArgName("values")->Arg(0)->Arg(1);

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

// The contract's own form: a fresh stream for every value.
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

// One stream emptied before each value: what a caller who owns a stream pays.
template <class T>
void FormatReusedStream(benchmark::State& state, const std::vector<T>& values) {
  std::string out;
  std::ostringstream stream;
  for (auto _ : state) {
    for (T value : values) {
      stream.str(std::string());
      stream << value;
      out = stream.str();
      benchmark::DoNotOptimize(out.data());
    }
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * values.size()));
}

void BM_TextFormatNumberInt(benchmark::State& state) {
  FormatTextFormatNumber(state, Integers(state.range(0)));
}
void BM_ToCharsInt(benchmark::State& state) { FormatToChars(state, Integers(state.range(0))); }
void BM_OstringstreamInt(benchmark::State& state) { FormatStream(state, Integers(state.range(0))); }
void BM_ReusedStreamInt(benchmark::State& state) {
  FormatReusedStream(state, Integers(state.range(0)));
}
void BM_TextFormatNumberDouble(benchmark::State& state) {
  FormatTextFormatNumber(state, Reals(state.range(0)));
}
void BM_ToCharsDoubleGeneral6(benchmark::State& state) {
  FormatToChars(state, Reals(state.range(0)), std::chars_format::general, 6);
}
void BM_ToCharsDoubleShortest(benchmark::State& state) {
  FormatToChars(state, Reals(state.range(0)));
}
void BM_OstringstreamDouble(benchmark::State& state) {
  FormatStream(state, Reals(state.range(0)));
}
void BM_ReusedStreamDouble(benchmark::State& state) {
  FormatReusedStream(state, Reals(state.range(0)));
}
BENCHMARK(BM_TextFormatNumberInt)->ArgName("values")->Arg(0)->Arg(1);
BENCHMARK(BM_ToCharsInt)->ArgName("values")->Arg(0)->Arg(1);
BENCHMARK(BM_OstringstreamInt)->ArgName("values")->Arg(0)->Arg(1);
BENCHMARK(BM_ReusedStreamInt)->ArgName("values")->Arg(0)->Arg(1);
BENCHMARK(BM_TextFormatNumberDouble)->ArgName("values")->Arg(0)->Arg(1);
BENCHMARK(BM_ToCharsDoubleGeneral6)->ArgName("values")->Arg(0)->Arg(1);
BENCHMARK(BM_ToCharsDoubleShortest)->ArgName("values")->Arg(0)->Arg(1);
BENCHMARK(BM_OstringstreamDouble)->ArgName("values")->Arg(0)->Arg(1);
BENCHMARK(BM_ReusedStreamDouble)->ArgName("values")->Arg(0)->Arg(1);

}  // namespace
