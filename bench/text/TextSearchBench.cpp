// TextFind beside std::string_view::find and glibc's memmem: a 12-byte needle at the very
// end of 64 KiB of haystack, so every search reads the whole text. The cases:
//   0  English prose, a needle starting with a letter that is everywhere in it;
//   1  the same prose, a needle starting with a letter that is nowhere in it (which lets a
//      search that hunts the first byte with memchr race through);
//   2  the same prose, a needle of its most frequent bytes only;
//   3  Cyrillic prose in UTF-8, a needle of six Cyrillic letters;
//   4  random lower-case letters;
//   5  random bytes.
// BM_TextSearchForms runs the other forms over the prose of case 0: wide, caseless,
// backward, and the compares.
#include <tessera/text/TextCompare.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <string_view>

#include <benchmark/benchmark.h>

namespace {

constexpr std::size_t kTextSize = 64 * 1024;
constexpr int kCases = 6;

std::string Repeat(const std::string& piece, std::size_t size) {
  std::string result;
  while (result.size() < size) result += piece;
  result.resize(size);
  return result;
}

std::string Random(std::uint32_t seed, std::size_t size, unsigned int letters) {
  std::mt19937 random(seed);
  std::string result(size, '\0');
  for (char& c : result)
    c = static_cast<char>(letters != 0 ? 'a' + random() % letters : random() & 0xFF);
  return result;
}

const std::string kProse =
    "It was the best of times, it was the worst of times, it was the age of wisdom, it was "
    "the age of foolishness, it was the epoch of belief, it was the epoch of incredulity, "
    "it was the season of Light, it was the season of Darkness. ";

// "Это было лучшее из всех времён, это было худшее из всех времён; то был век мудрости, век
// безумия, эпоха веры, эпоха безверия, пора света, пора тьмы. "
const std::string kCyrillicProse =
    "\xD0\xAD\xD1\x82\xD0\xBE \xD0\xB1\xD1\x8B\xD0\xBB\xD0\xBE \xD0\xBB\xD1\x83\xD1\x87\xD1\x88"
    "\xD0\xB5\xD0\xB5 \xD0\xB8\xD0\xB7 \xD0\xB2\xD1\x81\xD0\xB5\xD1\x85 \xD0\xB2\xD1\x80\xD0\xB5"
    "\xD0\xBC\xD1\x91\xD0\xBD, \xD1\x8D\xD1\x82\xD0\xBE \xD0\xB1\xD1\x8B\xD0\xBB\xD0\xBE \xD1\x85"
    "\xD1\x83\xD0\xB4\xD1\x88\xD0\xB5\xD0\xB5 \xD0\xB8\xD0\xB7 \xD0\xB2\xD1\x81\xD0\xB5\xD1\x85 "
    "\xD0\xB2\xD1\x80\xD0\xB5\xD0\xBC\xD1\x91\xD0\xBD; \xD1\x82\xD0\xBE \xD0\xB1\xD1\x8B\xD0\xBB "
    "\xD0\xB2\xD0\xB5\xD0\xBA \xD0\xBC\xD1\x83\xD0\xB4\xD1\x80\xD0\xBE\xD1\x81\xD1\x82\xD0\xB8, "
    "\xD0\xB2\xD0\xB5\xD0\xBA \xD0\xB1\xD0\xB5\xD0\xB7\xD1\x83\xD0\xBC\xD0\xB8\xD1\x8F, \xD1\x8D"
    "\xD0\xBF\xD0\xBE\xD1\x85\xD0\xB0 \xD0\xB2\xD0\xB5\xD1\x80\xD1\x8B, \xD1\x8D\xD0\xBF\xD0\xBE"
    "\xD1\x85\xD0\xB0 \xD0\xB1\xD0\xB5\xD0\xB7\xD0\xB2\xD0\xB5\xD1\x80\xD0\xB8\xD1\x8F, \xD0\xBF"
    "\xD0\xBE\xD1\x80\xD0\xB0 \xD1\x81\xD0\xB2\xD0\xB5\xD1\x82\xD0\xB0, \xD0\xBF\xD0\xBE\xD1\x80"
    "\xD0\xB0 \xD1\x82\xD1\x8C\xD0\xBC\xD1\x8B. ";

// The needle of each case, 12 bytes; none stands in its haystack before the end.
const std::string& Needle(std::int64_t which) {
  static const std::string needles[kCases] = {
      "the ultimate", "quintessence", "the tea nest",
      "\xD1\x80\xD0\xB0\xD0\xB4\xD1\x83\xD0\xB3\xD0\xB0",  // "радуга"
      Random(7, 12, 26), Random(8, 12, 0)};
  return needles[which];
}

const std::string& Haystack(std::int64_t which) {
  static std::string texts[kCases];
  std::string& text = texts[which];
  if (text.empty()) {
    const std::size_t size = kTextSize - 12;
    switch (which) {
      case 3: text = Repeat(kCyrillicProse, size); break;
      case 4: text = Random(5, size, 26); break;
      case 5: text = Random(6, size, 0); break;
      default: text = Repeat(kProse, size); break;
    }
    // A character cut at the end would let the needle start inside it.
    if (which == 3)
      while ((text.back() & 0xC0) == 0x80 || (text.back() & 0xC0) == 0xC0) text.pop_back();
    text += Needle(which);
  }
  return text;
}

void BM_TextFind(benchmark::State& state) {
  const std::string& text = Haystack(state.range(0));
  const std::string& needle = Needle(state.range(0));
  if (Tessera::TextFind(text.data(), static_cast<unsigned int>(text.size()), needle.data(), 12) !=
      text.size() - 12)
    state.SkipWithError("needle found elsewhere");
  for (auto _ : state) {
    benchmark::DoNotOptimize(text.data());
    unsigned int at =
        Tessera::TextFind(text.data(), static_cast<unsigned int>(text.size()), needle.data(), 12);
    benchmark::DoNotOptimize(at);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_TextFind)->ArgName("case")->DenseRange(0, kCases - 1);

void BM_StringViewFind(benchmark::State& state) {
  const std::string_view text = Haystack(state.range(0));
  const std::string_view needle = Needle(state.range(0));
  for (auto _ : state) {
    benchmark::DoNotOptimize(text.data());
    std::size_t at = text.find(needle);
    benchmark::DoNotOptimize(at);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_StringViewFind)->ArgName("case")->DenseRange(0, kCases - 1);

void BM_Memmem(benchmark::State& state) {
  const std::string& text = Haystack(state.range(0));
  const std::string& needle = Needle(state.range(0));
  for (auto _ : state) {
    benchmark::DoNotOptimize(text.data());
    const void* at = memmem(text.data(), text.size(), needle.data(), 12);
    benchmark::DoNotOptimize(at);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_Memmem)->ArgName("case")->DenseRange(0, kCases - 1);

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
