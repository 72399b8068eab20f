#include <tessera/internet/MimeDecode.h>

#include <cstdint>
#include <cstring>
#include <exception>
#include <string>

#include <tessera/internet/Base64.h>
#include <tessera/text/TextCompare.h>
#include <tessera/text/TextConv.h>
#include <tessera/text/TextNumeric.h>

#include "tessera/internet/HexDigits.h"

namespace Tessera {
namespace {

using Byte = unsigned char;

// The byte that the two characters at `s` stand for. Two hex digits are looked up; anything
// else is left to the number reader. Kept for compatibility: a sign in front of one digit
// ("=+F") reads as that digit.
inline bool ReadEscape(const char* s, Byte& byte) {
  const int high = detail::HexDigit(s[0]);
  const int low = detail::HexDigit(s[1]);
  if ((high | low) < 16) {
    byte = static_cast<Byte>(high << 4 | low);
    return true;
  }
  return TextNumeric<char, unsigned char>(s, 2, byte, 16);
}

bool DecodeQuotedPrintable(const char* text, std::size_t length, std::string& out,
                           bool underscoreAsSpace) {
  // The result is never longer than the text: sized once, cut at the end.
  out.resize(length);
  char* const begin = &out[0];
  char* d = begin;
  const char* s = text;
  const char* const end = text + length;
  bool good = true;
  while (s < end) {
    const char* special = static_cast<const char*>(std::memchr(s, '=', static_cast<std::size_t>(end - s)));
    const char* const runEnd = special != nullptr ? special : end;
    if (underscoreAsSpace) {
      for (; s < runEnd; ++s) *d++ = *s == '_' ? ' ' : *s;
    } else {
      std::memcpy(d, s, static_cast<std::size_t>(runEnd - s));
      d += runEnd - s;
      s = runEnd;
    }
    if (special == nullptr) break;
    Byte byte = 0;
    if (end - special < 3 || !ReadEscape(special + 1, byte)) {
      good = false;
      break;
    }
    *d++ = static_cast<char>(byte);
    s = special + 3;
  }
  out.resize(static_cast<std::size_t>(d - begin));
  return good;
}

// Decodes the encoded word that starts at `at` ("=?"), appends its text to `result` and gives
// the place behind it; or gives 0 when there is no word there or it doesn't decode.
std::size_t DecodeWord(const char* text, std::size_t length, std::size_t at, std::u16string& result) {
  const std::size_t nameStart = at + 2;
  const char* mark = static_cast<const char*>(std::memchr(text + nameStart, '?', length - nameStart));
  if (mark == nullptr || mark == text + nameStart) return 0;
  const std::size_t firstMark = static_cast<std::size_t>(mark - text);
  if (length - firstMark < 3 || text[firstMark + 2] != '?') return 0;
  const char kind = text[firstMark + 1];
  if (kind != 'Q' && kind != 'B') return 0;
  const std::size_t encodedStart = firstMark + 3;
  std::size_t encodedEnd = encodedStart;
  while (encodedEnd + 1 < length && !(text[encodedEnd] == '?' && text[encodedEnd + 1] == '='))
    ++encodedEnd;
  if (encodedEnd + 1 >= length) return 0;
  std::string bytes;
  const bool decoded =
      kind == 'B'
          ? Base64Decode(text + encodedStart, static_cast<unsigned int>(encodedEnd - encodedStart), bytes)
          : DecodeQuotedPrintable(text + encodedStart, encodedEnd - encodedStart, bytes, true);
  if (!decoded) return 0;
  const std::string charset(text + nameStart, firstMark - nameStart);
  std::u16string wide;
  try {
    TextWidenCharset(bytes.data(), static_cast<unsigned int>(bytes.size()), wide, charset.c_str());
  } catch (const std::exception&) {
    return 0;
  }
  result += wide;
  return encodedEnd + 2;
}

}  // namespace

bool MimeQuotedPrintableDecode(const char* text, unsigned int length, std::string& out,
                               bool underscoreAsSpace) {
  if (length == npos) length = static_cast<unsigned int>(std::strlen(text));
  return DecodeQuotedPrintable(text, length, out, underscoreAsSpace);
}

bool MimeDecodeEncodedWords(const char* text, unsigned int length, std::u16string& out) {
  if (length == npos) length = static_cast<unsigned int>(std::strlen(text));
  std::u16string result;
  std::size_t place = 0;
  for (;;) {
    const unsigned int found =
        TextFind(text + place, static_cast<unsigned int>(length - place), "=?", 2);
    const std::size_t runEnd = found == npos ? length : place + found;
    for (; place < runEnd; ++place) {
      const Byte byte = static_cast<Byte>(text[place]);
      if (byte >= 0x80) return false;
      result += static_cast<char16_t>(byte);
    }
    if (place == length) break;
    const std::size_t behind = DecodeWord(text, length, place, result);
    if (behind != 0) {
      place = behind;
    } else {
      result += u"=?";
      place += 2;
    }
  }
  out.swap(result);
  return true;
}

}  // namespace Tessera
