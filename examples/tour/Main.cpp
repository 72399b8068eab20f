#include "Tour.h"

#include <cstdio>

#include <tessera/tessera.h>

int main() {
  std::cout << "Tessera tour\n";
  Tour::ShowFrame();
  Tour::ShowMemory();
  Tour::ShowEvents();
  Tour::ShowText();
  Tour::ShowCharsets();
  Tour::ShowTime();
  Tour::ShowTimers();
  Tour::ShowNumerics();
  Tour::ShowInternet();
  Tessera::Shutdown();
  return 0;
}
