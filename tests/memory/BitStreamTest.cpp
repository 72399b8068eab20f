#include <tessera/memory/BitReader.h>
#include <tessera/memory/BitWriter.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <plaint/Error.h>

using Tessera::BitReader;
using Tessera::BitWriter;

namespace {

// Bit p of a byte array in stream order: the model the streams are checked against.
bool BitOf(const unsigned char* bytes, std::uint32_t p) { return (bytes[p / 8] >> (7 - p % 8)) & 1; }

// Runs `call` and checks that it throws Error with the given message and function.
template <class Error, class Call>
void ExpectError(Call call, const char* message, const char* function) {
  try {
    call();
    ADD_FAILURE() << "no exception from " << function;
  } catch (const Error& error) {
    EXPECT_STREQ(error.what(), message);
    EXPECT_STREQ(error.GetContext().function, function);
  }
}
#define EXPECT_FULL(call, function) \
  ExpectError<Plaint::LengthError>([&] { call; }, "buffer capacity exceeded", function)
#define EXPECT_TOO_MANY(call, function) ExpectError<Plaint::OutOfRange>([&] { call; }, "too many bits", function)

std::vector<unsigned char> RandomBytes(std::size_t size, std::uint32_t seed) {
  std::mt19937 generator(seed);
  std::vector<unsigned char> bytes(size);
  for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(generator());
  return bytes;
}

}  // namespace

TEST(BitReader, ReadsMostSignificantBitFirstAndChecksInOrder) {
  const unsigned char byte = 0xA5;
  BitReader reader(&byte, 8);
  for (bool bit : {true, false, true, false, false, true, false, true}) EXPECT_EQ(reader.ReadBit(), bit);
  EXPECT_FULL(reader.ReadBit(), "Tessera::BitReader::ReadBit");
  EXPECT_EQ(reader.ReadBits(0), 0u);  // no check at all for 0 bits
  EXPECT_TOO_MANY(reader.ReadBits(33), "Tessera::BitReader::ReadBits");  // before the room test
  EXPECT_FULL(reader.ReadBits(1), "Tessera::BitReader::ReadBits");

  BitReader nibbles(&byte, 8);
  EXPECT_EQ(nibbles.ReadBits(4), 10u);
  EXPECT_EQ(nibbles.ReadBits(4), 5u);
  const unsigned char bytes[] = {0xAB, 0xCD, 0x12, 0x34, 0x56};
  BitReader across(bytes, 40);
  EXPECT_EQ(across.ReadBits(12), 0xABCu);
  EXPECT_TOO_MANY(across.ReadBits(33), "Tessera::BitReader::ReadBits");
  EXPECT_EQ(across.ReadBits(28), 0xD123456u);
}

TEST(BitReader, CapacityIsInBitsAndNeverPassed) {
  const unsigned char bytes[] = {0x12, 0x34};
  BitReader reader(bytes, 12);
  EXPECT_FULL(reader.ReadBits(13), "Tessera::BitReader::ReadBits");
  reader.SkipBits(4);
  // Counts that would wrap a 32-bit sum still throw, and the position stays.
  EXPECT_FULL(reader.SkipBits(0xFFFFFFFFu), "Tessera::BitReader::SkipBits");
  EXPECT_FULL(reader.SkipBits(0x80000000u), "Tessera::BitReader::SkipBits");
  EXPECT_EQ(reader.ReadBits(4), 0x2u);
  reader.SkipBits(4);  // to exactly the end
  reader.SkipBits(0);
  EXPECT_FULL(reader.SkipBits(1), "Tessera::BitReader::SkipBits");
  unsigned char target = 0x77;
  reader.ReadData(&target, 0, 5);
  EXPECT_FULL(reader.ReadData(&target, 1, 0), "Tessera::BitReader::ReadData");
  EXPECT_EQ(target, 0x77);
}

TEST(BitWriter, SetsAndClearsOnlyItsBits) {
  unsigned char byte = 0x00;
  BitWriter writer(&byte, 8);
  writer.WriteBits(3, 0xFF);
  EXPECT_EQ(byte, 0xE0);
  EXPECT_EQ(writer.GetBitCount(), 3u);
  byte = 0xFF;
  BitWriter clearing(&byte, 8);
  clearing.WriteBits(3, 0);
  EXPECT_EQ(byte, 0x1F);
  clearing.WriteBit(true);
  clearing.WriteBit(false);  // older contents are really overwritten
  EXPECT_EQ(byte, 0x17);
  clearing.SkipBits(3);
  EXPECT_FULL(clearing.WriteBit(true), "Tessera::BitWriter::WriteBit");
  clearing.WriteBits(0u, 0xFFFFFFFFu);
  EXPECT_TOO_MANY(clearing.WriteBits(33, 0), "Tessera::BitWriter::WriteBits");
  EXPECT_FULL(clearing.WriteBits(1, 0), "Tessera::BitWriter::WriteBits");
  EXPECT_FULL(clearing.SkipBits(1), "Tessera::BitWriter::SkipBits");
  EXPECT_EQ(byte, 0x17);
  EXPECT_EQ(clearing.GetBitCount(), 8u);
}

