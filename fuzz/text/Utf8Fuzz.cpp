// Both converters against a plain reference validator: the outcome, the stopping place and the
// output up to it, in whole-text form and with a target of a given room; valid text must
// round-trip. The first byte picks the room, the rest is the text (UTF-8 as it stands, UTF-16
// from pairs of bytes).
#include <tessera/text/Utf8.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include <tessera/frame/Errors.h>

#include "tessera/text/Utf8Convert.h"

namespace {

using Tessera::detail::Utf8Outcome;

void Check(bool condition) {
  if (!condition) std::abort();
}

void Append16(std::u16string& out, std::uint32_t c) {
  if (c < 0x10000) {
    out += static_cast<char16_t>(c);
  } else {
    out += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
    out += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
  }
}

void Append8(std::string& out, std::uint32_t c) {
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xC0 | (c >> 6));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    out += static_cast<char>(0xE0 | (c >> 12));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (c >> 18));
    out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  }
}

struct Reference {
  Utf8Outcome outcome;
  std::size_t taken;    // source units taken
  std::size_t written;  // target units written
  std::u16string wide;  // for UTF-8 input
  std::string narrow;   // for UTF-16 input
};

// The decoder written straight from the definition: decode the code point bit by bit, then
// judge it by its value, not by byte ranges.
Reference DecodeUtf8(const unsigned char* s, std::size_t n, std::size_t room) {
  Reference r{Utf8Outcome::done, 0, 0, {}, {}};
  std::size_t i = 0;
  while (i < n) {
    const unsigned int lead = s[i];
    const std::size_t extra = lead < 0xC0   ? 0
                              : lead < 0xE0 ? 1
                              : lead < 0xF0 ? 2
                              : lead < 0xF8 ? 3
                              : lead < 0xFC ? 4
                                            : 5;
    if (n - i < extra + 1) {
      r.outcome = Utf8Outcome::incomplete;
      break;
    }
    bool ok = extra <= 3 && (lead < 0x80 || extra > 0);
    std::uint32_t c = extra == 0 ? lead : lead & (0x3F >> extra);
    for (std::size_t k = 1; ok && k <= extra; ++k) {
      ok = (s[i + k] & 0xC0) == 0x80;
      c = (c << 6) | (s[i + k] & 0x3F);
    }
    static const std::uint32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
    if (ok) ok = c >= kSmallest[extra] && c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF);
    if (!ok) {
      r.outcome = Utf8Outcome::invalid;
      break;
    }
    const std::size_t units = c < 0x10000 ? 1 : 2;
    if (r.written + units > room) {
      r.outcome = Utf8Outcome::noRoom;
      break;
    }
    Append16(r.wide, c);
    r.written += units;
    i += extra + 1;
  }
  r.taken = i;
  return r;
}

Reference EncodeUtf16(const char16_t* s, std::size_t n, std::size_t room) {
  Reference r{Utf8Outcome::done, 0, 0, {}, {}};
  std::size_t i = 0;
  while (i < n) {
    std::uint32_t c = s[i];
    std::size_t units = 1;
    if (c >= 0xD800 && c < 0xDC00) {
      if (i + 1 == n) {
        r.outcome = Utf8Outcome::incomplete;
        break;
      }
      if (s[i + 1] < 0xDC00 || s[i + 1] > 0xDFFF) {
        r.outcome = Utf8Outcome::invalid;
        break;
      }
      c = 0x10000 + ((c - 0xD800) << 10) + (s[i + 1] - 0xDC00u);
      units = 2;
    } else if (c >= 0xDC00 && c <= 0xDFFF) {
      r.outcome = Utf8Outcome::invalid;
      break;
    }
    std::string bytes;
    Append8(bytes, c);
    if (r.written + bytes.size() > room) {
      r.outcome = Utf8Outcome::noRoom;
      break;
    }
    r.narrow += bytes;
    r.written += bytes.size();
    i += units;
  }
  r.taken = i;
  return r;
}

