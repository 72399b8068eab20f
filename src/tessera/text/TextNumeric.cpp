#include <tessera/text/TextNumeric.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
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

// DigitValue for a base up to 10 needs one range test: letters are no digit of it anyway.
template <class C>
inline unsigned int Digit(C c, unsigned int base) {
  if (base <= 10) return static_cast<std::make_unsigned_t<C>>(c) - unsigned{'0'};
  return DigitValue(c);
}

// Eight narrow characters at once, as they lie in memory on a little-endian machine.
inline std::uint64_t LoadEight(const char* p) {
  std::uint64_t chunk;
  std::memcpy(&chunk, p, sizeof chunk);
  return chunk;
}

// Every byte from '0' to '9': its high nibble is 3, and adding 6 leaves it 3.
inline bool EightDigits(std::uint64_t chunk) {
  constexpr std::uint64_t kHigh = 0xF0F0F0F0F0F0F0F0;
  return ((chunk & kHigh) | (((chunk + 0x0606060606060606) & kHigh) >> 4)) ==
         0x3333333333333333;
}

// The value of eight decimal digits, first character most significant: pairs, then groups of
// four, then the whole, each by one multiplication of packed lanes.
inline std::uint64_t EightDigitValue(std::uint64_t chunk) {
  chunk -= 0x3030303030303030;
  chunk = (chunk * 10 + (chunk >> 8)) & 0x00FF00FF00FF00FF;
  chunk = (chunk * 100 + (chunk >> 16)) & 0x0000FFFF0000FFFF;
  return (chunk * 10000 + (chunk >> 32)) & 0xFFFFFFFF;
}

template <class C>
constexpr bool kChunked = sizeof(C) == 1 && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;

// `long` is 32 bits wide wherever the library was first used, and stays so in every text.
template <class T>
constexpr std::uint64_t Largest() {
  if (std::is_same<T, long>::value) return 0x7FFFFFFF;
  if (std::is_same<T, unsigned long>::value) return 0xFFFFFFFF;
  return static_cast<std::uint64_t>(std::numeric_limits<T>::max());
}

// Any base and length, with a check of the limit at every digit. Kept out of line, so that
// the registers it needs are not saved on the way through the short decimal path.
template <class C, class T>
[[gnu::noinline]] bool ReadIntegerDigits(const C* p, const C* end, bool negative, T& value,
                                         unsigned int base) {
  constexpr std::uint64_t largest = Largest<T>();
  // `radix` is base as a value, or 10 as a constant, which the compiler multiplies by with
  // shifts and adds: 4 cycles a digit less than a multiplication on a dependent chain.
  auto read = [&](auto radix) {
    std::uint64_t magnitude = 0;
    for (; p != end; ++p) {
      const unsigned int digit = Digit(*p, radix);
      if (digit >= radix) return false;
      if constexpr (largest <= 0xFFFFFFFF) {
        // Below 2^32 times 36 plus 35: no overflow in 64 bits.
        magnitude = magnitude * radix + digit;
      } else if (__builtin_mul_overflow(magnitude, std::uint64_t{radix}, &magnitude) ||
                 __builtin_add_overflow(magnitude, std::uint64_t{digit}, &magnitude)) {
        return false;
      }
      if (magnitude > largest) return false;
    }
    const T result = static_cast<T>(magnitude);
    value = negative ? static_cast<T>(-result) : result;
    return true;
  };
  return base == 10 ? read(std::integral_constant<unsigned int, 10>()) : read(base);
}

