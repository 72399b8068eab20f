#include <tessera/numerics/Fixed.h>

namespace Tessera {

namespace {

// The raw value that stands for a result out of range, as in the conversions.
constexpr std::int32_t outOfRange = INT32_MIN;

// A series that has not ended by then never will in any useful sense: k has wrapped long
// before, and ordinary arguments stop within some 2300 terms.
constexpr int expTermLimit = 65536;

fixed Negate(fixed value) { return fixed().subtract(value); }

// Three terms of the sine's series on a raw angle between 0 and a quarter turn.
// Kept for compatibility: no more terms and no wider type, so the digits stay those ported
// callers know.
fixed SineSeries(std::int32_t angle) {
  const fixed r(true, angle);
  fixed p = r;
  fixed result = p / 1;
  p = p * r;
  p = p * r;
  result = result - p / 6;
  p = p * r;
  p = p * r;
  result = result + p / 120;
  return result;
}

// The reduction shared by sin and cos.
fixed ReducedSine(std::int32_t angle) {
  std::int32_t r = angle % fixedTwoPi.GetRaw();
  if (r < 0) r += fixedTwoPi.GetRaw();
  bool negate = false;
  if (r > fixedPi.GetRaw()) {
    r -= fixedPi.GetRaw();
    negate = true;
  }
  if (r > fixedHalfPi.GetRaw()) r = fixedHalfPi.GetRaw() - (r - fixedHalfPi.GetRaw());
  const fixed result = SineSeries(r);
  return negate ? Negate(result) : result;
}

}  // namespace

fixed fixed::sqrt() const {
  const fixed x = *this;
  if (x.raw_ <= 0) return fixed();
  fixed s = x / 2;
  const fixed tol = x * fixed(true, 1000);
  const fixed negativeTol = Negate(tol);
  fixed d;
  do {
    d = s * s - x;
    s = s - d / (s * 2);
  } while (d < negativeTol || d > tol);
  return s;
}

// Kept for compatibility: no range reduction and a fixed product per term, so the digits
// (wrapped ones included) stay those ported callers know.
fixed fixed::exp() const {
  const fixed x = *this;
  fixed sum(1);
  fixed term(1);
  for (int k = 1; term.raw_ != 0; ++k) {
    if (k > expTermLimit) return fixed(true, outOfRange);
    term = term * (x / k);
    sum = sum + term;
  }
  return sum;
}

fixed fixed::log() const {
  fixed x = *this;
  if (x.raw_ <= 0) return fixed(true, outOfRange);
  if (x.raw_ == 1000000) return fixed();
  int n = 0;
  while (x.raw_ >= 2000000) {
    x /= fixedE;
    ++n;
  }
  const fixed y = x - 1;
  fixed sum = y;
  fixed term = y;
  fixed t;
  int k = 1;
  do {
    ++k;
    term = Negate(term * y);
    t = term / k;
    sum = sum + t;
  } while (t.raw_ != 0);
  return sum + n;
}

fixed fixed::log10() const { return log() / fixedLn10; }

// Kept for compatibility: a negative base gives a negative result unless y is even, fractions
// of y included; callers rely on that sign.
fixed fixed::pow(fixed y) const {
  const fixed x = *this;
  if (x.raw_ < 0 && (y % 2).raw_ != 0) return Negate((y * Negate(x).log()).exp());
  const fixed magnitude = x.raw_ < 0 ? Negate(x) : x;
  return (y * magnitude.log()).exp();
}

fixed fixed::sin() const { return ReducedSine(raw_); }

fixed fixed::cos() const {
  return ReducedSine(Wrap(std::uint32_t(raw_) + std::uint32_t(fixedHalfPi.GetRaw())));
}

fixed fixed::tan() const { return sin() / cos(); }

}  // namespace Tessera
