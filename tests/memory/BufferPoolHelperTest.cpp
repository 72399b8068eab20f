#include <tessera/memory/BufferPoolHelper.h>

#include <cstring>
#include <tuple>
#include <type_traits>

#include <boost/make_shared.hpp>
#include <boost/weak_ptr.hpp>

#include <gtest/gtest.h>

using Tessera::Buffer;
using Tessera::BufferPool;
using Tessera::BufferPoolHelper;
using PoolPtr = boost::shared_ptr<BufferPool>;
using PoolRef = boost::weak_ptr<BufferPool>;

TEST(BufferPoolHelper, PoolInUseIsRetainedUnusedOneDiesAndFlushDropsIdleOnes) {
  BufferPoolHelper helper(100, 4);
  BufferPool& small = helper.GetPool();
  EXPECT_EQ(&helper.AllocatePool(100, 99), &small);  // the same size: the same pool, the count ignored
  Buffer kept = small.Allocate();
  helper.AllocatePool(200, 4);
  const PoolRef large = helper.SharePool();
  EXPECT_TRUE(kept.IsPooled());
  EXPECT_EQ(&helper.AllocatePool(100, 8), &small);
  EXPECT_TRUE(large.expired());  // it had nothing out
  // With nothing out, giving it up leaves it to whoever else shares it.
  const PoolPtr shared = helper.SharePool();
  kept = Buffer();
  helper.FreePool();
  EXPECT_EQ(std::make_pair(helper.SharePool(), shared.use_count()), std::make_pair(PoolPtr(), 1L));

  // Flush drops only retained pools with nothing out; with no pool, it and FreePool do nothing.
  helper.Flush();
  helper.FreePool();
  kept = helper.AllocatePool(10, 1).Allocate();
  const PoolRef busy = helper.SharePool();
  Buffer returned = helper.AllocatePool(20, 1).Allocate();
  const PoolRef idle = helper.SharePool();
  helper.AllocatePool(30, 1);
  returned = Buffer();
  EXPECT_FALSE(idle.expired());  // nothing drops it by itself
  helper.Flush();
  EXPECT_EQ(std::make_pair(busy.expired(), idle.expired()), std::make_pair(false, true));
  EXPECT_EQ(helper.GetPool().GetBufferSize(), 30u);
}

TEST(BufferPoolHelper, SetPoolRetainsPoolsInUseAndTheLatestComesBackFirst) {
  BufferPoolHelper helper;
  const PoolPtr first = boost::make_shared<BufferPool>(8, 1), second = boost::make_shared<BufferPool>(8, 1);
  Buffer fromFirst = first->Allocate();
  helper.SetPool(first);
  helper.SetPool(first);  // the current pool: not retained although in use
  helper.SetPool(helper.SharePool());
  EXPECT_EQ(first.use_count(), 2);
  helper.SetPool(second);  // first is in use: retained
  EXPECT_EQ(first.use_count(), 2);
  helper.SetPool(first);  // taken off the list; second has nothing out and goes
  EXPECT_EQ(helper.SharePool(), first);
  EXPECT_EQ(std::make_pair(first.use_count(), second.use_count()), std::make_pair(2L, 1L));
  helper.SetPool(PoolPtr());  // as FreePool: first is in use and retained
  EXPECT_EQ(std::make_pair(helper.SharePool(), first.use_count()), std::make_pair(PoolPtr(), 2L));
  fromFirst = Buffer();
  helper.Flush();
  EXPECT_EQ(first.use_count(), 1);

  Buffer a = first->Allocate(), b = second->Allocate();
  helper.SetPool(first);
  helper.SetPool(second);     // retains first
  helper.AllocatePool(60, 1);  // retains second
  helper.AllocatePool(8, 1);
  EXPECT_EQ(helper.SharePool(), second);
  EXPECT_EQ(std::make_pair(first.use_count(), second.use_count()), std::make_pair(2L, 2L));  // first still retained
}

TEST(BufferPoolHelper, DestructionLeavesBuffersValidButUnpooled) {
  Buffer current, retained;
  PoolPtr keep;
  {
    BufferPoolHelper helper;
    retained = helper.AllocatePool(16, 1).Allocate();
    keep = helper.SharePool();
    current = helper.AllocatePool(24, 1).Allocate();
    std::memset(current.Memory(), 0x11, 24);
  }
  EXPECT_FALSE(current.IsPooled());
  EXPECT_EQ(static_cast<unsigned char*>(current.Memory())[23], 0x11);
  EXPECT_TRUE(retained.IsPooled());  // its pool is shared and lives on
  keep.reset();
  EXPECT_FALSE(retained.IsPooled());
}

TEST(BufferPoolHelper, MovesHandThePoolsOver) {
  static_assert(std::is_nothrow_move_constructible_v<BufferPoolHelper> &&
                std::is_nothrow_move_assignable_v<BufferPoolHelper>);
  BufferPoolHelper first(16, 1);
  Buffer out = first.GetPool().Allocate();
  first.AllocatePool(24, 1);  // the 16-byte pool is in use, so it is retained
  BufferPoolHelper second(std::move(first));
  EXPECT_FALSE(first.SharePool());
  EXPECT_TRUE(second.AllocatePool(16, 1).IsUsed());  // the retained pool came along
  second = BufferPoolHelper();  // its pools go as with its destructor
  EXPECT_FALSE(second.SharePool());
  EXPECT_FALSE(out.IsPooled());
}
