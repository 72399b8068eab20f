#include <tessera/tessera.h>

#include <cstring>
#include <mutex>
#include <thread>
#include <vector>

#include "Tour.h"

namespace Tour {

void ShowMemory() {
  Heading("memory: buffers and pools shared between threads");
  Tessera::Buffer note(16);
  std::strcpy(static_cast<char*>(note.Memory()), "shared block");
  Tessera::Buffer alias = note;
  std::cout << "\"" << static_cast<const char*>(alias.Memory()) << "\" shared: " << std::boolalpha
            << note.IsShared() << ", deep copy shared: " << Tessera::Buffer(note, Tessera::Buffer::unpooled).IsShared()
            << '\n';

  // Two producers fill pooled blocks; the main thread collects and releases them.
  Tessera::BufferPool pool(48, Tessera::BufferPool::bufferCountDefault);
  std::mutex lock;
  std::vector<Tessera::Buffer> collected;
  auto produce = [&](char tag) {
    for (int i = 0; i < 20; ++i) {
      Tessera::Buffer block = pool.Allocate();
      static_cast<char*>(block.Memory())[0] = tag;
      std::lock_guard<std::mutex> guard(lock);
      collected.emplace_back();
      collected.back().Swap(block);  // hand the only reference over, count untouched
    }
  };
  std::thread first(produce, 'a');
  std::thread second(produce, 'b');
  first.join();
  second.join();
  int fromA = 0;
  for (const auto& block : collected) fromA += static_cast<const char*>(block.Memory())[0] == 'a';
  std::cout << collected.size() << " pooled blocks of " << pool.GetBufferSize() << " bytes from two threads ("
            << fromA << " from the first), pool in use: " << pool.IsUsed() << '\n';
  collected.clear();
  std::cout << "all released, pool in use: " << pool.IsUsed() << '\n';

  Tessera::Buffer survivor;
  {
    Tessera::BufferPool shortLived(32, 1);
    survivor = shortLived.Allocate();
  }
  std::cout << "a block that outlived its pool is pooled: " << survivor.IsPooled() << ", still "
            << survivor.GetSize() << " bytes\n";
}

}  // namespace Tour
