#include <tessera/time/TimeSpan.h>

#include "tessera/detail/Calendar.h"

namespace Tessera {

using Win32::detail::Low32;

void TimeSpan::Render(::timeval& out) const {
  const std::int64_t perSecond = second.GetTicks();
  out.tv_sec = Low32(ticks_ / perSecond);
  out.tv_usec = Low32((ticks_ % perSecond) / 10);
}

}  // namespace Tessera
