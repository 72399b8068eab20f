#include <tessera/text/TextViews.h>

#include <plaint/Error.h>
#include <tessera/frame/Errors.h>
#include <tessera/win32/LastError.h>

namespace Tessera {
namespace detail {

void ThrowTextTooLong(const char* function) {
  throw Plaint::LengthError("text too long", PLAINT_CONTEXT(function));
}

void ThrowConversionTooLong(const char* message, const char* function, bool win32) {
  TextConversionError error(message, PLAINT_CONTEXT(function));
  if (win32) Plaint::AddInfo<Plaint::ErrorInfo_Win32Error>(error, Win32::ERROR_INVALID_PARAMETER);
  throw error;
}

}  // namespace detail
}  // namespace Tessera
