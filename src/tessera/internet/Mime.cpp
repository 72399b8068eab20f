#include <tessera/internet/Mime.h>

#include <cstring>
#include <string_view>

#include <tessera/text/TextCompare.h>

#include "tessera/internet/PropertiesAccess.h"

namespace Tessera {
namespace {

unsigned int Measure(const char* text, unsigned int length) {
  return length == npos ? static_cast<unsigned int>(std::strlen(text)) : length;
}

constexpr char kValueDelimiters[] = "; \t";

// Classes as types, so that the scans below inline them.
struct IsSlash {
  bool operator()(char c) const { return c == '/'; }
};
struct IsEquals {
  bool operator()(char c) const { return c == '='; }
};
struct IsValueDelimiter {
  bool operator()(char c) const { return c == ';' || c == ' ' || c == '\t'; }
};

template <class Class>
unsigned int SkipWhile(const char* text, unsigned int length, unsigned int at, Class in) {
  while (at != length && in(text[at])) ++at;
  return at;
}

template <class Class>
unsigned int SkipUntil(const char* text, unsigned int length, unsigned int at, Class in) {
  while (at != length && !in(text[at])) ++at;
  return at;
}

unsigned int SkipUntil(const char* text, unsigned int length, unsigned int at, char c) {
  const void* found = at != length ? std::memchr(text + at, c, length - at) : nullptr;
  return found != nullptr ? static_cast<unsigned int>(static_cast<const char*>(found) - text) : length;
}

// The parameter reader as a tokenizer in DelimitModeAnyOf would step through it, scanning the
// text directly: driving the tokenizer character by character took half the time of a media
// type. Reads from `at` into `read`; gives the final position and sets `delimiter` to the
// tokenizer's final delimiter setting.
unsigned int ReadParameters(const char* text, unsigned int length, unsigned int at,
                            Properties& read, const char*& delimiter) {
  std::string quoted;
  std::string_view name, value;
  for (;;) {
    delimiter = "=";
    unsigned int noted = at;
    at = SkipWhile(text, length, at, IsEquals());
    if (at == length) return noted;
    const unsigned int nameStart = at;
    at = SkipUntil(text, length, at, '=');
    name = std::string_view(text + nameStart, at - nameStart);
    at = SkipWhile(text, length, at, IsEquals());
    if (at == length) return at;

    if (text[at] == '"') {
      quoted.clear();
      unsigned int scan = at + 1;
      for (;;) {
        const unsigned int run = scan;
        while (scan != length && text[scan] != '"' && text[scan] != '\\') ++scan;
        quoted.append(text + run, scan - run);
        if (scan == length) return at;
        if (text[scan] == '"') break;
        if (++scan == length) return at;  // a backslash at the end
        quoted += text[scan++];
      }
      value = quoted;
      at = scan + 1;
      delimiter = kValueDelimiters;
    } else {
      delimiter = kValueDelimiters;
      noted = at;
      at = SkipWhile(text, length, at, IsValueDelimiter());
      if (at == length) return noted;
      const unsigned int valueStart = at;
      at = SkipUntil(text, length, at, IsValueDelimiter());
      value = std::string_view(text + valueStart, at - valueStart);
    }
    detail::PropertiesAccess::Set(read, name, value);
    at = SkipWhile(text, length, at, IsValueDelimiter());
  }
}

}  // namespace

bool IsMimeTSpecial(char c) { return c != '\0' && std::strchr("()<>@,;:\\\"/[]?=", c) != nullptr; }

bool IsMimeToken(const char* text, unsigned int length) {
  length = Measure(text, length);
  if (length == 0) return false;
  for (unsigned int i = 0; i < length; ++i)
    if (static_cast<signed char>(text[i]) <= 32 || IsMimeTSpecial(text[i])) return false;
  return true;
}

bool IsMimeQuotable(const char* text, unsigned int length) {
  return TextFindFirstOf(text, length, "\r\n", 2) == npos;
}

void MimeOutputParamValue(std::ostream& out, const char* value, unsigned int length) {
  length = Measure(value, length);
  if (IsMimeToken(value, length)) {
    out.write(value, length);
    return;
  }
  out.put('"');
  unsigned int start = 0;
  for (unsigned int i = 0; i < length; ++i) {
    if (value[i] != '\\' && value[i] != '"') continue;
    out.write(value + start, i - start);
    out.put('\\');
    out.put(value[i]);
    start = i + 1;
  }
  out.write(value + start, length - start);
  out.put('"');
}

void MimeOutputParam(std::ostream& out, const char* name, unsigned int nameLength,
                     const char* value, unsigned int valueLength) {
  out.write(name, Measure(name, nameLength));
  out.put('=');
  MimeOutputParamValue(out, value, valueLength);
}

bool MimeParseParamName(BasicStringTokenizer<char>& tokenizer, const char*& name,
                        unsigned int& length) {
  return tokenizer.Next(name, length, "=");
}

bool MimeParseParamName(BasicStringTokenizer<char>& tokenizer, std::string& name) {
  const char* token;
  unsigned int length;
  if (!MimeParseParamName(tokenizer, token, length)) return false;
  name.assign(token, length);
  return true;
}

bool MimeParseProperties(BasicStringTokenizer<char>& tokenizer, Properties& properties) {
  Properties read;
  const char* delimiter;
  const unsigned int position = ReadParameters(tokenizer.GetTextStart(), tokenizer.GetTextLength(),
                                               tokenizer.GetPosition(), read, delimiter);
  tokenizer.SetDelimiter(delimiter);
  tokenizer.SetPosition(position);
  properties.Swap(read);
  return true;
}

bool MimeParseMediaType(const char* text, unsigned int length, std::string& type,
                        std::string& subtype, Properties& properties) {
  length = Measure(text, length);
  unsigned int at = SkipWhile(text, length, 0, IsSlash());
  if (at == length) return false;
  const unsigned int typeStart = at;
  at = SkipUntil(text, length, at, '/');
  const unsigned int typeEnd = at;
  at = SkipWhile(text, length, at, IsSlash());
  at = SkipWhile(text, length, at, IsValueDelimiter());
  if (at == length) return false;
  const unsigned int subtypeStart = at;
  at = SkipUntil(text, length, at, IsValueDelimiter());
  const unsigned int subtypeEnd = at;
  at = SkipWhile(text, length, at, IsValueDelimiter());

  Properties read;
  const char* delimiter;
  ReadParameters(text, length, at, read, delimiter);
  // No change to an output can fail after these.
  if (type.capacity() < typeEnd - typeStart) type.reserve(typeEnd - typeStart);
  if (subtype.capacity() < subtypeEnd - subtypeStart) subtype.reserve(subtypeEnd - subtypeStart);
  properties.Swap(read);
  type.assign(text + typeStart, typeEnd - typeStart);
  subtype.assign(text + subtypeStart, subtypeEnd - subtypeStart);
  return true;
}

}  // namespace Tessera
