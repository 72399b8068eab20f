#include <tessera/time/StopWatch.h>

#include <vector>

#include <tessera/win32/Clock.h>

namespace Tessera {

namespace {

std::uint64_t ReadCounter() {
  Win32::LARGE_INTEGER count;
  Win32::QueryPerformanceCounter(&count);
  return static_cast<std::uint64_t>(count.QuadPart);
}

TimeSpan SpanOf(double microseconds) {
  return TimeSpan(static_cast<std::int64_t>(microseconds * 10.0 + 0.5));
}

}  // namespace

StopWatch::StopWatch() {
  Win32::LARGE_INTEGER frequency;
  Win32::QueryPerformanceFrequency(&frequency);
  resolution_ = 1000000.0 / static_cast<double>(frequency.QuadPart);
  start_ = ReadCounter();
}

// The difference is taken modulo 2^64 and read as unsigned.
double StopWatch::Elapsed(std::uint64_t now) const {
  return static_cast<double>(now - start_) * resolution_;
}

double StopWatch::Lap() const { return Elapsed(ReadCounter()); }

void StopWatch::Lap(TimeSpan& span) const { span = SpanOf(Lap()); }

double StopWatch::Reset() {
  const std::uint64_t now = ReadCounter();
  const double elapsed = Elapsed(now);
  start_ = now;
  return elapsed;
}

void StopWatch::Reset(TimeSpan& span) { span = SpanOf(Reset()); }

AveragingMeter::AveragingMeter(const TimeSpan& period)
    : period_(period.div(TimeSpan::microsecond)), rate_(0.0), accumulated_(0.0) {}

AveragingMeter::~AveragingMeter() = default;

void AveragingMeter::Accumulate(double amount) {
  TryMeasure();
  accumulated_ += amount;
}

double AveragingMeter::Measure() {
  TryMeasure();
  return rate_;
}

void AveragingMeter::Reset() {
  rate_ = 0.0;
  accumulated_ = 0.0;
  watch_.Reset();
}

void AveragingMeter::TryMeasure() {
  if (watch_.Lap() < period_) return;
  const double length = watch_.Reset();
  rate_ = accumulated_ * 1000000.0 / length;
  accumulated_ = 0.0;
}

struct LoadMeter::Impl {
  explicit Impl(unsigned int periods)
      : averagingPeriod(periods), history(2 * static_cast<std::size_t>(periods), 0.0) {}

  StopWatch watch;
  unsigned int averagingPeriod;
  // Busy times of the last N periods, then their whole lengths, as one ring.
  std::vector<double> history;
  unsigned int index = 0;
  double busy = 0.0;
  double load = -1.0;  // -1: to be worked out anew
};

LoadMeter::LoadMeter() : LoadMeter(averagingPeriodDefault) {}

LoadMeter::LoadMeter(unsigned int averagingPeriod) : impl_(new Impl(averagingPeriod)) {}

LoadMeter::~LoadMeter() = default;

void LoadMeter::Measure() { impl_->busy = impl_->watch.Lap(); }

void LoadMeter::NextPeriod() {
  Impl& m = *impl_;
  const double length = m.watch.Reset();
  if (m.averagingPeriod == 0) return;
  m.history[m.index] = m.busy;
  m.busy = 0.0;
  m.history[m.index + m.averagingPeriod] = length;
  m.load = -1.0;
  m.index = (m.index + 1) % m.averagingPeriod;
}

void LoadMeter::NextPeriod(double& load) {
  NextPeriod();
  load = GetLoad();
}

double LoadMeter::GetLoad() const {
  Impl& m = *impl_;
  if (m.load != -1.0) return m.load;
  double busy = 0.0;
  double length = 0.0;
  for (unsigned int i = 0; i < m.averagingPeriod; ++i) {
    busy += m.history[i];
    length += m.history[i + m.averagingPeriod];
  }
  m.load = busy == 0.0 || length == 0.0 ? 0.0 : busy / length;
  return m.load;
}

}  // namespace Tessera
