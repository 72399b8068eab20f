#include <tessera/frame/Errors.h>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <tuple>

namespace Tessera {
namespace {

template <class E>
E MakeWithDetails(const char* message) {
  E error(message, PLAINT_CONTEXT("Tessera::Test::Make"));
  Plaint::AddInfo<Plaint::ErrorInfo_Win32Error>(error, 122u);
  Plaint::AddInfo<Plaint::ErrorInfo_invalidArgumentName>(error, "count");
  return error;
}

void ExpectDetails(const Plaint::Error& error, const char* message) {
  EXPECT_STREQ(error.AsException().what(), message);
  EXPECT_STREQ(error.GetContext().function, "Tessera::Test::Make");
  EXPECT_NE(std::strstr(error.GetContext().file, "ErrorsTest.cpp"), nullptr);
  EXPECT_EQ(*error.GetInfo<Plaint::ErrorInfo_Win32Error>(), 122u);
  EXPECT_STREQ(*error.GetInfo<Plaint::ErrorInfo_invalidArgumentName>(), "count");
  EXPECT_EQ(error.GetInfo<ErrorInfo_ParsingErrorLocation>(), nullptr);
}

// Throws a fresh copy of `E` and catches it as `Base`; the details must come through.
template <class E, class Base>
void ExpectCaughtAs() {
  try {
    throw MakeWithDetails<E>("bad");
  } catch (const Base& caught) {
    ExpectDetails(dynamic_cast<const Plaint::Error&>(caught), "bad");
  }
}

TEST(Errors, CaughtThroughEveryBaseClonedRethrownAndAssignedWithTheirDetails) {
  ExpectCaughtAs<ParsingError, TextProcessingError>();
  ExpectCaughtAs<TextConversionError, Plaint::Error>();
  ExpectCaughtAs<TextConversionError, std::exception>();
  ExpectCaughtAs<Plaint::InvalidArgument, std::invalid_argument>();
  ExpectCaughtAs<Plaint::OutOfRange, std::out_of_range>();

  const ParsingError original = MakeWithDetails<ParsingError>("unexpected end");
  const TextProcessingError& viaBase = original;
  EXPECT_THROW(viaBase.Rethrow(), ParsingError);
  std::unique_ptr<TextProcessingError> clone(viaBase.Clone());
  ASSERT_NE(dynamic_cast<ParsingError*>(clone.get()), nullptr);
  ExpectDetails(*clone, "unexpected end");
  ParsingError assigned("other", PLAINT_CONTEXT("f"));
  assigned = original;
  ExpectDetails(assigned, "unexpected end");

  std::ostringstream out;
  out << original;
  EXPECT_EQ(out.str().rfind("unexpected end [Tessera::Test::Make at ", 0), 0u) << out.str();
  EXPECT_NE(out.str().find("Plaint::ErrorInfo_Win32Error: 122; Plaint::ErrorInfo_invalidArgumentName: count"),
            std::string::npos) << out.str();
}

// The excerpt keeps twenty chars ahead of the position and forty in all.
TEST(ParsingErrorLocation, ExcerptAndItsRendering) {
  std::string hundred;
  for (int i = 0; i < 100; ++i) hundred += static_cast<char>('0' + i % 10);
  struct Case { std::uint32_t length, position; std::size_t start, size; std::uint32_t textPosition; };
  for (const Case& c : {Case{100, 0, 0, 40, 0}, Case{0xFFFFFFFFu, 20, 0, 40, 20}, Case{100, 21, 1, 40, 20},
                        Case{35, 30, 10, 25, 20}}) {
    ParsingErrorLocation location;
    location.line = 7;
    location.SetTextPosition(hundred.c_str(), c.length, c.position);
    EXPECT_EQ(std::make_tuple(location.text, location.textPosition, location.line),
              std::make_tuple(hundred.substr(c.start, c.size), c.textPosition, 7u)) << c.position;
  }
  auto render = [](const ParsingErrorLocation& location) {  // text, position, line, column
    std::ostringstream out;
    Plaint::RenderValue<ErrorInfo_ParsingErrorLocation>(out, location);
    return out.str();
  };
  EXPECT_EQ(render({"", 0, 0, 0}) + "|" + render({"", 0, 0, 12}), "|(?, 12) ");
  EXPECT_EQ(render({"ab", 1, 3, 0}), "(3, ?) a\xBB" "b");  // the Latin-1 byte: kept for compatibility
  // The same text where an error carrying it is written out.
  ParsingError error("syntax error", PLAINT_CONTEXT("Client::Parse"));
  ParsingErrorLocation where;
  where.SetTextPosition("key = = value", 0xFFFFFFFFu, 6);
  Plaint::AddInfo<ErrorInfo_ParsingErrorLocation>(error, where);
  std::ostringstream out;
  out << static_cast<const Plaint::Error&>(error);
  EXPECT_NE(out.str().find("key = \xBB= value"), std::string::npos) << out.str();
}

}  // namespace
}  // namespace Tessera
