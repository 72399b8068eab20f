// The forward search compares two of the needle's bytes, the two rarest in ordinary text, at
// 16 (SSE2) or 64 (AVX2) candidate places a round and checks the whole needle only where both
// agree. A text that keeps both bytes agreeing without a match (runs of one letter, say) would
// make that quadratic, so past a budget of failed checks the rest goes to memmem, whose two-way
// scan is linear.
#include "tessera/text/ByteSearch.h"

#include <cstdint>
#include <cstring>

#if defined(__x86_64__) || (defined(__i386__) && defined(__SSE2__))
#include <immintrin.h>
#define TESSERA_TEXT_X86 1
#endif

namespace Tessera::detail {
namespace {

// Failed checks allowed: a few, plus one for each 8 candidate places passed.
inline bool OverBudget(std::size_t checks, std::size_t place) { return checks > 16 + (place >> 3); }

// Candidate places run from `from` below `count`; the haystack holds count + length - 1 bytes.
const char* FindRest(const char* haystack, std::size_t from, std::size_t count, const char* needle,
                     std::size_t length) {
  const void* hit = memmem(haystack + from, count - from + length - 1, needle, length);
  return static_cast<const char*>(hit);
}

#ifdef TESSERA_TEXT_X86

// How common a byte is in text, roughly: letters by their frequency in English, white space
// and punctuation among them, control bytes rare. In UTF-8 a lead byte stands for a whole
// script (0xD0 and 0xD1 carry all of Cyrillic), so it ranks with the commonest letters, and
// the continuation bytes, which tell the characters apart, in between: with leads ranked as
// these, a Cyrillic needle was filtered by its lead bytes and searched at 0.84 times memmem.
unsigned char Commonness(unsigned char c) {
  static const char kLetters[] = "etaoinshrdlcumwfgypbvkjxqz";  // most common first
  if (c == ' ') return 255;
  if (c >= 'a' && c <= 'z') {
    const char* at = static_cast<const char*>(std::memchr(kLetters, c, 26));
    return static_cast<unsigned char>(250 - 4 * (at - kLetters));
  }
  if (c >= 'A' && c <= 'Z') {
    const char* at = static_cast<const char*>(std::memchr(kLetters, c - 'A' + 'a', 26));
    return static_cast<unsigned char>(150 - 2 * (at - kLetters));
  }
  if (c >= '0' && c <= '9') return 160;
  if (c == ',' || c == '.' || c == '\n') return 190;
  if (c >= 0xC0) return 230;
  if (c >= 0x80) return 120;
  if (c < 0x20 || c == 0x7F) return 40;
  return 130;
}

// The two bytes that filter the candidates, by their places in the needle, `first` before
// `second`.
struct Filter {
  std::size_t first;
  std::size_t second;
};

// The places of the needle's two rarest bytes.
Filter PickRareBytes(const char* needle, std::size_t length) {
  auto commonness = [needle](std::size_t i) {
    return Commonness(static_cast<unsigned char>(needle[i]));
  };
  std::size_t rarest = 0;
  for (std::size_t i = 1; i < length; ++i)
    if (commonness(i) < commonness(rarest)) rarest = i;
  std::size_t next = rarest == 0 ? 1 : 0;
  for (std::size_t i = 0; i < length; ++i)
    if (i != rarest && commonness(i) < commonness(next)) next = i;
  return rarest < next ? Filter{rarest, next} : Filter{next, rarest};
}

const char* FindTail(const char* haystack, std::size_t from, std::size_t count, const char* needle,
                     std::size_t length, Filter filter) {
  for (std::size_t i = from; i < count; ++i)
    if (haystack[i + filter.first] == needle[filter.first] &&
        haystack[i + filter.second] == needle[filter.second] &&
        std::memcmp(haystack + i, needle, length) == 0)
      return haystack + i;
  return nullptr;
}

const char* FindSse2(const char* haystack, std::size_t count, const char* needle,
                     std::size_t length, Filter filter) {
  const __m128i first = _mm_set1_epi8(needle[filter.first]);
  const __m128i second = _mm_set1_epi8(needle[filter.second]);
  std::size_t checks = 0;
  std::size_t i = 0;
  for (; i + 16 <= count; i += 16) {
    const __m128i a =
        _mm_loadu_si128(reinterpret_cast<const __m128i*>(haystack + i + filter.first));
    const __m128i b =
        _mm_loadu_si128(reinterpret_cast<const __m128i*>(haystack + i + filter.second));
    unsigned int mask = static_cast<unsigned int>(
        _mm_movemask_epi8(_mm_and_si128(_mm_cmpeq_epi8(a, first), _mm_cmpeq_epi8(b, second))));
    while (mask != 0) {
      const std::size_t at = i + static_cast<std::size_t>(__builtin_ctz(mask));
      if (std::memcmp(haystack + at, needle, length) == 0) return haystack + at;
      if (OverBudget(++checks, at)) return FindRest(haystack, at + 1, count, needle, length);
      mask &= mask - 1;
    }
  }
  return FindTail(haystack, i, count, needle, length, filter);
}

__attribute__((target("avx2"))) inline std::uint32_t Candidates(const char* place,
                                                                std::size_t first,
                                                                std::size_t second, __m256i a,
                                                                __m256i b) {
  const __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(place + first));
  const __m256i y = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(place + second));
  return static_cast<std::uint32_t>(
      _mm256_movemask_epi8(_mm256_and_si256(_mm256_cmpeq_epi8(x, a), _mm256_cmpeq_epi8(y, b))));
}

__attribute__((target("avx2"))) const char* FindAvx2(const char* haystack, std::size_t count,
                                                     const char* needle, std::size_t length,
                                                     Filter filter) {
  const __m256i first = _mm256_set1_epi8(needle[filter.first]);
  const __m256i second = _mm256_set1_epi8(needle[filter.second]);
  std::size_t checks = 0;
  std::size_t i = 0;
  // 64 places a round, tested together, since candidates are rare.
  for (; i + 64 <= count; i += 64) {
    const std::uint64_t low = Candidates(haystack + i, filter.first, filter.second, first, second);
    const std::uint64_t high =
        Candidates(haystack + i + 32, filter.first, filter.second, first, second);
    std::uint64_t mask = low | (high << 32);
    while (mask != 0) {
      const std::size_t at = i + static_cast<std::size_t>(__builtin_ctzll(mask));
      if (std::memcmp(haystack + at, needle, length) == 0) return haystack + at;
      if (OverBudget(++checks, at)) return FindRest(haystack, at + 1, count, needle, length);
      mask &= mask - 1;
    }
  }
  return FindSse2(haystack + i, count - i, needle, length, filter);
}

#endif

}  // namespace

const char* FindBytes(const char* haystack, std::size_t size, const char* needle,
                      std::size_t length) {
  if (length == 1) return static_cast<const char*>(std::memchr(haystack, needle[0], size));
  const std::size_t count = size - length + 1;
#ifdef TESSERA_TEXT_X86
  const Filter filter = PickRareBytes(needle, length);
  if (__builtin_cpu_supports("avx2")) return FindAvx2(haystack, count, needle, length, filter);
  return FindSse2(haystack, count, needle, length, filter);
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
