#include <tessera/text/TextCompare.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>

#include "text/LocaleScope.h"

using namespace Tessera;

namespace {

using NarrowCompare = int (*)(const char*, unsigned int, const char*, unsigned int);
using WideCompare = int (*)(const char16_t*, unsigned int, const char16_t*, unsigned int);

const NarrowCompare kNarrowCompares[] = {TextCompare, TextCompareCaseless, TextCollate,
                                         TextCollateCaseless};
const WideCompare kWideCompares[] = {TextCompare, TextCompareCaseless, TextCollate,
                                     TextCollateCaseless};

// The plain scan that the searches must agree with: every candidate judged by TextCompare.
unsigned int ReferenceFind(const std::string& text, const std::string& sought, bool reverse) {
  const auto n = static_cast<unsigned int>(text.size());
  const auto m = static_cast<unsigned int>(sought.size());
  if (m == 0 || m > n) return npos;
  for (unsigned int k = 0; k <= n - m; ++k) {
    const unsigned int i = reverse ? n - m - k : k;
    if (TextCompare(text.data() + i, m, sought.data(), m) == 0) return i;
  }
  return npos;
}

}  // namespace

TEST(TextCompare, LengthRulesOfAllFourComparisons) {
  for (NarrowCompare compare : kNarrowCompares) {
    EXPECT_EQ(compare("", 0, "", 0), 0);
    EXPECT_EQ(compare(nullptr, 0, "x", 0), 0);
    EXPECT_EQ(compare("\0abc", npos, "", npos), 0);
    EXPECT_EQ(compare("abc", 3, "abcd", 4), -1);
    EXPECT_EQ(compare("abcd", 4, "abc", 3), 1);
    EXPECT_EQ(compare("abc", npos, "abcd", npos), -1);
    EXPECT_EQ(compare("abcdef", 3, "abcxyz", 3), 0);
    // The bounded compare stops at a NUL common to both texts.
    EXPECT_EQ(compare("ab\0x", 4, "ab\0y", 4), 0);
    EXPECT_EQ(compare("ab\0x", 4, "ab\0yz", 5), -1);
    EXPECT_LT(compare("ab\0x", 4, "abcx", 4), 0);
    EXPECT_GT(compare("b", 1, "abc", 3), 0);
  }
  for (WideCompare compare : kWideCompares) {
    EXPECT_EQ(compare(u"", 0, u"", 0), 0);
    EXPECT_EQ(compare(u"abc", 3, u"abcd", 4), -1);
    EXPECT_EQ(compare(u"abcd", npos, u"abc", npos), 1);
    EXPECT_EQ(compare(u"ab\0x", 4, u"ab\0y", 4), 0);
    EXPECT_EQ(compare(u"ab\0x", 4, u"ab\0yz", 5), -1);
    EXPECT_LT(compare(u"ab\0x", 4, u"abcx", 4), 0);
  }
  // Code units compare as unsigned 16-bit values, bytes as unsigned 8-bit values.
  EXPECT_GT(TextCompare(u"\uffff", 1, u"\u0001", 1), 0);
  EXPECT_GT(TextCompare("\xff", 1, "\x01", 1), 0);
  EXPECT_LT(TextCompare(u"\U0001F600", 2, u"\uffff", 1), 0);
}

TEST(TextCompare, ClassicLocaleRows) {
  LocaleScope scope("C");
  EXPECT_NE(TextCompare("Hello", 5, "hello", 5), 0);
  EXPECT_EQ(TextCompareCaseless("Hello", 5, "hELLO", 5), 0);
  EXPECT_EQ(TextCompareCaseless(u"Hello", 5, u"hELLO", 5), 0);
  // Only the 26 ASCII letters fold, and folding is to lower case: '_' lies between the cases.
  EXPECT_NE(TextCompareCaseless(u"\u00c9", 1, u"\u00e9", 1), 0);
  EXPECT_NE(TextCompareCaseless("\xc3\x89", 2, "\xc3\xa9", 2), 0);
  EXPECT_LT(TextCompareCaseless("_", 1, "A", 1), 0);
  EXPECT_LT(TextCompareCaseless(u"_", 1, u"A", 1), 0);
  // Collation is the order of the codes.
  EXPECT_GT(TextCollate("a", 1, "B", 1), 0);
  EXPECT_GT(TextCollate(u"a", 1, u"B", 1), 0);
  EXPECT_LT(TextCollateCaseless("a", 1, "B", 1), 0);
  EXPECT_LT(TextCollateCaseless(u"a", 1, u"B", 1), 0);
  EXPECT_EQ(TextCollateCaseless("ABC", 3, "abc", 3), 0);
  EXPECT_EQ(TextCollateCaseless(u"ABC", 3, u"abc", 3), 0);
}

