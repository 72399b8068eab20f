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

TEST(TextNumeric, IntegerLimitsAndSigns) {
  ExpectLimits<signed char>("127", "128");
  ExpectLimits<unsigned char>("255", "256");
  ExpectLimits<short>("32767", "32768");
  ExpectLimits<unsigned short>("65535", "65536");
  ExpectLimits<int>("2147483647", "2147483648");
  ExpectLimits<unsigned int>("4294967295", "4294967296");
  // long stays 32 bits wide whatever the platform's long is.
  ExpectLimits<long>("2147483647", "2147483648");
  ExpectLimits<unsigned long>("4294967295", "4294967296");
  ExpectLimits<long long>("9223372036854775807", "9223372036854775808");
  ExpectLimits<unsigned long long>("18446744073709551615", "18446744073709551616");
  EXPECT_EQ(Read<unsigned long long>("ffffffffffffffff", 16), 18446744073709551615ull);
  for (const char* bad : {"+-5", "--5", "5-", "-+5", " 5", "1 000", ""})
    EXPECT_FALSE(Read<int>(bad)) << bad;
}

TEST(TextNumeric, BasesAndDigits) {
  EXPECT_FALSE(Read<int>("1", 37) || Read<double>("-", 37) || Read<int>("0", 0) ||
               Read<int>("1", 1) || Read<int>("FF", 10) || Read<int>("0x1F", 16) ||
               Read<unsigned char>("100", 16));
  EXPECT_EQ(Read<int>("+", 0), 0);
  EXPECT_EQ(Read<int>("000", 1), 0);
  for (const char* text : {"ff", "FF", "fF"}) EXPECT_EQ(Read<unsigned char>(text, 16), 255);
  EXPECT_EQ(Read<int>("zZ", 36), 1295);
}

TEST(TextNumeric, FloatingSteps) {
  const std::pair<const char*, double> reads[] = {{"1.", 1.0}, {".5", 0.5}, {".", 0.0}};
  for (const auto& [text, value] : reads) EXPECT_EQ(Read<double>(text), value) << text;
  EXPECT_TRUE(std::signbit(Read<double>("-.").value_or(1)));
  EXPECT_TRUE(std::signbit(Read<float>("-0").value_or(1)));
  for (const char* bad : {"1.2.3", "..", "1e5", "1,5", "+-1"}) EXPECT_FALSE(Read<double>(bad));
  // Each step rounds to the type, so 0.3 is 3 * (1 / 10), not the double nearest 0.3.
  EXPECT_EQ(Read<double>("0.3"), 0.30000000000000004);
  EXPECT_EQ(Read<float>("0.3"), 3 * (1.0f / 10));
  EXPECT_EQ(Read<float>("16777217"), 16777216.0f);
  // long double computes as double, so a text reads the same everywhere.
  EXPECT_EQ(Read<long double>("0.3"), static_cast<long double>(0.30000000000000004));
  EXPECT_EQ(Read<long double>("9007199254740993"), 9007199254740992.0L);
  EXPECT_EQ(Read<float>(("-" + std::string(400, '9')).c_str()),
            -std::numeric_limits<float>::infinity());
}

TEST(TextNumeric, FailureLeavesTheValueAndEveryUnitCounts) {
  int value = 77;
  double real = 1.5;
  unsigned short wide = 9;
  EXPECT_FALSE(TextNumeric("\0005", npos, value, 10) || TextNumeric("12", 0, value, 10) ||
               TextNumeric("12\0003", 4, value, 10) || TextNumeric("1.5.", 4, real, 10));
  // Full-width digits, superscripts and units whose low byte is a digit are no digits.
  const char16_t lowByteOne[] = {0x0131, 0};
  for (const char16_t* bad : {u"\uff11\uff12", u"1\u00b2", lowByteOne})
    EXPECT_FALSE(TextNumeric(bad, npos, wide, 36));
  EXPECT_TRUE(value == 77 && real == 1.5 && wide == 9);
  EXPECT_TRUE(TextNumeric("12\0003", 2, value, 10));
  EXPECT_EQ(value, 12);
}
