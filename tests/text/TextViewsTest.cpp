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

// "message in context function, Win32 error" of what `operation` threw as `Error`, or "".
template <class Error, class Operation>
std::string Thrown(Operation operation) {
  try {
    operation();
  } catch (const Error& error) {
    const std::uint32_t* code = error.template GetInfo<Plaint::ErrorInfo_Win32Error>();
    return std::string(error.what()) + " in " + error.GetContext().function + ", " +
           std::to_string(code != nullptr ? *code : 0);
  }
  return "";
}

}  // namespace

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
    EXPECT_EQ(Thrown<Plaint::LengthError>([&] { return TextCollate(huge, "a"); }),
              "text too long in Tessera::TextCollate, 0");
    EXPECT_EQ(Thrown<TextConversionError>([&] { TextWidenUtf8(huge, wide); }),
              "text too long in Tessera::TextWidenUtf8, 0");
    EXPECT_EQ(wide, std::u16string(u"\u00E9\0", 2));
    EXPECT_EQ(Thrown<TextConversionError>([&] { TextWidenCharset(huge, wide, "utf-8"); }),
              "Unicode conversion failed in Tessera::TextWidenCodePage, 87");
    EXPECT_EQ(Thrown<TextConversionError>([&] { TextNarrowCharset(hugeWide, narrow, "x"); }),
              "unsupported charset in Tessera::TextNarrowCharset, 0");
    EXPECT_EQ(Thrown<Plaint::LengthError>([&] { source.Rebase(hugeWide, 1); }),
              "text too long in Tessera::BasicStringTokenizer::Rebase, 0");
    EXPECT_EQ(source.GetTextLength(), 6u);
  }
}
