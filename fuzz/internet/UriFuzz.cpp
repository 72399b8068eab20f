// Uri::Parse over any bytes. A failed parse leaves every value of the object as it was; what
// parses formats, and the text parses back to the same components and formats the same again.
// Two kinds of component can't be written back and are left out: a path starting "//" behind
// an empty host (no "//" is written for it, so the path would read as an authority), and a
// decoded host that looks like an IP literal but holds a delimiter (a literal is written raw).
#include <tessera/internet/Uri.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

bool Same(const Tessera::Uri& a, const Tessera::Uri& b) {
  return a.GetScheme() == b.GetScheme() && a.GetUserInfo() == b.GetUserInfo() &&
         a.GetHost() == b.GetHost() && a.GetPort() == b.GetPort() && a.GetPath() == b.GetPath() &&
         a.GetQuery() == b.GetQuery() && a.GetFragment() == b.GetFragment() &&
         a.GetQueryProps().GetCount() == b.GetQueryProps().GetCount();
}

bool WritesBack(const Tessera::Uri& uri) {
  const std::string& host = uri.GetHost();
  if (host.empty()) return uri.GetPath().compare(0, 2, "//") != 0;
  if (!Tessera::UriIsHostIpLiteral(host.data(), static_cast<unsigned int>(host.size()))) return true;
  return host.find_first_of("/?#@") == std::string::npos && host.find(']') == host.size() - 1;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const char* text = reinterpret_cast<const char*>(data);
  Tessera::Uri uri;
  Check(uri.Parse("s://u@h:1/p?q#f", Tessera::npos));
  Tessera::Properties props;
  props.Set("k", "v");
  uri.SetQueryProps(props);
  const Tessera::Uri before = uri;
  if (!uri.Parse(text, static_cast<unsigned int>(size))) {
    Check(Same(uri, before) && uri.GetQueryProps().GetCount() == 1);
    return 0;
  }
  Check(uri.IsValid() && uri.GetQueryProps().Empty());
  std::string formatted;
  Check(uri.Format(formatted));
  if (!WritesBack(uri)) return 0;
  Tessera::Uri again;
  Check(again.Parse(formatted));
  Check(Same(again, uri));
  std::string second;
  Check(again.Format(second) && second == formatted);
  return 0;
}
