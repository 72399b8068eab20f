// StopWatch, AveragingMeter and LoadMeter on the real performance counter. Durations are
// bracketed by laps taken around them, so the checks hold on a loaded machine too.
#include <tessera/time/StopWatch.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <thread>

#include <gtest/gtest.h>

namespace {

using Tessera::AveragingMeter;
using Tessera::LoadMeter;
using Tessera::StopWatch;
using Tessera::TimeSpan;

void Sleep(long microseconds) { std::this_thread::sleep_for(std::chrono::microseconds(microseconds)); }

std::int64_t Ticks(double microseconds) { return static_cast<std::int64_t>(microseconds * 10.0 + 0.5); }

TEST(StopWatch, LapsGrowAndResetsLeaveNoGap) {
  StopWatch watch;
  EXPECT_DOUBLE_EQ(watch.GetResolution(), 0.001);
  EXPECT_EQ(StopWatch(watch).GetResolution(), watch.GetResolution());
  Sleep(1000);
  const double second = watch.Lap();
  EXPECT_GE(second, 1000.0);

  // Consecutive resets share their counter reading, so their sum covers an outer lap.
  const StopWatch inner;
  double sum = 0.0;
  for (int i = 0; i < 5; ++i) sum += watch.Reset();
  const double innerLap = inner.Lap();
  EXPECT_GE(sum - second + watch.Lap(), innerLap - 1e-6);

  // The span forms round microseconds to the nearest tick; Reset starts over.
  TimeSpan span;
  const double before = watch.Lap();
  watch.Lap(span);
  const double after = watch.Lap();
  EXPECT_TRUE(span.GetTicks() >= Ticks(before) && span.GetTicks() <= Ticks(after));
  Sleep(20000);
  watch.Reset(span);
  EXPECT_TRUE(span.GetTicks() >= Ticks(after + 20000) && watch.Lap() < 20000) << span.GetTicks();
}

TEST(AveragingMeter, RateOfAClosedPeriodUsesItsTrueLength) {
  StopWatch outer;
  AveragingMeter meter(TimeSpan(100 * TimeSpan::millisecond.GetTicks()));
  meter.Accumulate(60.0);
  meter.Accumulate(40.0);
  EXPECT_EQ(meter.Measure(), 0.0);  // the period is still open
  Sleep(150000);
  const double rate = meter.Measure();
  EXPECT_TRUE(rate <= 100.0 * 1000000.0 / 150000.0 && rate >= 100.0 * 1000000.0 / outer.Lap()) << rate;
  EXPECT_EQ(meter.Measure(), rate);  // the next period hasn't run out

  Sleep(110000);
  meter.Accumulate(1000.0);  // closes the old period first, then counts for the new one
  EXPECT_EQ(meter.Measure(), 0.0);
  Sleep(110000);
  EXPECT_GT(meter.Measure(), 1000.0);
  meter.Accumulate(5.0);
  meter.Reset();
  EXPECT_EQ(meter.Measure(), 0.0);  // the last rate went with the reset
  Sleep(110000);
  EXPECT_EQ(meter.Measure(), 0.0);  // and so did the open amount

  AveragingMeter always{TimeSpan()};  // closes on every call
  always.Accumulate(10.0);
  const double closed = always.Measure();
  EXPECT_TRUE(closed > 0.0 && !std::isnan(closed)) << closed;
}

TEST(LoadMeter, AveragesTheBusyShareOfTheLastPeriods) {
  LoadMeter fresh, none(0);
  fresh.Measure();
  EXPECT_EQ(fresh.GetLoad(), 0.0);  // the open period has no part
  double load = -5.0;
  none.Measure();
  none.NextPeriod(load);
  EXPECT_EQ(load, 0.0);
  EXPECT_EQ(LoadMeter::averagingPeriodDefault, 10u);

  LoadMeter meter(2);
  Sleep(20000);
  meter.Measure();
  Sleep(20000);
  meter.NextPeriod(load);
  EXPECT_TRUE(load > 0.3 && load < 0.7 && meter.GetLoad() == load) << load;
  Sleep(40000);
  meter.NextPeriod();  // an idle period halves the share
  EXPECT_TRUE(meter.GetLoad() > 0.15 && meter.GetLoad() < 0.35) << meter.GetLoad();
  Sleep(10000);
  meter.NextPeriod();  // the ring holds the last two periods, both idle
  EXPECT_EQ(meter.GetLoad(), 0.0);

  Sleep(10000);
  meter.Measure();
  Sleep(10000);
  meter.Measure();  // the last Measure of a period counts, not the sum
  meter.NextPeriod();
  meter.Measure();
  meter.NextPeriod();
  EXPECT_TRUE(meter.GetLoad() > 0.9 && meter.GetLoad() <= 1.0) << meter.GetLoad();
}

}  // namespace
