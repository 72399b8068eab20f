#include <tessera/memory/BufferPoolHelper.h>

#include <cstring>

#include <boost/make_shared.hpp>
#include <boost/weak_ptr.hpp>

#include <gtest/gtest.h>

using Tessera::Buffer;
using Tessera::BufferPool;
using Tessera::BufferPoolHelper;

TEST(BufferPoolHelper, StartsEmpty) {
  BufferPoolHelper helper;
  EXPECT_FALSE(helper.SharePool());
  helper.FreePool();
  helper.Flush();
  EXPECT_FALSE(helper.SharePool());

  BufferPoolHelper sized(64, 2);
  ASSERT_TRUE(sized.SharePool());
  EXPECT_EQ(sized.GetPool().GetBufferSize(), 64u);
  EXPECT_EQ(&sized.GetPool(), sized.SharePool().get());
}

TEST(BufferPoolHelper, SameSizeKeepsTheCurrentPool) {
  BufferPoolHelper helper;
  BufferPool& first = helper.AllocatePool(100, 4);
  BufferPool& again = helper.AllocatePool(100, 99);
  EXPECT_EQ(&first, &again);
  const boost::shared_ptr<BufferPool> current = helper.SharePool();
  EXPECT_EQ(&helper.AllocatePool(100, 0), current.get());
}

TEST(BufferPoolHelper, PoolInUseIsRetainedAndComesBackWithItsSize) {
  BufferPoolHelper helper;
  BufferPool& small = helper.AllocatePool(100, 4);
  const boost::weak_ptr<BufferPool> smallWatch = helper.SharePool();
  Buffer kept = small.Allocate();
  std::memset(kept.Memory(), 0x5A, 100);

  BufferPool& large = helper.AllocatePool(200, 4);
  EXPECT_NE(&large, &small);
  EXPECT_EQ(large.GetBufferSize(), 200u);
  EXPECT_FALSE(smallWatch.expired());
  EXPECT_TRUE(kept.IsPooled());
  const boost::weak_ptr<BufferPool> largeWatch = helper.SharePool();

  // The retained pool comes back with its old blocks; the count is ignored.
  EXPECT_EQ(&helper.AllocatePool(100, 8), &small);
  EXPECT_TRUE(largeWatch.expired());  // nothing of it was out
  kept = Buffer();
  Buffer reused = small.Allocate();
  EXPECT_EQ(static_cast<unsigned char*>(reused.Memory())[0], 0x5A);  // the block just returned
}

TEST(BufferPoolHelper, UnusedPoolDiesAtOnceWhenReplaced) {
  BufferPoolHelper helper(100, 4);
  const boost::weak_ptr<BufferPool> first = helper.SharePool();
  helper.AllocatePool(200, 4);
  EXPECT_TRUE(first.expired());
  // Nothing was retained: 100 comes back as a new pool.
  helper.AllocatePool(100, 4);
  EXPECT_NE(helper.SharePool(), first.lock());

  // A pool that someone else shares outlives its replacement, but is not retained.
  boost::shared_ptr<BufferPool> shared = helper.SharePool();
  helper.FreePool();
  EXPECT_FALSE(helper.SharePool());
  EXPECT_EQ(shared.use_count(), 1);
}

TEST(BufferPoolHelper, FlushDropsOnlyPoolsWithNothingOut) {
  BufferPoolHelper helper;
  Buffer kept = helper.AllocatePool(10, 1).Allocate();
  const boost::weak_ptr<BufferPool> busy = helper.SharePool();
  Buffer returned = helper.AllocatePool(20, 1).Allocate();
  const boost::weak_ptr<BufferPool> idle = helper.SharePool();
  helper.AllocatePool(30, 1);
  EXPECT_FALSE(busy.expired());
  EXPECT_FALSE(idle.expired());
  returned = Buffer();  // the 20-byte pool has nothing out now, but stays until a Flush
  EXPECT_FALSE(idle.expired());
  helper.Flush();
  EXPECT_FALSE(busy.expired());
  EXPECT_TRUE(idle.expired());
  EXPECT_EQ(helper.GetPool().GetBufferSize(), 30u);
  EXPECT_TRUE(kept.IsPooled());
}

