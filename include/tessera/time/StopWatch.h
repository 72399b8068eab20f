// Measurement on the performance counter: StopWatch gives elapsed time, AveragingMeter a
// rate per second over fixed periods, LoadMeter the busy share of the last N periods.
// None of them uses the calendar clock or the zone; none has a lock, and each object
// belongs to one thread at a time. Durations as `double` are in microseconds.
#ifndef TESSERA_TIME_STOPWATCH_H
#define TESSERA_TIME_STOPWATCH_H

#include <cstdint>
#include <memory>

#include <tessera_export.h>
#include <tessera/time/TimeSpan.h>

namespace Tessera {

class TESSERA_API StopWatch {
 public:
  // Reads the counter frequency once, then starts.
  StopWatch();
  StopWatch(const StopWatch&) = default;
  StopWatch& operator=(const StopWatch&) = default;

  // Microseconds since the start; the start stays.
  double Lap() const;
  // The same as a span, rounded to the nearest tick.
  void Lap(TimeSpan& span) const;
  // Microseconds since the start, and the same counter reading becomes the new start, so
  // that no time falls between two laps.
  double Reset();
  void Reset(TimeSpan& span);
  // Microseconds per counter step; fixed over the object's life.
  double GetResolution() const { return resolution_; }

 private:
  double Elapsed(std::uint64_t now) const;

  std::uint64_t start_;
  double resolution_;
};

// Amounts per second over periods of at least a given length. A period closes only when
// Accumulate or Measure runs after it has run out; its rate uses its true length.
class TESSERA_API AveragingMeter {
 public:
  explicit AveragingMeter(const TimeSpan& period);
  ~AveragingMeter();
  AveragingMeter(const AveragingMeter&) = default;
  AveragingMeter& operator=(const AveragingMeter&) = default;

  // Closes the period if it has run out, then adds the amount to the open period.
  void Accumulate(double amount);
  // Closes the period if it has run out, then gives the rate of the last closed period
  // (0 before the first one).
  double Measure();
  // Drops the open amount and the last rate, and starts a new period.
  void Reset();

 private:
  void TryMeasure();

  StopWatch watch_;
  double period_;       // microseconds
  double rate_;         // per second, of the last closed period
  double accumulated_;  // in the open period
};

// The busy share of the last N closed periods: the sum of their busy times over the sum
// of their lengths. Measure marks the end of the busy part of the open period.
class TESSERA_API LoadMeter {
 public:
  static constexpr unsigned int averagingPeriodDefault = 10;

  LoadMeter();
  explicit LoadMeter(unsigned int averagingPeriod);
  ~LoadMeter();
  LoadMeter(const LoadMeter&) = delete;
  LoadMeter& operator=(const LoadMeter&) = delete;

  // The busy time of the open period becomes the time since its start; a second call in
  // the same period replaces the first.
  void Measure();
  // Closes the open period into the ring of N and opens the next. With N = 0 it only
  // restarts the period.
  void NextPeriod();
  void NextPeriod(double& load);
  // Between 0 and 1 in normal use; 0 while nothing has been measured. Cached until the
  // next NextPeriod, so even this const call needs outside synchronisation.
  double GetLoad() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace Tessera

#endif  // TESSERA_TIME_STOPWATCH_H
