// Internal: the value of a hex digit byte, shared by the percent and quoted-printable decoders.
#ifndef TESSERA_INTERNET_HEXDIGITS_H
#define TESSERA_INTERNET_HEXDIGITS_H

namespace Tessera {
namespace detail {

// Digit values by byte, 16 for any byte that is not a hex digit.
struct HexDigitTable {
  unsigned char value[256];
};

constexpr HexDigitTable MakeHexDigitTable() {
  HexDigitTable table{};
  for (int c = 0; c < 256; ++c)
    table.value[c] = c >= '0' && c <= '9'   ? static_cast<unsigned char>(c - '0')
                     : c >= 'a' && c <= 'f' ? static_cast<unsigned char>(c - 'a' + 10)
                     : c >= 'A' && c <= 'F' ? static_cast<unsigned char>(c - 'A' + 10)
                                            : 16;
  return table;
}

inline constexpr HexDigitTable kHexDigits = MakeHexDigitTable();

inline int HexDigit(char c) { return kHexDigits.value[static_cast<unsigned char>(c)]; }

}  // namespace detail
}  // namespace Tessera

#endif  // TESSERA_INTERNET_HEXDIGITS_H
