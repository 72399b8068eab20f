// TextFormatNumber: a number as text, by definition exactly what a fresh standard output
// string stream writes for it under the global C++ locale of the moment: decimal integers
// with a `-` and nothing else, floating values in the general format with 6 significant
// digits ("0.1", "100000", "1e+06", "inf", "-nan"). Under another global locale the text
// follows that locale's numeric punctuation, as the stream's does.
//
// Instantiated for `char` and `char16_t` text and the 13 types of TextNumeric; any other type
// fails to compile. With `char`, `signed char` and `unsigned char` are characters, not
// numbers: the result is that one byte. With `char16_t` they are decimal numbers (-128 to
// 127, 0 to 255).
#ifndef TESSERA_TEXT_TEXTFORMATNUMBER_H
#define TESSERA_TEXT_TEXTFORMATNUMBER_H

#include <string>

#include <tessera_export.h>
#include <tessera/text/TextNumeric.h>

namespace Tessera {
namespace detail {

template <class T, class C>
TESSERA_API void FormatNumberText(const T& value, std::basic_string<C>& out);

}  // namespace detail

// Replaces `out` with the text of `value`. Reports nothing; lack of memory passes through.
// The global locale is read once per call; a change made by another thread during the call
// is seen by it or not, as by a stream made at that moment.
template <class T, class C>
TESSERA_API void TextFormatNumber(const T& value, std::basic_string<C>& out) {
  static_assert(detail::IsTextNumericType<C, T>::value,
                "TextFormatNumber<T, C> takes T one of signed char, unsigned char, short, "
                "unsigned short, int, unsigned int, long, unsigned long, long long, unsigned "
                "long long, float, double, long double and C char or char16_t");
  detail::FormatNumberText(value, out);
}

// Implementation details follow.

#define TESSERA_TEXT_FORMAT_NUMBER(T)                                                       \
  extern template TESSERA_API void TextFormatNumber<T, char>(const T&, std::string&); \
  extern template TESSERA_API void TextFormatNumber<T, char16_t>(const T&, std::u16string&);
TESSERA_TEXT_NUMBER_TYPES(TESSERA_TEXT_FORMAT_NUMBER)
#undef TESSERA_TEXT_FORMAT_NUMBER

}  // namespace Tessera

#endif  // TESSERA_TEXT_TEXTFORMATNUMBER_H
