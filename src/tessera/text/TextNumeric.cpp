#include <tessera/text/TextNumeric.h>

#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>

namespace Tessera {
namespace {

// 0 to 35 for a digit of any base, 36 (a digit of no base) for anything else. For wide text
// the whole code unit counts, so no full-width or other digit passes.
template <class C>
inline unsigned int DigitValue(C c) {
  const unsigned int u = static_cast<std::make_unsigned_t<C>>(c);
  if (u - '0' < 10u) return u - '0';
  if (u - 'a' < 26u) return u - 'a' + 10;
  if (u - 'A' < 26u) return u - 'A' + 10;
  return 36;
}

// `long` is 32 bits wide wherever the library was first used, and stays so in every text.
template <class T>
constexpr std::uint64_t Largest() {
  if (std::is_same<T, long>::value) return 0x7FFFFFFF;
  if (std::is_same<T, unsigned long>::value) return 0xFFFFFFFF;
  return static_cast<std::uint64_t>(std::numeric_limits<T>::max());
}

template <class C, class T>
bool ReadInteger(const C* p, const C* end, T& value, unsigned int base) {
  constexpr std::uint64_t largest = Largest<T>();
  bool negative = false;
  if (*p == C('+')) {
    ++p;
  } else if (std::is_signed<T>::value && *p == C('-')) {
    negative = true;
    ++p;
  }
  std::uint64_t magnitude = 0;
  for (; p != end; ++p) {
    const unsigned int digit = DigitValue(*p);
    if (digit >= base) return false;
    if constexpr (largest <= 0xFFFFFFFF) {
      // Below 2^32 times 36 plus 35: no overflow in 64 bits.
      magnitude = magnitude * base + digit;
    } else if (__builtin_mul_overflow(magnitude, std::uint64_t{base}, &magnitude) ||
               __builtin_add_overflow(magnitude, std::uint64_t{digit}, &magnitude)) {
      return false;
    }
    if (magnitude > largest) return false;
  }
  const T result = static_cast<T>(magnitude);
  value = negative ? static_cast<T>(-result) : result;
  return true;
}

// `Work` is the type each step is rounded to: T itself, double for long double.
template <class C, class T, class Work>
bool ReadFloating(const C* p, const C* end, T& value, unsigned int base) {
  bool negative = false;
  if (*p == C('+')) {
    ++p;
  } else if (*p == C('-')) {
    negative = true;
    ++p;
  }
  const Work radix = static_cast<Work>(base);
  Work number = 0;
  Work scale = 1;
  bool fraction = false;
  for (; p != end; ++p) {
    if (*p == C('.') && !fraction) {
      fraction = true;
      continue;
    }
    const unsigned int digit = DigitValue(*p);
    if (digit >= base) return false;
    // One rounding per operation, in separate statements so that nothing fuses them.
    if (!fraction) {
      const Work shifted = number * radix;
      number = shifted + static_cast<Work>(digit);
    } else {
      scale = scale / radix;
      const Work part = static_cast<Work>(digit) * scale;
      number = number + part;
    }
  }
  if (negative) number = number * static_cast<Work>(-1.0);
  value = static_cast<T>(number);
  return true;
}

}  // namespace

template <class C, class T>
bool TextNumeric(const C* text, unsigned int length, T& value, unsigned int base) {
  if (base > 36) return false;
  if (length == npos) length = static_cast<unsigned int>(std::char_traits<C>::length(text));
  if (length == 0) return false;
  if constexpr (std::is_same<T, long double>::value)
    return ReadFloating<C, T, double>(text, text + length, value, base);
  else if constexpr (std::is_floating_point<T>::value)
    return ReadFloating<C, T, T>(text, text + length, value, base);
  else
    return ReadInteger(text, text + length, value, base);
}

#define TESSERA_TEXT_NUMERIC(T)                                                    \
  template bool TextNumeric<char, T>(const char*, unsigned int, T&, unsigned int); \
  template bool TextNumeric<char16_t, T>(const char16_t*, unsigned int, T&, unsigned int);

TESSERA_TEXT_NUMERIC(signed char)
TESSERA_TEXT_NUMERIC(unsigned char)
TESSERA_TEXT_NUMERIC(short)
TESSERA_TEXT_NUMERIC(unsigned short)
TESSERA_TEXT_NUMERIC(int)
TESSERA_TEXT_NUMERIC(unsigned int)
TESSERA_TEXT_NUMERIC(long)
TESSERA_TEXT_NUMERIC(unsigned long)
TESSERA_TEXT_NUMERIC(long long)
TESSERA_TEXT_NUMERIC(unsigned long long)
TESSERA_TEXT_NUMERIC(float)
TESSERA_TEXT_NUMERIC(double)
TESSERA_TEXT_NUMERIC(long double)

#undef TESSERA_TEXT_NUMERIC

}  // namespace Tessera
