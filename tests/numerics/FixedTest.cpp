#include <tessera/numerics/Fixed.h>

#include <cmath>
#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

using Tessera::fixed;

namespace {

fixed Raw(std::int32_t raw) { return fixed(true, raw); }

}  // namespace

TEST(Fixed, DoubleConversionRoundsToNearestMillionthTieUp) {
  EXPECT_EQ(fixed(1.5).GetRaw(), 1500000);
  EXPECT_EQ(fixed(0.0000004).GetRaw(), 0);
  EXPECT_EQ(fixed(0.0000006).GetRaw(), 1);
  EXPECT_EQ(fixed(-0.0000006).GetRaw(), -1);
  EXPECT_EQ(fixed(0.0000005).GetRaw(), 1);
  EXPECT_EQ(fixed(-0.0000005).GetRaw(), 0);
  EXPECT_EQ(fixed(-1.5).GetRaw(), -1500000);
  EXPECT_EQ(fixed(2147.483647).GetRaw(), 2147483647);
  EXPECT_EQ(fixed(-2147.483648).GetRaw(), INT32_MIN);
  // Out of range, NaN and infinities all give the marker, unlike the wrapping integers.
  EXPECT_EQ(fixed(3000.0).GetRaw(), INT32_MIN);
  EXPECT_EQ(fixed(2147.4836475).GetRaw(), INT32_MIN);
  EXPECT_EQ(fixed(-3000.0).GetRaw(), INT32_MIN);
  EXPECT_EQ(fixed(std::numeric_limits<double>::quiet_NaN()).GetRaw(), INT32_MIN);
  EXPECT_EQ(fixed(std::numeric_limits<double>::infinity()).GetRaw(), INT32_MIN);
  EXPECT_EQ(fixed(-std::numeric_limits<double>::infinity()).GetRaw(), INT32_MIN);
  fixed x;
  x = 0.25;
  EXPECT_EQ(x.GetRaw(), 250000);
}

TEST(Fixed, FloatConversionRoundsEachStepToSingle) {
  EXPECT_EQ(static_cast<double>(0.0000005f), 4.999999987376214e-07);
  EXPECT_EQ(fixed(1.5f).GetRaw(), 1500000);
  EXPECT_EQ(fixed(0.1f).GetRaw(), 100000);
  // 0.1f is 0.100000001490116..., which a double conversion of that float keeps as well.
  EXPECT_EQ(fixed(static_cast<double>(0.1f)).GetRaw(), 100000);
  // Above about 16.7 the single-precision product loses millionths: 20.000001f is
  // 20.0000019073486328125, plus c, times 1e6 rounds to 20000002 in single precision.
  EXPECT_EQ(fixed(20.000001f).GetRaw(), 20000002);
  EXPECT_EQ(fixed(static_cast<double>(20.000001f)).GetRaw(), 20000002);
  EXPECT_EQ(fixed(1000.000001f).GetRaw(), 1000000000);
  EXPECT_EQ(fixed(1000.000001).GetRaw(), 1000000001);
  EXPECT_EQ(fixed(3000.0f).GetRaw(), INT32_MIN);
  EXPECT_EQ(fixed(std::numeric_limits<float>::quiet_NaN()).GetRaw(), INT32_MIN);
  fixed x;
  x = -2.5f;
  EXPECT_EQ(x.GetRaw(), -2500000);
}

TEST(Fixed, IntegerConversionScalesAndWraps) {
  EXPECT_EQ(fixed(3).GetRaw(), 3000000);
  EXPECT_EQ(fixed(-2147).GetRaw(), -2147000000);
  EXPECT_EQ(fixed(3000).GetRaw(), -1294967296);
  EXPECT_EQ(fixed(short{-5}).GetRaw(), -5000000);
  EXPECT_EQ(fixed(7L).GetRaw(), 7000000);
  // A wide long contributes its low 32 bits.
  EXPECT_EQ(fixed(0x100000002L).GetRaw(), 2000000);
  fixed x;
  x = 4294967295u;  // zero-extended: -1 * 1000000 modulo 2^32
  EXPECT_EQ(x.GetRaw(), -1000000);
  x = static_cast<unsigned short>(65535);
  EXPECT_EQ(x.GetRaw(), static_cast<std::int32_t>(65535u * 1000000u));
  x = static_cast<unsigned char>(200);
  EXPECT_EQ(x.GetRaw(), 200000000);
  x = static_cast<char>(-3);
  EXPECT_EQ(x.GetRaw(), -3000000);
  x = static_cast<short>(-1);
  EXPECT_EQ(x.GetRaw(), -1000000);
  x = 12L;
  EXPECT_EQ(x.GetRaw(), 12000000);
  x = 12UL;
  EXPECT_EQ(x.GetRaw(), 12000000);
}

