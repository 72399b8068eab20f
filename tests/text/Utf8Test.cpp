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

// Outcomes, output before the stop and round trips of any text are the fuzz target's (Utf8Fuzz),
// against a reference decoder; here the messages, the NUL rule and the long-text paths.
TEST(Utf8, BadSequencesThrowTheirMessages) {
  std::u16string wide;
  std::string narrow;
  const std::pair<const char*, const char*> widened[] = {
      {"\xE2\x82", kWidenIncomplete}, {"\xFF", kWidenIncomplete},  // 0xFF: kept for compatibility
      {"\xC0\x80", kWidenInvalid},    {"\xED\xA0\x80", kWidenInvalid}};
  for (const auto& [bytes, message] : widened)
    EXPECT_EQ(WidenMessage(std::string("ab") + bytes, wide), message) << bytes;
  EXPECT_EQ(NarrowMessage(u"ab\xD800", narrow), kNarrowIncomplete);
  EXPECT_EQ(NarrowMessage(u"ab\xD800\x0041", narrow), kNarrowInvalid);
}

TEST(Utf8, WholeTextsRoundTripOrKeepWhatWentBefore) {
  std::u16string wide = u"old";
  std::string narrow = "old";
  TextWidenUtf8("\0\xFF", npos, wide);
  TextNarrowUtf8(u"\0\xD800", npos, narrow);
  EXPECT_EQ(wide, u"");  // npos stops at the NUL
  EXPECT_EQ(narrow, "");

  // The narrowing's 16 KiB pieces, beyond the fuzz target's texts, end inside the 382nd U+00E9
  // (43 bytes a round); a lone surrogate behind it keeps the whole text before it.
  std::string bytes;
  std::u16string units;
  for (int i = 0; i < 700; ++i) {
    bytes += "\xC3\xA9\xCE\xB2\xE2\x82\xAC\xE4\xB8\x96\xF0\x9F\x98\x80" "and ASCII runs of some length";
    units += u"\u00E9\u03B2\u20AC\u4E16\U0001F600and ASCII runs of some length";
  }
  EXPECT_EQ(NarrowMessage(units, narrow), "");
  EXPECT_EQ(narrow, bytes);
  EXPECT_EQ(NarrowMessage(units + u"\xDC00tail", narrow), kNarrowInvalid);
  EXPECT_EQ(narrow, bytes);
}

TEST(Utf8, WidenCharLooksAhead) {
  char16_t out = u'?';
  EXPECT_EQ(WidenCharUtf8(out, "\303\251a", npos), 2u);
  EXPECT_EQ(out, u'\u00E9');
  EXPECT_EQ(WidenCharUtf8(out, "a\xC3", npos), 0u);  // judged with what follows; `out` took it
  EXPECT_EQ(out, u'a');
  EXPECT_EQ(WidenCharUtf8(out, "\xF0\x9F\x98\x80", npos), 0u);  // beyond U+FFFF: `out` unchanged
  EXPECT_EQ(out, u'a');
}

TEST(Utf8, DefaultCharsetFollowsTheLocale) {
  EXPECT_FALSE(IsDefaultCharsetUtf8());  // every test leaves the "C" locale behind
  REQUIRE_LOCALE(scope, "en_US.UTF-8");
  EXPECT_TRUE(IsDefaultCharsetUtf8());
}
