#include <tessera/text/StringTokenizer.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "text/LocaleScope.h"

using Tessera::BasicStringTokenizer;
using Tessera::DelimitModeAnyOf;
using Tessera::DelimitModeNoneOf;
using Tessera::DelimitModeString;
using Tessera::npos;

namespace {

using Tokenizer = BasicStringTokenizer<char>;
using WideTokenizer = BasicStringTokenizer<char16_t>;

template <class C>
std::vector<std::basic_string<C>> AllTokens(BasicStringTokenizer<C>& tokenizer) {
  std::vector<std::basic_string<C>> tokens;
  const C* token = nullptr;
  unsigned int length = 0;
  while (tokenizer.Next(token, length)) tokens.emplace_back(token, length);
  return tokens;
}

using Strings = std::vector<std::string>;

// Matches "<>" as a delimiter, and "<" alone when it is the last character.
class AngleDelimiter : public Tokenizer::Delimiter {
 public:
  unsigned int Match(const char* text, unsigned int left) override {
    ++calls;
    if (text[0] != '<') return 0;
    if (left == 1) return 1;
    return text[1] == '>' ? 2 : 0;
  }
  int calls = 0;
};

}  // namespace

TEST(StringTokenizer, DefaultIsEmptyAndDone) {
  Tokenizer tokenizer;
  const char* token = "untouched";
  unsigned int length = 7;
  EXPECT_FALSE(tokenizer.Next(token, length));
  EXPECT_STREQ(token, "untouched");
  EXPECT_EQ(length, 7u);
  EXPECT_EQ(tokenizer.GetPosition(), 0u);
  EXPECT_EQ(tokenizer.GetTextStart(), nullptr);
  EXPECT_EQ(tokenizer.GetLeftLength(), 0u);
  EXPECT_TRUE(tokenizer.IsDone());
  EXPECT_FALSE(tokenizer.Skip());
}

TEST(StringTokenizer, AnyOfSkipsRunsAndLeavesTrailingDelimiters) {
  Tokenizer tokenizer(",,a,,b,", ",", DelimitModeAnyOf);
  const char* token;
  unsigned int length;
  ASSERT_TRUE(tokenizer.Next(token, length));
  EXPECT_EQ(std::string(token, length), "a");
  EXPECT_EQ(tokenizer.GetPosition(), 3u);
  ASSERT_TRUE(tokenizer.Next(token, length));
  EXPECT_EQ(std::string(token, length), "b");
  EXPECT_FALSE(tokenizer.Next(token, length));
  EXPECT_EQ(std::string(token, length), "b");
  EXPECT_EQ(tokenizer.GetPosition(), 6u);
  EXPECT_FALSE(tokenizer.IsDone());
  EXPECT_EQ(tokenizer.GetLeftLength(), 1u);
  tokenizer.SkipDelimiters();
  EXPECT_TRUE(tokenizer.IsDone());

  Tokenizer onlyDelimiters(",,,", ",", DelimitModeAnyOf);
  EXPECT_FALSE(onlyDelimiters.Skip());
  EXPECT_EQ(onlyDelimiters.GetPosition(), 0u);

  Tokenizer empty("", ",", DelimitModeAnyOf);
  EXPECT_FALSE(empty.Skip());
  EXPECT_TRUE(empty.IsDone());

  // A duplicate in the set changes nothing.
  Tokenizer twice("a;b,c", ";;,", DelimitModeAnyOf);
  EXPECT_EQ(AllTokens(twice), (Strings{"a", "b", "c"}));
}

TEST(StringTokenizer, StringModeMatchesTheWholeDelimiter) {
  Tokenizer tokenizer("a--b-c", "--", DelimitModeString);
  EXPECT_EQ(AllTokens(tokenizer), (Strings{"a", "b-c"}));
  Tokenizer shortTail("a-", "--", DelimitModeString);
  EXPECT_EQ(AllTokens(shortTail), (Strings{"a-"}));
  // The first place where the whole delimiter stands ends the token; runs are skipped whole.
  Tokenizer overlap("x---y----z", "--", DelimitModeString);
  EXPECT_EQ(AllTokens(overlap), (Strings{"x", "-y", "z"}));
  // Case counts.
  Tokenizer cased("aXYbxyc", "xy", DelimitModeString);
  EXPECT_EQ(AllTokens(cased), (Strings{"aXYb", "c"}));
}

