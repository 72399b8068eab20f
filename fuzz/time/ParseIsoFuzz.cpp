// ParseIso on arbitrary text: no crash; a refusal leaves the time as it was; whatever
// parses writes back, under any flags that keep date and time, as a text that parses to
// the same instant less what the flags drop; and the direct split of the usual layout
// agrees with the tokenizer, which a leading separator forces without changing the meaning.
#include <tessera/time/Time.h>

#include "FuzzTime.h"

#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const Tessera::Time before(std::int64_t{123456789}, Tessera::TimeKind::Local);

  Tessera::Time time = before;
  const bool parsed = time.ParseIso(text);
  if (!parsed) {
    Check(TicksOf(time) == TicksOf(before) && time.IsLocal());
  } else {
    Check(time.IsUtc());
    Win32::SYSTEMTIME fields;
    time.Render(fields);
    // Four-digit years are what the date field reads.
    if (fields.wYear >= 1601 && fields.wYear <= 9999) {
      const std::int32_t flags = size == 0 ? 0 : (data[0] & 0xFF) << 4 & ~(Tessera::TimeFormatNoDate | Tessera::TimeFormatNoTime);
      std::string written;
      time.FormatIso(written, flags);
      std::ostringstream stream;
      time.OutputIso(stream, flags);
      Check(stream.str() == written);
      Tessera::Time back = before;
      Check(back.ParseIso(written));
      std::uint64_t dropped = fields.wMilliseconds * 10000u;
      if ((flags & Tessera::TimeFormatNoSeconds) != 0) {
        dropped += fields.wSecond * 10000000u;
      } else if ((flags & Tessera::TimeFormatNoFraction) == 0) {
        dropped = 0;
      }
      Check(TicksOf(back) == TicksOf(time) - dropped);
    }
  }

  Tessera::Time direct = before;
  Tessera::Time general = before;
  const bool directParsed = direct.ParseIso(text);
  Check(general.ParseIso("_" + text) == directParsed);
  Check(TicksOf(direct) == TicksOf(general) && direct.GetKind() == general.GetKind());
  return 0;
}
