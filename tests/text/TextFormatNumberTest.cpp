#include <tessera/text/TextFormatNumber.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <locale>
#include <random>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "text/LocaleScope.h"

using Tessera::TextFormatNumber;

namespace {

template <class T>
constexpr bool kIsByte =
    std::is_same<T, signed char>::value || std::is_same<T, unsigned char>::value;

// What a fresh stream writes, narrow and wide.
template <class T>
std::string StreamText(const T& value) {
  std::ostringstream stream;
  stream << value;
  return stream.str();
}

template <class T>
std::u16string WideStreamText(const T& value) {
  std::wostringstream stream;
  if constexpr (kIsByte<T>)
    stream << static_cast<int>(value);
  else
    stream << value;
  const std::wstring text = stream.str();
  return std::u16string(text.begin(), text.end());
}

template <class T>
void ExpectStreamText(const T& value) {
  std::string narrow = "previous";
  std::u16string wide = u"previous";
  TextFormatNumber(value, narrow);
  TextFormatNumber(value, wide);
  ASSERT_EQ(narrow, StreamText(value)) << +value;
  ASSERT_EQ(wide, WideStreamText(value)) << +value;
}

template <class T>
std::vector<T> IntegerEdges() {
  using L = std::numeric_limits<T>;
  std::vector<T> values = {L::min(),
                           static_cast<T>(L::min() + 1),
                           static_cast<T>(-1),
                           0,
                           1,
                           static_cast<T>(L::max() - 1),
                           L::max(),
                           9,
                           10,
                           99,
                           100};
  return values;
}

std::vector<double> DoubleEdges() {
  using L = std::numeric_limits<double>;
  return {0.0,
          -0.0,
          L::denorm_min(),
          -L::denorm_min(),
          L::min(),
          2.2250738585072009e-308,
          L::max(),
          L::lowest(),
          L::epsilon(),
          L::infinity(),
          -L::infinity(),
          L::quiet_NaN(),
          -L::quiet_NaN(),
          1e-5,
          1e-4,
          9.99999e-5,
          0.000099999949,
          0.00009999995,
          999999.5,
          999999.4,
          999999.0,
          9999995.0,
          1e6,
          1e5,
          123456.5,
          1234567.0,
          0.1,
          0.3,
          1.0 / 3,
          3.14159274,
          100000.0,
          1e15,
          1e16,
          1e21,
          1e22,
          1e100,
          5e-324,
          0.5,
          2.5,
          0.05,
          1e-7};
}

}  // namespace

TEST(TextFormatNumber, ExactTexts) {
  std::string narrow;
  std::u16string wide;
  TextFormatNumber(-1, narrow);
  EXPECT_EQ(narrow, "-1");
  TextFormatNumber(4294967295u, narrow);
  EXPECT_EQ(narrow, "4294967295");
  TextFormatNumber(std::numeric_limits<long long>::min(), narrow);
  EXPECT_EQ(narrow, "-9223372036854775808");
  const short minShort = -32768;
  TextFormatNumber(minShort, narrow);
  TextFormatNumber(minShort, wide);
  EXPECT_EQ(narrow, "-32768");
  EXPECT_EQ(wide, u"-32768");
  const signed char letter = 0x41;
  TextFormatNumber(letter, narrow);
  TextFormatNumber(letter, wide);
  EXPECT_EQ(narrow, "A");
  EXPECT_EQ(wide, u"65");
  const signed char minusOne = -1;
  TextFormatNumber(minusOne, narrow);
  TextFormatNumber(minusOne, wide);
  EXPECT_EQ(narrow, "\xFF");
  EXPECT_EQ(wide, u"-1");
  const unsigned char byte = 0;
  TextFormatNumber(byte, narrow);
  EXPECT_EQ(narrow, std::string(1, '\0'));
  const unsigned char high = 200;
  TextFormatNumber(high, wide);
  EXPECT_EQ(wide, u"200");
  TextFormatNumber(0.1, narrow);
  EXPECT_EQ(narrow, "0.1");
  TextFormatNumber(100000.0, narrow);
  EXPECT_EQ(narrow, "100000");
  TextFormatNumber(1000000.0, narrow);
  EXPECT_EQ(narrow, "1e+06");
  TextFormatNumber(0.1f, narrow);
  EXPECT_EQ(narrow, "0.1");
  TextFormatNumber(3.14159274, wide);
  EXPECT_EQ(wide, u"3.14159");
  TextFormatNumber(1e-5L, wide);
  EXPECT_EQ(wide, u"1e-05");
  TextFormatNumber(-std::numeric_limits<double>::infinity(), narrow);
  EXPECT_EQ(narrow, "-inf");
  const long wideLong = 2147483647L;
  TextFormatNumber(wideLong, narrow);
  EXPECT_EQ(narrow, "2147483647");
}

