// MimeParseMediaType beside Poco::Net::MediaType (assigned from the text, which parses it),
// over 12 media types as they come in Content-Type headers, with and without parameters.
#include <tessera/internet/Mime.h>

#include <string>
#include <vector>

#include <Poco/Net/MediaType.h>
#include <benchmark/benchmark.h>

namespace {

const std::vector<std::string>& MediaTypes() {
  static const std::vector<std::string> types = {
      "text/plain",
      "text/html; charset=UTF-8",
      "application/json",
      "text/plain; charset=\"us-ascii\"; format=flowed",
      "multipart/form-data; boundary=----WebKitFormBoundary7MA4YWxkTrZu0gW",
      "multipart/mixed; boundary=\"simple boundary\"",
      "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet",
      "image/svg+xml",
      "application/x-www-form-urlencoded;charset=ISO-8859-1",
      "message/external-body; access-type=URL; URL=\"ftp://ftp.example.com/pub/file.txt\"",
      "text/csv; header=present; charset=utf-8",
      "application/atom+xml;type=entry;charset=\"utf-8\"",
  };
  return types;
}

void BM_MimeParseMediaType(benchmark::State& state) {
  std::string type, subtype;
  Tessera::Properties parameters;
  for (auto _ : state) {
    for (const std::string& text : MediaTypes()) {
      bool ok = Tessera::MimeParseMediaType(text.data(), static_cast<unsigned int>(text.size()), type,
                                            subtype, parameters);
      benchmark::DoNotOptimize(ok);
    }
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * MediaTypes().size()));
}
BENCHMARK(BM_MimeParseMediaType);

void BM_PocoMediaType(benchmark::State& state) {
  Poco::Net::MediaType mediaType("text/plain");
  for (auto _ : state) {
    for (const std::string& text : MediaTypes()) {
      mediaType = text;
      benchmark::DoNotOptimize(mediaType.getSubType().data());
    }
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * MediaTypes().size()));
}
BENCHMARK(BM_PocoMediaType);

}  // namespace
