// BasicStringTokenizer: a cursor that splits a text it doesn't own into tokens, handed out as
// pointer and length slices of that text, with a delimiter rule that may change from one
// token to the next. Instantiated for `char` and `char16_t` (UTF-16 code units; lengths and
// positions count code units).
//
// A run of delimiters is one separator, so a token is never empty; the delimiter behind a
// token is left in place until the next scan. Nothing is quoted or escaped. The text must
// outlive the tokenizer and every token; a null text is allowed only with a length of 0.
//
// With an empty delimiter text the delimiters are white space: for `char` what `isspace`
// says of the bytes 1 to 127 (NUL and bytes with the high bit set never are), for
// `char16_t` what `iswspace` says of the code unit; both follow the process locale.
//
// Conveniences: the text may come as a view (its size the explicit length) and tokens may go
// out as views. A text view of `npos` units or more throws Plaint::LengthError ("text too
// long", context "Tessera::BasicStringTokenizer::Reset" or "...::Rebase") and changes nothing.
// A tokenizer moves without allocating; the one moved from is left as a default-constructed one.
#ifndef TESSERA_TEXT_STRINGTOKENIZER_H
#define TESSERA_TEXT_STRINGTOKENIZER_H

#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include <tessera_export.h>
#include <tessera/frame/Library.h>
#include <tessera/text/TextViews.h>

namespace Tessera {

// How the delimiter text is read.
enum DelimitMode {
  DelimitModeString = 0,  // the whole delimiter text, compared exactly
  DelimitModeAnyOf = 1,   // any one character of the delimiter text
  DelimitModeNoneOf = 2,  // any one character not in the delimiter text
};

template <class C>
class TESSERA_API BasicStringTokenizer {
  static_assert(std::is_same<C, char>::value || std::is_same<C, char16_t>::value,
                "BasicStringTokenizer is built for char and char16_t only");

 public:
  using View = std::basic_string_view<C>;

  // A caller's own delimiter rule. While one is set, the delimiter text and the mode are
  // ignored. The tokenizer doesn't own it.
  class TESSERA_API Delimiter {
   public:
    // Length of the delimiter that starts at `text`, or 0 if none does. `left` (at least 1)
    // counts the characters from `text` to the end; the result must not exceed it.
    virtual unsigned int Match(const C* text, unsigned int left) = 0;
    virtual ~Delimiter();
  };

  // No text; empty delimiter text in mode DelimitModeAnyOf.
  BasicStringTokenizer();
  // As the matching Reset.
  BasicStringTokenizer(const C* text, unsigned int length, const C* delimiter, DelimitMode mode);
  BasicStringTokenizer(const C* text, const C* delimiter, DelimitMode mode);
  // Convenience: as Reset with a view.
  BasicStringTokenizer(View text, const C* delimiter, DelimitMode mode) : BasicStringTokenizer() {
    Reset(text, delimiter, mode);
  }
  BasicStringTokenizer(const BasicStringTokenizer&) = default;
  BasicStringTokenizer& operator=(const BasicStringTokenizer&) = default;
  // Convenience: takes every setting and the delimiter text's storage.
  BasicStringTokenizer(BasicStringTokenizer&& other) noexcept
      : text_(other.text_),
        length_(other.length_),
        position_(other.position_),
        delimiter_(std::move(other.delimiter_)),
        mode_(other.mode_),
        delimiterObject_(other.delimiterObject_) {
    other.Forget();
  }
  BasicStringTokenizer& operator=(BasicStringTokenizer&& other) noexcept {
    if (this != &other) {
      text_ = other.text_;
      length_ = other.length_;
      position_ = other.position_;
      delimiter_.swap(other.delimiter_);
      mode_ = other.mode_;
      delimiterObject_ = other.delimiterObject_;
      other.Forget();
    }
    return *this;
  }

  // Starts over on `text` (`length` npos: up to its first NUL) at position 0, with the given
  // delimiter text (NUL-terminated; null means empty) and mode, and no delimiter object.
  void Reset(const C* text, unsigned int length, const C* delimiter, DelimitMode mode);
  void Reset(const C* text, const C* delimiter, DelimitMode mode);
  // Convenience: Reset on a view.
  void Reset(View text, const C* delimiter, DelimitMode mode) {
    Reset(text.data(), detail::CheckedLength(text.size(), "Tessera::BasicStringTokenizer::Reset"),
          delimiter, mode);
  }

