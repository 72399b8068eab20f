// TextWidenUtf8 and TextNarrowUtf8 beside ICU's u_strFromUTF8 and u_strToUTF8, on ASCII and
// on mixed text (Latin with accents, Cyrillic, CJK, emoji), of 16, 32 and 256 bytes and of
// 1 MiB. Each side writes into a destination it keeps from one run to the next.
#include <tessera/text/Utf8.h>

#include <cstdint>
#include <map>
#include <string>
#include <utility>

#include <unicode/ustring.h>
#include <unicode/utypes.h>

#include <benchmark/benchmark.h>

namespace {

constexpr std::int64_t kLargeSize = 1 << 20;

// The piece repeated up to `size` bytes, cut before the character that would pass it. The
// mixed piece has every length of sequence within its first 16 bytes.
std::string Repeat(bool mixed, std::size_t size) {
  const std::string piece =
      mixed ? "K\xC3\xB6ln \xD0\x9F\xD1\x80\xD0\xB8 \xE4\xBD\xA0\xF0\x9F\x98\x80 ok, "
              "Gr\xC3\xBC\xC3\x9F"
              "e, \xC3\xA7"
              "a va? "
              "\xD0\xB2\xD0\xB5\xD1\x82, \xD0\xBC\xD0\xB8\xD1\x80! "
              "\xE5\xA5\xBD\xEF\xBC\x8C\xE4\xB8\x96\xE7\x95\x8C\xE3\x80\x82 "
              "\xF0\x9F\x8E\x89 aus K\xC3\xB6ln.\n"
            : "The quick brown fox jumps over the lazy dog; 0123456789 (ASCII only) text.\n";
  std::string result;
  while (result.size() < size) result += piece;
  std::size_t end = size;
  while ((static_cast<unsigned char>(result[end]) & 0xC0) == 0x80) --end;
  result.resize(end);
  return result;
}

const std::string& Utf8Text(std::int64_t size, bool mixed) {
  static std::map<std::pair<std::int64_t, bool>, std::string> texts;
  std::string& text = texts[{size, mixed}];
  if (text.empty()) text = Repeat(mixed, static_cast<std::size_t>(size));
  return text;
}

const std::u16string& Utf16Text(std::int64_t size, bool mixed) {
  static std::map<std::pair<std::int64_t, bool>, std::u16string> texts;
  std::u16string& text = texts[{size, mixed}];
  if (text.empty()) {
    const std::string& utf8 = Utf8Text(size, mixed);
    Tessera::TextWidenUtf8(utf8.data(), static_cast<unsigned int>(utf8.size()), text);
  }
  return text;
}

void Sizes(benchmark::internal::Benchmark* b) {
  b->ArgNames({"bytes", "mixed"});
  for (std::int64_t size : {std::int64_t{16}, std::int64_t{32}, std::int64_t{256}, kLargeSize})
    for (std::int64_t mixed : {0, 1}) b->Args({size, mixed});
}

void BM_TextWidenUtf8(benchmark::State& state) {
  const std::string& text = Utf8Text(state.range(0), state.range(1) != 0);
  std::u16string out;
  for (auto _ : state) {
    Tessera::TextWidenUtf8(text.data(), static_cast<unsigned int>(text.size()), out);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_TextWidenUtf8)->Apply(Sizes);

void BM_IcuStrFromUtf8(benchmark::State& state) {
  const std::string& text = Utf8Text(state.range(0), state.range(1) != 0);
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
BENCHMARK(BM_IcuStrFromUtf8)->Apply(Sizes);

void BM_TextNarrowUtf8(benchmark::State& state) {
  const std::u16string& text = Utf16Text(state.range(0), state.range(1) != 0);
  std::string out;
  for (auto _ : state) {
    Tessera::TextNarrowUtf8(text.data(), static_cast<unsigned int>(text.size()), out);
    benchmark::DoNotOptimize(out.data());
  }
  const std::size_t bytes = Utf8Text(state.range(0), state.range(1) != 0).size();
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
}
BENCHMARK(BM_TextNarrowUtf8)->Apply(Sizes);

void BM_IcuStrToUtf8(benchmark::State& state) {
  const std::u16string& text = Utf16Text(state.range(0), state.range(1) != 0);
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
  const std::size_t bytes = Utf8Text(state.range(0), state.range(1) != 0).size();
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
}
BENCHMARK(BM_IcuStrToUtf8)->Apply(Sizes);

}  // namespace
