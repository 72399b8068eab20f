// While the global locale is the classic one, the stream's text is produced directly: the
// classic num_put writes integers in plain decimal and floating values as printf's "%.6g",
// which is what std::to_chars gives for the general format with precision 6. Under any
// other global locale the stream itself does the work.
#include <tessera/text/TextFormatNumber.h>

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <locale>
#include <sstream>
#include <string>
#include <type_traits>

namespace Tessera {
namespace {

bool GlobalLocaleIsClassic() { return std::locale() == std::locale::classic(); }

// What the stream is given: 8-bit values are characters for a narrow stream and int for a
// wide one; every other type goes in as itself.
template <class T, class C>
auto Inserted(const T& value) {
  if constexpr (std::is_same<T, signed char>::value || std::is_same<T, unsigned char>::value) {
    if constexpr (std::is_same<C, char>::value)
      return static_cast<char>(value);
    else
      return static_cast<int>(value);
  } else {
    return value;
  }
}

// The platform's wide stream writes wchar_t; its text goes to UTF-16.
void AssignUtf16(const std::wstring& text, std::u16string& out) {
  std::u16string result;
  result.reserve(text.size());
  for (wchar_t w : text) {
    const auto c = static_cast<std::uint32_t>(w);
    if (c >= 0x10000 && c <= 0x10FFFF) {
      result += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
      result += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
    } else {
      result += static_cast<char16_t>(c);
    }
  }
  out.swap(result);
}

template <class T>
void FormatByStream(const T& value, std::string& out) {
  std::ostringstream stream;
  stream << Inserted<T, char>(value);
  out = stream.str();
}

template <class T>
void FormatByStream(const T& value, std::u16string& out) {
  std::wostringstream stream;
  stream << Inserted<T, char16_t>(value);
  AssignUtf16(stream.str(), out);
}

// The classic text into `buffer`; false if the stream has to write it (a long double that
// isn't a double, whose six digits could round differently).
template <class T, class C>
bool FormatClassic(const T& value, char (&buffer)[32], std::size_t& size) {
  std::to_chars_result result;
  if constexpr (std::is_floating_point<T>::value) {
    const double number = static_cast<double>(value);
    if (static_cast<T>(number) != value && number == number) return false;
    result = std::to_chars(buffer, buffer + sizeof buffer, number, std::chars_format::general, 6);
  } else {
    result = std::to_chars(buffer, buffer + sizeof buffer, Inserted<T, C>(value));
  }
  size = static_cast<std::size_t>(result.ptr - buffer);
  return true;
}

}  // namespace

template <class T, class C>
void TextFormatNumber(const T& value, std::basic_string<C>& out) {
  if constexpr (std::is_same<C, char>::value &&
                (std::is_same<T, signed char>::value || std::is_same<T, unsigned char>::value)) {
    // The character inserter writes the byte as it is under every locale.
    out.assign(1, static_cast<char>(value));
  } else {
    char buffer[32];
    std::size_t size;
    if (GlobalLocaleIsClassic() && FormatClassic<T, C>(value, buffer, size))
      out.assign(buffer, buffer + size);
    else
      FormatByStream(value, out);
  }
}

#define TESSERA_TEXT_FORMAT_NUMBER(T)                                         \
  template void TextFormatNumber<T, char>(const T&, std::basic_string<char>&); \
  template void TextFormatNumber<T, char16_t>(const T&, std::basic_string<char16_t>&);

TESSERA_TEXT_FORMAT_NUMBER(signed char)
TESSERA_TEXT_FORMAT_NUMBER(unsigned char)
TESSERA_TEXT_FORMAT_NUMBER(short)
TESSERA_TEXT_FORMAT_NUMBER(unsigned short)
TESSERA_TEXT_FORMAT_NUMBER(int)
TESSERA_TEXT_FORMAT_NUMBER(unsigned int)
TESSERA_TEXT_FORMAT_NUMBER(long)
TESSERA_TEXT_FORMAT_NUMBER(unsigned long)
TESSERA_TEXT_FORMAT_NUMBER(long long)
TESSERA_TEXT_FORMAT_NUMBER(unsigned long long)
TESSERA_TEXT_FORMAT_NUMBER(float)
TESSERA_TEXT_FORMAT_NUMBER(double)
TESSERA_TEXT_FORMAT_NUMBER(long double)

#undef TESSERA_TEXT_FORMAT_NUMBER

}  // namespace Tessera
