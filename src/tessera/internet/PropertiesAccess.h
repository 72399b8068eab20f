// Library-internal access to Properties: setting from views, so that readers store what they
// scanned without an intermediate string.
#ifndef TESSERA_INTERNET_PROPERTIESACCESS_H
#define TESSERA_INTERNET_PROPERTIESACCESS_H

#include <string_view>

#include <tessera/internet/Properties.h>

namespace Tessera {
namespace detail {

struct PropertiesAccess {
  // As Properties::Set.
  static unsigned int Set(Properties& properties, std::string_view key, std::string_view value);
};

}  // namespace detail
}  // namespace Tessera

#endif  // TESSERA_INTERNET_PROPERTIESACCESS_H
