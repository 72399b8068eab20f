// IConv: the interface to an iconv-style conversion library, with the support switched off.
// It can't be made: the constructor throws, and Create gives an empty pointer.
#ifndef TESSERA_TEXT_ICONV_H
#define TESSERA_TEXT_ICONV_H

#include <memory>
#include <string>

#include <tessera_export.h>

namespace Tessera {

class TESSERA_API IConv {
 public:
  // Always an empty pointer; never throws. The names are not looked at.
  static std::unique_ptr<IConv> Create(const char* charset1, const char* charset2);

  // Throws Plaint::LogicError ("iconv support disabled").
  IConv(const char* charset1, const char* charset2);
  ~IConv();
  IConv(const IConv&) = delete;
  IConv& operator=(const IConv&) = delete;

  // Touches none of its arguments and gives 0.
  unsigned int Convert(const char** source, unsigned int* sourceLeft, char** target,
                       unsigned int* targetLeft);

  // Throws Plaint::LogicError ("iconv support disabled"); `charset` stays untouched.
  static void GetSystemCharset(std::string& charset);

 private:
  void* handle_;
};

}  // namespace Tessera

#endif  // TESSERA_TEXT_ICONV_H