TEST(TextCompare, Utf8LocaleRows) {
  REQUIRE_LOCALE(scope, "en_US.UTF-8");
  // Wide text folds by the locale; narrow text folds byte by byte, so UTF-8 letters stay.
  EXPECT_EQ(TextCompareCaseless(u"\u00c9T\u00c9", 3, u"\u00e9t\u00e9", 3), 0);
  EXPECT_EQ(TextCompareCaseless(u"\u0416", 1, u"\u0436", 1), 0);
  EXPECT_NE(TextCompareCaseless("\xc3\x89", 2, "\xc3\xa9", 2), 0);
  EXPECT_EQ(TextCompareCaseless("ABC", 3, "abc", 3), 0);
  EXPECT_NE(TextCompare(u"\u00c9", 1, u"\u00e9", 1), 0);
  // The locale's order puts a before B, unlike the codes.
  EXPECT_LT(TextCollate("a", 1, "B", 1), 0);
  EXPECT_LT(TextCollate(u"a", 1, u"B", 1), 0);
  EXPECT_LT(TextCollate("\xc3\xa9", 2, "f", 1), 0);
  EXPECT_LT(TextCollate(u"\u00e9", 1, u"f", 1), 0);
  EXPECT_GT(TextCollate(u"\u00e9", 1, u"e", 1), 0);
  EXPECT_EQ(TextCollateCaseless(u"\u00c9", 1, u"\u00e9", 1), 0);
  EXPECT_EQ(TextCollate("abc\0zz", 6, "abc\0yy", 6), 0);
  // Searches follow the same folding.
  EXPECT_EQ(TextFindCaseless(u"caf\u00c9 au lait", npos, u"\u00e9", 1), 3u);
  EXPECT_EQ(TextFindFirstOfCaseless(u"xx\u0416", npos, u"\u0436", 1), 2u);
}

TEST(TextCompare, TurkishLocaleFoldsDotlessI) {
  REQUIRE_LOCALE(scope, "tr_TR.UTF-8");
  EXPECT_NE(TextCompareCaseless(u"I", 1, u"i", 1), 0);
  EXPECT_EQ(TextCompareCaseless(u"I", 1, u"\u0131", 1), 0);
  EXPECT_EQ(TextFindCaseless(u"KIRMIZI", npos, u"\u0131z", 2), 4u);
  EXPECT_EQ(TextFindCaseless(u"KIRMIZI", npos, u"iz", 2), npos);
}

TEST(TextFind, EdgeCases) {
  using NarrowSearch = unsigned int (*)(const char*, unsigned int, const char*, unsigned int);
  for (NarrowSearch search :
       {static_cast<NarrowSearch>(TextFind), static_cast<NarrowSearch>(TextRFind),
        static_cast<NarrowSearch>(TextFindCaseless),
        static_cast<NarrowSearch>(TextRFindCaseless)}) {
    EXPECT_EQ(search("abc", 3, "", 0), npos);
    EXPECT_EQ(search("", 0, "", 0), npos);
    EXPECT_EQ(search("", npos, "", npos), npos);
    EXPECT_EQ(search("ab", 2, "abc", 3), npos);
    EXPECT_EQ(search("abc", 3, "abc", 3), 0u);
    EXPECT_EQ(search("abc", 3, "abd", 3), npos);
  }
  EXPECT_EQ(TextFind("abab", npos, "ab", npos), 0u);
  EXPECT_EQ(TextRFind("abab", npos, "ab", npos), 2u);
  EXPECT_EQ(TextFindCaseless("xABab", npos, "ab", npos), 1u);
  EXPECT_EQ(TextRFindCaseless("xABabX", npos, "AB", npos), 3u);
  EXPECT_EQ(TextFind(u"abab", npos, u"ab", npos), 0u);
  EXPECT_EQ(TextRFind(u"abab", npos, u"ab", npos), 2u);
  EXPECT_EQ(TextRFind(u"abab", npos, u"", npos), npos);
  EXPECT_EQ(TextFindCaseless(u"xABab", npos, u"ab", npos), 1u);
  EXPECT_EQ(TextRFindCaseless(u"xABabX", npos, u"AB", npos), 3u);
  // An explicit length reads past a NUL in the searched text.
  EXPECT_EQ(TextFind("ab\0cd", 5, "cd", 2), 3u);
  EXPECT_EQ(TextFind(u"ab\0cd", 5, u"cd", 2), 3u);
  EXPECT_EQ(TextFind("ab\0cd", npos, "cd", 2), npos);
  // A NUL in the sought text ends what must match, but the whole length must still fit.
  EXPECT_EQ(TextFind("xa\0c", 4, "a\0b", 3), 1u);
  EXPECT_EQ(TextFind("xa\0", 3, "a\0b", 3), npos);
  EXPECT_EQ(TextFind(u"xa\0c", 4, u"a\0b", 3), 1u);
  EXPECT_EQ(TextRFind("a\0ca\0d", 6, "a\0b", 3), 3u);
  EXPECT_EQ(TextFindCaseless("xA\0c", 4, "a\0b", 3), 1u);
}

