#include <tessera/tessera.h>

#include <cstdio>

int main() {
  Tessera::BufferPool pool(64, 4);
  Tessera::Buffer buffer = pool.Allocate();
  try {
    Tessera::Buffer(65).Clone(pool);
  } catch (const Plaint::LengthError& error) {
    std::printf("client: %u-byte pooled block, clone refused: %s\n", buffer.GetSize(), error.what());
    return buffer.IsPooled() ? 0 : 1;
  }
  return 1;
}
