#include <tessera/memory/BitReader.h>
#include <tessera/memory/BitWriter.h>

#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>
#include <plaint/Error.h>

using Tessera::BitReader;
using Tessera::BitWriter;
using Bytes = std::vector<unsigned char>;

namespace {

// Every bit position and transfer phase is the fuzz target's (BitStreamFuzz), against a
// per-bit model; here the failures and the text form.

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
