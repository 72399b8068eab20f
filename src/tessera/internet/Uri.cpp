// Parse checks everything before it writes anything, reserves every component next, and only
// then decodes into the object's own strings, so a parse into a reused Uri allocates nothing
// and a refused allocation leaves the object as it was. Format measures, then writes in place.
#include <tessera/internet/Uri.h>

#include <cstring>

#include <tessera/text/TextFormatNumber.h>
#include <tessera/text/TextNumeric.h>

#include "tessera/internet/UriCoding.h"

namespace Tessera {

using detail::CodingSet;

const unsigned short Uri::portNotSet;

namespace {

class Measure {
 public:
  void Raw(std::string_view text) { size_ += text.size(); }
  void Char(char) { ++size_; }
  void Encoded(std::string_view text, const CodingSet& set) {
    size_ += detail::EncodedSize(text, set);
  }
  std::size_t Size() const { return size_; }

 private:
  std::size_t size_ = 0;
};

// Three bytes at most for each byte of an encoded component.
class Bound {
 public:
  void Raw(std::string_view text) { size_ += text.size(); }
  void Char(char) { ++size_; }
  void Encoded(std::string_view text, const CodingSet&) { size_ += 3 * text.size(); }
  std::size_t Size() const { return size_; }

 private:
  std::size_t size_ = 0;
};

class Writer {
 public:
  explicit Writer(char* out) : out_(out) {}
  char* End() const { return out_; }
  void Raw(std::string_view text) {
    if (text.empty()) return;
    std::memcpy(out_, text.data(), text.size());
    out_ += text.size();
  }
  void Char(char c) { *out_++ = c; }
  void Encoded(std::string_view text, const CodingSet& set) {
    out_ = detail::EncodeTo(text, set, out_);
  }

