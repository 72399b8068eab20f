#include <tessera/numerics/Mt19937.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include <gtest/gtest.h>

using Tessera::Int16WhiteNoise;
using Tessera::Mt19937;

TEST(Mt19937, WordSeedingMatchesTheReference) {
  Mt19937 generator(5489);
  EXPECT_EQ(generator(), 3499211612u);
  for (int i = 2; i < 10000; ++i) generator();
  EXPECT_EQ(generator(), 4123659995u);

  Mt19937 byDefault;
  EXPECT_EQ(byDefault(), 2325592414u);
  EXPECT_EQ(byDefault(), 482149846u);
  EXPECT_EQ(byDefault(), 4177211283u);
  EXPECT_EQ(Mt19937::seedDefault, 19650218u);
}

TEST(Mt19937, WordSeedingMatchesStandardGeneratorOverManyRegenerations) {
  for (std::uint32_t seed : {0u, 1u, 5489u, 19650218u, 0xFFFFFFFFu}) {
    Mt19937 generator(seed);
    std::mt19937 standard(seed);
    for (int i = 0; i < 624 * 5 + 7; ++i) ASSERT_EQ(generator(), standard()) << "seed " << seed << " word " << i;
  }
}

TEST(Mt19937, KeySeedingMatchesTheReference) {
  const std::uint32_t key[] = {0x123, 0x234, 0x345, 0x456};
  Mt19937 generator(key, 4);
  const std::uint32_t expected[] = {1067595299u, 955945823u, 477289528u, 4107218783u, 4228976476u,
                                    3344332714u, 3355579695u, 227628506u, 810200273u, 2591290167u};
  for (std::uint32_t word : expected) EXPECT_EQ(generator(), word);
  // The reference program's 1000th output.
  for (int i = 11; i < 1000; ++i) generator();
  EXPECT_EQ(generator(), 3460025646u);
}

TEST(Mt19937, LongKeyIsUsedWhole) {
  std::vector<std::uint32_t> key(1000);
  for (std::uint32_t i = 0; i < key.size(); ++i) key[i] = i * 2654435761u;
  Mt19937 whole(key.data(), 1000);
  Mt19937 cut(key.data(), 624);
  Mt19937 almost(key.data(), 999);
  const std::uint32_t first = whole();
  EXPECT_NE(first, cut());
  EXPECT_NE(first, almost());
  // Changing only the last word changes the sequence.
  key[999] ^= 1;
  EXPECT_NE(first, Mt19937(key.data(), 1000)());

  const std::uint32_t one[] = {7u};
  const std::uint32_t two[] = {7u, 0u};
  EXPECT_NE(Mt19937(one, 1)(), Mt19937(two, 2)());
}

TEST(Mt19937, EmptyKeySeedsAsTheKeyZero) {
  const std::uint32_t zero[] = {0u};
  Mt19937 empty(nullptr, 0);
  Mt19937 single(zero, 1);
  for (int i = 0; i < 700; ++i) ASSERT_EQ(empty(), single());
}

TEST(Mt19937, AssignmentCopiesTheWholeState) {
  Mt19937 a(1);
  Mt19937 b(2);
  for (int i = 0; i < 100; ++i) b();
  a = b;
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(a(), b());
}

TEST(Int16WhiteNoise, SamplesMatchTheSumOfHalves) {
  Int16WhiteNoise noise;
  EXPECT_EQ(noise(), 27485);
  EXPECT_EQ(noise(), 29550);
  EXPECT_EQ(noise(), 14938);
  EXPECT_EQ(noise(), -205);

  Int16WhiteNoise other;
  for (int i = 0; i < 4; ++i) other();
  Mt19937 generator;
  for (int i = 0; i < 24; ++i) generator();
  std::int32_t sum = 0;
  for (int i = 0; i < 6; ++i) {
    const std::uint32_t word = generator();
    sum += static_cast<std::int32_t>((word & 0xFFFF) + (word >> 16));
  }
  EXPECT_EQ(other(), sum / 2 - 196608);

  Int16WhiteNoise copy;
  copy = noise;
  for (int i = 0; i < 300; ++i) ASSERT_EQ(copy(), noise());
}

TEST(Int16WhiteNoise, DistributionIsNearNormal) {
  Int16WhiteNoise noise;
  double sum = 0;
  double squares = 0;
  std::int32_t low = 0;
  std::int32_t high = 0;
  const int count = 200000;
  for (int i = 0; i < count; ++i) {
    const std::int32_t sample = noise();
    sum += sample;
    squares += double(sample) * sample;
    low = std::min(low, sample);
    high = std::max(high, sample);
  }
  const double mean = sum / count;
  const double deviation = std::sqrt(squares / count - mean * mean);
  EXPECT_NEAR(mean, -3, 300);
  EXPECT_NEAR(deviation, 32768, 400);
  EXPECT_GE(low, -196608);
  EXPECT_LE(high, 196602);
  EXPECT_LT(high, 32768 * 6);
}
