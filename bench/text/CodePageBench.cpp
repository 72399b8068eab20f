// TextWidenCodePage and TextNarrowCodePage for 1252 and 65001 beside ICU's ucnv_toUChars and
// ucnv_fromUChars on a converter opened once, on 1 MiB and 4 KiB of text: Western text with
// accents for 1252, ASCII and mixed scripts for 65001. Each side writes into a destination it
// keeps from one run to the next.
#include <tessera/text/TextConv.h>

#include <cstdint>
#include <string>

#include <unicode/ucnv.h>

#include <benchmark/benchmark.h>

namespace {

std::string Repeat(const std::string& piece, std::size_t size) {
  std::string result;
  while (result.size() + piece.size() <= size) result += piece;
  return result;
}

// Bytes of the page chosen by the benchmark's first argument (0: 1252, 1: 65001 ASCII,
// 2: 65001 mixed), of the size of its second.
const std::string& Bytes(std::int64_t kind, std::int64_t size) {
  static std::string texts[3][2];
  std::string& text = texts[kind][size > 4096];
  if (text.empty()) {
    static const char* const pieces[3] = {
        "Les na\xEFves \xE9l\xE8ves du lyc\xE9" "e, \xE0 l'\xE9t\xE9, \x93" "d\xE9j\xE0 vu\x94 \x80 5.\n",
        "The quick brown fox jumps over the lazy dog; 0123456789 (ASCII only) text.\n",
        "Gr\xC3\xBC\xC3\x9F" "e aus K\xC3\xB6ln, "
        "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82, \xD0\xBC\xD0\xB8\xD1\x80! "
        "\xE4\xBD\xA0\xE5\xA5\xBD\xEF\xBC\x8C\xE4\xB8\x96\xE7\x95\x8C\xE3\x80\x82 "
        "\xF0\x9F\x98\x80 ok.\n"};
    text = Repeat(pieces[kind], static_cast<std::size_t>(size));
  }
  return text;
}

unsigned int CodePage(std::int64_t kind) { return kind == 0 ? 1252 : 65001; }

const std::u16string& Units(std::int64_t kind, std::int64_t size) {
  static std::u16string texts[3][2];
  std::u16string& text = texts[kind][size > 4096];
  if (text.empty()) {
    const std::string& bytes = Bytes(kind, size);
    Tessera::TextWidenCodePage(bytes.data(), static_cast<unsigned int>(bytes.size()), text,
                               CodePage(kind));
  }
  return text;
}

UConverter* Converter(std::int64_t kind) {
  UErrorCode status = U_ZERO_ERROR;
  static UConverter* const windows1252 = ucnv_open("windows-1252", &status);
  static UConverter* const utf8 = ucnv_open("UTF-8", &status);
  return kind == 0 ? windows1252 : utf8;
}

void Cases(benchmark::internal::Benchmark* b) {
  b->ArgNames({"page", "size"});
  for (std::int64_t kind : {0, 1, 2})
    for (std::int64_t size : {4096, 1 << 20}) b->Args({kind, size});
}

void BM_TextWidenCodePage(benchmark::State& state) {
  const std::string& text = Bytes(state.range(0), state.range(1));
  const unsigned int codePage = CodePage(state.range(0));
  std::u16string out;
  for (auto _ : state) {
    Tessera::TextWidenCodePage(text.data(), static_cast<unsigned int>(text.size()), out, codePage);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_TextWidenCodePage)->Apply(Cases);

void BM_IcuToUChars(benchmark::State& state) {
  const std::string& text = Bytes(state.range(0), state.range(1));
  UConverter* converter = Converter(state.range(0));
  std::u16string out(text.size() + 1, u'\0');
  for (auto _ : state) {
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t length =
        ucnv_toUChars(converter, reinterpret_cast<UChar*>(&out[0]), static_cast<std::int32_t>(out.size()),
                      text.data(), static_cast<std::int32_t>(text.size()), &status);
    if (U_FAILURE(status)) state.SkipWithError("ICU failed");
    benchmark::DoNotOptimize(length);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_IcuToUChars)->Apply(Cases);

void BM_TextNarrowCodePage(benchmark::State& state) {
  const std::u16string& text = Units(state.range(0), state.range(1));
  const unsigned int codePage = CodePage(state.range(0));
  std::string out;
  for (auto _ : state) {
    Tessera::TextNarrowCodePage(text.data(), static_cast<unsigned int>(text.size()), out, codePage);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(
      static_cast<std::int64_t>(state.iterations() * Bytes(state.range(0), state.range(1)).size()));
}
BENCHMARK(BM_TextNarrowCodePage)->Apply(Cases);

void BM_IcuFromUChars(benchmark::State& state) {
  const std::u16string& text = Units(state.range(0), state.range(1));
  UConverter* converter = Converter(state.range(0));
  std::string out(text.size() * 3 + 1, '\0');
  for (auto _ : state) {
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t length = ucnv_fromUChars(
        converter, &out[0], static_cast<std::int32_t>(out.size()),
        reinterpret_cast<const UChar*>(text.data()), static_cast<std::int32_t>(text.size()), &status);
    if (U_FAILURE(status)) state.SkipWithError("ICU failed");
    benchmark::DoNotOptimize(length);
  }
  state.SetBytesProcessed(
      static_cast<std::int64_t>(state.iterations() * Bytes(state.range(0), state.range(1)).size()));
}
BENCHMARK(BM_IcuFromUChars)->Apply(Cases);

}  // namespace
