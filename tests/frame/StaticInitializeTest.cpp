#include <tessera/frame/StaticInitialize.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <tuple>
#include <vector>

#include <plaint/Error.h>

namespace Tessera {
namespace {

struct Counters {
  std::atomic<int> created{0}, destroyed{0};
  std::atomic<void*> lastDestroyed{nullptr};
  bool giveNull = false;
};

void* Create(void* param) {
  auto* counters = static_cast<Counters*>(param);
  ++counters->created;
  return counters->giveNull ? nullptr : new int(42);
}

void Destroy(void* instance, void* param) {
  auto* counters = static_cast<Counters*>(param);
  ++counters->destroyed;
  counters->lastDestroyed = instance;
  delete static_cast<int*>(instance);
}

TEST(StaticInitialize, MovesFromFreshToLiveToDisposedOnce) {
  Counters counters;
  void* first = nullptr;
  {
    StaticInitialize object(StaticInitialize::MakeAny(&Create, &Destroy, &counters));
    object.Dispose();  // on a fresh object: nothing, creation still follows
    first = object.GetInstanceLazy();
    EXPECT_EQ(object.GetInstanceLazy(), first);
    object.Dispose();
    object.Dispose();
    try {
      object.GetInstanceLazy();
      ADD_FAILURE() << "no exception";
    } catch (const Plaint::LogicError& e) {
      EXPECT_STREQ(e.what(), "static instance already disposed");
      EXPECT_STREQ(e.GetContext().function, "Tessera::StaticInitialize::GetInstanceLazy");
    }
  }
  EXPECT_EQ(std::make_tuple(counters.created.load(), counters.destroyed.load(), counters.lastDestroyed.load()),
            std::make_tuple(1, 1, first));

  { StaticInitialize(&Create, &Destroy, &counters).GetInstanceLazy(); }
  EXPECT_EQ(counters.destroyed, 2);  // destroying a live object disposes it

  Counters nulls;
  nulls.giveNull = true;
  StaticInitialize empty(&Create, &Destroy, &nulls);
  EXPECT_THROW(empty.GetInstanceLazy(), Plaint::LogicError);  // a null from create counts as disposed
  EXPECT_THROW(empty.GetInstanceLazy(), Plaint::LogicError);
  EXPECT_EQ(std::make_pair(nulls.created.load(), nulls.destroyed.load()), std::make_pair(1, 0));
}

TEST(StaticInitialize, RacingThreadsKeepOneInstanceAndDestroyEveryLoser) {
  for (int round = 0; round < 20; ++round) {
    Counters counters;
    std::vector<void*> seen(8);
    {
      StaticInitialize object(&Create, &Destroy, &counters);
      std::atomic<bool> go{false};
      std::vector<std::thread> threads;
      for (std::size_t i = 0; i < seen.size(); ++i)
        threads.emplace_back([&, i] {
          while (!go) {
          }
          seen[i] = object.GetInstanceLazy();
        });
      go = true;
      for (auto& thread : threads) thread.join();
      for (void* instance : seen) EXPECT_EQ(instance, seen[0]);
      EXPECT_EQ(counters.destroyed, counters.created - 1);
    }
    EXPECT_EQ(std::make_pair(counters.destroyed.load(), counters.lastDestroyed.load()),
              std::make_pair(counters.created.load(), seen[0]));
  }
}

}  // namespace
}  // namespace Tessera
