// Uri: one absolute URI held as separate, decoded components. Parse fills it from text, the
// setters change one component without validating anything, and Format and FormatRelative
// write it back with each component percent-encoded by its own set. Escapes exist only in the
// text form, so parsing and formatting normalise: "s://h%2Dx/a%20b" comes back as
// "s://h-x/a%20b".
//
// A component is absent when it is empty. The query is held either as text (Parse, SetQuery)
// or as Properties (SetQueryProps), never both; the two forms are not derived from each other.
// Port 0 is `portNotSet`. Parse is stricter than RFC 3986 in requiring a scheme and a host
// wherever user information or a port is given, and looser in letting any byte stand inside a
// component, taking any text between "[" and "]" as an IP literal and "+" in front of a port
// or an escape's digits. Nothing is case-folded or dot-segment normalised.
//
// Conveniences: Parse also takes a std::string_view (a view of `npos` bytes or more gives
// false, the object untouched) or a NUL-terminated text, and a Uri moves without allocating,
// leaving the one moved from as Uri() makes it.
#ifndef TESSERA_INTERNET_URI_H
#define TESSERA_INTERNET_URI_H

#include <string>
#include <string_view>
#include <utility>

#include <tessera_export.h>
#include <tessera/frame/Library.h>
#include <tessera/internet/Properties.h>
#include <tessera/internet/UriText.h>
#include <tessera/text/TextViews.h>

namespace Tessera {

class TESSERA_API Uri {
 public:
  static const unsigned short portNotSet = 0;

  // Every component empty, no port.
  Uri() = default;
  Uri(const Uri&) = default;
  Uri& operator=(const Uri&) = default;
  Uri(Uri&& other) noexcept { Swap(other); }
  Uri& operator=(Uri&& other) noexcept {
    Uri taken(std::move(other));
    Swap(taken);
    return *this;
  }
  ~Uri() = default;

  // Empties every component and drops the port.
  void Reset();

  const std::string& GetScheme() const { return scheme_; }
  const std::string& GetUserInfo() const { return userInfo_; }
  const std::string& GetHost() const { return host_; }
  // The decoded path, with its leading "/" if it has one.
  const std::string& GetPath() const { return path_; }
  const std::string& GetQuery() const { return query_; }
  const std::string& GetFragment() const { return fragment_; }
  unsigned short GetPort() const { return port_; }
  const Properties& GetQueryProps() const { return queryProps_; }

  bool HasScheme() const { return !scheme_.empty(); }
  bool HasUserInfo() const { return !userInfo_.empty(); }
  bool HasHost() const { return !host_.empty(); }
  bool HasAuthority() const { return HasHost(); }
  bool HasPath() const { return !path_.empty(); }
  bool HasQuery() const { return !query_.empty() || !queryProps_.Empty(); }
  bool HasFragment() const { return !fragment_.empty(); }
  bool HasPort() const { return port_ != portNotSet; }

  void SetScheme(const std::string& value) { scheme_ = value; }
  void SetPath(const std::string& value) { path_ = value; }
  void SetFragment(const std::string& value) { fragment_ = value; }
  void SetUserInfo(const std::string& value) { SetPartInvalidate(userInfo_, value, authorityText_); }
  void SetHost(const std::string& value) { SetPartInvalidate(host_, value, authorityText_); }
  void SetPort(unsigned short value);
  // Sets the text form of the query and empties the properties form.
  void SetQuery(const std::string& value);
  // Sets the properties form, comparison flag included, and empties the text form.
  void SetQueryProps(const Properties& value);

  // The scheme is a valid scheme: letters first, then letters, digits and "+-.".
  bool IsSchemeValid() const;
  // A host, or neither user information nor a port.
  bool IsAuthorityValid() const { return HasHost() || (!HasUserInfo() && !HasPort()); }
  bool IsPathValid() const { return true; }
  bool IsHierPartValid() const { return IsAuthorityValid() && IsPathValid(); }
  bool IsValid() const { return IsSchemeValid() && IsHierPartValid(); }

  // Parses an absolute URI (`length` npos: up to the first NUL), decoding every component but
  // an IP-literal host. False, with the object untouched, for a text without a valid scheme, a
  // broken IP literal, a port that isn't an unsigned 16-bit decimal, user information or a
  // port without a host, or a "%" that doesn't begin an escape. `text` may be one of this
  // object's own strings.
  [[nodiscard]] bool Parse(const char* text, unsigned int length);
  [[nodiscard]] bool Parse(const std::string& text);
  // Conveniences: Parse of a view or of a text up to its NUL.
  [[nodiscard]] bool Parse(std::string_view text) {
    return detail::FitsLength(text.size()) &&
           Parse(text.data(), static_cast<unsigned int>(text.size()));
  }
  [[nodiscard]] bool Parse(const char* text) { return Parse(text, npos); }

  // Writes the whole URI; "//" and the authority only with a host. False, with `text`
  // untouched, when IsValid is false.
  [[nodiscard]] bool Format(std::string& text) const;
  // Writes path, "?" query and "#" fragment, whatever the validity; always true. The
  // properties form of the query is written with "&" between entries and "+" for spaces.
  bool FormatRelative(std::string& text) const;

 private:
  void Swap(Uri& other) noexcept {
    scheme_.swap(other.scheme_);
    userInfo_.swap(other.userInfo_);
    host_.swap(other.host_);
    authorityText_.swap(other.authorityText_);
    path_.swap(other.path_);
    queryProps_.Swap(other.queryProps_);
    query_.swap(other.query_);
    fragment_.swap(other.fragment_);
    std::swap(port_, other.port_);
  }
  template <class Out>
  void Emit(Out& out, bool absolute, const std::string& port) const;
  bool ParseView(std::string_view text);
  bool Write(std::string& text, bool absolute) const;
  static void SetPartInvalidate(std::string& part, const std::string& value,
                                std::string& dependant);

  std::string scheme_;
  std::string userInfo_;
  std::string host_;
  // Derived from user information, host and port; emptied whenever they change.
  std::string authorityText_;
  std::string path_;
  Properties queryProps_;
  std::string query_;
  std::string fragment_;
  unsigned short port_ = portNotSet;
};

}  // namespace Tessera

#endif  // TESSERA_INTERNET_URI_H
