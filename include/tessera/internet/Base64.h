// Base64 of the standard alphabet ("A-Z a-z 0-9 + /", pad "="), with no line breaks. The
// decoder takes the first "=" as the end, whatever follows, and needs no padding; it refuses
// anything else outside the alphabet, white space and NUL included.
//
// Conveniences: both also take the bytes as a std::string_view. A view of `npos` bytes or more
// can't be passed on: the encoder throws Plaint::LengthError ("text too long", context
// "Tessera::Base64Encode"), the decoder gives false with `out` untouched.
#ifndef TESSERA_INTERNET_BASE64_H
#define TESSERA_INTERNET_BASE64_H

#include <string>
#include <string_view>

#include <tessera_export.h>
#include <tessera/text/TextViews.h>

namespace Tessera {

// Replaces `out` with the encoded form of `length` bytes: four characters for each three
// bytes, the last group padded with "=" to four.
TESSERA_API void Base64Encode(const void* data, unsigned int length, std::string& out);

// As above, for the bytes of `text` up to its NUL.
TESSERA_API void Base64Encode(const char* text, std::string& out);

// Replaces `out` with the bytes of the encoded `data`; `length` is a plain count. Reading stops
// at the first "="; a last group of 2 or 3 characters gives 1 or 2 bytes, a lone character
// none. False for a character that `isalnum` (of the process locale) refuses and that isn't
// "+" or "/": `out` then holds the groups completed before it. A byte above 0x7F that the
// locale calls alphanumeric counts as the value 0.
[[nodiscard]] TESSERA_API bool Base64Decode(const void* data, unsigned int length,
                                            std::string& out);

// As above, for `text` up to its NUL.
[[nodiscard]] TESSERA_API bool Base64Decode(const char* text, std::string& out);

// Conveniences: the encoder and decoder on a view.
inline void Base64Encode(std::string_view data, std::string& out) {
  Base64Encode(data.data(), detail::CheckedLength(data.size(), "Tessera::Base64Encode"), out);
}
[[nodiscard]] inline bool Base64Decode(std::string_view data, std::string& out) {
  return detail::FitsLength(data.size()) &&
         Base64Decode(data.data(), static_cast<unsigned int>(data.size()), out);
}

}  // namespace Tessera

#endif  // TESSERA_INTERNET_BASE64_H
