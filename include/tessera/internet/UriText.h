// The URI primitives: RFC 3986 character classes, scheme validation, the three splitting steps
// from a URI text down to its components, percent coding and form queries. They keep no state
// and work on any narrow text, byte by byte; bytes from 0x80 up belong to no class.
//
// Every text is a pointer and a length; a length of `npos` means that the text ends at its
// first NUL. The splitters and coders build their results aside: on success every output
// string is replaced (an absent part comes out empty), on failure none is touched, and the
// input may be the very string that receives a result. Nothing throws but std::bad_alloc.
//
// Conveniences: the operations on a text also take a std::string_view. A view of `npos` bytes
// or more can't be passed on: the checks, splitters and decoders give false with every output
// untouched (UriHierPartDecompose too), UriPercentEncode throws Plaint::LengthError ("text too
// long", context "Tessera::UriPercentEncode").
#ifndef TESSERA_INTERNET_URITEXT_H
#define TESSERA_INTERNET_URITEXT_H

#include <string>
#include <string_view>

#include <tessera_export.h>
#include <tessera/frame/Library.h>
#include <tessera/internet/Properties.h>
#include <tessera/text/TextViews.h>

namespace Tessera {

// One of the 18 gen-delims and sub-delims ":/?#[]@!$&'()*+,;=".
[[nodiscard]] TESSERA_API bool UriIsCharReserved(char c);
// A-Z, a-z, 0-9 and "-._~".
[[nodiscard]] TESSERA_API bool UriIsCharUnreserved(char c);
// A letter; behind the first place also a digit or one of "+-.".
[[nodiscard]] TESSERA_API bool UriIsSchemeChar(char c, bool first);
// The whole text is a scheme; an empty text is not.
[[nodiscard]] TESSERA_API bool UriIsSchemeValid(const char* text, unsigned int length);
// The text starts with "[" and ends with "]"; what stands between is not examined ("[]" is one).
[[nodiscard]] TESSERA_API bool UriIsHostIpLiteral(const char* text, unsigned int length);

// Splits at the first ":" into scheme and the rest, the rest into hierarchical part, "?" query
// and "#" fragment, and the hierarchical part as UriHierPartDecompose does. The scheme is not
// validated. False only for a text without ":". An empty query or fragment can't be told from
// an absent one.
[[nodiscard]] TESSERA_API bool UriDecompose(const char* text, unsigned int length,
                                            std::string& scheme, std::string& authority,
                                            std::string& path, std::string& query,
                                            std::string& fragment);
// "//" then the authority up to the next "/", the rest being the path with its "/"; without a
// leading "//" the whole text is the path. Always true.
TESSERA_API bool UriHierPartDecompose(const char* text, unsigned int length,
                                      std::string& authority, std::string& path);
// User information before the last "@", then the host (a bracketed literal up to the first
// "]", which must end the text or stand before ":"; otherwise up to the first ":"), then the
// port text behind that ":", not validated. False for "[" without "]" or "]" followed by
// anything but ":".
[[nodiscard]] TESSERA_API bool UriAuthorityDecompose(const char* text, unsigned int length,
                                                     std::string& userInfo, std::string& host,
                                                     std::string& port);

// Writes "%", two upper-case hex digits and a NUL into `buffer` (at least 4 bytes).
TESSERA_API void UriPercentEncodeChar(char c, char* const buffer);
// Copies unreserved bytes and those in `extra` (NUL-terminated, may be null); every other byte,
// NUL and "%" included, becomes its escape.
TESSERA_API void UriPercentEncode(const char* text, unsigned int length, std::string& result,
                                  const char* extra);
// Takes one character off the front of the text, decoding an escape, and moves the text on.
// False, with all three arguments untouched, for an empty text, a "%" with fewer than two bytes
// behind it, or two bytes that TextNumeric doesn't read as base 16.
// Kept for compatibility: the digits read as an unsigned number would, so "%+F" gives 0x0F.
[[nodiscard]] TESSERA_API bool UriPercentDecodeChar(const char*& text, unsigned int& length,
                                                    char& c);
// Decodes a whole text; false, with `result` untouched, at the first bad escape.
[[nodiscard]] TESSERA_API bool UriPercentDecode(const char* text, unsigned int length,
                                                std::string& result);
// Writes the entries in position order as key=value joined by `separator`, spaces made "+" and
// the rest percent-encoded with "!$&'()*+,;=:@/?" left as they are. No entries give "".
TESSERA_API void UriQueryFormEncode(const Properties& properties, std::string& result,
                                    char separator);

// Conveniences: the operations above on views.
[[nodiscard]] inline bool UriIsSchemeValid(std::string_view text) {
  return detail::PassView(&UriIsSchemeValid, text);
}
[[nodiscard]] inline bool UriIsHostIpLiteral(std::string_view text) {
  return detail::PassView(&UriIsHostIpLiteral, text);
}
[[nodiscard]] inline bool UriDecompose(std::string_view text, std::string& scheme,
                                       std::string& authority, std::string& path,
                                       std::string& query, std::string& fragment) {
  return detail::PassView(&UriDecompose, text, scheme, authority, path, query, fragment);
}
inline bool UriHierPartDecompose(std::string_view text, std::string& authority, std::string& path) {
  return detail::PassView(&UriHierPartDecompose, text, authority, path);
}
[[nodiscard]] inline bool UriAuthorityDecompose(std::string_view text, std::string& userInfo,
                                                std::string& host, std::string& port) {
  return detail::PassView(&UriAuthorityDecompose, text, userInfo, host, port);
}
inline void UriPercentEncode(std::string_view text, std::string& result, const char* extra) {
  UriPercentEncode(text.data(), detail::CheckedLength(text.size(), "Tessera::UriPercentEncode"),
                   result, extra);
}
// Takes one character off the front of the view, which moves on; an escape needs no more than
// three bytes, so a longer view is cut without changing the result.
[[nodiscard]] inline bool UriPercentDecodeChar(std::string_view& text, char& c) {
  const char* start = text.data();
  unsigned int length =
      static_cast<unsigned int>(detail::FitsLength(text.size()) ? text.size() : npos - 1);
  const unsigned int before = length;
  if (!UriPercentDecodeChar(start, length, c)) return false;
  text.remove_prefix(before - length);
  return true;
}
[[nodiscard]] inline bool UriPercentDecode(std::string_view text, std::string& result) {
  return detail::PassView(&UriPercentDecode, text, result);
}

}  // namespace Tessera

#endif  // TESSERA_INTERNET_URITEXT_H
