#include <tessera/memory/BitReader.h>

#include <cstdint>
#include <cstring>

#include <plaint/Error.h>

#include "BitTransfer.h"

namespace Tessera {

namespace {

using detail::ThrowCapacityExceeded;
using detail::ThrowTooManyBits;

// Bytes that hold a stream of `capacity` bits.
std::uint32_t StreamBytes(std::uint32_t capacity) { return (capacity >> 3) + ((capacity & 7) != 0); }

std::uint64_t LoadBigEndian64(const unsigned char* bytes) {
  std::uint64_t word;
  std::memcpy(&word, bytes, sizeof word);
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
  word = __builtin_bswap64(word);
#endif
  return word;
}

// The eight stream bits from bit `position` on, first bit highest. Off a byte boundary
// they span two bytes, both inside the stream.
unsigned char ByteAt(const unsigned char* data, std::uint32_t position) {
  const unsigned int phase = position & 7;
  const unsigned char* byte = data + (position >> 3);
  if (phase == 0) return *byte;
  return static_cast<unsigned char>((byte[0] << phase) | (byte[1] >> (8 - phase)));
}

}  // namespace

bool BitReader::ReadBit() {
  if (position_ == capacity_) ThrowCapacityExceeded(PLAINT_CONTEXT("Tessera::BitReader::ReadBit"));
  return ReadBitExec();
}

unsigned int BitReader::ReadBitsNearEnd(const unsigned char* data, std::uint32_t capacity,
                                        std::uint32_t position, unsigned int count) {
  if (count == 0) return 0;
  if (count > 32) ThrowTooManyBits(PLAINT_CONTEXT("Tessera::BitReader::ReadBits"));
  if (std::uint64_t{position} + count > capacity)
    ThrowCapacityExceeded(PLAINT_CONTEXT("Tessera::BitReader::ReadBits"));
  // At most five bytes hold the bits, all inside the stream.
  const std::uint32_t first = position >> 3;
  const unsigned int phase = position & 7;
  std::uint64_t window = 0;
  const unsigned int bytes = (phase + count + 7) >> 3;
  for (unsigned int i = 0; i < bytes; ++i) window |= std::uint64_t{data[first + i]} << (56 - 8 * i);
  return static_cast<unsigned int>((window << phase) >> (64 - count));
}

void BitReader::ReadData(void* target, unsigned int count, unsigned int offset) {
  if (!HasRoom(count)) ThrowCapacityExceeded(PLAINT_CONTEXT("Tessera::BitReader::ReadData"));
  if (count == 0) return;
  detail::TransferBits(
      static_cast<unsigned char*>(target), count, offset, position_,
      [this](unsigned char* at, unsigned int bits, std::int32_t phase) { ReadUnaligned(at, bits, phase); },
      [this](unsigned char* at, unsigned int bytes) {
        std::memcpy(at, data_ + (position_ >> 3), bytes);
        position_ += bytes * 8;
      });
}

void BitReader::SkipBits(unsigned int count) {
  if (!HasRoom(count)) ThrowCapacityExceeded(PLAINT_CONTEXT("Tessera::BitReader::SkipBits"));
  position_ += count;
}

void BitReader::ReadUnaligned(unsigned char* target, unsigned int count, std::int32_t phase) {
  // Bit by bit up to a target byte boundary, whole target bytes from there, then the rest.
  if (phase != 0) {
    for (unsigned int mask = 0x80u >> phase; count != 0; mask >>= 1) {
      *target = ReadBitExec() ? static_cast<unsigned char>(*target | mask)
                              : static_cast<unsigned char>(*target & ~mask);
      --count;
      if (mask == 1) {
        ++target;
        break;
      }
    }
  }
  // Seven bytes at a time while eight stream bytes can be loaded.
  const std::uint32_t streamBytes = StreamBytes(capacity_);
  for (; count >= 56 && streamBytes - (position_ >> 3) >= 8; count -= 56) {
    const std::uint64_t window = LoadBigEndian64(data_ + (position_ >> 3)) << (position_ & 7);
    for (unsigned int i = 0; i < 7; ++i) target[i] = static_cast<unsigned char>(window >> (56 - 8 * i));
    target += 7;
    position_ += 56;
  }
  for (; count >= 8; count -= 8) {
    *target++ = ByteAt(data_, position_);
    position_ += 8;
  }
  for (unsigned int mask = 0x80u; count != 0; --count, mask >>= 1) {
    *target = ReadBitExec() ? static_cast<unsigned char>(*target | mask)
                            : static_cast<unsigned char>(*target & ~mask);
  }
}

}  // namespace Tessera
