#include <tessera/memory/BitReader.h>
#include <tessera/memory/BitWriter.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <plaint/Error.h>

using Tessera::BitReader;
using Tessera::BitWriter;

namespace {

// Bit p of a byte array in stream order, as a model to compare against.
bool BitOf(const unsigned char* bytes, std::uint32_t p) { return (bytes[p / 8] >> (7 - p % 8)) & 1; }

template <class Call>
void ExpectThrow(Call call, const std::string& message, const std::string& function, bool lengthError) {
  try {
    call();
    ADD_FAILURE() << "no exception, expected " << message;
  } catch (const Plaint::LengthError& error) {
    EXPECT_TRUE(lengthError) << function;
    EXPECT_EQ(std::string(error.what()), message);
    EXPECT_EQ(std::string(error.GetContext().function), function);
  } catch (const Plaint::OutOfRange& error) {
    EXPECT_FALSE(lengthError) << function;
    EXPECT_EQ(std::string(error.what()), message);
    EXPECT_EQ(std::string(error.GetContext().function), function);
  }
}

std::vector<unsigned char> RandomBytes(std::size_t size, std::uint32_t seed) {
  std::mt19937 generator(seed);
  std::vector<unsigned char> bytes(size);
  for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(generator());
  return bytes;
}

}  // namespace

TEST(BitReader, ReadsMostSignificantBitFirst) {
  const unsigned char byte = 0xA5;
  BitReader reader(&byte, 8);
  const bool expected[] = {true, false, true, false, false, true, false, true};
  for (bool bit : expected) EXPECT_EQ(reader.ReadBit(), bit);
  ExpectThrow([&] { reader.ReadBit(); }, "buffer capacity exceeded", "Tessera::BitReader::ReadBit", true);

  BitReader nibbles(&byte, 8);
  EXPECT_EQ(nibbles.ReadBits(4), 10u);
  EXPECT_EQ(nibbles.ReadBits(4), 5u);

  const unsigned char two[] = {0xAB, 0xCD};
  BitReader across(two, 16);
  EXPECT_EQ(across.ReadBits(12), 0xABCu);
  EXPECT_EQ(across.ReadBits(4), 0xDu);
}

TEST(BitReader, ReadBitsChecksCountBeforeRoom) {
  const unsigned char bytes[8] = {0xFF, 0x00, 0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC};
  BitReader reader(bytes, 64);
  EXPECT_EQ(reader.ReadBits(0), 0u);
  ExpectThrow([&] { reader.ReadBits(33); }, "too many bits", "Tessera::BitReader::ReadBits", false);
  EXPECT_EQ(reader.ReadBits(32), 0xFF001234u);
  EXPECT_EQ(reader.ReadBits(32), 0x56789ABCu);
  // At the end: 0 bits still succeed, 33 still says too many bits, 1 runs out of room.
  EXPECT_EQ(reader.ReadBits(0), 0u);
  ExpectThrow([&] { reader.ReadBits(33); }, "too many bits", "Tessera::BitReader::ReadBits", false);
  ExpectThrow([&] { reader.ReadBits(1); }, "buffer capacity exceeded", "Tessera::BitReader::ReadBits", true);
}

TEST(BitReader, CapacityIsCountedInBits) {
  const unsigned char bytes[] = {0x12, 0x34};
  BitReader reader(bytes, 12);
  ExpectThrow([&] { reader.ReadBits(13); }, "buffer capacity exceeded", "Tessera::BitReader::ReadBits", true);
  EXPECT_EQ(reader.ReadBits(12), 0x123u);
  ExpectThrow([&] { reader.ReadBit(); }, "buffer capacity exceeded", "Tessera::BitReader::ReadBit", true);

  BitReader skipper(bytes, 12);
  skipper.SkipBits(12);
  skipper.SkipBits(0);
  ExpectThrow([&] { skipper.SkipBits(1); }, "buffer capacity exceeded", "Tessera::BitReader::SkipBits", true);
  // Counts that would wrap the position throw rather than move past the end.
  BitReader wrap(bytes, 12);
  wrap.SkipBits(4);
  ExpectThrow([&] { wrap.SkipBits(0xFFFFFFFFu); }, "buffer capacity exceeded", "Tessera::BitReader::SkipBits", true);
  ExpectThrow([&] { wrap.SkipBits(0x80000000u); }, "buffer capacity exceeded", "Tessera::BitReader::SkipBits", true);
  EXPECT_EQ(wrap.ReadBits(8), 0x23u);
}

