#include <tessera/text/Utf8.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>

#include <tessera/frame/Errors.h>

#include "tessera/text/Utf8Convert.h"
#include "text/LocaleScope.h"

using namespace Tessera;
using detail::Utf8Outcome;

namespace {

struct Widened {
  Utf8Outcome outcome;
  std::size_t taken;
  std::u16string units;
};

Widened Widen(const std::string& bytes, std::size_t room) {
  std::u16string target(room, u'\xFFFF');
  const char* from = bytes.data();
  char16_t* to = &target[0];
  const Utf8Outcome outcome =
      detail::ConvertUtf8ToUtf16(from, bytes.data() + bytes.size(), to, &target[0] + room);
  target.resize(static_cast<std::size_t>(to - target.data()));
  return {outcome, static_cast<std::size_t>(from - bytes.data()), target};
}

struct Narrowed {
  Utf8Outcome outcome;
  std::size_t taken;
  std::string bytes;
};

Narrowed Narrow(const std::u16string& units, std::size_t room) {
  std::string target(room, '\xFF');
  const char16_t* from = units.data();
  char* to = &target[0];
  const Utf8Outcome outcome =
      detail::ConvertUtf16ToUtf8(from, units.data() + units.size(), to, &target[0] + room);
  target.resize(static_cast<std::size_t>(to - target.data()));
  return {outcome, static_cast<std::size_t>(from - units.data()), target};
}

// The message thrown by TextWidenUtf8, or "" if none, with what `out` held afterwards.
std::string WidenMessage(const std::string& bytes, std::u16string& out) {
  try {
    TextWidenUtf8(bytes.data(), static_cast<unsigned int>(bytes.size()), out);
  } catch (const TextConversionError& error) {
    EXPECT_STREQ(error.GetContext().function, "Tessera::TextWidenUtf8");
    return error.what();
  }
  return "";
}

std::string NarrowMessage(const std::u16string& units, std::string& out) {
  try {
    TextNarrowUtf8(units.data(), static_cast<unsigned int>(units.size()), out);
  } catch (const TextConversionError& error) {
    EXPECT_STREQ(error.GetContext().function, "Tessera::TextNarrowUtf8");
    return error.what();
  }
  return "";
}

void AppendUtf8(std::string& out, std::uint32_t c) {
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

void AppendUtf16(std::u16string& out, std::uint32_t c) {
  if (c < 0x10000) {
    out += static_cast<char16_t>(c);
  } else {
    out += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
    out += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
  }
}

const char kWidenIncomplete[] = "unable to widen incomplete UTF-8 sequence";
const char kWidenInvalid[] = "unable to widen invalid UTF-8 sequence";
const char kNarrowIncomplete[] = "unable to narrow incomplete Unicode sequence";
const char kNarrowInvalid[] = "unable to narrow invalid Unicode sequence";

}  // namespace

TEST(Utf8, WellFormedSequencesWidenAndNarrowBack) {
  const struct {
    std::string bytes;
    std::u16string units;
  } cases[] = {
      {"\xC3\xA9", u"\u00E9"},
      {"\xE2\x82\xAC", u"\u20AC"},
      {"\xF0\x9F\x98\x80", u"\xD83D\xDE00"},
      {"\xED\x9F\xBF", u"\uD7FF"},
      {"\xEE\x80\x80", u"\uE000"},
      {"\xF4\x8F\xBF\xBF", u"\xDBFF\xDFFF"},
      {"\xF0\x90\x80\x80", u"\xD800\xDC00"},
      {"\xE0\xA0\x80", u"\u0800"},
      {"\xC2\x80", u"\u0080"},
      {"\xEF\xBB\xBF"
       "a",
       u"\uFEFF"
       "a"},
      {"\xEF\xBF\xBE\xEF\xBF\xBF", u"\uFFFE\uFFFF"},
      {std::string("a\0b", 3), std::u16string(u"a\0b", 3)},
  };
  for (const auto& c : cases) {
    std::u16string wide = u"old";
    TextWidenUtf8(c.bytes.data(), static_cast<unsigned int>(c.bytes.size()), wide);
    EXPECT_EQ(wide, c.units);
    std::string narrow = "old";
    TextNarrowUtf8(c.units.data(), static_cast<unsigned int>(c.units.size()), narrow);
    EXPECT_EQ(narrow, c.bytes);
  }
  std::u16string wide = u"old";
  TextWidenUtf8("", 0, wide);
  EXPECT_TRUE(wide.empty());
  TextWidenUtf8("\0\xFF", npos, wide);
  EXPECT_TRUE(wide.empty());
  std::string narrow = "old";
  TextNarrowUtf8(u"\0\xD800", npos, narrow);
  EXPECT_TRUE(narrow.empty());
  TextNarrowUtf8(nullptr, 0, narrow);
  EXPECT_TRUE(narrow.empty());
}

TEST(Utf8, WidenOutcomes) {
  // Cut off by the end of the text: incomplete, whatever the bytes hold.
  for (const char* bytes : {"\xC0", "\xC3", "\xE2\x82", "\xE0\x80", "\xF0\x9F\x98", "\xFF",
                            "\xF8\x88\x80\x80", "\xFC\x84\x80\x80\x80", "\xF5\x80"}) {
    EXPECT_EQ(Widen(bytes, 8).outcome, Utf8Outcome::incomplete) << bytes;
  }
  // Complete but ill-formed: invalid.
  for (const char* bytes :
       {"\x80", "\xBF", "\xC0\x80", "\xC1\xBF", "\xC3\x41", "\xE0\x9F\xBF", "\xED\xA0\x80",
        "\xED\xBF\xBF", "\xE2\x82\x41", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80",
        "\xF8\x88\x80\x80\x80", "\xFF\x80\x80\x80\x80\x80"}) {
    const Widened result = Widen(std::string("ab") + bytes, 16);
    EXPECT_EQ(result.outcome, Utf8Outcome::invalid) << bytes;
    EXPECT_EQ(result.taken, 2u);
    EXPECT_EQ(result.units, u"ab");
  }
  // No room: checked after validity, never half a pair.
  Widened full = Widen("a\xF0\x9F\x98\x80", 2);
  EXPECT_EQ(full.outcome, Utf8Outcome::noRoom);
  EXPECT_EQ(full.taken, 1u);
  EXPECT_EQ(full.units, u"a");
  EXPECT_EQ(Widen("a\xED\xA0\x80", 1).outcome, Utf8Outcome::invalid);
  EXPECT_EQ(Widen("a\xE2\x82", 1).outcome, Utf8Outcome::incomplete);
  // A long ASCII run up to a bad byte, and up to the end of the room.
  const std::string run(40, 'x');
  Widened stopped = Widen(run + "\xC3(", 64);
  EXPECT_EQ(stopped.outcome, Utf8Outcome::invalid);
  EXPECT_EQ(stopped.taken, 40u);
  EXPECT_EQ(stopped.units, std::u16string(40, u'x'));
  Widened cramped = Widen(run, 33);
  EXPECT_EQ(cramped.outcome, Utf8Outcome::noRoom);
  EXPECT_EQ(cramped.taken, 33u);
}

TEST(Utf8, NarrowOutcomes) {
  EXPECT_EQ(Narrow(u"ab\xD800", 16).outcome, Utf8Outcome::incomplete);
  EXPECT_EQ(Narrow(u"ab\xD800", 16).taken, 2u);
  const Narrowed paired = Narrow(u"ab\xD800\x0041", 16);
  EXPECT_EQ(paired.outcome, Utf8Outcome::invalid);
  EXPECT_EQ(paired.taken, 2u);
  EXPECT_EQ(paired.bytes, "ab");
  EXPECT_EQ(Narrow(u"\xDC00\xD800", 16).outcome, Utf8Outcome::invalid);
  EXPECT_EQ(Narrow(u"\xD800\xD800", 16).outcome, Utf8Outcome::invalid);
  // Incomplete and invalid come before the room check.
  EXPECT_EQ(Narrow(u"\xD800", 0).outcome, Utf8Outcome::incomplete);
  EXPECT_EQ(Narrow(u"\xDC00", 0).outcome, Utf8Outcome::invalid);
  // A sequence that doesn't fit whole is not begun.
  const Narrowed tight = Narrow(u"a\u20AC", 3);
  EXPECT_EQ(tight.outcome, Utf8Outcome::noRoom);
  EXPECT_EQ(tight.taken, 1u);
  EXPECT_EQ(tight.bytes, "a");
  const Narrowed pair = Narrow(u"\u00E9\xD83D\xDE00", 5);
  EXPECT_EQ(pair.outcome, Utf8Outcome::noRoom);
  EXPECT_EQ(pair.taken, 1u);
  EXPECT_EQ(pair.bytes, "\xC3\xA9");
}

TEST(Utf8, WholeTextErrorsKeepTheConvertedPart) {
  std::u16string wide = u"old";
  EXPECT_EQ(WidenMessage("abc\xE2\x82", wide), kWidenIncomplete);
  EXPECT_EQ(wide, u"abc");
  EXPECT_EQ(WidenMessage("\xC0\x80", wide), kWidenInvalid);
  EXPECT_EQ(wide, u"");
  EXPECT_EQ(WidenMessage("\xC0", wide), kWidenIncomplete);
  EXPECT_EQ(WidenMessage("\xFF\x80\x80\x80\x80\x80", wide), kWidenInvalid);
  EXPECT_EQ(WidenMessage("\xFF\x80\x80\x80\x80", wide), kWidenIncomplete);
  EXPECT_EQ(WidenMessage("\xF8\x88\x80\x80\x80", wide), kWidenInvalid);
  EXPECT_EQ(WidenMessage("x\xF0\x9F\x98\x80\xED\xA0\x80", wide), kWidenInvalid);
  EXPECT_EQ(wide, u"x\xD83D\xDE00");

  std::string narrow = "old";
  EXPECT_EQ(NarrowMessage(u"ab\xD800", narrow), kNarrowIncomplete);
  EXPECT_EQ(narrow, "ab");
  EXPECT_EQ(NarrowMessage(u"\u00E9\xD800\x0041", narrow), kNarrowInvalid);
  EXPECT_EQ(narrow, "\xC3\xA9");
  EXPECT_EQ(NarrowMessage(u"\xDC00", narrow), kNarrowInvalid);
  EXPECT_EQ(narrow, "");
  // Past the first 256 bytes of output: the pieces join with no character broken.
  std::u16string units(255, u'a');
  units += u"\u20AC\xD83D\xDE00";
  units += std::u16string(300, u'\u0416');
  units += u'\xDBFF';
  std::string expected(255, 'a');
  expected += "\xE2\x82\xAC\xF0\x9F\x98\x80";
  for (int i = 0; i < 300; ++i) expected += "\xD0\x96";
  EXPECT_EQ(NarrowMessage(units, narrow), kNarrowIncomplete);
  EXPECT_EQ(narrow, expected);
  units.pop_back();
  EXPECT_EQ(NarrowMessage(units, narrow), "");
  EXPECT_EQ(narrow, expected);
}

TEST(Utf8, WidenCharLooksAhead) {
  char16_t out = u'?';
  EXPECT_EQ(WidenCharUtf8(out, "\xC3\xA9", npos), 2u);
  EXPECT_EQ(out, u'\u00E9');
  EXPECT_EQ(WidenCharUtf8(out,
                          "\xC3\xA9"
                          "a",
                          npos),
            2u);
  EXPECT_EQ(WidenCharUtf8(out, "b\xE2\x82\xAC", npos), 1u);
  EXPECT_EQ(out, u'b');
  // A bad sequence right behind the first character: 0, but `out` took the character.
  out = u'?';
  EXPECT_EQ(WidenCharUtf8(out, "a\xC3", npos), 0u);
  EXPECT_EQ(out, u'a');
  EXPECT_EQ(WidenCharUtf8(out, "c\x80", 2), 0u);
  EXPECT_EQ(out, u'c');
  // Beyond U+FFFF, or nothing at all: 0 and `out` unchanged.
  out = u'?';
  EXPECT_EQ(WidenCharUtf8(out, "\xF0\x9F\x98\x80", npos), 0u);
  EXPECT_EQ(WidenCharUtf8(out, "", npos), 0u);
  EXPECT_EQ(WidenCharUtf8(out, "zz", 0), 0u);
  EXPECT_EQ(WidenCharUtf8(out, "\xC3", npos), 0u);
  EXPECT_EQ(out, u'?');
  EXPECT_EQ(WidenCharUtf8(out, "\0x", 2), 1u);
  EXPECT_EQ(out, u'\0');
  const std::string ascii(40, 'q');
  EXPECT_EQ(WidenCharUtf8(out, ascii.data(), npos), 1u);
  EXPECT_EQ(out, u'q');
}

TEST(Utf8, LongTextsOfEveryKindConvertBothWays) {
  // Long random texts reach the vector paths: ASCII runs, blocks of units below U+0800 with
  // ASCII among them, and everything else in between; a bad unit or byte then stops the
  // conversion at its exact place.
  std::mt19937 random(99);
  const std::uint32_t starts[] = {0x20, 0xA0, 0x400, 0x4E00, 0x1F600, 0xE000};
  const std::uint32_t spans[] = {0x5F, 0x60, 0x100, 0x200, 0x50, 0x1000};
  for (int round = 0; round < 200; ++round) {
    std::string bytes;
    std::u16string units;
    const int kinds = 1 + round % 6;
    const std::size_t count = random() % 3000;
    for (std::size_t i = 0; i < count; ++i) {
      const int kind = static_cast<int>(random() % kinds);
      const std::uint32_t c = starts[kind] + random() % spans[kind];
      AppendUtf8(bytes, c);
      AppendUtf16(units, c);
    }
    std::u16string wide;
    TextWidenUtf8(bytes.data(), static_cast<unsigned int>(bytes.size()), wide);
    ASSERT_EQ(wide, units) << round;
    std::string narrow;
    TextNarrowUtf8(units.data(), static_cast<unsigned int>(units.size()), narrow);
    ASSERT_EQ(narrow, bytes) << round;
    if (units.empty()) continue;
    const std::size_t at = random() % units.size();
    if (units[at] >= 0xD800 && units[at] <= 0xDFFF) continue;
    std::u16string broken = units;
    broken[at] = 0xDC00;
    EXPECT_EQ(NarrowMessage(broken, narrow), kNarrowInvalid);
    std::u16string prefix;
    TextWidenUtf8(narrow.data(), static_cast<unsigned int>(narrow.size()), prefix);
    EXPECT_EQ(prefix, units.substr(0, at)) << round;
  }
}

TEST(Utf8, DefaultCharsetFollowsTheLocale) {
  {
    LocaleScope scope("C");
    EXPECT_FALSE(IsDefaultCharsetUtf8());
  }
  REQUIRE_LOCALE(scope, "en_US.UTF-8");
  EXPECT_TRUE(IsDefaultCharsetUtf8());
}
