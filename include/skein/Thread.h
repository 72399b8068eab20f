// Thread identity.
#ifndef SKEIN_THREAD_H
#define SKEIN_THREAD_H

#include <cstdint>

#include <tessera_export.h>

namespace Skein {

class TESSERA_API Thread {
 public:
  // The calling thread's identifier (its kernel thread id), never 0.
  static std::uint32_t GetSelfId();
};

}  // namespace Skein

#endif  // SKEIN_THREAD_H
