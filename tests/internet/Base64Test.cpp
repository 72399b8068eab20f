#include <tessera/internet/Base64.h>

#include <gtest/gtest.h>

#include <string>

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
  EXPECT_EQ(Encode(""), "");
  EXPECT_EQ(Encode("A"), "QQ==");
  EXPECT_EQ(Encode("AB"), "QUI=");
  EXPECT_EQ(Encode("ABC"), "QUJD");
  EXPECT_EQ(Encode(std::string("\0\xFF\xFE\x03\x7F", 5)), "AP/+A38=");
  std::string out;
  Base64Encode("AB\0CD", out);
  EXPECT_EQ(out, "QUI=");
}

TEST(Base64, DecodeStopsAtThePadAndNeedsNone) {
  const struct {
    const char* text;
    std::string bytes;
  } rows[] = {
      {"", ""},           {"QUJD", "ABC"},        {"QUI=", "AB"},     {"QQ==", "A"},
      {"QUI", "AB"},      {"QQ", "A"},            {"Q", ""},          {"=", ""},
      {"QUJD=QUJD", "ABC"}, {"QUJDQQ=!@#", "ABCA"}, {"AP/+A38", std::string("\0\xFF\xFE\x03\x7F", 5)},
  };
  for (const auto& row : rows) EXPECT_EQ(Decode(row.text), row.bytes) << row.text;
  std::string out;
  EXPECT_TRUE(Base64Decode("QUI\0QUJD", out));
  EXPECT_EQ(out, "AB");
}

TEST(Base64, RefusesOutsideTheAlphabetKeepingWholeGroups) {
  const struct {
    std::string text;
    std::string result;
  } rows[] = {
      {"QUJD!", "ABC!"},           {"QU JD", "!"},
      {"QUJD\r\nQUJD", "ABC!"},    {"QUJDQU-I", "ABC!"},
      {std::string("QUJD\0", 5), "ABC!"}, {"QUJD\xC3\xA9", "ABC!"},
      {"QUJDQUJDQUJD_", "ABCABCABC!"},
  };
  for (const auto& row : rows) EXPECT_EQ(Decode(row.text), row.result) << row.text;
}
