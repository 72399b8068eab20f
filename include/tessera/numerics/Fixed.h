// fixed: a decimal fixed-point number, six places in one signed 32-bit field.
//
// The field holds the value times 1000000, so the range is -2147.483648 to 2147.483647
// with a resolution of 0.000001. Every operator works against fixed, float, double, int,
// long and short. Nothing throws or reports: arithmetic wraps modulo 2^32, and every
// conversion from floating point that does not fit (NaN and infinities included) gives the
// raw value 0x80000000, -2147.483648. The mathematical members (sqrt, exp, log, log10, pow,
// sin, cos, tan) work in fixed arithmetic from end to end, so their truncation is part of
// their digits.
//
// `long` operands are 32-bit values: a wider native long contributes its low 32 bits.
#ifndef TESSERA_NUMERICS_FIXED_H
#define TESSERA_NUMERICS_FIXED_H

#include <cmath>
#include <cstdint>

#include <tessera_export.h>

namespace Tessera {

class TESSERA_API fixed {
 public:
  // Zero.
  constexpr fixed() : raw_(0) {}
  constexpr fixed(const fixed&) = default;
  // Takes `value` as the raw field, unscaled; the bool only picks this constructor.
  constexpr fixed(bool, std::int32_t value) : raw_(value) {}
  // Integer operands are scaled by 1000000 in 32 bits, wrapping: fixed(3000) is -1294.967296.
  constexpr fixed(int value) : raw_(FromInt(value)) {}                          // NOLINT
  constexpr fixed(long value) : raw_(FromInt(static_cast<std::uint32_t>(value))) {}  // NOLINT
  constexpr fixed(short value) : raw_(FromInt(value)) {}                        // NOLINT
  // Rounds to the nearest millionth, a tie going up, each step in single precision.
  fixed(float value) : raw_(FromFloat(value)) {}  // NOLINT
  // Rounds to the nearest millionth, a tie going up; out of range gives -2147.483648.
  fixed(double value) : raw_(FromDouble(value)) {}  // NOLINT
  ~fixed() = default;

  fixed& operator=(const fixed&) = default;
  // Integer assignment scales by 1000000 in 32 bits; unsigned and unsigned char operands
  // are zero-extended, char sign-extended.
  fixed& operator=(int value) { raw_ = FromInt(value); return *this; }
  fixed& operator=(unsigned int value) { raw_ = FromInt(value); return *this; }
  fixed& operator=(long value) { raw_ = FromInt(static_cast<std::uint32_t>(value)); return *this; }
  fixed& operator=(unsigned long value) { raw_ = FromInt(static_cast<std::uint32_t>(value)); return *this; }
  fixed& operator=(short value) { raw_ = FromInt(value); return *this; }
  fixed& operator=(unsigned short value) { raw_ = FromInt(value); return *this; }
  fixed& operator=(char value) { raw_ = FromInt(value); return *this; }
  fixed& operator=(unsigned char value) { raw_ = FromInt(value); return *this; }
  fixed& operator=(float value) { raw_ = FromFloat(value); return *this; }
  fixed& operator=(double value) { raw_ = FromDouble(value); return *this; }

  // The raw field: the value times 1000000.
  constexpr std::int32_t GetRaw() const { return raw_; }

  // raw / 1000000.0; the float form rounds that double to single.
  operator double() const { return raw_ / 1000000.0; }
  operator float() const { return static_cast<float>(raw_ / 1000000.0); }
  // The integer part, truncated toward zero: -1.5 gives -1.
  constexpr std::int32_t GetLong() const { return raw_ / 1000000; }
  operator long() const { return GetLong(); }
  operator int() const { return GetLong(); }
  // The integer part cut to its low 16 bits.
  operator short() const { return static_cast<short>(GetLong()); }
  operator unsigned short() const { return static_cast<unsigned short>(GetLong()); }

  // Comparisons convert the operand as the constructors do (so x == 1.0000004 is true for
  // x equal to 1) and compare raw values as signed integers.
  bool equals(fixed other) const { return raw_ == other.raw_; }
  bool lessthan(fixed other) const { return raw_ < other.raw_; }
  bool lessthanequal(fixed other) const { return raw_ <= other.raw_; }

#define TESSERA_FIXED_COMPARISONS(Type)                                         \
  bool operator==(Type other) const { return raw_ == fixed(other).raw_; }      \
  bool operator!=(Type other) const { return raw_ != fixed(other).raw_; }      \
  bool operator<(Type other) const { return raw_ < fixed(other).raw_; }        \
  bool operator<=(Type other) const { return raw_ <= fixed(other).raw_; }      \
  bool operator>(Type other) const { return raw_ > fixed(other).raw_; }        \
  bool operator>=(Type other) const { return raw_ >= fixed(other).raw_; }
  TESSERA_FIXED_COMPARISONS(fixed)
  TESSERA_FIXED_COMPARISONS(float)
  TESSERA_FIXED_COMPARISONS(double)
  TESSERA_FIXED_COMPARISONS(int)
  TESSERA_FIXED_COMPARISONS(long)
  TESSERA_FIXED_COMPARISONS(short)
#undef TESSERA_FIXED_COMPARISONS

