#include <tessera/memory/Buffer.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include <plaint/Error.h>

#include "tessera/memory/BufferPoolImpl.h"

namespace Tessera {
namespace {

using Access = detail::BufferPoolAccess;

// Lets `allowed` more heap calls through, then refuses; restores calloc on destruction.
class RefusingHeap {
 public:
  explicit RefusingHeap(int allowed) : previous_(detail::SetHeapAllocateForTesting(&Allocate)) { budget = allowed; }
  ~RefusingHeap() { detail::SetHeapAllocateForTesting(previous_); }

 private:
  static void* Allocate(std::size_t count, std::size_t size) { return budget-- > 0 ? std::calloc(count, size) : nullptr; }
  static inline int budget = 0;
  detail::HeapAllocate previous_;
};

// Everything observable about a handle, in one comparable line.
std::string State(const Buffer& b) {
  return std::string(b.IsNull() ? "null" : "block") + (b ? " true" : " false") + " size=" +
         std::to_string(b.GetSize()) + " refs=" + std::to_string(Access::RefCount(b)) +
         (b.IsShared() ? " shared" : "") + (b.IsPooled() ? " pooled" : "") + (b.Memory() ? "" : " nomemory");
}

unsigned char Byte(const Buffer& b, int i) { return static_cast<const unsigned char*>(b.Memory())[i]; }

// Runs `act` and checks that it throws Error from `function`, with `what` when given.
template <class Error, class Act>
void ExpectThrowFrom(const char* function, Act act, const char* what = nullptr) {
  try {
    act();
    ADD_FAILURE() << function;
  } catch (const Error& e) {
    EXPECT_STREQ(e.GetContext().function, function);
    if (what != nullptr) {
      EXPECT_STREQ(e.what(), what);
    }
  }
}

TEST(Buffer, HandlesShareAssignCopyAndMoveBlocks) {
  EXPECT_EQ(State(Buffer()), "null false size=0 refs=0 nomemory");
  EXPECT_EQ(State(Buffer(0)), "block true size=0 refs=1");
  Buffer a(100);
  for (int i = 0; i < 100; ++i) ASSERT_EQ(Byte(a, i), 0);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(a.Memory()) % alignof(std::max_align_t), 0u);
  a.Fill(0xAB);
  {
    Buffer b(a);
    EXPECT_EQ(State(b), "block true size=100 refs=2 shared");
  }
  EXPECT_EQ(State(a), "block true size=100 refs=1");

  Buffer& self = a;
  a = self;
  Buffer c = a;
  a.Assign(c, Buffer::unpooled);  // same block: no copy, still shared
  EXPECT_EQ(State(a), "block true size=100 refs=2 shared");

  Buffer deep(a, Buffer::unpooled), other(3);
  other.Assign(a, Buffer::unpooled);
  for (const Buffer* copy : {&deep, &other}) {
    EXPECT_EQ(State(*copy), "block true size=100 refs=1");
    EXPECT_EQ(Byte(*copy, 99), 0xAB);
  }
  EXPECT_TRUE(Buffer(Buffer(), Buffer::unpooled).IsNull());
  a.Assign(Buffer(), Buffer::unpooled);
  EXPECT_TRUE(a.IsNull());
  EXPECT_EQ(State(c), "block true size=100 refs=1");  // the other holder keeps the block

  const void* memoryOfC = c.Memory();
  c.Swap(other);
  void* raw = Buffer::Unbind(other);  // the reference moves into the raw pointer, count unchanged
  EXPECT_EQ(Buffer::Unbind(other), nullptr);
  Buffer back = Buffer::Bind(raw);
  EXPECT_EQ(back.Memory(), memoryOfC);
  EXPECT_EQ(State(back), "block true size=100 refs=1");
  EXPECT_TRUE(Buffer::Bind(nullptr).IsNull());

