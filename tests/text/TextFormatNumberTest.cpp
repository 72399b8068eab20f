#include <tessera/text/TextFormatNumber.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <locale>
#include <sstream>
#include <string>

using Tessera::TextFormatNumber;

namespace {

// Grouping by three with '.' and ',' for the point, as German has them, without needing that
// locale installed.
template <class C>
class GermanPunctuation : public std::numpunct<C> {
 protected:
  C do_decimal_point() const override { return C(','); }
  C do_thousands_sep() const override { return C('.'); }
  std::string do_grouping() const override { return "\3"; }
};

std::locale Punctuated() {
  return std::locale(std::locale(std::locale::classic(), new GermanPunctuation<char>),
                     new GermanPunctuation<wchar_t>);
}

// Sets the global locale and puts the classic one back.
struct GlobalLocale {
  explicit GlobalLocale(const std::locale& locale) { std::locale::global(locale); }
  ~GlobalLocale() { std::locale::global(std::locale::classic()); }
  GlobalLocale(const GlobalLocale&) = delete;
  GlobalLocale& operator=(const GlobalLocale&) = delete;
};

template <class T>
std::string Narrow(T value) {
  std::string out = "previous";
  TextFormatNumber(value, out);
  return out;
}

template <class T>
std::u16string Wide(T value) {
  std::u16string out = u"previous";
  TextFormatNumber(value, out);
  return out;
}

// Both forms against what a fresh stream writes; 8-bit values go to the wide stream as int.
template <class T>
void ExpectStreamText(T value) {
  std::ostringstream narrow;
  std::wostringstream wide;
  narrow << value;
  wide << +value;
  const std::wstring wideText = wide.str();
  ASSERT_EQ(Narrow(value), narrow.str()) << +value;
  ASSERT_EQ(Wide(value), std::u16string(wideText.begin(), wideText.end())) << +value;
}

template <class... T>
void ExpectIntegerEdges() {
  (..., [] {
    using L = std::numeric_limits<T>;
    for (T v : {L::min(), T(L::min() + 1), T(0), T(9), L::max()}) ExpectStreamText(v);
  }());
}

// Zero, subnormals, the extremes, infinities, NaNs, the edges of the exponent form and ties.
// clang-format off
const double kEdges[] = {0.0, -0.0, 5e-324, 2.2250738585072009e-308, 2.2250738585072014e-308,
                         1.7976931348623157e308, -1.7976931348623157e308, HUGE_VAL, -HUGE_VAL,
                         std::nan(""), -std::nan(""), 1e-5, 1e-4, 9.99999e-5, 0.00009999995,
                         999999.5, 999999.4, 9999995.0, 1e6, 1e5, 123456.5, 0.1, 1e22, 1e100};
// clang-format on

}  // namespace

// Any value of each type is the fuzz target's (TextFormatNumberFuzz); here the edges.
TEST(TextFormatNumber, MatchesAFreshStreamByteForByte) {
  ExpectIntegerEdges<signed char, unsigned char, short, unsigned short, int, unsigned int, long,
                     unsigned long, long long, unsigned long long>();
  for (double v : kEdges) {
    ExpectStreamText(v);
    ExpectStreamText(static_cast<float>(v));
    ExpectStreamText(static_cast<long double>(v));
  }
  // Long doubles that are no doubles, near the rounding points of six digits.
  for (long double v : {0.1L, 1.0000005L, 1e-4000L, 1e4000L, std::nextafter(1.0000005L, 2.0L)})
    ExpectStreamText(v);
  // Exact ties of the sixth digit, which random values seldom hit.
  for (std::uint64_t n = 100000; n < 1000000; n += 997)
    for (double scale : {1.0, 10.0, 1000.0, 0.1}) ExpectStreamText(double(n * 10 + 5) * scale);
}

TEST(TextFormatNumber, FollowsTheGlobalStreamLocale) {
  const GlobalLocale scope(Punctuated());
  EXPECT_EQ(Narrow(1234567), "1.234.567");
  EXPECT_EQ(Wide(-1234.5), u"-1.234,5");
  EXPECT_EQ(Narrow(static_cast<unsigned char>('A')), "A");
  for (double v : kEdges) ExpectStreamText(v);
  ExpectIntegerEdges<long long, unsigned short>();
  std::locale::global(std::locale::classic());
  EXPECT_EQ(Narrow(1234567), "1234567");
}

