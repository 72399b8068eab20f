#include <tessera/time/TimeSpan.h>

namespace Tessera {

namespace {
// The fields were 32-bit `long` where the library was born.
std::int32_t Low32(std::int64_t value) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::uint64_t>(value)));
}
}  // namespace

void TimeSpan::Render(::timeval& out) const {
  const std::int64_t perSecond = second.GetTicks();
  out.tv_sec = Low32(ticks_ / perSecond);
  out.tv_usec = Low32((ticks_ % perSecond) / 10);
}

}  // namespace Tessera
