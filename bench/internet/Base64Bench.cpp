// Base64Encode and Base64Decode beside POCO's Base64Encoder and Base64Decoder streams (no line
// breaks, the whole buffer written or read at once), on 1 KiB, 64 KiB and 1 MiB of bytes.
#include <tessera/internet/Base64.h>

#include <cstdint>
#include <sstream>
#include <string>

#include <Poco/Base64Decoder.h>
#include <Poco/Base64Encoder.h>

#include <benchmark/benchmark.h>

namespace {

std::string Bytes(std::int64_t size) {
  std::string bytes(static_cast<std::size_t>(size), '\0');
  std::uint32_t state = 12345;
  for (char& byte : bytes) {
    state = state * 1103515245 + 12345;
    byte = static_cast<char>(state >> 23);
  }
  return bytes;
}

std::string Encoded(std::int64_t size) {
  std::string out;
  const std::string bytes = Bytes(size);
  Tessera::Base64Encode(bytes.data(), static_cast<unsigned int>(bytes.size()), out);
  return out;
}

void Sizes(benchmark::internal::Benchmark* b) { b->Arg(1 << 10)->Arg(1 << 16)->Arg(1 << 20); }

void BM_Base64Encode(benchmark::State& state) {
  const std::string bytes = Bytes(state.range(0));
  std::string out;
  for (auto _ : state) {
    Tessera::Base64Encode(bytes.data(), static_cast<unsigned int>(bytes.size()), out);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes.size()));
}
BENCHMARK(BM_Base64Encode)->Apply(Sizes);

void BM_PocoBase64Encoder(benchmark::State& state) {
  const std::string bytes = Bytes(state.range(0));
  for (auto _ : state) {
    std::ostringstream stream;
    Poco::Base64Encoder encoder(stream);
    encoder.rdbuf()->setLineLength(0);
    encoder.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    encoder.close();
    benchmark::DoNotOptimize(stream.str().size());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes.size()));
}
BENCHMARK(BM_PocoBase64Encoder)->Apply(Sizes);

void BM_Base64Decode(benchmark::State& state) {
  const std::string text = Encoded(state.range(0));
  std::string out;
  for (auto _ : state) {
    if (!Tessera::Base64Decode(text.data(), static_cast<unsigned int>(text.size()), out))
      state.SkipWithError("refused");
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * state.range(0)));
}
BENCHMARK(BM_Base64Decode)->Apply(Sizes);

void BM_PocoBase64Decoder(benchmark::State& state) {
  const std::string text = Encoded(state.range(0));
  std::string out(static_cast<std::size_t>(state.range(0)), '\0');
  for (auto _ : state) {
    std::istringstream stream(text);
    Poco::Base64Decoder decoder(stream);
    decoder.read(&out[0], static_cast<std::streamsize>(out.size()));
    benchmark::DoNotOptimize(decoder.gcount());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * state.range(0)));
}
BENCHMARK(BM_PocoBase64Decoder)->Apply(Sizes);

}  // namespace
