#include <tessera/internet/Uri.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace Tessera {
namespace {

// All components as "scheme|userInfo|host|port|path|query|fragment".
std::string Parts(const Uri& uri) {
  return uri.GetScheme() + "|" + uri.GetUserInfo() + "|" + uri.GetHost() + "|" +
         std::to_string(uri.GetPort()) + "|" + uri.GetPath() + "|" + uri.GetQuery() + "|" +
         uri.GetFragment();
}

std::string Decomposed(const std::string& text) {
  std::string s = "-", a = "-", p = "-", q = "-", f = "-";
  if (!UriDecompose(text.data(), static_cast<unsigned int>(text.size()), s, a, p, q, f))
    return "false " + s + a + p + q + f;
  return s + "|" + a + "|" + p + "|" + q + "|" + f;
}

std::string Authority(const char* text) {
  std::string u = "-", h = "-", p = "-";
  if (!UriAuthorityDecompose(text, npos, u, h, p)) return "false " + u + h + p;
  return u + "|" + h + "|" + p;
}

std::string Decoded(const std::string& text) {
  std::string result = "kept";
  return UriPercentDecode(text.data(), static_cast<unsigned int>(text.size()), result) ? result
                                                                                     : "false " + result;
}

std::string Formatted(const Uri& uri) {
  std::string text = "kept";
  return uri.Format(text) ? text : "false " + text;
}

TEST(UriText, CharacterClassesAndSchemes) {
  std::string reserved, unreserved;
  for (int c = 1; c < 256; ++c) {
    if (UriIsCharReserved(static_cast<char>(c))) reserved += static_cast<char>(c);
    if (UriIsCharUnreserved(static_cast<char>(c))) unreserved += static_cast<char>(c);
  }
  EXPECT_EQ(reserved, "!#$&'()*+,/:;=?@[]");
  EXPECT_EQ(unreserved, "-.0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz~");
  EXPECT_FALSE(UriIsCharReserved('\0'));
  EXPECT_FALSE(UriIsSchemeChar('3', true));
  EXPECT_TRUE(UriIsSchemeChar('3', false) && UriIsSchemeChar('+', false));
  EXPECT_FALSE(UriIsSchemeValid("", 0) || UriIsSchemeValid("1a", 2) || UriIsSchemeValid("a_b", npos));
  EXPECT_TRUE(UriIsSchemeValid("a+b-c.1", npos) && UriIsSchemeValid("ab:", 2));
  EXPECT_TRUE(UriIsHostIpLiteral("[]", npos) && UriIsHostIpLiteral("[x]y]", npos));
  EXPECT_FALSE(UriIsHostIpLiteral("[", npos) || UriIsHostIpLiteral("", 0) || UriIsHostIpLiteral("[a]", 2));
}

TEST(UriText, DecompositionSplitsAtTheFirstDelimiters) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"x", "false -----"},
      {"x:", "x||||"},
      {"//h/a:b", "//h/a||b||"},
      {"s://u@h:1/p?q#f?g#h", "s|u@h:1|/p|q|f?g#h"},
      {"s:p?a?b", "s||p|a?b|"},
      {"s:#f?x", "s||||f?x"},
      {"s:p?", "s||p||"},
      {"s:p#", "s||p||"},
      {"s:///p", "s||/p||"},
      {"s://", "s||||"},
      {"s:/p", "s||/p||"},
      {"s://h", "s|h|||"},
      {"s:a@b", "s||a@b||"},
      {"s:p?q#", "s||p|q|"},
      {std::string("s:a\0b", 5), std::string("s||a\0b||", 8)},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(Decomposed(text), expected) << text;

  std::string authority = "a", path = "p";
  EXPECT_TRUE(UriHierPartDecompose("/", npos, authority, path));
  EXPECT_EQ(authority + "|" + path, "|/");

  std::string text = "s://h/p?q", empty;
  EXPECT_TRUE(UriDecompose(text.c_str(), npos, empty, empty, empty, empty, text));
  EXPECT_EQ(text, "");  // written last, from a copy of the input
}

