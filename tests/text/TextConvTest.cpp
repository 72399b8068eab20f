#include <tessera/text/IConv.h>
#include <tessera/text/StringTokenizer.h>
#include <tessera/text/TextCompare.h>
#include <tessera/text/TextConv.h>
#include <tessera/text/Utf8.h>
#include <tessera/win32/CodePage.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <tuple>
#include <vector>

#include <tessera/frame/Errors.h>

#include "tessera/text/Charsets.h"
#include "text/LocaleScope.h"

using namespace Tessera;

namespace {

// Pages of the charset table that no converter on the system has.
const unsigned int kWithoutConverter[] = {10001, 10002, 10003, 10004, 10005, 10008,
                                          10021, 20000, 20001, 20002, 20003, 20004,
                                          20005, 20105, 20833, 29001};

std::u16string Widen(const std::string& bytes, unsigned int codePage) {
  std::u16string out;
  TextWidenCodePage(bytes.data(), static_cast<unsigned int>(bytes.size()), out, codePage);
  return out;
}

std::string Narrow(const std::u16string& units, unsigned int codePage) {
  std::string out;
  TextNarrowCodePage(units.data(), static_cast<unsigned int>(units.size()), out, codePage);
  return out;
}

struct Row {
  unsigned int codePage;
  std::string bytes;
  std::u16string units;
};

// What an operation threw: its message, context function and attached Win32 error (0 if none).
using Thrown = std::tuple<std::string, std::string, std::uint32_t>;

template <class Error, class Operation>
Thrown Catch(Operation operation) {
  try {
    operation();
  } catch (const Error& error) {
    const std::uint32_t* code = error.template GetInfo<Plaint::ErrorInfo_Win32Error>();
    return Thrown(error.what(), error.GetContext().function, code ? *code : 0);
  }
  return Thrown();
}

}  // namespace

