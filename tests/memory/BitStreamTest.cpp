#include <tessera/memory/BitReader.h>
#include <tessera/memory/BitWriter.h>

#include <cstdint>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>
#include <plaint/Error.h>

using Tessera::BitReader;
using Tessera::BitWriter;
using Bytes = std::vector<unsigned char>;

namespace {

// Bit p of a byte array in stream order.
bool BitOf(const unsigned char* bytes, std::uint32_t p) { return (bytes[p / 8] >> (7 - p % 8)) & 1; }

// The model the streams are checked against: `bytes` with `count` bits of `source`, taken
// from its bit `from`, put on bit by bit at bit `to`.
Bytes Moved(Bytes bytes, const unsigned char* source, std::uint32_t from, std::uint32_t to, std::uint32_t count) {
  for (std::uint32_t i = 0; i < count; ++i) {
    const unsigned char mask = static_cast<unsigned char>(0x80u >> (to + i) % 8);
    unsigned char& byte = bytes[(to + i) / 8];
    byte = static_cast<unsigned char>(BitOf(source, from + i) ? byte | mask : byte & ~mask);
  }
  return bytes;
}

Bytes BigEndian(std::uint32_t word) {
  return {static_cast<unsigned char>(word >> 24), static_cast<unsigned char>(word >> 16),
          static_cast<unsigned char>(word >> 8), static_cast<unsigned char>(word)};
}

// Runs `call` and checks that it throws Error, with its message, from Tessera::`function`.
template <class Error = Plaint::LengthError, class Call>
void ExpectError(const std::string& function, Call call) {
  try {
    call();
    ADD_FAILURE() << "no exception from " << function;
  } catch (const Error& error) {
    const bool tooMany = std::is_same<Error, Plaint::OutOfRange>::value;
    EXPECT_STREQ(error.what(), tooMany ? "too many bits" : "buffer capacity exceeded");
    EXPECT_EQ(error.GetContext().function, "Tessera::" + function);
  }
}

}  // namespace

TEST(BitReader, ReadsMostSignificantBitFirstAndChecksInOrder) {
  const unsigned char byte = 0xA5;
  BitReader reader(&byte, 8);
  for (bool bit : {true, false, true, false, false, true, false, true}) EXPECT_EQ(reader.ReadBit(), bit);
  ExpectError("BitReader::ReadBit", [&] { reader.ReadBit(); });
  EXPECT_EQ(reader.ReadBits(0), 0u);  // no check at all for 0 bits
  ExpectError<Plaint::OutOfRange>("BitReader::ReadBits", [&] { reader.ReadBits(33); });  // before the room test
  ExpectError("BitReader::ReadBits", [&] { reader.ReadBits(1); });

  // The capacity is in bits; a failed call leaves the position.
  const unsigned char bytes[] = {0x12, 0x34};
  BitReader twelve(bytes, 12);
  ExpectError("BitReader::ReadBits", [&] { twelve.ReadBits(13); });
  twelve.SkipBits(4);
  ExpectError("BitReader::SkipBits", [&] { twelve.SkipBits(0xFFFFFFFFu); });  // would wrap a 32-bit sum
  ExpectError("BitReader::SkipBits", [&] { twelve.SkipBits(0x80000000u); });
  EXPECT_EQ(twelve.ReadBits(4), 0x2u);
  twelve.SkipBits(4);  // to exactly the end
  twelve.SkipBits(0);
  ExpectError("BitReader::SkipBits", [&] { twelve.SkipBits(1); });
  unsigned char target = 0x77;
  twelve.ReadData(&target, 0, 5);
  ExpectError("BitReader::ReadData", [&] { twelve.ReadData(&target, 1, 0); });
  EXPECT_EQ(target, 0x77);
}

TEST(BitWriter, TextSenseAndChecksInOrder) {
  unsigned char bytes[] = {0xFF, 0xFF};
  BitWriter writer(bytes, 12);
  writer.WriteBits("0101x", 0xFFFFFFFFu);  // '0' writes 1, any other character 0
  writer.WriteBits("111", 2);
  ExpectError<Plaint::OutOfRange>("BitWriter::WriteBits", [&] { writer.WriteBits(33, 0); });  // before the room test
  ExpectError("BitWriter::WriteBits", [&] { writer.WriteBits(6, 0); });
  ExpectError("BitWriter::WriteBits", [&] { writer.WriteBits("000000", 0xFFFFFFFFu); });
  ExpectError("BitWriter::WriteData", [&] { writer.WriteData(bytes, 6, 0); });
  ExpectError("BitWriter::SkipBits", [&] { writer.SkipBits(6); });
  writer.SkipBits(5);
  ExpectError("BitWriter::WriteBit", [&] { writer.WriteBit(false); });
  EXPECT_EQ(writer.GetBitCount(), 12u);
  EXPECT_EQ(Bytes(bytes, bytes + 2), (Bytes{0xA1, 0xFF}));
}

TEST(BitStream, EveryPhaseAgainstAPerBitModel) {
  std::mt19937 generator(5);
  Bytes background(16), source(16);
  for (unsigned char& byte : background) byte = static_cast<unsigned char>(generator());
  for (unsigned char& byte : source) byte = static_cast<unsigned char>(generator());
  for (std::uint32_t capacity : {72u, 69u, 40u}) {  // the last bytes take the slow path
    // Exactly the stream's bytes, so that an access past them is caught.
    const Bytes stream(background.begin(), background.begin() + (capacity + 7) / 8);
    for (std::uint32_t start = 0; start < capacity; ++start) {
      for (unsigned int count = 1; count <= 32 && start + count <= capacity; ++count) {
        const std::uint32_t value = generator();
        Bytes memory = stream;
        BitWriter writer(memory.data(), capacity);
        writer.SkipBits(start);
        writer.WriteBits(count, value);
        ASSERT_EQ(memory, Moved(stream, BigEndian(value).data(), 32 - count, start, count))
            << capacity << " " << start << " " << count;
        BitReader reader(stream.data(), capacity);
        reader.SkipBits(start);
        ASSERT_EQ(BigEndian(reader.ReadBits(count)), Moved(BigEndian(0), stream.data(), start, 32 - count, count))
            << capacity << " " << start << " " << count;
      }
    }
  }
  // Data from bit `offset` of a source goes on at stream bit `start`, and back from there to
  // bit `offset` of a target: every pair of phases, aligned and not.
  for (std::uint32_t start = 0; start < 16; ++start) {
    for (unsigned int offset = 0; offset < 16; ++offset) {
      for (unsigned int count = 0; start + count <= 96; ++count) {
        Bytes memory = background, target = background;
        BitWriter writer(memory.data(), 96);
        writer.SkipBits(start);
        writer.WriteData(source.data(), count, offset);
        const std::string where = std::to_string(start) + " " + std::to_string(offset) + " " + std::to_string(count);
        ASSERT_EQ(memory, Moved(background, source.data(), offset, start, count)) << where;
        BitReader reader(source.data(), 96);
        reader.SkipBits(start);
        reader.ReadData(target.data(), count, offset);
        ASSERT_EQ(target, Moved(background, source.data(), start, offset, count)) << where;
        ASSERT_TRUE(start + count == 96 || reader.ReadBit() == BitOf(source.data(), start + count)) << where;
      }
    }
  }
}
