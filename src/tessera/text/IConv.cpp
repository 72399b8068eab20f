#include <tessera/text/IConv.h>

#include <exception>

#include <plaint/Error.h>

namespace Tessera {

std::unique_ptr<IConv> IConv::Create(const char* charset1, const char* charset2) {
  try {
    return std::unique_ptr<IConv>(new IConv(charset1, charset2));
  } catch (const std::exception&) {
    return nullptr;
  }
}

IConv::IConv(const char*, const char*) : handle_(nullptr) {
  throw Plaint::LogicError("iconv support disabled", PLAINT_CONTEXT("Tessera::IConv::IConv"));
}

IConv::~IConv() = default;

unsigned int IConv::Convert(const char**, unsigned int*, char**, unsigned int*) {
  (void)handle_;
  return 0;
}

void IConv::GetSystemCharset(std::string&) {
  throw Plaint::LogicError("iconv support disabled",
                           PLAINT_CONTEXT("Tessera::IConv::GetSystemCharset"));
}

}  // namespace Tessera
