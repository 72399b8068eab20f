// TextNumeric: reads a whole text as a number in a given base, the same under every locale.
//
// Instantiated for `char` and `char16_t` text and these 13 types, with the limits that hold on
// every platform: signed char, unsigned char, short, unsigned short, int, unsigned int, long
// and unsigned long (32 bits, as int and unsigned int), long long, unsigned long long, float,
// double and long double (computed as double).
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

#include <tessera_export.h>
#include <tessera/frame/Library.h>

namespace Tessera {

// Reads `text` (`length` npos: up to its first NUL) whole as a number in `base`, 0 to 36
// (base 0 accepts no digit at all, base 1 the digit 0 alone). Gives true and sets `value`, or
// gives false and leaves `value` untouched: for a base above 36, an empty text, or any
// character that doesn't belong.
template <class C, class T>
TESSERA_API bool TextNumeric(const C* text, unsigned int length, T& value, unsigned int base);

}  // namespace Tessera

#endif  // TESSERA_TEXT_TEXTNUMERIC_H
