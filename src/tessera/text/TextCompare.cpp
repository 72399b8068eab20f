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

#include "tessera/text/ByteSearch.h"

namespace Tessera {
namespace {

using Traits16 = std::char_traits<char16_t>;

unsigned int Resolve(const char* text, unsigned int length) {
  return length == npos ? static_cast<unsigned int>(std::strlen(text)) : length;
}

unsigned int Resolve(const char16_t* text, unsigned int length) {
  return length == npos ? static_cast<unsigned int>(Traits16::length(text)) : length;
}

// Case folding of one byte by the process locale, as strncasecmp folds it.
class NarrowFold {
 public:
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

inline std::wint_t WideFold(char16_t c) { return std::towlower(static_cast<std::wint_t>(c)); }

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

int WideCompareBounded(const char16_t* text1, const char16_t* text2, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const int c1 = text1[i];
    const int c2 = text2[i];
    if (c1 != c2) return c1 - c2;
    if (c1 == 0) break;
  }
  return 0;
}

int WideCompareCaselessBounded(const char16_t* text1, const char16_t* text2, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    if (text1[i] == text2[i]) {
      if (text1[i] == 0) break;
      continue;
    }
    const std::wint_t c1 = WideFold(text1[i]);
    const std::wint_t c2 = WideFold(text2[i]);
    if (c1 != c2) return c1 < c2 ? -1 : 1;
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

// The C library collates NUL-terminated text only, so each side is copied up to its first NUL
// within the count, folded if asked, and terminated.
template <bool fold>
int NarrowCollateBounded(const char* text1, const char* text2, std::size_t count) {
  const std::size_t length1 = strnlen(text1, count);
  const std::size_t length2 = strnlen(text2, count);
  Scratch<char> copy1(length1 + 1);
  Scratch<char> copy2(length2 + 1);
  const NarrowFold lower;
  auto copy = [&lower](char* to, const char* from, std::size_t length) {
    for (std::size_t i = 0; i < length; ++i)
      to[i] = fold ? static_cast<char>(lower(from[i])) : from[i];
    to[length] = '\0';
  };
  copy(copy1.data(), text1, length1);
  copy(copy2.data(), text2, length2);
  return std::strcoll(copy1.data(), copy2.data());
}

// The platform's wchar_t is a code point: surrogate pairs are joined for the collation, a
// lone surrogate stays as it is.
template <bool fold>
void DecodeForCollation(wchar_t* to, const char16_t* from, std::size_t length) {
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

template <bool fold>
int WideCollateBounded(const char16_t* text1, const char16_t* text2, std::size_t count) {
  const char16_t* nul1 = Traits16::find(text1, count, u'\0');
  const char16_t* nul2 = Traits16::find(text2, count, u'\0');
  const std::size_t length1 = nul1 != nullptr ? static_cast<std::size_t>(nul1 - text1) : count;
  const std::size_t length2 = nul2 != nullptr ? static_cast<std::size_t>(nul2 - text2) : count;
  Scratch<wchar_t> copy1(length1 + 1);
  Scratch<wchar_t> copy2(length2 + 1);
  DecodeForCollation<fold>(copy1.data(), text1, length1);
  DecodeForCollation<fold>(copy2.data(), text2, length2);
  return std::wcscoll(copy1.data(), copy2.data());
}

// Checks shared by the searches. Gives false if nothing can be found; else sets `last` to the
// highest candidate index and `significant` to the part of the sought text that has to match:
// a NUL in it ends the compare, so nothing behind its first NUL counts.
template <class C>
bool PrepareSearch(const C* text, unsigned int& length, const C* sought, unsigned int& soughtLength,
                   std::size_t& last, std::size_t& significant) {
  length = Resolve(text, length);
  soughtLength = Resolve(sought, soughtLength);
  if (soughtLength == 0 || soughtLength > length) return false;
  last = length - soughtLength;
  const C* nul = std::char_traits<C>::find(sought, soughtLength, C());
  significant = nul != nullptr ? static_cast<std::size_t>(nul - sought) + 1 : soughtLength;
  return true;
}

// Candidate tests for the caseless scans: the first character is already known to match.
bool RestEqualFolded(const char* text, const char* sought, std::size_t length,
                     const NarrowFold& lower) {
  for (std::size_t i = 1; i < length; ++i)
    if (text[i] != sought[i] && lower(text[i]) != lower(sought[i])) return false;
  return true;
}

bool RestEqualFolded(const char16_t* text, const char16_t* sought, std::size_t length) {
  for (std::size_t i = 1; i < length; ++i)
    if (text[i] != sought[i] && WideFold(text[i]) != WideFold(sought[i])) return false;
  return true;
}

bool RestEqual(const char16_t* text, const char16_t* sought, std::size_t length) {
  return std::memcmp(text + 1, sought + 1, (length - 1) * sizeof(char16_t)) == 0;
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

}  // namespace

int TextCompare(const char* text1, unsigned int length1, const char* text2, unsigned int length2) {
  return CompareWith(
      text1, length1, text2, length2,
      [](const char* a, const char* b, std::size_t n) { return std::strncmp(a, b, n); });
}

int TextCompare(const char16_t* text1, unsigned int length1, const char16_t* text2,
                unsigned int length2) {
  return CompareWith(text1, length1, text2, length2, WideCompareBounded);
}

int TextCompareCaseless(const char* text1, unsigned int length1, const char* text2,
                        unsigned int length2) {
  return CompareWith(
      text1, length1, text2, length2,
      [](const char* a, const char* b, std::size_t n) { return strncasecmp(a, b, n); });
}

int TextCompareCaseless(const char16_t* text1, unsigned int length1, const char16_t* text2,
                        unsigned int length2) {
  return CompareWith(text1, length1, text2, length2, WideCompareCaselessBounded);
}

int TextCollate(const char* text1, unsigned int length1, const char* text2, unsigned int length2) {
  return CompareWith(text1, length1, text2, length2, NarrowCollateBounded<false>);
}

int TextCollate(const char16_t* text1, unsigned int length1, const char16_t* text2,
                unsigned int length2) {
  return CompareWith(text1, length1, text2, length2, WideCollateBounded<false>);
}

int TextCollateCaseless(const char* text1, unsigned int length1, const char* text2,
                        unsigned int length2) {
  return CompareWith(text1, length1, text2, length2, NarrowCollateBounded<true>);
}

int TextCollateCaseless(const char16_t* text1, unsigned int length1, const char16_t* text2,
                        unsigned int length2) {
  return CompareWith(text1, length1, text2, length2, WideCollateBounded<true>);
}

unsigned int TextFind(const char* text, unsigned int length, const char* sought,
                      unsigned int soughtLength) {
  std::size_t last, significant;
  if (!PrepareSearch(text, length, sought, soughtLength, last, significant)) return npos;
  const char* hit = detail::FindBytes(text, last + significant, sought, significant);
  return hit != nullptr ? static_cast<unsigned int>(hit - text) : npos;
}

unsigned int TextFind(const char16_t* text, unsigned int length, const char16_t* sought,
                      unsigned int soughtLength) {
  std::size_t last, significant;
  if (!PrepareSearch(text, length, sought, soughtLength, last, significant)) return npos;
  const char16_t first = sought[0];
  for (std::size_t i = 0; i <= last; ++i)
    if (text[i] == first && RestEqual(text + i, sought, significant))
      return static_cast<unsigned int>(i);
  return npos;
}

unsigned int TextFindCaseless(const char* text, unsigned int length, const char* sought,
                              unsigned int soughtLength) {
  std::size_t last, significant;
  if (!PrepareSearch(text, length, sought, soughtLength, last, significant)) return npos;
  const NarrowFold lower;
  const unsigned int first = lower(sought[0]);
  for (std::size_t i = 0; i <= last; ++i)
    if (lower(text[i]) == first && RestEqualFolded(text + i, sought, significant, lower))
      return static_cast<unsigned int>(i);
  return npos;
}

unsigned int TextFindCaseless(const char16_t* text, unsigned int length, const char16_t* sought,
                              unsigned int soughtLength) {
  std::size_t last, significant;
  if (!PrepareSearch(text, length, sought, soughtLength, last, significant)) return npos;
  const char16_t first = sought[0];
  const std::wint_t firstFolded = WideFold(first);
  for (std::size_t i = 0; i <= last; ++i)
    if ((text[i] == first || WideFold(text[i]) == firstFolded) &&
        RestEqualFolded(text + i, sought, significant))
      return static_cast<unsigned int>(i);
  return npos;
}

unsigned int TextRFind(const char* text, unsigned int length, const char* sought,
                       unsigned int soughtLength) {
  std::size_t last, significant;
  if (!PrepareSearch(text, length, sought, soughtLength, last, significant)) return npos;
  if (last > 0x7FFFFFFFu) return npos;
  const char* hit = detail::FindBytesReverse(text, last + significant, sought, significant);
  return hit != nullptr ? static_cast<unsigned int>(hit - text) : npos;
}

unsigned int TextRFind(const char16_t* text, unsigned int length, const char16_t* sought,
                       unsigned int soughtLength) {
  std::size_t last, significant;
  if (!PrepareSearch(text, length, sought, soughtLength, last, significant)) return npos;
  if (last > 0x7FFFFFFFu) return npos;
  const char16_t first = sought[0];
  for (std::size_t i = last + 1; i-- > 0;)
    if (text[i] == first && RestEqual(text + i, sought, significant))
      return static_cast<unsigned int>(i);
  return npos;
}

unsigned int TextRFindCaseless(const char* text, unsigned int length, const char* sought,
                               unsigned int soughtLength) {
  std::size_t last, significant;
  if (!PrepareSearch(text, length, sought, soughtLength, last, significant)) return npos;
  if (last > 0x7FFFFFFFu) return npos;
  const NarrowFold lower;
  const unsigned int first = lower(sought[0]);
  for (std::size_t i = last + 1; i-- > 0;)
    if (lower(text[i]) == first && RestEqualFolded(text + i, sought, significant, lower))
      return static_cast<unsigned int>(i);
  return npos;
}

unsigned int TextRFindCaseless(const char16_t* text, unsigned int length, const char16_t* sought,
                               unsigned int soughtLength) {
  std::size_t last, significant;
  if (!PrepareSearch(text, length, sought, soughtLength, last, significant)) return npos;
  if (last > 0x7FFFFFFFu) return npos;
  const char16_t first = sought[0];
  const std::wint_t firstFolded = WideFold(first);
  for (std::size_t i = last + 1; i-- > 0;)
    if ((text[i] == first || WideFold(text[i]) == firstFolded) &&
        RestEqualFolded(text + i, sought, significant))
      return static_cast<unsigned int>(i);
  return npos;
}

unsigned int TextFindFirstOf(const char* text, unsigned int length, const char* chars,
                             unsigned int charsLength) {
  length = Resolve(text, length);
  charsLength = Resolve(chars, charsLength);
  if (length == 0 || charsLength == 0) return npos;
  if (charsLength == 1) {
    const void* hit = std::memchr(text, chars[0], length);
    return hit != nullptr ? static_cast<unsigned int>(static_cast<const char*>(hit) - text) : npos;
  }
  ByteSet set;
  for (unsigned int i = 0; i < charsLength; ++i) set.Add(static_cast<unsigned char>(chars[i]));
  for (unsigned int i = 0; i < length; ++i)
    if (set.Has(static_cast<unsigned char>(text[i]))) return i;
  return npos;
}

unsigned int TextFindFirstOf(const char16_t* text, unsigned int length, const char16_t* chars,
                             unsigned int charsLength) {
  length = Resolve(text, length);
  charsLength = Resolve(chars, charsLength);
  if (length == 0 || charsLength == 0) return npos;
  // The low byte of each member filters before the set itself is searched.
  ByteSet lowBytes;
  for (unsigned int i = 0; i < charsLength; ++i) lowBytes.Add(chars[i] & 0xFFu);
  for (unsigned int i = 0; i < length; ++i)
    if (lowBytes.Has(text[i] & 0xFFu) && Traits16::find(chars, charsLength, text[i]) != nullptr)
      return i;
  return npos;
}

unsigned int TextFindFirstOfCaseless(const char* text, unsigned int length, const char* chars,
                                     unsigned int charsLength) {
  length = Resolve(text, length);
  charsLength = Resolve(chars, charsLength);
  if (length == 0 || charsLength == 0) return npos;
  const NarrowFold lower;
  ByteSet set;
  for (unsigned int i = 0; i < charsLength; ++i) set.Add(lower(chars[i]) & 0xFFu);
  for (unsigned int i = 0; i < length; ++i) {
    const unsigned int c = lower(text[i]);
    if (c < 256 && set.Has(c)) return i;
  }
  return npos;
}

unsigned int TextFindFirstOfCaseless(const char16_t* text, unsigned int length,
                                     const char16_t* chars, unsigned int charsLength) {
  length = Resolve(text, length);
  charsLength = Resolve(chars, charsLength);
  if (length == 0 || charsLength == 0) return npos;
  std::wint_t folded[kFoldedSetMax];
  const bool foldOnce = charsLength <= kFoldedSetMax;
  if (foldOnce)
    for (unsigned int j = 0; j < charsLength; ++j) folded[j] = WideFold(chars[j]);
  for (unsigned int i = 0; i < length; ++i) {
    const std::wint_t c = WideFold(text[i]);
    for (unsigned int j = 0; j < charsLength; ++j)
      if ((foldOnce ? folded[j] : WideFold(chars[j])) == c) return i;
  }
  return npos;
}

}  // namespace Tessera
