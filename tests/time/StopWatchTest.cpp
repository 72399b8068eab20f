// StopWatch, AveragingMeter and LoadMeter on the real performance counter. Every duration
// is bracketed by laps of a second watch taken around it, and a check that needs a period
// still open runs only when such a lap proves it, so nothing depends on the machine's pace.
#include <tessera/time/StopWatch.h>

#include <chrono>
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
  EXPECT_GE(span.GetTicks(), Ticks(before));
  EXPECT_LE(span.GetTicks(), Ticks(after));
  Sleep(2000);
  const StopWatch probe;
  watch.Reset(span);
  EXPECT_GE(span.GetTicks(), Ticks(after + 2000));
  EXPECT_LE(watch.Lap(), probe.Lap());
}

TEST(AveragingMeter, RateOfAClosedPeriodUsesItsTrueLength) {
  const double period = 20000.0;
  StopWatch outer;
  AveragingMeter meter(TimeSpan(Ticks(period)));
  meter.Accumulate(100.0);
  const double first = meter.Measure();
  const bool prompt = outer.Lap() < period;  // the lap proves that no period has closed yet
  EXPECT_EQ(prompt ? first : 0.0, 0.0);
  Sleep(30000);
  const StopWatch closing;
  const double rate = meter.Measure();
  const double again = meter.Measure();
  if (prompt) {  // the amount is in the period that closed
    EXPECT_LE(rate, 100.0 * 1000000.0 / 30000.0);
    EXPECT_GE(rate, 100.0 * 1000000.0 / outer.Lap());
  }
  EXPECT_EQ(closing.Lap() < period ? again : rate, rate);  // kept while the next period runs

  // Accumulate closes the run-out period first, then counts for the new one.
  Sleep(30000);
  const StopWatch opened;
  meter.Accumulate(1000.0);
  const double afterClose = meter.Measure();
  if (opened.Lap() < period) {  // the amount went to the open period, not the closed one
    EXPECT_EQ(afterClose, 0.0);
    Sleep(30000);
    const double next = meter.Measure();
    EXPECT_LE(next, 1000.0 * 1000000.0 / 30000.0);
    EXPECT_GE(next, 1000.0 * 1000000.0 / opened.Lap());
  }

  // Reset drops the last rate and the open amount.
  meter.Accumulate(5.0);
  meter.Reset();
  EXPECT_EQ(meter.Measure(), 0.0);
  Sleep(30000);
  EXPECT_EQ(meter.Measure(), 0.0);

  AveragingMeter always{TimeSpan()};  // closes on every call
  always.Accumulate(10.0);
  EXPECT_GT(always.Measure(), 0.0);
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

  // Busy for 2 ms of a period that runs 2 ms longer: the share lies between 2 ms over the
  // outer lap and 1.
  StopWatch outer;
  LoadMeter meter(2);
  Sleep(2000);
  meter.Measure();
  Sleep(2000);
  meter.NextPeriod(load);
  EXPECT_EQ(meter.GetLoad(), load);
  EXPECT_GE(load, 2000.0 / outer.Lap());
  EXPECT_LT(load, 1.0);
  Sleep(1000);
  meter.NextPeriod();  // an idle period lowers the share
  EXPECT_LT(meter.GetLoad(), load);
  EXPECT_GT(meter.GetLoad(), 0.0);
  meter.NextPeriod();  // the ring holds the last two periods, both idle
  EXPECT_EQ(meter.GetLoad(), 0.0);

  // The last Measure of a period counts, not the first and not the sum.
  const StopWatch watch;
  meter.NextPeriod();
  const double start = watch.Lap();
  Sleep(2000);
  meter.Measure();
  Sleep(2000);
  const double mark = watch.Lap();
  meter.Measure();
  meter.NextPeriod();
  meter.Measure();
  meter.NextPeriod();
  const double share = meter.GetLoad();
  EXPECT_GE(share, (mark - start) / watch.Lap());
  EXPECT_LE(share, 1.0);
  meter.Measure();
  EXPECT_EQ(meter.GetLoad(), share);  // cached until the next period closes
}

}  // namespace