TEST(StringTokenizer, NoneOfTakesRunsOfTheSet) {
  Tokenizer tokenizer("ab12cd", "0123456789", DelimitModeNoneOf);
  EXPECT_EQ(AllTokens(tokenizer), (Strings{"12"}));
  Tokenizer several("1a22bb333", "0123456789", DelimitModeNoneOf);
  EXPECT_EQ(AllTokens(several), (Strings{"1", "22", "333"}));
}

TEST(StringTokenizer, EmptyDelimiterMeansWhiteSpace) {
  const char* text = " one\ttwo \n three ";
  Tokenizer anyOf(text, nullptr, DelimitModeAnyOf);
  EXPECT_EQ(AllTokens(anyOf), (Strings{"one", "two", "three"}));
  Tokenizer noneOf(text, "", DelimitModeNoneOf);
  EXPECT_EQ(AllTokens(noneOf), (Strings{" ", "\t", " \n ", " "}));
  // Mode 0 with no text splits at single white-space characters, as mode 1 does.
  Tokenizer string(text, "", DelimitModeString);
  EXPECT_EQ(AllTokens(string), (Strings{"one", "two", "three"}));
}

TEST(StringTokenizer, NarrowWhiteSpaceIgnoresNulAndHighBytes) {
  // 0xA0 is a no-break space in Latin-1 locales, but a narrow byte with the high bit set is
  // never white space; nor is a NUL inside an explicit length.
  const char text[] =
      "a\xA0"
      "b\0c d";
  Tokenizer tokenizer(text, sizeof text - 1, nullptr, DelimitModeAnyOf);
  EXPECT_EQ(AllTokens(tokenizer), (Strings{std::string("a\xA0"
                                                       "b\0c",
                                                       5),
                                           "d"}));
}

TEST(StringTokenizer, WideWhiteSpaceFollowsTheLocale) {
  const char16_t text[] = u"a\u3000b c";
  {
    WideTokenizer tokenizer(text, nullptr, DelimitModeAnyOf);
    EXPECT_EQ(AllTokens(tokenizer), (std::vector<std::u16string>{u"a\u3000b", u"c"}));
  }
  REQUIRE_LOCALE(scope, "en_US.UTF-8");
  WideTokenizer tokenizer(text, nullptr, DelimitModeAnyOf);
  EXPECT_EQ(AllTokens(tokenizer), (std::vector<std::u16string>{u"a", u"b", u"c"}));
}

TEST(StringTokenizer, SettingsChangedByNextStay) {
  Tokenizer tokenizer("a,b;c", ",", DelimitModeAnyOf);
  const char* token;
  unsigned int length;
  ASSERT_TRUE(tokenizer.Next(token, length));
  // Everything left is a delimiter under the new set: false, the place is kept, the set too.
  EXPECT_FALSE(tokenizer.Next(token, length, ",b;c"));
  EXPECT_EQ(tokenizer.GetPosition(), 1u);
  EXPECT_EQ(tokenizer.GetLeftLength(), 4u);
  EXPECT_FALSE(tokenizer.Skip());
  ASSERT_TRUE(tokenizer.Next(token, length, ";", DelimitModeAnyOf));
  EXPECT_EQ(std::string(token, length), ",b");
  ASSERT_TRUE(tokenizer.Next(token, length, DelimitModeNoneOf));
  EXPECT_EQ(std::string(token, length), ";");
  ASSERT_TRUE(tokenizer.Next(token, length, DelimitModeAnyOf));
  EXPECT_EQ(std::string(token, length), "c");
  EXPECT_TRUE(tokenizer.IsDone());

  // SkipDelimitersAndSet skips under the old set before it takes the new one.
  Tokenizer skipping(",,a-b", ",", DelimitModeAnyOf);
  skipping.SkipDelimitersAndSet("-");
  EXPECT_EQ(skipping.GetPosition(), 2u);
  EXPECT_EQ(AllTokens(skipping), (Strings{"a", "b"}));
}

