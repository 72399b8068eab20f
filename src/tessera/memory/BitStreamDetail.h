// Helpers shared by BitReader and BitWriter.
#ifndef TESSERA_MEMORY_BITSTREAMDETAIL_H
#define TESSERA_MEMORY_BITSTREAMDETAIL_H

#include <cstdint>
#include <cstring>

#include <plaint/Error.h>

namespace Tessera {
namespace detail {

[[noreturn]] void ThrowCapacityExceeded(const Plaint::Context& context);
[[noreturn]] void ThrowTooManyBits(const Plaint::Context& context);

// Bytes that hold a stream of `capacity` bits.
inline std::uint32_t StreamBytes(std::uint32_t capacity) { return (capacity >> 3) + ((capacity & 7) != 0); }

inline std::uint64_t LoadBigEndian64(const unsigned char* bytes) {
  std::uint64_t word;
  std::memcpy(&word, bytes, sizeof word);
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
  word = __builtin_bswap64(word);
#endif
  return word;
}

// The eight stream bits from bit `position` on, first bit highest. When the position is not
// on a byte boundary they span two bytes, both inside the stream.
inline unsigned char ByteAt(const unsigned char* data, std::uint32_t position) {
  const unsigned int phase = position & 7;
  const unsigned char* byte = data + (position >> 3);
  if (phase == 0) return *byte;
  return static_cast<unsigned char>((byte[0] << phase) | (byte[1] >> (8 - phase)));
}

}  // namespace detail
}  // namespace Tessera

#endif  // TESSERA_MEMORY_BITSTREAMDETAIL_H
