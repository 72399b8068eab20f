// The tokenizer over random texts, delimiters and modes, narrow and wide, against a reference
// written from the rules: each token is a maximal run of non-delimiters, never empty, inside
// the text, and the position never leaves the text. Layout: mode byte, delimiter length byte,
// delimiter, text.
#include <tessera/text/StringTokenizer.h>

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cwctype>
#include <string>
#include <vector>

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

bool IsSpace(char c) {
  return static_cast<signed char>(c) > 0 && std::isspace(static_cast<unsigned char>(c));
}
bool IsSpace(char16_t c) { return std::iswspace(c) != 0; }

// Length of the delimiter at `at`, or 0.
template <class C>
std::size_t DelimiterAt(const std::basic_string<C>& text, std::size_t at,
                        const std::basic_string<C>& delimiter, int mode) {
  if (delimiter.empty()) return IsSpace(text[at]) != (mode == 2) ? 1 : 0;
  if (mode == 0)
    return text.compare(at, delimiter.size(), delimiter) == 0 &&
                   text.size() - at >= delimiter.size()
               ? delimiter.size()
               : 0;
  const bool found = delimiter.find(text[at]) != std::basic_string<C>::npos;
  return found == (mode == 1) ? 1 : 0;
}

template <class C>
std::vector<std::basic_string<C>> ReferenceTokens(const std::basic_string<C>& text,
                                                  const std::basic_string<C>& delimiter, int mode) {
  std::vector<std::basic_string<C>> tokens;
  std::size_t at = 0;
  for (;;) {
    std::size_t length;
    while (at < text.size() && (length = DelimiterAt(text, at, delimiter, mode)) != 0) at += length;
    if (at == text.size()) return tokens;
    const std::size_t start = at;
    while (at < text.size() && DelimiterAt(text, at, delimiter, mode) == 0) ++at;
    tokens.push_back(text.substr(start, at - start));
  }
}

template <class C>
void Exercise(const std::basic_string<C>& text, const std::basic_string<C>& delimiter, int mode) {
  Tessera::BasicStringTokenizer<C> tokenizer(text.data(), static_cast<unsigned int>(text.size()),
                                             delimiter.c_str(),
                                             static_cast<Tessera::DelimitMode>(mode));
  std::vector<std::basic_string<C>> tokens;
  const C* token;
  unsigned int length;
  while (tokenizer.Next(token, length)) {
    Check(length > 0);
    Check(token >= text.data() && token + length <= text.data() + text.size());
    Check(tokenizer.GetPosition() <= tokenizer.GetTextLength());
    Check(tokenizer.GetPosition() == static_cast<unsigned int>(token + length - text.data()));
    tokens.emplace_back(token, length);
  }
  Check(tokenizer.GetPosition() <= text.size());
  Check(tokens == ReferenceTokens(text, delimiter, mode));
  tokenizer.SkipDelimiters();
  Check(tokenizer.IsDone());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const int mode = data[0] % 3;
  std::size_t delimiterSize = data[1] % 8;
  data += 2;
  size -= 2;
  if (delimiterSize > size) delimiterSize = size;
  std::string delimiter(reinterpret_cast<const char*>(data), delimiterSize);
  delimiter = delimiter.c_str();  // the tokenizer takes it up to its NUL
  const std::string text(reinterpret_cast<const char*>(data + delimiterSize), size - delimiterSize);
  Exercise(text, delimiter, mode);
  // The same bytes as wide text: each byte a unit, with the high ones moved above 0xFF.
  auto widen = [](const std::string& narrow) {
    std::u16string wide;
    for (char c : narrow) {
      const auto byte = static_cast<unsigned char>(c);
      wide += static_cast<char16_t>(byte < 0x80 ? byte : 0x2000 + byte);
    }
    return wide;
  };
  Exercise(widen(text), widen(delimiter), mode);
  return 0;
}