TEST(BufferPoolHelper, LastRetainedOfASizeComesBackFirst) {
  BufferPoolHelper helper;
  const boost::shared_ptr<BufferPool> older = boost::make_shared<BufferPool>(50, 1);
  const boost::shared_ptr<BufferPool> newer = boost::make_shared<BufferPool>(50, 1);
  Buffer a = older->Allocate();
  Buffer b = newer->Allocate();
  helper.SetPool(older);
  helper.SetPool(newer);  // retains older
  helper.AllocatePool(60, 1);  // retains newer
  EXPECT_EQ(helper.SharePool()->GetBufferSize(), 60u);
  EXPECT_EQ(helper.SharePool().use_count(), 1);
  Buffer c = helper.GetPool().Allocate();
  helper.AllocatePool(50, 1);
  EXPECT_EQ(helper.SharePool(), newer);
  helper.AllocatePool(50, 1);
  EXPECT_EQ(helper.SharePool(), newer);
  helper.AllocatePool(60, 1);
  helper.AllocatePool(50, 1);
  EXPECT_EQ(helper.SharePool(), newer);
  // older is still on the list, and newer was taken off it when it became current.
  EXPECT_EQ(older.use_count(), 2);
  EXPECT_EQ(newer.use_count(), 2);
}

TEST(BufferPoolHelper, SetPool) {
  BufferPoolHelper helper;
  const boost::shared_ptr<BufferPool> first = boost::make_shared<BufferPool>(8, 1);
  const boost::shared_ptr<BufferPool> second = boost::make_shared<BufferPool>(8, 1);
  Buffer fromFirst = first->Allocate();
  helper.SetPool(first);
  // The current pool again: nothing changes, and it is not retained although in use.
  helper.SetPool(first);
  helper.SetPool(helper.SharePool());
  EXPECT_EQ(first.use_count(), 2);

  helper.SetPool(second);  // first is in use: retained
  EXPECT_EQ(first.use_count(), 2);
  EXPECT_EQ(helper.SharePool(), second);
  helper.SetPool(first);  // taken off the list; second has nothing out: not retained
  EXPECT_EQ(helper.SharePool(), first);
  EXPECT_EQ(first.use_count(), 2);
  EXPECT_EQ(second.use_count(), 1);

  // An empty pointer gives up the current pool, which is in use and so retained.
  helper.SetPool(boost::shared_ptr<BufferPool>());
  EXPECT_FALSE(helper.SharePool());
  EXPECT_EQ(first.use_count(), 2);
  helper.SetPool(boost::shared_ptr<BufferPool>());
  fromFirst = Buffer();
  helper.Flush();
  EXPECT_EQ(first.use_count(), 1);
}

TEST(BufferPoolHelper, DestructionLeavesBuffersValidButUnpooled) {
  Buffer current;
  Buffer retained;
  Buffer shared;
  boost::shared_ptr<BufferPool> keep;
  {
    BufferPoolHelper helper;
    retained = helper.AllocatePool(16, 1).Allocate();
    keep = helper.SharePool();
    shared = keep->Allocate();
    helper.AllocatePool(24, 1);
    current = helper.GetPool().Allocate();
    std::memset(current.Memory(), 0x11, 24);
    EXPECT_TRUE(current.IsPooled());
  }
  EXPECT_FALSE(current.IsPooled());
  EXPECT_EQ(current.GetSize(), 24u);
  EXPECT_EQ(static_cast<unsigned char*>(current.Memory())[23], 0x11);
  // The pool that someone else shares lives on.
  EXPECT_TRUE(retained.IsPooled());
  EXPECT_TRUE(shared.IsPooled());
  keep.reset();
  EXPECT_FALSE(retained.IsPooled());
}
