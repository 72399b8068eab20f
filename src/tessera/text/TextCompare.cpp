// Comparison and search of counted text. The bounded compares are the C library's (strncmp,
// strncasecmp, strcoll, wcscoll, towlower); the searches find the same lowest or highest
// candidate as a plain scan with those compares, only faster.
#include <tessera/text/TextCompare.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <memory>
#include <string>
#include <type_traits>

#include "tessera/text/ByteSearch.h"

namespace Tessera {
namespace {

template <class C>
unsigned int Resolve(const C* text, unsigned int length) {
  return length == npos ? static_cast<unsigned int>(std::char_traits<C>::length(text)) : length;
}

// The fold policies of the compares and searches: each maps a character to what the compare
// judges, and says whether that is the character itself and whether folding costs a call of
// the C library (then equal characters are let through before it).
struct ExactFold {
  static constexpr bool kExact = true;
  static constexpr bool kCalls = false;
  template <class C>
  C operator()(C c) const {
    return c;
  }
};

// Case folding of one byte by the process locale, as strncasecmp folds it.
class NarrowFold {
 public:
  static constexpr bool kExact = false;
  static constexpr bool kCalls = false;
#ifdef __GLIBC__
  NarrowFold() : table_(*__ctype_tolower_loc()) {}
  unsigned int operator()(char c) const {
    return static_cast<unsigned int>(table_[static_cast<unsigned char>(c)]);
  }

 private:
  const std::int32_t* table_;
#else
  unsigned int operator()(char c) const {
    return static_cast<unsigned int>(std::tolower(static_cast<unsigned char>(c)));
  }
#endif
};

// Case folding of one code unit by the process locale, as towlower folds it.
struct WideFold {
  static constexpr bool kExact = false;
  static constexpr bool kCalls = true;
  std::wint_t operator()(char16_t c) const { return std::towlower(static_cast<std::wint_t>(c)); }
};

// Steps shared by the four comparisons: resolve the lengths, compare the common part with
// `bounded`, and let the shorter text sort first when that part is equal.
template <class C, class Bounded>
int CompareWith(const C* text1, unsigned int length1, const C* text2, unsigned int length2,
                Bounded bounded) {
  length1 = Resolve(text1, length1);
  length2 = Resolve(text2, length2);
  const unsigned int common = std::min(length1, length2);
  if (common != 0) {
    const int result = bounded(text1, text2, common);
    if (result != 0) return result;
  }
  if (length1 == length2) return 0;
  return length1 < length2 ? -1 : 1;
}

// The bounded compare of wide text, as wcsncmp or wcsncasecmp: the exact form gives the
// difference of the units, the caseless one -1 or 1.
template <class Fold>
int WideCompareBounded(const char16_t* text1, const char16_t* text2, std::size_t count) {
  const Fold fold;
  for (std::size_t i = 0; i < count; ++i) {
    const char16_t c1 = text1[i];
    const char16_t c2 = text2[i];
    if (c1 != c2) {
      if constexpr (Fold::kExact) {
        return c1 - c2;
      } else {
        const std::wint_t folded1 = fold(c1);
        const std::wint_t folded2 = fold(c2);
        if (folded1 != folded2) return folded1 < folded2 ? -1 : 1;
      }
    } else if (c1 == 0) {
      break;
    }
  }
  return 0;
}

// Room for a NUL-terminated copy: on the stack while small, else on the heap.
template <class T>
class Scratch {
 public:
  explicit Scratch(std::size_t size) {
    if (size > sizeof(local_) / sizeof(T)) {
      heap_.reset(new T[size]);
      data_ = heap_.get();
    }
  }
  T* data() { return data_; }

