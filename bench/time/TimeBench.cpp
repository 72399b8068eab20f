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

const std::string httpText = "Wed, 12 Nov 2008 12:34:56 GMT";
const std::string isoText = "2008-11-12T12:34:56.789Z";
const Tessera::Time tesseraTime(2008, 11, 12, 12, 34, 56, 789, Tessera::TimeKind::Utc);
const Poco::DateTime pocoTime(2008, 11, 12, 12, 34, 56, 789);
const std::time_t unixTime = 1226493296;

// Runs `format(out)` into a reused string.
template <class Format>
void FormatInto(benchmark::State& state, Format format) {
  std::string out;
  out.reserve(64);
  for (auto _ : state) {
    format(out);
    benchmark::DoNotOptimize(out.data());
  }
}

void Format_Tessera(benchmark::State& state, bool iso) {
  FormatInto(state, [iso](std::string& out) { iso ? tesseraTime.FormatIso(out, 0) : tesseraTime.FormatHttp(out); });
}

// The layout is held in a string once, as POCO takes it: a `const char*` would build one
// on every call.
void Format_Poco(benchmark::State& state, const std::string& layout) {
  FormatInto(state, [&layout](std::string& out) {
    out.clear();
    Poco::DateTimeFormatter::append(out, pocoTime, layout);
  });
}

// strftime has no milliseconds: `tail` is appended as the other libraries write it.
void Format_strftime(benchmark::State& state, const char* layout, const char* tail) {
  FormatInto(state, [layout, tail](std::string& out) {
    std::tm fields;
    ::gmtime_r(&unixTime, &fields);
    char buffer[64];
    const std::size_t length = std::strftime(buffer, sizeof buffer, layout, &fields);
    out.assign(buffer, length).append(tail);
  });
}

void Parse_Tessera(benchmark::State& state, bool iso) {
  Tessera::Time time(0, Tessera::TimeKind::Utc);
  for (auto _ : state) {
    benchmark::DoNotOptimize(iso ? time.ParseIso(isoText) : time.ParseHttp(httpText));
    benchmark::DoNotOptimize(&time);
  }
}

void Parse_Poco(benchmark::State& state, const std::string& format, const std::string& text) {
  Poco::DateTime time;
  int zone = 0;
  for (auto _ : state) {
    Poco::DateTimeParser::parse(format, text, time, zone);
    benchmark::DoNotOptimize(&time);
  }
}

void Parse_strptime(benchmark::State& state, const char* layout, const std::string& text) {
  for (auto _ : state) {
    std::tm fields{};
    benchmark::DoNotOptimize(::strptime(text.c_str(), layout, &fields));
    benchmark::DoNotOptimize(::timegm(&fields));
  }
}

BENCHMARK_CAPTURE(Format_Tessera, Http, false);
BENCHMARK_CAPTURE(Format_Poco, Http, Poco::DateTimeFormat::HTTP_FORMAT);
BENCHMARK_CAPTURE(Format_strftime, Http, "%a, %d %b %Y %H:%M:%S GMT", "");
BENCHMARK_CAPTURE(Parse_Tessera, Http, false);
BENCHMARK_CAPTURE(Parse_Poco, Http, Poco::DateTimeFormat::HTTP_FORMAT, httpText);
BENCHMARK_CAPTURE(Parse_strptime, Http, "%a, %d %b %Y %H:%M:%S GMT", httpText);
BENCHMARK_CAPTURE(Format_Tessera, Iso, true);
BENCHMARK_CAPTURE(Format_Poco, Iso, std::string("%Y-%m-%dT%H:%M:%S.%iZ"));
BENCHMARK_CAPTURE(Format_strftime, Iso, "%Y-%m-%dT%H:%M:%S", ".789Z");
BENCHMARK_CAPTURE(Parse_Tessera, Iso, true);
BENCHMARK_CAPTURE(Parse_Poco, Iso, Poco::DateTimeFormat::ISO8601_FRAC_FORMAT, isoText);
BENCHMARK_CAPTURE(Parse_strptime, Iso, "%Y-%m-%dT%H:%M:%S", isoText);

}  // namespace

BENCHMARK_MAIN();
