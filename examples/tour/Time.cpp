#include <tessera/tessera.h>

#include <chrono>
#include <string>
#include <thread>

#include "Tour.h"

namespace Tour {

void ShowTime() {
  Heading("time: calendar time, HTTP and ISO 8601 texts, meters");
  using Tessera::Time;
  using Tessera::TimeKind;
  std::string text;
  Time::NowUtc().FormatIso(text, 0);
  std::cout << "now, UTC:     " << text << '\n';
  Time::NowLocal().FormatIso(text, Tessera::TimeFormatNoFraction);
  std::cout << "now, local:   " << text << '\n';

  const Time moment(2008, 11, 12, 12, 34, 56, 789, TimeKind::Utc);
  moment.FormatHttp(text);
  std::cout << "HTTP:         " << text << '\n';
  moment.FormatIso(text, 0);
  std::cout << "ISO:          " << text << '\n';

  Time parsed(TimeKind::Utc);
  if (parsed.ParseHttp("wed , 12 nov 08 12:34 EST")) {
    parsed.FormatHttp(text);
    std::cout << "HTTP parsed:  \"wed , 12 nov 08 12:34 EST\" -> " << text << '\n';
  }
  if (parsed.ParseIso("20081112T123456.7+05:30")) {
    parsed.FormatIso(text, 0);
    std::cout << "ISO parsed:   \"20081112T123456.7+05:30\" -> " << text << '\n';
  }
  std::cout << "\"2008-02-30\" parses: " << std::boolalpha << parsed.ParseIso("2008-02-30") << '\n';
  Time cut(TimeKind::Utc);
  if (cut.Set(67137, 1, 2, TimeKind::Utc)) {
    cut.FormatIsoDate(text);
    std::cout << "year 67137 cut to 16 bits: " << text << " (kept for compatibility)\n";
  }

  Tessera::AveragingMeter meter(Tessera::TimeSpan(100 * Tessera::TimeSpan::millisecond.GetTicks()));
  for (int i = 0; i < 12; ++i) {
    meter.Accumulate(10.0);
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  std::cout << "10 units every 10 ms: about " << static_cast<int>(meter.Measure() / 100 + 0.5) * 100
            << " per second\n";
}

}  // namespace Tour
