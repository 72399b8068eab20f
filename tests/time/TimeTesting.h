// Helpers of the time tests: a scoped POSIX zone, the ticks of a Time, and parses that
// check that a refusal left the Time as it was.
#ifndef TESSERA_TESTS_TIME_TIMETESTING_H
#define TESSERA_TESTS_TIME_TIMETESTING_H

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>
#include <utility>

#include <gtest/gtest.h>
#include <tessera/time/Time.h>

#include "tessera/detail/Calendar.h"

using Win32::detail::epochTicks;
using Win32::detail::Join;
using Win32::detail::Split;

// Sets TZ for one scope. POSIX texts without daylight saving need no zone database.
class ZoneGuard {
 public:
  explicit ZoneGuard(const char* zone) {
    if (const char* previous = std::getenv("TZ")) previous_ = previous;
    Use(zone);
  }
  ~ZoneGuard() { Use(previous_ ? previous_->c_str() : nullptr); }

 private:
  static void Use(const char* zone) {
    zone != nullptr ? ::setenv("TZ", zone, 1) : ::unsetenv("TZ");
    ::tzset();
  }
  std::optional<std::string> previous_;
};

constexpr const char *zoneWest0530 = "<-0530>5:30", *zoneEast0100 = "<+01>-1", *zoneWest0500 = "<-05>5",
                     *zoneWest0030 = "<-0030>0:30";
constexpr std::int64_t refused = INT64_MIN;

inline std::uint64_t TicksOf(const Tessera::Time& time) {
  Win32::FILETIME value;
  time.Render(value);
  return Join(value);
}

// The ticks and whether the kind is local, to compare both in one check.
inline std::pair<std::uint64_t, bool> Word(const Tessera::Time& time) { return {TicksOf(time), time.IsLocal()}; }
inline std::pair<std::uint64_t, bool> Utc(std::uint64_t ticks) { return {ticks, false}; }
inline std::pair<std::uint64_t, bool> Local(std::uint64_t ticks) { return {ticks, true}; }

using Parse = bool (Tessera::Time::*)(const std::string&);

// Unix milliseconds of what `parse` reads (always UTC), or `refused`.
inline std::int64_t Parsed(Parse parse, const std::string& text) {
  const Tessera::Time before(std::int64_t{-86400}, Tessera::TimeKind::Local);
  Tessera::Time time = before;
  if (!(time.*parse)(text)) {
    EXPECT_EQ(Word(time), Word(before)) << "changed by " << text;
    return refused;
  }
  EXPECT_TRUE(time.IsUtc()) << text;
  return (static_cast<std::int64_t>(TicksOf(time)) - static_cast<std::int64_t>(epochTicks)) / 10000;
}

// Each text behind `prefix` read as the number beside it times `unit` milliseconds.
inline void Expect(Parse parse, std::int64_t unit, std::initializer_list<std::pair<const char*, std::int64_t>> cases,
                   const std::string& prefix = "") {
  for (const auto& c : cases) EXPECT_EQ(Parsed(parse, prefix + c.first), c.second * unit) << prefix + c.first;
}

inline void ExpectRefused(Parse parse, std::initializer_list<const char*> texts, const std::string& prefix = "") {
  for (const char* text : texts) EXPECT_EQ(Parsed(parse, prefix + text), refused) << prefix + text;
}

#endif  // TESSERA_TESTS_TIME_TIMETESTING_H