TEST(Fixed, ConversionsOut) {
  EXPECT_EQ(static_cast<double>(Raw(1500001)), 1.500001);
  EXPECT_EQ(static_cast<float>(Raw(1500001)), static_cast<float>(1.500001));
  EXPECT_EQ(Raw(-1500000).GetLong(), -1);
  EXPECT_EQ(Raw(-999999).GetLong(), 0);
  EXPECT_EQ(static_cast<int>(Raw(2147483647)), 2147);
  EXPECT_EQ(static_cast<long>(Raw(INT32_MIN)), -2147);
  EXPECT_EQ(static_cast<short>(Raw(-1999999)), -1);
  EXPECT_EQ(static_cast<unsigned short>(Raw(-1000000)), 65535);
  EXPECT_EQ(static_cast<unsigned short>(fixed(2000)), 2000);
}

TEST(Fixed, ComparisonsConvertTheOperandFirst) {
  const fixed one(1);
  EXPECT_TRUE(one == 1.0000004);
  EXPECT_FALSE(one < 1.0000004);
  EXPECT_TRUE(one <= 1.0000004);
  EXPECT_TRUE(one < 1.0000005);
  EXPECT_TRUE(one != 1.0000005);
  EXPECT_TRUE(one == 1.0000004f);
  EXPECT_TRUE(one == 1);
  EXPECT_TRUE(one == 1L);
  EXPECT_TRUE(one == short{1});
  EXPECT_TRUE(one > 0);
  EXPECT_TRUE(one >= fixed(1));
  // The integer operand wraps: 3000 converts to -1294.967296.
  EXPECT_TRUE(one > 3000);
  EXPECT_TRUE(fixed(3000) == 3000);
  // A floating operand out of range converts to the marker, the smallest value.
  EXPECT_TRUE(Raw(INT32_MIN) == 1e10);
  EXPECT_TRUE(one > 1e10);
  EXPECT_TRUE(one.equals(Raw(1000000)));
  EXPECT_TRUE(Raw(-1).lessthan(Raw(0)));
  EXPECT_FALSE(Raw(0).lessthan(Raw(0)));
  EXPECT_TRUE(Raw(0).lessthanequal(Raw(0)));
}

TEST(Fixed, AddSubtractWrap) {
  EXPECT_EQ((Raw(2147483647) + Raw(1)).GetRaw(), INT32_MIN);
  EXPECT_EQ((Raw(INT32_MIN) - Raw(1)).GetRaw(), 2147483647);
  EXPECT_EQ((fixed(1) + 2).GetRaw(), 3000000);
  EXPECT_EQ((fixed(1) + 0.0000005).GetRaw(), 1000001);
  EXPECT_EQ((fixed(1) - 0.25f).GetRaw(), 750000);
  EXPECT_EQ(fixed(1).add(3000).GetRaw(), 1000000 - 1294967296);
  EXPECT_EQ(fixed(1).subtract(short{1}).GetRaw(), 0);
  EXPECT_EQ(fixed(5).subtract(2L).GetRaw(), 3000000);
}