// The outcome of a whole-text operation from the message it threw, or done.
template <class F>
Utf8Outcome Run(F operation) {
  try {
    operation();
  } catch (const Tessera::TextConversionError& error) {
    return std::strstr(error.what(), "incomplete") != nullptr ? Utf8Outcome::incomplete
                                                              : Utf8Outcome::invalid;
  }
  return Utf8Outcome::done;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::size_t room = data[0] == 0xFF ? static_cast<std::size_t>(-1) / 4 : data[0];
  ++data;
  --size;
  const auto length = static_cast<unsigned int>(size);

  // UTF-8 to UTF-16, whole text.
  const char* text = reinterpret_cast<const char*>(data);
  const Reference wide = DecodeUtf8(data, size, static_cast<std::size_t>(-1));
  std::u16string out = u"x";
  Check(Run([&] { Tessera::TextWidenUtf8(text, length, out); }) == wide.outcome);
  Check(out == wide.wide);
  if (wide.outcome == Utf8Outcome::done) {
    std::string back;
    Tessera::TextNarrowUtf8(out.data(), static_cast<unsigned int>(out.size()), back);
    Check(back == std::string(text, size));
  }

  // UTF-8 to UTF-16 into a target of `room` units.
  {
    std::u16string target(room == static_cast<std::size_t>(-1) / 4 ? size + 1 : room, u'\0');
    const char* from = text;
    char16_t* to = &target[0];
    const Utf8Outcome outcome =
        Tessera::detail::ConvertUtf8ToUtf16(from, text + size, to, to + target.size());
    const Reference expected = DecodeUtf8(data, size, target.size());
    Check(outcome == expected.outcome);
    Check(static_cast<std::size_t>(from - text) == expected.taken);
    Check(std::u16string(target.data(), static_cast<std::size_t>(to - target.data())) ==
          expected.wide);
  }

  // WidenCharUtf8: the converter with a target of one unit.
  {
    char16_t c = u'?';
    const unsigned int taken = Tessera::WidenCharUtf8(c, text, length);
    const Reference one = DecodeUtf8(data, size, 1);
    const bool counts = one.outcome == Utf8Outcome::done || one.outcome == Utf8Outcome::noRoom;
    Check(taken == (counts ? one.taken : 0));
    Check(c == (one.wide.empty() ? u'?' : one.wide[0]));
  }

  // UTF-16 to UTF-8, from pairs of bytes.
  std::u16string units(size / 2, u'\0');
  std::memcpy(&units[0], data, units.size() * 2);
  const Reference narrow = EncodeUtf16(units.data(), units.size(), static_cast<std::size_t>(-1));
  std::string bytes = "x";
  Check(Run([&] {
          Tessera::TextNarrowUtf8(units.data(), static_cast<unsigned int>(units.size()), bytes);
        }) == narrow.outcome);
  Check(bytes == narrow.narrow);
  if (narrow.outcome == Utf8Outcome::done) {
    std::u16string back;
    Tessera::TextWidenUtf8(bytes.data(), static_cast<unsigned int>(bytes.size()), back);
    Check(back == units);
  }
  {
    const std::size_t bytesRoom =
        room == static_cast<std::size_t>(-1) / 4 ? units.size() * 3 + 1 : room;
    std::string target(bytesRoom, '\0');
    const char16_t* from = units.data();
    char* to = &target[0];
    const Utf8Outcome outcome = Tessera::detail::ConvertUtf16ToUtf8(
        from, units.data() + units.size(), to, to + target.size());
    const Reference expected = EncodeUtf16(units.data(), units.size(), target.size());
    Check(outcome == expected.outcome);
    Check(static_cast<std::size_t>(from - units.data()) == expected.taken);
    Check(std::string(target.data(), static_cast<std::size_t>(to - target.data())) ==
          expected.narrow);
  }
  return 0;
}