TEST(TextFormatNumber, MatchesAFreshStreamForEveryType) {
  for (auto v : IntegerEdges<signed char>()) ExpectStreamText(v);
  for (auto v : IntegerEdges<unsigned char>()) ExpectStreamText(v);
  for (auto v : IntegerEdges<short>()) ExpectStreamText(v);
  for (auto v : IntegerEdges<unsigned short>()) ExpectStreamText(v);
  for (auto v : IntegerEdges<int>()) ExpectStreamText(v);
  for (auto v : IntegerEdges<unsigned int>()) ExpectStreamText(v);
  for (auto v : IntegerEdges<long>()) ExpectStreamText(v);
  for (auto v : IntegerEdges<unsigned long>()) ExpectStreamText(v);
  for (auto v : IntegerEdges<long long>()) ExpectStreamText(v);
  for (auto v : IntegerEdges<unsigned long long>()) ExpectStreamText(v);
  for (double v : DoubleEdges()) {
    ExpectStreamText(v);
    ExpectStreamText(static_cast<float>(v));
    ExpectStreamText(static_cast<long double>(v));
  }
  // Long doubles that are no doubles, near the rounding points of six digits.
  for (long double v :
       {0.1L, 999999.5L + 1e-12L, 1.0000005L, 1.00000050000000001L, 1e-4000L, 1e4000L,
        std::nextafter(1.0000005L, 2.0L), std::nextafter(1.0000005L, 0.0L)})
    ExpectStreamText(v);

  std::mt19937_64 random(7);
  for (int i = 0; i < 40000; ++i) {
    const std::uint64_t bits = random();
    double d;
    std::memcpy(&d, &bits, sizeof d);
    ExpectStreamText(d);
    float f;
    const auto low = static_cast<std::uint32_t>(bits);
    std::memcpy(&f, &low, sizeof f);
    ExpectStreamText(f);
    // Values of everyday size, and halfway cases of the sixth digit.
    const double scaled = std::ldexp(static_cast<double>(bits >> 11), -53) *
                          std::pow(10.0, static_cast<int>(bits % 24) - 8);
    ExpectStreamText(scaled);
    const double halfway = (static_cast<double>(bits % 2000000) + 0.5) *
                           std::pow(10.0, static_cast<int>(bits % 13) - 9);
    ExpectStreamText(halfway);
    // Exact ties of the sixth digit, in integers and in powers of two.
    ExpectStreamText(static_cast<double>((bits % 900000 + 100000) * 10 + 5) *
                     std::pow(10.0, static_cast<int>(bits % 5)));
    ExpectStreamText(
        std::ldexp(static_cast<double>(bits % 64 * 2 + 1), static_cast<int>(bits % 160) - 100));
    ExpectStreamText(static_cast<int>(bits));
    ExpectStreamText(static_cast<long long>(bits));
    ExpectStreamText(static_cast<short>(bits));
  }
}

TEST(TextFormatNumber, FollowsTheGlobalStreamLocale) {
  LocaleScope scope("C");
  try {
    std::locale::global(std::locale("de_DE.UTF-8"));
  } catch (const std::runtime_error&) {
    GTEST_SKIP()
        << "locale de_DE.UTF-8 is not available; generate it (locale-gen) to run this test";
  }
  std::string narrow;
  std::u16string wide;
  TextFormatNumber(1234567, narrow);
  EXPECT_EQ(narrow, "1.234.567");
  TextFormatNumber(-1234.5, wide);
  EXPECT_EQ(wide, u"-1.234,5");
  TextFormatNumber(0.25f, narrow);
  EXPECT_EQ(narrow, "0,25");
  const unsigned char letter = 'A';
  TextFormatNumber(letter, narrow);
  EXPECT_EQ(narrow, "A");
  for (double v : DoubleEdges()) ExpectStreamText(v);
  for (auto v : IntegerEdges<long long>()) ExpectStreamText(v);
  std::locale::global(std::locale::classic());
  TextFormatNumber(1234567, narrow);
  EXPECT_EQ(narrow, "1234567");
}
