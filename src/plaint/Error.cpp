#include <plaint/Error.h>

#include <cxxabi.h>

#include <cstdlib>
#include <ostream>

namespace Plaint {

ErrorInfoBase::~ErrorInfoBase() = default;

ErrorInfoPtr::ErrorInfoPtr(ErrorInfoBase* info) : info_(info) {}
ErrorInfoPtr::~ErrorInfoPtr() = default;

Error::~Error() = default;

void Error::AddInfo(const ErrorInfoPtr& info) { infos_.push_back(info); }

namespace {

// The tag's readable name: "Plaint::ErrorInfo_Win32Error" rather than its mangled form.
std::string TagName(const std::type_info& type) {
  int status = 0;
  char* demangled = abi::__cxa_demangle(type.name(), nullptr, nullptr, &status);
  std::string name = status == 0 && demangled != nullptr ? demangled : type.name();
  std::free(demangled);
  return name;
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const Error& error) {
  stream << error.AsException().what();
  const Context& context = error.GetContext();
  stream << " [" << (context.function ? context.function : "?") << " at "
         << (context.file ? context.file : "?") << ':' << context.line << ']';
  for (const ErrorInfoPtr& info : error.GetInfos()) {
    if (info.Get() == nullptr) continue;
    stream << "; " << TagName(info.Get()->GetType()) << ": ";
    info.Get()->Render(stream);
  }
  return stream;
}

RuntimeError::RuntimeError(const std::string& message, const Context& context)
    : Error(context), std::runtime_error(message) {}
RuntimeError::RuntimeError(const RuntimeError& other) = default;
RuntimeError& RuntimeError::operator=(const RuntimeError& other) = default;
RuntimeError::~RuntimeError() = default;
const char* RuntimeError::what() const noexcept { return std::runtime_error::what(); }

#define PLAINT_DEFINE_ERROR(Name, StdBase)                                    \
  Name::Name(const std::string& message, const Context& context)              \
      : Error(context), StdBase(message) {}                                   \
  Name::Name(const Name& other) = default;                                    \
  Name& Name::operator=(const Name& other) = default;                         \
  Name::~Name() = default;

PLAINT_DEFINE_ERROR(LogicError, std::logic_error)
PLAINT_DEFINE_ERROR(InvalidArgument, std::invalid_argument)
PLAINT_DEFINE_ERROR(LengthError, std::length_error)
PLAINT_DEFINE_ERROR(OutOfRange, std::out_of_range)

#undef PLAINT_DEFINE_ERROR

BadAlloc::BadAlloc(const Context& context) : Error(context) {}
BadAlloc::BadAlloc(const BadAlloc& other) = default;
BadAlloc& BadAlloc::operator=(const BadAlloc& other) = default;
BadAlloc::~BadAlloc() = default;

}  // namespace Plaint