TEST(BitWriter, WriteBitsFromText) {
  unsigned char bytes[6] = {0xFF, 0x00, 0, 0, 0, 0};
  BitWriter writer(bytes, 48);
  writer.WriteBits("", 0xFFFFFFFFu);
  writer.WriteBits("0101x", 0xFFFFFFFFu);  // '0' writes 1, any other character 0
  writer.WriteBits("111", 2);
  EXPECT_EQ(writer.GetBitCount(), 7u);
  EXPECT_EQ(bytes[0], 0xA1);
  EXPECT_FULL(writer.WriteBits(std::string(42, '1').c_str(), 0xFFFFFFFFu), "Tessera::BitWriter::WriteBits");
  writer.SkipBits(1);
  writer.WriteBits(std::string(40, '0').c_str(), 0xFFFFFFFFu);  // no limit of 32
  EXPECT_EQ(writer.GetBitCount(), 48u);
  EXPECT_EQ(bytes[5], 0xFF);
}

TEST(BitStream, BitsAtEveryPhaseAndWidth) {
  const std::vector<unsigned char> background = RandomBytes(9, 5);
  std::mt19937 generator(6);
  for (std::uint32_t capacity : {72u, 69u, 40u}) {  // the last bytes take the slow path
    for (std::uint32_t start = 0; start < capacity; ++start) {
      for (unsigned int count = 1; count <= 32 && start + count <= capacity; ++count) {
        std::vector<unsigned char> memory = background;
        const unsigned int value = static_cast<unsigned int>(generator());
        BitWriter writer(memory.data(), capacity);
        writer.SkipBits(start);
        writer.WriteBits(count, value);
        for (std::uint32_t p = 0; p < 72; ++p) {
          const bool inside = p >= start && p < start + count;
          ASSERT_EQ(BitOf(memory.data(), p), inside ? ((value >> (count - 1 - (p - start))) & 1) != 0 : BitOf(background.data(), p))
              << start << " " << count << " " << p;
        }
        BitReader reader(background.data(), capacity);
        reader.SkipBits(start);
        unsigned int expected = 0;
        for (unsigned int i = 0; i < count; ++i) expected = (expected << 1) | BitOf(background.data(), start + i);
        ASSERT_EQ(reader.ReadBits(count), expected) << capacity << " " << start << " " << count;
      }
    }
  }
}

TEST(BitStream, DataAtEveryPhasePair) {
  const std::vector<unsigned char> source = RandomBytes(16, 7);
  const std::vector<unsigned char> background = RandomBytes(16, 8);
  for (std::uint32_t start = 0; start < 16; ++start) {
    for (unsigned int offset = 0; offset < 16; ++offset) {
      for (unsigned int count = 0; start + count <= 96; ++count) {
        // The writer puts source bits from `offset` on at stream bit `start`...
        std::vector<unsigned char> memory = background;
        BitWriter writer(memory.data(), 96);
        writer.SkipBits(start);
        writer.WriteData(source.data(), count, offset);
        ASSERT_EQ(writer.GetBitCount(), start + count);
        // ...and the reader takes them from there to `offset` of a target.
        std::vector<unsigned char> target = background;
        BitReader reader(source.data(), 96);
        reader.SkipBits(start);
        reader.ReadData(target.data(), count, offset);
        for (std::uint32_t p = 0; p < 128; ++p) {
          const bool written = p >= start && p < start + count;
          ASSERT_EQ(BitOf(memory.data(), p), written ? BitOf(source.data(), offset + p - start) : BitOf(background.data(), p))
              << "write " << start << " " << offset << " " << count << " " << p;
          const bool read = p >= offset && p < offset + count;
          ASSERT_EQ(BitOf(target.data(), p), read ? BitOf(source.data(), start + p - offset) : BitOf(background.data(), p))
              << "read " << start << " " << offset << " " << count << " " << p;
        }
        if (start + count < 96) {
          ASSERT_EQ(reader.ReadBits(1), unsigned(BitOf(source.data(), start + count)));
        }
      }
    }
  }
  // Past the room nothing moves.
  std::vector<unsigned char> memory = background;
  BitWriter writer(memory.data(), 96);
  writer.SkipBits(90);
  EXPECT_FULL(writer.WriteData(source.data(), 7, 0), "Tessera::BitWriter::WriteData");
  EXPECT_EQ(memory, background);
  EXPECT_EQ(writer.GetBitCount(), 90u);
}
