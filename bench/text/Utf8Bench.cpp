// TextWidenUtf8 and TextNarrowUtf8 beside ICU's u_strFromUTF8 and u_strToUTF8, on 1 MiB of
// ASCII and on 1 MiB of mixed text (Latin with accents, Cyrillic, CJK, emoji). Each side
// writes into a destination it keeps from one run to the next.
#include <tessera/text/Utf8.h>

#include <string>

#include <unicode/ustring.h>
#include <unicode/utypes.h>

#include <benchmark/benchmark.h>

namespace {

constexpr std::size_t kTextSize = 1 << 20;

std::string Repeat(const std::string& piece) {
  std::string result;
  while (result.size() + piece.size() <= kTextSize) result += piece;
  return result;
}

const std::string& Utf8Text(bool mixed) {
  static const std::string ascii =
      Repeat("The quick brown fox jumps over the lazy dog; 0123456789 (ASCII only) text.\n");
  static const std::string other = Repeat(
      "Gr\xC3\xBC\xC3\x9F"
      "e aus K\xC3\xB6ln, \xC3\xA7"
      "a va? "
      "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82, \xD0\xBC\xD0\xB8\xD1\x80! "
      "\xE4\xBD\xA0\xE5\xA5\xBD\xEF\xBC\x8C\xE4\xB8\x96\xE7\x95\x8C\xE3\x80\x82 "
      "\xF0\x9F\x98\x80\xF0\x9F\x8E\x89 ok.\n");
  return mixed ? other : ascii;
}

const std::u16string& Utf16Text(bool mixed) {
  static const std::u16string ascii = [] {
    std::u16string out;
    Tessera::TextWidenUtf8(Utf8Text(false).data(),
                           static_cast<unsigned int>(Utf8Text(false).size()), out);
    return out;
  }();
  static const std::u16string other = [] {
    std::u16string out;
    Tessera::TextWidenUtf8(Utf8Text(true).data(), static_cast<unsigned int>(Utf8Text(true).size()),
                           out);
    return out;
  }();
  return mixed ? other : ascii;
}

void BM_TextWidenUtf8(benchmark::State& state) {
  const std::string& text = Utf8Text(state.range(0) != 0);
  std::u16string out;
  for (auto _ : state) {
    Tessera::TextWidenUtf8(text.data(), static_cast<unsigned int>(text.size()), out);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_TextWidenUtf8)->ArgName("mixed")->Arg(0)->Arg(1);

void BM_IcuStrFromUtf8(benchmark::State& state) {
  const std::string& text = Utf8Text(state.range(0) != 0);
  std::u16string out(text.size(), u'\0');
  for (auto _ : state) {
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = 0;
    u_strFromUTF8(reinterpret_cast<UChar*>(&out[0]), static_cast<int32_t>(out.size()), &length,
                  text.data(), static_cast<int32_t>(text.size()), &status);
    if (U_FAILURE(status)) state.SkipWithError("ICU failed");
    benchmark::DoNotOptimize(length);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_IcuStrFromUtf8)->ArgName("mixed")->Arg(0)->Arg(1);

void BM_TextNarrowUtf8(benchmark::State& state) {
  const std::u16string& text = Utf16Text(state.range(0) != 0);
  std::string out;
  for (auto _ : state) {
    Tessera::TextNarrowUtf8(text.data(), static_cast<unsigned int>(text.size()), out);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(
      static_cast<std::int64_t>(state.iterations() * Utf8Text(state.range(0) != 0).size()));
}
BENCHMARK(BM_TextNarrowUtf8)->ArgName("mixed")->Arg(0)->Arg(1);

void BM_IcuStrToUtf8(benchmark::State& state) {
  const std::u16string& text = Utf16Text(state.range(0) != 0);
  std::string out(text.size() * 3, '\0');
  for (auto _ : state) {
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = 0;
    u_strToUTF8(&out[0], static_cast<int32_t>(out.size()), &length,
                reinterpret_cast<const UChar*>(text.data()), static_cast<int32_t>(text.size()),
                &status);
    if (U_FAILURE(status)) state.SkipWithError("ICU failed");
    benchmark::DoNotOptimize(length);
  }
  state.SetBytesProcessed(
      static_cast<std::int64_t>(state.iterations() * Utf8Text(state.range(0) != 0).size()));
}
BENCHMARK(BM_IcuStrToUtf8)->ArgName("mixed")->Arg(0)->Arg(1);

}  // namespace
