#include <tessera/internet/Mime.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace Tessera {
namespace {

std::string Pairs(const Properties& p) {
  std::string text;
  for (unsigned int i = 0; i < p.GetCount(); ++i) text += "[" + p.GetKey(i) + "=" + p.GetValue(i) + "]";
  return text;
}

// The pairs read from `text`, then "@" and where the reading stopped.
std::string Params(const std::string& text) {
  BasicStringTokenizer<char> tokenizer(text.data(), static_cast<unsigned int>(text.size()), "", DelimitModeAnyOf);
  Properties p(true);
  p.Set("old", "1");
  EXPECT_TRUE(MimeParseProperties(tokenizer, p));
  EXPECT_FALSE(p.IsCaseless());
  return Pairs(p) + "@" + std::to_string(tokenizer.GetPosition());
}

std::string MediaType(const char* text) {
  std::string type = "t", subtype = "s";
  Properties p;
  p.Set("old", "1");
  if (!MimeParseMediaType(text, npos, type, subtype, p)) return "false " + type + subtype + Pairs(p);
  return type + "|" + subtype + "|" + Pairs(p);
}

TEST(Mime, TokensSpecialsAndQuotableTexts) {
  std::string specials;
  for (int c = 0; c < 256; ++c)
    if (IsMimeTSpecial(static_cast<char>(c))) specials += static_cast<char>(c);
  EXPECT_EQ(specials, "\"(),/:;<=>?@[\\]");
  for (auto token : {std::make_pair("a-b_c.d", npos), std::make_pair("\x7F!#", npos), std::make_pair("ab c", 2u)})
    EXPECT_TRUE(IsMimeToken(token.first, token.second)) << token.first;
  for (const char* bad : {"", "a b", "a\x80", "a\tb", "a=b"}) EXPECT_FALSE(IsMimeToken(bad, npos)) << bad;
  for (auto text : {std::make_pair("", 0u), std::make_pair("a \"\t", npos), std::make_pair("a\rb", 1u)})
    EXPECT_TRUE(IsMimeQuotable(text.first, text.second)) << text.first;
  EXPECT_FALSE(IsMimeQuotable("a\rb", npos));
  EXPECT_FALSE(IsMimeQuotable("\n", npos));
}

TEST(Mime, ParametersAreWrittenAsTokensOrQuotedStrings) {
  std::ostringstream out;
  for (const std::string value : {"plain", "a b", "", "a\"b\\c", "\r\n;"}) {
    MimeOutputParam(out, "n", npos, value.data(), static_cast<unsigned int>(value.size()));
    out << ' ';
  }
  EXPECT_EQ(out.str(), "n=plain n=\"a b\" n=\"\" n=\"a\\\"b\\\\c\" n=\"\r\n;\" ");
}

// The fuzz target holds both readers to a step-by-step reference; these pin a few quirks.
TEST(Mime, ReadingStopsAtTheFirstBrokenPairAndMediaTypesKeepTheirOutputsOnFailure) {
  const std::vector<std::pair<const char*, const char*>> cases = {
      {"a=  ", "@2"}, {"a=b; c=\"d", "[a=b]@7"}, {"=a==b", "[a=b]@5"},
      {"k=\"a\\\"b\\\\\" \t;;m=v w=\"\"", "[k=a\"b\\][m=v][w=]@22"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(Params(text), expected) << text;
  EXPECT_EQ(MediaType(" Text//HTML \t; ;a=1;b"), " Text|HTML|[a=1]");
  EXPECT_EQ(MediaType("a/b/c d=e"), "a|b/c|[d=e]");
  for (const char* bad : {"text", "text/", "/plain", "", "//"}) EXPECT_EQ(MediaType(bad), "false ts[old=1]") << bad;
}

}  // namespace
}  // namespace Tessera