template <class C, class T>
[[gnu::always_inline]] inline bool ReadInteger(const C* p, const C* end, T& value,
                                               unsigned int base) {
  constexpr std::uint64_t largest = Largest<T>();
  // Without a branch: the sign of varied numbers is a coin toss for the predictor.
  const bool negative = std::is_signed<T>::value && *p == C('-');
  const bool plus = *p == C('+');
  p += static_cast<int>(negative) | static_cast<int>(plus);
  // Up to 19 decimal digits can't overflow 64 bits, and the magnitude never shrinks as digits
  // come, so one check of the limit at the end refuses the same texts as a check per digit.
  if (base == 10 && end - p <= 19) {
    std::uint64_t magnitude = 0;
    if constexpr (kChunked<C>) {
      // At most two chunks, written out: as a loop its constants stay in registers, which
      // then have to be saved on every call.
      if (end - p >= 8) {
        std::uint64_t chunk = LoadEight(p);
        if (!EightDigits(chunk)) return false;
        magnitude = EightDigitValue(chunk);
        p += 8;
        if (end - p >= 8) {
          chunk = LoadEight(p);
          if (!EightDigits(chunk)) return false;
          magnitude = magnitude * 100000000 + EightDigitValue(chunk);
          p += 8;
        }
      }
    }
    for (; p != end; ++p) {
      const unsigned int digit = Digit(*p, 10u);
      if (digit >= 10) return false;
      magnitude = magnitude * 10 + digit;
    }
    if (magnitude > largest) return false;
    const T result = static_cast<T>(magnitude);
    value = negative ? static_cast<T>(-result) : result;
    return true;
  }
  return ReadIntegerDigits(p, end, negative, value, base);
}

// The scales of the fraction digits in base 10, each the one before divided by 10 and
// rounded to Work, down to the first 0; every later scale is 0 too.
template <class Work>
struct DecimalScales {
  Work scale[400];
  unsigned int count;
};

template <class Work>
const DecimalScales<Work>& GetDecimalScales() {
  static const DecimalScales<Work> scales = [] {
    DecimalScales<Work> result{};
    volatile Work scale = 1;
    result.scale[0] = 1;
    unsigned int i = 1;
    for (; i < 400 && result.scale[i - 1] != 0; ++i) {
      scale = scale / Work(10);
      result.scale[i] = scale;
    }
    result.count = i;
    return result;
  }();
  return scales;
}

