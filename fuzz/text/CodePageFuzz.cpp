// Code-page conversion: well-formed UTF-16 widened from its UTF-8 and UTF-16LE forms comes back
// unchanged; the fast UTF-8 paths give what the platform's converter gives, bad input included;
// any bytes widen through 1252 and 932 without failure, one unit per byte for 1252. The input
// is read as bytes and, by pairs, as UTF-16.
#include <tessera/text/TextConv.h>
#include <tessera/win32/CodePage.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

std::u16string PlatformWiden(const std::string& bytes, unsigned int codePage) {
  if (bytes.empty()) return {};
  std::u16string out(bytes.size() + 1, u'\0');
  const int written = Win32::MultiByteToWideChar(codePage, 0, bytes.data(), static_cast<int>(bytes.size()),
                                                 &out[0], static_cast<int>(out.size()));
  Check(written > 0);
  out.resize(static_cast<std::size_t>(written));
  return out;
}

std::string PlatformNarrow(const std::u16string& units, unsigned int codePage) {
  if (units.empty()) return {};
  std::string out(units.size() * 3 + 1, '\0');
  const int written = Win32::WideCharToMultiByte(codePage, 0, units.data(), static_cast<int>(units.size()),
                                                 &out[0], static_cast<int>(out.size()), nullptr, nullptr);
  Check(written > 0);
  out.resize(static_cast<std::size_t>(written));
  return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  const unsigned int length = static_cast<unsigned int>(size);
  std::u16string units(size / 2, u'\0');
  std::memcpy(&units[0], data, units.size() * 2);
  const unsigned int unitCount = static_cast<unsigned int>(units.size());

  std::u16string wide;
  std::string narrow;
  Tessera::TextWidenCodePage(bytes.data(), length, wide, 65001);
  Check(wide == PlatformWiden(bytes, 65001));
  Tessera::TextNarrowCodePage(units.data(), unitCount, narrow, 65001);
  Check(narrow == PlatformNarrow(units, 65001));

  // Lone surrogates become U+FFFD on the way; what comes back of that is well-formed.
  std::u16string wellFormed;
  Tessera::TextWidenCodePage(narrow.data(), static_cast<unsigned int>(narrow.size()), wellFormed, 65001);
  for (unsigned int codePage : {65001u, 1200u}) {
    Tessera::TextNarrowCodePage(wellFormed.data(), static_cast<unsigned int>(wellFormed.size()), narrow, codePage);
    Tessera::TextWidenCodePage(narrow.data(), static_cast<unsigned int>(narrow.size()), wide, codePage);
    Check(wide == wellFormed);
  }

  Tessera::TextWidenCodePage(bytes.data(), length, wide, 1252);
  Check(wide.size() == size);
  Tessera::TextWidenCodePage(bytes.data(), length, wide, 932);
  Check(wide.size() <= size);
  return 0;
}