  // The operand is converted as the constructors do, then: add and subtract wrap;
  // multiply truncates the 64-bit product over 1000000 toward zero; divide truncates
  // raw * 1000000 over the operand toward zero and gives -0.000001 (raw -1) for a zero
  // operand, including a floating-point one that rounds to 0 at six places.
  fixed add(fixed other) const { return fixed(true, Wrap(std::uint32_t(raw_) + std::uint32_t(other.raw_))); }
  fixed subtract(fixed other) const { return fixed(true, Wrap(std::uint32_t(raw_) - std::uint32_t(other.raw_))); }
  fixed multiply(fixed other) const {
    return fixed(true, Wrap(static_cast<std::uint64_t>(std::int64_t{raw_} * other.raw_ / 1000000)));
  }
  fixed divide(fixed other) const {
    if (other.raw_ == 0) return fixed(true, -1);
    return fixed(true, Wrap(static_cast<std::uint64_t>(std::int64_t{raw_} * 1000000 / other.raw_)));
  }

#define TESSERA_FIXED_ARITHMETIC(Type)                                           \
  fixed add(Type other) const { return add(fixed(other)); }                     \
  fixed subtract(Type other) const { return subtract(fixed(other)); }           \
  fixed multiply(Type other) const { return multiply(fixed(other)); }           \
  fixed divide(Type other) const { return divide(fixed(other)); }               \
  fixed operator+(Type other) const { return add(fixed(other)); }               \
  fixed operator-(Type other) const { return subtract(fixed(other)); }          \
  fixed operator*(Type other) const { return multiply(fixed(other)); }          \
  fixed operator/(Type other) const { return divide(fixed(other)); }
  TESSERA_FIXED_ARITHMETIC(float)
  TESSERA_FIXED_ARITHMETIC(double)
  TESSERA_FIXED_ARITHMETIC(int)
  TESSERA_FIXED_ARITHMETIC(long)
  TESSERA_FIXED_ARITHMETIC(short)
#undef TESSERA_FIXED_ARITHMETIC
  fixed operator+(fixed other) const { return add(other); }
  fixed operator-(fixed other) const { return subtract(other); }
  fixed operator*(fixed other) const { return multiply(other); }
  fixed operator/(fixed other) const { return divide(other); }

  // The signed remainder of the raw values, with the sign of this number: 7.5 % 2 is 1.5,
  // -7.5 % 2 is -1.5. Where the integer division has no result the value is chosen here:
  // a zero operand gives this number unchanged (x = 0 * q + x), and an operand of
  // -0.000001 gives 0, also for -2147.483648.
  fixed operator%(fixed other) const {
    if (other.raw_ == 0) return *this;
    if (other.raw_ == -1) return fixed();
    return fixed(true, raw_ % other.raw_);
  }
  fixed operator%(int other) const { return *this % fixed(other); }
  fixed operator%(long other) const { return *this % fixed(other); }
  fixed operator%(short other) const { return *this % fixed(other); }

  // Compound assignment changes this number and gives a copy of the new value. The
  // integer forms of += and -= add the scaled operand, *= multiplies raw by the integer in
  // 32 bits, /= divides as `divide`. The float and double forms work in double precision
  // and truncate toward zero with no rounding step: += adds trunc(x * 1000000), *= gives
  // trunc(raw * x), /= gives trunc(raw / x), so a zero operand there gives -2147.483648.
  fixed operator+=(fixed other) { return *this = add(other); }
  fixed operator-=(fixed other) { return *this = subtract(other); }
  fixed operator*=(fixed other) { return *this = multiply(other); }
  fixed operator/=(fixed other) { return *this = divide(other); }
#define TESSERA_FIXED_INTEGER_COMPOUND(Type, Narrow)                                         \
  fixed operator+=(Type other) {                                                             \
    raw_ = Wrap(std::uint32_t(raw_) + std::uint32_t(Narrow(other)) * 1000000u);              \
    return *this;                                                                            \
  }                                                                                          \
  fixed operator-=(Type other) {                                                             \
    raw_ = Wrap(std::uint32_t(raw_) + std::uint32_t(Narrow(other)) * std::uint32_t(-1000000)); \
    return *this;                                                                            \
  }                                                                                          \
  fixed operator*=(Type other) {                                                             \
    raw_ = Wrap(std::uint32_t(raw_) * std::uint32_t(Narrow(other)));                         \
    return *this;                                                                            \
  }                                                                                          \
  fixed operator/=(Type other) { return *this = divide(fixed(other)); }
  TESSERA_FIXED_INTEGER_COMPOUND(int, std::int32_t)
  TESSERA_FIXED_INTEGER_COMPOUND(long, std::uint32_t)
  TESSERA_FIXED_INTEGER_COMPOUND(short, std::int32_t)
#undef TESSERA_FIXED_INTEGER_COMPOUND
  fixed operator+=(double other) { raw_ = Wrap(std::uint32_t(raw_) + std::uint32_t(Truncate(other * 1000000.0))); return *this; }
  fixed operator-=(double other) { raw_ = Wrap(std::uint32_t(raw_) + std::uint32_t(Truncate(other * -1000000.0))); return *this; }
  fixed operator*=(double other) { raw_ = Truncate(raw_ * other); return *this; }
  fixed operator/=(double other) { raw_ = Truncate(raw_ / other); return *this; }
  fixed operator+=(float other) { return *this += static_cast<double>(other); }
  fixed operator-=(float other) { return *this -= static_cast<double>(other); }
  fixed operator*=(float other) { return *this *= static_cast<double>(other); }
  fixed operator/=(float other) { return *this /= static_cast<double>(other); }

