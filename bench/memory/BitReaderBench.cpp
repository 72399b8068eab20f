// BitReader beside what a caller would otherwise write: a reader over a 64-bit window for
// mixed widths, and memcpy for aligned blocks.
#include <tessera/memory/BitReader.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

constexpr unsigned int kStreamBytes = 1 << 16;

const std::vector<unsigned char>& Stream() {
  static const std::vector<unsigned char> bytes = [] {
    std::vector<unsigned char> result(kStreamBytes);
    std::mt19937 generator(1);
    for (unsigned char& byte : result) byte = static_cast<unsigned char>(generator());
    return result;
  }();
  return bytes;
}

// Widths 1 to 32 in a fixed shuffled order, as a codec's fields come.
const std::vector<unsigned int>& Widths() {
  static const std::vector<unsigned int> widths = [] {
    std::vector<unsigned int> result;
    std::mt19937 generator(2);
    for (int i = 0; i < 4096; ++i) result.push_back(1 + generator() % 32);
    return result;
  }();
  return widths;
}

void BM_BitReaderReadBitsMixed(benchmark::State& state) {
  const std::vector<unsigned char>& stream = Stream();
  const std::vector<unsigned int>& widths = Widths();
  std::uint64_t bits = 0;
  for (auto _ : state) {
    Tessera::BitReader reader(stream.data(), kStreamBytes * 8);
    unsigned int sum = 0;
    for (unsigned int width : widths) sum += reader.ReadBits(width);
    benchmark::DoNotOptimize(sum);
  }
  for (unsigned int width : widths) bits += width;
  state.SetItemsProcessed(state.iterations() * widths.size());
  state.SetBytesProcessed(state.iterations() * bits / 8);
}
BENCHMARK(BM_BitReaderReadBitsMixed);

// The reader a caller would write: eight bytes loaded, swapped and shifted for each read,
// with no checks, as the stream has bytes to spare behind the last read.
class WindowReader {
 public:
  explicit WindowReader(const unsigned char* data) : data_(data) {}
  unsigned int Read(unsigned int count) {
    std::uint64_t window;
    std::memcpy(&window, data_ + (position_ >> 3), sizeof window);
    window = __builtin_bswap64(window) << (position_ & 7);
    position_ += count;
    return static_cast<unsigned int>(window >> (64 - count));
  }

 private:
  const unsigned char* data_;
  std::uint32_t position_ = 0;
};

void BM_WindowReadBitsMixed(benchmark::State& state) {
  const std::vector<unsigned char>& stream = Stream();
  const std::vector<unsigned int>& widths = Widths();
  std::uint64_t bits = 0;
  {
    Tessera::BitReader reader(stream.data(), kStreamBytes * 8);
    WindowReader window(stream.data());
    for (unsigned int width : widths)
      if (reader.ReadBits(width) != window.Read(width)) state.SkipWithError("readers disagree");
  }
  for (auto _ : state) {
    WindowReader reader(stream.data());
    unsigned int sum = 0;
    for (unsigned int width : widths) sum += reader.Read(width);
    benchmark::DoNotOptimize(sum);
  }
  for (unsigned int width : widths) bits += width;
  state.SetItemsProcessed(state.iterations() * widths.size());
  state.SetBytesProcessed(state.iterations() * bits / 8);
}
BENCHMARK(BM_WindowReadBitsMixed);

void BM_BitReaderReadDataAligned(benchmark::State& state) {
  const std::vector<unsigned char>& stream = Stream();
  const unsigned int block = static_cast<unsigned int>(state.range(0));
  std::vector<unsigned char> target(block);
  for (auto _ : state) {
    Tessera::BitReader reader(stream.data(), kStreamBytes * 8);
    for (unsigned int done = 0; done + block <= kStreamBytes; done += block) reader.ReadData(target.data(), block * 8, 0);
    benchmark::DoNotOptimize(target.data());
  }
  state.SetBytesProcessed(state.iterations() * (kStreamBytes / block) * block);
}
BENCHMARK(BM_BitReaderReadDataAligned)->Arg(64)->Arg(4096);

void BM_MemcpyAligned(benchmark::State& state) {
  const std::vector<unsigned char>& stream = Stream();
  const unsigned int block = static_cast<unsigned int>(state.range(0));
  std::vector<unsigned char> target(block);
  for (auto _ : state) {
    for (unsigned int done = 0; done + block <= kStreamBytes; done += block) {
      std::memcpy(target.data(), stream.data() + done, block);
      benchmark::ClobberMemory();
    }
    benchmark::DoNotOptimize(target.data());
  }
  state.SetBytesProcessed(state.iterations() * (kStreamBytes / block) * block);
}
BENCHMARK(BM_MemcpyAligned)->Arg(64)->Arg(4096);

void BM_BitReaderReadDataUnaligned(benchmark::State& state) {
  const std::vector<unsigned char>& stream = Stream();
  const unsigned int block = 4096;
  std::vector<unsigned char> target(block + 1);
  for (auto _ : state) {
    Tessera::BitReader reader(stream.data(), kStreamBytes * 8);
    reader.SkipBits(3);
    for (unsigned int done = 0; done + block + 1 <= kStreamBytes; done += block) reader.ReadData(target.data(), block * 8, 0);
    benchmark::DoNotOptimize(target.data());
  }
  state.SetBytesProcessed(state.iterations() * (kStreamBytes / block - 1) * block);
}
BENCHMARK(BM_BitReaderReadDataUnaligned);

}  // namespace
