// Decoding of MIME content: quoted-printable text, and the encoded words of header text
// ("=?charset?Q?...?=" and "=?charset?B?...?="), read more simply than RFC 2047 asks: no soft
// line breaks, words never joined, the space between two words kept.
//
// Conveniences: both decoders also take a std::string_view. A view of `npos` bytes or more
// can't be passed on and gives false with `out` untouched.
#ifndef TESSERA_INTERNET_MIMEDECODE_H
#define TESSERA_INTERNET_MIMEDECODE_H

#include <string>
#include <string_view>

#include <tessera_export.h>
#include <tessera/frame/Library.h>
#include <tessera/text/TextViews.h>

namespace Tessera {

// Replaces `out` with the quoted-printable `text` decoded (`length` npos: up to its NUL): "="
// and two characters read as a hexadecimal number (by TextNumeric, so "+F" is 0x0F) give that
// byte, and with `underscoreAsSpace` "_" gives a space; everything else stays, CR, LF and
// trailing white space included. False when a "=" has fewer than two characters behind it or
// they aren't a number; `out` then holds what came before that "=".
[[nodiscard]] TESSERA_API bool MimeQuotedPrintableDecode(const char* text, unsigned int length,
                                                         std::string& out, bool underscoreAsSpace);

// Replaces `out` with the header `text` widened, its encoded words decoded: Base64 for "B",
// quoted-printable with "_" as space for "Q" (capitals only), then widened from the charset as
// named (TextWidenCharset). A word that doesn't parse or decode, an unknown charset among them,
// stays as written. Plain text widens byte for byte; false, with `out` untouched, for a byte
// above 0x7F in it.
[[nodiscard]] TESSERA_API bool MimeDecodeEncodedWords(const char* text, unsigned int length,
                                                      std::u16string& out);

// Conveniences: the decoders on a view.
[[nodiscard]] inline bool MimeQuotedPrintableDecode(std::string_view text, std::string& out,
                                                    bool underscoreAsSpace) {
  return detail::PassView(&MimeQuotedPrintableDecode, text, out, underscoreAsSpace);
}
[[nodiscard]] inline bool MimeDecodeEncodedWords(std::string_view text, std::u16string& out) {
  return detail::PassView(&MimeDecodeEncodedWords, text, out);
}

}  // namespace Tessera

#endif  // TESSERA_INTERNET_MIMEDECODE_H