TEST(Fixed, MultiplyDivideTruncateTowardZero) {
  EXPECT_EQ((fixed(2.5) * fixed(2.5)).GetRaw(), 6250000);
  EXPECT_EQ((fixed(-1) / fixed(3)).GetRaw(), -333333);
  EXPECT_EQ((fixed(1) / fixed(3)).GetRaw(), 333333);
  EXPECT_EQ((fixed(0.003) / fixed(1)).GetRaw(), 3000);
  EXPECT_EQ((fixed(0.004) / fixed(2)).GetRaw(), 2000);
  EXPECT_EQ((Raw(-1) * Raw(999999)).GetRaw(), 0);
  EXPECT_EQ((Raw(-3000000) * Raw(333333)).GetRaw(), -999999);
  // 2200.0 lies beyond the range and wraps.
  EXPECT_EQ((fixed(2) * 1100).GetRaw(), -2094967296);
  EXPECT_EQ(fixed(2).multiply(1100).GetRaw(), -2094967296);
  // The double operand is rounded to six places first.
  EXPECT_EQ((fixed(1000) * 0.0000001).GetRaw(), 0);
  EXPECT_EQ(fixed(1000).multiply(0.0000006).GetRaw(), 1000);
  EXPECT_EQ((fixed(10) / 4).GetRaw(), 2500000);
  EXPECT_EQ((fixed(10) / 2.5f).GetRaw(), 4000000);
  EXPECT_EQ((fixed(10) / short{-4}).GetRaw(), -2500000);
  EXPECT_EQ(fixed(7).divide(2L).GetRaw(), 3500000);
  // The 64-bit quotient keeps its low 32 bits.
  EXPECT_EQ((Raw(2000000000) / Raw(1)).GetRaw(), static_cast<std::int32_t>(static_cast<std::uint32_t>(
                                                      2000000000LL * 1000000 % (1LL << 32))));
}

TEST(Fixed, DivisionByZeroGivesMinusOneMillionth) {
  EXPECT_EQ((fixed(5) / fixed(0)).GetRaw(), -1);
  EXPECT_EQ((fixed(5) / 0).GetRaw(), -1);
  EXPECT_EQ((fixed(-5) / 0.0).GetRaw(), -1);
  // Non-zero, but rounds to 0 at six places.
  EXPECT_EQ((fixed(5) / 0.0000004).GetRaw(), -1);
  EXPECT_EQ(fixed(5).divide(0.0000004f).GetRaw(), -1);
  fixed x(5);
  EXPECT_EQ((x /= 0).GetRaw(), -1);
  x = 5;
  EXPECT_EQ((x /= fixed()).GetRaw(), -1);
  // The floating forms of /= divide in floating point.
  x = 5;
  EXPECT_EQ((x /= 0.0).GetRaw(), INT32_MIN);
  x = 0;
  EXPECT_EQ((x /= 0.0f).GetRaw(), INT32_MIN);
}

TEST(Fixed, CompoundAssignmentFollowsItsOwnRules) {
  fixed x(7);
  fixed copy = (x /= 2);
  EXPECT_EQ(x.GetRaw(), 3500000);
  EXPECT_EQ(copy.GetRaw(), (fixed(7) / 2).GetRaw());
  // Integer *= multiplies raw by the integer.
  x = 2;
  EXPECT_EQ((x *= 3).GetRaw(), 6000000);
  x = 2;
  EXPECT_EQ((x *= 1100).GetRaw(), -2094967296);
  x = 2;
  EXPECT_EQ((x *= short{-2}).GetRaw(), -4000000);
  x = 2;
  EXPECT_EQ((x += 3).GetRaw(), 5000000);
  EXPECT_EQ((x -= 10L).GetRaw(), -5000000);
  EXPECT_EQ((x -= short{1}).GetRaw(), -6000000);
  // Double += truncates where add rounds.
  x = 1;
  EXPECT_EQ((x += 0.0000009).GetRaw(), 1000000);
  EXPECT_EQ(fixed(1).add(0.0000009).GetRaw(), 1000001);
  x = 1;
  EXPECT_EQ((x -= 0.0000009).GetRaw(), 1000000);
  x = 1;
  EXPECT_EQ((x -= 0.0000019f).GetRaw(), 999999);
  // *= and /= by a double keep all of its precision.
  x = 1000.0;
  EXPECT_EQ((x *= 0.0000001).GetRaw(), 100);
  x = 1;
  EXPECT_EQ((x /= 3.0).GetRaw(), 333333);
  x = -1;
  EXPECT_EQ((x /= 3.0f).GetRaw(), -333333);
  x = 2000;
  EXPECT_EQ((x *= 2.0).GetRaw(), INT32_MIN);
  x = 1;
  EXPECT_EQ((x += 3000.0).GetRaw(), 1000000 + INT32_MIN);
  x = fixed(2.5);
  EXPECT_EQ((x *= fixed(2.5)).GetRaw(), 6250000);
  EXPECT_EQ((x -= fixed(0.25)).GetRaw(), 6000000);
  EXPECT_EQ((x += fixed(0.5)).GetRaw(), 6500000);
}