TEST(BitReader, ReadBitsAgreesWithBitModelAtEveryPhaseAndWidth) {
  const std::vector<unsigned char> bytes = RandomBytes(16, 1);
  for (std::uint32_t capacity : {128u, 125u, 41u}) {
    for (std::uint32_t start = 0; start < capacity; ++start) {
      for (unsigned int count = 1; count <= 32 && start + count <= capacity; ++count) {
        BitReader reader(bytes.data(), capacity);
        reader.SkipBits(start);
        unsigned int expected = 0;
        for (unsigned int i = 0; i < count; ++i) expected = (expected << 1) | BitOf(bytes.data(), start + i);
        ASSERT_EQ(reader.ReadBits(count), expected) << "capacity " << capacity << " start " << start << " count " << count;
      }
    }
  }
}

TEST(BitReader, ReadDataMatchesBitModelForEveryPhasePair) {
  const std::vector<unsigned char> stream = RandomBytes(12, 2);
  for (std::uint32_t start = 0; start < 16; ++start) {
    for (unsigned int offset = 0; offset < 16; ++offset) {
      for (unsigned int count = 0; start + count <= 96; ++count) {
        std::vector<unsigned char> target = RandomBytes(16, 3);
        const std::vector<unsigned char> before = target;
        BitReader reader(stream.data(), 96);
        reader.SkipBits(start);
        reader.ReadData(target.data(), count, offset);
        for (std::uint32_t p = 0; p < 128; ++p) {
          const bool inside = p >= offset && p < offset + count;
          const bool expected = inside ? BitOf(stream.data(), start + p - offset) : BitOf(before.data(), p);
          ASSERT_EQ(BitOf(target.data(), p), expected)
              << "start " << start << " offset " << offset << " count " << count << " bit " << p;
        }
        // The position moved by exactly count.
        if (start + count < 96) {
          ASSERT_EQ(reader.ReadBits(1), static_cast<unsigned int>(BitOf(stream.data(), start + count)));
        }
      }
    }
  }
}

TEST(BitReader, ReadDataChecksRoomFirstAndChangesNothingOnFailure) {
  const std::vector<unsigned char> stream = RandomBytes(13, 4);
  BitReader reader(stream.data(), 100);
  reader.SkipBits(1);
  unsigned char target[16] = {0x5A, 0x5A};
  ExpectThrow([&] { reader.ReadData(target, 100, 0); }, "buffer capacity exceeded",
              "Tessera::BitReader::ReadData", true);
  EXPECT_EQ(target[0], 0x5A);
  EXPECT_EQ(target[1], 0x5A);
  reader.ReadData(target, 99, 0);
  // At the end a transfer of 0 bits does nothing and does not throw.
  reader.ReadData(target, 0, 5);
  ExpectThrow([&] { reader.ReadData(target, 1, 0); }, "buffer capacity exceeded", "Tessera::BitReader::ReadData",
              true);

  // Equal phases (3 and 3): the three high bits of the first target byte stay.
  BitReader aligned(stream.data(), 100);
  aligned.SkipBits(11);
  unsigned char out[12];
  std::memset(out, 0xFF, sizeof out);
  aligned.ReadData(out, 60, 3);
  EXPECT_EQ(out[0] & 0xE0, 0xE0);
  for (unsigned int i = 0; i < 60; ++i) ASSERT_EQ(BitOf(out, 3 + i), BitOf(stream.data(), 11 + i));
}

TEST(BitWriter, WritesSetAndClearEachBit) {
  unsigned char byte = 0x00;
  BitWriter writer(&byte, 8);
  writer.WriteBits(3, 0xFF);
  EXPECT_EQ(byte, 0xE0);
  EXPECT_EQ(writer.GetBitCount(), 3u);

  byte = 0xFF;
  BitWriter clearing(&byte, 8);
  clearing.WriteBits(3, 0);
  EXPECT_EQ(byte, 0x1F);

  byte = 0xFF;
  BitWriter single(&byte, 8);
  single.SkipBits(2);
  single.WriteBit(false);
  EXPECT_EQ(byte, 0xDF);
  EXPECT_EQ(single.GetBitCount(), 3u);
  single.SkipBits(5);
  ExpectThrow([&] { single.WriteBit(true); }, "buffer capacity exceeded", "Tessera::BitWriter::WriteBit", true);
  // Zero bits at the end write nothing and do not throw.
  single.WriteBits(0u, 0xFFFFFFFFu);
  ExpectThrow([&] { single.WriteBits(33, 0); }, "too many bits", "Tessera::BitWriter::WriteBits", false);
  ExpectThrow([&] { single.WriteBits(1, 0); }, "buffer capacity exceeded", "Tessera::BitWriter::WriteBits", true);
  ExpectThrow([&] { single.SkipBits(1); }, "buffer capacity exceeded", "Tessera::BitWriter::SkipBits", true);
  EXPECT_EQ(byte, 0xDF);
}

