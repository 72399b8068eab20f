#include <tessera/text/Utf8.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>

#include <tessera/frame/Errors.h>

#include "text/LocaleScope.h"

using namespace Tessera;

namespace {

// The message that a whole-text operation threw, or "".
template <class Operation>
std::string Message(Operation operation, const char* function) {
  try {
    operation();
  } catch (const TextConversionError& error) {
    EXPECT_STREQ(error.GetContext().function, function);
    return error.what();
  }
  return "";
}

std::string WidenMessage(const std::string& bytes, std::u16string& out) {
  return Message([&] { TextWidenUtf8(bytes.data(), static_cast<unsigned int>(bytes.size()), out); },
                 "Tessera::TextWidenUtf8");
}

std::string NarrowMessage(const std::u16string& units, std::string& out) {
  return Message(
      [&] { TextNarrowUtf8(units.data(), static_cast<unsigned int>(units.size()), out); },
      "Tessera::TextNarrowUtf8");
}

void Append(std::string& bytes, std::u16string& units, std::uint32_t c) {
  const int tail = c < 0x80 ? 0 : c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
  const std::uint32_t lead[] = {0x00, 0xC0, 0xE0, 0xF0};
  bytes += static_cast<char>(lead[tail] | (c >> (6 * tail)));
  for (int i = tail - 1; i >= 0; --i) bytes += static_cast<char>(0x80 | ((c >> (6 * i)) & 0x3F));
  if (c < 0x10000)
    units += static_cast<char16_t>(c);
  else
    units += {static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)),
              static_cast<char16_t>(0xDC00 + (c & 0x3FF))};
}

const char kWidenIncomplete[] = "unable to widen incomplete UTF-8 sequence";
const char kWidenInvalid[] = "unable to widen invalid UTF-8 sequence";
const char kNarrowIncomplete[] = "unable to narrow incomplete Unicode sequence";
const char kNarrowInvalid[] = "unable to narrow invalid Unicode sequence";

}  // namespace

TEST(Utf8, BadSequencesStopTheConversionWhereTheyStart) {
  std::u16string wide;
  std::string narrow;
  // Cut off by the end of the text: incomplete, whatever the bytes hold.
  for (const char* bytes : {"\xC0", "\xE2\x82", "\xE0\x80", "\xF0\x9F\x98", "\xFF", "\xF5\x80",
                            "\xF8\x88\x80\x80", "\xFC\x84\x80\x80\x80"}) {
    EXPECT_EQ(WidenMessage(std::string("ab") + bytes, wide), kWidenIncomplete) << bytes;
    EXPECT_EQ(wide, u"ab");
  }
  // Complete but ill-formed: invalid.
  for (const char* bytes :
       {"\x80", "\xC0\x80", "\xC1\xBF", "\xC3\x41", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xE2\x82\x41",
        "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xF8\x88\x80\x80\x80",
        "\xFF\x80\x80\x80\x80\x80"}) {
    EXPECT_EQ(WidenMessage(std::string("ab") + bytes, wide), kWidenInvalid) << bytes;
    EXPECT_EQ(wide, u"ab");
  }
  EXPECT_EQ(NarrowMessage(u"ab\xD800", narrow), kNarrowIncomplete);
  EXPECT_EQ(narrow, "ab");
  for (const char16_t* units : {u"ab\xD800\x0041", u"ab\xDC00\xD800", u"ab\xD800\xD800"}) {
    EXPECT_EQ(NarrowMessage(units, narrow), kNarrowInvalid);
    EXPECT_EQ(narrow, "ab");
  }
  // The converter checks a whole sequence before it looks for room.
  char16_t out = u'?';
  EXPECT_EQ(WidenCharUtf8(out, "a\xED\xA0\x80", npos), 0u);
  EXPECT_EQ(WidenCharUtf8(out, "a\xE2\x82", npos), 0u);
  EXPECT_EQ(WidenCharUtf8(out, "a\xE2\x82\xAC", npos), 1u);
}