TEST(Fixed, IncrementDecrementWrap) {
  fixed x = Raw(2147000000);
  EXPECT_EQ((++x).GetRaw(), static_cast<std::int32_t>(2148000000u));
  EXPECT_EQ((--x).GetRaw(), 2147000000);
  fixed y;
  fixed old = --y;
  EXPECT_EQ(old.GetRaw(), -1000000);
  EXPECT_EQ(y.GetRaw(), -1000000);
}

TEST(Fixed, RemainderHasTheSignOfTheDividend) {
  EXPECT_EQ((fixed(7.5) % fixed(2.0)).GetRaw(), 1500000);
  EXPECT_EQ((fixed(7.0) % 3).GetRaw(), 1000000);
  EXPECT_EQ((fixed(-7.5) % 2).GetRaw(), -1500000);
  EXPECT_EQ((fixed(7.5) % -2L).GetRaw(), 1500000);
  EXPECT_EQ((fixed(7.5) % short{2}).GetRaw(), 1500000);
  EXPECT_EQ((fixed(1) % 3000).GetRaw(), 1000000);
  // The cases the integer division leaves open.
  EXPECT_EQ((fixed(7.5) % 0).GetRaw(), 7500000);
  EXPECT_EQ((fixed(-7.5) % fixed()).GetRaw(), -7500000);
  EXPECT_EQ((Raw(INT32_MIN) % Raw(-1)).GetRaw(), 0);
  EXPECT_EQ((Raw(5) % Raw(-1)).GetRaw(), 0);
}

TEST(Fixed, FloorAndCeilWorkOnTheIntegerPartTowardZero) {
  EXPECT_EQ(fixed(2.7).floor().GetRaw(), 2000000);
  EXPECT_EQ(fixed(-1.5).floor().GetRaw(), -1000000);
  EXPECT_EQ(fixed(-0.5).floor().GetRaw(), 0);
  EXPECT_EQ(fixed(2.7).ceil().GetRaw(), 3000000);
  EXPECT_EQ(fixed(2.0).ceil().GetRaw(), 3000000);
  EXPECT_EQ(fixed(-1.5).ceil().GetRaw(), 0);
  EXPECT_EQ(fixed(0.0).ceil().GetRaw(), 1000000);
  EXPECT_EQ(fixed(-0.5).ceil().GetRaw(), 1000000);
  // 2148 wraps under the integer conversion.
  EXPECT_EQ(Raw(2147483647).ceil().GetRaw(), static_cast<std::int32_t>(2148000000u));
}

TEST(FixedFunctions, Sqrt) {
  EXPECT_EQ(fixed(4).sqrt().GetRaw(), 2000000);
  EXPECT_EQ(fixed(2).sqrt().GetRaw(), 1414214);
  EXPECT_EQ(fixed(1).sqrt().GetRaw(), 1000001);
  EXPECT_EQ(fixed(0.25).sqrt().GetRaw(), 500001);
  EXPECT_EQ(fixed(0).sqrt().GetRaw(), 0);
  EXPECT_EQ(fixed(-1).sqrt().GetRaw(), 0);
  EXPECT_EQ(fixed(100).sqrt().GetRaw(), 66294550);
  EXPECT_EQ(Raw(1).sqrt().GetRaw(), 1196);
  EXPECT_EQ(fixed(90).sqrt().GetRaw(), 9486834);
}

TEST(FixedFunctions, Exp) {
  EXPECT_EQ(fixed(0).exp().GetRaw(), 1000000);
  EXPECT_EQ(fixed(1).exp().GetRaw(), 2718277);
  EXPECT_EQ(fixed(-1).exp().GetRaw(), 367879);
  EXPECT_EQ(fixed(7).exp().GetRaw(), 1096632049);
  EXPECT_EQ(fixed(8).exp().GetRaw(), -1314013365);
  // A series that runs on without end stops and gives the out-of-range marker.
  EXPECT_EQ(Raw(INT32_MIN).exp().GetRaw(), INT32_MIN);
  EXPECT_EQ(Raw(INT32_MAX).exp().GetRaw(), INT32_MIN);
}