 private:
  T local_[256];
  std::unique_ptr<T[]> heap_;
  T* data_ = local_;
};

// Narrow text goes to strcoll byte by byte.
template <bool fold>
void CopyForCollation(char* to, const char* from, std::size_t length) {
  const NarrowFold lower;
  for (std::size_t i = 0; i < length; ++i)
    to[i] = fold ? static_cast<char>(lower(from[i])) : from[i];
  to[length] = '\0';
}

// The platform's wchar_t is a code point: surrogate pairs are joined for the collation, a
// lone surrogate stays as it is.
template <bool fold>
void CopyForCollation(wchar_t* to, const char16_t* from, std::size_t length) {
  std::size_t i = 0;
  while (i < length) {
    std::uint32_t c = from[i++];
    if (c >= 0xD800 && c <= 0xDBFF && i < length && from[i] >= 0xDC00 && from[i] <= 0xDFFF)
      c = ((c - 0xD800) << 10) + (from[i++] - 0xDC00u) + 0x10000;
    *to++ = fold ? static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(c)))
                 : static_cast<wchar_t>(c);
  }
  *to = L'\0';
}

inline int Collate(const char* text1, const char* text2) { return std::strcoll(text1, text2); }
inline int Collate(const wchar_t* text1, const wchar_t* text2) {
  return std::wcscoll(text1, text2);
}

// The C library collates NUL-terminated text only, so each side is copied up to its first NUL
// within the count, folded if asked, and terminated.
template <bool fold, class C>
int CollateBounded(const C* text1, const C* text2, std::size_t count) {
  using Copy = std::conditional_t<sizeof(C) == 1, char, wchar_t>;
  const C* nul1 = std::char_traits<C>::find(text1, count, C());
  const C* nul2 = std::char_traits<C>::find(text2, count, C());
  const std::size_t length1 = nul1 != nullptr ? static_cast<std::size_t>(nul1 - text1) : count;
  const std::size_t length2 = nul2 != nullptr ? static_cast<std::size_t>(nul2 - text2) : count;
  Scratch<Copy> copy1(length1 + 1);
  Scratch<Copy> copy2(length2 + 1);
  CopyForCollation<fold>(copy1.data(), text1, length1);
  CopyForCollation<fold>(copy2.data(), text2, length2);
  return Collate(copy1.data(), copy2.data());
}

// Checks shared by the searches. Gives false if nothing can be found; else sets `last` to the
// highest candidate index and `significant` to the part of the sought text that has to match:
// a NUL in it ends the compare, so nothing behind its first NUL counts. A backward search
// counts down in 31 bits, so a higher last candidate finds nothing.
template <bool kReverse, class C>
bool PrepareSearch(const C* text, unsigned int length, const C* sought, unsigned int soughtLength,
                   std::size_t& last, std::size_t& significant) {
  length = Resolve(text, length);
  soughtLength = Resolve(sought, soughtLength);
  if (soughtLength == 0 || soughtLength > length) return false;
  last = length - soughtLength;
  if (kReverse && last > 0x7FFFFFFFu) return false;
  const C* nul = std::char_traits<C>::find(sought, soughtLength, C());
  significant = nul != nullptr ? static_cast<std::size_t>(nul - sought) + 1 : soughtLength;
  return true;
}

// Candidate test past the first character, which is already known to match.
template <class C, class Fold>
bool RestEqual(const C* text, const C* sought, std::size_t length, const Fold& fold) {
  if constexpr (Fold::kExact)
    return std::memcmp(text + 1, sought + 1, (length - 1) * sizeof(C)) == 0;
  for (std::size_t i = 1; i < length; ++i)
    if (text[i] != sought[i] && fold(text[i]) != fold(sought[i])) return false;
  return true;
}

