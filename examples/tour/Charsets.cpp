#include <tessera/tessera.h>

#include <string>

#include "Tour.h"

namespace Tour {

namespace {

// UTF-8 for the terminal.
std::string Show(const std::u16string& wide) {
  std::string out;
  Tessera::TextNarrowUtf8(wide.data(), static_cast<unsigned int>(wide.size()), out);
  return out;
}

}  // namespace

void ShowCharsets() {
  Heading("charsets, MIME decoding and Base64");
  using namespace Tessera;
  const char header[] =
      "=?utf-8?B?4oKsIDEwMA==?= pour =?iso-8859-1?Q?le_caf=E9?= =?shift_jis?B?k4yLng==?=";
  std::u16string wide;
  const bool decoded = MimeDecodeEncodedWords(header, npos, wide);
  std::cout << "header " << header << "\n  decodes (" << std::boolalpha << decoded << ") to \""
            << Show(wide) << "\"\n";

  std::string body;
  if (MimeQuotedPrintableDecode("Gr=FC=DFe aus K=F6ln=0D=0A", npos, body, false)) {
    TextWidenCharset(body, wide, "ISO-8859-1");
    std::cout << "quoted-printable body in ISO-8859-1: \"" << Show(wide.substr(0, wide.size() - 2))
              << "\" and CR LF\n";
  }

  std::string encoded;
  std::string bytes;
  Base64Encode("Tessera", encoded);
  const bool good = Base64Decode(encoded.c_str(), bytes);
  std::cout << "Base64 of \"Tessera\": " << encoded << ", back (" << good << "): \"" << bytes
            << "\"; \"QUJD!\" decodes: " << Base64Decode("QUJD!", bytes) << '\n';

  std::string shiftJis;
  TextNarrowCodePage(u"\u6771\u4EAC \uFF76\uFF85 \u20AC", npos, shiftJis, 932);
  TextWidenCodePage(shiftJis.data(), static_cast<unsigned int>(shiftJis.size()), wide, 932);
  std::cout << "code page 932: " << shiftJis.size() << " bytes, back as \"" << Show(wide)
            << "\" (no euro in Shift_JIS); default code page " << Win32::GetACP() << '\n';
}

}  // namespace Tour