 private:
  char* out_;
};

void Reserve(std::string& target, std::size_t size) {
  if (target.capacity() < size) target.reserve(size);
}

// Makes room for `size` bytes first, so that the writes that follow cannot fail.
void Store(std::string& target, std::string_view raw, std::size_t size, bool decode) {
  target.resize(size);
  if (size == 0) return;
  if (decode)
    detail::DecodeTo(raw, &target[0]);
  else
    std::memcpy(&target[0], raw.data(), size);
}

}  // namespace

void Uri::Reset() {
  scheme_.clear();
  userInfo_.clear();
  host_.clear();
  authorityText_.clear();
  path_.clear();
  queryProps_.Clear();
  query_.clear();
  fragment_.clear();
  port_ = portNotSet;
}

void Uri::SetPort(unsigned short value) {
  if (port_ == value) return;
  port_ = value;
  authorityText_.clear();
}

void Uri::SetQuery(const std::string& value) {
  query_ = value;
  queryProps_.Clear();
}

void Uri::SetQueryProps(const Properties& value) {
  queryProps_ = value;
  query_.clear();
}

void Uri::SetPartInvalidate(std::string& part, const std::string& value, std::string& dependant) {
  if (part == value) return;
  part = value;
  dependant.clear();
}

bool Uri::IsSchemeValid() const {
  return UriIsSchemeValid(scheme_.data(), static_cast<unsigned int>(scheme_.size()));
}

bool Uri::Parse(const std::string& text) {
  return Parse(text.data(), static_cast<unsigned int>(text.size()));
}

bool Uri::Parse(const char* text, unsigned int length) {
  const std::string_view input = detail::View(text, length);
  for (const std::string* own :
       {&scheme_, &userInfo_, &host_, &authorityText_, &path_, &query_, &fragment_}) {
    if (detail::Overlaps(input.data(), input.size(), *own)) {
      const std::string copy(input);
      return ParseView(copy);
    }
  }
  return ParseView(input);
}

bool Uri::ParseView(std::string_view text) {
  detail::UriParts parts;
  if (!detail::SplitUri(text, parts)) return false;
  if (!detail::IsScheme(parts.scheme)) return false;
  std::string_view userInfo, host, portText;
  if (!parts.authority.empty() && !detail::SplitAuthority(parts.authority, userInfo, host, portText))
    return false;

  std::size_t userInfoSize, hostSize = host.size(), pathSize, querySize, fragmentSize;
  const bool decodeHost = !detail::IsIpLiteral(host);
  if (!detail::DecodedSize(userInfo, userInfoSize) ||
      (decodeHost && !detail::DecodedSize(host, hostSize)))
    return false;
  unsigned short port = portNotSet;
  if (!portText.empty() &&
      !TextNumeric(portText.data(), static_cast<unsigned int>(portText.size()), port, 10))
    return false;
  if (host.empty() && (!userInfo.empty() || !portText.empty())) return false;
  if (!detail::DecodedSize(parts.path, pathSize) || !detail::DecodedSize(parts.query, querySize) ||
      !detail::DecodedSize(parts.fragment, fragmentSize))
    return false;

  Reserve(scheme_, parts.scheme.size());
  Reserve(userInfo_, userInfoSize);
  Reserve(host_, hostSize);
  Reserve(path_, pathSize);
  Reserve(query_, querySize);
  Reserve(fragment_, fragmentSize);

  Store(scheme_, parts.scheme, parts.scheme.size(), false);
  Store(userInfo_, userInfo, userInfoSize, true);
  Store(host_, host, hostSize, decodeHost);
  Store(path_, parts.path, pathSize, true);
  Store(query_, parts.query, querySize, true);
  Store(fragment_, parts.fragment, fragmentSize, true);
  authorityText_.clear();
  queryProps_.Clear();
  port_ = port;
  return true;
}

template <class Out>
void Uri::Emit(Out& out, bool absolute, const std::string& port) const {
  if (absolute) {
    out.Raw(scheme_);
    out.Char(':');
    if (!host_.empty()) {
      out.Raw("//");
      if (!userInfo_.empty()) {
        out.Encoded(userInfo_, detail::kUserInfoSet);
        out.Char('@');
      }
      if (detail::IsIpLiteral(host_))
        out.Raw(host_);
      else
        out.Encoded(host_, detail::kHostSet);
      if (HasPort()) {
        out.Char(':');
        out.Raw(port);
      }
    }
  }
  if (!path_.empty()) out.Encoded(path_, detail::kPathSet);
  if (HasQuery()) {
    out.Char('?');
    if (queryProps_.Empty()) {
      out.Encoded(query_, detail::kQuerySet);
    } else {
      for (unsigned int i = 0, count = queryProps_.GetCount(); i < count; ++i) {
        if (i != 0) out.Char('&');
        out.Encoded(queryProps_.GetKey(i), detail::kFormSet);
        out.Char('=');
        out.Encoded(queryProps_.GetValue(i), detail::kFormSet);
      }
    }
  }
  if (!fragment_.empty()) {
    out.Char('#');
    out.Encoded(fragment_, detail::kFragmentSet);
  }
}

bool Uri::Write(std::string& text, bool absolute) const {
  std::string port;
  if (absolute && HasPort()) TextFormatNumber(port_, port);
  // Writing into the bound and cutting back beats measuring first, up to a size where the
  // spare room would cost more than the second pass.
  Bound bound;
  Emit(bound, absolute, port);
  std::size_t size = bound.Size();
  if (size > 4096) {
    Measure measure;
    Emit(measure, absolute, port);
    size = measure.Size();
  }
  if (text.capacity() < size) text.reserve(size);  // the one step that can fail, before any change
  text.resize(size);
  Writer writer(&text[0]);
  Emit(writer, absolute, port);
  text.resize(static_cast<std::size_t>(writer.End() - text.data()));
  return true;
}

bool Uri::Format(std::string& text) const {
  if (!IsValid()) return false;
  return Write(text, true);
}

bool Uri::FormatRelative(std::string& text) const { return Write(text, false); }

}  // namespace Tessera
