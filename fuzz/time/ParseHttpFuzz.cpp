// ParseHttp on arbitrary text: no crash; a refusal leaves the time as it was; whatever
// parses writes back as an HTTP date that parses to the same instant; and the direct
// reading of the usual layout agrees with the tokenizer-driven one, which a leading blank
// forces without changing the meaning.
#include <tessera/time/Time.h>

#include "FuzzTime.h"

#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

// Formats that can be read back: a year the calendar accepts.
bool Writable(const Tessera::Time& time) {
  Win32::SYSTEMTIME fields;
  time.Render(fields);
  return fields.wYear >= 1601 && fields.wYear <= 30827;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const Tessera::Time before(std::int64_t{123456789}, Tessera::TimeKind::Local);

  Tessera::Time time = before;
  const bool parsed = time.ParseHttp(text);
  if (!parsed) {
    Check(TicksOf(time) == TicksOf(before) && time.IsLocal());
  } else {
    Check(time.IsUtc());
    if (Writable(time)) {
      std::string written;
      time.FormatHttp(written);
      Tessera::Time back = before;
      Check(back.ParseHttp(written));
      Check(TicksOf(back) == TicksOf(time));
    }
  }

  Tessera::Time direct = before;
  Tessera::Time general = before;
  const bool directParsed = direct.ParseRfc822(text);
  Check(general.ParseRfc822(" " + text) == directParsed);
  Check(TicksOf(direct) == TicksOf(general) && direct.GetKind() == general.GetKind());

  // The other formats must not fall over on whatever was parsed.
  std::string out;
  time.FormatRfc850(out);
  time.FormatAscTime(out);
  time.FormatRfc822(out, static_cast<std::int32_t>(size));
  return 0;
}
