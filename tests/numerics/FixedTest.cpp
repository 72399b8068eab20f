#include <tessera/numerics/Fixed.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <tuple>

#include <gtest/gtest.h>

using Tessera::fixed;

namespace {

fixed Raw(std::int32_t raw) { return fixed(true, raw); }
constexpr std::int32_t kMarker = INT32_MIN;  // out of range
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

struct Case { fixed result; std::int32_t raw; };

template <std::size_t N>
void ExpectRaws(const Case (&cases)[N]) {
  for (std::size_t i = 0; i < N; ++i) EXPECT_EQ(cases[i].result.GetRaw(), cases[i].raw) << "row " << i;
}

}  // namespace

TEST(Fixed, ConversionsIn) {
  // double: nearest millionth, tie upward; float: each step in single precision; anything
  // that does not fit gives the marker.
  ExpectRaws({{1.5, 1500000}, {0.0000004, 0}, {0.0000006, 1}, {-0.0000006, -1}, {0.0000005, 1}, {-0.0000005, 0},
              {2147.483647, 2147483647}, {2147.4836475, kMarker}, {3000.0, kMarker}, {-3000.0, kMarker},
              {kNaN, kMarker}, {kInf, kMarker}, {-kInf, kMarker}, {9.999999f, 10000000}, {123.456f, 123456000},
              {3000.0f, kMarker}, {1000.000001f, 1000000000}, {1000.000001, 1000000001},  // only double keeps it
              // Integers scale in 32 bits and wrap; a wide long gives its low 32 bits.
              {3000, -1294967296}, {short{-5}, -5000000}, {0x100000002L, 2000000}, {fixed() = 12UL, 12000000},
              {fixed() = 4294967295u, -1000000}, {fixed() = static_cast<unsigned char>(200), 200000000},
              {fixed() = static_cast<char>(-3), -3000000}, {fixed() = -2.5f, -2500000}, {fixed() = 0.25, 250000},
              {fixed() = static_cast<unsigned short>(65535), static_cast<std::int32_t>(65535u * 1000000u)}});
}

TEST(Fixed, ConversionsOutAndComparisons) {
  EXPECT_EQ(std::make_tuple(static_cast<double>(Raw(1500001)), static_cast<float>(Raw(1500001)), Raw(-1500000).GetLong(),
                            Raw(-999999).GetLong(), static_cast<int>(Raw(2147483647)), static_cast<unsigned short>(Raw(-1000000))),
            std::make_tuple(1.500001, static_cast<float>(1.500001), -1, 0, 2147, 65535));
  // The operand goes through its conversion before the raw values compare.
  const fixed one(1);
  // single precision cannot carry the millionth; 3000 wraps; 1e10 becomes the out-of-range marker
  EXPECT_EQ(std::make_tuple(one == 1.0000004, one < 1.0000004, one < 1.0000005, one == 1.0000005f, one > 3000, one > 1e10),
            std::make_tuple(true, false, true, true, true, true));
  EXPECT_EQ(std::make_tuple(Raw(-1).lessthan(Raw(0)), Raw(0).lessthan(Raw(0)), Raw(0).lessthanequal(Raw(0))),
            std::make_tuple(true, false, true));
}

TEST(Fixed, Arithmetic) {
  ExpectRaws({{Raw(2147483647) + Raw(1), kMarker}, {Raw(INT32_MIN) - 1, 2147483647 - 999999},
              {fixed(1) + 0.0000005, 1000001}, {fixed(1) - 0.25f, 750000}, {fixed(2.5) * fixed(2.5), 6250000},
              {fixed(-1) / fixed(3), -333333}, {fixed(1) / fixed(3), 333333}, {fixed(0.003) / fixed(1), 3000},
              {fixed(0.004) / fixed(2), 2000}, {Raw(-3000000) * Raw(333333), -999999},
              {fixed(2) * 1100, -2094967296}, {fixed(1000) * 0.0000001, 0},  // rounded to six places first
              {fixed(10) / short{-4}, -2500000}, {fixed(7).divide(2L), 3500000},
              {Raw(2000000000) / Raw(1), static_cast<std::int32_t>(2000000000u * 1000000u)},
              // Division by zero, also by an operand that rounds to 0, gives -0.000001.
              {fixed(5) / 0, -1}, {fixed(-5) / 0.0000004, -1}, {fixed(5).divide(0.0000004f), -1},
              // The remainder has the dividend's sign; the cases integer division leaves open.
              {fixed(7.5) % fixed(2.0), 1500000}, {fixed(7.0) % 3, 1000000}, {fixed(-7.5) % 2L, -1500000},
              {fixed(7.5) % short{-2}, 1500000}, {fixed(-7.5) % 0, -7500000}, {Raw(INT32_MIN) % Raw(-1), 0},
              // floor and ceil work on the integer part toward zero.
              {fixed(2.7).floor(), 2000000}, {fixed(-1.5).floor(), -1000000}, {fixed(-0.5).floor(), 0},
              {fixed(2.0).ceil(), 3000000}, {fixed(-1.5).ceil(), 0}, {fixed(-0.5).ceil(), 1000000},
              {Raw(2147483647).ceil(), static_cast<std::int32_t>(2148000000u)}});
}