  static_assert(std::is_nothrow_move_constructible_v<Buffer> && std::is_nothrow_move_assignable_v<Buffer>);
  Buffer moved(std::move(back)), eight(8);
  eight = std::move(moved);  // its own block goes
  Buffer& same = eight;
  eight = std::move(same);
  EXPECT_EQ(State(back) + " | " + State(moved) + " | " + State(eight),
            "null false size=0 refs=0 nomemory | null false size=0 refs=0 nomemory | block true size=100 refs=1");
  EXPECT_EQ(eight.Memory(), memoryOfC);
}

TEST(Buffer, FailuresThrowAndLeaveObjectsAsTheyWere) {
  Buffer source(10), target(4);
  const void* before = target.Memory();
  {
    RefusingHeap heap(0);
    ExpectThrowFrom<Plaint::BadAlloc>("Tessera::Buffer::Buffer", [] { Buffer fresh(5); });
    ExpectThrowFrom<Plaint::BadAlloc>("Tessera::Buffer::Buffer", [&] { Buffer copy(source, Buffer::unpooled); });
    ExpectThrowFrom<Plaint::BadAlloc>("Tessera::Buffer::Assign", [&] { target.Assign(source, Buffer::unpooled); });
  }
  EXPECT_EQ(target.Memory(), before);
  EXPECT_EQ(State(target), "block true size=4 refs=1");

  BufferPool pool(64, 1);
  ExpectThrowFrom<Plaint::LengthError>("Tessera::Buffer::Clone", [&] { static_cast<void>(Buffer(65).Clone(pool)); }, "buffer size mismatch");
  EXPECT_FALSE(pool.IsUsed());
  EXPECT_TRUE(Buffer().Clone(pool).IsNull());
}

TEST(BufferPool, CountsGrowthLastInFirstOutAndClones) {
  BufferPool empty(64, 0);
  {
    Buffer first = empty.Allocate();
    EXPECT_EQ(State(first), "block true size=64 refs=1 pooled");
    EXPECT_EQ(std::make_tuple(Access::BufferCount(empty), Access::FreeCount(empty), empty.IsUsed()),
              std::make_tuple(16u, 15u, true));
  }
  EXPECT_FALSE(empty.IsUsed());

  BufferPool pool(64, 2);
  Buffer a = pool.Allocate(), b = pool.Allocate();
  EXPECT_EQ(Access::BufferCount(pool), 2u);
  Buffer c = pool.Allocate();
  EXPECT_EQ(std::make_pair(Access::BufferCount(pool), Access::FreeCount(pool)), std::make_pair(18u, 15u));

  std::memset(b.Memory(), 0x5A, 64);
  void* blockOfB = b.Memory();
  b = Buffer();
  Buffer again = pool.Allocate();  // the block released last, with what its user left in it
  EXPECT_EQ(again.Memory(), blockOfB);
  EXPECT_EQ(Byte(again, 63), 0x5A);

  Buffer clone = again.Clone();
  EXPECT_EQ(State(clone), "block true size=64 refs=1 pooled");
  EXPECT_EQ(Byte(clone, 0), 0x5A);
  Buffer ten(10);
  ten.Fill(7);
  Buffer padded = ten.Clone(pool);
  EXPECT_EQ(State(padded), "block true size=64 refs=1 pooled");
  EXPECT_EQ(Byte(padded, 9), 7);
  EXPECT_FALSE(ten.Clone().IsPooled());
}

TEST(BufferPool, PartialGrowthAndRefusedHeap) {
  BufferPool pool(48, 0);
  {
    RefusingHeap heap(3);  // a growth step that gets only three blocks still serves
    Buffer a = pool.Allocate(), b = pool.Allocate(), c = pool.Allocate();
    EXPECT_EQ(Access::BufferCount(pool), 3u);
    // Not one block: fails and changes nothing.
    ExpectThrowFrom<Plaint::BadAlloc>("Tessera::BufferPoolImpl::AllocateBufferLocked", [&] { static_cast<void>(pool.Allocate()); });
    EXPECT_EQ(std::make_pair(Access::BufferCount(pool), Access::FreeCount(pool)), std::make_pair(3u, 0u));
  }
  EXPECT_EQ(Access::FreeCount(pool), 3u);
  RefusingHeap heap(5);  // the constructor's fill fails on the sixth block; ASan checks nothing leaks
  EXPECT_THROW(BufferPool(48, 8), Plaint::BadAlloc);
}

TEST(BufferPool, ThreadsShareOnePoolAndReleaseRacesItsDestruction) {
  BufferPool pool(48, 0);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&pool, t] {
      std::vector<Buffer> held;
      for (int round = 0; round < 2000; ++round) {
        held.push_back(pool.Allocate());
        static_cast<unsigned char*>(held.back().Memory())[0] = static_cast<unsigned char>(t);
        if (held.size() < 8) continue;
        for (const Buffer& b : held) ASSERT_EQ(Byte(b, 0), t);
        held.clear();
      }
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(std::make_pair(pool.IsUsed(), Access::FreeCount(pool)), std::make_pair(false, Access::BufferCount(pool)));

  // Blocks made on one thread are released on another while their pool dies.
  for (int round = 0; round < 200; ++round) {
    auto* dying = new BufferPool(24, 0);
    std::vector<Buffer> out;
    for (int i = 0; i < 16; ++i) out.push_back(dying->Allocate());
    std::thread releaser([moved = std::move(out)]() mutable { moved.clear(); });
    delete dying;
    releaser.join();
  }

  // Clones made while their pool dies: whatever the pool saw, afterwards every clone is
  // detached or unpooled, and dropping the original before the clones frees everything.
  for (int round = 0; round < 300; ++round) {
    auto* dying = new BufferPool(24, 1);
    Buffer original = dying->Allocate();
    std::vector<Buffer> clones;
    std::atomic<int> made{0};
    std::atomic<bool> dead{false};
    std::thread cloner([&] {
      for (int after = 0; after < 4; after += dead.load() ? 1 : 0) {
        clones.push_back(original.Clone());
        made.fetch_add(1);
      }
    });
    while (made.load() == 0) std::this_thread::yield();
    delete dying;
    dead.store(true);
    cloner.join();
    for (const Buffer& clone : clones) ASSERT_FALSE(clone.IsPooled()) << "round " << round;
    original = Buffer();
  }
}

}  // namespace
}  // namespace Tessera
