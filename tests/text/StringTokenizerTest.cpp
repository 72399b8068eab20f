#include <tessera/text/StringTokenizer.h>

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "text/LocaleScope.h"

using namespace Tessera;

namespace {

using Tokenizer = BasicStringTokenizer<char>;
using Strings = std::vector<std::string>;
using WideStrings = std::vector<std::u16string>;

template <class C>
std::vector<std::basic_string<C>> Rest(BasicStringTokenizer<C>& tokenizer) {
  std::vector<std::basic_string<C>> tokens;
  const C* token;
  unsigned int length;
  while (tokenizer.Next(token, length)) tokens.emplace_back(token, length);
  return tokens;
}

// Next's token, or "-" when it finds none; `args` go to Next behind the token and length.
template <class... Args>
std::string NextToken(Tokenizer& tokenizer, Args... args) {
  const char* token = nullptr;
  unsigned int length = 0;
  return tokenizer.Next(token, length, args...) ? std::string(token, length) : "-";
}

// "<>" is a delimiter, and so is "<" as the last character.
class Angle : public Tokenizer::Delimiter {
 public:
  unsigned int Match(const char* text, unsigned int left) override {
    if (text[0] != '<') return 0;
    return left == 1 ? 1 : text[1] == '>' ? 2 : 0;
  }
};

}  // namespace

// The three modes and white space over any text, narrow and wide, in the "C" locale are the
// fuzz target's (StringTokenizerFuzz) against a reference splitter; here what needs another
// locale or a call sequence.
TEST(StringTokenizer, WideWhiteSpaceFollowsTheLocale) {
  REQUIRE_LOCALE(scope, "C.UTF-8");
  BasicStringTokenizer<char16_t> any(u"a\u3000b c", npos, u"", DelimitModeAnyOf), none(any);
  EXPECT_EQ(Rest(any), (WideStrings{u"a", u"b", u"c"}));
  none.SetDelimiter(u"", DelimitModeNoneOf);
  EXPECT_EQ(Rest(none), (WideStrings{u"\u3000", u" "}));
}

TEST(StringTokenizer, NextLeavesTrailingDelimitersAndKeepsItsSettings) {
  Tokenizer empty;
  const char* token = "old";
  unsigned int length = 3;
  EXPECT_FALSE(empty.Next(token, length));
  EXPECT_EQ(std::make_tuple(empty.IsDone(), empty.GetTextStart(), length), std::make_tuple(true, nullptr, 3u));

  Tokenizer tokenizer(",,a,b;c,", npos, ",", DelimitModeAnyOf);
  EXPECT_EQ(NextToken(tokenizer), "a");
  // Only delimiters left under the new set: false, the place kept, the set kept.
  EXPECT_EQ(NextToken(tokenizer, ",b;c"), "-");
  EXPECT_EQ(tokenizer.GetPosition(), 3u);
  EXPECT_FALSE(tokenizer.Skip());
  EXPECT_EQ(NextToken(tokenizer, ";", DelimitModeAnyOf), ",b");
  EXPECT_EQ(NextToken(tokenizer, DelimitModeNoneOf), ";");
  EXPECT_EQ(NextToken(tokenizer, ",", DelimitModeAnyOf), "c");
  EXPECT_EQ(std::make_pair(tokenizer.GetLeftLength(), tokenizer.IsDone()), std::make_pair(1u, false));
  tokenizer.SkipDelimiters();
  EXPECT_TRUE(tokenizer.IsDone());

  Tokenizer skipping(",,a-b", ",", DelimitModeAnyOf);
  skipping.SkipDelimitersAndSet("-");
  EXPECT_EQ(skipping.GetPosition(), 2u);
  EXPECT_EQ(Rest(skipping), (Strings{"a", "b"}));
}

TEST(StringTokenizer, DelimiterObjectOverridesTextAndMode) {
  Angle angle;
  Tokenizer tokenizer("a<>b<c<", ",", DelimitModeAnyOf);
  tokenizer.SetDelimiter(angle);
  EXPECT_EQ(Rest(tokenizer), (Strings{"a", "b<c"}));
  EXPECT_EQ(tokenizer.GetPosition(), 6u);

  tokenizer.Reset("x<>y z", ",", DelimitModeAnyOf);
  tokenizer.SetDelimiter(angle);
  EXPECT_EQ(NextToken(tokenizer, DelimitModeNoneOf), "x");
  // The object emptied the text, so null leaves white space under the mode that stayed.
  tokenizer.SetDelimiter(static_cast<const char*>(nullptr));
  EXPECT_EQ(NextToken(tokenizer), " ");
}

TEST(StringTokenizer, PositionRebaseAndCopies) {
  const char* text = "alpha beta gamma";
  Tokenizer tokenizer(text, " ", DelimitModeAnyOf);
  tokenizer.SetPosition(100);
  EXPECT_EQ(tokenizer.GetPosition(), 16u);
  tokenizer.SetPosition(6);
  Tokenizer copy(tokenizer);
  EXPECT_EQ(Rest(tokenizer), (Strings{"beta", "gamma"}));
  EXPECT_EQ(Rest(copy), (Strings{"beta", "gamma"}));
  tokenizer.Rebase("short", npos);
  EXPECT_EQ(tokenizer.GetPosition(), 5u);
  // A buffer that lost 6 characters at its front: the place stays on the same character.
  tokenizer.Reset(text, npos, " ", DelimitModeAnyOf);
  tokenizer.SetPosition(11);
  tokenizer.Rebase(text + 6, npos, 6);
  EXPECT_EQ(tokenizer.GetPosition(), 5u);
  EXPECT_EQ(Rest(tokenizer), (Strings{"gamma"}));
  // An offset beyond the place starts the new text from its beginning.
  tokenizer.SetPosition(3);
  tokenizer.Rebase(text, npos, 4);
  EXPECT_EQ(Rest(tokenizer), (Strings{"alpha", "beta", "gamma"}));
}
