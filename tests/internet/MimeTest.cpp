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
  BasicStringTokenizer<char> tokenizer(text.data(), static_cast<unsigned int>(text.size()), "",
                                       DelimitModeAnyOf);
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

std::string Param(const std::string& value) {
  std::ostringstream out;
  MimeOutputParam(out, "name", npos, value.data(), static_cast<unsigned int>(value.size()));
  return out.str();
}

TEST(Mime, TokensSpecialsAndQuotableTexts) {
  std::string specials;
  for (int c = 0; c < 256; ++c)
    if (IsMimeTSpecial(static_cast<char>(c))) specials += static_cast<char>(c);
  EXPECT_EQ(specials, "\"(),/:;<=>?@[\\]");
  EXPECT_TRUE(IsMimeToken("a-b_c.d", npos) && IsMimeToken("\x7F!#", npos) && IsMimeToken("ab c", 2));
  for (const char* bad : {"", "a b", "a\x80", "a\tb", "a=b", "\"q\""}) EXPECT_FALSE(IsMimeToken(bad, npos)) << bad;
  EXPECT_TRUE(IsMimeQuotable("", 0) && IsMimeQuotable("a \"\t", npos) && IsMimeQuotable("a\rb", 1));
  EXPECT_FALSE(IsMimeQuotable("a\rb", npos) || IsMimeQuotable("\n", npos));
}

TEST(Mime, ParametersAreWrittenAsTokensOrQuotedStrings) {
  EXPECT_EQ(Param("plain"), "name=plain");
  EXPECT_EQ(Param("a b"), "name=\"a b\"");
  EXPECT_EQ(Param(""), "name=\"\"");
  EXPECT_EQ(Param("a\"b\\c"), "name=\"a\\\"b\\\\c\"");
  EXPECT_EQ(Param("\\\"x\r\n"), "name=\"\\\\\\\"x\r\n\"");
  EXPECT_EQ(Param(std::string("a\0b", 3)), std::string("name=\"a\0b\"", 10));
  std::ostringstream out;
  MimeOutputParamValue(out, "v;1", npos);
  EXPECT_EQ(out.str(), "\"v;1\"");
}

TEST(Mime, ParameterReadingStopsAtTheFirstBrokenPair) {
  const std::vector<std::pair<const char*, const char*>> cases = {
      {"", "@0"},
      {"a=", "@2"},
      {"a=b;c", "[a=b]@5"},
      {"a=b; c=\"d", "[a=b]@7"},
      {"a=;b=c", "[a=b=c]@6"},
      {"a==b", "[a=b]@4"},
      {"a =b", "[a =b]@4"},
      {"x=1;x=2", "[x=2]@7"},
      {"x=1;X=2", "[x=1][X=2]@7"},
      {"k=\"a\\\"b\\\\\"; n=1", "[k=a\"b\\][n=1]@15"},
      {"k=\"a\\", "@2"},
      {"k=\"\" \t;;m=v w=\"x y\"", "[k=][m=v][w=x y]@19"},
      {"a=b;==", "[a=b]@4"},
      {"a=  ", "@2"},
      {"=a=b", "[a=b]@4"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(Params(text), expected) << text;

  BasicStringTokenizer<char> tokenizer("a b=c", "", DelimitModeAnyOf);
  std::string name = "kept";
  EXPECT_TRUE(MimeParseParamName(tokenizer, name));
  EXPECT_EQ(name + "@" + std::to_string(tokenizer.GetPosition()), "a b@3");
  EXPECT_TRUE(MimeParseParamName(tokenizer, name));
  EXPECT_FALSE(MimeParseParamName(tokenizer, name));
  EXPECT_EQ(name, "c");
}

TEST(Mime, MediaTypesWithQuotedAndBrokenParameters) {
  const std::vector<std::pair<const char*, const char*>> cases = {
      {"text/plain; charset=\"us-ascii\"; format=flowed", "text|plain|[charset=us-ascii][format=flowed]"},
      {"text/plain", "text|plain|"},
      {"multipart/mixed;boundary=\"a\\\"b\"", "multipart|mixed|[boundary=a\"b]"},
      {" Text//HTML \t; ;a=1;b", " Text|HTML|[a=1]"},
      {"a/b/c d=e", "a|b/c|[d=e]"},
      {"//x/y", "x|y|"},
      {"a/b; c=\"unclosed", "a|b|"},
      {"text", "false ts[old=1]"},
      {"text/", "false ts[old=1]"},
      {"/plain", "false ts[old=1]"},
      {"", "false ts[old=1]"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(MediaType(text), expected) << text;
}

}  // namespace
}  // namespace Tessera
