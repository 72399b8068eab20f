#include <tessera/text/StringTokenizer.h>
#include <tessera/text/TextCompare.h>
#include <tessera/text/TextConv.h>
#include <tessera/text/Utf8.h>

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include <tessera/frame/Errors.h>

using namespace Tessera;

namespace {

// Class-free summary of what an operation threw: message, context function, Win32 error.
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

TEST(TextViews, GiveThePointerResultsAndRefuseWhatNoLengthCanHold) {
  const std::string_view nul("ab\0x", 4);
  EXPECT_EQ(std::make_tuple(TextCompare(nul, std::string_view("ab\0yz", 5)),
                            TextCompareCaseless(u"ABC", u"abcd"), TextFind(nul, "x"),
                            TextRFind(u"abab", u"ab"), TextFindFirstOfCaseless("xyZ", "z")),
            std::make_tuple(-1, -1, 3u, 2u, 2u));
  std::u16string wide;
  std::string narrow;
  char16_t unit = 0;
  TextWidenUtf8(std::string("\xC3\xA9\0", 3), wide);
  TextNarrowUtf8(wide, narrow);
  const unsigned int taken = WidenCharUtf8(unit, "\xC3\xA9" "a");
  EXPECT_EQ(std::make_tuple(wide, narrow, taken, unit),
            std::make_tuple(std::u16string(u"\u00E9\0", 2), std::string("\xC3\xA9\0", 3), 2u,
                            u'\u00E9'));
  TextWidenCharset(std::string("caf\xE9"), wide, "ISO-8859-1");
  EXPECT_EQ(wide, u"caf\u00E9");

  if constexpr (sizeof(std::size_t) > sizeof(unsigned int)) {
    // Sizes of npos and more never reach the data: only the first bytes are real.
    const std::string_view huge("ab", npos);
    const std::u16string_view hugeWide(u"ab", npos);
    EXPECT_EQ(Catch<Plaint::LengthError>([&] { return TextCollate(huge, "a"); }),
              Thrown("text too long", "Tessera::TextCollate", 0));
    const unsigned int cut = WidenCharUtf8(unit, huge);
    EXPECT_EQ(std::make_tuple(TextFind(huge, "a"), TextRFind(u"a", hugeWide), cut, unit),
              std::make_tuple(npos, npos, 1u, u'a'));
    wide = u"kept";
    EXPECT_EQ(Catch<TextConversionError>([&] { TextWidenUtf8(huge, wide); }),
              Thrown("text too long", "Tessera::TextWidenUtf8", 0));
    EXPECT_EQ(wide, u"kept");
    EXPECT_EQ(Catch<TextConversionError>([&] { TextNarrowUtf8(hugeWide, narrow); }),
              Thrown("text too long", "Tessera::TextNarrowUtf8", 0));
    EXPECT_EQ(Catch<TextConversionError>([&] { TextWidenCharset(huge, wide, "utf-8"); }),
              Thrown("Unicode conversion failed", "Tessera::TextWidenCodePage", 87));
    EXPECT_EQ(Catch<TextConversionError>([&] { TextNarrowCharset(hugeWide, narrow, "x"); }),
              Thrown("unsupported charset", "Tessera::TextNarrowCharset", 0));
    EXPECT_EQ(Catch<TextConversionError>([&] { TextNarrow(hugeWide, narrow); }),
              Thrown("native charset conversion failed", "Tessera::TextNarrowCodePage", 87));

    BasicStringTokenizer<char> tokenizer(std::string_view("x,y"), ",", DelimitModeAnyOf);
    EXPECT_EQ(Catch<Plaint::LengthError>([&] { tokenizer.Rebase(huge, 1); }),
              Thrown("text too long", "Tessera::BasicStringTokenizer::Rebase", 0));
    EXPECT_EQ(tokenizer.GetTextLength(), 3u);
  }
}

TEST(TextViews, TokensComeOutAsViewsAndMovesLeaveAnEmptyTokenizer) {
  BasicStringTokenizer<char16_t> source(std::u16string_view(u"a,,b c"), u",", DelimitModeAnyOf);
  std::u16string_view first, second, third, kept = u"kept";
  ASSERT_TRUE(source.Next(first));
  BasicStringTokenizer<char16_t> moved(std::move(source));
  EXPECT_TRUE(moved.Next(second, nullptr, DelimitModeAnyOf));
  EXPECT_TRUE(moved.Next(third));
  EXPECT_FALSE(moved.Next(kept));
  EXPECT_EQ(std::make_tuple(first, second, third, kept),
            std::make_tuple(u"a", u",,b", u"c", u"kept"));
  EXPECT_EQ(std::make_tuple(source.GetTextStart(), source.GetTextLength(), source.Next(kept)),
            std::make_tuple(nullptr, 0u, false));
  source = std::move(moved);
  EXPECT_EQ(std::make_tuple(source.GetPosition(), moved.GetTextLength()), std::make_tuple(6u, 0u));
}