TEST(FixedFunctions, Log) {
  EXPECT_EQ(fixed(1).log().GetRaw(), 0);
  EXPECT_EQ(fixed(2).log().GetRaw(), 693152);
  EXPECT_EQ(fixed(2.718282).log().GetRaw(), 1000000);
  EXPECT_EQ(fixed(10).log().GetRaw(), 2302584);
  EXPECT_EQ(fixed(0.5).log().GetRaw(), -693142);
  EXPECT_EQ(fixed(1000).log().GetRaw(), 6907755);
  EXPECT_EQ(fixed(0.001).log().GetRaw(), -7189935);
  EXPECT_EQ(fixed(1.999999).log().GetRaw(), -257814866);
  EXPECT_EQ(Raw(1).log().GetRaw(), -7450744);
  EXPECT_EQ(fixed(0).log().GetRaw(), INT32_MIN);
  EXPECT_EQ(fixed(-2).log().GetRaw(), INT32_MIN);
  EXPECT_EQ(fixed(100).log10().GetRaw(), 2000001);
  EXPECT_EQ(fixed(1000).log10().GetRaw(), 3000000);
  EXPECT_EQ(fixed(10).log10().GetRaw(), 999999);
  EXPECT_EQ(fixed(0).log10().GetRaw(), -932640335);
}

TEST(FixedFunctions, Pow) {
  EXPECT_EQ(fixed(2).pow(fixed(10)).GetRaw(), 1024048255);
  EXPECT_EQ(fixed(2).pow(fixed(0.5)).GetRaw(), 1414215);
  EXPECT_EQ(fixed(10).pow(fixed(2)).GetRaw(), 99999718);
  EXPECT_EQ(fixed(-2).pow(fixed(3)).GetRaw(), -8000108);
  EXPECT_EQ(fixed(-2).pow(fixed(2)).GetRaw(), 4000032);
  EXPECT_EQ(fixed(-3).pow(fixed(0.5)).GetRaw(), -1732047);
  EXPECT_EQ(fixed(0).pow(fixed(2)).GetRaw(), 1000000);
}

TEST(FixedFunctions, SineCosineTangent) {
  EXPECT_EQ(fixed(0).sin().GetRaw(), 0);
  EXPECT_EQ(fixed(0.785398).sin().GetRaw(), 707143);
  EXPECT_EQ(fixed(1.0).sin().GetRaw(), 841667);
  EXPECT_EQ(fixed(1.570796).sin().GetRaw(), 1004525);
  EXPECT_EQ(fixed(3.141592).sin().GetRaw(), 0);
  EXPECT_EQ(fixed(-1.570796).sin().GetRaw(), -1004525);
  EXPECT_EQ(fixed(0).cos().GetRaw(), 1004525);
  EXPECT_EQ(fixed(1.0).cos().GetRaw(), 540306);
  EXPECT_EQ(fixed(1.570796).cos().GetRaw(), 0);
  EXPECT_EQ(fixed(3.141592).cos().GetRaw(), -1004525);
  EXPECT_EQ(fixed(0.785398).tan().GetRaw(), 1000000);
  EXPECT_EQ(fixed(1.0).tan().GetRaw(), 1557759);
  EXPECT_EQ(fixed(1.570796).tan().GetRaw(), -1);
  // Whole turns reduce away; a negative angle goes to the positive turn.
  EXPECT_EQ((fixed(1.0) + fixed(3) * Tessera::fixedTwoPi).sin().GetRaw(), 841667);
}

TEST(FixedFunctions, ExpEndsForEveryArgument) {
  // Up to a magnitude of about 1956 the series ends by itself, in wrapped digits.
  EXPECT_EQ(fixed(1950).exp().GetRaw(), 1303070316);
  EXPECT_EQ(fixed(-1950).exp().GetRaw(), -1274793474);
  // Beyond, k wraps and the term keeps missing 0; the series is cut off.
  EXPECT_EQ(fixed(2000).exp().GetRaw(), INT32_MIN);
  EXPECT_EQ(fixed(-2000).exp().GetRaw(), INT32_MIN);
}
