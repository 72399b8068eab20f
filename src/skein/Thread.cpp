#include <skein/Thread.h>

#include <sys/syscall.h>
#include <unistd.h>

namespace Skein {

std::uint32_t Thread::GetSelfId() {
  thread_local const std::uint32_t id = static_cast<std::uint32_t>(syscall(SYS_gettid));
  return id;
}

}  // namespace Skein
