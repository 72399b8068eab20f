#include <tessera/internet/UriText.h>

#include <cstring>
#include <string_view>

#include <tessera/text/TextNumeric.h>

#include "tessera/internet/UriCoding.h"

namespace Tessera {

using detail::View;

bool UriIsCharReserved(char c) {
  return c != '\0' && std::strchr(":/?#[]@!$&'()*+,;=", c) != nullptr;
}

bool UriIsCharUnreserved(char c) {
  return detail::kUnreservedSet.action[static_cast<unsigned char>(c)] == detail::kCopy;
}

bool UriIsSchemeChar(char c, bool first) { return detail::IsSchemeChar(c, first); }

bool UriIsSchemeValid(const char* text, unsigned int length) {
  return detail::IsScheme(View(text, length));
}

bool UriIsHostIpLiteral(const char* text, unsigned int length) {
  return detail::IsIpLiteral(View(text, length));
}

bool UriDecompose(const char* text, unsigned int length, std::string& scheme,
                  std::string& authority, std::string& path, std::string& query,
                  std::string& fragment) {
  detail::UriParts parts;
  if (!detail::SplitUri(View(text, length), parts)) return false;
  std::string newScheme(parts.scheme), newAuthority(parts.authority), newPath(parts.path),
      newQuery(parts.query), newFragment(parts.fragment);
  scheme.swap(newScheme);
  authority.swap(newAuthority);
  path.swap(newPath);
  query.swap(newQuery);
  fragment.swap(newFragment);
  return true;
}

bool UriHierPartDecompose(const char* text, unsigned int length, std::string& authority,
                          std::string& path) {
  std::string_view authorityView, pathView;
  detail::SplitHierPart(View(text, length), authorityView, pathView);
  std::string newAuthority(authorityView), newPath(pathView);
  authority.swap(newAuthority);
  path.swap(newPath);
  return true;
}

bool UriAuthorityDecompose(const char* text, unsigned int length, std::string& userInfo,
                           std::string& host, std::string& port) {
  std::string_view userInfoView, hostView, portView;
  if (!detail::SplitAuthority(View(text, length), userInfoView, hostView, portView)) return false;
  std::string newUserInfo(userInfoView), newHost(hostView), newPort(portView);
  userInfo.swap(newUserInfo);
  host.swap(newHost);
  port.swap(newPort);
  return true;
}

void UriPercentEncodeChar(char c, char* const buffer) {
  *detail::EncodeTo(std::string_view(&c, 1), detail::kEscapeAllSet, buffer) = '\0';
}

void UriPercentEncode(const char* text, unsigned int length, std::string& result,
                      const char* extra) {
  const detail::CodingSet set = detail::MakeCodingSet(extra);
  const std::string_view input = View(text, length);
  detail::Deliver(input, detail::EncodedSize(input, set), result,
          [&](char* out) { detail::EncodeTo(input, set, out); });
}

bool UriPercentDecodeChar(const char*& text, unsigned int& length, char& c) {
  if (length == 0) return false;
  if (*text != '%') {
    c = *text;
    ++text;
    --length;
    return true;
  }
  unsigned int value;
  if (length < 3 || !TextNumeric(text + 1, 2, value, 16)) return false;
  c = static_cast<char>(value);
  text += 3;
  length -= 3;
  return true;
}

bool UriPercentDecode(const char* text, unsigned int length, std::string& result) {
  const std::string_view input = View(text, length);
  std::size_t size;
  if (!detail::DecodedSize(input, size)) return false;
  detail::Deliver(input, size, result, [&](char* out) { detail::DecodeTo(input, out); });
  return true;
}

void UriQueryFormEncode(const Properties& properties, std::string& result, char separator) {
  const unsigned int count = properties.GetCount();
  std::size_t size = 0;
  for (unsigned int i = 0; i < count; ++i)
    size += (i != 0) + detail::EncodedSize(properties.GetKey(i), detail::kFormSet) + 1 +
            detail::EncodedSize(properties.GetValue(i), detail::kFormSet);
  std::string local;
  local.resize(size);
  char* out = &local[0];
  for (unsigned int i = 0; i < count; ++i) {
    if (i != 0) *out++ = separator;
    out = detail::EncodeTo(properties.GetKey(i), detail::kFormSet, out);
    *out++ = '=';
    out = detail::EncodeTo(properties.GetValue(i), detail::kFormSet, out);
  }
  result.swap(local);
}

}  // namespace Tessera
