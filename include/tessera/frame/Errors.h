// The library's own error classes and the parse location that can ride on them.
//
// TextProcessingError derives from Plaint::RuntimeError; TextConversionError and
// ParsingError derive from TextProcessingError. None adds a field or a message of its
// own: the thrower gives the text, and anything more is attached detail. Inside the
// library only TextConversionError is thrown; the others serve clients' own parsers.
#ifndef TESSERA_FRAME_ERRORS_H
#define TESSERA_FRAME_ERRORS_H

#include <cstdint>
#include <string>

#include <plaint/Error.h>
#include <tessera_export.h>

namespace Tessera {

class TESSERA_API TextProcessingError : public Plaint::RuntimeError {
 public:
  TextProcessingError(const std::string& message, const Plaint::Context& context);
  TextProcessingError(const TextProcessingError& other);
  TextProcessingError& operator=(const TextProcessingError& other);
  ~TextProcessingError() override;

  TextProcessingError* Clone() const override;
  [[noreturn]] void Rethrow() const override;
};

class TESSERA_API TextConversionError : public TextProcessingError {
 public:
  TextConversionError(const std::string& message, const Plaint::Context& context);
  TextConversionError(const TextConversionError& other);
  TextConversionError& operator=(const TextConversionError& other);
  ~TextConversionError() override;

  TextConversionError* Clone() const override;
  [[noreturn]] void Rethrow() const override;
};

class TESSERA_API ParsingError : public TextProcessingError {
 public:
  ParsingError(const std::string& message, const Plaint::Context& context);
  ParsingError(const ParsingError& other);
  ParsingError& operator=(const ParsingError& other);
  ~ParsingError() override;

  ParsingError* Clone() const override;
  [[noreturn]] void Rethrow() const override;
};

// Where a parse went wrong: an excerpt of the text around the error and, when the
// caller knows them, line and column (0 means not known).
struct TESSERA_API ParsingErrorLocation {
  std::string text;               // at most 40 chars about the error
  std::uint32_t textPosition = 0; // offset of the error within `text`
  std::uint32_t line = 0;
  std::uint32_t column = 0;

  // Keeps up to 20 chars ahead of `position` and up to 40 chars in all. A `length` of
  // 0xFFFFFFFF measures `text` up to its NUL. `position` must not pass the text's end.
  // `line` and `column` are left alone.
  void SetTextPosition(const char* text, std::uint32_t length, std::uint32_t position);
};

// The tag under which a ParsingErrorLocation is attached to an error.
struct ErrorInfo_ParsingErrorLocation {
  using ValueType = ParsingErrorLocation;
};

}  // namespace Tessera

namespace Plaint {

// "(line, column) " when either is known ("?" for an unknown one), then the excerpt
// with the single byte 0xBB marking the error's position.
// Kept for compatibility: 0xBB is the Latin-1 byte, not UTF-8; readers of the logs expect it.
template <>
TESSERA_API void RenderValue<Tessera::ErrorInfo_ParsingErrorLocation>(
    std::ostream& stream, const Tessera::ParsingErrorLocation& location);

extern template class TESSERA_API ErrorInfoWrapper<Tessera::ErrorInfo_ParsingErrorLocation>;

}  // namespace Plaint

#endif  // TESSERA_FRAME_ERRORS_H
