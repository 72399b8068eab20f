// Charset names and code-page conversion: a MIME charset name to a Win32 code page number, and
// narrow text in a code page to UTF-16 and back, through the platform's converters.
//
// Conversion follows the platform: bad input and characters a page can't express are replaced
// ('?' when narrowing, U+FFFD for bad UTF-8), not refused. Code page 0 is the process's default
// page (Win32::GetACP). A length of `npos` means the text ends at its first NUL; an empty text
// gives an empty result without any conversion, even for a page that doesn't exist.
#ifndef TESSERA_TEXT_TEXTCONV_H
#define TESSERA_TEXT_TEXTCONV_H

#include <string>

#include <tessera_export.h>
#include <tessera/frame/Library.h>

namespace Tessera {

// The code page of a charset name: true and `codePage` set when the name is known, false and
// `codePage` untouched when not. The name is normalised first, by keeping only what `isalnum`
// accepts and putting it through `tolower` (so the process locale decides), and must then
// match one of 150 names exactly; a name longer than 31 characters is refused before that. A
// null `charset` gives the default page.
TESSERA_API bool GetCodePage(const char* charset, unsigned int& codePage);

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

}  // namespace Tessera

#endif  // TESSERA_TEXT_TEXTCONV_H
