// HTTP and ISO 8601 date texts beside POCO's DateTimeFormatter/DateTimeParser and the C
// library's strftime/strptime, on the same instant.
#include <tessera/time/Time.h>

#include <cstring>
#include <ctime>
#include <string>

#include <Poco/DateTime.h>
#include <Poco/DateTimeFormat.h>
#include <Poco/DateTimeFormatter.h>
#include <Poco/DateTimeParser.h>
#include <benchmark/benchmark.h>

namespace {

const char* const httpText = "Wed, 12 Nov 2008 12:34:56 GMT";
const char* const isoText = "2008-11-12T12:34:56.789Z";

void FormatHttp_Tessera(benchmark::State& state) {
  const Tessera::Time time(2008, 11, 12, 12, 34, 56, 789, Tessera::TimeKind::Utc);
  std::string out;
  out.reserve(64);
  for (auto _ : state) {
    time.FormatHttp(out);
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(FormatHttp_Tessera);

void FormatHttp_Poco(benchmark::State& state) {
  const Poco::DateTime time(2008, 11, 12, 12, 34, 56, 789);
  std::string out;
  out.reserve(64);
  for (auto _ : state) {
    out.clear();
    Poco::DateTimeFormatter::append(out, time, Poco::DateTimeFormat::HTTP_FORMAT);
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(FormatHttp_Poco);

void FormatHttp_strftime(benchmark::State& state) {
  const std::time_t seconds = 1226493296;
  std::string out;
  out.reserve(64);
  for (auto _ : state) {
    std::tm fields;
    ::gmtime_r(&seconds, &fields);
    char buffer[64];
    const std::size_t length = std::strftime(buffer, sizeof buffer, "%a, %d %b %Y %H:%M:%S GMT", &fields);
    out.assign(buffer, length);
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(FormatHttp_strftime);

void ParseHttp_Tessera(benchmark::State& state) {
  const std::string text = httpText;
  Tessera::Time time(0, Tessera::TimeKind::Utc);
  for (auto _ : state) {
    benchmark::DoNotOptimize(time.ParseHttp(text));
    benchmark::DoNotOptimize(&time);
  }
}
BENCHMARK(ParseHttp_Tessera);

void ParseHttp_Poco(benchmark::State& state) {
  const std::string text = httpText;
  Poco::DateTime time;
  int zone = 0;
  for (auto _ : state) {
    Poco::DateTimeParser::parse(Poco::DateTimeFormat::HTTP_FORMAT, text, time, zone);
    benchmark::DoNotOptimize(&time);
  }
}
BENCHMARK(ParseHttp_Poco);

void ParseHttp_strptime(benchmark::State& state) {
  const std::string text = httpText;
  for (auto _ : state) {
    std::tm fields{};
    benchmark::DoNotOptimize(::strptime(text.c_str(), "%a, %d %b %Y %H:%M:%S GMT", &fields));
    benchmark::DoNotOptimize(::timegm(&fields));
  }
}
BENCHMARK(ParseHttp_strptime);

void FormatIso_Tessera(benchmark::State& state) {
  const Tessera::Time time(2008, 11, 12, 12, 34, 56, 789, Tessera::TimeKind::Utc);
  std::string out;
  out.reserve(64);
  for (auto _ : state) {
    time.FormatIso(out, 0);
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(FormatIso_Tessera);

void FormatIso_Poco(benchmark::State& state) {
  const Poco::DateTime time(2008, 11, 12, 12, 34, 56, 789);
  std::string out;
  out.reserve(64);
  for (auto _ : state) {
    out.clear();
    // "%Y-%m-%dT%H:%M:%s%z" with milliseconds, as the Tessera text.
    Poco::DateTimeFormatter::append(out, time, "%Y-%m-%dT%H:%M:%S.%iZ");
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(FormatIso_Poco);

void FormatIso_strftime(benchmark::State& state) {
  const std::time_t seconds = 1226493296;
  std::string out;
  out.reserve(64);
  for (auto _ : state) {
    std::tm fields;
    ::gmtime_r(&seconds, &fields);
    char buffer[64];
    std::size_t length = std::strftime(buffer, sizeof buffer, "%Y-%m-%dT%H:%M:%S", &fields);
    std::memcpy(buffer + length, ".789Z", 5);  // strftime has no milliseconds
    out.assign(buffer, length + 5);
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(FormatIso_strftime);

void ParseIso_Tessera(benchmark::State& state) {
  const std::string text = isoText;
  Tessera::Time time(0, Tessera::TimeKind::Utc);
  for (auto _ : state) {
    benchmark::DoNotOptimize(time.ParseIso(text));
    benchmark::DoNotOptimize(&time);
  }
}
BENCHMARK(ParseIso_Tessera);

void ParseIso_Poco(benchmark::State& state) {
  const std::string text = isoText;
  Poco::DateTime time;
  int zone = 0;
  for (auto _ : state) {
    Poco::DateTimeParser::parse(Poco::DateTimeFormat::ISO8601_FRAC_FORMAT, text, time, zone);
    benchmark::DoNotOptimize(&time);
  }
}
BENCHMARK(ParseIso_Poco);

void ParseIso_strptime(benchmark::State& state) {
  const std::string text = isoText;
  for (auto _ : state) {
    std::tm fields{};
    benchmark::DoNotOptimize(::strptime(text.c_str(), "%Y-%m-%dT%H:%M:%S", &fields));
    benchmark::DoNotOptimize(::timegm(&fields));
  }
}
BENCHMARK(ParseIso_strptime);

}  // namespace
BENCHMARK_MAIN();
