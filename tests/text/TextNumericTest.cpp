#include <tessera/text/TextNumeric.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <type_traits>

using Tessera::npos;
using Tessera::TextNumeric;

namespace {

// Reads an ASCII text as narrow and as wide text; the two must agree.
template <class T>
std::optional<T> Read(const char* text, unsigned int base = 10) {
  const std::u16string wide(text, text + std::strlen(text));
  T narrowValue{};
  T wideValue{};
  const bool narrowOk = TextNumeric<char, T>(text, npos, narrowValue, base);
  const bool wideOk = TextNumeric<char16_t, T>(wide.data(), static_cast<unsigned int>(wide.size()),
                                               wideValue, base);
  EXPECT_EQ(narrowOk, wideOk) << text;
  if (narrowOk && wideOk) {
    EXPECT_EQ(narrowValue, wideValue) << text;
    if constexpr (std::is_floating_point<T>::value) {
      EXPECT_EQ(std::signbit(narrowValue), std::signbit(wideValue)) << text;
    }
  }
  if (!narrowOk) return std::nullopt;
  return narrowValue;
}

template <class T>
void ExpectLimits(const char* largest, const char* beyond, bool isSigned) {
  SCOPED_TRACE(largest);
  const auto value = Read<T>(largest);
  ASSERT_TRUE(value.has_value());
  EXPECT_EQ(std::to_string(*value), largest);
  EXPECT_FALSE(Read<T>(beyond).has_value());
  const std::string negative = std::string("-") + largest;
  const auto negated = Read<T>(negative.c_str());
  EXPECT_EQ(negated.has_value(), isSigned);
  if (isSigned && negated) {
    EXPECT_EQ(std::to_string(*negated), negative);
  }
  // The most negative value has a magnitude beyond the largest: never read.
  EXPECT_FALSE(Read<T>((std::string("-") + beyond).c_str()).has_value());
}

}  // namespace

TEST(TextNumeric, IntegerLimitsOfEveryType) {
  ExpectLimits<signed char>("127", "128", true);
  ExpectLimits<unsigned char>("255", "256", false);
  ExpectLimits<short>("32767", "32768", true);
  ExpectLimits<unsigned short>("65535", "65536", false);
  ExpectLimits<int>("2147483647", "2147483648", true);
  ExpectLimits<unsigned int>("4294967295", "4294967296", false);
  // long stays 32 bits wide whatever the platform's long is.
  ExpectLimits<long>("2147483647", "2147483648", true);
  ExpectLimits<unsigned long>("4294967295", "4294967296", false);
  ExpectLimits<long long>("9223372036854775807", "9223372036854775808", true);
  ExpectLimits<unsigned long long>("18446744073709551615", "18446744073709551616", false);
  EXPECT_FALSE(Read<unsigned char>("300").has_value());
  EXPECT_FALSE(Read<unsigned long long>("99999999999999999999").has_value());
  EXPECT_EQ(Read<unsigned long long>("ffffffffffffffff", 16), 18446744073709551615ull);
  EXPECT_FALSE(Read<unsigned long long>("10000000000000000", 16).has_value());
  EXPECT_EQ(Read<int>("0000000000000000000042"), 42);
}

TEST(TextNumeric, SignRules) {
  EXPECT_EQ(Read<int>("+"), 0);
  EXPECT_EQ(Read<int>("-"), 0);
  EXPECT_EQ(Read<unsigned int>("+"), 0u);
  EXPECT_FALSE(Read<unsigned int>("-").has_value());
  EXPECT_EQ(Read<short>("-0"), 0);
  EXPECT_FALSE(Read<unsigned short>("-0").has_value());
  EXPECT_FALSE(Read<unsigned char>("-1").has_value());
  EXPECT_EQ(Read<signed char>("+5"), 5);
  EXPECT_EQ(Read<unsigned char>("+5"), 5);
  EXPECT_EQ(Read<unsigned long long>("+5"), 5u);
  EXPECT_EQ(Read<float>("+5"), 5.0f);
  EXPECT_EQ(Read<long double>("+5"), 5.0L);
  EXPECT_EQ(Read<long>("-2147483647"), -2147483647L);
  for (const char* bad : {"+-5", "--5", "5-", "5+", "-+5", " 5", "5 ", "1 000", ""})
    EXPECT_FALSE(Read<int>(bad).has_value()) << bad;
}