TEST(UriText, AuthoritySplitsAtTheLastAtAndTheLiteralsBracket) {
  EXPECT_EQ(Authority("a@b@h:1"), "a@b|h|1");
  EXPECT_EQ(Authority("[::1]:80"), "|[::1]|80");
  EXPECT_EQ(Authority("u:p@[::1]"), "u:p|[::1]|");
  EXPECT_EQ(Authority("[::1"), "false ---");
  EXPECT_EQ(Authority("[::1]x"), "false ---");
  EXPECT_EQ(Authority(""), "||");
  EXPECT_EQ(Authority("u@"), "u||");
  EXPECT_EQ(Authority("h:1:2"), "|h|1:2");
  EXPECT_EQ(Authority("h:"), "|h|");
  EXPECT_EQ(Authority("x[a]:1"), "|x[a]|1");
}

TEST(UriText, PercentEncodingEscapesAllButUnreservedAndExtra) {
  std::string result = "old";
  UriPercentEncode("a b/c", npos, result, nullptr);
  EXPECT_EQ(result, "a%20b%2Fc");
  UriPercentEncode("a b/c", npos, result, "/");
  EXPECT_EQ(result, "a%20b/c");
  UriPercentEncode("\xE9~%\x7F", npos, result, "");
  EXPECT_EQ(result, "%E9~%25%7F");
  UriPercentEncode("a\0b%", 4, result, "%");
  EXPECT_EQ(result, "a%00b%");

  char buffer[4] = {'x', 'x', 'x', 'x'};
  UriPercentEncodeChar('a', buffer);
  EXPECT_EQ(std::string(buffer, 4), std::string("%61\0", 4));
  UriPercentEncodeChar('\xFF', buffer);
  EXPECT_STREQ(buffer, "%FF");

  result = "x y";
  UriPercentEncode(result.data(), static_cast<unsigned int>(result.size()), result, nullptr);
  EXPECT_EQ(result, "x%20y");
}

TEST(UriText, PercentDecodingReadsEscapesOrLeavesTheResult) {
  EXPECT_EQ(Decoded("a%2fb%2Fc"), "a/b/c");
  EXPECT_EQ(Decoded(""), "");
  EXPECT_EQ(Decoded("%+F%00+"), std::string("\x0F\0+", 3));
  for (const char* bad : {"%", "%2", "%zz", "a%4", "%%41", "%-1", "%1+", "% 1"})
    EXPECT_EQ(Decoded(bad), "false kept") << bad;

  const char* text = "%41b";
  unsigned int length = 4;
  char c = '-';
  EXPECT_TRUE(UriPercentDecodeChar(text, length, c));
  EXPECT_EQ(std::string(text) + std::to_string(length) + c, "b1A");
  EXPECT_TRUE(UriPercentDecodeChar(text, length, c));
  EXPECT_FALSE(UriPercentDecodeChar(text, length, c));
  const char* broken = "%4";
  length = 2;
  EXPECT_FALSE(UriPercentDecodeChar(broken, length, c));
  EXPECT_EQ(std::string(broken) + std::to_string(length) + c, "%42b");

  std::string inPlace = "a%20b";
  EXPECT_TRUE(UriPercentDecode(inPlace.c_str(), npos, inPlace));
  EXPECT_EQ(inPlace, "a b");
}

TEST(UriText, FormQueryJoinsEntriesInPositionOrder) {
  Properties p;
  std::string result = "old";
  UriQueryFormEncode(p, result, '&');
  EXPECT_EQ(result, "");
  p.Set("a", "1 2");
  p.Set("b", "x&y");
  p.Set("c d", "");
  p.Set("e", "%#\xC3\xA9=+?/");
  UriQueryFormEncode(p, result, ';');
  EXPECT_EQ(result, "a=1+2;b=x&y;c+d=;e=%25%23%C3%A9=+?/");
}

