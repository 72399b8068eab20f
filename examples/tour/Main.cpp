#include "Tour.h"

#include <tessera/tessera.h>

int main() {
  std::cout << "Tessera tour\n";
  Tour::ShowFrame();
  Tour::ShowMemory();
  Tessera::Shutdown();
  return 0;
}