// The four searches, lowest candidate first or highest first. Narrow exact text has a byte
// search of its own; the other forms scan plainly.
template <bool kReverse, class Fold, class C>
unsigned int Search(const C* text, unsigned int length, const C* sought,
                    unsigned int soughtLength) {
  std::size_t last, significant;
  if (!PrepareSearch<kReverse>(text, length, sought, soughtLength, last, significant)) return npos;
  if constexpr (Fold::kExact && sizeof(C) == 1) {
    const char* hit = kReverse
                          ? detail::FindBytesReverse(text, last + significant, sought, significant)
                          : detail::FindBytes(text, last + significant, sought, significant);
    return hit != nullptr ? static_cast<unsigned int>(hit - text) : npos;
  } else {
    const Fold fold;
    const C first = sought[0];
    const auto firstFolded = fold(first);
    for (std::size_t k = 0; k <= last; ++k) {
      const std::size_t i = kReverse ? last - k : k;
      if (((Fold::kCalls && text[i] == first) || fold(text[i]) == firstFolded) &&
          RestEqual(text + i, sought, significant, fold))
        return static_cast<unsigned int>(i);
    }
    return npos;
  }
}

// A set of bytes, for the character class searches.
class ByteSet {
 public:
  void Add(unsigned int c) { bits_[c >> 6] |= std::uint64_t{1} << (c & 63); }
  bool Has(unsigned int c) const { return (bits_[c >> 6] >> (c & 63)) & 1; }

 private:
  std::uint64_t bits_[4] = {0, 0, 0, 0};
};

// Sets of code units up to this size are folded once onto the stack.
constexpr std::size_t kFoldedSetMax = 64;

// Steps shared by the character class searches: resolve the lengths and give `npos` for an
// empty text or set, else what `scan` finds with the resolved lengths.
template <class C, class Scan>
unsigned int FindFirstOfWith(const C* text, unsigned int length, const C* chars,
                             unsigned int charsLength, Scan scan) {
  length = Resolve(text, length);
  charsLength = Resolve(chars, charsLength);
  if (length == 0 || charsLength == 0) return npos;
  return scan(length, charsLength);
}

}  // namespace

int TextCompare(const char* text1, unsigned int length1, const char* text2, unsigned int length2) {
  return CompareWith(
      text1, length1, text2, length2,
      [](const char* a, const char* b, std::size_t n) { return std::strncmp(a, b, n); });
}

int TextCompare(const char16_t* text1, unsigned int length1, const char16_t* text2,
                unsigned int length2) {
  return CompareWith(text1, length1, text2, length2, WideCompareBounded<ExactFold>);
}

int TextCompareCaseless(const char* text1, unsigned int length1, const char* text2,
                        unsigned int length2) {
  return CompareWith(
      text1, length1, text2, length2,
      [](const char* a, const char* b, std::size_t n) { return strncasecmp(a, b, n); });
}

int TextCompareCaseless(const char16_t* text1, unsigned int length1, const char16_t* text2,
                        unsigned int length2) {
  return CompareWith(text1, length1, text2, length2, WideCompareBounded<WideFold>);
}

int TextCollate(const char* text1, unsigned int length1, const char* text2, unsigned int length2) {
  return CompareWith(text1, length1, text2, length2, CollateBounded<false, char>);
}

int TextCollate(const char16_t* text1, unsigned int length1, const char16_t* text2,
                unsigned int length2) {
  return CompareWith(text1, length1, text2, length2, CollateBounded<false, char16_t>);
}

int TextCollateCaseless(const char* text1, unsigned int length1, const char* text2,
                        unsigned int length2) {
  return CompareWith(text1, length1, text2, length2, CollateBounded<true, char>);
}

int TextCollateCaseless(const char16_t* text1, unsigned int length1, const char16_t* text2,
                        unsigned int length2) {
  return CompareWith(text1, length1, text2, length2, CollateBounded<true, char16_t>);
}

unsigned int TextFind(const char* text, unsigned int length, const char* sought,
                      unsigned int soughtLength) {
  return Search<false, ExactFold>(text, length, sought, soughtLength);
}

unsigned int TextFind(const char16_t* text, unsigned int length, const char16_t* sought,
                      unsigned int soughtLength) {
  return Search<false, ExactFold>(text, length, sought, soughtLength);
}

unsigned int TextFindCaseless(const char* text, unsigned int length, const char* sought,
                              unsigned int soughtLength) {
  return Search<false, NarrowFold>(text, length, sought, soughtLength);
}

