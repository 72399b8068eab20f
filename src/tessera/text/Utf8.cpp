// UTF-8 and UTF-16 converters. Runs of ASCII go 16 at a time through SSE2 where the target
// has it; everything else is decoded one sequence at a time by the rules of the Unicode
// Standard's table of well-formed byte sequences.
#include <tessera/text/Utf8.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include <langinfo.h>
#include <strings.h>

#include <tessera/frame/Errors.h>

#include "tessera/text/Utf8Convert.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#define TESSERA_TEXT_SSE2 1
#endif

namespace Tessera {
namespace detail {
namespace {

using Byte = unsigned char;

inline bool IsContinuation(Byte b) { return (b & 0xC0) == 0x80; }

// Copies the ASCII bytes at `s` as units to `d`, 16 at a time while both sides have room,
// and stops at the first other byte or when fewer than 16 remain.
inline void WidenAsciiRun(const Byte*& s, const Byte* se, char16_t*& d, const char16_t* de) {
#ifdef TESSERA_TEXT_SSE2
  const __m128i zero = _mm_setzero_si128();
  while (se - s >= 16 && de - d >= 16) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm_unpacklo_epi8(bytes, zero));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 8), _mm_unpackhi_epi8(bytes, zero));
    const unsigned int high = static_cast<unsigned int>(_mm_movemask_epi8(bytes));
    if (high != 0) {
      const unsigned int ascii = static_cast<unsigned int>(__builtin_ctz(high));
      s += ascii;
      d += ascii;
      return;
    }
    s += 16;
    d += 16;
  }
#else
  (void)se;
  (void)de;
  (void)s;
  (void)d;
#endif
}

// Copies the units below 0x80 at `s` as bytes to `d`, as WidenAsciiRun does the other way.
inline void NarrowAsciiRun(const char16_t*& s, const char16_t* se, Byte*& d, const Byte* de) {
#ifdef TESSERA_TEXT_SSE2
  const __m128i nonAscii = _mm_set1_epi16(static_cast<short>(0xFF80));
  const __m128i zero = _mm_setzero_si128();
  while (se - s >= 16 && de - d >= 16) {
    const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
    const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + 8));
    const __m128i bad = _mm_and_si128(_mm_or_si128(low, high), nonAscii);
    if (_mm_movemask_epi8(_mm_cmpeq_epi16(bad, zero)) != 0xFFFF) return;
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm_packus_epi16(low, high));
    s += 16;
    d += 16;
  }
#else
  (void)se;
  (void)de;
  (void)s;
  (void)d;
#endif
}

}  // namespace

