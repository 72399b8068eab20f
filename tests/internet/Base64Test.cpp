#include <tessera/internet/Base64.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>

using namespace Tessera;

namespace {

std::string Encode(const std::string& bytes) {
  std::string out = "old";
  Base64Encode(bytes.data(), static_cast<unsigned int>(bytes.size()), out);
  return out;
}

// The decoded bytes, with "!" behind them when the decoder refused.
std::string Decode(const std::string& text) {
  std::string out = "old";
  const bool good = Base64Decode(text.data(), static_cast<unsigned int>(text.size()), out);
  return good ? out : out + "!";
}

}  // namespace

TEST(Base64, EncodesGroupsAndPadsTheLast) {
  EXPECT_EQ(Encode("A"), "QQ==");
  EXPECT_EQ(Encode("AB"), "QUI=");
  std::string out;
  Base64Encode("AB\0CD", out);
  EXPECT_EQ(out, "QUI=");
}

// The fuzz target holds decoding to a reference; these rows pin one case of each rule.
TEST(Base64, DecodeStopsAtThePadNeedsNoneAndRefusesOutsideTheAlphabetKeepingWholeGroups) {
  const std::pair<std::string, std::string> rows[] = {
      {"QUI", "AB"}, {"Q", ""}, {"QUJD=QUJD", "ABC"}, {"QUJDQU-I", "ABC!"}, {"QU JD", "!"}};
  for (const auto& [text, result] : rows) EXPECT_EQ(Decode(text), result) << text;
  std::string out;
  EXPECT_TRUE(Base64Decode("QUI\0QUJD", out));
  EXPECT_EQ(out, "AB");
}
