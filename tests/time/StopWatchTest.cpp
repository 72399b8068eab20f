// StopWatch, AveragingMeter and LoadMeter on the real performance counter. Durations are
// bracketed by laps taken around them, so the checks hold on a loaded machine too.
#include <tessera/time/StopWatch.h>

#include <cmath>
#include <cstdint>
#include <ctime>

#include <gtest/gtest.h>

namespace {

using Tessera::AveragingMeter;
using Tessera::LoadMeter;
using Tessera::StopWatch;
using Tessera::TimeSpan;

void SleepMicroseconds(long microseconds) {
  ::timespec pause{microseconds / 1000000, (microseconds % 1000000) * 1000};
  while (::nanosleep(&pause, &pause) != 0) {
  }
}

std::int64_t Rounded(double microseconds) { return static_cast<std::int64_t>(microseconds * 10.0 + 0.5); }

TEST(StopWatch, LapsGrowAndResetStartsOverWithoutAGap) {
  StopWatch watch;
  EXPECT_DOUBLE_EQ(watch.GetResolution(), 0.001);
  const StopWatch copy = watch;
  EXPECT_EQ(copy.GetResolution(), watch.GetResolution());

  const double first = watch.Lap();
  SleepMicroseconds(1000);
  const double second = watch.Lap();
  EXPECT_GE(first, 0.0);
  EXPECT_GE(second - first, 1000.0);

  // Consecutive resets share their counter reading: no time falls between the laps.
  const StopWatch inner;
  double sum = 0.0;
  for (int i = 0; i < 5; ++i) sum += watch.Reset();
  const double innerLap = inner.Lap();
  EXPECT_GE(sum - second + watch.Lap(), innerLap - 1e-6);

  SleepMicroseconds(2000);
  EXPECT_GE(watch.Reset(), 2000.0);
  EXPECT_LT(watch.Lap(), 2000.0);  // started over
}

TEST(StopWatch, SpanFormsRoundToTheNearestTick) {
  StopWatch watch;
  SleepMicroseconds(300);
  const double before = watch.Lap();
  TimeSpan span;
  watch.Lap(span);
  const double after = watch.Lap();
  EXPECT_GE(span.GetTicks(), Rounded(before));
  EXPECT_LE(span.GetTicks(), Rounded(after));

  StopWatch other;
  const double lapBefore = other.Lap();
  TimeSpan reset;
  other.Reset(reset);
  const double restarted = other.Lap();
  EXPECT_GE(reset.GetTicks(), Rounded(lapBefore));
  EXPECT_LT(restarted, 1000000.0);
}

TEST(AveragingMeter, RateOfAClosedPeriodUsesItsTrueLength) {
  StopWatch outer;
  AveragingMeter meter(TimeSpan(100 * TimeSpan::millisecond.GetTicks()));
  meter.Accumulate(60.0);
  meter.Accumulate(40.0);
  EXPECT_EQ(meter.Measure(), 0.0);  // the period is still open
  SleepMicroseconds(150000);
  const double rate = meter.Measure();
  const double bound = outer.Lap();
  // 100 over a period of at least 150 ms and at most the outer watch's time.
  EXPECT_LE(rate, 100.0 * 1000000.0 / 150000.0);
  EXPECT_GE(rate, 100.0 * 1000000.0 / bound);
  EXPECT_EQ(meter.Measure(), rate);  // the next period hasn't run out

  // An amount arriving after the period ended belongs to the next one.
  SleepMicroseconds(110000);
  meter.Accumulate(1000.0);
  EXPECT_EQ(meter.Measure(), 0.0);
  SleepMicroseconds(110000);
  EXPECT_GT(meter.Measure(), 1000.0);

  meter.Accumulate(5.0);
  meter.Reset();
  EXPECT_EQ(meter.Measure(), 0.0);  // the last rate went with the reset
  SleepMicroseconds(110000);
  EXPECT_EQ(meter.Measure(), 0.0);  // and so did the open amount
}

TEST(AveragingMeter, ZeroPeriodClosesOnEveryCall) {
  AveragingMeter meter{TimeSpan()};
  meter.Accumulate(10.0);
  const double rate = meter.Measure();
  EXPECT_GT(rate, 0.0);
  EXPECT_FALSE(std::isnan(rate));
  AveragingMeter copy = meter;
  const double empty = copy.Measure();  // nothing accumulated since: 0, or 0/0 for a zero length
  EXPECT_TRUE(empty == 0.0 || std::isnan(empty));
}

TEST(LoadMeter, AveragesTheBusyShareOfTheLastPeriods) {
  LoadMeter fresh;
  EXPECT_EQ(fresh.GetLoad(), 0.0);
  fresh.Measure();
  EXPECT_EQ(fresh.GetLoad(), 0.0);  // cached, and the open period has no part

  LoadMeter meter(2);
  SleepMicroseconds(20000);
  meter.Measure();
  SleepMicroseconds(20000);
  double load = -5.0;
  meter.NextPeriod(load);
  EXPECT_GT(load, 0.3);
  EXPECT_LT(load, 0.7);
  EXPECT_EQ(meter.GetLoad(), load);

  // An idle period halves the share.
  SleepMicroseconds(40000);
  meter.NextPeriod();
  const double twoPeriods = meter.GetLoad();
  EXPECT_GT(twoPeriods, 0.15);
  EXPECT_LT(twoPeriods, 0.35);

  // A third period pushes the first out: two idle ones remain.
  SleepMicroseconds(10000);
  meter.NextPeriod();
  EXPECT_EQ(meter.GetLoad(), 0.0);

  // The last Measure of a period counts, not the sum.
  meter.Measure();
  SleepMicroseconds(30000);
  meter.Measure();
  meter.NextPeriod();
  meter.Measure();
  meter.NextPeriod();
  EXPECT_GT(meter.GetLoad(), 0.9);
  EXPECT_LE(meter.GetLoad(), 1.0);

  LoadMeter none(0);
  none.Measure();
  none.NextPeriod(load);
  EXPECT_EQ(load, 0.0);
  EXPECT_EQ(LoadMeter::averagingPeriodDefault, 10u);
}

}  // namespace