TEST(BitWriter, WriteBitsTouchesOnlyItsBitsAtEveryPhaseAndWidth) {
  const std::vector<unsigned char> background = RandomBytes(9, 5);
  std::mt19937 generator(6);
  for (std::uint32_t capacity : {72u, 69u, 40u}) {
    for (std::uint32_t start = 0; start < capacity; ++start) {
      for (unsigned int count = 1; count <= 32 && start + count <= capacity; ++count) {
        std::vector<unsigned char> memory = background;
        const unsigned int value = generator();
        BitWriter writer(memory.data(), capacity);
        writer.SkipBits(start);
        writer.WriteBits(count, value);
        ASSERT_EQ(writer.GetBitCount(), start + count);
        for (std::uint32_t p = 0; p < 72; ++p) {
          const bool inside = p >= start && p < start + count;
          const bool expected = inside ? ((value >> (count - 1 - (p - start))) & 1) != 0 : BitOf(background.data(), p);
          ASSERT_EQ(BitOf(memory.data(), p), expected) << "start " << start << " count " << count << " bit " << p;
        }
      }
    }
  }
}

TEST(BitWriter, WriteBitsFromText) {
  unsigned char bytes[6] = {0xFF, 0x00, 0, 0, 0, 0};
  BitWriter writer(bytes, 48);
  writer.WriteBits("", 0xFFFFFFFFu);
  EXPECT_EQ(writer.GetBitCount(), 0u);
  // '0' writes 0, any other character 1.
  writer.WriteBits("0101x", 0xFFFFFFFFu);
  writer.WriteBits("111", 2);
  EXPECT_EQ(writer.GetBitCount(), 7u);
  EXPECT_EQ(bytes[0], 0x5F);  // 0101 1 11, the last bit untouched
  const std::string forty(40, '1');
  const std::string tooLong(42, '1');
  ExpectThrow([&] { writer.WriteBits(tooLong.c_str(), 0xFFFFFFFFu); }, "buffer capacity exceeded",
              "Tessera::BitWriter::WriteBits", true);
  writer.SkipBits(1);
  writer.WriteBits(forty.c_str(), 0xFFFFFFFFu);
  EXPECT_EQ(writer.GetBitCount(), 48u);
  EXPECT_EQ(bytes[1], 0xFF);
  EXPECT_EQ(bytes[5], 0xFF);
}

TEST(BitWriter, WriteDataMatchesBitModelForEveryPhasePair) {
  const std::vector<unsigned char> source = RandomBytes(16, 7);
  const std::vector<unsigned char> background = RandomBytes(12, 8);
  for (std::uint32_t start = 0; start < 16; ++start) {
    for (unsigned int offset = 0; offset < 16; ++offset) {
      for (unsigned int count = 0; start + count <= 96; ++count) {
        std::vector<unsigned char> memory = background;
        BitWriter writer(memory.data(), 96);
        writer.SkipBits(start);
        writer.WriteData(source.data(), count, offset);
        ASSERT_EQ(writer.GetBitCount(), start + count);
        for (std::uint32_t p = 0; p < 96; ++p) {
          const bool inside = p >= start && p < start + count;
          const bool expected = inside ? BitOf(source.data(), offset + p - start) : BitOf(background.data(), p);
          ASSERT_EQ(BitOf(memory.data(), p), expected)
              << "start " << start << " offset " << offset << " count " << count << " bit " << p;
        }
      }
    }
  }
  std::vector<unsigned char> memory = background;
  BitWriter writer(memory.data(), 96);
  writer.SkipBits(90);
  ExpectThrow([&] { writer.WriteData(source.data(), 7, 0); }, "buffer capacity exceeded",
              "Tessera::BitWriter::WriteData", true);
  EXPECT_EQ(memory, background);
  EXPECT_EQ(writer.GetBitCount(), 90u);
}

TEST(BitStream, WhatTheWriterWritesTheReaderReadsBack) {
  std::vector<unsigned char> memory(64);
  BitWriter writer(memory.data(), 500);
  writer.WriteBit(true);
  writer.WriteBits(17, 0x1ABCD);
  writer.WriteBits(32, 0xDEADBEEF);
  const unsigned char block[] = {0x01, 0x23, 0x45, 0x67, 0x89};
  writer.WriteData(block, 37, 2);
  writer.SkipBits(9);
  writer.WriteBits(5, 0x15);

  BitReader reader(memory.data(), 500);
  EXPECT_TRUE(reader.ReadBit());
  EXPECT_EQ(reader.ReadBits(17), 0x1ABCDu);
  EXPECT_EQ(reader.ReadBits(32), 0xDEADBEEFu);
  unsigned char copy[5] = {};
  reader.ReadData(copy, 37, 2);
  for (unsigned int i = 2; i < 39; ++i) ASSERT_EQ(BitOf(copy, i), BitOf(block, i));
  reader.SkipBits(9);
  EXPECT_EQ(reader.ReadBits(5), 0x15u);
}
