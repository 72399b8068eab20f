// The charset names that GetCodePage knows, in normalised form, with their code pages.
#ifndef TESSERA_TEXT_CHARSETS_H
#define TESSERA_TEXT_CHARSETS_H

#include <cstddef>

namespace Tessera::detail {

struct Charset {
  const char* name;
  unsigned int codePage;
};

// Sorted by name in unsigned byte order, for a binary search.
inline constexpr Charset kCharsets[] = {
    {"ascii", 20127}, {"asmo708", 708}, {"big5", 950}, {"cp1025", 21025}, {"cp866", 866},
    {"cp875", 875}, {"csiso2022jp", 50221}, {"dos720", 720}, {"dos862", 862}, {"euccn", 51936},
    {"eucjp", 51932}, {"euckr", 51949}, {"gb18030", 54936}, {"gb2312", 936}, {"hzgb2312", 52936},
    {"ibm00858", 858}, {"ibm00924", 20924}, {"ibm01047", 1047}, {"ibm01140", 1140},
    {"ibm01141", 1141}, {"ibm01142", 1142}, {"ibm01143", 1143}, {"ibm01144", 1144},
    {"ibm01145", 1145}, {"ibm01146", 1146}, {"ibm01147", 1147}, {"ibm01148", 1148},
    {"ibm01149", 1149}, {"ibm037", 37}, {"ibm1026", 1026}, {"ibm273", 20273}, {"ibm277", 20277},
    {"ibm278", 20278}, {"ibm280", 20280}, {"ibm284", 20284}, {"ibm285", 20285}, {"ibm290", 20290},
    {"ibm297", 20297}, {"ibm420", 20420}, {"ibm423", 20423}, {"ibm424", 20424}, {"ibm437", 437},
    {"ibm500", 500}, {"ibm737", 737}, {"ibm775", 775}, {"ibm850", 850}, {"ibm852", 852},
    {"ibm855", 855}, {"ibm857", 857}, {"ibm860", 860}, {"ibm861", 861}, {"ibm863", 863},
    {"ibm864", 864}, {"ibm865", 865}, {"ibm869", 869}, {"ibm870", 870}, {"ibm871", 20871},
    {"ibm880", 20880}, {"ibm905", 20905}, {"ibmthai", 20838}, {"iso2022jp", 50222},
    {"iso2022kr", 50225}, {"iso88591", 28591}, {"iso885913", 28603}, {"iso885915", 28605},
    {"iso88592", 28592}, {"iso88593", 28593}, {"iso88594", 28594}, {"iso88595", 28595},
    {"iso88596", 28596}, {"iso88597", 28597}, {"iso88598", 28598}, {"iso88598i", 38598},
    {"iso88599", 28599}, {"jis01211990", 20932}, {"jis02081990", 20932}, {"johab", 1361},
    {"koi8r", 20866}, {"koi8u", 21866}, {"ksc56011987", 949}, {"macintosh", 10000},
    {"shiftjis", 932}, {"ucs2be", 1201}, {"ucs2le", 1200}, {"ucs4", 12000}, {"ucs4be", 12001},
    {"ucs4le", 12000}, {"unicodefeff", 1200}, {"unicodefffe", 1201}, {"usascii", 20127},
    {"utf16", 1200}, {"utf16be", 1201}, {"utf16le", 1200}, {"utf32", 12000}, {"utf32be", 12001},
    {"utf32le", 12000}, {"utf7", 65000}, {"utf8", 65001}, {"windows1250", 1250},
    {"windows1251", 1251}, {"windows1252", 1252}, {"windows1253", 1253}, {"windows1254", 1254},
    {"windows1255", 1255}, {"windows1256", 1256}, {"windows1257", 1257}, {"windows1258", 1258},
    {"windows874", 874}, {"xchinesecns", 20000}, {"xchineseeten", 20002}, {"xcp20001", 20001},
    {"xcp20003", 20003}, {"xcp20004", 20004}, {"xcp20005", 20005}, {"xcp20261", 20261},
    {"xcp20269", 20269}, {"xcp20936", 20936}, {"xcp20949", 20949}, {"xcp50227", 50227},
    {"xebcdickoreanextended", 20833}, {"xeuropa", 29001}, {"xia5", 20105}, {"xia5german", 20106},
    {"xia5norwegian", 20108}, {"xia5swedish", 20107}, {"xisciias", 57006}, {"xisciibe", 57003},
    {"xisciide", 57002}, {"xisciigu", 57010}, {"xisciika", 57008}, {"xisciima", 57009},
    {"xisciior", 57007}, {"xisciipa", 57011}, {"xisciita", 57004}, {"xisciite", 57005},
    {"xmacarabic", 10004}, {"xmacce", 10029}, {"xmacchinesesimp", 10008},
    {"xmacchinesetrad", 10002}, {"xmaccroatian", 10082}, {"xmaccyrillic", 10007},
    {"xmacgreek", 10006}, {"xmachebrew", 10005}, {"xmacicelandic", 10079},
    {"xmacjapanese", 10001}, {"xmackorean", 10003}, {"xmacromanian", 10010}, {"xmacthai", 10021},
    {"xmacturkish", 10081}, {"xmacukrainian", 10017},
};

inline constexpr std::size_t kCharsetCount = sizeof kCharsets / sizeof kCharsets[0];

// Unsigned byte order, as strcmp compares.
constexpr int CompareNames(const char* a, const char* b) {
  for (;; ++a, ++b) {
    const unsigned char x = static_cast<unsigned char>(*a);
    const unsigned char y = static_cast<unsigned char>(*b);
    if (x != y || x == 0) return x < y ? -1 : x > y ? 1 : 0;
  }
}

constexpr bool CharsetsAscend() {
  for (std::size_t i = 1; i < kCharsetCount; ++i)
    if (CompareNames(kCharsets[i - 1].name, kCharsets[i].name) >= 0) return false;
  return true;
}

static_assert(kCharsetCount == 150, "the charset table has 150 rows");
static_assert(CharsetsAscend(), "charset names must ascend strictly: sorted and unique");

}  // namespace Tessera::detail

#endif  // TESSERA_TEXT_CHARSETS_H
