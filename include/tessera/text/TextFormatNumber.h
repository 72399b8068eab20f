// TextFormatNumber: a number as text, by definition exactly what a fresh standard output
// string stream writes for it under the global C++ locale of the moment: decimal integers
// with a `-` and nothing else, floating values in the general format with 6 significant
// digits ("0.1", "100000", "1e+06", "inf", "-nan"). Under another global locale the text
// follows that locale's numeric punctuation, as the stream's does.
//
// Instantiated for `char` and `char16_t` text and the 13 types of TextNumeric. With `char`,
// `signed char` and `unsigned char` are characters, not numbers: the result is that one byte.
// With `char16_t` they are decimal numbers (-128 to 127, 0 to 255).
#ifndef TESSERA_TEXT_TEXTFORMATNUMBER_H
#define TESSERA_TEXT_TEXTFORMATNUMBER_H

#include <string>

#include <tessera_export.h>

namespace Tessera {

// Replaces `out` with the text of `value`. Reports nothing; lack of memory passes through.
template <class T, class C>
TESSERA_API void TextFormatNumber(const T& value, std::basic_string<C>& out);

}  // namespace Tessera

#endif  // TESSERA_TEXT_TEXTFORMATNUMBER_H
