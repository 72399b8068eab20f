// BufferPoolHelper: the current pool of a producer whose buffer size changes now and then.
//
// The current pool can be replaced at any moment, even while buffers of it are out. A
// replaced pool that still has buffers out is retained, so that they go back to a living
// pool, and it becomes current again when its size comes back. Retained pools go away only
// in Flush, once nothing of them is out, and with the helper. Pools are shared through
// boost::shared_ptr, whose counts are atomic; the helper itself has no lock and belongs to
// one thread at a time. The move constructor and move assignment, and [[nodiscard]] on
// SharePool, are conveniences beside the ported API.
#ifndef TESSERA_MEMORY_BUFFERPOOLHELPER_H
#define TESSERA_MEMORY_BUFFERPOOLHELPER_H

#include <cstdint>
#include <vector>

#include <boost/shared_ptr.hpp>

#include <tessera_export.h>
#include <tessera/memory/Buffer.h>

namespace Tessera {

class TESSERA_API BufferPoolHelper {
 public:
  // No current pool, nothing retained.
  BufferPoolHelper();
  // As AllocatePool(bufferSize, bufferCount); passes on its Plaint::BadAlloc.
  BufferPoolHelper(std::uint32_t bufferSize, std::uint32_t bufferCount);
  // Flushes, then drops the retained pools, first to last, and the current one. A pool
  // that still has buffers out and that nobody else shares dies here, and its buffers
  // become unpooled.
  ~BufferPoolHelper();

  BufferPoolHelper(const BufferPoolHelper&) = delete;
  BufferPoolHelper& operator=(const BufferPoolHelper&) = delete;
  // Takes over `other`'s current and retained pools; `other` is left with none.
  BufferPoolHelper(BufferPoolHelper&& other) noexcept;
  // Gives up this helper's pools as its destructor would, then takes over `other`'s.
  BufferPoolHelper& operator=(BufferPoolHelper&& other) noexcept;

  // The current pool after making it one of `bufferSize`-byte blocks: the current pool if
  // its size matches, else (after FreePool) the most recently retained pool of that size,
  // else a new BufferPool(bufferSize, bufferCount). `bufferCount` counts only for a new
  // pool. Throws the Plaint::BadAlloc of a new pool, and then there is no current pool.
  BufferPool& AllocatePool(std::uint32_t bufferSize, std::uint32_t bufferCount);

  // The current pool; there must be one.
  BufferPool& GetPool() { return *current_; }

  // The current pool's shared pointer, empty when there is none.
  [[nodiscard]] const boost::shared_ptr<BufferPool>& SharePool() const { return current_; }

  // Makes `pool` current: nothing changes if it already is (two empty pointers count as
  // the same); otherwise the current pool is given up as by FreePool, every retained entry
  // of `pool` is taken off the list, and `pool` becomes current. An empty `pool` works as
  // FreePool.
  void SetPool(const boost::shared_ptr<BufferPool>& pool);

  // Gives up the current pool: retained if any of its buffers is out, and otherwise
  // destroyed unless someone else shares it. Does nothing without a current pool.
  void FreePool();

  // Drops every retained pool with no buffer out, destroying it unless someone else shares
  // it; the others keep their order. The current pool is not touched.
  void Flush();

 private:
  boost::shared_ptr<BufferPool> current_;
  std::vector<boost::shared_ptr<BufferPool>> retained_;
};

}  // namespace Tessera

#endif  // TESSERA_MEMORY_BUFFERPOOLHELPER_H