TEST(Uri, ParseDecodesEveryComponentButAnIpLiteral) {
  const std::vector<std::pair<const char*, const char*>> cases = {
      {"s://u%40v@h%2Dx:80/a%20b?c%26d#e%23f", "s|u@v|h-x|80|/a b|c&d|e#f"},
      {"s://[::1]:80/", "s||[::1]|80|/||"},
      {"s://[v%41]/", "s||[v%41]|0|/||"},
      {"s:///p", "s|||0|/p||"},
      {"s://h:/p", "s||h|0|/p||"},
      {"s://h:0/p", "s||h|0|/p||"},
      {"s://h:+80", "s||h|80|||"},
      {"s://h:065535", "s||h|65535|||"},
      {"s:p", "s|||0|p||"},
      {"s:", "s|||0|||"},
      {"HTTP://U:P@Ex.COM/./a/../%7e?x=%2B#", "HTTP|U:P|Ex.COM|0|/./a/../~|x=+|"},
      {"mailto:a@b", "mailto|||0|a@b||"},
      {"s://h/\x01 \xFF", "s||h|0|/\x01 \xFF||"},
  };
  for (const auto& [text, expected] : cases) {
    Uri uri;
    EXPECT_TRUE(uri.Parse(text, npos)) << text;
    EXPECT_EQ(Parts(uri), expected) << text;
  }
}

TEST(Uri, FailedParseKeepsEveryValue) {
  Uri uri;
  Properties props;
  props.Set("k", "v");
  ASSERT_TRUE(uri.Parse("s://u@h:8/p#f"));
  uri.SetQueryProps(props);
  for (const char* bad : {"s://h:8x/p", "1s:p", "s://h/%zz", "s://[::1/", "s://[::1]x/", "p", "/p", "",
                          "//h/p", "s://u@/p", "s://:80/p", "s://h:65536/", "s://h:-1/", "s://%4/",
                          "s://h/p?%", "s://h/p#%g0", "s://%zz@h/"}) {
    EXPECT_FALSE(uri.Parse(bad, npos)) << bad;
    EXPECT_EQ(Parts(uri), "s|u|h|8|/p||f") << bad;
    EXPECT_EQ(uri.GetQueryProps().GetCount(), 1u);
  }
  EXPECT_FALSE(uri.Parse(std::string("x\0:y", 4)));
  ASSERT_TRUE(uri.Parse("t:q?a"));
  EXPECT_EQ(Parts(uri), "t|||0|q|a|");
  EXPECT_TRUE(uri.GetQueryProps().Empty());
}

TEST(Uri, ParseAcceptsItsOwnComponentsAsInput) {
  Uri uri;
  ASSERT_TRUE(uri.Parse("s:/x?t:%2F%2Fh%3A1%2Fp%3Fq%23u:w#f"));
  EXPECT_TRUE(uri.Parse(uri.GetQuery()));
  EXPECT_EQ(Parts(uri), "t||h|1|/p|q|u:w");
  EXPECT_TRUE(uri.Parse(uri.GetFragment().c_str(), npos));
  EXPECT_EQ(Parts(uri), "u|||0|w||");
}

