// TextNumeric for every type against a slow reference of its rules, narrow and wide. Layout:
// base byte, type byte, text. With the base byte's high bit set, a text byte of 0x80 + n
// stands for n zeros, so that long runs of digits come up (chunks of eight, digits lost).
#include <tessera/text/TextNumeric.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

int Digit(std::uint32_t c) {
  if (c >= '0' && c <= '9') return static_cast<int>(c - '0');
  if (c >= 'a' && c <= 'z') return static_cast<int>(c - 'a' + 10);
  if (c >= 'A' && c <= 'Z') return static_cast<int>(c - 'A' + 10);
  return -1;
}

template <class T>
constexpr unsigned __int128 Largest() {
  if (std::is_same<T, long>::value) return 0x7FFFFFFF;
  if (std::is_same<T, unsigned long>::value) return 0xFFFFFFFF;
  return static_cast<unsigned __int128>(std::numeric_limits<T>::max());
}

// Integers: the magnitude in 128 bits, which can't overflow before it passes any limit.
template <class T>
bool ReferenceInteger(const std::u16string& text, unsigned int base, T& value) {
  if (base > 36 || text.empty()) return false;
  std::size_t i = 0;
  bool negative = false;
  if (text[0] == u'+' || (std::is_signed<T>::value && text[0] == u'-')) {
    negative = text[0] == u'-';
    i = 1;
  }
  unsigned __int128 magnitude = 0;
  for (; i < text.size(); ++i) {
    const int digit = Digit(text[i]);
    if (digit < 0 || static_cast<unsigned int>(digit) >= base) return false;
    magnitude = magnitude * base + static_cast<unsigned int>(digit);
    if (magnitude > Largest<T>()) return false;
  }
  const auto wide = static_cast<__int128>(magnitude);
  value = static_cast<T>(negative ? -wide : wide);
  return true;
}

// Floating types: the steps as the rules state them, each rounded to the working type.
template <class T>
bool ReferenceFloating(const std::u16string& text, unsigned int base, T& value) {
  using Work = std::conditional_t<std::is_same<T, long double>::value, double, T>;
  if (base > 36 || text.empty()) return false;
  volatile Work number = 0;
  volatile Work scale = 1;
  bool negative = false;
  bool fraction = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char16_t c = text[i];
    if (i == 0 && (c == u'+' || c == u'-')) {
      negative = c == u'-';
      continue;
    }
    if (c == u'.' && !fraction) {
      fraction = true;
      continue;
    }
    const int digit = Digit(c);
    if (digit < 0 || static_cast<unsigned int>(digit) >= base) return false;
    if (fraction) {
      scale = scale / static_cast<Work>(base);
      volatile Work part = static_cast<Work>(digit) * scale;
      number = number + part;
    } else {
      volatile Work shifted = number * static_cast<Work>(base);
      number = shifted + static_cast<Work>(digit);
    }
  }
  value = static_cast<T>(negative ? number * static_cast<Work>(-1.0) : static_cast<Work>(number));
  return true;
}

template <class T>
bool Same(T a, T b) {
  if constexpr (std::is_floating_point<T>::value)
    return (a == b && std::signbit(a) == std::signbit(b)) || (a != a && b != b);
  else
    return a == b;
}

template <class T>
void Compare(const std::string& narrow, unsigned int base) {
  const std::u16string wide(narrow.begin(), narrow.end());
  // Wide text also gets units beyond the bytes: a byte with the high bit set becomes one
  // whose low byte is a digit's.
  std::u16string shifted = wide;
  for (char16_t& c : shifted)
    if (c >= 0x80) c = static_cast<char16_t>(0x100 + (c & 0x7F));
  T expected = T(7);
  bool ok;
  if constexpr (std::is_floating_point<T>::value)
    ok = ReferenceFloating(wide, base, expected);
  else
    ok = ReferenceInteger(wide, base, expected);
  T got = T(7);
  Check(Tessera::TextNumeric<char, T>(narrow.data(), static_cast<unsigned int>(narrow.size()), got,
                                      base) == ok);
  Check(Same(got, ok ? expected : T(7)));
  T gotWide = T(7);
  Check(Tessera::TextNumeric<char16_t, T>(wide.data(), static_cast<unsigned int>(wide.size()),
                                          gotWide, base) == ok);
  Check(Same(gotWide, got));
  T gotShifted = T(7);
  T expectedShifted = T(7);
  bool okShifted;
  if constexpr (std::is_floating_point<T>::value)
    okShifted = ReferenceFloating(shifted, base, expectedShifted);
  else
    okShifted = ReferenceInteger(shifted, base, expectedShifted);
  Check(Tessera::TextNumeric<char16_t, T>(shifted.data(), static_cast<unsigned int>(shifted.size()),
                                          gotShifted, base) == okShifted);
  Check(Same(gotShifted, expectedShifted));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const unsigned int base = (data[0] & 0x7F) % 40;
  const int type = data[1] % 13;
  std::string text(reinterpret_cast<const char*>(data + 2), size - 2);
  if (data[0] & 0x80) {
    std::string expanded;
    for (char c : text) {
      if (static_cast<unsigned char>(c) >= 0x80)
        expanded.append(static_cast<unsigned char>(c) - 0x80u, '0');
      else
        expanded += c;
    }
    text = expanded;
  }
  switch (type) {
    case 0:
      Compare<signed char>(text, base);
      break;
    case 1:
      Compare<unsigned char>(text, base);
      break;
    case 2:
      Compare<short>(text, base);
      break;
    case 3:
      Compare<unsigned short>(text, base);
      break;
    case 4:
      Compare<int>(text, base);
      break;
    case 5:
      Compare<unsigned int>(text, base);
      break;
    case 6:
      Compare<long>(text, base);
      break;
    case 7:
      Compare<unsigned long>(text, base);
      break;
    case 8:
      Compare<long long>(text, base);
      break;
    case 9:
      Compare<unsigned long long>(text, base);
      break;
    case 10:
      Compare<float>(text, base);
      break;
    case 11:
      Compare<double>(text, base);
      break;
    default:
      Compare<long double>(text, base);
      break;
  }
  return 0;
}
