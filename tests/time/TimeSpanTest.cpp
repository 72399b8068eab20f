#include <tessera/time/TimeSpan.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <tuple>
#include <utility>

namespace Tessera {
namespace {

// Usable in constant expressions, hence before any code of the library has run.
static_assert(TimeSpan::day.GetTicks() == 864000000000 && TimeSpan::microsecond.GetTicks() == 10, "constants");

TEST(TimeSpan, ArithmeticWrapsComparesByTicksDividesInFloatingPointAndRenders) {
  constexpr TimeSpan min(std::numeric_limits<std::int64_t>::min()), max(std::numeric_limits<std::int64_t>::max());
  static_assert(-min == min && max + TimeSpan(1) == min && min - TimeSpan(1) == max, "wrap");
  static_assert(TimeSpan::second - TimeSpan::minute == -TimeSpan(590000000), "difference");
  TimeSpan top = max;
  EXPECT_EQ((top += TimeSpan(1)).GetTicks(), min.GetTicks());
  EXPECT_EQ((top -= TimeSpan(1)).GetTicks(), max.GetTicks());
  EXPECT_EQ(std::make_tuple(min < max, max <= max, max > min, min >= min, min != max, min == max),
            std::make_tuple(true, true, true, true, true, false));
  EXPECT_EQ(TimeSpan::minute.div(TimeSpan::second), 60.0);
  EXPECT_DOUBLE_EQ(TimeSpan::second.div(TimeSpan::minute), 1.0 / 60.0);
  EXPECT_EQ(TimeSpan(-7).div(TimeSpan()), -HUGE_VAL);
  EXPECT_TRUE(std::isnan(TimeSpan().div(TimeSpan())));
  // A timeval truncates toward zero, keeps the sign, and keeps the low 32 bits of the seconds.
  const std::int64_t second = TimeSpan::second.GetTicks();
  struct Case { std::int64_t ticks; long sec, usec; };
  for (const Case& c : {Case{-15000000, -1, -500000}, Case{9, 0, 0}, Case{19, 0, 1}, Case{-19, 0, -1},
                        Case{((std::int64_t{1} << 32) + 3) * second, 3, 0},
                        Case{std::int64_t{0x80000000} * second, std::numeric_limits<std::int32_t>::min(), 0}}) {
    ::timeval out{};
    TimeSpan(c.ticks).Render(out);
    EXPECT_EQ(std::make_pair(out.tv_sec, out.tv_usec), std::make_pair(c.sec, c.usec)) << c.ticks;
  }
}

}  // namespace
}  // namespace Tessera
