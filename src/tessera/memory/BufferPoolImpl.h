// The body of a BufferPool, and the library-internal hooks into buffers and pools.
#ifndef TESSERA_MEMORY_BUFFERPOOLIMPL_H
#define TESSERA_MEMORY_BUFFERPOOLIMPL_H

#include <atomic>
#include <cstddef>
#include <cstdint>

#include <skein/Lock.h>
#include <tessera/memory/Buffer.h>

namespace Tessera {

// Blocks that are out carry the address of this body, not of the BufferPool: the body
// outlives the pool while detached blocks are still out, so a Free that read the pool
// pointer just before the pool died still finds a live lock. The body fills one cache line
// of its own: threads that share the pool move the lock and the list head together, and
// nothing else on the heap drags that line away.
class alignas(64) BufferPoolImpl {
 public:
  using Data = Buffer::Data;

  explicit BufferPoolImpl(std::uint32_t size) : bufferSize(size) {}

  // Makes one free block. Throws Plaint::BadAlloc when the heap refuses.
  Data* AllocateBufferLocked();
  // Makes up to growthRate blocks and gives the last; a step that makes at least one block
  // succeeds. Throws Plaint::BadAlloc when none can be made.
  Data* AllocateAndGrowLocked();
  // Takes the head of the free list, growing first if it is empty, and marks it as out; the
  // caller gives it its reference once the lock is released. Throws Plaint::BadAlloc when
  // no block can be made; nothing changes then.
  Data* TakeFreeLocked();
  // Frees every free block and detaches those that are out. True when no block is out,
  // so the body can go at once; otherwise the last detached block takes it along.
  bool DetachAllLocked();

  const std::uint32_t bufferSize;
  Data* freeList = nullptr;   // linked through `pool`
  Data* allList = nullptr;    // linked through `nextAllocated`
  // Written under the lock; atomic so that IsUsed may read them without it.
  std::atomic<std::uint32_t> bufferCount{0};
  std::atomic<std::uint32_t> freeCount{0};
  const std::uint32_t growthRate = BufferPool::growthRateDefault;
  std::uint32_t detachedCount = 0;  // blocks still out after the pool died
  Skein::Lock lock;
};

namespace detail {

using HeapAllocate = void* (*)(std::size_t count, std::size_t size);

// Replaces the heap's calloc for buffer blocks (tests make the heap refuse with it).
// Returns the previous function.
HeapAllocate SetHeapAllocateForTesting(HeapAllocate allocate);

// Read-only views for tests.
struct BufferPoolAccess {
  static std::uint32_t BufferCount(const BufferPool& pool) { return pool.impl_->bufferCount.load(); }
  static std::uint32_t FreeCount(const BufferPool& pool) { return pool.impl_->freeCount.load(); }
  static std::uint32_t RefCount(const Buffer& buffer) { return buffer.data_ != nullptr ? buffer.data_->refCount : 0; }
};

}  // namespace detail
}  // namespace Tessera

#endif  // TESSERA_MEMORY_BUFFERPOOLIMPL_H
