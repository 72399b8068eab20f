#include <tessera/frame/StaticInitialize.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include <plaint/Error.h>

namespace Tessera {
namespace {

struct Counters {
  std::atomic<int> created{0};
  std::atomic<int> destroyed{0};
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

void ExpectDisposedError(StaticInitialize& object) {
  try {
    object.GetInstanceLazy();
    FAIL() << "no exception";
  } catch (const Plaint::LogicError& e) {
    EXPECT_STREQ(e.what(), "static instance already disposed");
    EXPECT_STREQ(e.GetContext().function, "Tessera::StaticInitialize::GetInstanceLazy");
  }
}

TEST(StaticInitialize, MovesFromFreshToLiveToDisposedOnce) {
  Counters counters;
  {
    StaticInitialize object(StaticInitialize::MakeAny(&Create, &Destroy, &counters));
    object.Dispose();  // Fresh: nothing happens, creation still follows
    void* first = object.GetInstanceLazy();
    EXPECT_EQ(*static_cast<int*>(first), 42);
    EXPECT_EQ(object.GetInstanceLazy(), first);
    EXPECT_EQ(counters.created, 1);
    object.Dispose();
    object.Dispose();
    EXPECT_EQ(counters.destroyed, 1);
    EXPECT_EQ(counters.lastDestroyed, first);
    ExpectDisposedError(object);
    EXPECT_EQ(counters.created, 1);
  }
  EXPECT_EQ(counters.destroyed, 1);  // destruction after Dispose destroys nothing more

  {
    StaticInitialize object(&Create, &Destroy, &counters);
    object.GetInstanceLazy();
  }
  EXPECT_EQ(counters.destroyed, 2);  // destruction of a live object disposes it
}

TEST(StaticInitialize, NullFromCreateCountsAsDisposed) {
  Counters counters;
  counters.giveNull = true;
  StaticInitialize object(&Create, &Destroy, &counters);
  ExpectDisposedError(object);
  ExpectDisposedError(object);
  EXPECT_EQ(counters.created, 1);
  EXPECT_EQ(counters.destroyed, 0);
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
      EXPECT_EQ(counters.destroyed, counters.created - 1);  // every loser, none of the winner
    }
    EXPECT_EQ(counters.destroyed, counters.created);      // and the winner once at the end
    EXPECT_EQ(counters.lastDestroyed, seen[0]);
  }
}

}  // namespace
}  // namespace Tessera
