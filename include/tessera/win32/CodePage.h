// The Win32 code-page operations on Linux: the default narrow code page of the process, and
// conversion between narrow text in a numbered code page and UTF-16, with the Windows results.
//
// Conversion never fails on bad input: as on Windows, invalid or unmappable text is replaced.
// Widening gives U+FFFD for each maximal ill-formed subpart of UTF-8 and a page's own mapping
// for every byte of a single-byte page; narrowing gives '?' (in the page's own encoding) for a
// character that the page can't express, and U+FFFD's form for a lone surrogate in UTF-8.
// Single- and double-byte pages run on tables built once from the system's converters (ICU,
// or the C library's iconv for a few pages ICU lacks), or from Apple's published tables for
// two Mac pages, and corrected where Windows differs; stateful and Unicode pages run on ICU's
// converters. Pages without any of these (10001-10005, 10008, 10021, 20000-20005, 20105,
// 20833, 29001) fail with ERROR_INVALID_PARAMETER.
#ifndef TESSERA_WIN32_CODEPAGE_H
#define TESSERA_WIN32_CODEPAGE_H

#include <tessera_export.h>
#include <tessera/win32/LastError.h>

namespace Win32 {

using BOOL = int;
using UINT = unsigned int;

constexpr UINT CP_ACP = 0;
constexpr UINT CP_UTF7 = 65000;
constexpr UINT CP_UTF8 = 65001;

constexpr DWORD ERROR_INVALID_FLAGS = 1004;

// The default narrow code page, from the codeset of the process locale (LC_CTYPE): 65001 for
// UTF-8, 20127 for ASCII (the "C" locale), the matching Windows page for the ISO 8859, KOI8,
// Windows and East Asian codesets, and 20127 for a codeset that has no Windows number.
TESSERA_API UINT GetACP();

// Widens `source` (`sourceLength` bytes, or -1 for up to and with its NUL) from `codePage`
// (CP_ACP for GetACP's page) into `target`, and gives the number of units written; with a
// `targetLength` of 0 nothing is written and the number needed is given. 0 on failure, with
// ERROR_INSUFFICIENT_BUFFER when the target is too small (the target's contents then undefined),
// ERROR_INVALID_PARAMETER for a page without a converter, a null source, a length of 0 or
// below -1, or a null target with room, and ERROR_INVALID_FLAGS for any flag.
TESSERA_API int MultiByteToWideChar(UINT codePage, DWORD flags, const char* source,
                                    int sourceLength, char16_t* target, int targetLength);

// Narrows `source` (`sourceLength` units, or -1 for up to and with its NUL) into `codePage`,
// as MultiByteToWideChar does the other way. `defaultChar` (its first byte) replaces what the
// page can't express instead of '?', and `usedDefaultChar`, if given, tells whether that
// happened; both must be null for the stateful and Unicode pages (65000, 65001, 1200, 1201,
// 12000, 12001, ISO 2022, HZ, ISCII, GB 18030, EUC-JP), else ERROR_INVALID_PARAMETER.
TESSERA_API int WideCharToMultiByte(UINT codePage, DWORD flags, const char16_t* source,
                                    int sourceLength, char* target, int targetLength,
                                    const char* defaultChar, BOOL* usedDefaultChar);

}  // namespace Win32

#endif  // TESSERA_WIN32_CODEPAGE_H
