#include <tessera/memory/BitReader.h>
#include <tessera/memory/BitWriter.h>

#include <string>
#include <type_traits>

#include <gtest/gtest.h>
#include <plaint/Error.h>

using Tessera::BitReader;
using Tessera::BitWriter;

namespace {

// The bits, the writer's order of checks and its position after a failure are the fuzz
// target's (BitStreamFuzz), against a per-bit model; the reader there sees only successes.

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

TEST(BitReader, ChecksRoomInBitsInOrderAndKeepsPositionOnFailure) {
  const unsigned char bytes[] = {0x12, 0x34};
  BitReader reader(bytes, 12);
  ExpectError("BitReader::ReadBits", [&] { reader.ReadBits(13); });
  reader.SkipBits(4);
  ExpectError("BitReader::SkipBits", [&] { reader.SkipBits(0xFFFFFFFFu); });  // would wrap a 32-bit sum
  ExpectError("BitReader::SkipBits", [&] { reader.SkipBits(0x80000000u); });
  EXPECT_EQ(reader.ReadBits(4), 0x2u);
  reader.SkipBits(4);  // to exactly the end
  EXPECT_EQ(reader.ReadBits(0), 0u);  // no check at all for 0 bits
  ExpectError<Plaint::OutOfRange>("BitReader::ReadBits", [&] { reader.ReadBits(33); });  // before the room test
  ExpectError("BitReader::ReadBit", [&] { reader.ReadBit(); });
  ExpectError("BitReader::SkipBits", [&] { reader.SkipBits(1); });
  unsigned char target = 0x77;
  reader.ReadData(&target, 0, 5);
  ExpectError("BitReader::ReadData", [&] { reader.ReadData(&target, 1, 0); });
  EXPECT_EQ(target, 0x77);
}

TEST(BitWriter, FailuresNameTheirFunction) {
  unsigned char byte = 0;
  BitWriter writer(&byte, 0);
  ExpectError<Plaint::OutOfRange>("BitWriter::WriteBits", [&] { writer.WriteBits(33, 0); });
  ExpectError("BitWriter::WriteBit", [&] { writer.WriteBit(false); });
  ExpectError("BitWriter::WriteBits", [&] { writer.WriteBits(1, 0); });
  ExpectError("BitWriter::WriteBits", [&] { writer.WriteBits("0", 0xFFFFFFFFu); });
  ExpectError("BitWriter::WriteData", [&] { writer.WriteData(&byte, 1, 0); });
  ExpectError("BitWriter::SkipBits", [&] { writer.SkipBits(1); });
}
