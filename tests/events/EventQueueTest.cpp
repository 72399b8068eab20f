#include <tessera/events/EventQueue.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "tessera/memory/BufferPoolImpl.h"

namespace Tessera {
namespace {

struct Numbered : Event {
  Numbered(std::uint32_t producer, std::uint32_t serial) : Event(producer), serial(serial) {}
  std::uint32_t serial;
};

template <std::size_t Size>
struct Sized : Event {
  Sized() : Event(0u) {}
  char pad[Size - sizeof(Event)];
};

boost::shared_ptr<Event> Make(std::uint32_t number) { return boost::shared_ptr<Event>(new Event(number)); }

std::uint32_t Number(const boost::shared_ptr<Event>& event) { return event ? event->GetId().GetNumber() : 0xDEADu; }

TEST(EventId, NumbersAndTextsCompareByKindAndChars) {
  const EventId five(5), text5("5", 1, false), empty("", 0, true), ab("ab", 2, true), abc(std::string("abc"));
  EXPECT_TRUE(five == 5u);
  EXPECT_FALSE(five == text5);
  EXPECT_FALSE(five == "5");
  EXPECT_TRUE(text5 == "5");
  EXPECT_FALSE(text5 == 5u);
  EXPECT_TRUE(empty == "");
  EXPECT_FALSE(empty == 0u);
  EXPECT_FALSE(empty == EventId(0u));
  EXPECT_FALSE(ab == abc);
  EXPECT_FALSE(ab == "abc");
  EXPECT_FALSE(EventId("AB", 2, true) == ab);
  EXPECT_TRUE(EventId("ab", 0xFFFFFFFFu, false) == ab);  // static and owned alike
  EXPECT_TRUE(abc == std::string("abc"));
  EXPECT_TRUE(EventId(0xFFFFFFFFu) == 0xFFFFFFFFu);
}

TEST(EventId, OwnedTextsAreCopiedStaticTextsShared) {
  char buffer[] = "shared";
  const EventId borrowed(buffer, 0xFFFFFFFFu, true);
  const EventId owned(buffer, 0xFFFFFFFFu, false);
  EXPECT_EQ(borrowed.GetText(), buffer);
  EXPECT_EQ(borrowed.GetLength(), 6u);
  EXPECT_TRUE(borrowed.IsStatic());
  EXPECT_NE(owned.GetText(), buffer);
  EXPECT_EQ(EventId(borrowed).GetText(), buffer);
  EventId copy(5);
  {
    EventId source(std::string("gone soon"));
    copy = source;
    EXPECT_NE(copy.GetText(), source.GetText());
  }
  EXPECT_STREQ(copy.GetText(), "gone soon");
  copy = *&copy;
  EXPECT_STREQ(copy.GetText(), "gone soon");
  copy = EventId(7);
  EXPECT_TRUE(copy == 7u);
}

TEST(Event, SmallEventsComeFromThePoolLargerOnesFromTheHeap) {
  static_assert(Event::pooledSizeLimit == 10 * sizeof(void*), "ten pointer widths");
  // The pool's blocks are last in, first out: a pooled event reuses the block just freed.
  void* first = new Sized<Event::pooledSizeLimit>;
  delete static_cast<Sized<Event::pooledSizeLimit>*>(first);
  auto* second = new Sized<Event::pooledSizeLimit>;
  EXPECT_EQ(static_cast<void*>(second), first);
  const Buffer::Data* header = static_cast<const Buffer::Data*>(static_cast<void*>(second)) - 1;
  EXPECT_EQ(header->size, Event::pooledSizeLimit);
  EXPECT_EQ(header->refCount, 1u);
  delete second;
  auto* large = new Sized<Event::pooledSizeLimit + 8>;  // from the heap, and back there
  delete large;

  // Threads racing to their first event share one pool.
  std::vector<std::thread> threads;
  std::vector<void*> blocks(4);
  for (int t = 0; t < 4; ++t) threads.emplace_back([&blocks, t] { blocks[t] = new Event(1u); });
  for (auto& thread : threads) thread.join();
  for (void* block : blocks) {
    EXPECT_NE(static_cast<Buffer::Data*>(block)[-1].pool.load(), nullptr);
    delete static_cast<Event*>(block);
  }
}

TEST(EventList, LinksFirstInFirstOutAndKeepsPulledLinks) {
  EventListImpl list;
  auto a = Make(1), b = Make(2);
  list.PostEvent(a);
  list.PostEvent(b);
  list.PostEvent(a);  // still linked: left out
  list.PostEvent(nullptr);
  auto pulled = list.PullEvent();
  EXPECT_EQ(pulled, a);
  list.PostEvent(a);  // still holds its follower: left out
  EXPECT_EQ(list.PullEvent(), b);
  EXPECT_TRUE(list.IsEmpty());
  list.PostEvent(b);  // came out last, so it is free again
  EXPECT_EQ(list.PullEvent(), b);
  EXPECT_EQ(list.PullEvent(), nullptr);
}

TEST(EventQueue, PullsInOrderWithTimeOutsInWholeMilliseconds) {
  EventQueue queue;
  EventQueue copy = queue;
  for (std::uint32_t n = 1; n <= 3; ++n) copy.PostEvent(Make(n));
  EXPECT_EQ(Number(queue.PullEvent(TimeSpan(0))), 1u);
  EXPECT_EQ(Number(queue.PullEvent()), 2u);
  EXPECT_EQ(Number(queue.PullEvent(TimeSpan(-9999))), 3u);
  // Below a millisecond of either sign is one try; from one millisecond on, a real wait.
  for (std::int64_t ticks : {0LL, 9999LL, -9999LL}) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(queue.PullEvent(TimeSpan(ticks)), nullptr);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1)) << ticks;
  }
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(queue.PullEvent(TimeSpan(10000)), nullptr);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1));

  // An event that comes while a puller waits wakes it; a null post wakes it for nothing.
  std::thread poster([copy]() mutable {
    copy.PostEvent(nullptr);
    copy.PostEvent(Make(9));
  });
  EXPECT_EQ(Number(queue.PullEvent(TimeSpan(600000000))), 9u);
  poster.join();
}

