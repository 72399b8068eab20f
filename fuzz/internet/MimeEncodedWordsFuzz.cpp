// Encoded words in header text: any input decodes or refuses without reading past its end.
// Plain text without "=?" widens byte for byte; a byte above 0x7F outside every word refuses
// and leaves the result untouched; text with no such byte never refuses.
#include <tessera/internet/MimeDecode.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const char* text = reinterpret_cast<const char*>(data);
  std::u16string out = u"untouched";
  const bool good = Tessera::MimeDecodeEncodedWords(text, static_cast<unsigned int>(size), out);
  const bool ascii = std::all_of(data, data + size, [](std::uint8_t b) { return b < 0x80; });
  if (ascii) Check(good);
  if (!good) Check(out == u"untouched");
  const std::string bytes(text, size);
  if (bytes.find("=?") == std::string::npos) {
    Check(good == ascii);
    if (good) Check(out == std::u16string(data, data + size));
  }
  return 0;
}