  // Prefix only: add or subtract 1, wrapping, and give a copy of the new value.
  fixed operator++() { raw_ = Wrap(std::uint32_t(raw_) + 1000000u); return *this; }
  fixed operator--() { raw_ = Wrap(std::uint32_t(raw_) - 1000000u); return *this; }

  // The integer part toward zero: -1.5 gives -1.0.
  fixed floor() const { return fixed(GetLong()); }
  // The integer part toward zero plus one: 2.0 gives 3.0 and -1.5 gives 0.0.
  fixed ceil() const { return fixed(GetLong() + 1); }

  // Newton's iteration from x / 2 until the residue lies within x * 0.001. At or below 0
  // the result is 0. From about 94.77 up the square of the first guess wraps and the
  // result is meaningless: sqrt of 100 gives 66.29455.
  fixed sqrt() const;
  // The Taylor series around 0 until a term truncates to 0; good from about -9.72 to
  // 7.67, wrapped digits outside that. A series still running after 65536 terms, which
  // only an argument of magnitude from about 1960 up can cause, stops and gives
  // -2147.483648.
  // Kept for compatibility, as pow and sin: every step truncates in fixed arithmetic, so
  // ported callers get the same digits, not those of the C library.
  fixed exp() const;
  // Reduction by e down below 2, then the Mercator series until a term truncates to 0.
  // An argument at or below 0 has no logarithm and gives -2147.483648 at once.
  fixed log() const;
  // log() divided by ln 10 (2.302585); at or below 0 that is -932.640335.
  fixed log10() const;
  // exp(y * log(|x|)), negated when x is negative and y % 2 is not 0, fractions of y
  // included: (-3) to the 0.5 gives -1.732047. A zero base goes through log of 0.
  // Kept for compatibility: the sign rule and the truncated digits are what callers compare.
  fixed pow(fixed y) const;
  // Three terms of the sine's Taylor series after reduction to a quarter turn; the peak
  // is 1.004525. The cosine is the sine a quarter turn on.
  // Kept for compatibility: three terms only, so sin(1) is 0.841667 and callers get that.
  fixed sin() const;
  fixed cos() const;
  // sin() / cos(); where the cosine is 0 that gives -0.000001.
  fixed tan() const;

 private:
  static constexpr std::int32_t Wrap(std::uint64_t value) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
  }
  // Any integer operand, converted to 32 bits as the C conversions do (sign-extended or
  // cut), then scaled.
  template <class Integer>
  static constexpr std::int32_t FromInt(Integer value) {
    return Wrap(static_cast<std::uint32_t>(value) * 1000000u);
  }
  // Truncation toward zero to 32 bits; anything that does not fit gives 0x80000000.
  static std::int32_t Truncate(double value) {
    if (!(value > -2147483649.0 && value < 2147483648.0)) return INT32_MIN;
    return static_cast<std::int32_t>(value);
  }
  static std::int32_t FromDouble(double value) {
    double scaled = value + 0.0000005;
    scaled = scaled * 1000000.0;
    return Truncate(std::floor(scaled));
  }
  // Separate statements keep each step rounded to single precision.
  static std::int32_t FromFloat(float value) {
    float scaled = value + 0.0000005f;
    scaled = scaled * 1000000.0f;
    return Truncate(std::floor(scaled));
  }

  std::int32_t raw_;
};

// Constants of the functions, truncated to six places.
inline constexpr fixed fixedE{true, 2718282};
inline constexpr fixed fixedLn10{true, 2302585};
inline constexpr fixed fixedPi{true, 3141592};
inline constexpr fixed fixedTwoPi{true, 6283185};
inline constexpr fixed fixedHalfPi{true, 1570796};

}  // namespace Tessera

#endif  // TESSERA_NUMERICS_FIXED_H
