// TextFind beside std::string_view::find and glibc's memmem: a 12-byte needle at the very
// end of 64 KiB of running prose, so every search reads the whole text. Needle 0 starts with
// a letter that is everywhere in the prose, needle 1 with one that is nowhere in it (which
// lets a search that hunts the first byte with memchr race through). BM_TextSearchForms runs
// the other forms over the same text: wide, caseless, backward, and the compares.
#include <tessera/text/TextCompare.h>

#include <cstring>
#include <string>
#include <string_view>

#include <benchmark/benchmark.h>

namespace {

constexpr std::size_t kTextSize = 64 * 1024;
const char* const kNeedles[] = {"the ultimate", "quintessence"};  // 12 bytes each

const std::string& Haystack(std::int64_t needle) {
  static std::string texts[2];
  std::string& text = texts[needle];
  if (text.empty())
    text = [needle] {
      const std::string prose =
          "It was the best of times, it was the worst of times, it was the age of wisdom, it was "
          "the age of foolishness, it was the epoch of belief, it was the epoch of incredulity, "
          "it was the season of Light, it was the season of Darkness. ";
      std::string result;
      while (result.size() < kTextSize - 12) result += prose;
      result.resize(kTextSize - 12);
      return result + kNeedles[needle];
    }();
  return text;
}

void BM_TextFind(benchmark::State& state) {
  const std::string& text = Haystack(state.range(0));
  const char* needle = kNeedles[state.range(0)];
  for (auto _ : state) {
    benchmark::DoNotOptimize(text.data());
    unsigned int at =
        Tessera::TextFind(text.data(), static_cast<unsigned int>(text.size()), needle, 12);
    benchmark::DoNotOptimize(at);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_TextFind)->ArgName("needle")->Arg(0)->Arg(1);

void BM_StringViewFind(benchmark::State& state) {
  const std::string_view text = Haystack(state.range(0));
  const char* needle = kNeedles[state.range(0)];
  for (auto _ : state) {
    benchmark::DoNotOptimize(text.data());
    std::size_t at = text.find(std::string_view(needle, 12));
    benchmark::DoNotOptimize(at);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_StringViewFind)->ArgName("needle")->Arg(0)->Arg(1);

void BM_Memmem(benchmark::State& state) {
  const std::string& text = Haystack(state.range(0));
  const char* needle = kNeedles[state.range(0)];
  for (auto _ : state) {
    benchmark::DoNotOptimize(text.data());
    const void* at = memmem(text.data(), text.size(), needle, 12);
    benchmark::DoNotOptimize(at);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_Memmem)->ArgName("needle")->Arg(0)->Arg(1);

// The forms other than the narrow TextFind, each made to read the whole text of needle 0: the
// backward ones seek a text that isn't there, the compares two equal texts.
void BM_TextSearchForms(benchmark::State& state) {
  const std::string& text = Haystack(0);
  const std::u16string wide(text.begin(), text.end());
  std::string upper = text;
  for (char& c : upper)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  const std::u16string wideUpper(upper.begin(), upper.end());
  const std::u16string wideCopy = wide;
  const auto n = static_cast<unsigned int>(text.size());
  const std::int64_t form = state.range(0);
  for (auto _ : state) {
    benchmark::DoNotOptimize(text.data());
    benchmark::DoNotOptimize(wide.data());
    unsigned int at = 0;
    // clang-format off
    switch (form) {
      case 0: at = Tessera::TextFind(wide.data(), n, u"the ultimate", 12); break;
      case 1: at = Tessera::TextRFind(wide.data(), n, u"the ultimatx", 12); break;
      case 2: at = Tessera::TextFindCaseless(text.data(), n, "THE ULTIMATE", 12); break;
      case 3: at = Tessera::TextFindCaseless(wide.data(), n, u"THE ULTIMATE", 12); break;
      case 4: at = Tessera::TextRFindCaseless(text.data(), n, "THE ULTIMATX", 12); break;
      case 5: at = Tessera::TextRFindCaseless(wide.data(), n, u"THE ULTIMATX", 12); break;
      case 6: at = Tessera::TextFindFirstOf(wide.data(), n, u"#%&*+/<=>@", 10); break;
      case 7: at = Tessera::TextCompare(wide.data(), n, wideCopy.data(), n); break;
      case 8: at = Tessera::TextCompareCaseless(wide.data(), n, wideUpper.data(), n); break;
      default: at = Tessera::TextCompareCaseless(text.data(), n, upper.data(), n); break;
    }
    // clang-format on
    benchmark::DoNotOptimize(at);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_TextSearchForms)->ArgName("form")->DenseRange(0, 9);

}  // namespace

BENCHMARK_MAIN();
