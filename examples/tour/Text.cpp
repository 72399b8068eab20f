#include <tessera/tessera.h>

#include <string>

#include "Tour.h"

namespace Tour {

void ShowText() {
  Heading("text: comparison, search, UTF-8, tokens, numbers");
  using namespace Tessera;
  std::cout << "compare caseless \"Content-Type\" and \"content-type\": "
            << TextCompareCaseless("Content-Type", npos, "content-type", npos)
            << "; \"abc\" and \"abcd\": " << TextCompare("abc", npos, "abcd", npos) << '\n';
  std::cout << "find \"HTTP\" in \"GET /index.html HTTP/1.1\": "
            << TextFind("GET /index.html HTTP/1.1", npos, "HTTP", npos)
            << "; last \"ab\" in \"abab\": " << TextRFind("abab", npos, "ab", npos) << '\n';

  std::u16string wide;
  TextWidenUtf8("Gr\xC3\xBC\xC3\x9F" "e \xF0\x9F\x98\x80", npos, wide);
  std::string narrow;
  TextNarrowUtf8(wide.data(), static_cast<unsigned int>(wide.size()), narrow);
  std::cout << "UTF-8 round trip: " << wide.size() << " UTF-16 units, " << narrow.size() << " bytes: " << narrow
            << '\n';
  try {
    TextWidenUtf8("ok\xFF", npos, wide);
  } catch (const TextConversionError& error) {
    std::cout << "0xFF at the end: " << error.what() << " (kept for compatibility; out \""
              << std::string(wide.begin(), wide.end()) << "\")\n";
  }

  BasicStringTokenizer<char> tokens("  alpha, beta,,gamma ", ", ", DelimitModeAnyOf);
  const char* token;
  unsigned int length;
  std::cout << "tokens of \"  alpha, beta,,gamma \":";
  while (tokens.Next(token, length)) std::cout << " [" << std::string(token, length) << ']';
  std::cout << '\n';

  int port = 0;
  double ratio = 0;
  const bool parsed = TextNumeric("8080", npos, port, 10) && TextNumeric("ff.8", npos, ratio, 16);
  std::string text;
  TextFormatNumber(ratio * 4, text);
  std::cout << "numbers: parsed " << std::boolalpha << parsed << ", 8080 -> " << port << ", hex ff.8 -> " << ratio
            << ", times 4 formats as \"" << text << '"';
  TextFormatNumber(1234567.0, text);
  std::cout << ", 1234567.0 as \"" << text << "\"\n";
}

}  // namespace Tour
