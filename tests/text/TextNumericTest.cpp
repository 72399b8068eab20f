#include <tessera/text/TextNumeric.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

using Tessera::npos;
using Tessera::TextNumeric;

namespace {

// Reads an ASCII text as narrow and as wide text; the two must agree.
template <class T>
std::optional<T> Read(const char* text, unsigned int base = 10) {
  const std::u16string wide(text, text + std::strlen(text));
  T narrowValue{}, wideValue{};
  const bool narrowOk = TextNumeric<char, T>(text, npos, narrowValue, base);
  const bool wideOk = TextNumeric<char16_t, T>(wide.data(), static_cast<unsigned int>(wide.size()),
                                               wideValue, base);
  EXPECT_EQ(narrowOk, wideOk) << text;
  if (!narrowOk) return std::nullopt;
  EXPECT_EQ(narrowValue, wideValue) << text;
  if constexpr (std::is_floating_point<T>::value) {
    EXPECT_EQ(std::signbit(narrowValue), std::signbit(wideValue)) << text;
  }
  return narrowValue;
}

// The largest value reads, one more doesn't, and the sign rules of the type hold.
template <class T>
void ExpectLimits(const std::string& largest, const std::string& beyond) {
  SCOPED_TRACE(largest);
  EXPECT_EQ(std::to_string(Read<T>(largest.c_str()).value_or(0)), largest);
  EXPECT_FALSE(Read<T>(beyond.c_str()));
  const auto negated = Read<T>(("-" + largest).c_str());
  EXPECT_EQ(negated ? std::to_string(*negated) : "none",
            std::is_signed<T>() ? "-" + largest : "none");
  // The most negative value has a magnitude beyond the largest.
  EXPECT_FALSE(Read<T>(("-" + beyond).c_str()));
  EXPECT_EQ(Read<T>("+"), T(0));
  EXPECT_EQ(Read<T>("-").has_value(), std::is_signed<T>::value);
  EXPECT_EQ(Read<T>("-0").has_value(), std::is_signed<T>::value);
  EXPECT_EQ(Read<T>("+5"), T(5));
}

}  // namespace

// Every type, base and text against a slow reference is the fuzz target's (TextNumericFuzz);
// here the limits of the widths that are this library's own, the rounding of each step,
// and what a failure leaves.
TEST(TextNumeric, IntegerLimitsAndSigns) {
  ExpectLimits<int>("2147483647", "2147483648");
  // long stays 32 bits wide whatever the platform's long is.
  ExpectLimits<long>("2147483647", "2147483648");
  ExpectLimits<unsigned long>("4294967295", "4294967296");
  ExpectLimits<unsigned long long>("18446744073709551615", "18446744073709551616");
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
