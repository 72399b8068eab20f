// MIME header parameters and media types: the character rules of tokens and quoted strings,
// writers that choose between token and quoted form, and lenient readers that take what they
// can from a text instead of rejecting it. Texts are a pointer and a length (`npos`: up to the
// first NUL). Nothing here throws but what the stream, strings and Properties throw themselves.
//
// Conveniences: the operations on a text also take a std::string_view. A view of `npos` bytes
// or more can't be passed on: the checks and MimeParseMediaType give false (outputs untouched),
// the writers throw Plaint::LengthError ("text too long", context "Tessera::MimeOutputParam"
// or "Tessera::MimeOutputParamValue") before writing anything.
#ifndef TESSERA_INTERNET_MIME_H
#define TESSERA_INTERNET_MIME_H

#include <ostream>
#include <string>
#include <string_view>

#include <tessera_export.h>
#include <tessera/frame/Library.h>
#include <tessera/internet/Properties.h>
#include <tessera/text/StringTokenizer.h>
#include <tessera/text/TextViews.h>

namespace Tessera {

// One of the 15 specials ()<>@,;:\"/[]?=
[[nodiscard]] TESSERA_API bool IsMimeTSpecial(char c);
// Non-empty, and every byte above 32 as a signed char and no special: space, controls and
// bytes from 0x80 up are out, 0x7F is in.
[[nodiscard]] TESSERA_API bool IsMimeToken(const char* text, unsigned int length);
// Holds neither CR nor LF; an empty text is quotable.
[[nodiscard]] TESSERA_API bool IsMimeQuotable(const char* text, unsigned int length);

// Writes the value as it is when it is a token, else in double quotes with every backslash and
// double quote escaped by a backslash. CR and LF pass unchanged: IsMimeQuotable is the
// caller's check.
TESSERA_API void MimeOutputParamValue(std::ostream& out, const char* value, unsigned int length);
// Writes the name unchecked, "=", and the value as MimeOutputParamValue does.
TESSERA_API void MimeOutputParam(std::ostream& out, const char* name, unsigned int nameLength,
                                 const char* value, unsigned int valueLength);

// The tokenizer's next token up to "=", as its Next gives it; the delimiter stays "=".
[[nodiscard]] TESSERA_API bool MimeParseParamName(BasicStringTokenizer<char>& tokenizer,
                                                  const char*& name, unsigned int& length);
// The same into a string, untouched on false.
[[nodiscard]] TESSERA_API bool MimeParseParamName(BasicStringTokenizer<char>& tokenizer,
                                                  std::string& name);

// Reads name=value pairs separated by semicolons, spaces and tabs from the tokenizer's position
// (its mode must be DelimitModeAnyOf; its delimiter is changed). A value is a quoted string
// with backslash escapes or a run up to ";", space or tab; a name that comes again replaces
// the value. A pair without a value or an unclosed quote ends the reading; the pairs before
// it stand and the position tells how far it went. `properties` is replaced and compares keys
// exactly afterwards. Always true.
TESSERA_API bool MimeParseProperties(BasicStringTokenizer<char>& tokenizer,
                                     Properties& properties);
// Reads "type/subtype" and the parameters behind it. False, with all outputs untouched, when
// there is no type or no subtype; neither is held to the token rule, and space before the
// slash belongs to the type.
[[nodiscard]] TESSERA_API bool MimeParseMediaType(const char* text, unsigned int length,
                                                  std::string& type, std::string& subtype,
                                                  Properties& properties);

// Conveniences: the operations above on views.
[[nodiscard]] inline bool IsMimeToken(std::string_view text) {
  return detail::PassView(&IsMimeToken, text);
}
[[nodiscard]] inline bool IsMimeQuotable(std::string_view text) {
  return detail::PassView(&IsMimeQuotable, text);
}
inline void MimeOutputParamValue(std::ostream& out, std::string_view value) {
  MimeOutputParamValue(out, value.data(),
                       detail::CheckedLength(value.size(), "Tessera::MimeOutputParamValue"));
}
inline void MimeOutputParam(std::ostream& out, std::string_view name, std::string_view value) {
  const unsigned int nameLength = detail::CheckedLength(name.size(), "Tessera::MimeOutputParam");
  MimeOutputParam(out, name.data(), nameLength, value.data(),
                  detail::CheckedLength(value.size(), "Tessera::MimeOutputParam"));
}
[[nodiscard]] inline bool MimeParseMediaType(std::string_view text, std::string& type,
                                             std::string& subtype, Properties& properties) {
  return detail::PassView(&MimeParseMediaType, text, type, subtype, properties);
}

}  // namespace Tessera

#endif  // TESSERA_INTERNET_MIME_H
