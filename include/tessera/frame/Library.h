// Library start and stop. Nothing runs when the library is loaded, and nothing needs
// stopping: every resource belongs to an object that the client owns.
#ifndef TESSERA_FRAME_LIBRARY_H
#define TESSERA_FRAME_LIBRARY_H

#include <cstdint>

#include <tessera_export.h>

namespace Tessera {

// The length argument meaning "measure up to the NUL", and the result meaning "not found".
constexpr std::uint32_t npos = 0xFFFFFFFFu;

// Does nothing; may be called any number of times, from any thread.
TESSERA_API void Shutdown();

}  // namespace Tessera

#endif  // TESSERA_FRAME_LIBRARY_H
