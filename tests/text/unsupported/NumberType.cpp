// Must not compile: a type outside the closed list is refused with a message naming the list.
#include <tessera/text/TextFormatNumber.h>
#include <tessera/text/TextNumeric.h>

#include <string>

void Use() {
#ifdef FORMAT
  std::string out;
  Tessera::TextFormatNumber(true, out);
#else
  bool value = false;
  (void)Tessera::TextNumeric("1", 1, value, 10);
#endif
}
