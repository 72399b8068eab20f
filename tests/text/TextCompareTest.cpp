#include <tessera/text/TextCompare.h>

#include <gtest/gtest.h>

#include <string>

#include "text/LocaleScope.h"

using namespace Tessera;

namespace {

using Narrow = int (*)(const char*, unsigned int, const char*, unsigned int);
using Wide = int (*)(const char16_t*, unsigned int, const char16_t*, unsigned int);
using NarrowSearch = unsigned int (*)(const char*, unsigned int, const char*, unsigned int);

}  // namespace

TEST(TextCompare, LengthAndNulRulesOfAllFour) {
  for (Narrow compare : {Narrow(TextCompare), Narrow(TextCompareCaseless), Narrow(TextCollate),
                         Narrow(TextCollateCaseless)}) {
    EXPECT_EQ(compare(nullptr, 0, "x", 0), 0);
    EXPECT_EQ(compare("\0abc", npos, "", npos), 0);
    EXPECT_EQ(compare("abc", 3, "abcd", 4), -1);
    EXPECT_EQ(compare("abcd", npos, "abc", npos), 1);
    EXPECT_EQ(compare("abcdef", 3, "abcxyz", 3), 0);
    // The bounded compare stops at a NUL common to both texts.
    EXPECT_EQ(compare("ab\0x", 4, "ab\0y", 4), 0);
    EXPECT_EQ(compare("ab\0x", 4, "ab\0yz", 5), -1);
    EXPECT_LT(compare("ab\0x", 4, "abcx", 4), 0);
  }
  for (Wide compare : {Wide(TextCompare), Wide(TextCompareCaseless), Wide(TextCollate),
                       Wide(TextCollateCaseless)}) {
    EXPECT_EQ(compare(u"", 0, u"", npos), 0);
    EXPECT_EQ(compare(u"abc", 3, u"abcd", 4), -1);
    EXPECT_EQ(compare(u"abcd", npos, u"abc", npos), 1);
    EXPECT_EQ(compare(u"ab\0x", 4, u"ab\0y", 4), 0);
    EXPECT_EQ(compare(u"ab\0x", 4, u"ab\0yz", 5), -1);
  }
  // Bytes and code units compare unsigned.
  EXPECT_GT(TextCompare("\xff", 1, "\x01", 1), 0);
  EXPECT_GT(TextCompare(u"\uffff", 1, u"\u0001", 1), 0);
  EXPECT_LT(TextCompare(u"\U0001F600", 2, u"\uffff", 1), 0);
}

TEST(TextCompare, ClassicLocaleFoldsAsciiAndOrdersByCode) {
  LocaleScope scope("C");
  EXPECT_EQ(TextCompareCaseless(u"Hello", 5, u"hELLO", 5), 0);
  EXPECT_NE(TextCompareCaseless(u"\u00c9", 1, u"\u00e9", 1), 0);
  // Folding is to lower case: '_' lies between the two cases.
  EXPECT_LT(TextCompareCaseless("_", 1, "A", 1), 0);
  EXPECT_LT(TextCompareCaseless(u"_", 1, u"A", 1), 0);
  EXPECT_GT(TextCollate("a", 1, "B", 1), 0);
  EXPECT_GT(TextCollate(u"a", 1, u"B", 1), 0);
  EXPECT_LT(TextCollateCaseless("a", 1, "B", 1), 0);
  EXPECT_EQ(TextCollateCaseless(u"ABC", 3, u"abc", 3), 0);
}

TEST(TextCompare, Utf8LocaleFoldsWideTextAndCollates) {
  REQUIRE_LOCALE(scope, "en_US.UTF-8");
  EXPECT_EQ(TextCompareCaseless(u"\u00c9T\u00c9", 3, u"\u00e9t\u00e9", 3), 0);
  EXPECT_EQ(TextCompareCaseless(u"\u0416", 1, u"\u0436", 1), 0);
  // Narrow text folds byte by byte, so the bytes of a UTF-8 letter stay as they are.
  EXPECT_NE(TextCompareCaseless("\xc3\x89", 2, "\xc3\xa9", 2), 0);
  EXPECT_LT(TextCollate("a", 1, "B", 1), 0);
  EXPECT_LT(TextCollate(u"a", 1, u"B", 1), 0);
  EXPECT_LT(TextCollate("\xc3\xa9", 2, "f", 1), 0);
  EXPECT_GT(TextCollate(u"\u00e9", 1, u"e", 1), 0);
  EXPECT_EQ(TextCollateCaseless(u"\u00c9", 1, u"\u00e9", 1), 0);
  EXPECT_EQ(TextFindCaseless(u"caf\u00c9 au lait", npos, u"\u00e9", 1), 3u);
  EXPECT_EQ(TextFindFirstOfCaseless(u"xx\u0416", npos, u"\u0436", 1), 2u);
}

TEST(TextCompare, TurkishLocaleFoldsCapitalIToDotless) {
  REQUIRE_LOCALE(scope, "tr_TR.UTF-8");
  EXPECT_NE(TextCompareCaseless(u"I", 1, u"i", 1), 0);
  EXPECT_EQ(TextCompareCaseless(u"I", 1, u"\u0131", 1), 0);
  EXPECT_EQ(TextFindCaseless(u"KIRMIZI", npos, u"\u0131z", 2), 4u);
  EXPECT_EQ(TextFindCaseless(u"KIRMIZI", npos, u"iz", 2), npos);
}

// Searches over explicit lengths, with NULs, are the fuzz target's (TextSearchFuzz) against
// the plain scan; here the measured (npos) texts and the wide set membership.
TEST(TextFind, MeasuredTextsAndWideSets) {
  for (NarrowSearch search : {NarrowSearch(TextFind), NarrowSearch(TextRFind),
                              NarrowSearch(TextFindCaseless), NarrowSearch(TextRFindCaseless)}) {
    EXPECT_EQ(search("", npos, "", npos), npos);
    EXPECT_EQ(search("abc", npos, "abc", npos), 0u);
  }
  EXPECT_EQ(TextRFind(u"abab", npos, u"ab", npos), 2u);
  EXPECT_EQ(TextFindFirstOfCaseless(u"xyZ", npos, u"z", npos), 2u);
  // A unit that only shares its low byte with a member is no member.
  EXPECT_EQ(TextFindFirstOf(u"\u0161b", npos, u"\u0061\u0160b", npos), 1u);
}