TEST(Utf8, WholeTextsRoundTripOrKeepWhatWentBefore) {
  const std::pair<std::string, std::u16string> pairs[] = {
      {"\xC3\xA9", u"\u00E9"},
      {"\xE2\x82\xAC", u"\u20AC"},
      {"\xF0\x9F\x98\x80", u"\xD83D\xDE00"},
      {"\xED\x9F\xBF", u"\uD7FF"},
      {"\xF4\x8F\xBF\xBF", u"\xDBFF\xDFFF"},
      {"\357\273\277a", u"\uFEFFa"},
      {"\xEF\xBF\xBF", u"\uFFFF"},
      {std::string("a\0b", 3), std::u16string(u"a\0b", 3)}};
  std::u16string wide = u"old";
  std::string narrow = "old";
  for (const auto& [bytes, units] : pairs) {
    EXPECT_EQ(WidenMessage(bytes, wide), "");
    EXPECT_EQ(wide, units);
    EXPECT_EQ(NarrowMessage(units, narrow), "");
    EXPECT_EQ(narrow, bytes);
  }
  TextWidenUtf8("\0\xFF", npos, wide);
  TextNarrowUtf8(u"\0\xD800", npos, narrow);
  EXPECT_TRUE(wide.empty() && narrow.empty());

  EXPECT_EQ(WidenMessage("x\xF0\x9F\x98\x80\xED\xA0\x80", wide), kWidenInvalid);
  EXPECT_EQ(wide, u"x\xD83D\xDE00");
  EXPECT_EQ(NarrowMessage(u"\u00E9\xDC00", narrow), kNarrowInvalid);
  EXPECT_EQ(narrow, "\xC3\xA9");

  // Long random texts reach the vector paths, and now and then pass the 16 KiB pieces of the
  // narrowing; a lone surrogate put in then stops the narrowing at its exact place.
  std::mt19937 random(99);
  const std::uint32_t starts[] = {0x20, 0xA0, 0x400, 0x4E00, 0x1F600, 0xE000};
  const std::uint32_t spans[] = {0x5F, 0x60, 0x100, 0x200, 0x50, 0x1000};
  for (int round = 0; round < 200; ++round) {
    std::string bytes;
    std::u16string units;
    for (std::size_t i = round % 50 == 0 ? 12000 : random() % 3000; i > 0; --i) {
      const std::size_t kind = random() % (1 + round % 6);
      Append(bytes, units, starts[kind] + random() % spans[kind]);
    }
    TextWidenUtf8(bytes.data(), static_cast<unsigned int>(bytes.size()), wide);
    ASSERT_EQ(wide, units) << round;
    TextNarrowUtf8(units.data(), static_cast<unsigned int>(units.size()), narrow);
    ASSERT_EQ(narrow, bytes) << round;
    const std::size_t at = units.empty() ? 0 : random() % units.size();
    if (units.empty() || (units[at] >= 0xD800 && units[at] <= 0xDFFF)) continue;
    units[at] = 0xDC00;
    EXPECT_EQ(NarrowMessage(units, narrow), kNarrowInvalid);
    TextWidenUtf8(narrow.data(), static_cast<unsigned int>(narrow.size()), wide);
    EXPECT_EQ(wide, units.substr(0, at)) << round;
  }
}

TEST(Utf8, WidenCharLooksAhead) {
  char16_t out = u'?';
  EXPECT_EQ(WidenCharUtf8(out, "\xC3\xA9", npos), 2u);
  EXPECT_EQ(out, u'\u00E9');
  EXPECT_EQ(WidenCharUtf8(out, "\303\251a", npos), 2u);
  EXPECT_EQ(WidenCharUtf8(out, "\0x", 2), 1u);
  // A bad sequence right behind the first character: 0, but `out` took the character.
  EXPECT_EQ(WidenCharUtf8(out, "a\xC3", npos), 0u);
  EXPECT_EQ(out, u'a');
  // Beyond U+FFFF, or nothing at all: 0 and `out` unchanged.
  for (const char* text : {"\xF0\x9F\x98\x80", "", "\xC3"})
    EXPECT_EQ(WidenCharUtf8(out, text, npos), 0u);
  EXPECT_EQ(WidenCharUtf8(out, "zz", 0), 0u);
  EXPECT_EQ(out, u'a');
}

TEST(Utf8, DefaultCharsetFollowsTheLocale) {
  {
    LocaleScope scope("C");
    EXPECT_FALSE(IsDefaultCharsetUtf8());
  }
  REQUIRE_LOCALE(scope, "en_US.UTF-8");
  EXPECT_TRUE(IsDefaultCharsetUtf8());
}
