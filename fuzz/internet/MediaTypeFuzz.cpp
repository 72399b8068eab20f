// MimeParseMediaType and MimeParseProperties over any bytes, read in place so that ASan sees a
// read past the input. Both agree with a reference that drives the tokenizer step by step as
// the rules are written (the library scans the text directly), down to the final position and
// delimiter of the tokenizer. What MimeParseMediaType reads, written back as "type/subtype" and
// "; name=value" pairs by MimeOutputParam, reads again as the same type, subtype and pairs in
// the same order. Left out of that are a subtype that starts with "/" (found behind a ";" or a
// space after the slash), whose slash would join the one behind the type, and a name that
// starts with ";", space or tab (found behind a run of "="), which would be read as separator.
#include <tessera/internet/Mime.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

namespace {

using Tokenizer = Tessera::BasicStringTokenizer<char>;

void Check(bool condition) {
  if (!condition) std::abort();
}

bool SameEntries(const Tessera::Properties& a, const Tessera::Properties& b) {
  if (a.GetCount() != b.GetCount() || a.IsCaseless() != b.IsCaseless()) return false;
  for (unsigned int i = 0; i < a.GetCount(); ++i)
    if (a.GetKey(i) != b.GetKey(i) || a.GetValue(i) != b.GetValue(i)) return false;
  return true;
}

void ReferenceParameters(Tokenizer& t, Tessera::Properties& properties) {
  Tessera::Properties read;
  const char* token;
  unsigned int length;
  for (;;) {
    t.SetDelimiter("=");
    if (!t.Next(token, length)) break;
    const std::string name(token, length);
    t.SkipDelimiters();
    if (t.IsDone()) break;
    std::string value;
    const char* text = t.GetTextStart();
    unsigned int at = t.GetPosition();
    if (text[at] == '"') {
      bool closed = false;
      for (++at; at < t.GetTextLength() && !closed; ++at) {
        if (text[at] == '"') closed = true;
        else if (text[at] != '\\') value += text[at];
        else if (++at < t.GetTextLength()) value += text[at];
      }
      if (!closed) break;
      t.SetPosition(at);
      t.SetDelimiter("; \t");
    } else {
      t.SetDelimiter("; \t");
      if (!t.Next(token, length)) break;
      value.assign(token, length);
    }
    read.Set(name, value);
    if (!t.IsDone()) t.SkipDelimiters();
  }
  properties.Swap(read);
}

bool ReferenceMediaType(const char* text, unsigned int size, std::string& type, std::string& subtype,
                        Tessera::Properties& properties) {
  Tokenizer t(text, size, "", Tessera::DelimitModeAnyOf);
  const char* token;
  unsigned int length;
  if (!t.Next(token, length, "/")) return false;
  const std::string readType(token, length);
  t.SkipDelimiters();
  if (!t.Next(token, length, " \t;")) return false;
  subtype.assign(token, length);
  type = readType;
  t.SkipDelimiters();
  ReferenceParameters(t, properties);
  return true;
}

// The tokens a tokenizer gives from where it stands, under its present delimiter.
std::string Rest(Tokenizer& t) {
  std::string tokens = std::to_string(t.GetPosition());
  const char* token;
  unsigned int length;
  while (t.Next(token, length)) tokens += "|" + std::string(token, length);
  return tokens;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const char* text = reinterpret_cast<const char*>(data);
  const auto length = static_cast<unsigned int>(size);

  Tokenizer library(text, length, "", Tessera::DelimitModeAnyOf), reference = library;
  library.SetPosition(size != 0 ? data[0] % size : 0);
  reference.SetPosition(library.GetPosition());
  Tessera::Properties fromLibrary(true), fromReference;
  Check(Tessera::MimeParseProperties(library, fromLibrary));
  ReferenceParameters(reference, fromReference);
  Check(SameEntries(fromLibrary, fromReference) && Rest(library) == Rest(reference));

  std::string type = "t", subtype = "s", type2 = "t", subtype2 = "s";
  Tessera::Properties props, props2;
  const bool parsed = Tessera::MimeParseMediaType(text, length, type, subtype, props);
  Check(parsed == ReferenceMediaType(text, length, type2, subtype2, props2));
  Check(type == type2 && subtype == subtype2 && SameEntries(props, props2));
  if (!parsed) {
    Check(type == "t" && subtype == "s" && props.Empty());
    return 0;
  }
  if (subtype[0] == '/') return 0;
  std::ostringstream out;
  out << type << '/' << subtype;
  for (unsigned int i = 0; i < props.GetCount(); ++i) {
    const std::string& name = props.GetKey(i);
    const std::string& value = props.GetValue(i);
    if (name.find_first_of("; \t") == 0) return 0;
    out << "; ";
    Tessera::MimeOutputParam(out, name.data(), static_cast<unsigned int>(name.size()), value.data(),
                             static_cast<unsigned int>(value.size()));
  }
  const std::string written = out.str();
  Check(Tessera::MimeParseMediaType(written.data(), static_cast<unsigned int>(written.size()), type2,
                                    subtype2, props2));
  Check(type2 == type && subtype2 == subtype && SameEntries(props, props2));
  return 0;
}
