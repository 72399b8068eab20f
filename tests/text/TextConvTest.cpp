#include <tessera/text/IConv.h>
#include <tessera/text/TextConv.h>
#include <tessera/win32/CodePage.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>
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

bool HasConverter(unsigned int codePage) {
  for (unsigned int page : kWithoutConverter)
    if (page == codePage) return false;
  return true;
}

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

// What an operation threw: its message, context function and attached Win32 error (0 if none).
struct Thrown {
  std::string message;
  std::string function;
  std::uint32_t win32 = 0;
};

template <class Error, class Operation>
Thrown Catch(Operation operation) {
  Thrown thrown;
  try {
    operation();
  } catch (const Error& error) {
    thrown.message = error.what();
    thrown.function = error.GetContext().function;
    if (const std::uint32_t* code = error.template GetInfo<Plaint::ErrorInfo_Win32Error>())
      thrown.win32 = *code;
  }
  return thrown;
}

}  // namespace

TEST(TextConv, PagesBuiltOnFirstUseServeManyThreads) {
  // First in the file, so that the threads race to build the pages.
  const struct {
    unsigned int codePage;
    std::string bytes;
    std::u16string units;
  } rows[] = {{866, "\x80\xAF", u"\u0410\u043F"},
              {949, "\xB0\xA1", u"\uAC00"},
              {50225, "\x1B$)C\x0E\x30\x21\x0F", u"\uAC00"}};
  std::vector<std::thread> threads;
  std::vector<int> wrong(4, 0);
  for (int& count : wrong)
    threads.emplace_back([&rows, &count] {
      for (int round = 0; round < 50; ++round)
        for (const auto& row : rows) count += Widen(row.bytes, row.codePage) != row.units;
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, std::vector<int>(4, 0));
}

TEST(TextConv, CharsetNamesNormaliseBeforeTheLookup) {
  LocaleScope locale("C");
  const struct {
    const char* name;
    unsigned int codePage;
  } found[] = {{"UTF-8", 65001},       {"utf_8", 65001},        {"UTF 8", 65001},
               {"ISO-8859-1", 28591},  {"iso_8859-15", 28605},  {"US-ASCII", 20127},
               {"ascii", 20127},       {"Shift_JIS", 932},      {"windows-1252", 1252},
               {"iso-8859-8-i", 38598}, {"ucs-4", 12000},       {"utf-32le", 12000},
               {"ucs-2le", 1200},      {"unicodeFEFF", 1200},   {"utf\xE9-8", 65001},
               {"x-mac-ce", 10029},    {"..u.t.f.1.6.b.e..", 1201}};
  for (const auto& row : found) {
    unsigned int codePage = 0;
    EXPECT_TRUE(GetCodePage(row.name, codePage)) << row.name;
    EXPECT_EQ(codePage, row.codePage) << row.name;
  }
  const std::string padded31 = "utf-8" + std::string(26, '-');
  unsigned int codePage = 7;
  EXPECT_TRUE(GetCodePage(padded31.c_str(), codePage));
  EXPECT_EQ(codePage, 65001u);
  codePage = 7;
  for (const std::string& name : {padded31 + "-", std::string("latin1"), std::string("cp1252"),
                                 std::string(""), std::string("-_. "), std::string("utf8x"),
                                 std::string("utf")}) {
    EXPECT_FALSE(GetCodePage(name.c_str(), codePage)) << name;
    EXPECT_EQ(codePage, 7u);
  }
  EXPECT_TRUE(GetCodePage(nullptr, codePage));
  EXPECT_EQ(codePage, 20127u);
}

TEST(TextConv, EveryCharsetConvertsOrHasNoConverter) {
  int converting = 0;
  for (const detail::Charset& row : detail::kCharsets) {
    unsigned int codePage = 0;
    ASSERT_TRUE(GetCodePage(row.name, codePage));
    ASSERT_EQ(codePage, row.codePage);
    std::string narrow;
    std::u16string wide;
    if (HasConverter(codePage)) {
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
  const struct {
    unsigned int codePage;
    std::string bytes;
    std::u16string units;
  } rows[] = {
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
      {20127, "abc", u"abc"},
      {12001, std::string("\0\x01\xF6\0", 4), u"\U0001F600"},
      // IBM 924 is 1047 with the euro where 1047 has the currency sign, as in 1140 and 37.
      {20924, "\x9F\xC1", u"\u20AC" u"A"},
      {10082, "a\xA9\xE8", u"a\u0160\u010D"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Widen(row.bytes, row.codePage), row.units) << row.codePage;
    EXPECT_EQ(Narrow(row.units, row.codePage), row.bytes) << row.codePage;
  }
}

TEST(TextConv, BadInputIsReplacedAsWindowsDoes) {
  // UTF-8: one U+FFFD for each maximal ill-formed subpart, both through the fast path and
  // through the platform call.
  const struct {
    std::string bytes;
    std::u16string units;
  } utf8[] = {{"\xC3\x28", u"\uFFFD("},
              {"\xED\xA0\x80z", u"\uFFFD\uFFFD\uFFFDz"},
              {"a\xF0\x9F\x98", u"a\uFFFD"},
              {"\xE2\x82\x41", u"\uFFFDA"},
              {"\xF8\x88\x80\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"},
              {"\xC0\xAF\xF4\x90", u"\uFFFD\uFFFD\uFFFD\uFFFD"}};
  for (const auto& row : utf8) {
    EXPECT_EQ(Widen(row.bytes, 65001), row.units);
    char16_t units[16];
    const int written = Win32::MultiByteToWideChar(65001, 0, row.bytes.data(),
                                                   static_cast<int>(row.bytes.size()), units, 16);
    EXPECT_EQ(std::u16string(units, static_cast<std::size_t>(written)), row.units);
  }
  EXPECT_EQ(Narrow(u"a\xD800" u"b\xDC00", 65001), "a\xEF\xBF\xBD" "b\xEF\xBF\xBD");
  EXPECT_EQ(Narrow(u"\xD83D", 65001), "\xEF\xBF\xBD");
  // Narrowing to a Windows page writes the page's '?'; a lead byte that ends the text widens
  // to the katakana middle dot.
  EXPECT_EQ(Narrow(u"a\u4E00\U0001F600", 1252), "a???");
  EXPECT_EQ(Narrow(u"\u00E9", 932), "?");
  EXPECT_EQ(Narrow(u"A\u4E00", 37), "\xC1\x6F");
  EXPECT_EQ(Widen("a\x82", 932), u"a\u30FB");
  EXPECT_EQ(Widen("\xE9", 20127), u"i");
  EXPECT_EQ(Widen(std::string("A\0\x3D", 3), 1200), u"A\uFFFD");
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
  std::u16string cjk(1000, u'\u4E00');
  EXPECT_EQ(Narrow(cjk, 65001).size(), 3000u);
}

TEST(TextConv, FailuresCarryTheirClassMessageContextAndError) {
  std::u16string wide = u"kept";
  std::string narrow = "kept";
  // An empty text never reaches the platform.
  TextWidenCodePage("", 0, wide, 12345);
  TextNarrowCodePage(u"", npos, narrow, 12345);
  EXPECT_EQ(wide, u"");
  EXPECT_EQ(narrow, "");
  Thrown thrown = Catch<TextConversionError>([&] { TextWidenCodePage("a", 1, wide, 12345); });
  EXPECT_EQ(thrown.message, "Unicode conversion failed");
  EXPECT_EQ(thrown.function, "Tessera::TextWidenCodePage");
  EXPECT_EQ(thrown.win32, 87u);
  thrown = Catch<TextConversionError>([&] { TextNarrowCharset(u"a", 1, narrow, "x-IA5"); });
  EXPECT_EQ(thrown.message, "native charset conversion failed");
  EXPECT_EQ(thrown.function, "Tessera::TextNarrowCodePage");
  EXPECT_EQ(thrown.win32, 87u);
  thrown = Catch<TextConversionError>([&] { TextWidenCharset("", 0, wide, "latin1"); });
  EXPECT_EQ(thrown.message, "unsupported charset");
  EXPECT_EQ(thrown.function, "Tessera::TextWidenCharset");
  EXPECT_EQ(thrown.win32, 0u);
  thrown = Catch<TextConversionError>([&] { TextNarrowCharset(u"a", 1, narrow, "x"); });
  EXPECT_EQ(thrown.message, "unsupported charset");
  EXPECT_EQ(thrown.function, "Tessera::TextNarrowCharset");

  EXPECT_EQ(IConv::Create("utf-8", "latin1"), nullptr);
  thrown = Catch<Plaint::LogicError>([] { IConv conv("utf-8", "latin1"); });
  EXPECT_EQ(thrown.message, "iconv support disabled");
  EXPECT_EQ(thrown.function, "Tessera::IConv::IConv");
  std::string charset = "kept";
  thrown = Catch<Plaint::LogicError>([&] { IConv::GetSystemCharset(charset); });
  EXPECT_EQ(thrown.message, "iconv support disabled");
  EXPECT_EQ(thrown.function, "Tessera::IConv::GetSystemCharset");
  EXPECT_EQ(charset, "kept");
}

TEST(TextConv, PlatformCallsGiveTheWindowsResults) {
  using namespace Win32;
  char16_t units[8];
  char bytes[8];
  SetLastError(0);
  // Sizing, the NUL of a -1 length, and a target too small.
  EXPECT_EQ(MultiByteToWideChar(932, 0, "a\x82\xA0", 3, nullptr, 0), 2);
  EXPECT_EQ(MultiByteToWideChar(1252, 0, "ab", -1, units, 8), 3);
  EXPECT_EQ(units[2], u'\0');
  EXPECT_EQ(MultiByteToWideChar(932, 0, "a\x82\xA0", 3, units, 1), 0);
  EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(WideCharToMultiByte(932, 0, u"a\u3042", 2, nullptr, 0, nullptr, nullptr), 3);
  EXPECT_EQ(WideCharToMultiByte(932, 0, u"a\u3042", 2, bytes, 2, nullptr, nullptr), 0);
  EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(WideCharToMultiByte(65001, 0, u"\u20AC", 1, bytes, 2, nullptr, nullptr), 0);
  EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
  // A default character of the caller's, and the report of its use.
  BOOL used = 0;
  EXPECT_EQ(WideCharToMultiByte(1252, 0, u"a\u4E00", 2, bytes, 8, "#", &used), 2);
  EXPECT_EQ(std::string(bytes, 2), "a#");
  EXPECT_TRUE(used);
  EXPECT_EQ(WideCharToMultiByte(65001, 0, u"a", 1, bytes, 8, "#", nullptr), 0);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  // Refusals.
  SetLastError(0);
  EXPECT_EQ(MultiByteToWideChar(20105, 0, "a", 1, units, 8), 0);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  SetLastError(0);
  EXPECT_EQ(MultiByteToWideChar(1252, 0, "a", 0, units, 8), 0);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(MultiByteToWideChar(1252, 8, "a", 1, units, 8), 0);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_FLAGS);
}

TEST(TextConv, DefaultPageFollowsTheLocaleCodeset) {
  {
    LocaleScope locale("C");
    EXPECT_EQ(Win32::GetACP(), 20127u);
    std::u16string out;
    TextWiden("a\xE9", npos, out);
    EXPECT_EQ(out, u"ai");
  }
  REQUIRE_LOCALE(utf8, "C.UTF-8");
  EXPECT_EQ(Win32::GetACP(), 65001u);
  std::u16string wide;
  std::string narrow;
  TextWiden("\xC3\xA9\xFF", npos, wide);
  EXPECT_EQ(wide, u"\u00E9\uFFFD");
  TextNarrow(u"\u20AC", npos, narrow);
  EXPECT_EQ(narrow, "\xE2\x82\xAC");
}
