// TextFormatNumber of any value of each type against what a fresh stream writes, narrow
// and wide (8-bit values go to the wide stream as int). Layout: type byte, value bytes.
#include <tessera/text/TextFormatNumber.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

// The value is made from the bytes as a `From`; long double takes a double's bits, so that
// no invalid 80-bit encoding comes up.
template <class T, class From = T>
void Compare(const std::uint8_t* data, std::size_t size) {
  From bits{};
  std::memcpy(&bits, data, size < sizeof bits ? size : sizeof bits);
  const T value = static_cast<T>(bits);
  std::ostringstream narrowStream;
  std::wostringstream wideStream;
  narrowStream << value;
  wideStream << +value;
  std::string narrow = "previous";
  std::u16string wide = u"previous";
  Tessera::TextFormatNumber(value, narrow);
  Tessera::TextFormatNumber(value, wide);
  const std::wstring expected = wideStream.str();
  Check(narrow == narrowStream.str());
  Check(wide == std::u16string(expected.begin(), expected.end()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  const std::uint8_t* value = data + 1;
  const std::size_t left = size - 1;
  switch (data[0] % 13) {
    case 0: Compare<signed char>(value, left); break;
    case 1: Compare<unsigned char>(value, left); break;
    case 2: Compare<short>(value, left); break;
    case 3: Compare<unsigned short>(value, left); break;
    case 4: Compare<int>(value, left); break;
    case 5: Compare<unsigned int>(value, left); break;
    case 6: Compare<long>(value, left); break;
    case 7: Compare<unsigned long>(value, left); break;
    case 8: Compare<long long>(value, left); break;
    case 9: Compare<unsigned long long>(value, left); break;
    case 10: Compare<float>(value, left); break;
    case 11: Compare<double>(value, left); break;
    default: Compare<long double, double>(value, left); break;
  }
  return 0;
}
