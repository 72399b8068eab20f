#include <tessera/numerics/Fixed.h>

#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

using Tessera::fixed;

namespace {

fixed Raw(std::int32_t raw) { return fixed(true, raw); }
constexpr std::int32_t kMarker = INT32_MIN;  // out of range
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

}  // namespace

TEST(Fixed, ConversionsIn) {
  // double: nearest millionth, tie upward; anything that does not fit gives the marker.
  const struct { double in; std::int32_t raw; } doubles[] = {
      {1.5, 1500000}, {0.0000004, 0}, {0.0000006, 1}, {-0.0000006, -1}, {0.0000005, 1}, {-0.0000005, 0},
      {2147.483647, 2147483647}, {-2147.483648, kMarker}, {2147.4836475, kMarker}, {3000.0, kMarker},
      {-3000.0, kMarker}, {kNaN, kMarker}, {kInf, kMarker}, {-kInf, kMarker}};
  for (const auto& c : doubles) EXPECT_EQ(fixed(c.in).GetRaw(), c.raw) << c.in;
  // float: each step in single precision, c being 0.0000005 rounded to single.
  EXPECT_EQ(static_cast<double>(0.0000005f), 4.999999987376214e-07);
  EXPECT_EQ(fixed(0.1f).GetRaw(), 100000);
  EXPECT_EQ(fixed(20.000001f).GetRaw(), 20000002);
  EXPECT_EQ(fixed(1000.000001f).GetRaw(), 1000000000);  // the double form keeps the millionth
  EXPECT_EQ(fixed(1000.000001).GetRaw(), 1000000001);
  EXPECT_EQ(fixed(3000.0f).GetRaw(), kMarker);
  // Integers scale in 32 bits and wrap; a wide long gives its low 32 bits.
  EXPECT_EQ(fixed(3000).GetRaw(), -1294967296);
  EXPECT_EQ(fixed(short{-5}).GetRaw(), -5000000);
  EXPECT_EQ(fixed(0x100000002L).GetRaw(), 2000000);
  fixed x;
  EXPECT_EQ((x = 4294967295u).GetRaw(), -1000000);
  EXPECT_EQ((x = static_cast<unsigned char>(200)).GetRaw(), 200000000);
  EXPECT_EQ((x = static_cast<char>(-3)).GetRaw(), -3000000);
  EXPECT_EQ((x = static_cast<unsigned short>(65535)).GetRaw(), static_cast<std::int32_t>(65535u * 1000000u));
  EXPECT_EQ((x = 12UL).GetRaw(), 12000000);
  EXPECT_EQ((x = -2.5f).GetRaw(), -2500000);
  EXPECT_EQ((x = 0.25).GetRaw(), 250000);
}

TEST(Fixed, ConversionsOutAndComparisons) {
  EXPECT_EQ(static_cast<double>(Raw(1500001)), 1.500001);
  EXPECT_EQ(static_cast<float>(Raw(1500001)), static_cast<float>(1.500001));
  EXPECT_EQ(Raw(-1500000).GetLong(), -1);
  EXPECT_EQ(Raw(-999999).GetLong(), 0);
  EXPECT_EQ(static_cast<int>(Raw(2147483647)), 2147);
  EXPECT_EQ(static_cast<unsigned short>(Raw(-1000000)), 65535);
  // The operand goes through its conversion before the raw values compare.
  const fixed one(1);
  EXPECT_TRUE(one == 1.0000004 && !(one < 1.0000004) && one < 1.0000005);
  EXPECT_TRUE(one == 1.0000005f);  // single precision cannot carry the millionth
  EXPECT_TRUE(one == 1L && one == short{1} && one >= fixed(1));
  EXPECT_TRUE(one > 3000 && one > 1e10);  // a wrapped integer, the out-of-range marker
  EXPECT_TRUE(Raw(-1).lessthan(Raw(0)) && !Raw(0).lessthan(Raw(0)) && Raw(0).lessthanequal(Raw(0)));
}

TEST(Fixed, Arithmetic) {
  const struct { fixed result; std::int32_t raw; } cases[] = {
      {Raw(2147483647) + Raw(1), kMarker},
      {Raw(INT32_MIN) - 1, 2147483647 - 999999},
      {fixed(1) + 0.0000005, 1000001},
      {fixed(1) - 0.25f, 750000},
      {fixed(2.5) * fixed(2.5), 6250000},
      {fixed(-1) / fixed(3), -333333},
      {fixed(1) / fixed(3), 333333},
      {fixed(0.003) / fixed(1), 3000},
      {fixed(0.004) / fixed(2), 2000},
      {Raw(-3000000) * Raw(333333), -999999},
      {fixed(2) * 1100, -2094967296},
      {fixed(1000) * 0.0000001, 0},  // rounded to six places first
      {fixed(10) / short{-4}, -2500000},
      {fixed(7).divide(2L), 3500000},
      {Raw(2000000000) / Raw(1), static_cast<std::int32_t>(2000000000u * 1000000u)},
      // Division by zero, also by an operand that rounds to 0, gives -0.000001.
      {fixed(5) / 0, -1},
      {fixed(-5) / 0.0000004, -1},
      {fixed(5).divide(0.0000004f), -1},
      // The remainder has the dividend's sign; the cases integer division leaves open.
      {fixed(7.5) % fixed(2.0), 1500000},
      {fixed(7.0) % 3, 1000000},
      {fixed(-7.5) % 2L, -1500000},
      {fixed(7.5) % short{-2}, 1500000},
      {fixed(-7.5) % 0, -7500000},
      {Raw(INT32_MIN) % Raw(-1), 0},
      // floor and ceil work on the integer part toward zero.
      {fixed(2.7).floor(), 2000000},
      {fixed(-1.5).floor(), -1000000},
      {fixed(-0.5).floor(), 0},
      {fixed(2.0).ceil(), 3000000},
      {fixed(-1.5).ceil(), 0},
      {fixed(-0.5).ceil(), 1000000},
      {Raw(2147483647).ceil(), static_cast<std::int32_t>(2148000000u)},
  };
  for (std::size_t i = 0; i < sizeof cases / sizeof cases[0]; ++i) EXPECT_EQ(cases[i].result.GetRaw(), cases[i].raw) << i;
}

