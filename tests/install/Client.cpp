#include <tessera/tessera.h>

#include <cstdio>
#include <string>

// A client of several subsystems: memory, errors, time, text and numerics.
int main() {
  Tessera::BufferPool pool(64, 4);
  Tessera::Buffer buffer = pool.Allocate();
  bool refused = false;
  try {
    static_cast<void>(Tessera::Buffer(65).Clone(pool));
  } catch (const Plaint::LengthError& error) {
    refused = std::string(error.what()) == "buffer size mismatch";
  }
  std::string date;
  Tessera::Time(2008, 11, 12, 12, 34, 56, 0, Tessera::TimeKind::Utc).FormatHttp(date);
  int number = 0;
  const bool read = Tessera::TextNumeric("8080", Tessera::npos, number, 10);
  const double root = static_cast<double>(Tessera::fixed(4).sqrt());
  std::printf("client: %u-byte pooled block, %s, %d, %.6f\n", buffer.GetSize(), date.c_str(), number, root);
  const bool ok = refused && buffer.IsPooled() && date == "Wed, 12 Nov 2008 12:34:56 GMT" && read && number == 8080 &&
                  root == 2.0;
  return ok ? 0 : 1;
}
