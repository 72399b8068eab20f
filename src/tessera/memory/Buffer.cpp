#include <tessera/memory/Buffer.h>

#include <cstdlib>
#include <cstring>
#include <new>

#include <plaint/Error.h>

#include "BufferPoolImpl.h"

namespace Tessera {

namespace {

std::atomic<detail::HeapAllocate> heapAllocate{&std::calloc};

const Buffer::UnpooledTag unpooledTag{};

using Data = Buffer::Data;

void PushFree(BufferPoolImpl& pool, Data* block) {
  block->pool.store(pool.freeList, std::memory_order_relaxed);
  pool.freeList = block;
  pool.freeCount.store(pool.freeCount.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
}

Data* NextFree(const Data* block) { return static_cast<Data*>(block->pool.load(std::memory_order_relaxed)); }

}  // namespace

const Buffer::UnpooledTag& Buffer::unpooled = unpooledTag;

detail::HeapAllocate detail::SetHeapAllocateForTesting(HeapAllocate allocate) {
  return heapAllocate.exchange(allocate != nullptr ? allocate : &std::calloc);
}

// ---- Buffer ----

Data* Buffer::AllocData(std::uint32_t size, BufferPoolImpl* pool) {
  void* memory = heapAllocate.load(std::memory_order_relaxed)(1, sizeof(Data) + size);
  if (memory == nullptr) return nullptr;
  Data* data = new (memory) Data;
  data->refCount = pool == nullptr ? 1 : 0;
  data->size = size;
  data->pool.store(pool, std::memory_order_relaxed);
  data->nextAllocated = nullptr;
  return data;
}

void Buffer::FreeData(Data* data) {
  data->~Data();
  std::free(data);
}

Buffer::Buffer(std::uint32_t size) : data_(AllocData(size, nullptr)) {
  if (data_ == nullptr) throw Plaint::BadAlloc(PLAINT_CONTEXT("Tessera::Buffer::Buffer"));
}

Buffer::Buffer(const Buffer& other, const UnpooledTag&) : data_(nullptr) {
  if (other.data_ == nullptr) return;
  data_ = AllocData(other.data_->size, nullptr);
  if (data_ == nullptr) throw Plaint::BadAlloc(PLAINT_CONTEXT("Tessera::Buffer::Buffer"));
  std::memcpy(Payload(data_), Payload(other.data_), other.data_->size);
}

void Buffer::Assign(const Buffer& other, const UnpooledTag&) {
  if (other.data_ == data_) return;
  if (other.data_ == nullptr) {
    Release();
    data_ = nullptr;
    return;
  }
  Data* copy = AllocData(other.data_->size, nullptr);
  if (copy == nullptr) throw Plaint::BadAlloc(PLAINT_CONTEXT("Tessera::Buffer::Assign"));
  std::memcpy(Payload(copy), Payload(other.data_), other.data_->size);
  Release();
  data_ = copy;
}

void Buffer::Fill(unsigned char value) {
  if (data_ != nullptr) std::memset(Payload(data_), value, data_->size);
}

Buffer Buffer::Clone() const {
  if (data_ == nullptr) return Buffer();
  // The body outlives its pool while this block is out, so its lock is safe to take; whether
  // the pool still lives is decided under it. A block of a dead pool clones as unpooled.
  auto* pool = static_cast<BufferPoolImpl*>(data_->pool.load(std::memory_order_acquire));
  if (pool == nullptr) return Buffer(*this, unpooled);
  Data* block;
  {
    Skein::Guard<Skein::Lock> guard(pool->lock);
    if (data_->pool.load(std::memory_order_relaxed) == nullptr) {
      guard.Release();
      return Buffer(*this, unpooled);
    }
    block = pool->TakeFreeLocked();
  }
  block->refCount = 1;
  Buffer copy(block, AdoptTag{});
  std::memcpy(Payload(block), Payload(data_), data_->size);
  return copy;
}

Buffer Buffer::Clone(BufferPool& pool) const {
  if (data_ == nullptr) return Buffer();
  if (data_->size > pool.GetBufferSize())
    throw Plaint::LengthError("buffer size mismatch", PLAINT_CONTEXT("Tessera::Buffer::Clone"));
  Buffer copy = pool.Allocate();
  std::memcpy(Payload(copy.data_), Payload(data_), data_->size);
  return copy;
}

void Buffer::Free() {
  Data* block = data_;
  data_ = nullptr;
  auto* pool = static_cast<BufferPoolImpl*>(block->pool.load(std::memory_order_acquire));
  // The common case, a living pool with a free lock, calls nothing but a wake-up.
  if (pool != nullptr && pool->lock.TryAcquire()) {
    if (block->pool.load(std::memory_order_relaxed) != nullptr) {
      PushFree(*pool, block);
      pool->lock.Release();
      return;
    }
    pool->lock.Release();
  }
  FreeSlow(block, pool);
}

void Buffer::FreeSlow(Data* block, BufferPoolImpl* pool) {
  if (pool == nullptr) {
    // Unpooled, or detached by a pool that has died: then nextAllocated names its body.
    auto* orphanedFrom = reinterpret_cast<BufferPoolImpl*>(block->nextAllocated);
    FreeData(block);
    if (orphanedFrom != nullptr) BufferPool::DropDetached(*orphanedFrom);
    return;
  }
  bool bodyDone = false;
  {
    Skein::Guard<Skein::Lock> guard(pool->lock);
    if (block->pool.load(std::memory_order_relaxed) != nullptr) {
      PushFree(*pool, block);
      return;
    }
    // The pool died between the first reading and the lock.
    FreeData(block);
    bodyDone = --pool->detachedCount == 0;
  }
  if (bodyDone) delete pool;
}

// ---- BufferPoolImpl ----

Data* BufferPoolImpl::AllocateBufferLocked() {
  Data* block = Buffer::AllocData(bufferSize, this);
  if (block == nullptr)
    throw Plaint::BadAlloc(PLAINT_CONTEXT("Tessera::BufferPoolImpl::AllocateBufferLocked"));
  block->nextAllocated = allList;
  allList = block;
  bufferCount.store(bufferCount.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
  PushFree(*this, block);
  return block;
}

Data* BufferPoolImpl::AllocateAndGrowLocked() {
  if (growthRate == 0)
    throw Plaint::BadAlloc(PLAINT_CONTEXT("Tessera::BufferPoolImpl::AllocateAndGrowLocked"));
  Data* last = nullptr;
  for (std::uint32_t made = 0; made < growthRate; ++made) {
    try {
      last = AllocateBufferLocked();
    } catch (const std::bad_alloc&) {
      if (last == nullptr) throw;
      break;  // a partial step still serves
    }
  }
  return last;
}

Data* BufferPoolImpl::TakeFreeLocked() {
  Data* block = freeList != nullptr ? freeList : AllocateAndGrowLocked();
  freeList = NextFree(block);
  // The next taker (most often this thread again) writes the new head; asking for its line
  // now keeps that miss, when another thread released it, out of the next hold.
  if (freeList != nullptr) __builtin_prefetch(freeList, 1);
  freeCount.store(freeCount.load(std::memory_order_relaxed) - 1, std::memory_order_relaxed);
  block->pool.store(this, std::memory_order_relaxed);
  return block;
}

bool BufferPoolImpl::DetachAllLocked() {
  for (Data* block = allList; block != nullptr;) {
    Data* next = block->nextAllocated;
    if (block->pool.load(std::memory_order_relaxed) == this) {
      // The body pointer goes in first, so a Free that sees the null also sees it.
      block->nextAllocated = reinterpret_cast<Data*>(this);
      block->pool.store(nullptr, std::memory_order_release);
      ++detachedCount;
    }
    block = next;
  }
  while (Data* block = freeList) {
    freeList = NextFree(block);
    Buffer::FreeData(block);
    freeCount.store(freeCount.load(std::memory_order_relaxed) - 1, std::memory_order_relaxed);
    bufferCount.store(bufferCount.load(std::memory_order_relaxed) - 1, std::memory_order_relaxed);
  }
  allList = nullptr;
  return detachedCount == 0;
}

// ---- BufferPool ----

BufferPool::BufferPool(std::uint32_t bufferSize, std::uint32_t bufferCount)
    : impl_(new BufferPoolImpl(bufferSize)) {
  try {
    Skein::Guard<Skein::Lock> guard(impl_->lock);
    for (std::uint32_t made = 0; made < bufferCount; ++made) impl_->AllocateBufferLocked();
  } catch (...) {
    // Nothing is out yet, so this frees every block made so far.
    {
      Skein::Guard<Skein::Lock> guard(impl_->lock);
      impl_->DetachAllLocked();
    }
    delete impl_;
    throw;
  }
}

BufferPool::~BufferPool() {
  bool bodyDone = false;
  {
    Skein::Guard<Skein::Lock> guard(impl_->lock);
    bodyDone = impl_->DetachAllLocked();
  }
  if (bodyDone) delete impl_;
}

Buffer BufferPool::Allocate() {
  BufferPoolImpl& pool = *impl_;
  // The common case, a free lock and a free block, calls nothing but a wake-up; waiting and
  // growing go the long way.
  if (pool.lock.TryAcquire()) {
    if (pool.freeList != nullptr) {
      Data* block = pool.TakeFreeLocked();
      block->refCount = 1;
      Buffer result(block, Buffer::AdoptTag{});
      pool.lock.Release();
      return result;
    }
    pool.lock.Release();
  }
  return AllocateSlow(pool);
}

Buffer BufferPool::AllocateSlow(BufferPoolImpl& pool) {
  Data* block;
  {
    Skein::Guard<Skein::Lock> guard(pool.lock);
    block = pool.TakeFreeLocked();
  }
  // Nobody else can see the block yet, so its count needs no lock.
  block->refCount = 1;
  return Buffer(block, Buffer::AdoptTag{});
}

void BufferPool::DropDetached(BufferPoolImpl& pool) {
  bool bodyDone = false;
  {
    Skein::Guard<Skein::Lock> guard(pool.lock);
    bodyDone = --pool.detachedCount == 0;
  }
  if (bodyDone) delete &pool;
}

std::uint32_t BufferPool::GetBufferSize() const { return impl_->bufferSize; }

bool BufferPool::IsUsed() const {
  return impl_->bufferCount.load(std::memory_order_relaxed) != impl_->freeCount.load(std::memory_order_relaxed);
}

}  // namespace Tessera
