#include <tessera/tessera.h>

#include <sstream>
#include <string>

#include "Tour.h"

namespace Tour {

void ShowInternet() {
  Heading("internet: URIs, form queries, media types");
  using namespace Tessera;

  Uri uri;
  const char* text = "https://jo%40home@example.com:8443/docs/Read%20Me.txt?lang=en#part%202";
  if (uri.Parse(text, npos)) {
    std::cout << "parsed " << text << "\n  user \"" << uri.GetUserInfo() << "\", host \"" << uri.GetHost()
              << "\", port " << uri.GetPort() << ", path \"" << uri.GetPath() << "\", query \""
              << uri.GetQuery() << "\", fragment \"" << uri.GetFragment() << "\"\n";
  }
  uri.SetHost("[2001:db8::1]");
  uri.SetPort(Uri::portNotSet);
  uri.SetPath("/search results/");
  Properties form;
  form.Set("q", "caf\xC3\xA9 cr\xC3\xA8me");
  form.Set("page", "2");
  uri.SetQueryProps(form);
  std::string written;
  if (uri.Format(written)) std::cout << "changed and written back: " << written << '\n';
  UriQueryFormEncode(form, written, ';');
  std::cout << "the form alone, with \";\": " << written << '\n';

  std::string type, subtype;
  Properties parameters;
  const char* header = "multipart/form-data; boundary=\"frontier \\\"42\\\"\"; charset=utf-8";
  if (MimeParseMediaType(header, npos, type, subtype, parameters)) {
    std::cout << "media type " << type << '/' << subtype << " with";
    for (unsigned int i = 0; i < parameters.GetCount(); ++i)
      std::cout << ' ' << parameters.GetKey(i) << " = [" << parameters.GetValue(i) << ']';
    std::cout << '\n';
  }
  std::ostringstream out;
  out << type << '/' << subtype;
  for (unsigned int i = 0; i < parameters.GetCount(); ++i) {
    out << "; ";
    MimeOutputParam(out, parameters.GetKey(i).c_str(), npos, parameters.GetValue(i).c_str(), npos);
  }
  std::cout << "written again: " << out.str() << '\n';
}

}  // namespace Tour
