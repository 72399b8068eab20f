// Plaint: the error hierarchy every part of the library throws.
//
// Each error carries a message, the Context of its throw site and a list of attached
// details (ErrorInfoWrapper<Tag>). Details are shared between copies, so they survive the
// copy a throw makes. `what()` gives the message exactly as thrown; operator<< writes the
// message, the context and every detail.
#ifndef PLAINT_ERROR_H
#define PLAINT_ERROR_H

#include <cstdint>
#include <ostream>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

#include <tessera_export.h>

namespace Plaint {

// Where an error was thrown: source file, qualified function name, line.
struct Context {
  const char* file;
  const char* function;
  std::int32_t line;
};

// Context of the current source position with the given qualified function name.
#define PLAINT_CONTEXT(function) (::Plaint::Context{__FILE__, (function), __LINE__})

// One attached detail. Render writes its value as text; GetType names the tag.
class TESSERA_API ErrorInfoBase {
 public:
  ErrorInfoBase() = default;
  virtual ~ErrorInfoBase();
  virtual void Render(std::ostream& stream) const = 0;
  virtual const std::type_info& GetType() const = 0;

  ErrorInfoBase(const ErrorInfoBase&) = delete;
  ErrorInfoBase& operator=(const ErrorInfoBase&) = delete;
};

// Owns one detail; copies share it. Accepts null.
class TESSERA_API ErrorInfoPtr {
 public:
  explicit ErrorInfoPtr(ErrorInfoBase* info);
  ~ErrorInfoPtr();
  ErrorInfoPtr(const ErrorInfoPtr&) = default;
  ErrorInfoPtr& operator=(const ErrorInfoPtr&) = default;

  const ErrorInfoBase* Get() const { return info_.get(); }

 private:
  std::shared_ptr<const ErrorInfoBase> info_;
};

// Writes a detail's value; specialised per tag where plain streaming is not the form.
template <class Tag>
void RenderValue(std::ostream& stream, const typename Tag::ValueType& value);

// A detail of tag `Tag`, holding a Tag::ValueType.
template <class Tag>
class ErrorInfoWrapper : public ErrorInfoBase {
 public:
  using ValueType = typename Tag::ValueType;
  explicit ErrorInfoWrapper(const ValueType& value) : value_(value) {}
  ~ErrorInfoWrapper() override = default;
  void Render(std::ostream& stream) const override { RenderValue<Tag>(stream, value_); }
  const std::type_info& GetType() const override { return typeid(Tag); }
  const ValueType& GetValue() const { return value_; }

 private:
  ValueType value_;
};

template <class Tag>
void RenderValue(std::ostream& stream, const typename Tag::ValueType& value) {
  stream << value;
}

// The name of an argument that broke a precondition (a string literal).
struct ErrorInfo_invalidArgumentName {
  using ValueType = const char*;
};

// A Win32 error code, read from GetLastError straight after the failed call.
struct ErrorInfo_Win32Error {
  using ValueType = std::uint32_t;
};

class Error;
template <class Tag>
void AddInfo(Error& error, const typename Tag::ValueType& value);

// Root of the hierarchy. Not itself a std::exception: every concrete class also derives
// from the matching standard exception, reached through AsException.
class TESSERA_API Error {
 public:
  virtual ~Error();
  virtual const std::exception& AsException() const = 0;
  virtual std::exception& AsException() = 0;
  // A heap copy of the same class; the caller owns it.
  virtual std::exception* Clone() const = 0;
  // Throws a copy of this error as its own class.
  [[noreturn]] virtual void Rethrow() const = 0;

  const Context& GetContext() const { return context_; }

  // The value of the first detail of tag `Tag`, or null.
  template <class Tag>
  const typename Tag::ValueType* GetInfo() const {
    for (const ErrorInfoPtr& info : infos_) {
      if (info.Get() != nullptr && info.Get()->GetType() == typeid(Tag))
        return &static_cast<const ErrorInfoWrapper<Tag>*>(info.Get())->GetValue();
    }
    return nullptr;
  }

  // Every detail, in the order added.
  const std::vector<ErrorInfoPtr>& GetInfos() const { return infos_; }

 protected:
  explicit Error(const Context& context) : context_(context) {}
  Error(const Error&) = default;
  Error& operator=(const Error&) = default;

 private:
  template <class Tag>
  friend void AddInfo(Error& error, const typename Tag::ValueType& value);
  void AddInfo(const ErrorInfoPtr& info);

  Context context_;
  std::vector<ErrorInfoPtr> infos_;
};

// Appends a detail of tag `Tag` to `error`.
template <class Tag>
void AddInfo(Error& error, const typename Tag::ValueType& value) {
  error.AddInfo(ErrorInfoPtr(new ErrorInfoWrapper<Tag>(value)));
}

// Writes the message, the context and every detail.
TESSERA_API std::ostream& operator<<(std::ostream& stream, const Error& error);

class TESSERA_API RuntimeError : public Error, public std::runtime_error {
 public:
  RuntimeError(const std::string& message, const Context& context);
  RuntimeError(const RuntimeError& other);
  RuntimeError& operator=(const RuntimeError& other);
  ~RuntimeError() override;

  const std::runtime_error& AsException() const override { return *this; }
  std::runtime_error& AsException() override { return *this; }
  RuntimeError* Clone() const override { return new RuntimeError(*this); }
  [[noreturn]] void Rethrow() const override { throw RuntimeError(*this); }
  const char* what() const noexcept override;
};

// The standard classes other than runtime_error, each paired with Error. Like their
// standard counterparts, InvalidArgument, LengthError and OutOfRange are logic errors of
// the standard library but do not derive from Plaint::LogicError.
#define PLAINT_DECLARE_ERROR(Name, StdBase)                                           \
  class TESSERA_API Name : public Error, public StdBase {                             \
   public:                                                                            \
    Name(const std::string& message, const Context& context);                         \
    Name(const Name& other);                                                          \
    Name& operator=(const Name& other);                                               \
    ~Name() override;                                                                 \
    const StdBase& AsException() const override { return *this; }                    \
    StdBase& AsException() override { return *this; }                                \
    Name* Clone() const override { return new Name(*this); }                          \
    [[noreturn]] void Rethrow() const override { throw Name(*this); }                 \
  }

PLAINT_DECLARE_ERROR(LogicError, std::logic_error);
PLAINT_DECLARE_ERROR(InvalidArgument, std::invalid_argument);
PLAINT_DECLARE_ERROR(LengthError, std::length_error);
PLAINT_DECLARE_ERROR(OutOfRange, std::out_of_range);

#undef PLAINT_DECLARE_ERROR

// Lack of memory. A std::bad_alloc, so `catch (std::bad_alloc&)` takes it; it has no
// message of its own.
class TESSERA_API BadAlloc : public Error, public std::bad_alloc {
 public:
  explicit BadAlloc(const Context& context);
  BadAlloc(const BadAlloc& other);
  BadAlloc& operator=(const BadAlloc& other);
  ~BadAlloc() override;

  const std::bad_alloc& AsException() const override { return *this; }
  std::bad_alloc& AsException() override { return *this; }
  BadAlloc* Clone() const override { return new BadAlloc(*this); }
  [[noreturn]] void Rethrow() const override { throw BadAlloc(*this); }
};

}  // namespace Plaint

#endif  // PLAINT_ERROR_H
