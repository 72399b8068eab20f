// MimeParseMediaType over any bytes, read in place so that ASan sees a read past the input.
// What it reads, written back as "type/subtype" and "; name=value" pairs by MimeOutputParam,
// reads again as the same type, subtype and pairs in the same order. Left out are a subtype that
// starts with "/" (found behind a ";" or a space after the slash), whose slash would join the
// one behind the type, and a name that starts with ";", space or tab (found behind a run of
// "="), which would be skipped as a separator.
#include <tessera/internet/Mime.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

bool SameEntries(const Tessera::Properties& a, const Tessera::Properties& b) {
  if (a.GetCount() != b.GetCount()) return false;
  for (unsigned int i = 0; i < a.GetCount(); ++i)
    if (a.GetKey(i) != b.GetKey(i) || a.GetValue(i) != b.GetValue(i)) return false;
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string type = "t", subtype = "s";
  Tessera::Properties props;
  if (!Tessera::MimeParseMediaType(reinterpret_cast<const char*>(data), static_cast<unsigned int>(size),
                                   type, subtype, props)) {
    Check(type == "t" && subtype == "s" && props.Empty());
    return 0;
  }
  Check(!type.empty() && !subtype.empty() && !props.IsCaseless());
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
  std::string type2, subtype2;
  Tessera::Properties props2;
  Check(Tessera::MimeParseMediaType(written.data(), static_cast<unsigned int>(written.size()), type2,
                                    subtype2, props2));
  Check(type2 == type && subtype2 == subtype && SameEntries(props, props2));
  return 0;
}