Utf8Outcome ConvertUtf8ToUtf16(const char*& from, const char* fromEnd, char16_t*& to,
                               char16_t* toEnd) {
  const Byte* s = reinterpret_cast<const Byte*>(from);
  const Byte* const se = reinterpret_cast<const Byte*>(fromEnd);
  char16_t* d = to;
  Utf8Outcome outcome = Utf8Outcome::done;
  while (s < se) {
    const Byte lead = *s;
    if (lead < 0x80) {
      WidenAsciiRun(s, se, d, toEnd);
      while (s < se && *s < 0x80) {
        if (d == toEnd) {
          outcome = Utf8Outcome::noRoom;
          goto stop;
        }
        *d++ = *s++;
      }
      continue;
    }
    const std::size_t left = static_cast<std::size_t>(se - s);
    std::uint32_t c;
    std::size_t size;
    // The lead byte announces the size; a cut-off sequence is incomplete before anything in
    // it is judged.
    if (lead < 0xC0) {
      outcome = Utf8Outcome::invalid;
      break;
    } else if (lead < 0xE0) {
      if (left < 2) {
        outcome = Utf8Outcome::incomplete;
        break;
      }
      if (lead < 0xC2 || !IsContinuation(s[1])) {
        outcome = Utf8Outcome::invalid;
        break;
      }
      c = ((lead & 0x1Fu) << 6) | (s[1] & 0x3Fu);
      size = 2;
    } else if (lead < 0xF0) {
      if (left < 3) {
        outcome = Utf8Outcome::incomplete;
        break;
      }
      const Byte low = lead == 0xE0 ? 0xA0 : 0x80;
      const Byte high = lead == 0xED ? 0x9F : 0xBF;
      if (s[1] < low || s[1] > high || !IsContinuation(s[2])) {
        outcome = Utf8Outcome::invalid;
        break;
      }
      c = ((lead & 0x0Fu) << 12) | ((s[1] & 0x3Fu) << 6) | (s[2] & 0x3Fu);
      size = 3;
    } else if (lead < 0xF8) {
      if (left < 4) {
        outcome = Utf8Outcome::incomplete;
        break;
      }
      const Byte low = lead == 0xF0 ? 0x90 : 0x80;
      const Byte high = lead == 0xF4 ? 0x8F : 0xBF;
      if (lead > 0xF4 || s[1] < low || s[1] > high || !IsContinuation(s[2]) ||
          !IsContinuation(s[3])) {
        outcome = Utf8Outcome::invalid;
        break;
      }
      c = ((lead & 0x07u) << 18) | ((s[1] & 0x3Fu) << 12) | ((s[2] & 0x3Fu) << 6) |
          (s[3] & 0x3Fu);
      size = 4;
    } else {
      // 5- and 6-byte forms are never decoded.
      outcome = left < (lead < 0xFC ? 5u : 6u) ? Utf8Outcome::incomplete : Utf8Outcome::invalid;
      break;
    }
    if (c < 0x10000) {
      if (d == toEnd) {
        outcome = Utf8Outcome::noRoom;
        break;
      }
      *d++ = static_cast<char16_t>(c);
    } else {
      if (toEnd - d < 2) {
        outcome = Utf8Outcome::noRoom;
        break;
      }
      c -= 0x10000;
      d[0] = static_cast<char16_t>(0xD800 + (c >> 10));
      d[1] = static_cast<char16_t>(0xDC00 + (c & 0x3FF));
      d += 2;
    }
    s += size;
  }
stop:
  from = reinterpret_cast<const char*>(s);
  to = d;
  return outcome;
}

Utf8Outcome ConvertUtf16ToUtf8(const char16_t*& from, const char16_t* fromEnd, char*& to,
                               char* toEnd) {
  const char16_t* s = from;
  Byte* d = reinterpret_cast<Byte*>(to);
  const Byte* const de = reinterpret_cast<const Byte*>(toEnd);
  Utf8Outcome outcome = Utf8Outcome::done;
  while (s < fromEnd) {
    std::uint32_t c = *s;
    if (c < 0x80) {
      NarrowAsciiRun(s, fromEnd, d, de);
      while (s < fromEnd && *s < 0x80) {
        if (d == de) {
          outcome = Utf8Outcome::noRoom;
          goto stop;
        }
        *d++ = static_cast<Byte>(*s++);
      }
      continue;
    }
    std::size_t units = 1;
    if (c >= 0xD800 && c <= 0xDFFF) {
      if (c >= 0xDC00) {
        outcome = Utf8Outcome::invalid;
        break;
      }
      if (fromEnd - s < 2) {
        outcome = Utf8Outcome::incomplete;
        break;
      }
      const std::uint32_t low = s[1];
      if (low < 0xDC00 || low > 0xDFFF) {
        outcome = Utf8Outcome::invalid;
        break;
      }
      c = ((c - 0xD800) << 10) + (low - 0xDC00) + 0x10000;
      units = 2;
    }
    const std::ptrdiff_t room = de - d;
    if (c < 0x800) {
      if (room < 2) {
        outcome = Utf8Outcome::noRoom;
        break;
      }
      d[0] = static_cast<Byte>(0xC0 | (c >> 6));
      d[1] = static_cast<Byte>(0x80 | (c & 0x3F));
      d += 2;
    } else if (c < 0x10000) {
      if (room < 3) {
        outcome = Utf8Outcome::noRoom;
        break;
      }
      d[0] = static_cast<Byte>(0xE0 | (c >> 12));
      d[1] = static_cast<Byte>(0x80 | ((c >> 6) & 0x3F));
      d[2] = static_cast<Byte>(0x80 | (c & 0x3F));
      d += 3;
    } else {
      if (room < 4) {
        outcome = Utf8Outcome::noRoom;
        break;
      }
      d[0] = static_cast<Byte>(0xF0 | (c >> 18));
      d[1] = static_cast<Byte>(0x80 | ((c >> 12) & 0x3F));
      d[2] = static_cast<Byte>(0x80 | ((c >> 6) & 0x3F));
      d[3] = static_cast<Byte>(0x80 | (c & 0x3F));
      d += 4;
    }
    s += units;
  }
stop:
  from = s;
  to = reinterpret_cast<char*>(d);
  return outcome;
}

}  // namespace detail

