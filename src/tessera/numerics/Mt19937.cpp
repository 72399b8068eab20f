#include <tessera/numerics/Mt19937.h>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace Tessera {

namespace {

inline std::uint32_t Twist(std::uint32_t upper, std::uint32_t lower, std::uint32_t far) {
  const std::uint32_t y = (upper & 0x80000000u) | (lower & 0x7FFFFFFFu);
  return far ^ (y >> 1) ^ ((y & 1u) ? 0x9908B0DFu : 0u);
}

#if defined(__SSE2__)
// Four steps at once. Within one pass a step reads words that earlier steps have already
// rewritten only at distance M (first half) or N - M (second half), both far beyond four,
// so four neighbouring steps never depend on one another.
inline void Twist4(std::uint32_t* out, const std::uint32_t* here, const std::uint32_t* far) {
  const __m128i upper = _mm_loadu_si128(reinterpret_cast<const __m128i*>(here));
  const __m128i lower = _mm_loadu_si128(reinterpret_cast<const __m128i*>(here + 1));
  const __m128i distant = _mm_loadu_si128(reinterpret_cast<const __m128i*>(far));
  const __m128i y = _mm_or_si128(_mm_and_si128(upper, _mm_set1_epi32(static_cast<int>(0x80000000u))),
                                 _mm_and_si128(lower, _mm_set1_epi32(0x7FFFFFFF)));
  const __m128i odd = _mm_sub_epi32(_mm_setzero_si128(), _mm_and_si128(y, _mm_set1_epi32(1)));
  const __m128i matrix = _mm_and_si128(odd, _mm_set1_epi32(static_cast<int>(0x9908B0DFu)));
  const __m128i result = _mm_xor_si128(_mm_xor_si128(distant, _mm_srli_epi32(y, 1)), matrix);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), result);
}
#endif

}  // namespace

void Mt19937::Init(std::uint32_t seed) {
  mt_[0] = seed;
  for (unsigned int i = 1; i < N; ++i) mt_[i] = 1812433253u * (mt_[i - 1] ^ (mt_[i - 1] >> 30)) + i;
  mti_ = N;
}

Mt19937::Mt19937(const std::uint32_t* key, unsigned int length) {
  Init(seedDefault);
  unsigned int i = 1;
  unsigned int j = 0;
  for (unsigned int k = N > length ? N : length; k != 0; --k) {
    const std::uint32_t word = length == 0 ? 0u : key[j];
    mt_[i] = (mt_[i] ^ ((mt_[i - 1] ^ (mt_[i - 1] >> 30)) * 1664525u)) + word + j;
    ++i;
    ++j;
    if (i >= N) {
      mt_[0] = mt_[N - 1];
      i = 1;
    }
    if (j >= length) j = 0;
  }
  for (unsigned int k = N - 1; k != 0; --k) {
    mt_[i] = (mt_[i] ^ ((mt_[i - 1] ^ (mt_[i - 1] >> 30)) * 1566083941u)) - i;
    ++i;
    if (i >= N) {
      mt_[0] = mt_[N - 1];
      i = 1;
    }
  }
  mt_[0] = 0x80000000u;
}

void Mt19937::Regenerate() {
#if defined(__SSE2__)
  // The first N - M steps read words not yet rewritten; the next ones read words rewritten
  // by this pass at distance N - M. The last step wraps around to mt_[0] and goes alone.
  static_assert((M - 1) % 4 == 0, "the second half must split into whole groups of four");
  unsigned int k = 0;
  for (; k + 4 <= N - M; k += 4) Twist4(mt_ + k, mt_ + k, mt_ + k + M);
  for (; k < N - M; ++k) mt_[k] = Twist(mt_[k], mt_[k + 1], mt_[k + M]);
  for (std::uint32_t* word = mt_ + (N - M); word != mt_ + (N - 1); word += 4) Twist4(word, word, word - (N - M));
#else
  for (unsigned int k = 0; k < N - M; ++k) mt_[k] = Twist(mt_[k], mt_[k + 1], mt_[k + M]);
  for (unsigned int k = N - M; k < N - 1; ++k) mt_[k] = Twist(mt_[k], mt_[k + 1], mt_[k - (N - M)]);
#endif
  mt_[N - 1] = Twist(mt_[N - 1], mt_[0], mt_[M - 1]);
  mti_ = 0;
}

}  // namespace Tessera
