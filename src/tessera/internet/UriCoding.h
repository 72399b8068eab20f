// What the URI primitives and Uri share: the component sets as byte tables, the percent coding
// kernels that measure first and then write in place, and the splitters over views.
#ifndef TESSERA_INTERNET_URICODING_H
#define TESSERA_INTERNET_URICODING_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

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
  auto digit = [](char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
  };
  const int l = digit(low);
  if (l < 0) return -1;
  if (high == '+') return l;
  const int h = digit(high);
  return h < 0 ? -1 : h * 16 + l;
}

// The decoded size, or false at the first bad escape.
inline bool DecodedSize(std::string_view text, std::size_t& size) {
  size = 0;
  if (text.empty()) return true;  // memchr must not see the null of an empty view
  std::size_t escapes = 0;
  const char* p = text.data();
  const char* const end = p + text.size();
  while ((p = static_cast<const char*>(std::memchr(p, '%', static_cast<std::size_t>(end - p)))) !=
         nullptr) {
    if (end - p < 3 || EscapeValue(p[1], p[2]) < 0) return false;
    ++escapes;
    p += 3;
  }
  size = text.size() - 2 * escapes;
  return true;
}

// Precondition: DecodedSize accepted the text.
inline char* DecodeTo(std::string_view text, char* out) {
  if (text.empty()) return out;
  const char* p = text.data();
  const char* const end = p + text.size();
  for (;;) {
    const char* escape =
        static_cast<const char*>(std::memchr(p, '%', static_cast<std::size_t>(end - p)));
    const char* const runEnd = escape != nullptr ? escape : end;
    std::memcpy(out, p, static_cast<std::size_t>(runEnd - p));
    out += runEnd - p;
    if (escape == nullptr) return out;
    *out++ = static_cast<char>(EscapeValue(escape[1], escape[2]));
    p = escape + 3;
  }
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
