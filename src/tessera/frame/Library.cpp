#include <tessera/frame/Library.h>

namespace Tessera {

void Shutdown() {}

}  // namespace Tessera
