// Buffer and BufferPool: reference-counted blocks of raw memory, unpooled or pooled.
//
// A Buffer is a handle on one block (or null). Copies share the block; the block's count
// is plain, not atomic, so a block and its handles belong to one thread at a time. A
// BufferPool hands out blocks of one size from a last-in-first-out free list, grows in
// steps of 16 and never shrinks. Its lock lets many threads allocate and release at once.
// A pool may die while blocks are out: they carry on as unpooled blocks.
//
// Conveniences beside the ported API: Buffer's move constructor and move assignment, and
// [[nodiscard]] on every call whose result is its whole point (a dropped Unbind result
// leaks its block).
#ifndef TESSERA_MEMORY_BUFFER_H
#define TESSERA_MEMORY_BUFFER_H

#include <atomic>
#include <cstddef>
#include <cstdint>

#include <tessera_export.h>

namespace Tessera {

class BufferPool;
class BufferPoolImpl;
namespace detail {
struct BufferPoolAccess;
}

class TESSERA_API Buffer {
 public:
  // The header in front of every payload; header and payload are one allocation.
  struct alignas(alignof(std::max_align_t)) Data {
    std::uint32_t refCount;  // 0 while the block lies on a free list
    std::uint32_t size;      // payload bytes, fixed for the block's life
    // Out with a user: the owning pool's body, or null when unpooled or detached.
    // On a free list: the next free block. Read without the lock in Free, hence atomic.
    std::atomic<void*> pool;
    Data* nextAllocated;     // the pool's list of all blocks; once detached, the pool's body
  };

  struct UnpooledTag {};
  // Selects the deep-copying overloads.
  static const UnpooledTag& unpooled;

  Buffer() : data_(nullptr) {}
  // A new unpooled block of `size` zero bytes; size 0 gives a block too.
  // Throws Plaint::BadAlloc when the heap refuses.
  explicit Buffer(std::uint32_t size);
  Buffer(const Buffer& other) : data_(other.data_) { Attach(); }
  // Convenience beside the ported API: a move takes the reference over without counting
  // and leaves `other` null.
  Buffer(Buffer&& other) noexcept : data_(other.data_) { other.data_ = nullptr; }
  // A deep copy into a new unpooled block; a null `other` gives a null buffer.
  // Throws Plaint::BadAlloc when the heap refuses.
  Buffer(const Buffer& other, const UnpooledTag&);
  ~Buffer() { Release(); }

  // Shares `other`'s block; the new reference is taken before the old one is dropped.
  Buffer& operator=(const Buffer& other) {
    Assign(other);
    return *this;
  }
  // Convenience: drops this buffer's reference and takes `other`'s, leaving `other` null.
  Buffer& operator=(Buffer&& other) noexcept {
    if (this != &other) {
      Release();
      data_ = other.data_;
      other.data_ = nullptr;
    }
    return *this;
  }
  void Assign(const Buffer& other) {
    if (other.data_ == data_) return;
    other.Attach();
    Release();
    data_ = other.data_;
  }
  // Makes this buffer a private unpooled copy of `other` (null if `other` is). Does
  // nothing if both already share a block. Throws Plaint::BadAlloc, leaving this as it was.
  void Assign(const Buffer& other, const UnpooledTag&);

  [[nodiscard]] void* Memory() { return data_ != nullptr ? Payload(data_) : nullptr; }
  [[nodiscard]] const void* Memory() const { return data_ != nullptr ? Payload(data_) : nullptr; }
  [[nodiscard]] void* data() { return Memory(); }
  [[nodiscard]] const void* data() const { return Memory(); }
  [[nodiscard]] std::uint32_t GetSize() const { return data_ != nullptr ? data_->size : 0; }
  [[nodiscard]] std::uint32_t size() const { return GetSize(); }

  [[nodiscard]] bool IsNull() const { return data_ == nullptr; }
  [[nodiscard]] bool IsPooled() const { return data_ != nullptr && data_->pool.load(std::memory_order_relaxed) != nullptr; }
  [[nodiscard]] bool IsShared() const { return data_ != nullptr && data_->refCount != 1; }

