// TextNumeric: reads a whole text as a number in a given base, the same under every locale.
//
// Instantiated for `char` and `char16_t` text and these 13 types, with the limits that hold on
// every platform: signed char, unsigned char, short, unsigned short, int, unsigned int, long
// and unsigned long (32 bits, as int and unsigned int), long long, unsigned long long, float,
// double and long double (computed as double). Any other type fails to compile.
//
// The text is an optional sign at index 0 (`-` only for signed and floating types, `+` for
// all), then digits: `0`-`9`, `a`-`z` and `A`-`Z` for 0 to 35, each below `base`, and for the
// floating types at most one `.`. No white space, prefix, exponent or group separator is
// known. A sign alone reads as 0.
//
// Integers: a magnitude above the type's largest value fails, and the sign is applied last,
// so the most negative value of a signed type can't be read. Floating types: each step is
// rounded to the type (value * base + digit before the point, scale / base and value + digit
// * scale behind it), so results are not correctly rounded; too many digits give infinity,
// and a `-` gives a negative zero for a zero value.
#ifndef TESSERA_TEXT_TEXTNUMERIC_H
#define TESSERA_TEXT_TEXTNUMERIC_H

#include <string_view>
#include <type_traits>

#include <tessera_export.h>
#include <tessera/frame/Library.h>

namespace Tessera {
namespace detail {

template <class C, class T>
struct IsTextNumericType
    : std::integral_constant<
          bool, (std::is_same<C, char>::value || std::is_same<C, char16_t>::value) &&
                    (std::is_same<T, signed char>::value || std::is_same<T, unsigned char>::value ||
                     std::is_same<T, short>::value || std::is_same<T, unsigned short>::value ||
                     std::is_same<T, int>::value || std::is_same<T, unsigned int>::value ||
                     std::is_same<T, long>::value || std::is_same<T, unsigned long>::value ||
                     std::is_same<T, long long>::value ||
                     std::is_same<T, unsigned long long>::value || std::is_same<T, float>::value ||
                     std::is_same<T, double>::value || std::is_same<T, long double>::value)> {};

template <class C, class T>
TESSERA_API bool ReadNumericText(const C* text, unsigned int length, T& value, unsigned int base);

}  // namespace detail

// Reads `text` (`length` npos: up to its first NUL) whole as a number in `base`, 0 to 36
// (base 0 accepts no digit at all, base 1 the digit 0 alone). Gives true and sets `value`, or
// gives false and leaves `value` untouched: for a base above 36, an empty text, or any
// character that doesn't belong.
template <class C, class T>
[[nodiscard]] TESSERA_API bool TextNumeric(const C* text, unsigned int length, T& value,
                                           unsigned int base) {
  static_assert(detail::IsTextNumericType<C, T>::value,
                "TextNumeric<C, T> takes C char or char16_t and T one of signed char, unsigned "
                "char, short, unsigned short, int, unsigned int, long, unsigned long, long long, "
                "unsigned long long, float, double, long double");
  return detail::ReadNumericText(text, length, value, base);
}

// Conveniences: the whole view, as above. A view of npos characters or more can't be told by
// its length and is no number: false, `value` untouched.
template <class T>
[[nodiscard]] bool TextNumeric(std::string_view text, T& value, unsigned int base) {
  return text.size() < npos &&
         TextNumeric(text.data(), static_cast<unsigned int>(text.size()), value, base);
}
template <class T>
[[nodiscard]] bool TextNumeric(std::u16string_view text, T& value, unsigned int base) {
  return text.size() < npos &&
         TextNumeric(text.data(), static_cast<unsigned int>(text.size()), value, base);
}

// Implementation details follow.

// The 13 number types, for the explicit instantiations here, in TextFormatNumber.h and in
// the library.
#define TESSERA_TEXT_NUMBER_TYPES(X)                                                         \
  X(signed char) X(unsigned char) X(short) X(unsigned short) X(int) X(unsigned int) X(long) \
  X(unsigned long) X(long long) X(unsigned long long) X(float) X(double) X(long double)

#define TESSERA_TEXT_NUMERIC(T)                                                                \
  extern template TESSERA_API bool TextNumeric<char, T>(const char*, unsigned int, T&,         \
                                                        unsigned int);                         \
  extern template TESSERA_API bool TextNumeric<char16_t, T>(const char16_t*, unsigned int, T&, \
                                                            unsigned int);
TESSERA_TEXT_NUMBER_TYPES(TESSERA_TEXT_NUMERIC)
#undef TESSERA_TEXT_NUMERIC

}  // namespace Tessera

#endif  // TESSERA_TEXT_TEXTNUMERIC_H
