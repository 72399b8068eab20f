// Comparison and search of counted text, narrow (`char`) and wide (`char16_t`, UTF-16 code
// units). Every text is a pointer and a length in characters; a length of `npos` means that
// the text ends at its first NUL and is measured first. A null pointer is allowed only with a
// length of 0. Nothing here allocates, throws or keeps state.
//
// The comparisons compare at most the shorter length and stop at a NUL that stands at the
// same place in both texts. A non-zero result of the character compare is returned as it is
// (only its sign means anything); when the compared part is equal but the lengths differ, the
// shorter text sorts first with exactly -1 or 1.
//
// Locale: TextCompare and TextFind are locale-free. The caseless forms fold case by the process
// locale's character classes (in "C", the 26 ASCII letters only; narrow text folds byte by
// byte, wide text code unit by code unit); the collating forms order by the process locale's
// collation (in "C", by character code). The library never sets a locale.
//
// Conveniences: every operation also takes two std::string_view or std::u16string_view, the
// view's size being the explicit length. A view of `npos` characters or more can't be passed
// on: the comparisons then throw Plaint::LengthError ("text too long", with the operation's
// name as context function), the searches give `npos`.
#ifndef TESSERA_TEXT_TEXTCOMPARE_H
#define TESSERA_TEXT_TEXTCOMPARE_H

#include <string_view>

#include <tessera_export.h>
#include <tessera/frame/Library.h>
#include <tessera/text/TextViews.h>

