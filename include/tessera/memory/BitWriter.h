// BitWriter: a forward-only cursor that writes a bit stream into caller memory.
//
// The bit order is BitReader's (BitReader.h): bit p of the stream is bit (7 - p % 8) of
// byte p / 8, and values go most significant bit first. Writing never assumes clean
// memory: each bit is set or cleared on its own and the other bits of its byte stay, so
// bits passed by SkipBits keep their old values. The writer neither owns nor copies the
// memory. Every check comes before any work: after a throw, the position and the memory
// are as they were. [[nodiscard]] on GetBitCount is a convenience beside the ported API.
#ifndef TESSERA_MEMORY_BITWRITER_H
#define TESSERA_MEMORY_BITWRITER_H

#include <cstdint>

#include <tessera_export.h>

namespace Tessera {

class TESSERA_API BitWriter {
 public:
  // A writer at position 0 over `capacity` bits (not bytes) starting at `data`.
  BitWriter(void* data, unsigned int capacity)
      : data_(static_cast<unsigned char*>(data)), capacity_(capacity), position_(0) {}

  // Writes one bit. Throws Plaint::LengthError "buffer capacity exceeded" at the end.
  void WriteBit(bool bit);

  // Writes the low `count` bits of `value`, 0 to 32, highest first; higher bits of `value`
  // are ignored. A count of 0 writes nothing, with no check. Throws Plaint::OutOfRange
  // "too many bits" for a count over 32, and otherwise Plaint::LengthError "buffer capacity
  // exceeded" when fewer than `count` bits are left.
  void WriteBits(unsigned int count, unsigned int value);

  // Writes one bit per character of `bits`: '0' writes a 1 bit and any other character a 0
  // bit, the sense of the Windows original, kept so that ported callers get the same bits. A count
  // of 0xFFFFFFFF (Tessera::npos) means the text ends at its NUL. No limit of 32 bits.
  // Throws Plaint::LengthError "buffer capacity exceeded" when fewer bits are left.
  void WriteBits(const char* bits, unsigned int count);

  // Writes `count` bits taken from `source`, starting at bit `offset` of `source`. Throws
  // Plaint::LengthError "buffer capacity exceeded" when fewer than `count` bits are left.
  void WriteData(const void* source, unsigned int count, unsigned int offset);

  // Moves on by `count` bits and leaves them unchanged; reaching the end exactly is
  // allowed. Throws Plaint::LengthError "buffer capacity exceeded" past it.
  void SkipBits(unsigned int count);

  // Bits written or skipped so far.
  [[nodiscard]] unsigned int GetBitCount() const { return position_; }

 private:
  void WriteBitExec(bool bit) {
    const unsigned char mask = static_cast<unsigned char>(0x80u >> (position_ & 7));
    unsigned char& byte = data_[position_ >> 3];
    byte = bit ? static_cast<unsigned char>(byte | mask) : static_cast<unsigned char>(byte & ~mask);
    ++position_;
  }
  // Moves `count` bits from `source`, from bit `phase` on, without a bound check.
  void WriteUnaligned(const unsigned char* source, unsigned int count, std::int32_t phase);
  bool HasRoom(unsigned int count) const {
    return std::uint64_t{position_} + count <= capacity_;
  }

  unsigned char* data_;
  std::uint32_t capacity_;
  std::uint32_t position_;
};

}  // namespace Tessera

#endif  // TESSERA_MEMORY_BITWRITER_H