TEST(StringTokenizer, DelimiterObjectRules) {
  AngleDelimiter angle;
  Tokenizer tokenizer("a<>b<c<", ",", DelimitModeAnyOf);
  tokenizer.SetDelimiter(angle);
  EXPECT_EQ(AllTokens(tokenizer), (Strings{"a", "b<c"}));
  EXPECT_EQ(tokenizer.GetPosition(), 6u);
  tokenizer.SkipDelimiters();
  EXPECT_TRUE(tokenizer.IsDone());
  EXPECT_GT(angle.calls, 0);

  // A mode set beside the object has no effect while it is set, but stays for later.
  tokenizer.Reset("x<>y z", ",", DelimitModeAnyOf);
  tokenizer.SetDelimiter(angle);
  const char* token;
  unsigned int length;
  ASSERT_TRUE(tokenizer.Next(token, length, DelimitModeNoneOf));
  EXPECT_EQ(std::string(token, length), "x");
  // Setting a text ends the object's rule; the object had emptied the text, so null leaves
  // white space under the mode that stayed.
  tokenizer.SetDelimiter(static_cast<const char*>(nullptr));
  ASSERT_TRUE(tokenizer.Next(token, length));
  EXPECT_EQ(std::string(token, length), " ");
}

TEST(StringTokenizer, PositionRewindAndRebase) {
  const char* text = "alpha beta gamma";
  Tokenizer tokenizer(text, 16, " ", DelimitModeAnyOf);
  tokenizer.SetPosition(100);
  EXPECT_EQ(tokenizer.GetPosition(), 16u);
  EXPECT_TRUE(tokenizer.IsDone());
  tokenizer.SetPosition(6);
  EXPECT_EQ(tokenizer.GetTextPosition(), text + 6);
  EXPECT_EQ(AllTokens(tokenizer), (Strings{"beta", "gamma"}));
  tokenizer.Rewind();
  EXPECT_EQ(tokenizer.GetPosition(), 0u);

  tokenizer.SetPosition(12);
  tokenizer.Rebase("short", npos);
  EXPECT_EQ(tokenizer.GetTextLength(), 5u);
  EXPECT_EQ(tokenizer.GetPosition(), 5u);

  // A buffer that lost its first 6 characters: the place stays on the same character.
  tokenizer.Reset(text, npos, " ", DelimitModeAnyOf);
  tokenizer.SetPosition(11);
  tokenizer.Rebase(text + 6, npos, 6);
  EXPECT_EQ(tokenizer.GetPosition(), 5u);
  EXPECT_EQ(AllTokens(tokenizer), (Strings{"gamma"}));
  tokenizer.SetPosition(3);
  tokenizer.Rebase(text, npos, 4);
  EXPECT_EQ(tokenizer.GetPosition(), 0u);
  // Delimiter settings survive a rebase.
  EXPECT_EQ(AllTokens(tokenizer), (Strings{"alpha", "beta", "gamma"}));
}

TEST(StringTokenizer, CopiesGoOnIndependently) {
  Tokenizer source("1 2 3", " ", DelimitModeAnyOf);
  ASSERT_TRUE(source.Skip());
  Tokenizer copy(source);
  EXPECT_EQ(AllTokens(copy), (Strings{"2", "3"}));
  EXPECT_EQ(source.GetPosition(), 1u);
  EXPECT_EQ(copy.GetTextStart(), source.GetTextStart());
  Tokenizer assigned;
  assigned = source;
  source.SetDelimiter("2");
  EXPECT_EQ(AllTokens(assigned), (Strings{"2", "3"}));
}

TEST(StringTokenizer, WideModes) {
  WideTokenizer tokenizer(u"\u00e9t\u00e9--hiver--\u6625", 13, u"--", DelimitModeString);
  EXPECT_EQ(AllTokens(tokenizer),
            (std::vector<std::u16string>{u"\u00e9t\u00e9", u"hiver", u"\u6625"}));
  WideTokenizer anyOf(u"a\u00b7b\u00b7\u00b7c", u"\u00b7", DelimitModeAnyOf);
  EXPECT_EQ(AllTokens(anyOf), (std::vector<std::u16string>{u"a", u"b", u"c"}));
  WideTokenizer noneOf(u"x\uff11\uff12y", u"\uff11\uff12", DelimitModeNoneOf);
  EXPECT_EQ(AllTokens(noneOf), (std::vector<std::u16string>{u"\uff11\uff12"}));
}
