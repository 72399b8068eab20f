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
  void* p = budget != 0 ? std::malloc(size != 0 ? size : 1) : nullptr;
  if (p == nullptr) throw std::bad_alloc();
  budget -= budget > 0;
  ++allocations;
  return p;
}

}  // namespace

void* operator new(std::size_t size) { return CountedAllocate(size); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace Tessera {
namespace {

// The entries in position order as "key=value,...", after checking that every key finds its own
// entry at its own position.
std::string Entries(const Properties& p) {
  std::string text;
  for (unsigned int i = 0; i < p.GetCount(); ++i) {
    unsigned int position = 999;
    EXPECT_EQ(p.Find(p.GetKey(i), position), &p.GetValue(i)) << p.GetKey(i);
    EXPECT_EQ(position, i) << p.GetKey(i);
    text += (i != 0 ? "," : "") + p.GetKey(i) + "=" + p.GetValue(i);
  }
  return text;
}

Properties Make(bool caseless, std::initializer_list<const char*> keys) {
  Properties p(caseless);
  for (const char* key : keys) p.Set(key, std::string(key) + "v");
  return p;
}

TEST(Properties, NeverSetObjectAllocatesNothingAndFindsNothing) {
  Properties assigned = Make(false, {"x"});
  const long before = allocations;
  Properties p(true);
  unsigned int position = 7;
  std::string value = "kept";
  EXPECT_EQ(p.Find("a", position), nullptr);
  EXPECT_FALSE(p.Get("a", value));
  EXPECT_FALSE(p.Has(""));
  EXPECT_EQ(p.Access("a"), nullptr);
  p.Remove(0u);
  p.Remove("a");
  p.Clear();
  assigned = p;  // releases the body
  EXPECT_EQ(std::to_string(allocations - before) + std::to_string(position) + value, "07kept");
  EXPECT_TRUE(Properties(p).IsCaseless());
  EXPECT_TRUE(assigned.IsCaseless());
  EXPECT_TRUE(Entries(assigned).empty());
}

TEST(Properties, SetKeepsTheFirstKeyTextAndPosition) {
  Properties exact, caseless(true);
  for (Properties* p : {&exact, &caseless})
    for (const char* key : {"Key", "x", "KEY", ""}) p->Set(key, std::to_string(p->Set(key, "") + 10));
  EXPECT_EQ(Entries(exact), "Key=10,x=11,KEY=12,=13");
  EXPECT_EQ(Entries(caseless), "Key=10,x=11,=12");
  caseless.Set("kEY", "");
  *caseless.Access("x") += "!";
  caseless.AccessValue(2) = "y";
  std::string value;
  EXPECT_TRUE(caseless.Get("X", value));
  EXPECT_TRUE(caseless.Has("key"));
  EXPECT_FALSE(exact.Has("kEy"));
  EXPECT_EQ(value + Entries(caseless), "11!Key=,x=11!,=y");
}

TEST(Properties, RemovalMovesOnlyTheLastEntry) {
  Properties p = Make(false, {"a", "b", "c", "d"});
  const std::string* valueOfD = p.Get("d");
  p.Remove(1u);
  EXPECT_EQ(Entries(p), "a=av,d=dv,c=cv");
  EXPECT_EQ(p.Get("d"), valueOfD);  // the entry moved, not its text
  for (unsigned int position : {3u, 2u}) p.Remove(position);  // past the end, then the last
  p.Remove("zz");
  EXPECT_EQ(Entries(p), "a=av,d=dv");
  p.Remove("a");
  p.Remove(0u);
  EXPECT_TRUE(Entries(p).empty());
  EXPECT_EQ(p.Set("e", "1"), 0u);
}

TEST(Properties, CopiesAssignmentsAndSwapsKeepTheirOwnComparison) {
  Properties source = Make(true, {"A", "b"});
  Properties copy(source);
  copy.Set("a", "changed");
  source.Set("c", "new");
  Properties& self = source;
  source = self;
  EXPECT_EQ(Entries(copy) + " " + Entries(source), "A=changed,b=bv A=Av,b=bv,c=new");

  Properties other = Make(false, {"K"});
  other.Swap(source);
  other.Clear();
  for (const char* key : {"Q", "q"}) other.Set(key, key);
  EXPECT_FALSE(source.Has("k"));
  EXPECT_TRUE(source.Has("K"));
  EXPECT_EQ(Entries(other), "Q=q");
}

// Runs `operation` with `allowed` heap calls left; true when it was refused.
template <class Operation>
bool Refused(long allowed, Operation operation) {
  budget = allowed;
  bool refused = false;
  try {
    operation();
  } catch (const std::bad_alloc&) {
    refused = true;
  }
  budget = -1;
  return refused;
}

TEST(Properties, RefusedAllocationLeavesTheObjectAsItWas) {
  // Keys and values too long to be held inside the string, so that every copy allocates.
  const std::string longKey(30, 'k'), longValue(40, 'v'), second = "the second key of this test";
  for (long allowed = 0; allowed < 8; ++allowed) {
    Properties p = Make(false, {"the first key of this test", second.c_str()}), target = Make(true, {"t"});
    const std::string before = Entries(p);
    const bool setRefused = Refused(allowed, [&] { p.Set(longKey, longValue); });
    EXPECT_EQ(Entries(p), setRefused ? before : before + "," + longKey + "=" + longValue);
    p.Remove(longKey);
    const bool replaceRefused = Refused(allowed, [&] { p.Set(second, longValue); });
    EXPECT_EQ(*p.Get(second), replaceRefused ? second + "v" : longValue);
    p.Set(second, second + "v");
    const bool assignRefused = Refused(allowed, [&] { target = p; });
    EXPECT_EQ(Entries(target) + std::to_string(target.IsCaseless()), assignRefused ? "t=tv1" : before + "0");
    Refused(allowed, [&] { Properties copy(p); });  // a partial copy leaks nothing (ASan)
    if (allowed == 0 || allowed == 7) {  // from all refused to none
      EXPECT_EQ(setRefused + replaceRefused + assignRefused, allowed == 0 ? 3 : 0);
    }
  }
}

}  // namespace
}  // namespace Tessera
