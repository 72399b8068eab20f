#include <tessera/memory/BitWriter.h>

#include <cstring>

#include <plaint/Error.h>

#include "BitTransfer.h"

namespace Tessera {

using detail::ThrowCapacityExceeded;
using detail::ThrowTooManyBits;

void BitWriter::WriteBit(bool bit) {
  if (position_ == capacity_) ThrowCapacityExceeded(PLAINT_CONTEXT("Tessera::BitWriter::WriteBit"));
  WriteBitExec(bit);
}

void BitWriter::WriteBits(unsigned int count, unsigned int value) {
  if (count == 0) return;
  if (count > 32) ThrowTooManyBits(PLAINT_CONTEXT("Tessera::BitWriter::WriteBits"));
  if (!HasRoom(count)) ThrowCapacityExceeded(PLAINT_CONTEXT("Tessera::BitWriter::WriteBits"));
  // Merge the bits into the (at most five) bytes they touch; the bits around stay.
  const unsigned int phase = position_ & 7;
  const std::uint64_t bits = (std::uint64_t{value} << (64 - count)) >> phase;
  const std::uint64_t mask = (~std::uint64_t{0} << (64 - count)) >> phase;
  unsigned char* byte = data_ + (position_ >> 3);
  const unsigned int bytes = (phase + count + 7) >> 3;
  for (unsigned int i = 0; i < bytes; ++i) {
    const unsigned int shift = 56 - 8 * i;
    const unsigned char keep = static_cast<unsigned char>(~(mask >> shift));
    byte[i] = static_cast<unsigned char>((byte[i] & keep) | static_cast<unsigned char>(bits >> shift));
  }
  position_ += count;
}

void BitWriter::WriteBits(const char* bits, unsigned int count) {
  if (count == 0xFFFFFFFFu) count = static_cast<unsigned int>(std::strlen(bits));
  if (count == 0) return;
  if (!HasRoom(count)) ThrowCapacityExceeded(PLAINT_CONTEXT("Tessera::BitWriter::WriteBits"));
  for (unsigned int i = 0; i < count; ++i) WriteBitExec(bits[i] == '0');
}

void BitWriter::WriteData(const void* source, unsigned int count, unsigned int offset) {
  if (!HasRoom(count)) ThrowCapacityExceeded(PLAINT_CONTEXT("Tessera::BitWriter::WriteData"));
  if (count == 0) return;
  detail::TransferBits(
      static_cast<const unsigned char*>(source), count, offset, position_,
      [this](const unsigned char* at, unsigned int bits, std::int32_t phase) { WriteUnaligned(at, bits, phase); },
      [this](const unsigned char* at, unsigned int bytes) {
        std::memcpy(data_ + (position_ >> 3), at, bytes);
        position_ += bytes * 8;
      });
}

void BitWriter::SkipBits(unsigned int count) {
  if (!HasRoom(count)) ThrowCapacityExceeded(PLAINT_CONTEXT("Tessera::BitWriter::SkipBits"));
  position_ += count;
}

void BitWriter::WriteUnaligned(const unsigned char* source, unsigned int count, std::int32_t phase) {
  // Bit by bit up to a source byte boundary, whole source bytes from there, then the rest.
  if (phase != 0) {
    for (unsigned int mask = 0x80u >> phase; count != 0; mask >>= 1) {
      WriteBitExec((*source & mask) != 0);
      --count;
      if (mask == 1) {
        ++source;
        break;
      }
    }
  }
  for (; count >= 8; count -= 8) {
    const unsigned char value = *source++;
    const unsigned int streamPhase = position_ & 7;
    unsigned char* byte = data_ + (position_ >> 3);
    if (streamPhase == 0) {
      *byte = value;
    } else {
      const unsigned int high = 0xFFu >> streamPhase;
      byte[0] = static_cast<unsigned char>((byte[0] & ~high) | (value >> streamPhase));
      byte[1] = static_cast<unsigned char>((byte[1] & high) | (value << (8 - streamPhase)));
    }
    position_ += 8;
  }
  for (unsigned int mask = 0x80u; count != 0; --count, mask >>= 1) WriteBitExec((*source & mask) != 0);
}

}  // namespace Tessera
