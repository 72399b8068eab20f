// What the bit reader and writer share: their two failures, and the plan by which a block of
// bits moves between the stream and caller memory.
#ifndef TESSERA_MEMORY_BITTRANSFER_H
#define TESSERA_MEMORY_BITTRANSFER_H

#include <cstdint>

#include <plaint/Error.h>

namespace Tessera {
namespace detail {

[[noreturn]] inline void ThrowCapacityExceeded(const Plaint::Context& context) {
  Plaint::LengthError error("buffer capacity exceeded", context);
  throw error;
}

[[noreturn]] inline void ThrowTooManyBits(const Plaint::Context& context) {
  Plaint::OutOfRange error("too many bits", context);
  throw error;
}

// Moves `count` bits (not 0) between the stream at bit `position` and `memory` from bit
// `offset`. When the two phases differ every bit takes the bit route; when they agree the
// bits up to the byte grid do, the whole bytes behind them move in one piece, and the rest
// take the bit route again. moveBits(byte, count, phase) and moveBytes(byte, count) advance
// the stream themselves.
template <class Byte, class MoveBits, class MoveBytes>
void TransferBits(Byte* memory, unsigned int count, unsigned int offset, unsigned int position,
                  MoveBits moveBits, MoveBytes moveBytes) {
  Byte* cursor = memory + (offset >> 3);
  const std::int32_t phase = static_cast<std::int32_t>(offset & 7);
  if (phase != static_cast<std::int32_t>(position & 7)) {
    moveBits(cursor, count, phase);
    return;
  }
  // With both phases 0 the head is a whole byte, which the piece below takes as well.
  if (phase != 0) {
    const unsigned int head = count < 8u - phase ? count : 8u - phase;
    moveBits(cursor, head, phase);
    if (head == count) return;
    ++cursor;
    count -= head;
  }
  const unsigned int bytes = count >> 3;
  moveBytes(cursor, bytes);
  if ((count & 7) != 0) moveBits(cursor + bytes, count & 7, 0);
}

}  // namespace detail
}  // namespace Tessera

#endif  // TESSERA_MEMORY_BITTRANSFER_H