namespace Tessera {

// Exact comparison by character code (bytes as unsigned, UTF-16 code units as unsigned).
[[nodiscard]] TESSERA_API int TextCompare(const char* text1, unsigned int length1,
                                          const char* text2, unsigned int length2);
[[nodiscard]] TESSERA_API int TextCompare(const char16_t* text1, unsigned int length1,
                                          const char16_t* text2, unsigned int length2);

// Comparison of the case-folded characters by their folded codes.
[[nodiscard]] TESSERA_API int TextCompareCaseless(const char* text1, unsigned int length1,
                                                  const char* text2, unsigned int length2);
[[nodiscard]] TESSERA_API int TextCompareCaseless(const char16_t* text1, unsigned int length1,
                                                  const char16_t* text2, unsigned int length2);

// Comparison by the collation of the process locale. The wide form collates code points, a
// surrogate pair counting as one character.
[[nodiscard]] TESSERA_API int TextCollate(const char* text1, unsigned int length1,
                                          const char* text2, unsigned int length2);
[[nodiscard]] TESSERA_API int TextCollate(const char16_t* text1, unsigned int length1,
                                          const char16_t* text2, unsigned int length2);

// Collation of the case-folded texts.
[[nodiscard]] TESSERA_API int TextCollateCaseless(const char* text1, unsigned int length1,
                                                  const char* text2, unsigned int length2);
[[nodiscard]] TESSERA_API int TextCollateCaseless(const char16_t* text1, unsigned int length1,
                                                  const char16_t* text2, unsigned int length2);

// Lowest index at which `sought` stands in `text`, judged by TextCompare, or `npos`. An empty
// sought text, or one longer than the text, is never found. A NUL inside `sought` ends what
// has to match there, as it ends the compare.
[[nodiscard]] TESSERA_API unsigned int TextFind(const char* text, unsigned int length,
                                                const char* sought, unsigned int soughtLength);
[[nodiscard]] TESSERA_API unsigned int TextFind(const char16_t* text, unsigned int length,
                                                const char16_t* sought, unsigned int soughtLength);

// As TextFind, judged by TextCompareCaseless.
[[nodiscard]] TESSERA_API unsigned int TextFindCaseless(const char* text, unsigned int length,
                                                        const char* sought,
                                                        unsigned int soughtLength);
[[nodiscard]] TESSERA_API unsigned int TextFindCaseless(const char16_t* text, unsigned int length,
                                                        const char16_t* sought,
                                                        unsigned int soughtLength);

// Highest index at which `sought` stands in `text`, or `npos`. A last candidate index beyond
// 0x7FFFFFFF gives `npos` without a search.
[[nodiscard]] TESSERA_API unsigned int TextRFind(const char* text, unsigned int length,
                                                 const char* sought, unsigned int soughtLength);
[[nodiscard]] TESSERA_API unsigned int TextRFind(const char16_t* text, unsigned int length,
                                                 const char16_t* sought, unsigned int soughtLength);

// As TextRFind, judged by TextCompareCaseless.
[[nodiscard]] TESSERA_API unsigned int TextRFindCaseless(const char* text, unsigned int length,
                                                         const char* sought,
                                                         unsigned int soughtLength);
[[nodiscard]] TESSERA_API unsigned int TextRFindCaseless(const char16_t* text, unsigned int length,
                                                         const char16_t* sought,
                                                         unsigned int soughtLength);

// Lowest index of a character of `text` that occurs in the set `chars`, or `npos`; an empty
// text or set gives `npos`. With an explicit length a NUL is an ordinary member.
[[nodiscard]] TESSERA_API unsigned int TextFindFirstOf(const char* text, unsigned int length,
                                                       const char* chars, unsigned int charsLength);
[[nodiscard]] TESSERA_API unsigned int TextFindFirstOf(const char16_t* text, unsigned int length,
                                                       const char16_t* chars,
                                                       unsigned int charsLength);

// As TextFindFirstOf, with the character and the set folded as by TextCompareCaseless.
[[nodiscard]] TESSERA_API unsigned int TextFindFirstOfCaseless(const char* text,
                                                               unsigned int length,
                                                               const char* chars,
                                                               unsigned int charsLength);
[[nodiscard]] TESSERA_API unsigned int TextFindFirstOfCaseless(const char16_t* text,
                                                               unsigned int length,
                                                               const char16_t* chars,
                                                               unsigned int charsLength);

// Conveniences: the operations above on views.
[[nodiscard]] inline int TextCompare(std::string_view text1, std::string_view text2) {
  return detail::PassViews(&TextCompare, text1, text2, "Tessera::TextCompare");
}
[[nodiscard]] inline int TextCompare(std::u16string_view text1, std::u16string_view text2) {
  return detail::PassViews(&TextCompare, text1, text2, "Tessera::TextCompare");
}
[[nodiscard]] inline int TextCompareCaseless(std::string_view text1, std::string_view text2) {
  return detail::PassViews(&TextCompareCaseless, text1, text2, "Tessera::TextCompareCaseless");
}
[[nodiscard]] inline int TextCompareCaseless(std::u16string_view text1, std::u16string_view text2) {
  return detail::PassViews(&TextCompareCaseless, text1, text2, "Tessera::TextCompareCaseless");
}
[[nodiscard]] inline int TextCollate(std::string_view text1, std::string_view text2) {
  return detail::PassViews(&TextCollate, text1, text2, "Tessera::TextCollate");
}
[[nodiscard]] inline int TextCollate(std::u16string_view text1, std::u16string_view text2) {
  return detail::PassViews(&TextCollate, text1, text2, "Tessera::TextCollate");
}
[[nodiscard]] inline int TextCollateCaseless(std::string_view text1, std::string_view text2) {
  return detail::PassViews(&TextCollateCaseless, text1, text2, "Tessera::TextCollateCaseless");
}
[[nodiscard]] inline int TextCollateCaseless(std::u16string_view text1, std::u16string_view text2) {
  return detail::PassViews(&TextCollateCaseless, text1, text2, "Tessera::TextCollateCaseless");
}
[[nodiscard]] inline unsigned int TextFind(std::string_view text, std::string_view sought) {
  return detail::FindViews(&TextFind, text, sought);
}
[[nodiscard]] inline unsigned int TextFind(std::u16string_view text, std::u16string_view sought) {
  return detail::FindViews(&TextFind, text, sought);
}
[[nodiscard]] inline unsigned int TextFindCaseless(std::string_view text, std::string_view sought) {
  return detail::FindViews(&TextFindCaseless, text, sought);
}
[[nodiscard]] inline unsigned int TextFindCaseless(std::u16string_view text,
                                                   std::u16string_view sought) {
  return detail::FindViews(&TextFindCaseless, text, sought);
}
[[nodiscard]] inline unsigned int TextRFind(std::string_view text, std::string_view sought) {
  return detail::FindViews(&TextRFind, text, sought);
}
[[nodiscard]] inline unsigned int TextRFind(std::u16string_view text, std::u16string_view sought) {
  return detail::FindViews(&TextRFind, text, sought);
}
[[nodiscard]] inline unsigned int TextRFindCaseless(std::string_view text,
                                                    std::string_view sought) {
  return detail::FindViews(&TextRFindCaseless, text, sought);
}
[[nodiscard]] inline unsigned int TextRFindCaseless(std::u16string_view text,
                                                    std::u16string_view sought) {
  return detail::FindViews(&TextRFindCaseless, text, sought);
}
[[nodiscard]] inline unsigned int TextFindFirstOf(std::string_view text, std::string_view chars) {
  return detail::FindViews(&TextFindFirstOf, text, chars);
}
[[nodiscard]] inline unsigned int TextFindFirstOf(std::u16string_view text,
                                                  std::u16string_view chars) {
  return detail::FindViews(&TextFindFirstOf, text, chars);
}
[[nodiscard]] inline unsigned int TextFindFirstOfCaseless(std::string_view text,
                                                          std::string_view chars) {
  return detail::FindViews(&TextFindFirstOfCaseless, text, chars);
}
[[nodiscard]] inline unsigned int TextFindFirstOfCaseless(std::u16string_view text,
                                                          std::u16string_view chars) {
  return detail::FindViews(&TextFindFirstOfCaseless, text, chars);
}

}  // namespace Tessera

#endif  // TESSERA_TEXT_TEXTCOMPARE_H
