// TimeSpan: the library's one duration type, a signed 64-bit count of 100-nanosecond
// ticks. A plain value: no allocation, no failure; arithmetic wraps silently.
#ifndef TESSERA_TIME_TIMESPAN_H
#define TESSERA_TIME_TIMESPAN_H

#include <cstdint>

#include <sys/time.h>

#include <tessera_export.h>

namespace Tessera {

class TESSERA_API TimeSpan {
 public:
  constexpr TimeSpan() : ticks_(0) {}
  constexpr TimeSpan(std::int64_t ticks) : ticks_(ticks) {}  // NOLINT: a tick count is a span

  constexpr std::int64_t GetTicks() const { return ticks_; }

  // Two's complement arithmetic that wraps without report.
  TimeSpan& operator+=(const TimeSpan& other) {
    ticks_ = static_cast<std::int64_t>(static_cast<std::uint64_t>(ticks_) + static_cast<std::uint64_t>(other.ticks_));
    return *this;
  }
  TimeSpan& operator-=(const TimeSpan& other) {
    ticks_ = static_cast<std::int64_t>(static_cast<std::uint64_t>(ticks_) - static_cast<std::uint64_t>(other.ticks_));
    return *this;
  }

  // This span over `other` in floating point: second.div(minute) is 1/60. Division by a
  // zero span gives an infinity or NaN, never a trap.
  double div(const TimeSpan& other) const {
    return static_cast<double>(ticks_) / static_cast<double>(other.ticks_);
  }

  // Seconds and microseconds, each truncated toward zero and carrying the span's sign,
  // each stored as its low 32 bits. Sub-microsecond ticks are dropped.
  void Render(::timeval& out) const;

  static const TimeSpan microsecond;
  static const TimeSpan millisecond;
  static const TimeSpan second;
  static const TimeSpan minute;
  static const TimeSpan hour;
  static const TimeSpan day;

 private:
  std::int64_t ticks_;
};

// Constant-initialised, so usable before any code of the library has run.
inline constexpr TimeSpan TimeSpan::microsecond{10};
inline constexpr TimeSpan TimeSpan::millisecond{10000};
inline constexpr TimeSpan TimeSpan::second{10000000};
inline constexpr TimeSpan TimeSpan::minute{600000000};
inline constexpr TimeSpan TimeSpan::hour{36000000000};
inline constexpr TimeSpan TimeSpan::day{864000000000};

// Conveniences beside the ported API: comparison by ticks, and negation, sum and difference
// that wrap as += and -= do.
constexpr bool operator==(const TimeSpan& a, const TimeSpan& b) { return a.GetTicks() == b.GetTicks(); }
constexpr bool operator!=(const TimeSpan& a, const TimeSpan& b) { return a.GetTicks() != b.GetTicks(); }
constexpr bool operator<(const TimeSpan& a, const TimeSpan& b) { return a.GetTicks() < b.GetTicks(); }
constexpr bool operator<=(const TimeSpan& a, const TimeSpan& b) { return a.GetTicks() <= b.GetTicks(); }
constexpr bool operator>(const TimeSpan& a, const TimeSpan& b) { return a.GetTicks() > b.GetTicks(); }
constexpr bool operator>=(const TimeSpan& a, const TimeSpan& b) { return a.GetTicks() >= b.GetTicks(); }
constexpr TimeSpan operator-(const TimeSpan& span) {
  return TimeSpan(static_cast<std::int64_t>(0u - static_cast<std::uint64_t>(span.GetTicks())));
}
constexpr TimeSpan operator+(const TimeSpan& a, const TimeSpan& b) {
  return TimeSpan(static_cast<std::int64_t>(static_cast<std::uint64_t>(a.GetTicks()) +
                                            static_cast<std::uint64_t>(b.GetTicks())));
}
constexpr TimeSpan operator-(const TimeSpan& a, const TimeSpan& b) { return a + -b; }

}  // namespace Tessera

#endif  // TESSERA_TIME_TIMESPAN_H
