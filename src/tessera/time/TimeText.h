// Internal helpers of the date texts: a fixed buffer that numbers are written into
// without the C library's formatting, and ASCII name matching.
#ifndef TESSERA_TIME_TIMETEXT_H
#define TESSERA_TIME_TIMETEXT_H

#include <cstdint>
#include <cstring>
#include <string>

#include <tessera/text/TextNumeric.h>

namespace Tessera {
namespace detail {

// Room for the longest date text of any format for any 63-bit tick count.
constexpr unsigned textBufferSize = 64;

// The writers take and return the place to write at; a local pointer keeps the compiler
// from reloading it after every character.
inline char* Put(char* out, char c) {
  *out = c;
  return out + 1;
}

inline char* Put(char* out, const char* text, unsigned length) {
  std::memcpy(out, text, length);
  return out + length;
}

// `value` in decimal, zero-padded to at least `width` digits, as "%0*u" would.
inline char* PutNumber(char* out, std::uint64_t value, unsigned width) {
  char digits[20];
  unsigned count = 0;
  do {
    digits[count++] = static_cast<char>('0' + value % 10);
    value /= 10;
  } while (value != 0);
  for (; width > count; --width) *out++ = '0';
  while (count != 0) *out++ = digits[--count];
  return out;
}

// "00" to "99", two characters each.
inline constexpr char digitPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

inline char* PutPair(char* out, unsigned value) {
  std::memcpy(out, digitPairs + 2 * value, 2);
  return out + 2;
}

// `value` in exactly `Width` digits when it fits, a pair at a time from a table (a fifth
// fewer instructions for an ISO date than a digit at a time); wider values take PutNumber.
template <unsigned Width>
inline char* PutDigits(char* out, unsigned value) {
  static_assert(Width >= 2 && Width <= 4, "the date fields are two to four digits wide");
  constexpr unsigned limit = Width == 2 ? 100 : Width == 3 ? 1000 : 10000;
  if (value >= limit) return PutNumber(out, value, Width);
  if (Width == 2) return PutPair(out, value);
  if (Width == 3) *out++ = static_cast<char>('0' + value / 100);
  else out = PutPair(out, value / 100);
  return PutPair(out, value % 100);
}

inline char* PutTwo(char* out, unsigned value) { return PutDigits<2>(out, value); }
inline char* PutThree(char* out, unsigned value) { return PutDigits<3>(out, value); }
inline char* PutFour(char* out, unsigned value) { return PutDigits<4>(out, value); }

// Replaces `out` with the text, reusing its storage.
inline void Assign(std::string& out, const char* text, const char* end) {
  const std::size_t length = static_cast<std::size_t>(end - text);
  if (out.size() != length) out.resize(length);
  std::memcpy(&out[0], text, length);
}

constexpr char FoldAscii(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Exactly `count` characters as a decimal number, as TextNumeric<char, T> reads them in
// base 10. Plain digits, the usual case, are read here; anything else (a sign, say) is
// left to TextNumeric. At most 4 characters, so that plain digits always fit.
template <class T>
bool ReadField(const char* text, unsigned count, T& value) {
  unsigned result = 0;
  for (unsigned i = 0; i < count; ++i) {
    if (!IsDigit(text[i])) return TextNumeric<char, T>(text, count, value, 10);
    result = result * 10 + static_cast<unsigned>(text[i] - '0');
  }
  if (count == 0) return TextNumeric<char, T>(text, count, value, 10);
  value = static_cast<T>(result);
  return true;
}

// Eight characters as one word, the first in the lowest byte.
inline std::uint64_t Load8(const char* text) {
  std::uint64_t word;
  std::memcpy(&word, text, sizeof word);
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
  word = __builtin_bswap64(word);
#endif
  return word;
}

inline constexpr std::uint64_t ones = 0x0101010101010101u;

// Non-zero unless every byte of `word` under `mask` (0xFF bytes) is a decimal digit.
constexpr std::uint64_t NotDigits(std::uint64_t word, std::uint64_t mask) {
  const std::uint64_t values = (word ^ 0x30 * ones) & mask;  // 0 to 9 for digits
  return (values & 0xF0 * ones) | ((values + 0x06 * ones) & 0x10 * ones);
}

// Byte i becomes ten times digit i plus digit i + 1: each byte of a two-digit number at i
// holds that number. No byte carries into the next, whatever the characters are.
constexpr std::uint64_t DigitPairs(std::uint64_t word) {
  const std::uint64_t digits = word & 0x0F * ones;
  return digits * 10 + (digits >> 8);
}

constexpr unsigned Byte(std::uint64_t word, unsigned index) {
  return static_cast<unsigned>(word >> (8 * index)) & 0xFF;
}

// Same length and equal without regard to ASCII case; a prefix never matches.
inline bool EqualCaseless(const char* text, unsigned length, const char* name) {
  unsigned i = 0;
  for (; i < length; ++i) {
    if (name[i] == '\0' || FoldAscii(text[i]) != FoldAscii(name[i])) return false;
  }
  return name[i] == '\0';
}

// Index of the first of `count` names that the text matches, or -1.
inline int MatchName(const char* text, unsigned length, const char* const* names, int count) {
  for (int i = 0; i < count; ++i) {
    if (EqualCaseless(text, length, names[i])) return i;
  }
  return -1;
}

// A name of 2 or 3 characters folded into one number with its length: two such texts
// match without regard to case exactly when their keys are equal.
constexpr std::uint32_t NameKey(const char* text, unsigned length) {
  return length << 24 | static_cast<std::uint32_t>(static_cast<unsigned char>(FoldAscii(text[0]))) << 16 |
         static_cast<std::uint32_t>(static_cast<unsigned char>(FoldAscii(text[1]))) << 8 |
         (length > 2 ? static_cast<unsigned char>(FoldAscii(text[2])) : 0u);
}

constexpr unsigned Length(const char* text) { return text[0] == '\0' ? 0 : 1 + Length(text + 1); }

// A fixed list of short names looked up by key in one probe: each name has a slot of its
// own under `multiplier`, which the constructor checks at compile time.
template <int count>
class NameTable {
 public:
  constexpr NameTable(const char* const (&names)[count], std::uint32_t multiplier)
      : multiplier_(multiplier), keys_(), indexes_(), distinct_(true) {
    for (auto& index : indexes_) index = -1;
    for (int i = 0; i < count; ++i) {
      const std::uint32_t key = NameKey(names[i], Length(names[i]));
      const unsigned slot = Slot(key);
      if (indexes_[slot] >= 0) distinct_ = false;
      keys_[slot] = key;
      indexes_[slot] = static_cast<signed char>(i);
    }
  }
  constexpr bool Distinct() const { return distinct_; }
  // The index of the name that `text` matches (same length, caseless), or -1.
  int Find(const char* text, unsigned length) const {
    if (length < 2 || length > 3) return -1;
    const std::uint32_t key = NameKey(text, length);
    const unsigned slot = Slot(key);
    return keys_[slot] == key ? indexes_[slot] : -1;
  }

 private:
  constexpr unsigned Slot(std::uint32_t key) const { return (key * multiplier_) >> 27; }

  std::uint32_t multiplier_;
  std::uint32_t keys_[32];
  signed char indexes_[32];
  bool distinct_;
};

}  // namespace detail
}  // namespace Tessera

#endif  // TESSERA_TIME_TIMETEXT_H
