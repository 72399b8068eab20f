#include <tessera/memory/BufferPoolHelper.h>

#include <cstring>

#include <boost/make_shared.hpp>
#include <boost/weak_ptr.hpp>

#include <gtest/gtest.h>

using Tessera::Buffer;
using Tessera::BufferPool;
using Tessera::BufferPoolHelper;
using PoolPtr = boost::shared_ptr<BufferPool>;

TEST(BufferPoolHelper, EmptyHelperAndSameSize) {
  BufferPoolHelper empty;
  EXPECT_FALSE(empty.SharePool());
  empty.FreePool();
  empty.Flush();
  EXPECT_FALSE(empty.SharePool());

  BufferPoolHelper helper(100, 4);
  BufferPool& first = helper.GetPool();
  EXPECT_EQ(first.GetBufferSize(), 100u);
  EXPECT_EQ(&helper.AllocatePool(100, 99), &first);  // the count is ignored
  EXPECT_EQ(helper.SharePool().get(), &first);
}

TEST(BufferPoolHelper, PoolInUseIsRetainedUnusedOneDies) {
  BufferPoolHelper helper;
  BufferPool& small = helper.AllocatePool(100, 4);
  Buffer kept = small.Allocate();
  std::memset(kept.Memory(), 0x5A, 100);
  helper.AllocatePool(200, 4);
  const boost::weak_ptr<BufferPool> large = helper.SharePool();
  EXPECT_TRUE(kept.IsPooled());
  // The retained pool comes back with its own blocks; the 200-byte one had nothing out.
  EXPECT_EQ(&helper.AllocatePool(100, 8), &small);
  EXPECT_TRUE(large.expired());
  kept = Buffer();
  EXPECT_EQ(static_cast<unsigned char*>(small.Allocate().Memory())[0], 0x5A);  // the same block

  // Nothing out: replaced means destroyed, unless someone else shares it.
  const boost::weak_ptr<BufferPool> unused = helper.SharePool();
  helper.AllocatePool(300, 1);
  EXPECT_TRUE(unused.expired());
  PoolPtr shared = helper.SharePool();
  helper.FreePool();
  EXPECT_FALSE(helper.SharePool());
  EXPECT_EQ(shared.use_count(), 1);  // not retained
}

TEST(BufferPoolHelper, FlushDropsOnlyPoolsWithNothingOut) {
  BufferPoolHelper helper;
  Buffer kept = helper.AllocatePool(10, 1).Allocate();
  const boost::weak_ptr<BufferPool> busy = helper.SharePool();
  Buffer returned = helper.AllocatePool(20, 1).Allocate();
  const boost::weak_ptr<BufferPool> idle = helper.SharePool();
  helper.AllocatePool(30, 1);
  returned = Buffer();
  EXPECT_FALSE(idle.expired());  // nothing drops it by itself
  helper.Flush();
  EXPECT_FALSE(busy.expired());
  EXPECT_TRUE(idle.expired());
  EXPECT_EQ(helper.GetPool().GetBufferSize(), 30u);
}

TEST(BufferPoolHelper, LatestRetainedOfASizeComesBackFirst) {
  BufferPoolHelper helper;
  const PoolPtr older = boost::make_shared<BufferPool>(50, 1);
  const PoolPtr newer = boost::make_shared<BufferPool>(50, 1);
  Buffer a = older->Allocate();
  Buffer b = newer->Allocate();
  helper.SetPool(older);
  helper.SetPool(newer);       // retains older
  helper.AllocatePool(60, 1);  // retains newer
  Buffer c = helper.GetPool().Allocate();
  helper.AllocatePool(50, 1);
  EXPECT_EQ(helper.SharePool(), newer);
  helper.AllocatePool(60, 1);
  helper.AllocatePool(50, 1);
  EXPECT_EQ(helper.SharePool(), newer);
  EXPECT_EQ(older.use_count(), 2);  // still on the list, once
  EXPECT_EQ(newer.use_count(), 2);  // current, and off the list
}

TEST(BufferPoolHelper, SetPool) {
  BufferPoolHelper helper;
  const PoolPtr first = boost::make_shared<BufferPool>(8, 1);
  const PoolPtr second = boost::make_shared<BufferPool>(8, 1);
  Buffer fromFirst = first->Allocate();
  helper.SetPool(first);
  helper.SetPool(first);  // the current pool: not retained although in use
  helper.SetPool(helper.SharePool());
  EXPECT_EQ(first.use_count(), 2);
  helper.SetPool(second);  // first is in use: retained
  EXPECT_EQ(first.use_count(), 2);
  helper.SetPool(first);  // taken off the list; second has nothing out and goes
  EXPECT_EQ(helper.SharePool(), first);
  EXPECT_EQ(first.use_count(), 2);
  EXPECT_EQ(second.use_count(), 1);
  helper.SetPool(PoolPtr());  // as FreePool: first is in use and retained
  EXPECT_FALSE(helper.SharePool());
  EXPECT_EQ(first.use_count(), 2);
  fromFirst = Buffer();
  helper.Flush();
  EXPECT_EQ(first.use_count(), 1);
}

TEST(BufferPoolHelper, DestructionLeavesBuffersValidButUnpooled) {
  Buffer current;
  Buffer retained;
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
