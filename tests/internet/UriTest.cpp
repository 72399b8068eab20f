#include <tessera/internet/Base64.h>
#include <tessera/internet/Mime.h>
#include <tessera/internet/MimeDecode.h>
#include <tessera/internet/Uri.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include <plaint/Error.h>

namespace Tessera {
namespace {

using Table = std::vector<std::pair<std::string, std::string>>;

// All components as "scheme|userInfo|host|port|path|query|fragment".
std::string Parts(const Uri& uri) {
  return uri.GetScheme() + "|" + uri.GetUserInfo() + "|" + uri.GetHost() + "|" + std::to_string(uri.GetPort()) +
         "|" + uri.GetPath() + "|" + uri.GetQuery() + "|" + uri.GetFragment();
}

std::string Formatted(const Uri& uri) {
  std::string text = "kept";
  return uri.Format(text) ? text : "false " + text;
}

std::string Decomposed(const std::string& text) {
  std::string s = "-", a = "-", p = "-", q = "-", f = "-", u = "-", h = "-", port = "-";
  if (!UriDecompose(text.data(), static_cast<unsigned int>(text.size()), s, a, p, q, f)) return "false " + s + a;
  const bool split = UriAuthorityDecompose(a.data(), static_cast<unsigned int>(a.size()), u, h, port);
  return s + "|" + a + "|" + p + "|" + q + "|" + f + (split ? " " + u + "|" + h + "|" + port : " false " + u);
}

std::string Decoded(const std::string& text) {
  std::string result = "kept";
  const bool ok = UriPercentDecode(text.data(), static_cast<unsigned int>(text.size()), result);
  return ok ? result : "false " + result;
}

TEST(UriText, CharacterClassesAndSchemes) {
  std::string reserved, unreserved;
  for (int c = 0; c < 256; ++c) {
    if (UriIsCharReserved(static_cast<char>(c))) reserved += static_cast<char>(c);
    if (UriIsCharUnreserved(static_cast<char>(c))) unreserved += static_cast<char>(c);
  }
  EXPECT_EQ(reserved, "!#$&'()*+,/:;=?@[]");
  EXPECT_EQ(unreserved, "-.0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz~");
  // Each vector compares position by position, so a failure names the check.
  EXPECT_EQ(std::vector<bool>({UriIsSchemeChar('3', true), UriIsSchemeChar('3', false), UriIsSchemeChar('+', false)}),
            std::vector<bool>({false, true, true}));
  EXPECT_EQ(std::vector<bool>({UriIsSchemeValid("", 0), UriIsSchemeValid("1a", 2), UriIsSchemeValid("a_b", npos),
                               UriIsSchemeValid("a+b-c.1", npos), UriIsSchemeValid("ab:", 2)}),
            std::vector<bool>({false, false, false, true, true}));
  EXPECT_EQ(std::vector<bool>({UriIsHostIpLiteral("[]", npos), UriIsHostIpLiteral("[x]y]", npos),
                               UriIsHostIpLiteral("[", npos), UriIsHostIpLiteral("", 0), UriIsHostIpLiteral("[a]", 2)}),
            std::vector<bool>({true, true, false, false, false}));
}

TEST(UriText, SplittingStopsAtTheFirstDelimiterOfEachPart) {
  const Table cases = {
      {"x", "false --"}, {"//h/a:b", "//h/a||b|| ||"}, {"s://a@b@h:1/p?q#f?g#h", "s|a@b@h:1|/p|q|f?g#h a@b|h|1"},
      {"s:p?a?b", "s||p|a?b| ||"}, {"s:#f?x", "s||||f?x ||"}, {"s:///p", "s||/p|| ||"}, {"s://", "s|||| ||"},
      {"s:a@b/c", "s||a@b/c|| ||"}, {"s://[::1]:80", "s|[::1]:80||| |[::1]|80"},
      {"s://u@[::1]", "s|u@[::1]||| u|[::1]|"}, {"s://[::1", "s|[::1||| false -"}, {"s://u@", "s|u@||| u||"},
      {"s://[::1]x", "s|[::1]x||| false -"}, {"s://x[a]:1:2", "s|x[a]:1:2||| |x[a]|1:2"},
      {std::string("s:a\0b", 5), std::string("s||a\0b|| ||", 11)},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(Decomposed(text), expected) << text;

  std::string text = "s://h/p?q", authority = "a", path;
  EXPECT_TRUE(UriHierPartDecompose("/", npos, authority, path));
  EXPECT_EQ(authority + "|" + path, "|/");
  EXPECT_TRUE(UriDecompose(text.c_str(), npos, path, path, path, path, text));
  EXPECT_EQ(text, "");
}

TEST(UriText, PercentCodingEscapesAllButUnreservedAndExtra) {
  std::string result = "old";
  const std::vector<std::pair<const char*, const char*>> encodings = {
      {nullptr, "a%20b%2Fc%E9~%25%00"}, {"/%", "a%20b/c%E9~%%00"}, {"", "a%20b%2Fc%E9~%25%00"}};
  for (const auto& [extra, expected] : encodings) {
    UriPercentEncode("a b/c\xE9~%\0", 9, result, extra);
    EXPECT_EQ(result, expected);
  }
  char buffer[4];
  UriPercentEncodeChar('a', buffer);
  EXPECT_EQ(std::string(buffer, 4), std::string("%61\0", 4));

  EXPECT_EQ(Decoded("a%2fb%2Fc"), "a/b/c");
  EXPECT_EQ(Decoded("%+F%00+"), std::string("\x0F\0+", 3));
  for (const char* bad : {"%", "%2", "%zz", "a%4", "%%41", "%-1", "%1+", "% 1"})
    EXPECT_EQ(Decoded(bad), "false kept") << bad;
  const char* text = "%4";
  unsigned int length = 2;
  char c = '-';
  EXPECT_FALSE(UriPercentDecodeChar(text, length, c));
  EXPECT_EQ(std::string(text) + std::to_string(length) + c, "%42-");

  result = "x%20y";
  EXPECT_TRUE(UriPercentDecode(result.c_str(), npos, result));
  UriPercentEncode(result.data(), static_cast<unsigned int>(result.size()), result, nullptr);
  EXPECT_EQ(result, "x%20y");

  Properties form;
  for (const auto& [key, value] : Table{{"a", "1 2"}, {"b", "x&y"}, {"c d", ""}, {"e", "%#\xC3\xA9=+?/"}})
    form.Set(key, value);
  UriQueryFormEncode(form, result, ';');
  EXPECT_EQ(result, "a=1+2;b=x&y;c+d=;e=%25%23%C3%A9=+?/");
}

TEST(Uri, ParseDecodesAndFormatEncodesEachComponentBySet) {
  const std::vector<std::vector<std::string>> cases = {
      {"s://u%40v@h%2Dx:80/a%20b?c%26d#e%23f", "s|u@v|h-x|80|/a b|c&d|e#f", "s://u%40v@h-x:80/a%20b?c&d#e%23f"},
      {"s:a%25b", "s|||0|a%b||", "s:a%25b"},
      {"s://[::1]:80/", "s||[::1]|80|/||", "s://[::1]:80/"},
      {"s://[v%41]/", "s||[v%41]|0|/||", "s://[v%41]/"},
      {"s://%5Bx%5D/", "s||[x]|0|/||", "s://[x]/"},
      {"s:///p", "s|||0|/p||", "s:/p"},
      {"s://h:/p", "s||h|0|/p||", "s://h/p"},
      {"s://h:0/p?", "s||h|0|/p||", "s://h/p"},
      {"s://h:+080", "s||h|80|||", "s://h:80"},
      {"HTTP://Ex.COM/./a/../%7e?x=%2B#", "HTTP||Ex.COM|0|/./a/../~|x=+|", "HTTP://Ex.COM/./a/../~?x=+"},
      {"s://a:b;c@h!$'()*+,;=%3A%40%2F%5B/p:@!/%3F%23%5B?q/?:@%23#f/?#",
       "s|a:b;c|h!$'()*+,;=:@/[|0|/p:@!/?#[|q/?:@#|f/?#",
       "s://a:b;c@h!$'()*+,;=%3A%40%2F%5B/p:@!/%3F%23%5B?q/?:@%23#f/?%23"},
      {"s:%C3%A9%00 \x01+", std::string("s|||0|\xC3\xA9\0 \x01+||", 14), "s:%C3%A9%00%20%01+"},
  };
  for (const auto& row : cases) {
    Uri uri;
    ASSERT_TRUE(uri.Parse(row[0])) << row[0];
    EXPECT_EQ(Parts(uri), row[1]) << row[0];
    EXPECT_EQ(Formatted(uri), row[2]) << row[0];
  }
}

// That a failed parse changes nothing is the fuzz target's check.
TEST(Uri, ParseRejectsBrokenTextsAndReadsItsOwnComponents) {
  Uri uri;
  for (const char* bad : {"s://h:8x/p", "1s:p", "p", "", "//h/p", "s://[::1/", "s://[::1]x/", "s://u@/p", "s://:80/p",
                          "s://h:65536/", "s://h:-1/", "s://%4/", "s://h/%zz", "s://h/p?%", "s://h/p#%g0", "s://%zz@h/"})
    EXPECT_FALSE(uri.Parse(bad, npos)) << bad;
  ASSERT_TRUE(uri.Parse("s:/x?t:%2F%2Fh%3A1%2Fp%3Fq%23u:w#f"));
  EXPECT_TRUE(uri.Parse(uri.GetQuery()));  // its own component as input
  EXPECT_TRUE(uri.GetQueryProps().Empty());
  EXPECT_EQ(Parts(uri), "t||h|1|/p|q|u:w");
  EXPECT_TRUE(uri.Parse(uri.GetFragment().c_str(), npos));
  EXPECT_EQ(Parts(uri), "u|||0|w||");
}

TEST(Uri, ValidityRulesJudgeWhatTheSettersLeft) {
  Uri uri;
  std::string relative = "kept";
  EXPECT_TRUE(uri.FormatRelative(relative));
  EXPECT_EQ(relative, "");
  EXPECT_EQ(Formatted(uri), "false kept");  // no scheme
  uri.SetScheme("1x");
  EXPECT_FALSE(uri.IsValid());
  uri.SetScheme("x");
  uri.SetPort(8);
  EXPECT_EQ(Formatted(uri), "false kept");  // a port without a host
  uri.SetHost("h");
  EXPECT_EQ(Formatted(uri), "x://h:8");
  uri.SetPort(Uri::portNotSet);
  uri.SetUserInfo("u");
  uri.SetPath("p q");  // no "/" is added behind the authority
  EXPECT_EQ(Formatted(uri), "x://u@hp%20q");
  uri.SetHost("");
  EXPECT_EQ(Formatted(uri) + (uri.FormatRelative(relative) ? " " + relative : ""), "false kept p%20q");
  uri.Reset();
  EXPECT_EQ(Parts(uri), "|||0|||");
}

TEST(Uri, QueryIsTextOrPropertiesNeverBoth) {
  Uri uri;
  ASSERT_TRUE(uri.Parse("s://h/p?a=b#f"));
  Properties props;
  for (const auto& [key, value] : Table{{"a", "1"}, {"b", "x y"}}) props.Set(key, value);
  uri.SetQueryProps(props);
  EXPECT_EQ(uri.GetQuery() + Formatted(uri), "s://h/p?a=1&b=x+y#f");
  uri.SetQuery("x y");
  EXPECT_TRUE(uri.GetQueryProps().Empty());
  EXPECT_EQ(Formatted(uri), "s://h/p?x%20y#f");
  Uri copy(uri);
  uri.SetQueryProps(Properties(true));
  EXPECT_FALSE(uri.HasQuery());
  EXPECT_TRUE(uri.GetQueryProps().IsCaseless());
  EXPECT_EQ(Formatted(uri) + " " + Formatted(copy), "s://h/p#f s://h/p?x%20y#f");
}

TEST(InternetViews, GiveThePointerResultsMoveAndRefuseWhatNoLengthCanHold) {
  std::string encoded, type, subtype;
  Properties parameters;
  std::ostringstream written;
  MimeOutputParam(written, std::string("n"), std::string_view("a b"));
  Base64Encode(std::string("a\0b", 3), encoded);
  std::string_view escaped = "%41%";
  char c = 0;
  const bool decodedChar = UriPercentDecodeChar(escaped, c);
  const bool parsed = MimeParseMediaType(std::string("text/plain; a=1"), type, subtype, parameters);
  EXPECT_EQ(std::make_tuple(written.str(), encoded, decodedChar, c, escaped, parsed, subtype,
                            parameters.GetCount()),
            std::make_tuple("n=\"a b\"", "YQBi", true, 'A', "%", true, "plain", 1u));
  Uri uri, moved;
  ASSERT_TRUE(uri.Parse(std::string_view("s://h/p%20q")) && moved.Parse("s:x"));
  moved = std::move(uri);
  Uri constructed(std::move(moved));
  EXPECT_EQ(std::make_tuple(constructed.GetPath(), moved.HasScheme(), uri.HasScheme()),
            std::make_tuple("/p q", false, false));

  if constexpr (sizeof(std::size_t) > sizeof(unsigned int)) {
    // Sizes of npos and more never reach the data: only the first bytes are real.
    const std::string_view huge("%41", npos);
    std::string kept = "kept";
    std::u16string keptWide = u"kept";
    try {
      MimeOutputParam(written, "n", huge);
      ADD_FAILURE();
    } catch (const Plaint::LengthError& error) {
      EXPECT_STREQ(error.GetContext().function, "Tessera::MimeOutputParam");
    }
    EXPECT_EQ(std::make_tuple(Base64Decode(huge, kept), MimeQuotedPrintableDecode(huge, kept, false),
                              MimeDecodeEncodedWords(huge, keptWide), IsMimeQuotable(huge),
                              UriHierPartDecompose(huge, kept, kept), constructed.Parse(huge), kept,
                              keptWide, constructed.GetPath(), written.str()),
              std::make_tuple(false, false, false, false, false, false, "kept", u"kept", "/p q",
                              "n=\"a b\""));
    std::string_view cut = huge;
    const bool decoded = UriPercentDecodeChar(cut, c);
    EXPECT_EQ(std::make_tuple(decoded, c, cut.size()), std::make_tuple(true, 'A', huge.size() - 3));
  }
}

}  // namespace
}  // namespace Tessera
