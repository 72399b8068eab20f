#include <tessera/frame/Errors.h>

#include <algorithm>
#include <cstring>
#include <ostream>

namespace Tessera {

TextProcessingError::TextProcessingError(const std::string& message, const Plaint::Context& context)
    : Plaint::RuntimeError(message, context) {}
TextProcessingError::TextProcessingError(const TextProcessingError& other) = default;
TextProcessingError& TextProcessingError::operator=(const TextProcessingError& other) = default;
TextProcessingError::~TextProcessingError() = default;
TextProcessingError* TextProcessingError::Clone() const { return new TextProcessingError(*this); }
void TextProcessingError::Rethrow() const { throw TextProcessingError(*this); }

TextConversionError::TextConversionError(const std::string& message, const Plaint::Context& context)
    : TextProcessingError(message, context) {}
TextConversionError::TextConversionError(const TextConversionError& other) = default;
TextConversionError& TextConversionError::operator=(const TextConversionError& other) = default;
TextConversionError::~TextConversionError() = default;
TextConversionError* TextConversionError::Clone() const { return new TextConversionError(*this); }
void TextConversionError::Rethrow() const { throw TextConversionError(*this); }

ParsingError::ParsingError(const std::string& message, const Plaint::Context& context)
    : TextProcessingError(message, context) {}
ParsingError::ParsingError(const ParsingError& other) = default;
ParsingError& ParsingError::operator=(const ParsingError& other) = default;
ParsingError::~ParsingError() = default;
ParsingError* ParsingError::Clone() const { return new ParsingError(*this); }
void ParsingError::Rethrow() const { throw ParsingError(*this); }

void ParsingErrorLocation::SetTextPosition(const char* source, std::uint32_t length,
                                           std::uint32_t position) {
  constexpr std::uint32_t kLead = 20;
  constexpr std::uint32_t kExcerpt = 40;
  if (length == 0xFFFFFFFFu) length = static_cast<std::uint32_t>(std::strlen(source));
  const std::uint32_t start = position <= kLead ? 0 : position - kLead;
  text.assign(source + start, std::min(length - start, kExcerpt));
  textPosition = position - start;
}

}  // namespace Tessera

namespace Plaint {

template <>
void RenderValue<Tessera::ErrorInfo_ParsingErrorLocation>(
    std::ostream& stream, const Tessera::ParsingErrorLocation& location) {
  if (location.line != 0 || location.column != 0) {
    stream << '(';
    if (location.line != 0) stream << location.line; else stream << '?';
    stream << ", ";
    if (location.column != 0) stream << location.column; else stream << '?';
    stream << ") ";
  }
  if (!location.text.empty()) {
    const std::size_t split = std::min<std::size_t>(location.textPosition, location.text.size());
    stream.write(location.text.data(), static_cast<std::streamsize>(split));
    // Kept for compatibility: one Latin-1 byte, not UTF-8, as logs and callers expect it.
    stream.put(static_cast<char>(0xBB));
    stream.write(location.text.data() + split, static_cast<std::streamsize>(location.text.size() - split));
  }
}

template class ErrorInfoWrapper<Tessera::ErrorInfo_ParsingErrorLocation>;

}  // namespace Plaint