  // True for any block, also one of size 0 (the member-pointer form keeps `if (b)` working
  // without letting a buffer convert to an integer).
  using UnspecifiedBool = void (Buffer::*)() const;
  operator UnspecifiedBool() const { return data_ != nullptr ? &Buffer::BoolTrue : nullptr; }

  void Swap(Buffer& other) {
    Data* mine = data_;
    data_ = other.data_;
    other.data_ = mine;
  }

  // Sets every payload byte; every sharer sees the change.
  void Fill(unsigned char value);

  // A copy of the payload: from the block's own pool for a pooled block, else unpooled.
  [[nodiscard]] Buffer Clone() const;
  // A block of `pool` holding this payload at its start. Throws Plaint::LengthError
  // "buffer size mismatch" if this block is larger than the pool's blocks.
  [[nodiscard]] Buffer Clone(BufferPool& pool) const;
  [[nodiscard]] Buffer Clone(const UnpooledTag& tag) const { return Buffer(*this, tag); }

  // Turns the reference into a raw payload pointer (null for a null buffer) and nulls
  // `buffer`; the count is unchanged. Bind takes such a pointer back, unchecked; its result
  // may be dropped, which is how a raw reference is let go.
  static Buffer Bind(void* memory) {
    return Buffer(memory != nullptr ? reinterpret_cast<Data*>(static_cast<char*>(memory) - sizeof(Data)) : nullptr,
                  AdoptTag{});
  }
  [[nodiscard]] static void* Unbind(Buffer& buffer) {
    void* memory = buffer.Memory();
    buffer.data_ = nullptr;
    return memory;
  }

 private:
  friend class BufferPool;
  friend class BufferPoolImpl;
  friend struct detail::BufferPoolAccess;

  // Takes over a reference without counting; the tag keeps Buffer(0) meaning a size.
  struct AdoptTag {};
  Buffer(Data* data, AdoptTag) : data_(data) {}
  static void* Payload(Data* data) { return reinterpret_cast<char*>(data) + sizeof(Data); }
  void BoolTrue() const {}

  void Attach() const {
    if (data_ != nullptr) ++data_->refCount;
  }
  void Release() {
    if (data_ != nullptr && --data_->refCount == 0) Free();
  }
  void Free();
  // Free for an unpooled or detached block, or when the pool's lock is taken.
  static void FreeSlow(Data* block, BufferPoolImpl* pool);

  static Data* AllocData(std::uint32_t size, BufferPoolImpl* pool);
  static void FreeData(Data* data);

  Data* data_;
};

class TESSERA_API BufferPool {
 public:
  static const std::uint32_t bufferCountDefault = 16;
  static const std::uint32_t growthRateDefault = 16;

  // A pool of `bufferSize`-byte blocks with `bufferCount` free blocks made at once.
  // Throws Plaint::BadAlloc if the heap refuses; no pool and no block is left behind.
  BufferPool(std::uint32_t bufferSize, std::uint32_t bufferCount);
  // Frees the free blocks; blocks still out become unpooled and live on.
  ~BufferPool();
  BufferPool(const BufferPool&) = delete;
  BufferPool& operator=(const BufferPool&) = delete;

  // A buffer on a free block (the one released last), growing the pool by up to 16 blocks
  // when none is free. The payload holds what its last user left. Throws Plaint::BadAlloc
  // only if not one block can be made; the pool is then unchanged.
  [[nodiscard]] Buffer Allocate();

  [[nodiscard]] std::uint32_t GetBufferSize() const;
  // True while any block is out; a snapshot when other threads use the pool.
  [[nodiscard]] bool IsUsed() const;

 private:
  friend class Buffer;
  friend struct detail::BufferPoolAccess;
  // A detached block of a dead pool is gone; the last one takes the pool's body along.
  static void DropDetached(BufferPoolImpl& pool);
  // Allocate when the lock is taken or the free list is empty.
  static Buffer AllocateSlow(BufferPoolImpl& pool);

  BufferPoolImpl* impl_;
};

}  // namespace Tessera

#endif  // TESSERA_MEMORY_BUFFER_H
