#include <tessera/internet/Base64.h>
#include <tessera/internet/Mime.h>
#include <tessera/internet/MimeDecode.h>
#include <tessera/internet/Uri.h>
#include <tessera/internet/UriText.h>

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include <plaint/Error.h>

using namespace Tessera;

TEST(InternetViews, GiveThePointerResultsMoveAndRefuseWhatNoLengthCanHold) {
  std::string encoded, type, subtype;
  Properties parameters;
  std::ostringstream written;
  MimeOutputParam(written, std::string("n"), std::string_view("a b"));
  Base64Encode(std::string("a\0b", 3), encoded);
  std::string_view escaped = "%41%";
  char c = 0;
  const bool decodedChar = UriPercentDecodeChar(escaped, c);
  const bool parsed = MimeParseMediaType(std::string("text/plain; a=1"), type, subtype, parameters);
  EXPECT_EQ(std::make_tuple(written.str(), encoded, decodedChar, c, escaped, parsed, subtype,
                            parameters.GetCount()),
            std::make_tuple("n=\"a b\"", "YQBi", true, 'A', "%", true, "plain", 1u));
  Uri uri, moved;
  ASSERT_TRUE(uri.Parse(std::string_view("s://h/p%20q")) && moved.Parse("s:x"));
  moved = std::move(uri);
  Uri constructed(std::move(moved));
  EXPECT_EQ(std::make_tuple(constructed.GetPath(), moved.HasScheme(), uri.HasScheme()),
            std::make_tuple("/p q", false, false));

  if constexpr (sizeof(std::size_t) > sizeof(unsigned int)) {
    // Sizes of npos and more never reach the data: only the first bytes are real.
    const std::string_view huge("%41", npos);
    std::string kept = "kept";
    std::u16string keptWide = u"kept";
    const std::pair<std::function<void()>, const char*> writers[] = {
        {[&] { Base64Encode(huge, kept); }, "Tessera::Base64Encode"},
        {[&] { MimeOutputParam(written, "n", huge); }, "Tessera::MimeOutputParam"}};
    for (const auto& [write, context] : writers) {
      try {
        write();
        ADD_FAILURE() << context;
      } catch (const Plaint::LengthError& error) {
        EXPECT_STREQ(error.GetContext().function, context);
      }
    }
    EXPECT_EQ(std::make_tuple(Base64Decode(huge, kept), MimeQuotedPrintableDecode(huge, kept, false),
                              MimeDecodeEncodedWords(huge, keptWide), IsMimeQuotable(huge),
                              UriHierPartDecompose(huge, kept, kept), constructed.Parse(huge), kept,
                              keptWide, constructed.GetPath(), written.str()),
              std::make_tuple(false, false, false, false, false, false, "kept", u"kept", "/p q",
                              "n=\"a b\""));
    std::string_view cut = huge;
    const bool decoded = UriPercentDecodeChar(cut, c);
    EXPECT_EQ(std::make_tuple(decoded, c, cut.size()), std::make_tuple(true, 'A', huge.size() - 3));
  }
}