TEST(TextConv, PagesBuiltOnFirstUseServeManyThreads) {
  // First in the file, so that the threads race to build the pages.
  const Row rows[] = {
      {866, "\x80\xAF", u"\u0410\u043F"}, {949, "\xB0\xA1", u"\uAC00"}, {50225, "\x1B$)C\x0E\x30\x21\x0F", u"\uAC00"}};
  std::vector<std::thread> threads;
  std::vector<int> wrong(4, 0);
  for (int& count : wrong)
    threads.emplace_back([&rows, &count] {
      for (int round = 0; round < 50; ++round)
        for (const Row& row : rows) count += Widen(row.bytes, row.codePage) != row.units;
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, std::vector<int>(4, 0));
}

// Every name of the table is looked up as it stands below; here what the lookup folds away.
TEST(TextConv, CharsetNamesNormaliseBeforeTheLookup) {
  LocaleScope locale("C");
  const std::string padded31 = "utf-8" + std::string(26, '-');
  const std::pair<std::string, unsigned int> found[] = {
      {"UTF-8", 65001},      {"utf_8", 65001},     {"UTF 8", 65001},          {"iso_8859-15", 28605},
      {"Shift_JIS", 932},    {"utf\xE9-8", 65001}, {"..u.t.f.1.6.b.e..", 1201}, {padded31, 65001}};
  for (const auto& [name, expected] : found) {
    unsigned int codePage = 0;
    EXPECT_TRUE(GetCodePage(name.c_str(), codePage)) << name;
    EXPECT_EQ(codePage, expected) << name;
  }
  unsigned int codePage = 7;
  for (const std::string& name : {padded31 + "-", std::string("latin1"), std::string("cp1252"),
                                 std::string(""), std::string("-_. "), std::string("utf8x")})
    EXPECT_FALSE(GetCodePage(name.c_str(), codePage)) << name;
  EXPECT_EQ(codePage, 7u);
  EXPECT_TRUE(GetCodePage(nullptr, codePage));
  EXPECT_EQ(codePage, 20127u);
}

TEST(TextConv, EveryCharsetConvertsOrHasNoConverter) {
  int converting = 0;
  for (const detail::Charset& row : detail::kCharsets) {
    unsigned int codePage = 0;
    ASSERT_TRUE(GetCodePage(row.name, codePage) && codePage == row.codePage) << row.name;
    std::string narrow;
    std::u16string wide;
    if (std::find(std::begin(kWithoutConverter), std::end(kWithoutConverter), codePage) ==
        std::end(kWithoutConverter)) {
      TextNarrowCharset(u"Az0?", 4, narrow, row.name);
      TextWidenCharset(narrow.data(), static_cast<unsigned int>(narrow.size()), wide, row.name);
      EXPECT_EQ(wide, u"Az0?") << row.name;
      ++converting;
    } else {
      EXPECT_THROW(TextWidenCharset("A", 1, wide, row.name), TextConversionError) << row.name;
    }
  }
  EXPECT_EQ(converting, 134);
}

TEST(TextConv, KnownBytesRoundTripThroughTheMainPages) {
  const Row rows[] = {
      // Windows maps the bytes that the converters leave out of 1252 and 932.
      {1252, "\x80\x81\x8D\x9F\xE9\xFF", u"\u20AC\u0081\u008D\u0178\u00E9\u00FF"},
      {28591, "\x80\x9F\xA0\xFF", u"\u0080\u009F\u00A0\u00FF"},
      {65001, "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", u"a\u00E9\u20AC\U0001F600"},
      {932, "\x82\xA0\x81\x60\x5C\xB1\x1A\x1C\x7F", u"\u3042\uFF5E\u005C\uFF71\u001A\u001C\u007F"},
      {932, std::string("\x80\xA0\xFD\xFF\xF0\x40\xF9\xFC", 8),
       u"\u0080\uF8F0\uF8F1\uF8F3\uE000\uE757"},
      {936, "\x80\xC4\xE3\xA1\xA4", u"\u20AC\u4F60\u00B7"},
      {1200, std::string("A\0\xAC\x20\x3D\xD8\x00\xDE", 8), u"A\u20AC\U0001F600"},
      {1201, std::string("\0A\x20\xAC", 4), u"A\u20AC"},
      {437, "\x1A\x1C\x7F\xE6\x80", u"\u001A\u001C\u007F\u00B5\u00C7"},
      {12001, std::string("\0\x01\xF6\0", 4), u"\U0001F600"},
      // IBM 924 is 1047 with the euro where 1047 has the currency sign, as in 1140 and 37.
      {20924, "\x9F\xC1", u"\u20AC" u"A"},
      {10082, "a\xA9\xE8", u"a\u0160\u010D"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Widen(row.bytes, row.codePage), row.units) << row.codePage;
    EXPECT_EQ(Narrow(row.units, row.codePage), row.bytes) << row.codePage;
  }
}

// That the fast UTF-8 path and the platform call agree on bad input is the fuzz target's
// (CodePageFuzz); here the exact replacements.
TEST(TextConv, BadInputIsReplacedAsWindowsDoes) {
  // UTF-8: one U+FFFD for each maximal ill-formed subpart; a lead byte that ends the text
  // widens to the katakana middle dot.
  const Row widened[] = {
      {65001, "\xC3\x28", u"\uFFFD("},   {65001, "\xED\xA0\x80z", u"\uFFFD\uFFFD\uFFFDz"},
      {65001, "a\xF0\x9F\x98", u"a\uFFFD"}, {65001, "\xE2\x82\x41", u"\uFFFDA"},
      {65001, "\xF8\x88\x80\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"},
      {65001, "\xC0\xAF\xF4\x90", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
      {932, "a\x82", u"a\u30FB"}, {20127, "\xE9", u"i"}, {1200, std::string("A\0\x3D", 3), u"A\uFFFD"}};
  for (const Row& row : widened) EXPECT_EQ(Widen(row.bytes, row.codePage), row.units) << row.bytes;
  // Narrowing to a Windows page writes the page's '?'.
  const Row narrowed[] = {{65001, "a\xEF\xBF\xBD" "b\xEF\xBF\xBD", u"a\xD800" u"b\xDC00"},
                          {1252, "a???", u"a\u4E00\U0001F600"}, {932, "?", u"\u00E9"}, {37, "\xC1\x6F", u"A\u4E00"}};
  for (const Row& row : narrowed) EXPECT_EQ(Narrow(row.units, row.codePage), row.bytes) << row.codePage;
}

TEST(TextConv, NarrowingGrowsTheResultUntilItFits) {
  // UTF-7 needs six bytes for an accented letter and a plain one, three times the source's.
  std::u16string text;
  std::string expected;
  for (int i = 0; i < 100; ++i) {
    text += u"\u00E9a";
    expected += "+AOk-a";
  }
  EXPECT_EQ(Narrow(text, 65000), expected);
  EXPECT_EQ(Widen(expected, 65000), text);
}

TEST(TextConv, FailuresCarryTheirClassMessageContextAndError) {
  std::u16string wide = u"kept";
  std::string narrow = "kept";
  // An empty text never reaches the platform.
  TextWidenCodePage("", 0, wide, 12345);
  TextNarrowCodePage(u"", npos, narrow, 12345);
  EXPECT_EQ(std::make_pair(wide, narrow), std::make_pair(std::u16string(), std::string()));
  EXPECT_EQ(Catch<TextConversionError>([&] { TextWidenCodePage("a", 1, wide, 12345); }),
            Thrown("Unicode conversion failed", "Tessera::TextWidenCodePage", 87));
  EXPECT_EQ(Catch<TextConversionError>([&] { TextNarrowCharset(u"a", 1, narrow, "x-IA5"); }),
            Thrown("native charset conversion failed", "Tessera::TextNarrowCodePage", 87));
  EXPECT_EQ(Catch<TextConversionError>([&] { TextWidenCharset("", 0, wide, "latin1"); }),
            Thrown("unsupported charset", "Tessera::TextWidenCharset", 0));
  EXPECT_EQ(Catch<TextConversionError>([&] { TextNarrowCharset(u"a", 1, narrow, "x"); }),
            Thrown("unsupported charset", "Tessera::TextNarrowCharset", 0));

  EXPECT_EQ(IConv::Create("utf-8", "latin1"), nullptr);
  EXPECT_EQ(Catch<Plaint::LogicError>([] { IConv conv("utf-8", "latin1"); }),
            Thrown("iconv support disabled", "Tessera::IConv::IConv", 0));
  std::string charset = "kept";
  EXPECT_EQ(Catch<Plaint::LogicError>([&] { IConv::GetSystemCharset(charset); }),
            Thrown("iconv support disabled", "Tessera::IConv::GetSystemCharset", 0));
  EXPECT_EQ(charset, "kept");
}

TEST(TextConv, PlatformCallsGiveTheWindowsResults) {
  using namespace Win32;
  char16_t units[8];
  char bytes[8];
  BOOL used = 0;
  // Each call's result and the last error after it: sizing, a target too small, refusals, and
  // last the NUL of a -1 length.
  const struct { std::function<int()> call; int result; DWORD error; } calls[] = {
      {[&] { return MultiByteToWideChar(932, 0, "a\x82\xA0", 3, nullptr, 0); }, 2, 0},
      {[&] { return WideCharToMultiByte(932, 0, u"a\u3042", 2, nullptr, 0, nullptr, nullptr); }, 3, 0},
      {[&] { return MultiByteToWideChar(932, 0, "a\x82\xA0", 3, units, 1); }, 0, ERROR_INSUFFICIENT_BUFFER},
      {[&] { return WideCharToMultiByte(932, 0, u"a\u3042", 2, bytes, 2, nullptr, nullptr); }, 0, ERROR_INSUFFICIENT_BUFFER},
      {[&] { return WideCharToMultiByte(65001, 0, u"\u20AC", 1, bytes, 2, nullptr, nullptr); }, 0, ERROR_INSUFFICIENT_BUFFER},
      {[&] { return WideCharToMultiByte(65001, 0, u"a", 1, bytes, 8, "#", nullptr); }, 0, ERROR_INVALID_PARAMETER},
      {[&] { return MultiByteToWideChar(20105, 0, "a", 1, units, 8); }, 0, ERROR_INVALID_PARAMETER},
      {[&] { return MultiByteToWideChar(1252, 0, "a", 0, units, 8); }, 0, ERROR_INVALID_PARAMETER},
      {[&] { return MultiByteToWideChar(1252, 8, "a", 1, units, 8); }, 0, ERROR_INVALID_FLAGS},
      {[&] { return MultiByteToWideChar(1252, 0, "ab", -1, units, 8); }, 3, 0}};
  for (const auto& c : calls) {
    SetLastError(0);
    const int returned = c.call();
    EXPECT_EQ(std::make_pair(returned, GetLastError()), std::make_pair(c.result, c.error)) << &c - calls;
  }
  EXPECT_EQ(units[2], u'\0');
  // A default character of the caller's, and the report of its use.
  EXPECT_EQ(WideCharToMultiByte(1252, 0, u"a\u4E00", 2, bytes, 8, "#", &used), 2);
  EXPECT_EQ(std::string(bytes, 2) + (used ? "+" : "-"), "a#+");
}

TEST(TextConv, DefaultPageFollowsTheLocaleCodeset) {
  EXPECT_EQ(Win32::GetACP(), 20127u);  // every test leaves the "C" locale behind
  REQUIRE_LOCALE(utf8, "C.UTF-8");
  EXPECT_EQ(Win32::GetACP(), 65001u);
  std::u16string wide;
  std::string narrow;
  TextWiden("\xC3\xA9\xFF", npos, wide);
  TextNarrow(u"\u20AC", npos, narrow);
  EXPECT_EQ(std::make_pair(wide, narrow), std::make_pair(std::u16string(u"\u00E9\uFFFD"), std::string("\xE2\x82\xAC")));
}

TEST(TextViews, GiveThePointerResultsMoveAndRefuseWhatNoLengthCanHold) {
  const std::string_view nul("ab\0x", 4);
  std::u16string wide;
  std::string narrow;
  char16_t unit = 0;
  TextWidenUtf8(std::string("\xC3\xA9\0", 3), wide);
  TextNarrowUtf8(wide, narrow);
  const unsigned int taken = WidenCharUtf8(unit, "\xC3\xA9" "a");
  EXPECT_EQ(std::make_tuple(TextCompare(nul, std::string_view("ab\0yz", 5)), TextFind(nul, "x"),
                            TextRFind(u"abab", u"ab"), narrow, taken, unit),
            std::make_tuple(-1, 3u, 2u, std::string("\xC3\xA9\0", 3), 2u, u'\u00E9'));

  BasicStringTokenizer<char16_t> source(std::u16string_view(u"a,,b c"), u",", DelimitModeAnyOf);
  std::u16string_view first, second, kept = u"kept";
  ASSERT_TRUE(source.Next(first));
  BasicStringTokenizer<char16_t> moved(std::move(source));
  ASSERT_TRUE(moved.Next(second, nullptr, DelimitModeAnyOf));
  EXPECT_FALSE(source.Next(kept));
  source = std::move(moved);
  EXPECT_EQ(std::make_tuple(first, second, kept, source.GetPosition(), moved.GetTextStart()),
            std::make_tuple(u"a", u",,b", u"kept", 4u, nullptr));

  if constexpr (sizeof(std::size_t) > sizeof(unsigned int)) {
    // Sizes of npos and more never reach the data: only the first bytes are real.
    const std::string_view huge("ab", npos);
    const std::u16string_view hugeWide(u"ab", npos);
    const unsigned int cut = WidenCharUtf8(unit, huge);
    EXPECT_EQ(std::make_tuple(TextFind(huge, "a"), TextRFind(u"a", hugeWide), cut, unit),
              std::make_tuple(npos, npos, 1u, u'a'));
    EXPECT_EQ(Catch<Plaint::LengthError>([&] { return TextCollate(huge, "a"); }),
              Thrown("text too long", "Tessera::TextCollate", 0));
    EXPECT_EQ(Catch<TextConversionError>([&] { TextWidenUtf8(huge, wide); }),
              Thrown("text too long", "Tessera::TextWidenUtf8", 0));
    EXPECT_EQ(wide, std::u16string(u"\u00E9\0", 2));
    EXPECT_EQ(Catch<TextConversionError>([&] { TextWidenCharset(huge, wide, "utf-8"); }),
              Thrown("Unicode conversion failed", "Tessera::TextWidenCodePage", 87));
    EXPECT_EQ(Catch<TextConversionError>([&] { TextNarrowCharset(hugeWide, narrow, "x"); }),
              Thrown("unsupported charset", "Tessera::TextNarrowCharset", 0));
    EXPECT_EQ(Catch<Plaint::LengthError>([&] { source.Rebase(hugeWide, 1); }),
              Thrown("text too long", "Tessera::BasicStringTokenizer::Rebase", 0));
    EXPECT_EQ(source.GetTextLength(), 6u);
  }
}
