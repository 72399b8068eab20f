#include <tessera/text/StringTokenizer.h>

#include <gtest/gtest.h>

#include <string>
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

template <class C>
std::vector<std::basic_string<C>> Split(const std::basic_string<C>& text, const C* delimiter,
                                        DelimitMode mode) {
  BasicStringTokenizer<C> tokenizer(text.data(), static_cast<unsigned int>(text.size()), delimiter,
                                    mode);
  return Rest(tokenizer);
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

TEST(StringTokenizer, ModesSplitAsTheirRulesSay) {
  EXPECT_EQ(Split<char>(",,a,,b,", ",", DelimitModeAnyOf), (Strings{"a", "b"}));
  EXPECT_EQ(Split<char>("a--b-c", "--", DelimitModeString), (Strings{"a", "b-c"}));
  EXPECT_EQ(Split<char>("a-", "--", DelimitModeString), (Strings{"a-"}));
  EXPECT_EQ(Split<char>("ab12cd", "0123456789", DelimitModeNoneOf), (Strings{"12"}));
  EXPECT_EQ(Split<char16_t>(u"\u00e9t\u00e9--\u6625", u"--", DelimitModeString),
            (WideStrings{u"\u00e9t\u00e9", u"\u6625"}));
}

TEST(StringTokenizer, EmptyDelimiterMeansWhiteSpace) {
  const std::string text = " one\ttwo \n three ";
  EXPECT_EQ(Split(text, static_cast<const char*>(nullptr), DelimitModeAnyOf),
            (Strings{"one", "two", "three"}));
  EXPECT_EQ(Split(text, "", DelimitModeString), (Strings{"one", "two", "three"}));
  EXPECT_EQ(Split(text, "", DelimitModeNoneOf), (Strings{" ", "\t", " \n ", " "}));
  // A narrow byte with the high bit set is never white space, nor is a NUL.
  EXPECT_EQ(Split(std::string("a\240b\0c d", 7), "", DelimitModeAnyOf),
            (Strings{std::string("a\240b\0c", 5), "d"}));
  const std::u16string wide = u"a\u3000b c";
  EXPECT_EQ(Split(wide, u"", DelimitModeAnyOf), (WideStrings{u"a\u3000b", u"c"}));
  REQUIRE_LOCALE(scope, "en_US.UTF-8");
  EXPECT_EQ(Split(wide, u"", DelimitModeAnyOf), (WideStrings{u"a", u"b", u"c"}));
}

TEST(StringTokenizer, NextLeavesTrailingDelimitersAndKeepsItsSettings) {
  Tokenizer empty;
  const char* token = "old";
  unsigned int length = 3;
  EXPECT_FALSE(empty.Next(token, length));
  EXPECT_TRUE(empty.IsDone() && empty.GetTextStart() == nullptr && length == 3);

  Tokenizer tokenizer(",,a,b;c,", npos, ",", DelimitModeAnyOf);
  EXPECT_EQ(NextToken(tokenizer), "a");
  // Only delimiters left under the new set: false, the place kept, the set kept.
  EXPECT_EQ(NextToken(tokenizer, ",b;c"), "-");
  EXPECT_EQ(tokenizer.GetPosition(), 3u);
  EXPECT_FALSE(tokenizer.Skip());
  EXPECT_EQ(NextToken(tokenizer, ";", DelimitModeAnyOf), ",b");
  EXPECT_EQ(NextToken(tokenizer, DelimitModeNoneOf), ";");
  EXPECT_EQ(NextToken(tokenizer, ",", DelimitModeAnyOf), "c");
  EXPECT_FALSE(tokenizer.Skip());
  EXPECT_TRUE(tokenizer.GetLeftLength() == 1 && !tokenizer.IsDone());
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
