// The percent and form coders. Layout: a byte n, then n bytes of `extra`, then the text.
// Decoding what UriPercentEncode wrote gives the text back, and the encoded text holds nothing
// but unreserved bytes, `extra` and upper-case escapes. UriPercentDecode agrees with
// UriPercentDecodeChar taken step by step, on success and failure alike. A form query, once
// percent-decoded, is its entries joined by "&" and "=", with spaces as "+".
#include <tessera/internet/UriText.h>

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

bool DecodeByChar(const char* text, unsigned int length, std::string& result) {
  std::string decoded;
  char c;
  while (length != 0)
    if (!Tessera::UriPercentDecodeChar(text, length, c)) return false;
    else decoded += c;
  result = decoded;
  return true;
}

std::string SpacesAsPlus(std::string text) {
  for (char& c : text)
    if (c == ' ') c = '+';
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::size_t extraLength = data[0] % 16 < size - 1 ? data[0] % 16 : size - 1;
  std::string extra;
  for (std::size_t i = 1; i <= extraLength; ++i)
    if (data[i] != 0 && data[i] != '%') extra += static_cast<char>(data[i]);
  const std::string text(reinterpret_cast<const char*>(data) + 1 + extraLength, size - 1 - extraLength);
  const auto length = static_cast<unsigned int>(text.size());

  std::string encoded, decoded;
  Tessera::UriPercentEncode(text.data(), length, encoded, extra.c_str());
  for (std::size_t i = 0; i < encoded.size(); ++i) {
    const char c = encoded[i];
    if (c == '%') {
      Check(i + 2 < encoded.size() && std::isxdigit(static_cast<unsigned char>(encoded[i + 1])) &&
            !std::islower(static_cast<unsigned char>(encoded[i + 1])) &&
            !std::islower(static_cast<unsigned char>(encoded[i + 2])));
      i += 2;
    } else {
      Check(Tessera::UriIsCharUnreserved(c) || extra.find(c) != std::string::npos);
    }
  }
  Check(Tessera::UriPercentDecode(encoded.data(), static_cast<unsigned int>(encoded.size()), decoded));
  Check(decoded == text);

  std::string whole = "kept", byChar = "kept";
  const bool ok = Tessera::UriPercentDecode(text.data(), length, whole);
  Check(ok == DecodeByChar(text.data(), length, byChar) && whole == byChar);

  // Entries from the text cut at NUL bytes, alternately key and value.
  Tessera::Properties props;
  std::string expected, key;
  std::size_t start = 0;
  for (int piece = 0; start <= text.size(); ++piece) {
    std::size_t end = text.find('\0', start);
    if (end == std::string::npos) end = text.size();
    const std::string part = text.substr(start, end - start);
    start = end + 1;
    if (piece % 2 == 0) {
      key = part;
      continue;
    }
    if (props.Has(key)) continue;
    props.Set(key, part);
    expected += (props.GetCount() == 1 ? "" : "&") + SpacesAsPlus(key) + "=" +
                SpacesAsPlus(part);
  }
  std::string form;
  Tessera::UriQueryFormEncode(props, form, '&');
  Check(form.find_first_of(" \0", 0, 2) == std::string::npos);
  Check(Tessera::UriPercentDecode(form.data(), static_cast<unsigned int>(form.size()), decoded));
  Check(decoded == expected);
  return 0;
}
