#include <tessera/internet/Properties.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <string>

namespace {

// Heap calls of this executable are counted, and refused once a budget set by a test runs out.
long allocations = 0;
long budget = -1;  // -1: no limit

void* CountedAllocate(std::size_t size) {
  if (budget == 0) throw std::bad_alloc();
  if (budget > 0) --budget;
  ++allocations;
  void* p = std::malloc(size != 0 ? size : 1);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}

}  // namespace

void* operator new(std::size_t size) { return CountedAllocate(size); }
void* operator new[](std::size_t size) { return CountedAllocate(size); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }

namespace Tessera {
namespace {

// The entries in position order as "key=value,...", after checking that every key finds its own
// entry at its own position.
std::string Entries(const Properties& p) {
  std::string text;
  for (unsigned int i = 0; i < p.GetCount(); ++i) {
    unsigned int position = 999;
    const std::string* value = p.Find(p.GetKey(i), position);
    EXPECT_EQ(value, &p.GetValue(i)) << p.GetKey(i);
    EXPECT_EQ(position, i) << p.GetKey(i);
    text += (i != 0 ? "," : "") + p.GetKey(i) + "=" + p.GetValue(i);
  }
  EXPECT_EQ(p.Empty(), p.GetCount() == 0);
  return text;
}

Properties Make(bool caseless, std::initializer_list<const char*> keys) {
  Properties p(caseless);
  for (const char* key : keys) p.Set(key, std::string(key) + "v");
  return p;
}

TEST(Properties, NeverSetObjectAllocatesNothingAndFindsNothing) {
  const long before = allocations;
  Properties p(true);
  unsigned int position = 7;
  std::string value = "kept";
  EXPECT_EQ(p.Find("a", position), nullptr);
  EXPECT_FALSE(p.Get("a", value) || p.Has("") || p.Access("a") != nullptr);
  EXPECT_EQ(position, 7u);
  EXPECT_EQ(value, "kept");
  p.Remove(0u);
  p.Remove("a");
  p.Clear();
  Properties copy(p), assigned;
  assigned = p;
  EXPECT_EQ(allocations, before);
  EXPECT_TRUE(copy.IsCaseless() && assigned.IsCaseless());
  EXPECT_EQ(Entries(assigned), "");
}

TEST(Properties, SetKeepsTheFirstKeyTextAndPosition) {
  Properties exact, caseless(true);
  for (Properties* p : {&exact, &caseless}) {
    EXPECT_EQ(p->Set("Key", "1"), 0u);
    EXPECT_EQ(p->Set("x", ""), 1u);
    EXPECT_EQ(p->Set("KEY", "2"), p == &exact ? 2u : 0u);
    EXPECT_EQ(p->Set("", ""), p == &exact ? 3u : 2u);
  }
  EXPECT_EQ(Entries(exact), "Key=1,x=,KEY=2,=");
  EXPECT_EQ(Entries(caseless), "Key=2,x=,=");
  EXPECT_TRUE(caseless.Has("kEy") && !exact.Has("kEy") && exact.Has(""));
  ASSERT_NE(caseless.Get("x"), nullptr);
  EXPECT_EQ(*caseless.Get("x"), "");

  *caseless.Access("KEY") += "!";
  caseless.AccessValue(1) = "y";
  std::string value;
  EXPECT_TRUE(caseless.Get("key", value));
  EXPECT_EQ(value, "2!");
  EXPECT_EQ(Entries(caseless), "Key=2!,x=y,=");
}

TEST(Properties, RemovalMovesOnlyTheLastEntry) {
  Properties p = Make(false, {"a", "b", "c", "d"});
  const std::string* valueOfD = p.Get("d");
  p.Remove(1u);
  EXPECT_EQ(Entries(p), "a=av,d=dv,c=cv");
  EXPECT_EQ(p.Get("d"), valueOfD);  // the entry moved, not its text
  p.Remove(3u);
  p.Remove("zz");
  EXPECT_EQ(Entries(p), "a=av,d=dv,c=cv");
  p.Remove(2u);  // the last one: nothing moves
  EXPECT_EQ(Entries(p), "a=av,d=dv");
  p.Remove("a");
  EXPECT_EQ(Entries(p), "d=dv");
  p.Remove(0u);
  EXPECT_EQ(Entries(p), "");
  EXPECT_EQ(p.Set("e", "1"), 0u);
}

TEST(Properties, CopiesAssignmentsAndSwapsKeepTheirOwnComparison) {
  Properties source = Make(true, {"A", "b"});
  Properties copy(source);
  copy.Set("a", "changed");
  source.Set("c", "new");
  EXPECT_EQ(Entries(copy), "A=changed,b=bv");
  EXPECT_EQ(Entries(source), "A=Av,b=bv,c=new");

  Properties& self = source;
  source = self;
  EXPECT_EQ(Entries(source), "A=Av,b=bv,c=new");

  Properties exact = Make(false, {"x"});
  exact = Properties(true);
  EXPECT_TRUE(exact.IsCaseless());
  const long before = allocations;
  EXPECT_EQ(Entries(exact), "");
  EXPECT_EQ(allocations, before);

  Properties other = Make(false, {"K"});
  other.Swap(source);
  EXPECT_TRUE(other.Has("a") && !source.Has("k") && source.Has("K"));
  EXPECT_TRUE(other.IsCaseless() && !source.IsCaseless());

  other.Clear();
  other.Set("Q", "1");
  other.Set("q", "2");
  EXPECT_EQ(Entries(other), "Q=2");
}

// Runs `operation` with `allowed` heap calls left; true when it was refused.
template <class Operation>
bool Refused(long allowed, Operation operation) {
  budget = allowed;
  try {
    operation();
  } catch (const std::bad_alloc&) {
    budget = -1;
    return true;
  }
  budget = -1;
  return false;
}

TEST(Properties, RefusedAllocationLeavesTheObjectAsItWas) {
  const std::string longKey(30, 'k'), longValue(40, 'v');
  int refusals = 0;
  for (long allowed = 0; allowed < 8; ++allowed) {
    Properties p = Make(false, {"k1", "k2"});
    p.Set(longKey, longValue);
    const std::string before = Entries(p);

    const bool setRefused = Refused(allowed, [&] { p.Set(longKey + "2", longValue); });
    EXPECT_EQ(Entries(p), setRefused ? before : before + "," + longKey + "2=" + longValue);
    p.Remove(longKey + "2");
    const bool replaceRefused = Refused(allowed, [&] { p.Set("k2", longValue); });
    EXPECT_EQ(*p.Get("k2"), replaceRefused ? "k2v" : longValue);
    p.Set("k2", "k2v");

    Properties target = Make(true, {"t"});
    const bool assignRefused = Refused(allowed, [&] { target = p; });
    EXPECT_EQ(Entries(target), assignRefused ? "t=tv" : before);
    EXPECT_EQ(target.IsCaseless(), assignRefused);
    Refused(allowed, [&] { Properties copy(p); });  // a partial copy leaks nothing (ASan)
    refusals += setRefused + replaceRefused + assignRefused;
  }
  EXPECT_GE(refusals, 10);  // every step of each operation was refused once
}

}  // namespace
}  // namespace Tessera
