#include <tessera/events/EventQueue.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <tuple>
#include <typeinfo>
#include <vector>

#include <tessera/memory/Buffer.h>

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

TEST(EventId, ComparesByKindAndCharsAndCopiesOwnedTexts) {
  char buffer[] = "ab";
  const EventId five(5), text5("5", 1, false), empty("", 0, true), ab(buffer, 0xFFFFFFFFu, true);
  const EventId abOwned(std::string("ab")), abc("abc", 3, false), AB("AB", 2, true);
  const bool equal[] = {five == 5u, text5 == "5", empty == "", ab == abOwned, abc == std::string("abc")};
  const bool unequal[] = {five == text5, five == "5", text5 == 5u, empty == 0u, empty == EventId(0u), ab == abc,
                          ab == "abc", AB == ab};
  for (std::size_t i = 0; i < 5; ++i) EXPECT_TRUE(equal[i]) << i;
  for (std::size_t i = 0; i < 8; ++i) EXPECT_FALSE(unequal[i]) << i;
  EXPECT_EQ(ab.GetText(), buffer);  // static: borrowed, and so are its copies
  EXPECT_EQ(EventId(ab).GetText(), buffer);
  EXPECT_EQ(ab.GetLength(), 2u);
  EventId copy(5);
  {
    EventId source(std::string("gone soon"));
    copy = source;
    EXPECT_NE(copy.GetText(), source.GetText());
  }
  copy = *&copy;
  EXPECT_STREQ(copy.GetText(), "gone soon");
}

TEST(EventId, MovesHandOverOwnedTextsAndContents) {
  struct Content : AnyEvent::Content {
    const std::type_info& GetType() const override { return typeid(Content); }
    Content* Clone() const override { return new Content; }
  };
  EventId text(std::string("owned")), number(7u);
  const char* const owned = text.GetText();
  EventId taken(std::move(text));
  number = std::move(taken);
  AnyEvent any(new Content), other;
  AnyEvent::Content* const content = any.GetContent();
  AnyEvent moved(std::move(any));
  other = std::move(moved);
  EXPECT_EQ(std::make_tuple(number.GetText(), text.IsText(), text.GetNumber(), taken.GetNumber(),
                            other.GetContent(), any.IsEmpty(), moved.IsEmpty()),
            std::make_tuple(owned, false, 0u, 7u, content, true, true));
}

TEST(Event, SmallEventsComeFromThePoolLargerOnesFromTheHeap) {
  constexpr std::size_t limit = Event::pooledSizeLimit;
  static_assert(limit == 10 * sizeof(void*), "ten pointer widths");
  // Last in, first out: a pooled event reuses the block just freed.
  void* first = new Sized<limit>;
  delete static_cast<Sized<limit>*>(first);
  auto* second = new Sized<limit>;
  EXPECT_EQ(static_cast<void*>(second), first);
  const Buffer::Data& header = static_cast<const Buffer::Data*>(static_cast<void*>(second))[-1];
  EXPECT_EQ(header.size, limit);
  EXPECT_NE(header.pool.load(), nullptr);
  delete second;
  delete new Sized<limit + 8>;  // from the heap and back there (ASan checks the pairing)
}

TEST(EventList, LinksFirstInFirstOutAndKeepsPulledLinks) {
  EventListImpl list;
  auto a = Make(1), b = Make(2);
  for (const auto& event : {a, b, a, boost::shared_ptr<Event>()}) list.PostEvent(event);  // a once
  EXPECT_EQ(list.PullEvent(), a);
  list.PostEvent(a);  // still holds its follower: left out
  EXPECT_EQ(list.PullEvent(), b);
  list.PostEvent(b);  // came out last, so it is free again
  EXPECT_EQ(list.PullEvent(), b);
  EXPECT_EQ(list.PullEvent(), nullptr);
}

TEST(EventQueue, PullsInOrderWithTimeOutsInWholeMilliseconds) {
  EventQueue queue, copy = queue;
  for (std::uint32_t n = 1; n <= 3; ++n) copy.PostEvent(Make(n));
  EXPECT_EQ(Number(queue.PullEvent(TimeSpan(0))), 1u);
  EXPECT_EQ(Number(queue.PullEvent()), 2u);
  EXPECT_EQ(Number(queue.PullEvent(TimeSpan(-9999))), 3u);
  // Below a millisecond of either sign is one try; from one millisecond on, a real wait.
  for (std::int64_t ticks : {0LL, 9999LL, -9999LL}) EXPECT_EQ(queue.PullEvent(TimeSpan(ticks)), nullptr);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(queue.PullEvent(TimeSpan(10000)), nullptr);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1));
  // A waiting puller wakes for an event; a null post wakes it for nothing and it waits on.
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
  std::atomic<bool> ordered{true};
  std::vector<std::thread> threads;
  for (std::uint32_t p = 0; p < kProducers; ++p)
    threads.emplace_back([&queue, p] {
      for (std::uint32_t n = 1; n <= kEach; ++n) queue.PostEvent(boost::shared_ptr<Event>(new Numbered(p, n)));
    });
  for (int puller = 0; puller < 2; ++puller)
    threads.emplace_back([&] {
      std::vector<std::uint32_t> last(kProducers, 0);
      while (received.load() < kProducers * kEach) {
        auto event = queue.PullEvent(TimeSpan(50000));
        if (!event) continue;
        const auto& numbered = static_cast<const Numbered&>(*event);
        if (numbered.serial <= last[numbered.GetId().GetNumber()]) ordered = false;
        last[numbered.GetId().GetNumber()] = numbered.serial;
        received.fetch_add(1);
      }
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(received.load(), kProducers * kEach);
  EXPECT_TRUE(ordered.load());
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