TEST(Fixed, CompoundAssignmentFollowsItsOwnRules) {
  ExpectRaws({{fixed(7) /= 2, 3500000}, {fixed(2) *= 1100, -2094967296},  // integer *= multiplies raw
              {fixed(2) *= short{-2}, -4000000}, {fixed(2) += 3, 5000000}, {fixed(5) -= 10L, -5000000},
              {fixed(5) /= 0, -1}, {fixed(5) /= fixed(), -1}, {fixed(2.5) *= fixed(2.5), 6250000},
              // Floating forms: double precision, truncated, no rounding step.
              {fixed(1) += 0.0000009, 1000000}, {fixed(1) -= 0.0000019f, 999999},
              {fixed(1000.0) *= 0.0000001, 100}, {fixed(-1) /= 3.0f, -333333}, {fixed(5) /= 0.0, kMarker},
              {fixed(2000) *= 2.0, kMarker}, {fixed(1) += 3000.0, 1000000 + kMarker},
              // Prefix ++ and -- wrap and give the new value.
              {++Raw(2147000000), static_cast<std::int32_t>(2148000000u)}, {--Raw(INT32_MIN), 2146483648}});
}

TEST(FixedFunctions, Digits) {
  using Function = fixed (fixed::*)() const;
  const Function Sqrt = &fixed::sqrt, Exp = &fixed::exp, Log = &fixed::log, Log10 = &fixed::log10,
                 Sin = &fixed::sin, Cos = &fixed::cos, Tan = &fixed::tan;
  const struct { Function function; fixed in; std::int32_t raw; } cases[] = {
      {Sqrt, 4, 2000000}, {Sqrt, 2, 1414214}, {Sqrt, 1, 1000001}, {Sqrt, 0.25, 500001}, {Sqrt, 0, 0},
      {Sqrt, -1, 0}, {Sqrt, 100, 66294550}, {Sqrt, Raw(1), 1196}, {Sqrt, 90, 9486834},
      {Exp, 0, 1000000}, {Exp, 1, 2718277}, {Exp, -1, 367879}, {Exp, 7, 1096632049}, {Exp, 8, -1314013365},
      // The series ends by itself up to a magnitude of about 1956; beyond, it is cut off.
      {Exp, 1950, 1303070316}, {Exp, -1950, -1274793474}, {Exp, 2000, kMarker}, {Exp, -2000, kMarker},
      {Exp, Raw(INT32_MAX), kMarker},
      {Log, 1, 0}, {Log, 2, 693152}, {Log, 2.718282, 1000000}, {Log, 10, 2302584}, {Log, 0.5, -693142},
      {Log, 1000, 6907755}, {Log, 0.001, -7189935}, {Log, 1.999999, -257814866}, {Log, Raw(1), -7450744},
      {Log, 0, kMarker}, {Log, -2, kMarker},
      {Log10, 100, 2000001}, {Log10, 1000, 3000000}, {Log10, 10, 999999}, {Log10, 0, -932640335},
      {Sin, 0, 0}, {Sin, 0.785398, 707143}, {Sin, 1.0, 841667}, {Sin, 1.570796, 1004525}, {Sin, 3.141592, 0},
      {Sin, -1.570796, -1004525}, {Sin, fixed(1.0) + fixed(3) * Tessera::fixedTwoPi, 841667},
      {Sin, -5.283185, 841667}, {Cos, 0, 1004525}, {Cos, 1.0, 540306}, {Cos, 1.570796, 0},
      {Cos, 3.141592, -1004525}, {Tan, 0.785398, 1000000}, {Tan, 1.0, 1557759}, {Tan, 1.570796, -1}};
  for (const auto& c : cases) EXPECT_EQ((c.in.*c.function)().GetRaw(), c.raw) << c.in.GetRaw();

  const struct { fixed x, y; std::int32_t raw; } powers[] = {
      {2, 10, 1024048255}, {2, 0.5, 1414215}, {10, 2, 99999718}, {-2, 3, -8000108},
      {-2, 2, 4000032}, {-3, 0.5, -1732047}, {0, 2, 1000000}};
  for (const auto& c : powers) EXPECT_EQ(c.x.pow(c.y).GetRaw(), c.raw) << c.x.GetRaw() << " " << c.y.GetRaw();
}
