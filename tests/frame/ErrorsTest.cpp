#include <tessera/frame/Errors.h>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <sstream>

namespace Tessera {
namespace {

template <class E>
E MakeWithDetails(const char* message) {
  E error(message, PLAINT_CONTEXT("Tessera::Test::Make"));
  Plaint::AddInfo<Plaint::ErrorInfo_Win32Error>(error, 122u);
  Plaint::AddInfo<Plaint::ErrorInfo_invalidArgumentName>(error, "count");
  return error;
}

TEST(Errors, CaughtThroughEveryBaseWithContextAndDetails) {
  auto expectDetails = [](const Plaint::Error& error) {
    EXPECT_STREQ(error.GetContext().function, "Tessera::Test::Make");
    EXPECT_NE(std::strstr(error.GetContext().file, "ErrorsTest.cpp"), nullptr);
    ASSERT_NE(error.GetInfo<Plaint::ErrorInfo_Win32Error>(), nullptr);
    EXPECT_EQ(*error.GetInfo<Plaint::ErrorInfo_Win32Error>(), 122u);
    EXPECT_STREQ(*error.GetInfo<Plaint::ErrorInfo_invalidArgumentName>(), "count");
    EXPECT_EQ(error.GetInfo<ErrorInfo_ParsingErrorLocation>(), nullptr);
  };
  try { throw MakeWithDetails<ParsingError>("bad date"); }
  catch (const ParsingError& e) { EXPECT_STREQ(e.what(), "bad date"); expectDetails(e); }
  try { throw MakeWithDetails<ParsingError>("bad date"); }
  catch (const TextProcessingError& e) { expectDetails(e); }
  try { throw MakeWithDetails<TextConversionError>("invalid"); }
  catch (const Plaint::RuntimeError& e) { EXPECT_STREQ(e.what(), "invalid"); expectDetails(e); }
  try { throw MakeWithDetails<TextConversionError>("invalid"); }
  catch (const Plaint::Error& e) { EXPECT_STREQ(e.AsException().what(), "invalid"); expectDetails(e); }
  try { throw MakeWithDetails<TextConversionError>("invalid"); }
  catch (const std::runtime_error& e) { EXPECT_STREQ(e.what(), "invalid"); }
  try { throw MakeWithDetails<TextConversionError>("invalid"); }
  catch (const std::exception& e) { EXPECT_STREQ(e.what(), "invalid"); }
  try { throw MakeWithDetails<Plaint::InvalidArgument>("negative"); }
  catch (const std::invalid_argument& e) {
    EXPECT_STREQ(e.what(), "negative");
    EXPECT_EQ(dynamic_cast<const Plaint::LogicError*>(&e), nullptr);
    expectDetails(dynamic_cast<const Plaint::Error&>(e));
  }
  try { throw Plaint::BadAlloc(PLAINT_CONTEXT("Tessera::Test::Alloc")); }
  catch (const std::bad_alloc& e) {
    EXPECT_STREQ(dynamic_cast<const Plaint::Error&>(e).GetContext().function, "Tessera::Test::Alloc");
  }
}

TEST(Errors, CloneAndRethrowKeepTheClassAndTheDetails) {
  const ParsingError original = MakeWithDetails<ParsingError>("unexpected end");
  const TextProcessingError& viaBase = original;
  try {
    viaBase.Rethrow();
  } catch (const ParsingError& e) {
    EXPECT_STREQ(e.what(), "unexpected end");
    EXPECT_EQ(*e.GetInfo<Plaint::ErrorInfo_Win32Error>(), 122u);
  }
  std::unique_ptr<TextProcessingError> clone(viaBase.Clone());
  ASSERT_NE(dynamic_cast<ParsingError*>(clone.get()), nullptr);
  EXPECT_STREQ(clone->what(), "unexpected end");
  const Plaint::Error& root = original;
  std::unique_ptr<std::exception> asStd(root.Clone());
  EXPECT_NE(dynamic_cast<ParsingError*>(asStd.get()), nullptr);
  EXPECT_STREQ(*dynamic_cast<Plaint::Error&>(*asStd).GetInfo<Plaint::ErrorInfo_invalidArgumentName>(), "count");

  ParsingError assigned("other", PLAINT_CONTEXT("f"));
  assigned = original;
  EXPECT_STREQ(assigned.what(), "unexpected end");
  EXPECT_EQ(*assigned.GetInfo<Plaint::ErrorInfo_Win32Error>(), 122u);
}

TEST(Errors, StreamWritesMessageContextAndEveryDetail) {
  std::ostringstream out;
  out << MakeWithDetails<ParsingError>("bad");
  const std::string text = out.str();
  EXPECT_EQ(text.rfind("bad [Tessera::Test::Make at ", 0), 0u) << text;
  EXPECT_NE(text.find("Plaint::ErrorInfo_Win32Error: 122"), std::string::npos) << text;
  EXPECT_NE(text.find("Plaint::ErrorInfo_invalidArgumentName: count"), std::string::npos) << text;
}

TEST(ParsingErrorLocation, ExcerptKeepsTwentyCharsAheadAndFortyInAll) {
  const std::string hundred = [] {
    std::string s;
    for (int i = 0; i < 100; ++i) s += static_cast<char>('0' + i % 10);
    return s;
  }();
  ParsingErrorLocation location;
  location.line = 7;
  location.SetTextPosition(hundred.c_str(), 100, 0);
  EXPECT_EQ(location.text, hundred.substr(0, 40));
  EXPECT_EQ(location.textPosition, 0u);
  EXPECT_EQ(location.line, 7u);

  location.SetTextPosition(hundred.c_str(), 0xFFFFFFFFu, 20);
  EXPECT_EQ(location.text, hundred.substr(0, 40));
  EXPECT_EQ(location.textPosition, 20u);
  location.SetTextPosition(hundred.c_str(), 100, 21);
  EXPECT_EQ(location.text, hundred.substr(1, 40));
  EXPECT_EQ(location.textPosition, 20u);
  location.SetTextPosition(hundred.c_str(), 35, 30);
  EXPECT_EQ(location.text, hundred.substr(10, 25));
  EXPECT_EQ(location.textPosition, 20u);
}

TEST(ParsingErrorLocation, RendersLineColumnAndMarkerByte) {
  auto render = [](const ParsingErrorLocation& location) {
    std::ostringstream out;
    Plaint::RenderValue<ErrorInfo_ParsingErrorLocation>(out, location);
    return out.str();
  };
  ParsingErrorLocation location;
  EXPECT_EQ(render(location), "");
  location.line = 3;
  location.text = "ab";
  location.textPosition = 1;
  EXPECT_EQ(render(location), "(3, ?) a\xBB" "b");
  location.line = 0;
  location.column = 12;
  location.text.clear();
  EXPECT_EQ(render(location), "(?, 12) ");

  // Attached to an error, the location survives the throw and renders through the stream.
  ParsingError error("syntax error", PLAINT_CONTEXT("Client::Parse"));
  ParsingErrorLocation where;
  where.SetTextPosition("key = = value", 0xFFFFFFFFu, 6);
  Plaint::AddInfo<ErrorInfo_ParsingErrorLocation>(error, where);
  try {
    throw error;
  } catch (const Plaint::Error& e) {
    ASSERT_NE(e.GetInfo<ErrorInfo_ParsingErrorLocation>(), nullptr);
    EXPECT_EQ(e.GetInfo<ErrorInfo_ParsingErrorLocation>()->text, "key = = value");
    std::ostringstream out;
    out << e;
    EXPECT_NE(out.str().find("key = \xBB= value"), std::string::npos);
  }
}

}  // namespace
}  // namespace Tessera
