// BitReader: a forward-only cursor that reads a bit stream out of caller memory.
//
// Bit p of the stream is bit (7 - p % 8) of byte p / 8: the first bit of a byte is its most
// significant one, and a value of several bits comes most significant bit first. The reader
// neither owns nor copies the memory, and never allocates except for an exception on its
// way out. Every check comes before any work: after a throw, the position and the target
// memory are as they were. BitWriter (BitWriter.h) is the mirror image.
#ifndef TESSERA_MEMORY_BITREADER_H
#define TESSERA_MEMORY_BITREADER_H

#include <cstdint>

#include <tessera_export.h>

namespace Tessera {

class TESSERA_API BitReader {
 public:
  // A reader at position 0 over `capacity` bits (not bytes) starting at `data`.
  BitReader(const void* data, unsigned int capacity)
      : data_(static_cast<const unsigned char*>(data)), capacity_(capacity), position_(0) {}

  // The next bit. Throws Plaint::LengthError "buffer capacity exceeded" at the end.
  bool ReadBit();

  // The next `count` bits, 0 to 32, the first of them as the highest bit of the result;
  // higher bits are 0. A count of 0 gives 0 with no check at all. Throws Plaint::OutOfRange
  // "too many bits" for a count over 32, whatever room is left, and otherwise
  // Plaint::LengthError "buffer capacity exceeded" when fewer than `count` bits are left.
  unsigned int ReadBits(unsigned int count);

  // Copies the next `count` bits to `target`, starting at bit `offset` of `target` (counted
  // in the same bit order, from `target`, not from the stream). Bits of `target` outside
  // the transfer keep their values. Throws Plaint::LengthError "buffer capacity exceeded"
  // when fewer than `count` bits are left; a count of 0 does nothing.
  void ReadData(void* target, unsigned int count, unsigned int offset);

  // Moves on by `count` bits; reaching the end exactly is allowed. Throws
  // Plaint::LengthError "buffer capacity exceeded" past it, and stays where it was.
  void SkipBits(unsigned int count);

 private:
  bool ReadBitExec() {
    const bool bit = (data_[position_ >> 3] >> (7 - (position_ & 7))) & 1u;
    ++position_;
    return bit;
  }
  // Moves `count` bits into `target` from bit `phase` on, without a bound check.
  void ReadUnaligned(unsigned char* target, unsigned int count, std::int32_t phase);
  bool HasRoom(unsigned int count) const {
    return std::uint64_t{position_} + count <= capacity_;
  }

  const unsigned char* data_;
  std::uint32_t capacity_;
  std::uint32_t position_;
};

}  // namespace Tessera

#endif  // TESSERA_MEMORY_BITREADER_H