// `Work` is the type each step is rounded to: T itself, double for long double. The steps
// are the plain ones, number * base + digit before the point and number + digit * scale
// behind it, each rounded; where a step is exact or can't change the number it is taken in
// a cheaper form with the same result: short decimal fractions went from 0.7 times the
// speed of std::from_chars to 1.1 to 1.3 times.
template <class C, class T, class Work>
bool ReadFloating(const C* p, const C* end, T& value, unsigned int base) {
  bool negative = false;
  if (*p == C('+')) {
    ++p;
  } else if (*p == C('-')) {
    negative = true;
    ++p;
  }
  // Below 2^digits / 64 the integer steps are exact in Work, and so in 64 bits.
  constexpr std::uint64_t kExactWhole =
      (std::uint64_t{1} << std::numeric_limits<Work>::digits) >> 6;
  std::uint64_t whole = 0;
  if constexpr (kChunked<C> &&
                (std::uint64_t{1} << std::numeric_limits<Work>::digits) > 100000000) {
    // Eight digits at a time while the sum stays below 2^digits, where every step is exact;
    // only in long texts, where the chunk seldom holds the point.
    constexpr std::uint64_t kChunkLimit =
        ((std::uint64_t{1} << std::numeric_limits<Work>::digits) - 100000000) / 100000000;
    if (base == 10) {
      for (; end - p >= 16 && whole <= kChunkLimit; p += 8) {
        const std::uint64_t chunk = LoadEight(p);
        if (!EightDigits(chunk)) break;
        whole = whole * 100000000 + EightDigitValue(chunk);
      }
    }
  }
  // As in ReadInteger; false for a character that is neither a digit nor the point.
  auto readWhole = [&](auto radix) {
    for (; p != end && whole < kExactWhole; ++p) {
      const unsigned int digit = Digit(*p, radix);
      if (digit >= radix) return *p == C('.');
      whole = whole * radix + digit;
    }
    return true;
  };
  if (!(base == 10 ? readWhole(std::integral_constant<unsigned int, 10>()) : readWhole(base)))
    return false;
  const Work radix = static_cast<Work>(base);
  Work number = static_cast<Work>(whole);
  // From 2^(digits + 7) on a step's sum rounds back to its product: a digit is below half a
  // unit in the last place. The number never shrinks, so from there on each digit is one
  // multiplication, and the dependent chain is half as long.
  constexpr Work kDigitLost =
      static_cast<Work>(std::uint64_t{1} << std::numeric_limits<Work>::digits) * Work(128);
  // Short numbers end at the point or the end before the exact steps run out.
  if (whole >= kExactWhole) {
    while (p != end) {
      const unsigned int digit = Digit(*p, base);
      if (digit >= base) break;
      ++p;
      // One rounding per operation, in separate statements so that nothing fuses them.
      const Work shifted = number * radix;
      if (!(shifted < kDigitLost)) {
        number = shifted;
        break;
      }
      number = shifted + static_cast<Work>(digit);
    }
    for (; p != end && Digit(*p, base) < base; ++p) number = number * radix;
    if (p != end && *p != C('.')) return false;
  }
  if (p != end) {
    ++p;  // the point
    // A digit 0 adds 0 * scale, which leaves the number as it is.
    if (base == 10) {
      const DecimalScales<Work>& scales = GetDecimalScales<Work>();
      const C* const first = p - 1;
      for (; p != end; ++p) {
        const unsigned int digit = Digit(*p, 10);
        if (digit >= 10) return false;
        if (digit == 0) {
          if constexpr (kChunked<C>) {
            while (end - p > 8 && LoadEight(p + 1) == 0x3030303030303030) p += 8;
          }
          continue;
        }
        const auto place = static_cast<std::size_t>(p - first);
        if (place >= scales.count) continue;
        const Work part = static_cast<Work>(digit) * scales.scale[place];
        number = number + part;
      }
    } else {
      Work scale = 1;
      for (; p != end; ++p) {
        const unsigned int digit = Digit(*p, base);
        if (digit >= base) return false;
        scale = scale / radix;
        const Work part = static_cast<Work>(digit) * scale;
        number = number + part;
      }
    }
  }
  if (negative) number = number * static_cast<Work>(-1.0);
  value = static_cast<T>(number);
  return true;
}

}  // namespace

namespace detail {

template <class C, class T>
bool ReadNumericText(const C* text, unsigned int length, T& value, unsigned int base) {
  if (base > 36) return false;
  // Measured here rather than by strlen: a library call on this path makes every call save
  // registers.
  if (length == npos) {
    length = 0;
    while (text[length] != C()) ++length;
  }
  if (length == 0) return false;
  if constexpr (std::is_same<T, long double>::value)
    return ReadFloating<C, T, double>(text, text + length, value, base);
  else if constexpr (std::is_floating_point<T>::value)
    return ReadFloating<C, T, T>(text, text + length, value, base);
  else
    return ReadInteger(text, text + length, value, base);
}

}  // namespace detail

#define TESSERA_TEXT_NUMERIC_FOR(C, T)                                                 \
  template bool detail::ReadNumericText<C, T>(const C*, unsigned int, T&, unsigned int); \
  template bool TextNumeric<C, T>(const C*, unsigned int, T&, unsigned int);
#define TESSERA_TEXT_NUMERIC(T)      \
  TESSERA_TEXT_NUMERIC_FOR(char, T) \
  TESSERA_TEXT_NUMERIC_FOR(char16_t, T)

TESSERA_TEXT_NUMBER_TYPES(TESSERA_TEXT_NUMERIC)

#undef TESSERA_TEXT_NUMERIC
#undef TESSERA_TEXT_NUMERIC_FOR

}  // namespace Tessera
