// The two converters behind the UTF-8 operations. Each advances `from` and `to` and stops with
// one of four outcomes; at every stop `from` stands on the first unit or byte not converted
// and `to` behind the last whole character written. Units between `to` and `toEnd` may have
// been overwritten.
#ifndef TESSERA_TEXT_UTF8CONVERT_H
#define TESSERA_TEXT_UTF8CONVERT_H

namespace Tessera::detail {

enum class Utf8Outcome { done = 0, incomplete = 1, noRoom = 2, invalid = 3 };

Utf8Outcome ConvertUtf8ToUtf16(const char*& from, const char* fromEnd, char16_t*& to,
                               char16_t* toEnd);

Utf8Outcome ConvertUtf16ToUtf8(const char16_t*& from, const char16_t* fromEnd, char*& to,
                               char* toEnd);

}  // namespace Tessera::detail

#endif  // TESSERA_TEXT_UTF8CONVERT_H
