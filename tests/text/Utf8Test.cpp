#include <tessera/text/Utf8.h>

#include <gtest/gtest.h>

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
}

TEST(Utf8, WholeTextsRoundTripOrKeepWhatWentBefore) {
  // clang-format off
  const std::pair<std::string, std::u16string> pairs[] = {
      {"\xC3\xA9", u"\u00E9"}, {"\xE2\x82\xAC", u"\u20AC"}, {"\xF0\x9F\x98\x80", u"\xD83D\xDE00"},
      {"\xED\x9F\xBF", u"\uD7FF"}, {"\xF4\x8F\xBF\xBF", u"\xDBFF\xDFFF"}, {"\xEF\xBF\xBF", u"\uFFFF"},
      {"\357\273\277a", u"\uFEFFa"}, {std::string("a\0b", 3), std::u16string(u"a\0b", 3)}};
  // clang-format on
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


  // A long text reaches the vector paths, and the narrowing's 16 KiB pieces end inside its
  // 382nd U+00E9 (43 bytes a round); a lone surrogate behind it keeps the whole text before it.
  std::string bytes;
  std::u16string units;
  for (int i = 0; i < 700; ++i) {
    bytes +=
        "\xC3\xA9\xCE\xB2\xE2\x82\xAC\xE4\xB8\x96\xF0\x9F\x98\x80"
        "and ASCII runs of some length";
    units += u"\u00E9\u03B2\u20AC\u4E16\U0001F600and ASCII runs of some length";
  }
  EXPECT_EQ(WidenMessage(bytes, wide), "");
  EXPECT_EQ(wide, units);
  EXPECT_EQ(NarrowMessage(units, narrow), "");
  EXPECT_EQ(narrow, bytes);
  EXPECT_EQ(NarrowMessage(units + u"\xDC00tail", narrow), kNarrowInvalid);
  EXPECT_EQ(narrow, bytes);
}

TEST(Utf8, WidenCharLooksAhead) {
  char16_t out = u'?';
  EXPECT_EQ(WidenCharUtf8(out, "\303\251a", npos), 2u);
  EXPECT_EQ(out, u'\u00E9');
  EXPECT_EQ(WidenCharUtf8(out, "\0x", 2), 1u);
  // A bad sequence right behind the first character: 0, but `out` took the character. The
  // sequence is judged whole before the room is.
  for (const char* text : {"a\xC3", "a\xE2\x82", "a\xED\xA0\x80"})
    EXPECT_EQ(WidenCharUtf8(out, text, npos), 0u);
  EXPECT_EQ(out, u'a');
  // Beyond U+FFFF, or nothing at all: 0 and `out` unchanged.
  for (const char* text : {"\xF0\x9F\x98\x80", "", "\xC3"})
    EXPECT_EQ(WidenCharUtf8(out, text, npos), 0u);
  EXPECT_EQ(WidenCharUtf8(out, "zz", 0), 0u);
  EXPECT_EQ(out, u'a');
}

TEST(Utf8, DefaultCharsetFollowsTheLocale) {
  EXPECT_FALSE(IsDefaultCharsetUtf8());  // every test leaves the "C" locale behind
  REQUIRE_LOCALE(scope, "en_US.UTF-8");
  EXPECT_TRUE(IsDefaultCharsetUtf8());
}
