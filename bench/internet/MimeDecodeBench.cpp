// MimeQuotedPrintableDecode beside POCO's QuotedPrintableDecoder stream (read at once into a
// buffer), on 1 KiB and 64 KiB of French text with escapes for its accents and CRLF lines.
#include <tessera/internet/MimeDecode.h>

#include <cstdint>
#include <sstream>
#include <string>

#include <Poco/Net/QuotedPrintableDecoder.h>

#include <benchmark/benchmark.h>

namespace {

std::string Text(std::int64_t size) {
  const std::string line =
      "Les na=EFves =E9l=E8ves du lyc=E9e ont appris =E0 lire en =E9t=E9, d=E9j=E0 en 1998.\r\n";
  std::string text;
  while (text.size() + line.size() <= static_cast<std::size_t>(size)) text += line;
  return text;
}

void Sizes(benchmark::internal::Benchmark* b) { b->Arg(1 << 10)->Arg(1 << 16); }

void BM_MimeQuotedPrintableDecode(benchmark::State& state) {
  const std::string text = Text(state.range(0));
  std::string out;
  for (auto _ : state) {
    if (!Tessera::MimeQuotedPrintableDecode(text.data(), static_cast<unsigned int>(text.size()),
                                            out, false))
      state.SkipWithError("refused");
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_MimeQuotedPrintableDecode)->Apply(Sizes);

void BM_PocoQuotedPrintableDecoder(benchmark::State& state) {
  const std::string text = Text(state.range(0));
  std::string out(text.size(), '\0');
  for (auto _ : state) {
    std::istringstream stream(text);
    Poco::Net::QuotedPrintableDecoder decoder(stream);
    decoder.read(&out[0], static_cast<std::streamsize>(out.size()));
    benchmark::DoNotOptimize(decoder.gcount());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_PocoQuotedPrintableDecoder)->Apply(Sizes);

}  // namespace
