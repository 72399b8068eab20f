// Mt19937: the 32-bit Mersenne Twister, word for word the reference generator mt19937ar
// with both of its seedings; Int16WhiteNoise: bell-shaped noise samples drawn from it.
//
// Neither class allocates or locks; an object belongs to one thread at a time, and
// assignment copies the whole state so that both objects go on with the same sequence.
#ifndef TESSERA_NUMERICS_MT19937_H
#define TESSERA_NUMERICS_MT19937_H

#include <cstdint>

#include <tessera_export.h>

namespace Tessera {

class TESSERA_API Mt19937 {
 public:
  // The seed of a default-constructed generator and the first seed of the key seeding.
  // (The reference generator falls back on 5489 when nobody seeds it; here every object
  // is seeded.)
  static constexpr std::uint32_t seedDefault = 19650218u;

  // Seeds with one word, as init_genrand.
  explicit Mt19937(std::uint32_t seed = seedDefault) { Init(seed); }
  // Seeds from `length` words, as init_by_array; a key longer than 624 words is used
  // whole. An empty key seeds as the key {0} would and `key` is not read.
  Mt19937(const std::uint32_t* key, unsigned int length);

  // The next tempered word.
  std::uint32_t operator()() {
    if (mti_ >= N) Regenerate();
    std::uint32_t y = mt_[mti_++];
    y ^= y >> 11;
    y ^= (y << 7) & 0x9D2C5680u;
    y ^= (y << 15) & 0xEFC60000u;
    y ^= y >> 18;
    return y;
  }

 private:
  static constexpr unsigned int N = 624;
  static constexpr unsigned int M = 397;
  static constexpr std::uint32_t MATRIX_A = 0x9908B0DFu;
  static constexpr std::uint32_t UPPER_MASK = 0x80000000u;
  static constexpr std::uint32_t LOWER_MASK = 0x7FFFFFFFu;

  void Init(std::uint32_t seed);
  // One pass over the state, in place.
  void Regenerate();

  std::uint32_t mt_[N];
  unsigned int mti_;
};

// Noise samples with a near-normal distribution: each is half the sum of the twelve
// 16-bit halves of six generator words, less 196608. The mean is near -3 and the standard
// deviation near 32768; samples run from -196608 to 196602 and are not clipped to 16 bits.
// Kept for compatibility: despite the name the spread is that wide; callers clip themselves.
class TESSERA_API Int16WhiteNoise {
 public:
  // Seeds the generator with Mt19937::seedDefault.
  Int16WhiteNoise() = default;

  // The next sample.
  std::int32_t operator()() {
    std::int32_t sum = 0;
    for (int i = 0; i < 6; ++i) {
      const std::uint32_t word = generator_();
      sum += static_cast<std::int32_t>(word & 0xFFFFu) + static_cast<std::int32_t>(word >> 16);
    }
    return sum / 2 - 0x30000;  // kept for compatibility: not clipped to 16 bits
  }

 private:
  Mt19937 generator_;
};

}  // namespace Tessera

#endif  // TESSERA_NUMERICS_MT19937_H
