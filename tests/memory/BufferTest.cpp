#include <tessera/memory/Buffer.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <set>
#include <thread>
#include <vector>

#include <plaint/Error.h>

#include "tessera/memory/BufferPoolImpl.h"

namespace Tessera {
namespace {

using Access = detail::BufferPoolAccess;

// Lets `allowed` more heap calls through, then refuses; restores calloc on destruction.
class RefusingHeap {
 public:
  explicit RefusingHeap(int allowed) {
    budget = allowed;
    previous_ = detail::SetHeapAllocateForTesting(&Allocate);
  }
  ~RefusingHeap() { detail::SetHeapAllocateForTesting(previous_); }

 private:
  static void* Allocate(std::size_t count, std::size_t size) {
    return budget-- > 0 ? std::calloc(count, size) : nullptr;
  }
  static inline int budget = 0;
  detail::HeapAllocate previous_;
};

TEST(Buffer, NullEmptyAndSizedBlocks) {
  Buffer null;
  EXPECT_EQ(null.Memory(), nullptr);
  EXPECT_EQ(null.GetSize(), 0u);
  EXPECT_TRUE(null.IsNull());
  EXPECT_FALSE(null.IsPooled());
  EXPECT_FALSE(null.IsShared());
  EXPECT_FALSE(null);

  Buffer empty(0);
  EXPECT_FALSE(empty.IsNull());
  EXPECT_TRUE(empty);
  EXPECT_NE(empty.Memory(), nullptr);
  EXPECT_EQ(empty.size(), 0u);

  Buffer hundred(100);
  EXPECT_EQ(hundred.GetSize(), 100u);
  const auto* bytes = static_cast<const unsigned char*>(hundred.Memory());
  for (int i = 0; i < 100; ++i) ASSERT_EQ(bytes[i], 0);
  EXPECT_FALSE(hundred.IsShared());
  EXPECT_FALSE(hundred.IsPooled());
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(hundred.Memory()) % alignof(std::max_align_t), 0u);
}

TEST(Buffer, SharingAssignAndDeepCopies) {
  Buffer a(8);
  a.Fill(0xAB);
  {
    Buffer b(a);
    EXPECT_TRUE(a.IsShared());
    EXPECT_TRUE(b.IsShared());
    EXPECT_EQ(b.Memory(), a.Memory());
  }
  EXPECT_FALSE(a.IsShared());

  Buffer& self = a;
  a = self;
  EXPECT_EQ(Access::RefCount(a), 1u);
  Buffer c = a;
  a.Assign(c, Buffer::unpooled);  // same block: nothing at all happens
  EXPECT_EQ(a.Memory(), c.Memory());
  EXPECT_TRUE(a.IsShared());

  Buffer deep(a, Buffer::unpooled);
  EXPECT_NE(deep.Memory(), a.Memory());
  EXPECT_EQ(std::memcmp(deep.Memory(), a.Memory(), 8), 0);
  EXPECT_FALSE(deep.IsShared());
  EXPECT_TRUE(Buffer(Buffer(), Buffer::unpooled).IsNull());

  Buffer other(3);
  other.Assign(a, Buffer::unpooled);
  EXPECT_EQ(other.GetSize(), 8u);
  EXPECT_NE(other.Memory(), a.Memory());

  a.Assign(Buffer(), Buffer::unpooled);
  EXPECT_TRUE(a.IsNull());
  EXPECT_FALSE(c.IsShared());  // the other holder keeps the block alone
  EXPECT_EQ(static_cast<const unsigned char*>(c.Memory())[7], 0xAB);

  Buffer x(1), y(2);
  const void* xm = x.Memory();
  x.Swap(y);
  EXPECT_EQ(y.Memory(), xm);
  EXPECT_EQ(x.GetSize(), 2u);
}

TEST(Buffer, BindAndUnbindCarryTheReference) {
  Buffer a(16);
  Buffer keep = a;
  void* raw = Buffer::Unbind(a);
  EXPECT_TRUE(a.IsNull());
  EXPECT_EQ(Access::RefCount(keep), 2u);
  Buffer back = Buffer::Bind(raw);
  EXPECT_EQ(back.Memory(), keep.Memory());
  EXPECT_EQ(Access::RefCount(keep), 2u);
  EXPECT_TRUE(Buffer::Bind(nullptr).IsNull());
  Buffer null;
  EXPECT_EQ(Buffer::Unbind(null), nullptr);
}

TEST(Buffer, FailuresLeaveObjectsAsTheyWere) {
  Buffer source(10);
  Buffer target(4);
  const void* before = target.Memory();
  {
    RefusingHeap heap(0);
    try {
      Buffer fresh(5);
      FAIL();
    } catch (const Plaint::BadAlloc& e) {
      EXPECT_STREQ(e.GetContext().function, "Tessera::Buffer::Buffer");
    }
    EXPECT_THROW(Buffer(source, Buffer::unpooled), std::bad_alloc);
    try {
      target.Assign(source, Buffer::unpooled);
      FAIL();
    } catch (const Plaint::BadAlloc& e) {
      EXPECT_STREQ(e.GetContext().function, "Tessera::Buffer::Assign");
    }
  }
  EXPECT_EQ(target.Memory(), before);
  EXPECT_EQ(target.GetSize(), 4u);

  BufferPool pool(64, 1);
  Buffer big(65);
  try {
    big.Clone(pool);
    FAIL();
  } catch (const Plaint::LengthError& e) {
    EXPECT_STREQ(e.what(), "buffer size mismatch");
    EXPECT_STREQ(e.GetContext().function, "Tessera::Buffer::Clone");
  }
  EXPECT_FALSE(pool.IsUsed());
  EXPECT_TRUE(Buffer().Clone(pool).IsNull());
}

TEST(BufferPool, CountsGrowthAndLastInFirstOut) {
  BufferPool empty(64, 0);
  EXPECT_FALSE(empty.IsUsed());
  EXPECT_EQ(empty.GetBufferSize(), 64u);
  {
    Buffer first = empty.Allocate();
    EXPECT_TRUE(first.IsPooled());
    EXPECT_EQ(first.GetSize(), 64u);
    EXPECT_EQ(Access::BufferCount(empty), 16u);
    EXPECT_EQ(Access::FreeCount(empty), 15u);
    EXPECT_TRUE(empty.IsUsed());
  }
  EXPECT_FALSE(empty.IsUsed());

  BufferPool pool(64, 2);
  Buffer a = pool.Allocate();
  Buffer b = pool.Allocate();
  EXPECT_EQ(Access::BufferCount(pool), 2u);
  Buffer c = pool.Allocate();
  EXPECT_EQ(Access::BufferCount(pool), 18u);
  EXPECT_EQ(Access::FreeCount(pool), 15u);

  // The block released last comes back first, with what its user left in it.
  std::memset(b.Memory(), 0x5A, 64);
  void* blockOfB = b.Memory();
  b = Buffer();
  Buffer again = pool.Allocate();
  EXPECT_EQ(again.Memory(), blockOfB);
  EXPECT_EQ(static_cast<unsigned char*>(again.Memory())[63], 0x5A);

  // A clone of a pooled block comes from the same pool; into a larger pool it is padded.
  Buffer clone = again.Clone();
  EXPECT_TRUE(clone.IsPooled());
  EXPECT_EQ(static_cast<unsigned char*>(clone.Memory())[0], 0x5A);
  EXPECT_EQ(Access::RefCount(clone), 1u);
  Buffer ten(10);
  ten.Fill(7);
  Buffer padded = ten.Clone(pool);
  EXPECT_EQ(padded.GetSize(), 64u);
  EXPECT_EQ(static_cast<unsigned char*>(padded.Memory())[9], 7);
  EXPECT_FALSE(ten.Clone().IsPooled());
}

TEST(BufferPool, PartialGrowthAndRefusedHeap) {
  BufferPool pool(48, 0);
  {
    RefusingHeap heap(3);  // a growth step that gets only three blocks still serves
    Buffer a = pool.Allocate();
    EXPECT_EQ(Access::BufferCount(pool), 3u);
    EXPECT_EQ(Access::FreeCount(pool), 2u);
    Buffer b = pool.Allocate();
    Buffer c = pool.Allocate();
    try {
      pool.Allocate();  // not one block: fails and changes nothing
      FAIL();
    } catch (const Plaint::BadAlloc& e) {
      EXPECT_STREQ(e.GetContext().function, "Tessera::BufferPoolImpl::AllocateBufferLocked");
    }
    EXPECT_EQ(Access::BufferCount(pool), 3u);
    EXPECT_EQ(Access::FreeCount(pool), 0u);
  }
  EXPECT_EQ(Access::FreeCount(pool), 3u);

  RefusingHeap heap(5);  // the constructor's fill fails on the sixth block
  EXPECT_THROW(BufferPool(48, 8), Plaint::BadAlloc);
}

TEST(BufferPool, BlocksOutliveTheirPool) {
  Buffer survivor;
  Buffer second;
  {
    BufferPool pool(32, 4);
    survivor = pool.Allocate();
    second = pool.Allocate();
    std::memset(survivor.Memory(), 0x11, 32);
  }
  EXPECT_FALSE(survivor.IsPooled());
  EXPECT_EQ(static_cast<unsigned char*>(survivor.Memory())[31], 0x11);
  Buffer copy = survivor.Clone();
  EXPECT_FALSE(copy.IsPooled());
  EXPECT_EQ(std::memcmp(copy.Memory(), survivor.Memory(), 32), 0);
  second = Buffer();    // one detached block gone; the other still holds the pool's body
  survivor = Buffer();  // the last one takes it (ASan would report a leak or a double free)
}

TEST(BufferPool, ThreadsShareOnePoolAndHandBuffersAcross) {
  BufferPool pool(48, 0);
  constexpr int kThreads = 4;
  constexpr int kRounds = 2000;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([&pool, t] {
      std::vector<Buffer> held;
      for (int round = 0; round < kRounds; ++round) {
        held.push_back(pool.Allocate());
        static_cast<unsigned char*>(held.back().Memory())[0] = static_cast<unsigned char>(t);
        if (held.size() == 8) {
          for (const Buffer& b : held) ASSERT_EQ(static_cast<const unsigned char*>(b.Memory())[0], t);
          held.clear();
        }
      }
    });
  for (auto& thread : threads) thread.join();
  EXPECT_FALSE(pool.IsUsed());
  EXPECT_EQ(Access::BufferCount(pool), Access::FreeCount(pool));

  // Buffers made on one thread die on another; some outlive the pool that made them.
  std::vector<Buffer> batch;
  {
    BufferPool local(16, 0);
    for (int i = 0; i < 64; ++i) batch.push_back(local.Allocate());
    std::vector<Buffer> half;
    for (int i = 0; i < 32; ++i) {
      half.push_back(Buffer());
      half.back().Swap(batch[i]);
    }
    std::thread releaser([moved = std::move(half)]() mutable { moved.clear(); });
    releaser.join();
  }
  std::thread lateReleaser([moved = std::move(batch)]() mutable { moved.clear(); });
  lateReleaser.join();
}

TEST(BufferPool, ReleaseRacingThePoolsDestructionIsSafe) {
  for (int round = 0; round < 200; ++round) {
    auto* pool = new BufferPool(24, 0);
    std::vector<Buffer> out;
    for (int i = 0; i < 16; ++i) out.push_back(pool->Allocate());
    std::thread releaser([moved = std::move(out)]() mutable { moved.clear(); });
    delete pool;
    releaser.join();
  }
}

}  // namespace
}  // namespace Tessera
