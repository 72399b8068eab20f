#include <tessera/internet/MimeDecode.h>

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>

using namespace Tessera;

namespace {

// The decoded text, with "!" behind it when the decoder gave false.
std::string QuotedPrintable(const std::string& text, bool underscoreAsSpace) {
  std::string out = "old";
  const bool good = MimeQuotedPrintableDecode(text.data(), static_cast<unsigned int>(text.size()),
                                              out, underscoreAsSpace);
  return good ? out : out + "!";
}

std::u16string Words(const std::string& text) {
  std::u16string out = u"untouched";
  if (!MimeDecodeEncodedWords(text.data(), static_cast<unsigned int>(text.size()), out))
    return u"false, " + out;
  return out;
}

}  // namespace

// The fuzz target holds decoding to a reference; these rows pin one case of each rule.
TEST(MimeDecode, QuotedPrintableReadsEscapesAsNumbers) {
  const std::tuple<std::string, bool, std::string> rows[] = {
      {"a=3db", false, "a=b"}, {"a_b", false, "a_b"}, {"_=5F_", true, " _ "},
      {"=+F=FF=00", false, std::string("\x0F\xFF\0", 3)}, {"ab=\r\ncd", false, "ab!"},
  };
  for (const auto& [text, underscoreAsSpace, result] : rows)
    EXPECT_EQ(QuotedPrintable(text, underscoreAsSpace), result) << text;
  std::string out;
  EXPECT_TRUE(MimeQuotedPrintableDecode("a=41\0=zz", npos, out, false));
  EXPECT_EQ(out, "aA");
}

TEST(MimeDecode, EncodedWordsDecodeThroughTheirCharsets) {
  const std::pair<std::string, std::u16string> rows[] = {
      {"=?utf-8?B?4oKs?=", u"\u20AC"}, {"=?iso-8859-1?Q?caf=E9_b?=", u"caf\u00E9 b"},
      {"Re: =?ISO-8859-1?Q?a?= =?UTF-8?B?w6k=?=!", u"Re: a \u00E9!"},
      {"=?iso-8859-1?Q?\?=x", u"x"},
      {"=?shift_jis?B?gqA=?==?windows-1252?Q?=80?=", u"\u3042\u20AC"},
      // A character cut by a word boundary is converted per word.
      {"=?utf-8?Q?=E2=82?==?utf-8?Q?=AC?=", u"\uFFFD\uFFFD"},
  };
  for (const auto& [text, result] : rows) EXPECT_EQ(Words(text), result) << text;
}

TEST(MimeDecode, WordsThatDontParseOrDecodeStayAsWritten) {
  for (const std::string text :
       {"=?iso-8859-1?q?abc?=", "=?no-such-charset?Q?abc?=", "=?iso-8859-1?Q?abc",
        "=??Q?abc?=", "=?utf-8*en?Q?a?=", "=?utf-8?B?4o K?=", "=?utf-8?Q?a=4?=",
        "=?utf-8?X?a?=", "=?utf-8?QQ?a?=", "=?utf-8?Q?=", "=?", "=?=?utf-8?Q?x"})
    EXPECT_EQ(Words(text), std::u16string(text.begin(), text.end())) << text;
  // The rest of a failed word is plain text, where a word may start again.
  EXPECT_EQ(Words("=?x?=?utf-8?Q?a?="), u"=?x?a");
}

TEST(MimeDecode, HighBytesInPlainTextFail) {
  EXPECT_EQ(Words("=?utf-8?B?4oKs?= \x80"), u"false, untouched");
  // In a word that doesn't decode, the bytes are plain text too.
  EXPECT_EQ(Words("=?no-such?Q?\xE9?="), u"false, untouched");
  EXPECT_EQ(Words("=?utf-8?Q?\xE9?="), u"\uFFFD");
}
