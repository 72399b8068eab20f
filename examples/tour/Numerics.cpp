#include <tessera/tessera.h>

#include <cmath>
#include <cstdio>
#include <string>

#include "Tour.h"

namespace Tour {

void ShowNumerics() {
  Heading("numerics and platform: fixed point, random numbers, modules, the system");
  using Tessera::fixed;
  const fixed two(2);
  std::printf("sqrt(2)  fixed %.6f  double %.6f\n", double(two.sqrt()), std::sqrt(2.0));
  // Fixed-point digits differ from the C library's on purpose.
  std::printf("exp(1)   fixed %.6f  double %.6f  (kept for compatibility)\n", double(fixed(1).exp()),
              std::exp(1.0));
  std::printf("log(10)  fixed %.6f  double %.6f\n", double(fixed(10).log()), std::log(10.0));
  std::printf("sin(1)   fixed %.6f  double %.6f  (kept for compatibility)\n", double(fixed(1.0).sin()),
              std::sin(1.0));
  std::printf("2^10     fixed %.6f  (kept for compatibility)\n", double(two.pow(fixed(10))));

  Tessera::Mt19937 generator(5489);
  const std::uint32_t a = generator(), b = generator(), c = generator();
  std::printf("mt19937(5489): %u %u %u\n", a, b, c);
  Tessera::Int16WhiteNoise noise;
  std::printf("noise, not clipped to 16 bits (kept for compatibility):");
  for (int i = 0; i < 4; ++i) std::printf(" %d", noise());
  std::printf("\n");

  Tessera::Module libm("libm.so.6", Tessera::Module::AccessLoad, 0);
  auto cbrt = reinterpret_cast<double (*)(double)>(libm.BindSymbol("cbrt"));
  if (cbrt != nullptr) std::printf("libm loaded, cbrt(27) = %g\n", cbrt(27.0));

  std::string type, version;
  if (!Tessera::GetSystemType(type)) type = "(unknown)";
  if (!Tessera::GetSystemVersion(version)) version = "(unknown)";
  const char* edition = Tessera::GetWindowsEdition();
  std::printf("Windows edition: %s\nsystem: %s, version %s\n", edition != nullptr ? edition : "(none)",
              type.c_str(), version.c_str());
  Tessera::OsVersionInfo r2;
  r2.platformId = 2;
  r2.majorVersion = 5;
  r2.minorVersion = 2;
  r2.serverR2 = true;
  std::printf("5.2 R2 edition: %s (kept for compatibility)\n", Tessera::GetWindowsEdition(r2));
  std::fflush(stdout);
}

}  // namespace Tour
