// What the string_view conveniences of the text and internet headers share: the check of a
// view's size against the 32-bit lengths of the ported functions they forward to. A size of
// `npos` or more can't be passed on, as `npos` itself means "measure up to the NUL".
#ifndef TESSERA_TEXT_TEXTVIEWS_H
#define TESSERA_TEXT_TEXTVIEWS_H

#include <cstddef>
#include <string_view>
#include <utility>

#include <tessera_export.h>
#include <tessera/frame/Library.h>

// Implementation details follow.

namespace Tessera {
namespace detail {

constexpr bool FitsLength(std::size_t size) noexcept { return size < npos; }

// Plaint::LengthError ("text too long") with `function` as the context function.
[[noreturn]] TESSERA_API void ThrowTextTooLong(const char* function);
// TextConversionError with `message` and `function`; with `win32` the Win32 error
// ERROR_INVALID_PARAMETER is attached, as the platform's converters answer a length they can't
// take.
[[noreturn]] TESSERA_API void ThrowConversionTooLong(const char* message, const char* function,
                                                     bool win32);

// The size as a length, or ThrowTextTooLong(function).
inline unsigned int CheckedLength(std::size_t size, const char* function) {
  if (!FitsLength(size)) ThrowTextTooLong(function);
  return static_cast<unsigned int>(size);
}

// Calls a ported operation that reports success with the view as pointer and length, then
// `args`; a view that doesn't fit is refused with false before anything is read or written.
template <class... Args, class... Given>
bool PassView(bool (*function)(const char*, unsigned int, Args...), std::string_view text,
              Given&&... args) {
  return FitsLength(text.size()) &&
         function(text.data(), static_cast<unsigned int>(text.size()), std::forward<Given>(args)...);
}

// Calls a ported comparison with the two views.
template <class C>
int PassViews(int (*function)(const C*, unsigned int, const C*, unsigned int),
              std::basic_string_view<C> text1, std::basic_string_view<C> text2, const char* name) {
  const unsigned int length1 = CheckedLength(text1.size(), name);
  return function(text1.data(), length1, text2.data(), CheckedLength(text2.size(), name));
}

// As PassViews for a search: a view that doesn't fit gives `npos`.
template <class C>
unsigned int FindViews(unsigned int (*function)(const C*, unsigned int, const C*, unsigned int),
                       std::basic_string_view<C> text, std::basic_string_view<C> sought) {
  if (!FitsLength(text.size()) || !FitsLength(sought.size())) return npos;
  return function(text.data(), static_cast<unsigned int>(text.size()), sought.data(),
                  static_cast<unsigned int>(sought.size()));
}

}  // namespace detail
}  // namespace Tessera

#endif  // TESSERA_TEXT_TEXTVIEWS_H
