#include <tessera/internet/Mime.h>

#include <cstring>

#include <tessera/text/TextCompare.h>

namespace Tessera {
namespace {

unsigned int Measure(const char* text, unsigned int length) {
  return length == npos ? static_cast<unsigned int>(std::strlen(text)) : length;
}

constexpr char kValueDelimiters[] = "; \t";

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
  std::string name, value;
  const char* const text = tokenizer.GetTextStart();
  for (;;) {
    tokenizer.SetDelimiter("=");
    unsigned int noted = tokenizer.GetPosition();
    tokenizer.SkipDelimiters();
    if (tokenizer.IsDone()) {
      tokenizer.SetPosition(noted);
      break;
    }
    const char* token;
    unsigned int tokenLength;
    tokenizer.Next(token, tokenLength);
    name.assign(token, tokenLength);
    tokenizer.SkipDelimiters();
    if (tokenizer.IsDone()) break;

    const unsigned int length = tokenizer.GetTextLength();
    unsigned int at = tokenizer.GetPosition();
    if (text[at] == '"') {
      value.clear();
      bool closed = false;
      for (++at; at < length; ++at) {
        if (text[at] == '"') {
          closed = true;
          break;
        }
        if (text[at] == '\\' && ++at == length) break;
        value += text[at];
      }
      if (!closed) break;
      tokenizer.SetPosition(at + 1);
      tokenizer.SetDelimiter(kValueDelimiters);
    } else {
      tokenizer.SetDelimiter(kValueDelimiters);
      noted = tokenizer.GetPosition();
      tokenizer.SkipDelimiters();
      if (tokenizer.IsDone()) {
        tokenizer.SetPosition(noted);
        break;
      }
      tokenizer.Next(token, tokenLength);
      value.assign(token, tokenLength);
    }
    read.Set(name, value);
    if (!tokenizer.IsDone()) tokenizer.SkipDelimiters();
  }
  properties.Swap(read);
  return true;
}

bool MimeParseMediaType(const char* text, unsigned int length, std::string& type,
                        std::string& subtype, Properties& properties) {
  BasicStringTokenizer<char> tokenizer(text, Measure(text, length), "", DelimitModeAnyOf);
  const char* token;
  unsigned int tokenLength;
  if (!tokenizer.Next(token, tokenLength, "/")) return false;
  std::string readType(token, tokenLength);
  tokenizer.SkipDelimiters();
  if (!tokenizer.Next(token, tokenLength, " \t;")) return false;
  std::string readSubtype(token, tokenLength);
  tokenizer.SkipDelimiters();
  MimeParseProperties(tokenizer, properties);
  type.swap(readType);
  subtype.swap(readSubtype);
  return true;
}

}  // namespace Tessera
