// Strict conversion between UTF-8 and UTF-16 (`char16_t` code units), independent of any
// locale or code page. Exactly the well-formed sequences of the Unicode Standard pass:
// overlong forms, encoded surrogates, values above U+10FFFF, 5- and 6-byte forms and unpaired
// surrogates are refused, never replaced or skipped. A byte order mark is an ordinary
// character. A length of `npos` means the text ends at its first NUL; with an explicit length
// a NUL is U+0000 and passes through.
//
// Conveniences: each conversion also takes a std::string_view or std::u16string_view, its size
// being the explicit length. A view of `npos` units or more can't be passed on; what each form
// then does stands at its declaration.
#ifndef TESSERA_TEXT_UTF8_H
#define TESSERA_TEXT_UTF8_H

#include <string>
#include <string_view>

#include <tessera_export.h>
#include <tessera/frame/Library.h>
#include <tessera/text/TextViews.h>

namespace Tessera {

// Decodes the first character of the UTF-8 `text` into `out` and gives the number of bytes it
// took, or 0. The decoder runs on into what follows, so the result is 0 also when an
// incomplete or invalid sequence stands directly behind the first character (`out` then holds
// that character). A first character beyond U+FFFF doesn't fit one unit: 0, `out` unchanged;
// so for an empty text.
[[nodiscard]] TESSERA_API unsigned int WidenCharUtf8(char16_t& out, const char* text,
                                                     unsigned int length);

// Replaces `out` with the UTF-16 form of the UTF-8 `text`. Throws TextConversionError
// ("unable to widen incomplete UTF-8 sequence" for a sequence cut off by the end of the text,
// "unable to widen invalid UTF-8 sequence" otherwise); `out` then holds the characters before
// the offending sequence.
// Kept for compatibility: the size a lead byte announces is judged before the bytes, so even
// 0xFF or 0xC0 as the last byte is incomplete; callers reading in pieces wait for more on it.
TESSERA_API void TextWidenUtf8(const char* text, unsigned int length, std::u16string& out);

// Replaces `out` with the UTF-8 form of the UTF-16 `text`. Throws TextConversionError ("unable
// to narrow incomplete Unicode sequence" for a high surrogate that ends the text, "unable to
// narrow invalid Unicode sequence" for any other unpaired surrogate); `out` then holds the
// characters before it, never part of one.
TESSERA_API void TextNarrowUtf8(const char16_t* text, unsigned int length, std::string& out);

// Conveniences on views. WidenCharUtf8 reads no further than the second character, so a
// longer view is cut to the longest length without changing the result. The two whole-text
// forms throw TextConversionError ("text too long", context as the ported form) and leave
// `out` untouched.
[[nodiscard]] inline unsigned int WidenCharUtf8(char16_t& out, std::string_view text) {
  const std::size_t cut = detail::FitsLength(text.size()) ? text.size() : npos - 1;
  return WidenCharUtf8(out, text.data(), static_cast<unsigned int>(cut));
}
inline void TextWidenUtf8(std::string_view text, std::u16string& out) {
  if (!detail::FitsLength(text.size()))
    detail::ThrowConversionTooLong("text too long", "Tessera::TextWidenUtf8", false);
  TextWidenUtf8(text.data(), static_cast<unsigned int>(text.size()), out);
}
inline void TextNarrowUtf8(std::u16string_view text, std::string& out) {
  if (!detail::FitsLength(text.size()))
    detail::ThrowConversionTooLong("text too long", "Tessera::TextNarrowUtf8", false);
  TextNarrowUtf8(text.data(), static_cast<unsigned int>(text.size()), out);
}

// True if the process's narrow character encoding (the codeset of its locale) is UTF-8.
TESSERA_API bool IsDefaultCharsetUtf8();

}  // namespace Tessera

#endif  // TESSERA_TEXT_UTF8_H
