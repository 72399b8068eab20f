// Internal helpers of the date texts: a fixed buffer that numbers are written into
// without the C library's formatting, and ASCII name matching.
#ifndef TESSERA_TIME_TIMETEXT_H
#define TESSERA_TIME_TIMETEXT_H

#include <cstdint>
#include <cstring>
#include <string>

namespace Tessera {
namespace detail {

// Holds the longest date text of any format for any 63-bit tick count (five-digit years).
class TextBuffer {
 public:
  void Put(char c) { data_[size_++] = c; }
  void Put(const char* text, unsigned length) {
    std::memcpy(data_ + size_, text, length);
    size_ += length;
  }
  // `value` in decimal, zero-padded to at least `width` digits, as "%0*u" would.
  void Number(std::uint64_t value, unsigned width) {
    char digits[20];
    unsigned count = 0;
    do {
      digits[count++] = static_cast<char>('0' + value % 10);
      value /= 10;
    } while (value != 0);
    for (; width > count; --width) Put('0');
    while (count != 0) Put(digits[--count]);
  }
  void Two(unsigned value) {
    if (value < 100) {
      Put(static_cast<char>('0' + value / 10));
      Put(static_cast<char>('0' + value % 10));
    } else {
      Number(value, 2);
    }
  }
  void AssignTo(std::string& out) const { out.assign(data_, size_); }
  unsigned Size() const { return size_; }
  const char* Data() const { return data_; }

 private:
  char data_[64];
  unsigned size_ = 0;
};

inline char FoldAscii(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

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

}  // namespace detail
}  // namespace Tessera

#endif  // TESSERA_TIME_TIMETEXT_H