TEST(Uri, FormatNormalisesEscapesPerComponent) {
  const std::vector<std::pair<const char*, const char*>> cases = {
      {"s://u%40v@h%2Dx:80/a%20b?c%26d#e%23f", "s://u%40v@h-x:80/a%20b?c&d#e%23f"},
      {"s:a%25b", "s:a%25b"},
      {"s://[::1]:80/", "s://[::1]:80/"},
      {"s://[v%41]/", "s://[v%41]/"},
      {"s:///p", "s:/p"},
      {"s://h:/p", "s://h/p"},
      {"s://h:0/p", "s://h/p"},
      {"s:p", "s:p"},
      {"s:p?", "s:p"},
      {"s:", "s:"},
      {"s://a:b;c@h!$'()*+,;=%3A%40%2F/p:@!/%3F%23?q/?:@%23#f/?#", "s://a:b;c@h!$'()*+,;=%3A%40%2F/p:@!/%3F%23?q/?:@%23#f/?%23"},
      {"s://h%5B1%5D/%5B%5D", "s://h%5B1%5D/%5B%5D"},
      {"s://%5Bx%5D/", "s://[x]/"},
      {"s:%C3%A9%00%7E%20+", "s:%C3%A9%00~%20+"},
  };
  for (const auto& [text, expected] : cases) {
    Uri uri;
    ASSERT_TRUE(uri.Parse(text, npos)) << text;
    EXPECT_EQ(Formatted(uri), expected) << text;
  }
}

TEST(Uri, ValidityRulesJudgeWhatTheSettersLeft) {
  Uri uri;
  std::string relative = "kept";
  EXPECT_FALSE(uri.IsValid() || uri.IsSchemeValid());
  EXPECT_TRUE(uri.IsHierPartValid() && uri.IsAuthorityValid() && uri.IsPathValid());
  EXPECT_EQ(Formatted(uri), "false kept");
  EXPECT_TRUE(uri.FormatRelative(relative));
  EXPECT_EQ(relative, "");

  uri.SetScheme("1x");
  EXPECT_FALSE(uri.IsValid());
  uri.SetScheme("x");
  EXPECT_TRUE(uri.IsValid());
  uri.SetPort(8);
  EXPECT_FALSE(uri.IsAuthorityValid() || uri.IsHierPartValid() || uri.IsValid());
  uri.SetHost("h");
  EXPECT_EQ(Formatted(uri), "x://h:8");
  uri.SetPort(Uri::portNotSet);
  uri.SetUserInfo("u");
  uri.SetPath("p q");  // no "/" is added behind the authority
  EXPECT_EQ(Formatted(uri), "x://u@hp%20q");
  uri.SetHost("");
  EXPECT_FALSE(uri.IsValid() || uri.IsAuthorityValid() || uri.HasAuthority());
  EXPECT_EQ(Formatted(uri), "false kept");
  EXPECT_TRUE(uri.FormatRelative(relative));
  EXPECT_EQ(relative, "p%20q");

  uri.Reset();
  EXPECT_EQ(Parts(uri), "|||0|||");
  EXPECT_FALSE(uri.HasPath() || uri.HasQuery() || uri.HasScheme() || uri.HasUserInfo() || uri.HasPort());
}

TEST(Uri, QueryIsTextOrPropertiesNeverBoth) {
  Uri uri;
  ASSERT_TRUE(uri.Parse("s://h/p?a=b#f"));
  Properties props;
  props.Set("a", "1");
  props.Set("b", "x y");
  uri.SetQueryProps(props);
  EXPECT_EQ(uri.GetQuery(), "");
  EXPECT_EQ(Formatted(uri), "s://h/p?a=1&b=x+y#f");
  uri.SetQuery("x y");
  EXPECT_TRUE(uri.GetQueryProps().Empty() && uri.HasQuery());
  EXPECT_EQ(Formatted(uri), "s://h/p?x%20y#f");
  uri.SetQueryProps(Properties(true));
  EXPECT_FALSE(uri.HasQuery());
  EXPECT_TRUE(uri.GetQueryProps().IsCaseless());
  EXPECT_EQ(Formatted(uri), "s://h/p#f");

  Uri copy(uri);
  props.Set("c", "3");
  copy.SetQueryProps(props);
  EXPECT_EQ(Formatted(uri), "s://h/p#f");
  EXPECT_EQ(Formatted(copy), "s://h/p?a=1&b=x+y&c=3#f");
}

}  // namespace
}  // namespace Tessera
