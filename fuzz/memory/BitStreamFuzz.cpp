// Drives a BitWriter and then a BitReader through the same operations, decoded from the
// input, over memory of exactly the stream's size. Every result is compared with a model
// that keeps one bool per bit; a failed call must leave position and memory unchanged.
#include <tessera/memory/BitReader.h>
#include <tessera/memory/BitWriter.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <plaint/Error.h>

namespace {

class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
  bool Empty() const { return used_ >= size_; }
  std::uint32_t Take(unsigned int bytes) {
    std::uint32_t value = 0;
    for (unsigned int i = 0; i < bytes; ++i) value = (value << 8) | (used_ < size_ ? data_[used_++] : 0);
    return value;
  }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t used_ = 0;
};

struct Operation {
  unsigned int kind;
  std::uint32_t count;
  std::uint32_t value;
  std::uint32_t offset;
  std::string text;
};

bool BitOf(const unsigned char* bytes, std::uint64_t p) { return (bytes[p / 8] >> (7 - p % 8)) & 1; }

void Check(bool condition) {
  if (!condition) std::abort();
}

// The count of an operation: mostly small, sometimes huge so that the range checks see it.
std::uint32_t TakeCount(Input& input) {
  const std::uint32_t selector = input.Take(1);
  if (selector >= 0xF8) return 0xFFFFFFFFu - input.Take(1);
  if (selector >= 0xF0) return input.Take(4);
  return selector;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  const std::uint32_t capacity = input.Take(2) % 4096;
  const std::size_t bytes = (capacity + 7) / 8;
  std::unique_ptr<unsigned char[]> memory(new unsigned char[bytes == 0 ? 1 : bytes]);
  for (std::size_t i = 0; i < bytes; ++i) memory[i] = static_cast<unsigned char>(i * 131 + 7);
  std::vector<bool> model(capacity);
  for (std::uint32_t p = 0; p < capacity; ++p) model[p] = BitOf(memory.get(), p);

  std::vector<Operation> done;
  Tessera::BitWriter writer(memory.get(), capacity);
  std::uint64_t position = 0;
  while (!input.Empty() && done.size() < 256) {
    Operation op{input.Take(1) % 5, TakeCount(input), 0, 0, {}};
    std::vector<unsigned char> source;
    if (op.kind == 1) op.value = input.Take(4);
    if (op.kind == 2) {
      op.count = op.count % 64;
      for (std::uint32_t i = 0; i < op.count; ++i) op.text.push_back(input.Take(1) & 1 ? '1' : '0');
      if (input.Take(1) & 1) op.count = 0xFFFFFFFFu;
    }
    if (op.kind == 3) {
      op.offset = input.Take(1) % 24;
      const std::uint64_t sourceBits = op.offset + std::uint64_t{op.count};
      if (sourceBits > 8 * 1024) continue;
      source.resize((sourceBits + 7) / 8);
      for (unsigned char& byte : source) byte = static_cast<unsigned char>(input.Take(1));
    }
    const std::uint64_t bitsMoved = op.kind == 0 ? 1 : op.kind == 2 ? op.text.size() : op.count;
    const bool tooMany = op.kind == 1 && op.count > 32;
    const bool fits = position + bitsMoved <= capacity;
    const bool moves = op.kind == 1 && op.count == 0 ? false : !(op.kind == 2 && op.text.empty());
    const std::vector<bool> before = model;
    bool threw = false;
    try {
      switch (op.kind) {
        case 0: writer.WriteBit(op.value & 1); break;
        case 1: writer.WriteBits(op.count, op.value); break;
        case 2: writer.WriteBits(op.text.c_str(), op.count); break;
        case 3: writer.WriteData(source.data(), op.count, op.offset); break;
        default: writer.SkipBits(op.count); break;
      }
    } catch (const Plaint::OutOfRange&) {
      Check(moves && tooMany);
      threw = true;
    } catch (const Plaint::LengthError&) {
      Check(moves && !tooMany && !fits);
      threw = true;
    }
    if (threw || !moves) {
      Check(writer.GetBitCount() == position);
    } else {
      Check(!tooMany && fits);
      for (std::uint64_t i = 0; i < bitsMoved; ++i) {
        bool bit = model[position + i];
        switch (op.kind) {
          case 0: bit = op.value & 1; break;
          case 1: bit = (op.value >> (bitsMoved - 1 - i)) & 1; break;
          case 2: bit = op.text[i] == '0'; break;
          case 3: bit = BitOf(source.data(), op.offset + i); break;
          default: break;
        }
        model[position + i] = bit;
      }
      position += bitsMoved;
      Check(writer.GetBitCount() == position);
      done.push_back(op);
    }
    for (std::uint32_t p = 0; p < capacity; ++p) Check(BitOf(memory.get(), p) == model[p]);
  }

  // The reader walks the same successful operations and finds what the model holds.
  Tessera::BitReader reader(memory.get(), capacity);
  position = 0;
  for (const Operation& op : done) {
    switch (op.kind) {
      case 0: Check(reader.ReadBit() == model[position]); position += 1; break;
      case 1: {
        std::uint32_t expected = 0;
        for (std::uint32_t i = 0; i < op.count; ++i) expected = (expected << 1) | model[position + i];
        Check(reader.ReadBits(op.count) == expected);
        position += op.count;
        break;
      }
      case 2:
      case 3: {
        const std::uint32_t count = op.kind == 2 ? static_cast<std::uint32_t>(op.text.size()) : op.count;
        const std::uint32_t offset = op.kind == 3 ? op.offset : count % 11;
        const std::size_t targetBytes = (std::uint64_t{offset} + count + 7) / 8;
        std::unique_ptr<unsigned char[]> target(new unsigned char[targetBytes == 0 ? 1 : targetBytes]);
        std::memset(target.get(), 0xA5, targetBytes);
        reader.ReadData(target.get(), count, offset);
        for (std::uint64_t p = 0; p < std::uint64_t{targetBytes} * 8; ++p) {
          const bool inside = p >= offset && p < std::uint64_t{offset} + count;
          Check(BitOf(target.get(), p) == (inside ? bool(model[position + p - offset]) : ((0xA5 >> (7 - p % 8)) & 1) != 0));
        }
        position += count;
        break;
      }
      default: reader.SkipBits(op.count); position += op.count; break;
    }
  }
  // Past the end every read fails.
  if (position == capacity) {
    bool threw = false;
    try {
      reader.ReadBit();
    } catch (const Plaint::LengthError&) {
      threw = true;
    }
    Check(threw);
  }
  return 0;
}
