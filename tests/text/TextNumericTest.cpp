#include <tessera/text/TextNumeric.h>

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

using Tessera::npos;
using Tessera::TextNumeric;

namespace {

// The value of a narrow text, or none; wide texts read alike (TextNumericFuzz checks that).
template <class T>
std::optional<T> Read(const char* text, unsigned int base = 10) {
  T value{};
  return TextNumeric<char, T>(text, npos, value, base) ? std::optional<T>(value) : std::nullopt;
}

}  // namespace

// Every type, base and text against a slow reference is the fuzz target's (TextNumericFuzz);
// here the limits of the widths that are this library's own, the rounding of each step,
// and what a failure leaves.
TEST(TextNumeric, IntegerLimitsAndSigns) {
  // long stays 32 bits wide whatever the platform's long is; a most negative value has a
  // magnitude beyond the largest and is refused.
  EXPECT_EQ(Read<long>("-2147483647"), -2147483647L);
  EXPECT_FALSE(Read<long>("2147483648"));
  EXPECT_FALSE(Read<long>("-2147483648"));
  EXPECT_EQ(Read<unsigned long>("4294967295"), 4294967295UL);
  EXPECT_FALSE(Read<unsigned long>("4294967296"));
  EXPECT_FALSE(Read<unsigned long>("-0"));  // no sign but "+" for unsigned types
  EXPECT_EQ(Read<unsigned long long>("18446744073709551615"), 18446744073709551615ULL);
  EXPECT_EQ(Read<int>("zZ", 36), 1295);
  for (const char* bad : {"+-5", "5-", " 5", ""}) EXPECT_FALSE(Read<int>(bad)) << bad;
  EXPECT_FALSE(Read<int>("1", 37));
  EXPECT_FALSE(Read<int>("0x1F", 16));
}

TEST(TextNumeric, FloatingSteps) {
  EXPECT_TRUE(std::signbit(Read<double>("-.").value_or(1)));
  // Each step rounds to the type, so 0.3 is 3 * (1 / 10), not the double nearest 0.3.
  EXPECT_EQ(Read<double>("0.3"), 0.30000000000000004);
  EXPECT_EQ(Read<float>("0.3"), 3 * (1.0f / 10));
  // long double computes as double, so a text reads the same everywhere.
  EXPECT_EQ(Read<long double>("9007199254740993"), 9007199254740992.0L);
  EXPECT_FALSE(Read<double>("1e5"));
}

TEST(TextNumeric, FailureLeavesTheValueAndEveryUnitCounts) {
  int value = 77;
  unsigned short wide = 9;
  const std::pair<const char*, unsigned int> bad[] = {{"\0005", npos}, {"12", 0}, {"12\0003", 4}};
  for (const auto& [text, length] : bad) EXPECT_FALSE(TextNumeric(text, length, value, 10)) << length;
  // Full-width digits and units whose low byte is a digit are no digits.
  for (const char16_t* bad : {u"\uff11\uff12", u"\u0131"}) EXPECT_FALSE(TextNumeric(bad, npos, wide, 36));
  EXPECT_EQ(std::make_pair(value, wide), std::make_pair(77, static_cast<unsigned short>(9)));
  EXPECT_TRUE(TextNumeric("12\0003", 2, value, 10));
  EXPECT_EQ(value, 12);
}

TEST(TextNumeric, ViewsReadTheirWholeLength) {
  const std::string text("-12\0003", 6);
  int value = 77;
  EXPECT_FALSE(TextNumeric(std::string_view(text), value, 10));
  EXPECT_TRUE(TextNumeric(std::string_view(text).substr(0, 3), value, 10));
  double wide = 0;
  EXPECT_TRUE(TextNumeric(std::u16string_view(u"ff.8"), wide, 16));
  EXPECT_EQ(std::make_pair(value, wide), std::make_pair(-12, 255.5));
  // A view too long for a 32-bit length is refused before any character is looked at.
  const std::string_view huge(text.data(), std::size_t{Tessera::npos});
  EXPECT_FALSE(TextNumeric(huge, value, 10));
  EXPECT_EQ(value, -12);
}