namespace {

using detail::Utf8Outcome;

// Size of the piece of target that TextNarrowUtf8 fills before it appends to the result.
constexpr std::size_t kNarrowPiece = 256;

}  // namespace

unsigned int WidenCharUtf8(char16_t& out, const char* text, unsigned int length) {
  if (length == npos) length = static_cast<unsigned int>(std::strlen(text));
  const char* from = text;
  char16_t* to = &out;
  const Utf8Outcome outcome = detail::ConvertUtf8ToUtf16(from, text + length, to, &out + 1);
  if (outcome == Utf8Outcome::done || outcome == Utf8Outcome::noRoom)
    return static_cast<unsigned int>(from - text);
  return 0;
}

void TextWidenUtf8(const char* text, unsigned int length, std::u16string& out) {
  if (length == npos) length = static_cast<unsigned int>(std::strlen(text));
  // One unit per byte is always room enough.
  out.resize(length);
  const char* from = text;
  char16_t* const begin = &out[0];
  char16_t* to = begin;
  const Utf8Outcome outcome = detail::ConvertUtf8ToUtf16(from, text + length, to, begin + length);
  out.resize(static_cast<std::size_t>(to - begin));
  if (outcome == Utf8Outcome::incomplete)
    throw TextConversionError("unable to widen incomplete UTF-8 sequence",
                              PLAINT_CONTEXT("Tessera::TextWidenUtf8"));
  if (outcome == Utf8Outcome::invalid)
    throw TextConversionError("unable to widen invalid UTF-8 sequence",
                              PLAINT_CONTEXT("Tessera::TextWidenUtf8"));
}

void TextNarrowUtf8(const char16_t* text, unsigned int length, std::string& out) {
  if (length == npos) length = static_cast<unsigned int>(std::char_traits<char16_t>::length(text));
  out.clear();
  const char16_t* from = text;
  const char16_t* const end = text + length;
  Utf8Outcome outcome = Utf8Outcome::noRoom;
  char piece[kNarrowPiece];
  while (outcome == Utf8Outcome::noRoom) {
    char* to = piece;
    outcome = detail::ConvertUtf16ToUtf8(from, end, to, piece + sizeof piece);
    out.append(piece, static_cast<std::size_t>(to - piece));
  }
  if (outcome == Utf8Outcome::incomplete)
    throw TextConversionError("unable to narrow incomplete Unicode sequence",
                              PLAINT_CONTEXT("Tessera::TextNarrowUtf8"));
  if (outcome == Utf8Outcome::invalid)
    throw TextConversionError("unable to narrow invalid Unicode sequence",
                              PLAINT_CONTEXT("Tessera::TextNarrowUtf8"));
}

bool IsDefaultCharsetUtf8() {
  const char* codeset = nl_langinfo(CODESET);
  return codeset != nullptr &&
         (strcasecmp(codeset, "UTF-8") == 0 || strcasecmp(codeset, "UTF8") == 0);
}

}  // namespace Tessera