unsigned int TextFindCaseless(const char16_t* text, unsigned int length, const char16_t* sought,
                              unsigned int soughtLength) {
  return Search<false, WideFold>(text, length, sought, soughtLength);
}

unsigned int TextRFind(const char* text, unsigned int length, const char* sought,
                       unsigned int soughtLength) {
  return Search<true, ExactFold>(text, length, sought, soughtLength);
}

unsigned int TextRFind(const char16_t* text, unsigned int length, const char16_t* sought,
                       unsigned int soughtLength) {
  return Search<true, ExactFold>(text, length, sought, soughtLength);
}

unsigned int TextRFindCaseless(const char* text, unsigned int length, const char* sought,
                               unsigned int soughtLength) {
  return Search<true, NarrowFold>(text, length, sought, soughtLength);
}

unsigned int TextRFindCaseless(const char16_t* text, unsigned int length, const char16_t* sought,
                               unsigned int soughtLength) {
  return Search<true, WideFold>(text, length, sought, soughtLength);
}

unsigned int TextFindFirstOf(const char* text, unsigned int length, const char* chars,
                             unsigned int charsLength) {
  return FindFirstOfWith(text, length, chars, charsLength, [&](unsigned int n, unsigned int m) {
    if (m == 1) {
      const void* hit = std::memchr(text, chars[0], n);
      return hit != nullptr ? static_cast<unsigned int>(static_cast<const char*>(hit) - text)
                            : npos;
    }
    ByteSet set;
    for (unsigned int j = 0; j < m; ++j) set.Add(static_cast<unsigned char>(chars[j]));
    for (unsigned int i = 0; i < n; ++i)
      if (set.Has(static_cast<unsigned char>(text[i]))) return i;
    return npos;
  });
}

unsigned int TextFindFirstOf(const char16_t* text, unsigned int length, const char16_t* chars,
                             unsigned int charsLength) {
  return FindFirstOfWith(text, length, chars, charsLength, [&](unsigned int n, unsigned int m) {
    // The low byte of each member filters before the set itself is searched.
    ByteSet lowBytes;
    for (unsigned int j = 0; j < m; ++j) lowBytes.Add(chars[j] & 0xFFu);
    for (unsigned int i = 0; i < n; ++i)
      if (lowBytes.Has(text[i] & 0xFFu) &&
          std::char_traits<char16_t>::find(chars, m, text[i]) != nullptr)
        return i;
    return npos;
  });
}

unsigned int TextFindFirstOfCaseless(const char* text, unsigned int length, const char* chars,
                                     unsigned int charsLength) {
  return FindFirstOfWith(text, length, chars, charsLength, [&](unsigned int n, unsigned int m) {
    const NarrowFold lower;
    ByteSet set;
    for (unsigned int j = 0; j < m; ++j) set.Add(lower(chars[j]) & 0xFFu);
    for (unsigned int i = 0; i < n; ++i) {
      const unsigned int c = lower(text[i]);
      if (c < 256 && set.Has(c)) return i;
    }
    return npos;
  });
}

unsigned int TextFindFirstOfCaseless(const char16_t* text, unsigned int length,
                                     const char16_t* chars, unsigned int charsLength) {
  return FindFirstOfWith(text, length, chars, charsLength, [&](unsigned int n, unsigned int m) {
    const WideFold fold;
    std::wint_t folded[kFoldedSetMax];
    const bool foldOnce = m <= kFoldedSetMax;
    if (foldOnce)
      for (unsigned int j = 0; j < m; ++j) folded[j] = fold(chars[j]);
    for (unsigned int i = 0; i < n; ++i) {
      const std::wint_t c = fold(text[i]);
      for (unsigned int j = 0; j < m; ++j)
        if ((foldOnce ? folded[j] : fold(chars[j])) == c) return i;
    }
    return npos;
  });
}

}  // namespace Tessera