TEST(EventQueue, ProducersAndPullersLoseNothingAndKeepEachProducersOrder) {
  constexpr std::uint32_t kProducers = 4, kEach = 100000;
  EventQueue queue;
  std::atomic<std::uint32_t> received{0};
  std::vector<std::vector<std::uint32_t>> seen(2, std::vector<std::uint32_t>(kProducers, 0));
  std::atomic<bool> ordered{true};
  std::vector<std::thread> threads;
  for (std::uint32_t p = 0; p < kProducers; ++p)
    threads.emplace_back([&queue, p] {
      for (std::uint32_t n = 1; n <= kEach; ++n) queue.PostEvent(boost::shared_ptr<Event>(new Numbered(p, n)));
    });
  for (int puller = 0; puller < 2; ++puller)
    threads.emplace_back([&, puller] {
      while (received.load() < kProducers * kEach) {
        auto event = queue.PullEvent(TimeSpan(50000));
        if (!event) continue;
        const auto& numbered = static_cast<const Numbered&>(*event);
        std::uint32_t& last = seen[puller][numbered.GetId().GetNumber()];
        if (numbered.serial <= last) ordered = false;
        last = numbered.serial;
        received.fetch_add(1);
      }
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(received.load(), kProducers * kEach);
  EXPECT_TRUE(ordered.load());
  EXPECT_EQ(queue.PullEvent(TimeSpan(0)), nullptr);
}

TEST(EventQueue, LongChainsDieWithoutDeepRecursion) {
  boost::shared_ptr<Event> held;
  {
    EventQueue queue;
    for (std::uint32_t n = 0; n < 400000; ++n) queue.PostEvent(Make(n));
    held = queue.PullEvent();  // its link keeps the events pulled after it alive
    for (std::uint32_t n = 1; n < 150000; ++n) ASSERT_EQ(Number(queue.PullEvent(TimeSpan(0))), n);
  }
  EXPECT_EQ(Number(held), 0u);
}

}  // namespace
}  // namespace Tessera
