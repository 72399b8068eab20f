#include <tessera/time/TimeSpan.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace Tessera {
namespace {

// Constants must be usable in constant expressions, hence before any code has run.
static_assert(TimeSpan::day.GetTicks() == 864000000000, "constant-initialised");
static_assert(TimeSpan::microsecond.GetTicks() == 10 && TimeSpan::millisecond.GetTicks() == 10000 &&
                  TimeSpan::second.GetTicks() == 10000000 && TimeSpan::minute.GetTicks() == 600000000 &&
                  TimeSpan::hour.GetTicks() == 36000000000,
              "unit ticks");

TEST(TimeSpan, ValuesAndWrappingArithmetic) {
  EXPECT_EQ(TimeSpan().GetTicks(), 0);
  EXPECT_EQ(TimeSpan(-1).GetTicks(), -1);
  TimeSpan span(5);
  (span += TimeSpan(10)) -= TimeSpan(20);
  EXPECT_EQ(span.GetTicks(), -5);
  TimeSpan top(std::numeric_limits<std::int64_t>::max());
  top += TimeSpan(1);
  EXPECT_EQ(top.GetTicks(), std::numeric_limits<std::int64_t>::min());
  top -= TimeSpan(1);
  EXPECT_EQ(top.GetTicks(), std::numeric_limits<std::int64_t>::max());
}

TEST(TimeSpan, DivIsFloatingPointWithoutTraps) {
  EXPECT_EQ(TimeSpan::minute.div(TimeSpan::second), 60.0);
  EXPECT_DOUBLE_EQ(TimeSpan::second.div(TimeSpan::minute), 1.0 / 60.0);
  EXPECT_TRUE(std::isinf(TimeSpan(7).div(TimeSpan())));
  EXPECT_LT(TimeSpan(-7).div(TimeSpan()), 0.0);
  EXPECT_TRUE(std::isnan(TimeSpan().div(TimeSpan())));
}

TEST(TimeSpan, RenderTruncatesTowardZeroAndKeepsTheSign) {
  ::timeval out{};
  TimeSpan(-15000000).Render(out);
  EXPECT_EQ(out.tv_sec, -1);
  EXPECT_EQ(out.tv_usec, -500000);
  TimeSpan(9).Render(out);
  EXPECT_EQ(out.tv_sec, 0);
  EXPECT_EQ(out.tv_usec, 0);
  TimeSpan(19).Render(out);
  EXPECT_EQ(out.tv_usec, 1);
  TimeSpan(-19).Render(out);
  EXPECT_EQ(out.tv_usec, -1);
  // Seconds keep only their low 32 bits, as the 32-bit fields did.
  TimeSpan((std::int64_t{1} << 32) * TimeSpan::second.GetTicks() + 3 * TimeSpan::second.GetTicks()).Render(out);
  EXPECT_EQ(out.tv_sec, 3);
  TimeSpan(std::int64_t{0x80000000} * TimeSpan::second.GetTicks()).Render(out);
  EXPECT_EQ(out.tv_sec, std::numeric_limits<std::int32_t>::min());
}

}  // namespace
}  // namespace Tessera
