// The narrow and wide searches against the plain scan that defines them: every candidate
// judged by the bounded compare. Layout: sought length byte, sought text, searched text.
#include <tessera/text/TextCompare.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

template <class C>
bool EqualBounded(const C* a, const C* b, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) {
    if (a[i] != b[i]) return false;
    if (a[i] == 0) return true;
  }
  return true;
}

template <class C>
unsigned int Plain(const std::basic_string<C>& text, const std::basic_string<C>& sought,
                   bool reverse) {
  const std::size_t n = text.size(), m = sought.size();
  if (m == 0 || m > n) return Tessera::npos;
  for (std::size_t k = 0; k <= n - m; ++k) {
    const std::size_t i = reverse ? n - m - k : k;
    if (EqualBounded(text.data() + i, sought.data(), m)) return static_cast<unsigned int>(i);
  }
  return Tessera::npos;
}

template <class C>
unsigned int PlainFirstOf(const std::basic_string<C>& text, const std::basic_string<C>& set) {
  if (set.empty()) return Tessera::npos;
  for (std::size_t i = 0; i < text.size(); ++i)
    if (set.find(text[i]) != std::basic_string<C>::npos) return static_cast<unsigned int>(i);
  return Tessera::npos;
}

template <class C>
void Exercise(const std::basic_string<C>& text, const std::basic_string<C>& sought) {
  const auto n = static_cast<unsigned int>(text.size());
  const auto m = static_cast<unsigned int>(sought.size());
  Check(Tessera::TextFind(text.data(), n, sought.data(), m) == Plain(text, sought, false));
  Check(Tessera::TextRFind(text.data(), n, sought.data(), m) == Plain(text, sought, true));
  Check(Tessera::TextFindFirstOf(text.data(), n, sought.data(), m) == PlainFirstOf(text, sought));
  // Under the "C" locale the caseless forms fold A-Z only.
  auto fold = [](std::basic_string<C> s) {
    for (C& c : s)
      if (c >= C('A') && c <= C('Z')) c = static_cast<C>(c - C('A') + C('a'));
    return s;
  };
  Check(Tessera::TextFindCaseless(text.data(), n, sought.data(), m) ==
        Plain(fold(text), fold(sought), false));
  Check(Tessera::TextRFindCaseless(text.data(), n, sought.data(), m) ==
        Plain(fold(text), fold(sought), true));
  Check(Tessera::TextFindFirstOfCaseless(text.data(), n, sought.data(), m) ==
        PlainFirstOf(fold(text), fold(sought)));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  std::size_t soughtSize = data[0] % 24;
  ++data;
  --size;
  if (soughtSize > size) soughtSize = size;
  const std::string sought(reinterpret_cast<const char*>(data), soughtSize);
  // Repeating the text makes long haystacks, where the vector paths run.
  std::string text(reinterpret_cast<const char*>(data + soughtSize), size - soughtSize);
  if (!text.empty() && text[0] == 'R') text = text + text + text + text + text + text + text + text;
  Exercise(text, sought);
  Exercise(std::u16string(text.begin(), text.end()), std::u16string(sought.begin(), sought.end()));
  return 0;
}
