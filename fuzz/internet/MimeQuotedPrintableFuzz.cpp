// Quoted-printable decoding against a plain reference that reads every escape with TextNumeric,
// in both variants: the same result and the same bytes, including the partial output of a
// refusal. The first byte picks the variant.
#include <tessera/internet/MimeDecode.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include <tessera/text/TextNumeric.h>

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

bool ReferenceDecode(const char* s, std::size_t length, std::string& out, bool underscoreAsSpace) {
  out.clear();
  for (std::size_t i = 0; i < length; ++i) {
    if (underscoreAsSpace && s[i] == '_') {
      out += ' ';
    } else if (s[i] == '=') {
      unsigned char byte = 0;
      if (length - i < 3 || !Tessera::TextNumeric<char, unsigned char>(s + i + 1, 2, byte, 16))
        return false;
      out += static_cast<char>(byte);
      i += 2;
    } else {
      out += s[i];
    }
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const bool underscoreAsSpace = (data[0] & 1) != 0;
  const char* text = reinterpret_cast<const char*>(data + 1);
  std::string out;
  std::string expected;
  const bool good = ReferenceDecode(text, size - 1, expected, underscoreAsSpace);
  Check(Tessera::MimeQuotedPrintableDecode(text, static_cast<unsigned int>(size - 1), out,
                                           underscoreAsSpace) == good);
  Check(out == expected);
  return 0;
}