TEST(Fixed, CompoundAssignmentFollowsItsOwnRules) {
  fixed x(7);
  EXPECT_EQ((x /= 2).GetRaw(), (fixed(7) / 2).GetRaw());
  EXPECT_EQ((x = 2, x *= 1100).GetRaw(), -2094967296);  // integer *= multiplies raw
  EXPECT_EQ((x = 2, x *= short{-2}).GetRaw(), -4000000);
  EXPECT_EQ((x = 2, x += 3).GetRaw(), 5000000);
  EXPECT_EQ((x -= 10L).GetRaw(), -5000000);
  EXPECT_EQ((x = 5, x /= 0).GetRaw(), -1);
  EXPECT_EQ((x = 5, x /= fixed()).GetRaw(), -1);
  // Floating forms: double precision, truncated, no rounding step.
  EXPECT_EQ((x = 1, x += 0.0000009).GetRaw(), 1000000);
  EXPECT_EQ((x = 1, x -= 0.0000019f).GetRaw(), 999999);
  EXPECT_EQ((x = 1000.0, x *= 0.0000001).GetRaw(), 100);
  EXPECT_EQ((x = -1, x /= 3.0f).GetRaw(), -333333);
  EXPECT_EQ((x = 5, x /= 0.0).GetRaw(), kMarker);
  EXPECT_EQ((x = 2000, x *= 2.0).GetRaw(), kMarker);
  EXPECT_EQ((x = 1, x += 3000.0).GetRaw(), 1000000 + kMarker);
  EXPECT_EQ((x = fixed(2.5), x *= fixed(2.5)).GetRaw(), 6250000);
  // Prefix ++ and -- wrap and give the new value.
  x = Raw(2147000000);
  EXPECT_EQ((++x).GetRaw(), static_cast<std::int32_t>(2148000000u));
  EXPECT_EQ((--x).GetRaw(), 2147000000);
}

TEST(FixedFunctions, Digits) {
  using Function = fixed (fixed::*)() const;
  const struct { Function function; fixed in; std::int32_t raw; } cases[] = {
      {&fixed::sqrt, 4, 2000000}, {&fixed::sqrt, 2, 1414214}, {&fixed::sqrt, 1, 1000001},
      {&fixed::sqrt, 0.25, 500001}, {&fixed::sqrt, 0, 0}, {&fixed::sqrt, -1, 0}, {&fixed::sqrt, 100, 66294550},
      {&fixed::sqrt, Raw(1), 1196}, {&fixed::sqrt, 90, 9486834},
      {&fixed::exp, 0, 1000000}, {&fixed::exp, 1, 2718277}, {&fixed::exp, -1, 367879},
      {&fixed::exp, 7, 1096632049}, {&fixed::exp, 8, -1314013365},
      // The series ends by itself up to a magnitude of about 1956; beyond, it is cut off.
      {&fixed::exp, 1950, 1303070316}, {&fixed::exp, -1950, -1274793474},
      {&fixed::exp, 2000, kMarker}, {&fixed::exp, -2000, kMarker}, {&fixed::exp, Raw(INT32_MAX), kMarker},
      {&fixed::log, 1, 0}, {&fixed::log, 2, 693152}, {&fixed::log, 2.718282, 1000000},
      {&fixed::log, 10, 2302584}, {&fixed::log, 0.5, -693142}, {&fixed::log, 1000, 6907755},
      {&fixed::log, 0.001, -7189935}, {&fixed::log, 1.999999, -257814866}, {&fixed::log, Raw(1), -7450744},
      {&fixed::log, 0, kMarker}, {&fixed::log, -2, kMarker},
      {&fixed::log10, 100, 2000001}, {&fixed::log10, 1000, 3000000}, {&fixed::log10, 10, 999999},
      {&fixed::log10, 0, -932640335},
      {&fixed::sin, 0, 0}, {&fixed::sin, 0.785398, 707143}, {&fixed::sin, 1.0, 841667},
      {&fixed::sin, 1.570796, 1004525}, {&fixed::sin, 3.141592, 0}, {&fixed::sin, -1.570796, -1004525},
      {&fixed::sin, fixed(1.0) + fixed(3) * Tessera::fixedTwoPi, 841667}, {&fixed::sin, -5.283185, 841667},
      {&fixed::cos, 0, 1004525}, {&fixed::cos, 1.0, 540306}, {&fixed::cos, 1.570796, 0},
      {&fixed::cos, 3.141592, -1004525},
      {&fixed::tan, 0.785398, 1000000}, {&fixed::tan, 1.0, 1557759}, {&fixed::tan, 1.570796, -1},
  };
  for (const auto& c : cases) EXPECT_EQ((c.in.*c.function)().GetRaw(), c.raw) << c.in.GetRaw();

  const struct { fixed x, y; std::int32_t raw; } powers[] = {
      {2, 10, 1024048255}, {2, 0.5, 1414215}, {10, 2, 99999718}, {-2, 3, -8000108},
      {-2, 2, 4000032}, {-3, 0.5, -1732047}, {0, 2, 1000000}};
  for (const auto& c : powers) EXPECT_EQ(c.x.pow(c.y).GetRaw(), c.raw) << c.x.GetRaw() << " " << c.y.GetRaw();
}
