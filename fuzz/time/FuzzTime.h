// What the date-text fuzzers share: a Time's raw ticks and a check that stops the run.
#ifndef TESSERA_FUZZ_TIME_FUZZTIME_H
#define TESSERA_FUZZ_TIME_FUZZTIME_H

#include <tessera/time/Time.h>

#include <cstdint>
#include <cstdlib>

#include "tessera/detail/Calendar.h"

inline std::uint64_t TicksOf(const Tessera::Time& time) {
  Win32::FILETIME value;
  time.Render(value);
  return Win32::detail::Join(value);
}

inline void Check(bool condition) {
  if (!condition) std::abort();
}

#endif