  // Replaces the delimiter text (null means empty) and drops the delimiter object; the mode
  // stays unless given.
  void SetDelimiter(const C* delimiter);
  void SetDelimiter(const C* delimiter, DelimitMode mode);
  // Sets a delimiter object and empties the delimiter text; the mode stays.
  void SetDelimiter(Delimiter& delimiter);
  // Sets the mode only; a delimiter object stays in force.
  void SetDelimitMode(DelimitMode mode);

  // Skips delimiters and gives the token behind them, leaving the position on the delimiter
  // (or end) behind it. With no token left, gives false, puts the position back and leaves
  // `token` and `length` untouched; a setting made by the call stays.
  [[nodiscard]] bool Next(const C*& token, unsigned int& length);
  [[nodiscard]] bool Next(const C*& token, unsigned int& length, const C* delimiter);
  [[nodiscard]] bool Next(const C*& token, unsigned int& length, const C* delimiter,
                          DelimitMode mode);
  [[nodiscard]] bool Next(const C*& token, unsigned int& length, DelimitMode mode);
  // Conveniences: Next with the token as a view, untouched on false.
  [[nodiscard]] bool Next(View& token) {
    const C* start = nullptr;
    unsigned int length = 0;
    return Next(start, length) && Slice(start, length, token);
  }
  [[nodiscard]] bool Next(View& token, const C* delimiter) {
    const C* start = nullptr;
    unsigned int length = 0;
    return Next(start, length, delimiter) && Slice(start, length, token);
  }
  [[nodiscard]] bool Next(View& token, const C* delimiter, DelimitMode mode) {
    const C* start = nullptr;
    unsigned int length = 0;
    return Next(start, length, delimiter, mode) && Slice(start, length, token);
  }
  [[nodiscard]] bool Next(View& token, DelimitMode mode) {
    const C* start = nullptr;
    unsigned int length = 0;
    return Next(start, length, mode) && Slice(start, length, token);
  }
  // As Next, without the token.
  bool Skip();
  // Moves the position over the delimiters that stand at it.
  void SkipDelimiters();
  // SkipDelimiters under the present setting, then SetDelimiter(delimiter).
  void SkipDelimitersAndSet(const C* delimiter);

  void Rewind() { position_ = 0; }
  // A position beyond the text gives the text's length.
  void SetPosition(unsigned int position) { position_ = position < length_ ? position : length_; }
  // Moves onto another text (`length` npos: up to its first NUL), keeping the delimiter
  // settings and the position, cut to the new length. With `offset`, the position first
  // drops by that much (to no less than 0), for a buffer that lost its first characters.
  void Rebase(const C* text, unsigned int length);
  void Rebase(const C* text, unsigned int length, unsigned int offset);
  // Conveniences: Rebase onto a view.
  void Rebase(View text) {
    Rebase(text.data(),
           detail::CheckedLength(text.size(), "Tessera::BasicStringTokenizer::Rebase"));
  }
  void Rebase(View text, unsigned int offset) {
    Rebase(text.data(), detail::CheckedLength(text.size(), "Tessera::BasicStringTokenizer::Rebase"),
           offset);
  }

  const C* GetTextStart() const { return text_; }
  unsigned int GetTextLength() const { return length_; }
  unsigned int GetPosition() const { return position_; }
  const C* GetTextPosition() const { return text_ + position_; }
  unsigned int GetLeftLength() const { return length_ - position_; }
  // True at the end of the text; not after a failed Next that left delimiters behind.
  bool IsDone() const { return position_ == length_; }

 private:
  static bool Slice(const C* start, unsigned int length, View& token) {
    token = View(start, length);
    return true;
  }
  // The state of a default-constructed tokenizer.
  void Forget() noexcept {
    text_ = nullptr;
    length_ = 0;
    position_ = 0;
    delimiter_.clear();
    mode_ = DelimitModeAnyOf;
    delimiterObject_ = nullptr;
  }
  bool MatchDelimiter(unsigned int& length);
  void SkipNonDelimiters();

  const C* text_;
  unsigned int length_;
  unsigned int position_;
  std::basic_string<C> delimiter_;
  DelimitMode mode_;
  Delimiter* delimiterObject_;
};

extern template class BasicStringTokenizer<char>;
extern template class BasicStringTokenizer<char16_t>;

}  // namespace Tessera

#endif  // TESSERA_TEXT_STRINGTOKENIZER_H
