// Base64 on tables: the encoder writes two characters per lookup of 12 bits, and the decoder
// joins four pre-shifted 6-bit values per group, where one bit above the 24 marks a character
// outside the alphabet. A group with such a character, and everything behind it, goes through
// the careful per-character loop, which alone knows "=" and the locale's test.
#include <tessera/internet/Base64.h>

#include <cctype>
#include <cstdint>
#include <cstring>

namespace Tessera {
namespace {

using Byte = unsigned char;

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

struct EncodeTable {
  char pair[4096][2];
};

constexpr EncodeTable MakeEncodeTable() {
  EncodeTable table{};
  for (int i = 0; i < 4096; ++i) {
    table.pair[i][0] = kAlphabet[i >> 6];
    table.pair[i][1] = kAlphabet[i & 63];
  }
  return table;
}

constexpr EncodeTable kEncode = MakeEncodeTable();

constexpr std::uint32_t kOutside = 1u << 24;

// The value of each character, shifted to its place in a group of four.
struct DecodeTable {
  std::uint32_t shifted[4][256];
};

constexpr DecodeTable MakeDecodeTable() {
  DecodeTable table{};
  for (int place = 0; place < 4; ++place)
    for (int c = 0; c < 256; ++c) table.shifted[place][c] = kOutside;
  for (std::uint32_t value = 0; value < 64; ++value)
    for (int place = 0; place < 4; ++place)
      table.shifted[place][static_cast<Byte>(kAlphabet[value])] = value << (6 * (3 - place));
  return table;
}

constexpr DecodeTable kDecode = MakeDecodeTable();

inline void PutPair(char* d, std::uint32_t twelveBits) { std::memcpy(d, kEncode.pair[twelveBits], 2); }

inline std::uint32_t Group(const Byte* s) {
  return kDecode.shifted[0][s[0]] | kDecode.shifted[1][s[1]] | kDecode.shifted[2][s[2]] |
         kDecode.shifted[3][s[3]];
}

inline void PutBytes(Byte* d, std::uint32_t bits) {
  d[0] = static_cast<Byte>(bits >> 16);
  d[1] = static_cast<Byte>(bits >> 8);
  d[2] = static_cast<Byte>(bits);
}

}  // namespace

void Base64Encode(const void* data, unsigned int length, std::string& out) {
  out.clear();
  if (length == 0) return;
  const Byte* s = static_cast<const Byte*>(data);
  const std::size_t groups = length / 3;
  const std::size_t rest = length % 3;
  out.resize((groups + (rest != 0)) * 4);
  char* d = &out[0];
  const Byte* const groupsEnd = s + groups * 3;
  // Two groups per step from one 8-byte load, while 8 bytes remain to be read.
  while (groupsEnd - s >= 8) {
    std::uint64_t word;
    std::memcpy(&word, s, 8);
    word = __builtin_bswap64(word);
    PutPair(d, static_cast<std::uint32_t>(word >> 52));
    PutPair(d + 2, static_cast<std::uint32_t>(word >> 40) & 0xFFF);
    PutPair(d + 4, static_cast<std::uint32_t>(word >> 28) & 0xFFF);
    PutPair(d + 6, static_cast<std::uint32_t>(word >> 16) & 0xFFF);
    s += 6;
    d += 8;
  }
  for (; s < groupsEnd; s += 3, d += 4) {
    const std::uint32_t bits = std::uint32_t{s[0]} << 16 | std::uint32_t{s[1]} << 8 | s[2];
    PutPair(d, bits >> 12);
    PutPair(d + 2, bits & 0xFFF);
  }
  if (rest != 0) {
    const std::uint32_t bits = std::uint32_t{s[0]} << 16 | (rest == 2 ? std::uint32_t{s[1]} << 8 : 0);
    PutPair(d, bits >> 12);
    d[2] = rest == 2 ? kAlphabet[(bits >> 6) & 63] : '=';
    d[3] = '=';
  }
}

void Base64Encode(const char* text, std::string& out) {
  Base64Encode(text, static_cast<unsigned int>(std::strlen(text)), out);
}

bool Base64Decode(const void* data, unsigned int length, std::string& out) {
  out.clear();
  if (length == 0) return true;
  const Byte* s = static_cast<const Byte*>(data);
  const Byte* const end = s + length;
  // Room for every group and a partial last one, and for the two bytes that an 8-byte store
  // writes beyond two groups.
  out.resize(std::size_t{length} / 4 * 3 + 5);
  Byte* const begin = reinterpret_cast<Byte*>(&out[0]);
  Byte* d = begin;
  while (end - s >= 8) {
    const std::uint32_t first = Group(s);
    const std::uint32_t second = Group(s + 4);
    if ((first | second) & kOutside) break;
    const std::uint64_t bytes =
        __builtin_bswap64(std::uint64_t{first} << 40 | std::uint64_t{second} << 16);
    std::memcpy(d, &bytes, 8);
    s += 8;
    d += 6;
  }
  while (end - s >= 4) {
    const std::uint32_t bits = Group(s);
    if (bits & kOutside) break;
    PutBytes(d, bits);
    s += 4;
    d += 3;
  }
  std::uint32_t values[4] = {};
  int count = 0;
  bool good = true;
  for (; s < end; ++s) {
    const Byte c = *s;
    // Kept for compatibility: the first pad ends the text, whatever stands behind it.
    if (c == '=') break;
    std::uint32_t value = kDecode.shifted[3][c];
    if (value & kOutside) {
      if (!std::isalnum(c) && c != '+' && c != '/') {
        good = false;
        break;
      }
      value = 0;
    }
    values[count++] = value;
    if (count == 4) {
      PutBytes(d, values[0] << 18 | values[1] << 12 | values[2] << 6 | values[3]);
      d += 3;
      count = 0;
    }
  }
  if (good && count > 1) {
    PutBytes(d, values[0] << 18 | values[1] << 12 | values[2] << 6);
    d += count - 1;
  }
  out.resize(static_cast<std::size_t>(d - begin));
  return good;
}

bool Base64Decode(const char* text, std::string& out) {
  return Base64Decode(text, static_cast<unsigned int>(std::strlen(text)), out);
}

}  // namespace Tessera
