#include <tessera/text/StringTokenizer.h>

#include <cctype>
#include <cwctype>

namespace Tessera {
namespace {

// Only 1 to 127 are asked, so that NUL and the bytes of multi-byte characters never count.
bool IsWhiteSpace(char c) {
  return static_cast<signed char>(c) > 0 && std::isspace(static_cast<unsigned char>(c)) != 0;
}

bool IsWhiteSpace(char16_t c) { return std::iswspace(static_cast<std::wint_t>(c)) != 0; }

template <class C>
unsigned int Measure(const C* text, unsigned int length) {
  return length == npos ? static_cast<unsigned int>(std::char_traits<C>::length(text)) : length;
}

}  // namespace

template <class C>
BasicStringTokenizer<C>::Delimiter::~Delimiter() = default;

template <class C>
BasicStringTokenizer<C>::BasicStringTokenizer()
    : text_(nullptr),
      length_(0),
      position_(0),
      mode_(DelimitModeAnyOf),
      delimiterObject_(nullptr) {}

template <class C>
BasicStringTokenizer<C>::BasicStringTokenizer(const C* text, unsigned int length,
                                              const C* delimiter, DelimitMode mode)
    : BasicStringTokenizer() {
  Reset(text, length, delimiter, mode);
}

template <class C>
BasicStringTokenizer<C>::BasicStringTokenizer(const C* text, const C* delimiter, DelimitMode mode)
    : BasicStringTokenizer() {
  Reset(text, npos, delimiter, mode);
}

template <class C>
void BasicStringTokenizer<C>::Reset(const C* text, unsigned int length, const C* delimiter,
                                    DelimitMode mode) {
  SetDelimiter(delimiter, mode);
  text_ = text;
  length_ = Measure(text, length);
  position_ = 0;
}

template <class C>
void BasicStringTokenizer<C>::Reset(const C* text, const C* delimiter, DelimitMode mode) {
  Reset(text, npos, delimiter, mode);
}

template <class C>
void BasicStringTokenizer<C>::SetDelimiter(const C* delimiter) {
  if (delimiter != nullptr)
    delimiter_.assign(delimiter);
  else
    delimiter_.clear();
  delimiterObject_ = nullptr;
}

template <class C>
void BasicStringTokenizer<C>::SetDelimiter(const C* delimiter, DelimitMode mode) {
  SetDelimiter(delimiter);
  mode_ = mode;
}

template <class C>
void BasicStringTokenizer<C>::SetDelimiter(Delimiter& delimiter) {
  delimiter_.clear();
  delimiterObject_ = &delimiter;
}

template <class C>
void BasicStringTokenizer<C>::SetDelimitMode(DelimitMode mode) {
  mode_ = mode;
}

template <class C>
bool BasicStringTokenizer<C>::Next(const C*& token, unsigned int& length) {
  const unsigned int start = position_;
  SkipDelimiters();
  if (position_ == length_) {
    position_ = start;
    return false;
  }
  const unsigned int tokenStart = position_;
  SkipNonDelimiters();
  token = text_ + tokenStart;
  length = position_ - tokenStart;
  return true;
}

template <class C>
bool BasicStringTokenizer<C>::Next(const C*& token, unsigned int& length, const C* delimiter) {
  SetDelimiter(delimiter);
  return Next(token, length);
}

template <class C>
bool BasicStringTokenizer<C>::Next(const C*& token, unsigned int& length, const C* delimiter,
                                   DelimitMode mode) {
  SetDelimiter(delimiter, mode);
  return Next(token, length);
}

template <class C>
bool BasicStringTokenizer<C>::Next(const C*& token, unsigned int& length, DelimitMode mode) {
  SetDelimitMode(mode);
  return Next(token, length);
}

template <class C>
bool BasicStringTokenizer<C>::Skip() {
  const C* token;
  unsigned int length;
  return Next(token, length);
}

template <class C>
void BasicStringTokenizer<C>::SkipDelimiters() {
  unsigned int length;
  while (position_ != length_ && MatchDelimiter(length)) position_ += length;
}

template <class C>
void BasicStringTokenizer<C>::SkipDelimitersAndSet(const C* delimiter) {
  SkipDelimiters();
  SetDelimiter(delimiter);
}

template <class C>
void BasicStringTokenizer<C>::Rebase(const C* text, unsigned int length) {
  text_ = text;
  length_ = Measure(text, length);
  if (position_ > length_) position_ = length_;
}

template <class C>
void BasicStringTokenizer<C>::Rebase(const C* text, unsigned int length, unsigned int offset) {
  position_ = position_ < offset ? 0 : position_ - offset;
  Rebase(text, length);
}

template <class C>
bool BasicStringTokenizer<C>::MatchDelimiter(unsigned int& length) {
  const C* place = text_ + position_;
  if (delimiterObject_ != nullptr) {
    length = delimiterObject_->Match(place, length_ - position_);
    return length != 0;
  }
  if (delimiter_.empty()) {
    length = 1;
    return IsWhiteSpace(*place) != (mode_ == DelimitModeNoneOf);
  }
  // The delimiter text never holds a NUL (it was copied from a NUL-terminated one), so the
  // exact compare and the one-character search come down to plain character equality.
  if (mode_ == DelimitModeString) {
    const unsigned int size = static_cast<unsigned int>(delimiter_.size());
    if (size > length_ - position_) return false;
    length = size;
    return std::char_traits<C>::compare(place, delimiter_.data(), size) == 0;
  }
  length = 1;
  const bool found =
      std::char_traits<C>::find(delimiter_.data(), delimiter_.size(), *place) != nullptr;
  return found == (mode_ == DelimitModeAnyOf);
}

template <class C>
void BasicStringTokenizer<C>::SkipNonDelimiters() {
  unsigned int length;
  while (position_ != length_ && !MatchDelimiter(length)) ++position_;
}

template class BasicStringTokenizer<char>;
template class BasicStringTokenizer<char16_t>;

}  // namespace Tessera
