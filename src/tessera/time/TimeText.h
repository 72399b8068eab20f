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

// `value` in exactly `Width` digits when it fits, unrolled by the compiler; wider values
// take PutNumber.
template <unsigned Width>
inline char* PutDigits(char* out, unsigned value) {
  static_assert(Width >= 2 && Width <= 4, "the date fields are two to four digits wide");
  constexpr unsigned limit = Width == 2 ? 100 : Width == 3 ? 1000 : 10000;
  if (value >= limit) return PutNumber(out, value, Width);
  for (unsigned i = Width; i-- > 0; value /= 10) out[i] = static_cast<char>('0' + value % 10);
  return out + Width;
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
