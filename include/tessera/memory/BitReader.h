// BitReader: a forward-only cursor that reads a bit stream out of caller memory.
//
// Bit p of the stream is bit (7 - p % 8) of byte p / 8: the first bit of a byte is its most
// significant one, and a value of several bits comes most significant bit first. The reader
// neither owns nor copies the memory, and never allocates except for an exception on its
// way out. Every check comes before any work: after a throw, the position and the target
// memory are as they were. BitWriter (BitWriter.h) is the mirror image. The reads are not
// [[nodiscard]]: ported callers read and drop bits to step over them.
#ifndef TESSERA_MEMORY_BITREADER_H
#define TESSERA_MEMORY_BITREADER_H

#include <cstdint>
#include <cstring>

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
  unsigned int ReadBits(unsigned int count) {
    // Inline while eight stream bytes lie ahead, and with the rest given the fields by value:
    // with `this` passed to a call the position stays in memory from one read to the next,
    // and mixed reads ran at a quarter of a plain 64-bit window's speed.
    unsigned int value;
    const unsigned int last = count - 1u;
    // The room test in 64 bits keeps capacity_ - 64 out of the loop of a caller.
    if (last < 32u && std::int64_t{position_} <= std::int64_t{capacity_} - 64) {
      std::uint64_t window;
      std::memcpy(&window, data_ + (position_ >> 3), sizeof window);
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
      window = __builtin_bswap64(window);
#endif
      // 63 - last, as one instruction.
      value = static_cast<unsigned int>((window << (position_ & 7)) >> (last ^ 63u));
    } else {
      value = ReadBitsNearEnd(data_, capacity_, position_, count);
    }
    position_ += count;
    return value;
  }

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
  // ReadBits with every check, for the last eight bytes and for counts of 0 or over 32;
  // the caller moves the position on.
  static unsigned int ReadBitsNearEnd(const unsigned char* data, std::uint32_t capacity,
                                      std::uint32_t position, unsigned int count);
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
