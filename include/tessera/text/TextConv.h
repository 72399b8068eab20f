// Charset names and code-page conversion: a MIME charset name to a Win32 code page number, and
// narrow text in a code page to UTF-16 and back, through the platform's converters.
//
// Conversion follows the platform: bad input and characters a page can't express are replaced
// ('?' when narrowing, U+FFFD for bad UTF-8), not refused. Code page 0 is the process's default
// page (Win32::GetACP). A length of `npos` means the text ends at its first NUL; an empty text
// gives an empty result without any conversion, even for a page that doesn't exist.
//
// Conveniences: each conversion also takes a std::string_view or std::u16string_view, its size
// being the explicit length. A view of `npos` units or more is refused as the platform refuses
// a length it can't take: TextConversionError with the code-page form's message and context
// and ERROR_INVALID_PARAMETER attached; a charset name is still looked up first.
#ifndef TESSERA_TEXT_TEXTCONV_H
#define TESSERA_TEXT_TEXTCONV_H

#include <string>
#include <string_view>

#include <tessera_export.h>
#include <tessera/frame/Library.h>
#include <tessera/text/TextViews.h>

namespace Tessera {

// The code page of a charset name: true and `codePage` set when the name is known, false and
// `codePage` untouched when not. The name is normalised first, by keeping only what `isalnum`
// accepts and putting it through `tolower` (so the process locale decides), and must then
// match one of 150 names exactly; a name longer than 31 characters is refused before that. A
// null `charset` gives the default page.
[[nodiscard]] TESSERA_API bool GetCodePage(const char* charset, unsigned int& codePage);

// Replaces `out` with `text` widened from `codePage`. Throws TextConversionError ("Unicode
// conversion failed", with the Win32 error attached) when the platform refuses, e.g. for a
// page without a converter; `out` then holds nothing usable.
TESSERA_API void TextWidenCodePage(const char* text, unsigned int length, std::u16string& out,
                                   unsigned int codePage);

// Replaces `out` with `text` narrowed to `codePage`. Throws TextConversionError ("native
// charset conversion failed", with the Win32 error attached) when the platform refuses; `out`
// then holds nothing usable.
TESSERA_API void TextNarrowCodePage(const char16_t* text, unsigned int length, std::string& out,
                                    unsigned int codePage);

// As TextWidenCodePage and TextNarrowCodePage under a charset name. An unknown name throws
// TextConversionError ("unsupported charset"), even for an empty text.
TESSERA_API void TextWidenCharset(const char* text, unsigned int length, std::u16string& out,
                                  const char* charset);
TESSERA_API void TextNarrowCharset(const char16_t* text, unsigned int length, std::string& out,
                                   const char* charset);

// As TextWidenCodePage and TextNarrowCodePage with the default page.
TESSERA_API void TextWiden(const char* text, unsigned int length, std::u16string& out);
TESSERA_API void TextNarrow(const char16_t* text, unsigned int length, std::string& out);

// Conveniences: the conversions above on views.
inline void TextWidenCodePage(std::string_view text, std::u16string& out, unsigned int codePage) {
  if (!detail::FitsLength(text.size()))
    detail::ThrowConversionTooLong("Unicode conversion failed", "Tessera::TextWidenCodePage", true);
  TextWidenCodePage(text.data(), static_cast<unsigned int>(text.size()), out, codePage);
}
inline void TextNarrowCodePage(std::u16string_view text, std::string& out, unsigned int codePage) {
  if (!detail::FitsLength(text.size()))
    detail::ThrowConversionTooLong("native charset conversion failed",
                                   "Tessera::TextNarrowCodePage", true);
  TextNarrowCodePage(text.data(), static_cast<unsigned int>(text.size()), out, codePage);
}
inline void TextWidenCharset(std::string_view text, std::u16string& out, const char* charset) {
  const bool fits = detail::FitsLength(text.size());
  TextWidenCharset(text.data(), fits ? static_cast<unsigned int>(text.size()) : 0, out, charset);
  if (!fits) TextWidenCodePage(text, out, 0);
}
inline void TextNarrowCharset(std::u16string_view text, std::string& out, const char* charset) {
  const bool fits = detail::FitsLength(text.size());
  TextNarrowCharset(text.data(), fits ? static_cast<unsigned int>(text.size()) : 0, out, charset);
  if (!fits) TextNarrowCodePage(text, out, 0);
}
inline void TextWiden(std::string_view text, std::u16string& out) {
  TextWidenCodePage(text, out, 0);
}
inline void TextNarrow(std::u16string_view text, std::string& out) {
  TextNarrowCodePage(text, out, 0);
}

}  // namespace Tessera

#endif  // TESSERA_TEXT_TEXTCONV_H
