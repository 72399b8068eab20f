// While the global locale is the classic one, the stream's text is produced directly: the
// classic num_put writes integers in plain decimal and floating values as printf's "%.6g",
// which is what std::to_chars gives for the general format with precision 6. Under any other
// global locale the stream itself does the work.
#include <tessera/text/TextFormatNumber.h>

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <locale>
#include <new>
#include <sstream>
#include <string>
#include <type_traits>

namespace Tessera {
namespace {

// A locale object is a handle to a shared body; two handles with the same bytes name the same
// body. This spares the library call of operator==, which also compares names. The global
// locale is read once, by the handle's constructor, which takes the library's lock unless the
// global locale is the classic one: a concurrent std::locale::global is seen by this call or
// not, as by a stream made at that moment, and never half. The standard has no cheaper way
// to read the global locale, and libstdc++ exports no other: this call is the one a number
// pays beyond its digits.
inline bool GlobalLocaleIsClassic() {
  static const std::locale& classic = std::locale::classic();
  union Handle {
    Handle() {}
    ~Handle() {}
    std::locale locale;
  } global;
  new (&global.locale) std::locale();
  if (std::memcmp(&global.locale, &classic, sizeof global.locale) == 0) {
#if !defined(__GLIBCXX__)
    global.locale.~locale();
#endif
    // libstdc++ keeps no count on the classic body, so its handle's destructor does nothing:
    // one library call a number fewer.
    return true;
  }
  global.locale.~locale();
  return false;
}

// What the stream is given: 8-bit values are characters for a narrow stream and int for a
// wide one; every other type goes in as itself.
template <class T, class C>
auto Inserted(const T& value) {
  if constexpr (std::is_same<T, signed char>::value || std::is_same<T, unsigned char>::value) {
    if constexpr (std::is_same<C, char>::value)
      return static_cast<char>(value);
    else
      return static_cast<int>(value);
  } else {
    return value;
  }
}

// The platform's wide stream writes wchar_t; its text goes to UTF-16.
void AssignUtf16(const std::wstring& text, std::u16string& out) {
  std::u16string result;
  result.reserve(text.size());
  for (wchar_t w : text) {
    const auto c = static_cast<std::uint32_t>(w);
    if (c >= 0x10000 && c <= 0x10FFFF) {
      result += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
      result += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
    } else {
      result += static_cast<char16_t>(c);
    }
  }
  out.swap(result);
}

template <class T>
void FormatByStream(const T& value, std::string& out) {
  std::ostringstream stream;
  stream << Inserted<T, char>(value);
  out = stream.str();
}

template <class T>
void FormatByStream(const T& value, std::u16string& out) {
  std::wostringstream stream;
  stream << Inserted<T, char16_t>(value);
  AssignUtf16(stream.str(), out);
}

// Makes `out` hold `size` characters and gives where they start, for the digits to be written
// in place. Cutting a string and push_back within its capacity are inline; append is a
// library call, and on the development machine any call into the C++ library took 5 to 10 ns,
// as long as all the digits of an int.
template <class C>
inline C* ResizeShort(std::basic_string<C>& out, std::size_t size) {
  const std::size_t had = out.size();
  if (size <= had)
    out.erase(size);
  else if (size <= out.capacity())
    for (std::size_t i = had; i < size; ++i) out.push_back(C());
  else
    out.append(size - had, C());
  return &out[0];
}

struct PowersOfTen {
  std::uint64_t value[20];
};
constexpr PowersOfTen kPowersOfTen = [] {
  PowersOfTen powers{};
  std::uint64_t power = 1;
  for (std::uint64_t& each : powers.value) {
    each = power;
    power *= 10;
  }
  return powers;
}();

// Without branches, whose misses cost more than the rest of the count when lengths vary:
// bits * 1233 / 4096 is floor(log10(2^bits)), one below the digit count or equal to it.
template <class U>
unsigned int DecimalDigits(U value) {
  const std::uint64_t wide = std::uint64_t{value} | 1;
  const auto bits = static_cast<unsigned int>(64 - __builtin_clzll(wide));
  const unsigned int floor = (bits * 1233) >> 12;
  return floor + (wide >= kPowersOfTen.value[floor] ? 1 : 0);
}

constexpr char kDigitPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

// Plain decimal with a leading '-', as the classic num_put writes an integer.
template <class T, class C>
void FormatInteger(T value, std::basic_string<C>& out) {
  using U = std::make_unsigned_t<T>;
  bool negative = false;
  if constexpr (std::is_signed<T>::value) negative = value < 0;
  U magnitude = negative ? static_cast<U>(U(0) - static_cast<U>(value)) : static_cast<U>(value);
  const unsigned int digits = DecimalDigits(magnitude);
  C* to = ResizeShort(out, digits + (negative ? 1 : 0));
  // Without a branch: the '-' is written anyway, and a digit covers it if there is no sign.
  *to = C('-');
  to += negative ? 1 : 0;
  C* at = to + digits;
  while (magnitude >= 100) {
    const unsigned int pair = static_cast<unsigned int>(magnitude % 100) * 2;
    magnitude /= 100;
    *--at = static_cast<C>(kDigitPairs[pair + 1]);
    *--at = static_cast<C>(kDigitPairs[pair]);
  }
  if (magnitude >= 10) {
    const unsigned int pair = static_cast<unsigned int>(magnitude) * 2;
    *--at = static_cast<C>(kDigitPairs[pair + 1]);
    *--at = static_cast<C>(kDigitPairs[pair]);
  } else {
    *--at = static_cast<C>('0' + magnitude);
  }
}

__extension__ typedef unsigned __int128 Wide;

Wide PowerOfTen(int exponent) {
  Wide power = 1;
  for (int i = 0; i < exponent; ++i) power *= 10;
  return power;
}

// The six significant digits of a positive normal double, rounded to nearest with ties to
// even as printf rounds them, and the decimal exponent of the first: value ~ digits * 10^
// (exponent - 5). Exact integer arithmetic in 128 bits, which covers about 1e-17 to 1e24;
// false outside that.
bool SixDigits(double value, std::uint32_t& digits, int& exponent) {
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  const int biased = static_cast<int>(bits >> 52) & 0x7FF;
  if (biased == 0 || biased == 0x7FF) return false;
  // value = mantissa * 2^binary, with 2^(binary + 52) <= value < 2^(binary + 53).
  const std::uint64_t mantissa = (bits & ((std::uint64_t{1} << 52) - 1)) | (std::uint64_t{1} << 52);
  const int binary = biased - 1075;
  // floor((binary + 52) * log10(2)): the decimal exponent or one less.
  int decimal = ((binary + 52) * 78913) >> 18;
  for (;;) {
    // value * 10^scale as numerator / denominator.
    const int scale = 5 - decimal;
    if (scale > 22 || scale < -19 || binary > 74 || binary < -120) return false;
    Wide numerator = mantissa;
    Wide denominator = 1;
    if (scale >= 0)
      numerator *= PowerOfTen(scale);
    else
      denominator = PowerOfTen(-scale);
    if (binary >= 0)
      numerator <<= binary;
    else
      denominator <<= -binary;
    Wide quotient;
    Wide remainder;
    if (scale >= 0) {
      const int shift = binary < 0 ? -binary : 0;
      quotient = numerator >> shift;
      remainder = numerator - (quotient << shift);
    } else {
      quotient = numerator / denominator;
      remainder = numerator % denominator;
    }
    if (quotient >= 1000000) {
      ++decimal;
      continue;
    }
    const Wide twice = remainder << 1;
    if (twice > denominator || (twice == denominator && (quotient & 1) != 0)) ++quotient;
    if (quotient == 1000000) {
      quotient = 100000;
      ++decimal;
    }
    digits = static_cast<std::uint32_t>(quotient);
    exponent = decimal;
    return true;
  }
}

// printf's "%g" layout of six digits: exponent form below 1e-4 and from 1e6 on, trailing
// zeros and a bare point dropped, two exponent digits at least.
std::size_t LayOutGeneral(bool negative, std::uint32_t digits, int exponent, char* text) {
  char* p = text;
  if (negative) *p++ = '-';
  char d[6];
  for (int i = 5; i >= 0; --i) {
    d[i] = static_cast<char>('0' + digits % 10);
    digits /= 10;
  }
  int significant = 6;
  while (significant > 1 && d[significant - 1] == '0') --significant;
  if (exponent < -4 || exponent >= 6) {
    *p++ = d[0];
    if (significant > 1) {
      *p++ = '.';
      for (int i = 1; i < significant; ++i) *p++ = d[i];
    }
    *p++ = 'e';
    *p++ = exponent < 0 ? '-' : '+';
    unsigned int magnitude = static_cast<unsigned int>(exponent < 0 ? -exponent : exponent);
    if (magnitude >= 100) {
      *p++ = static_cast<char>('0' + magnitude / 100);
      magnitude %= 100;
    }
    *p++ = static_cast<char>('0' + magnitude / 10);
    *p++ = static_cast<char>('0' + magnitude % 10);
  } else if (exponent >= 0) {
    for (int i = 0; i <= exponent; ++i) *p++ = d[i];
    if (significant > exponent + 1) {
      *p++ = '.';
      for (int i = exponent + 1; i < significant; ++i) *p++ = d[i];
    }
  } else {
    *p++ = '0';
    *p++ = '.';
    for (int i = 0; i < -exponent - 1; ++i) *p++ = '0';
    for (int i = 0; i < significant; ++i) *p++ = d[i];
  }
  return static_cast<std::size_t>(p - text);
}

// "%.6g" of the double, which is also the text of a float and of a long double that holds a
// double's value. False for a long double that doesn't: its six digits could round otherwise.
// What the exact digits can't cover (zero, subnormals, extremes, infinities, NaNs) goes to
// to_chars, whose general format with a precision is printf's.
template <class T, class C>
bool FormatFloating(T value, std::basic_string<C>& out) {
  const double number = static_cast<double>(value);
  if (static_cast<T>(number) != value && number == number) return false;
  char text[32];
  std::size_t size;
  std::uint32_t digits;
  int exponent;
  if (SixDigits(std::fabs(number), digits, exponent)) {
    size = LayOutGeneral(std::signbit(number), digits, exponent, text);
  } else {
    const auto result =
        std::to_chars(text, text + sizeof text, number, std::chars_format::general, 6);
    size = static_cast<std::size_t>(result.ptr - text);
  }
  C* to = ResizeShort(out, size);
  for (std::size_t i = 0; i < size; ++i) to[i] = static_cast<C>(text[i]);
  return true;
}

}  // namespace

namespace detail {

template <class T, class C>
void FormatNumberText(const T& value, std::basic_string<C>& out) {
  if constexpr (std::is_same<C, char>::value &&
                (std::is_same<T, signed char>::value || std::is_same<T, unsigned char>::value)) {
    // The character inserter writes the byte as it is under every locale.
    out.assign(1, static_cast<char>(value));
  } else if constexpr (std::is_floating_point<T>::value) {
    if (!GlobalLocaleIsClassic() || !FormatFloating(value, out)) FormatByStream(value, out);
  } else {
    if (GlobalLocaleIsClassic())
      FormatInteger(Inserted<T, C>(value), out);
    else
      FormatByStream(value, out);
  }
}

}  // namespace detail

#define TESSERA_TEXT_FORMAT_NUMBER_FOR(T, C)                                           \
  template void detail::FormatNumberText<T, C>(const T&, std::basic_string<C>&); \
  template void TextFormatNumber<T, C>(const T&, std::basic_string<C>&);
#define TESSERA_TEXT_FORMAT_NUMBER(T)      \
  TESSERA_TEXT_FORMAT_NUMBER_FOR(T, char) \
  TESSERA_TEXT_FORMAT_NUMBER_FOR(T, char16_t)

TESSERA_TEXT_NUMBER_TYPES(TESSERA_TEXT_FORMAT_NUMBER)

#undef TESSERA_TEXT_FORMAT_NUMBER
#undef TESSERA_TEXT_FORMAT_NUMBER_FOR

}  // namespace Tessera