TEST(TextFind, FindFirstOf) {
  EXPECT_EQ(TextFindFirstOf("abc", 3, "", 0), npos);
  EXPECT_EQ(TextFindFirstOf("", 0, "abc", 3), npos);
  EXPECT_EQ(TextFindFirstOf("hello, world", npos, " ,", npos), 5u);
  EXPECT_EQ(TextFindFirstOf("hello", npos, "o", npos), 4u);
  EXPECT_EQ(TextFindFirstOf("hello", npos, "xyz", npos), npos);
  EXPECT_EQ(TextFindFirstOf("ab\0c", 4, "\0", 1), 2u);
  EXPECT_EQ(TextFindFirstOf("ab\xe9", 3, "\xe9\xff", 2), 2u);
  EXPECT_EQ(TextFindFirstOfCaseless("xyZ", npos, "z", npos), 2u);
  EXPECT_EQ(TextFindFirstOfCaseless("xyz", npos, "QZ", npos), 2u);
  EXPECT_EQ(TextFindFirstOf("xyZ", npos, "z", npos), npos);
  EXPECT_EQ(TextFindFirstOf(u"", 0, u"abc", 3), npos);
  EXPECT_EQ(TextFindFirstOf(u"a\u0161b", npos, u"\u0061\u0160\u0162", npos), 0u);
  // A unit that shares its low byte with a member is no member.
  EXPECT_EQ(TextFindFirstOf(u"\u0161b", npos, u"\u0061\u0160\u0162b", npos), 1u);
  EXPECT_EQ(TextFindFirstOfCaseless(u"xyZ", npos, u"z", npos), 2u);
  std::u16string bigSet;
  for (char16_t c = 0x400; c < 0x480; ++c) bigSet += c;
  EXPECT_EQ(TextFindFirstOfCaseless(u"ab\u0401", npos, bigSet.data(), npos), 2u);
  EXPECT_EQ(TextFindFirstOf(u"ab\u0480\u047f", npos, bigSet.data(), npos), 3u);
}

TEST(TextFind, AgreesWithThePlainScan) {
  std::mt19937 random(20240611);
  // Small alphabets make many near misses for the candidate filter; long runs of one letter
  // defeat it and bring in the fallback.
  for (int round = 0; round < 3000; ++round) {
    const int alphabet = 1 + static_cast<int>(random() % 4);
    const std::size_t size = random() % (round < 2500 ? 80 : 5000);
    const std::size_t soughtSize = 1 + random() % (round % 10 == 0 ? 40 : 6);
    std::string text(size, 'a');
    std::string sought(soughtSize, 'a');
    for (char& c : text) c = static_cast<char>("ab\0c"[random() % alphabet]);
    for (char& c : sought) c = static_cast<char>("ab\0c"[random() % alphabet]);
    if (round % 7 == 0 && size >= soughtSize) text.replace(size - soughtSize, soughtSize, sought);
    const auto n = static_cast<unsigned int>(text.size());
    const auto m = static_cast<unsigned int>(sought.size());
    ASSERT_EQ(TextFind(text.data(), n, sought.data(), m), ReferenceFind(text, sought, false))
        << round;
    ASSERT_EQ(TextRFind(text.data(), n, sought.data(), m), ReferenceFind(text, sought, true))
        << round;
    std::u16string wideText(text.begin(), text.end());
    std::u16string wideSought(sought.begin(), sought.end());
    ASSERT_EQ(TextFind(wideText.data(), n, wideSought.data(), m),
              ReferenceFind(text, sought, false));
    ASSERT_EQ(TextRFind(wideText.data(), n, wideSought.data(), m),
              ReferenceFind(text, sought, true));
  }
  // A needle at the very end of a long text, at every alignment of the vector blocks.
  std::string text(4096 + 64, 'x');
  for (std::size_t tail = 0; tail < 64; ++tail) {
    std::string hay = text.substr(0, 4096 + tail) + "needle-12345";
    EXPECT_EQ(TextFind(hay.data(), npos, "needle-12345", npos), 4096 + tail);
    EXPECT_EQ(TextFind(hay.data(), npos, "needle-12346", npos), npos);
  }
}
