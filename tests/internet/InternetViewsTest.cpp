#include <tessera/internet/Base64.h>
#include <tessera/internet/Mime.h>
#include <tessera/internet/MimeDecode.h>
#include <tessera/internet/Uri.h>
#include <tessera/internet/UriText.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include <plaint/Error.h>

using namespace Tessera;

namespace {

// The context function of the Plaint::LengthError that `operation` threw, or "".
template <class Operation>
std::string LengthErrorContext(Operation operation) {
  try {
    operation();
  } catch (const Plaint::LengthError& error) {
    return std::string(error.what()) + " in " + error.GetContext().function;
  }
  return "";
}

}  // namespace

TEST(InternetViews, GiveThePointerResultsAndRefuseWhatNoLengthCanHold) {
  std::string bytes, encoded, type, subtype, scheme, authority, path, query, fragment;
  Properties parameters;
  Uri uri;
  std::ostringstream written;
  MimeOutputParam(written, std::string("n"), std::string_view("a b"));
  Base64Encode(std::string("a\0b", 3), encoded);
  std::string_view escaped = "%41%";
  char c = 0;
  const bool decodedChar = UriPercentDecodeChar(escaped, c);
  EXPECT_EQ(std::make_tuple(written.str(), encoded, Base64Decode(std::string(encoded), bytes),
                            bytes, decodedChar, c, escaped),
            std::make_tuple("n=\"a b\"", "YQBi", true, std::string("a\0b", 3), true, 'A', "%"));
  EXPECT_TRUE(MimeParseMediaType(std::string("text/plain; a=1"), type, subtype, parameters));
  EXPECT_TRUE(UriDecompose(std::string("s://h/p?q#f"), scheme, authority, path, query, fragment));
  EXPECT_TRUE(uri.Parse(std::string_view("s://h/p%20q")));
  const std::string viewPath = uri.GetPath();
  EXPECT_TRUE(uri.Parse("s:x"));
  EXPECT_EQ(std::make_tuple(type, subtype, parameters.GetCount(), authority + path + query + fragment,
                            viewPath, uri.GetPath()),
            std::make_tuple("text", "plain", 1u, "h/pqf", "/p q", "x"));

  // A moved Uri takes the components; the one moved from is empty.
  Uri moved(std::move(uri));
  uri = std::move(moved);
  EXPECT_EQ(std::make_tuple(uri.GetScheme(), moved.GetScheme(), moved.GetPath()),
            std::make_tuple("s", "", ""));

  if constexpr (sizeof(std::size_t) > sizeof(unsigned int)) {
    // Sizes of npos and more never reach the data: only the first bytes are real.
    const std::string_view huge("%41", npos);
    std::string kept = "kept";
    std::u16string keptWide = u"kept";
    EXPECT_EQ(LengthErrorContext([&] { Base64Encode(huge, kept); }),
              "text too long in Tessera::Base64Encode");
    EXPECT_EQ(LengthErrorContext([&] { UriPercentEncode(huge, kept, nullptr); }),
              "text too long in Tessera::UriPercentEncode");
    EXPECT_EQ(LengthErrorContext([&] { MimeOutputParam(written, "n", huge); }),
              "text too long in Tessera::MimeOutputParam");
    EXPECT_EQ(std::make_tuple(Base64Decode(huge, kept), UriPercentDecode(huge, kept),
                              MimeQuotedPrintableDecode(huge, kept, false),
                              MimeDecodeEncodedWords(huge, keptWide), IsMimeQuotable(huge),
                              UriHierPartDecompose(huge, kept, kept), uri.Parse(huge), kept,
                              keptWide, uri.GetScheme(), written.str()),
              std::make_tuple(false, false, false, false, false, false, false, "kept", u"kept",
                              "s", "n=\"a b\""));
    std::string_view cut = huge;
    const bool decoded = UriPercentDecodeChar(cut, c);
    EXPECT_EQ(std::make_tuple(decoded, c, cut.size()), std::make_tuple(true, 'A', huge.size() - 3));
  }
}