TEST(TextNumeric, BasesAndDigits) {
  EXPECT_FALSE(Read<int>("1", 37).has_value());
  EXPECT_FALSE(Read<double>("1", 37).has_value());
  EXPECT_FALSE(Read<int>("-", 37).has_value());
  // Base 0 takes no digit, base 1 only the digit 0.
  EXPECT_FALSE(Read<int>("0", 0).has_value());
  EXPECT_EQ(Read<int>("+", 0), 0);
  EXPECT_EQ(Read<int>("000", 1), 0);
  EXPECT_FALSE(Read<int>("1", 1).has_value());
  EXPECT_EQ(Read<unsigned char>("ff", 16), 255);
  EXPECT_EQ(Read<unsigned char>("FF", 16), 255);
  EXPECT_EQ(Read<unsigned char>("fF", 16), 255);
  EXPECT_FALSE(Read<unsigned char>("100", 16).has_value());
  EXPECT_FALSE(Read<int>("FF", 10).has_value());
  EXPECT_EQ(Read<int>("zZ", 36), 1295);
  EXPECT_EQ(Read<int>("-777", 8), -511);
  EXPECT_FALSE(Read<int>("0x1F", 16).has_value());
  EXPECT_FALSE(Read<int>("19", 9).has_value());
  EXPECT_EQ(Read<int>("18", 9), 17);
  // Characters next to the digit ranges are none.
  for (const char* bad : {"/", ":", "@", "[", "`", "{", "."})
    EXPECT_FALSE(Read<int>(bad, 36).has_value()) << bad;
}

TEST(TextNumeric, FloatingForms) {
  EXPECT_EQ(Read<double>("1."), 1.0);
  EXPECT_EQ(Read<double>(".5"), 0.5);
  EXPECT_EQ(Read<double>("."), 0.0);
  const auto negativeZero = Read<double>("-.");
  ASSERT_TRUE(negativeZero.has_value());
  EXPECT_TRUE(*negativeZero == 0.0 && std::signbit(*negativeZero));
  const auto minusZero = Read<float>("-0");
  ASSERT_TRUE(minusZero.has_value());
  EXPECT_TRUE(std::signbit(*minusZero));
  EXPECT_FALSE(Read<double>("1.2.3").has_value());
  EXPECT_FALSE(Read<double>("..").has_value());
  EXPECT_FALSE(Read<double>("1e5").has_value());
  EXPECT_FALSE(Read<double>("1,5").has_value());
  EXPECT_EQ(Read<double>("1e5", 15), 440.0);
  EXPECT_EQ(Read<double>("ff.8", 16), 255.5);
  EXPECT_EQ(Read<double>("-12.25"), -12.25);
  // Not correctly rounded: each step rounds to the type.
  EXPECT_EQ(Read<double>("0.3"), 0.30000000000000004);
  EXPECT_EQ(Read<double>("0.3"), 3 * (1.0 / 10));
  EXPECT_EQ(Read<float>("0.3"), 3 * (1.0f / 10));
  EXPECT_EQ(Read<float>("16777217"), 16777216.0f);
  // long double computes as double, so it reads the same everywhere.
  EXPECT_EQ(Read<long double>("0.3"), static_cast<long double>(0.30000000000000004));
  EXPECT_EQ(Read<long double>("9007199254740993"), 9007199254740992.0L);
  // No limit: too many digits give infinity.
  const std::string huge(400, '9');
  EXPECT_EQ(Read<double>(huge.c_str()), std::numeric_limits<double>::infinity());
  EXPECT_EQ(Read<float>(("-" + huge).c_str()), -std::numeric_limits<float>::infinity());
}

TEST(TextNumeric, FailureLeavesTheValueAndCountsEveryCharacter) {
  int value = 77;
  EXPECT_FALSE(TextNumeric("12x", npos, value, 10));
  EXPECT_FALSE(TextNumeric("", npos, value, 10));
  EXPECT_FALSE(
      TextNumeric("\0"
                  "5",
                  npos, value, 10));
  EXPECT_FALSE(TextNumeric("12", 0, value, 10));
  // An explicit length that takes in a NUL.
  EXPECT_FALSE(
      TextNumeric("12\0"
                  "3",
                  4, value, 10));
  EXPECT_EQ(value, 77);
  EXPECT_TRUE(
      TextNumeric("12\0"
                  "3",
                  2, value, 10));
  EXPECT_EQ(value, 12);
  double real = 1.5;
  EXPECT_FALSE(TextNumeric("1.5.", 4, real, 10));
  EXPECT_EQ(real, 1.5);

  // Whole 16-bit codes count: full-width digits and anything above 0x7F are no digits, nor
  // is a unit whose low byte is a digit.
  unsigned short wide = 9;
  EXPECT_FALSE(TextNumeric(u"\uff11\uff12", npos, wide, 10));
  EXPECT_FALSE(TextNumeric(u"1\u00b2", npos, wide, 10));
  const char16_t lowByteDigit[] = {0x0131, 0};
  EXPECT_FALSE(TextNumeric(lowByteDigit, npos, wide, 10));
  const char16_t lowByteSeven[] = {0x0137, 0};
  EXPECT_FALSE(TextNumeric(lowByteSeven, npos, wide, 10));
  EXPECT_EQ(wide, 9);
  EXPECT_TRUE(TextNumeric(u"65535", npos, wide, 10));
  EXPECT_EQ(wide, 65535);
  // Narrow bytes with the high bit set are no digits either.
  unsigned char byte = 3;
  EXPECT_FALSE(TextNumeric("\xB1", npos, byte, 16));
  EXPECT_EQ(byte, 3);
}
