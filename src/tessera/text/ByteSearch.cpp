// The forward search compares the needle's first and last bytes at 16 or 32 candidate places
// at once and checks the middle only where both agree. A text that keeps both bytes agreeing
// without a match (runs of one letter, say) would make that quadratic, so past a budget of
// failed checks the rest goes to memmem, whose two-way scan is linear.
#include "tessera/text/ByteSearch.h"

#include <cstdint>
#include <cstring>

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#define TESSERA_TEXT_X86 1
#endif

namespace Tessera::detail {
namespace {

// Failed middle checks allowed: a few, plus one for each 8 candidate places passed.
inline bool OverBudget(std::size_t checks, std::size_t place) { return checks > 16 + (place >> 3); }

// Candidate places run from `from` below `count`; the haystack holds count + length - 1 bytes.
const char* FindRest(const char* haystack, std::size_t from, std::size_t count,
                     const char* needle, std::size_t length) {
  const void* hit = memmem(haystack + from, count - from + length - 1, needle, length);
  return static_cast<const char*>(hit);
}

#ifdef TESSERA_TEXT_X86

const char* FindTail(const char* haystack, std::size_t from, std::size_t count,
                     const char* needle, std::size_t length) {
  const char first = needle[0];
  const char last = needle[length - 1];
  for (std::size_t i = from; i < count; ++i)
    if (haystack[i] == first && haystack[i + length - 1] == last &&
        std::memcmp(haystack + i + 1, needle + 1, length - 2) == 0)
      return haystack + i;
  return nullptr;
}

const char* FindSse2(const char* haystack, std::size_t count, const char* needle,
                     std::size_t length) {
  const __m128i first = _mm_set1_epi8(needle[0]);
  const __m128i last = _mm_set1_epi8(needle[length - 1]);
  std::size_t checks = 0;
  std::size_t i = 0;
  for (; i + 16 <= count; i += 16) {
    const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(haystack + i));
    const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(haystack + i + length - 1));
    unsigned int mask = static_cast<unsigned int>(
        _mm_movemask_epi8(_mm_and_si128(_mm_cmpeq_epi8(a, first), _mm_cmpeq_epi8(b, last))));
    while (mask != 0) {
      const std::size_t at = i + static_cast<std::size_t>(__builtin_ctz(mask));
      if (std::memcmp(haystack + at + 1, needle + 1, length - 2) == 0) return haystack + at;
      if (OverBudget(++checks, at)) return FindRest(haystack, at + 1, count, needle, length);
      mask &= mask - 1;
    }
  }
  return FindTail(haystack, i, count, needle, length);
}

__attribute__((target("avx2"))) const char* FindAvx2(const char* haystack, std::size_t count,
                                                      const char* needle, std::size_t length) {
  const __m256i first = _mm256_set1_epi8(needle[0]);
  const __m256i last = _mm256_set1_epi8(needle[length - 1]);
  std::size_t checks = 0;
  std::size_t i = 0;
  for (; i + 32 <= count; i += 32) {
    const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(haystack + i));
    const __m256i b =
        _mm256_loadu_si256(reinterpret_cast<const __m256i*>(haystack + i + length - 1));
    std::uint32_t mask = static_cast<std::uint32_t>(_mm256_movemask_epi8(
        _mm256_and_si256(_mm256_cmpeq_epi8(a, first), _mm256_cmpeq_epi8(b, last))));
    while (mask != 0) {
      const std::size_t at = i + static_cast<std::size_t>(__builtin_ctz(mask));
      if (std::memcmp(haystack + at + 1, needle + 1, length - 2) == 0) return haystack + at;
      if (OverBudget(++checks, at)) return FindRest(haystack, at + 1, count, needle, length);
      mask &= mask - 1;
    }
  }
  return FindSse2(haystack + i, count - i, needle, length);
}

#endif

}  // namespace

const char* FindBytes(const char* haystack, std::size_t size, const char* needle,
                      std::size_t length) {
  if (length == 1) return static_cast<const char*>(std::memchr(haystack, needle[0], size));
  const std::size_t count = size - length + 1;
#ifdef TESSERA_TEXT_X86
  if (__builtin_cpu_supports("avx2")) return FindAvx2(haystack, count, needle, length);
  return FindSse2(haystack, count, needle, length);
#else
  return FindRest(haystack, 0, count, needle, length);
#endif
}

const char* FindBytesReverse(const char* haystack, std::size_t size, const char* needle,
                             std::size_t length) {
  std::size_t end = size - length + 1;
  while (end > 0) {
#ifdef __GLIBC__
    const void* hit = memrchr(haystack, needle[0], end);
    if (hit == nullptr) return nullptr;
    const std::size_t at = static_cast<std::size_t>(static_cast<const char*>(hit) - haystack);
#else
    const std::size_t at = end - 1;
    if (haystack[at] != needle[0]) {
      end = at;
      continue;
    }
#endif
    if (std::memcmp(haystack + at + 1, needle + 1, length - 1) == 0) return haystack + at;
    end = at;
  }
  return nullptr;
}

}  // namespace Tessera::detail
