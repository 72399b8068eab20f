// Base64: decoding what was encoded gives the bytes back, and any input decodes exactly as a
// plain reference reads it (one character at a time, the alphabet searched), with the same
// result and the same bytes, including the partial output of a refusal.
#include <tessera/internet/Base64.h>

#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

const char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

bool ReferenceDecode(const unsigned char* s, std::size_t length, std::string& out) {
  out.clear();
  unsigned int group[4];
  int count = 0;
  const auto put = [&](int bytes) {
    const unsigned int bits = group[0] << 18 | group[1] << 12 | group[2] << 6 | group[3];
    for (int i = 0; i < bytes; ++i) out += static_cast<char>(bits >> (16 - 8 * i));
  };
  for (std::size_t i = 0; i < length && s[i] != '='; ++i) {
    if (!std::isalnum(s[i]) && s[i] != '+' && s[i] != '/') return false;
    const char* found = std::strchr(kAlphabet, s[i]);
    group[count++] = found != nullptr ? static_cast<unsigned int>(found - kAlphabet) : 0;
    if (count == 4) {
      put(3);
      count = 0;
    }
  }
  for (int i = count; i < 4; ++i) group[i] = 0;
  if (count > 1) put(count - 1);
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const unsigned int length = static_cast<unsigned int>(size);
  std::string encoded;
  std::string decoded;
  Tessera::Base64Encode(data, length, encoded);
  Check(encoded.size() == (size + 2) / 3 * 4);
  Check(Tessera::Base64Decode(encoded.data(), static_cast<unsigned int>(encoded.size()), decoded));
  Check(decoded.size() == size && std::memcmp(decoded.data(), data, size) == 0);

  std::string expected;
  const bool good = ReferenceDecode(data, size, expected);
  Check(Tessera::Base64Decode(data, length, decoded) == good);
  Check(decoded == expected);
  return 0;
}
