// What the URI primitives and Uri share: the component sets as byte tables, the percent coding
// kernels that measure first and then write in place, and the splitters over views.
#ifndef TESSERA_INTERNET_URICODING_H
#define TESSERA_INTERNET_URICODING_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "tessera/internet/HexDigits.h"

namespace Tessera {
namespace detail {

// What an encoder does with each byte.
enum CodingAction : unsigned char { kEscape = 0, kCopy = 1, kPlus = 2 };

struct CodingSet {
  unsigned char action[256];
};

// The unreserved class plus `extra`; with `spaceAsPlus`, a space becomes "+".
constexpr CodingSet MakeCodingSet(const char* extra, bool spaceAsPlus = false) {
  CodingSet set{};
  for (int c = 0; c < 256; ++c) {
    const bool unreserved = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                            (c >= '0' && c <= '9') || c == '-' || c == '.' || c == '_' || c == '~';
    set.action[c] = unreserved ? kCopy : kEscape;
  }
  for (const char* p = extra; p != nullptr && *p != '\0'; ++p)
    set.action[static_cast<unsigned char>(*p)] = kCopy;
  if (spaceAsPlus) set.action[static_cast<unsigned char>(' ')] = kPlus;
  return set;
}

inline constexpr CodingSet kUnreservedSet = MakeCodingSet("");
inline constexpr CodingSet kEscapeAllSet{};
inline constexpr const char* kFormQueryChars = "!$&'()*+,;=:@/?";
inline constexpr CodingSet kUserInfoSet = MakeCodingSet("!$&'()*+,;=:");
inline constexpr CodingSet kHostSet = MakeCodingSet("!$&'()*+,;=");
inline constexpr CodingSet kPathSet = MakeCodingSet("!$&'()*+,;=:@/");
inline constexpr CodingSet kQuerySet = MakeCodingSet("!$&'()*+,;=:@/?");
inline constexpr CodingSet kFragmentSet = kQuerySet;
inline constexpr CodingSet kFormSet = MakeCodingSet(kFormQueryChars, true);

inline std::size_t EncodedSize(std::string_view text, const CodingSet& set) {
  std::size_t escapes = 0;
  for (char c : text) escapes += set.action[static_cast<unsigned char>(c)] == kEscape;
  return text.size() + 2 * escapes;
}

// Writes the encoded text at `out` and gives the end.
inline char* EncodeTo(std::string_view text, const CodingSet& set, char* out) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  for (char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    switch (set.action[byte]) {
      case kCopy:
        *out++ = c;
        break;
      case kPlus:
        *out++ = '+';
        break;
      default:
        out[0] = '%';
        out[1] = kHex[byte >> 4];
        out[2] = kHex[byte & 15];
        out += 3;
    }
  }
  return out;
}

// The value of an escape's two bytes as TextNumeric reads them in base 16, or -1.
inline int EscapeValue(char high, char low) {
  const int l = detail::HexDigit(low);
  const int h = high == '+' ? 0 : detail::HexDigit(high);
  return (h | l) < 16 ? h * 16 + l : -1;
}

// Where the first escape stands, or the end: most components have none.
inline std::size_t FirstEscape(std::string_view text) {
  const void* found = text.empty() ? nullptr : std::memchr(text.data(), '%', text.size());
  return found != nullptr ? static_cast<std::size_t>(static_cast<const char*>(found) - text.data())
                          : text.size();
}

// The decoded size, or false at the first bad escape. Behind the first escape a plain loop:
// where escapes are dense, a memchr per escape cost more than it saved.
inline bool DecodedSize(std::string_view text, std::size_t& size) {
  std::size_t escapes = 0;
  const std::size_t length = text.size();
  for (std::size_t i = FirstEscape(text); i < length; ++i) {
    if (text[i] != '%') continue;
    if (length - i < 3 || EscapeValue(text[i + 1], text[i + 2]) < 0) return false;
    ++escapes;
    i += 2;
  }
  size = length - 2 * escapes;
  return true;
}

// Precondition: DecodedSize accepted the text.
inline char* DecodeTo(std::string_view text, char* out) {
  const std::size_t length = text.size();
  const std::size_t first = FirstEscape(text);
  if (first != 0) std::memcpy(out, text.data(), first);
  out += first;
  for (std::size_t i = first; i < length; ++i) {
    if (text[i] != '%') {
      *out++ = text[i];
    } else {
      *out++ = static_cast<char>(EscapeValue(text[i + 1], text[i + 2]));
      i += 2;
    }
  }
  return out;
}

// Scheme characters: 1 for the first place and later ones, 2 for later ones only.
struct SchemeTable {
  unsigned char kind[256];
};
constexpr SchemeTable MakeSchemeTable() {
  SchemeTable table{};
  for (int c = 0; c < 256; ++c) {
    if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z')) table.kind[c] = 1;
    if ((c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.') table.kind[c] = 2;
  }
  return table;
}
inline constexpr SchemeTable kSchemeTable = MakeSchemeTable();

inline bool IsSchemeChar(char c, bool first) {
  const unsigned char kind = kSchemeTable.kind[static_cast<unsigned char>(c)];
  return kind == 1 || (kind == 2 && !first);
}

inline bool IsScheme(std::string_view text) {
  if (text.empty() || !IsSchemeChar(text[0], true)) return false;
  for (std::size_t i = 1; i < text.size(); ++i)
    if (!IsSchemeChar(text[i], false)) return false;
  return true;
}

inline bool IsIpLiteral(std::string_view host) {
  return !host.empty() && host.front() == '[' && host.back() == ']';
}

struct UriParts {
  std::string_view scheme, authority, path, query, fragment;
};

inline void SplitHierPart(std::string_view text, std::string_view& authority,
                          std::string_view& path) {
  if (text.size() >= 2 && text[0] == '/' && text[1] == '/') {
    const std::size_t slash = text.find('/', 2);
    const std::size_t end = slash == std::string_view::npos ? text.size() : slash;
    authority = text.substr(2, end - 2);
    path = text.substr(end);
  } else {
    authority = {};
    path = text;
  }
}

inline bool SplitUri(std::string_view text, UriParts& parts) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos) return false;
  parts = UriParts();
  parts.scheme = text.substr(0, colon);
  const std::string_view rest = text.substr(colon + 1);
  std::size_t hierEnd = rest.find('?');
  const std::size_t hash = rest.substr(0, hierEnd).find('#');
  if (hash != std::string_view::npos) hierEnd = hash;
  if (hierEnd == std::string_view::npos) hierEnd = rest.size();
  SplitHierPart(rest.substr(0, hierEnd), parts.authority, parts.path);
  if (hierEnd == rest.size()) return true;
  std::size_t at = hierEnd + 1;
  if (rest[hierEnd] == '?') {
    std::size_t queryEnd = rest.find('#', at);
    if (queryEnd == std::string_view::npos) queryEnd = rest.size();
    parts.query = rest.substr(at, queryEnd - at);
    if (queryEnd == rest.size()) return true;
    at = queryEnd + 1;
  }
  parts.fragment = rest.substr(at);
  return true;
}

inline bool SplitAuthority(std::string_view text, std::string_view& userInfo,
                           std::string_view& host, std::string_view& port) {
  const std::size_t at = text.rfind('@');
  std::string_view rest = text;
  userInfo = {};
  if (at != std::string_view::npos) {
    userInfo = text.substr(0, at);
    rest = text.substr(at + 1);
  }
  std::size_t hostEnd;
  if (!rest.empty() && rest[0] == '[') {
    const std::size_t close = rest.find(']');
    if (close == std::string_view::npos) return false;
    hostEnd = close + 1;
    if (hostEnd < rest.size() && rest[hostEnd] != ':') return false;
  } else {
    hostEnd = rest.find(':');
    if (hostEnd == std::string_view::npos) hostEnd = rest.size();
  }
  host = rest.substr(0, hostEnd);
  port = hostEnd < rest.size() ? rest.substr(hostEnd + 1) : std::string_view();
  return true;
}

// True when `text` lies in memory that `s` owns, so writing `s` would change the input.
inline bool Overlaps(const char* text, std::size_t length, const std::string& s) {
  const auto first = reinterpret_cast<std::uintptr_t>(text);
  const auto begin = reinterpret_cast<std::uintptr_t>(s.data());
  return first <= begin + s.capacity() && begin <= first + length;
}

// Writes a result of known size through `write` into `result`: in place when its memory is
// not the input's, after reserving, so that a refused allocation leaves `result` as it was.
template <class Write>
void Deliver(std::string_view input, std::size_t size, std::string& result, Write write) {
  if (Overlaps(input.data(), input.size(), result)) {
    std::string local(size, '\0');
    write(&local[0]);
    result.swap(local);
    return;
  }
  result.reserve(size);
  result.resize(size);
  write(&result[0]);
}

// A text argument as a view; `npos` measures up to the NUL.
inline std::string_view View(const char* text, unsigned int length) {
  if (length == 0xFFFFFFFFu) return std::string_view(text);
  return std::string_view(text, length);
}

}  // namespace detail
}  // namespace Tessera

#endif  // TESSERA_INTERNET_URICODING_H
