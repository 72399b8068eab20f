#include <tessera/memory/BufferPoolHelper.h>

#include <utility>

namespace Tessera {

BufferPoolHelper::BufferPoolHelper() = default;

BufferPoolHelper::BufferPoolHelper(std::uint32_t bufferSize, std::uint32_t bufferCount) {
  AllocatePool(bufferSize, bufferCount);
}

BufferPoolHelper::~BufferPoolHelper() {
  Flush();
  // First entry to last, then the current pool.
  for (boost::shared_ptr<BufferPool>& pool : retained_) pool.reset();
  retained_.clear();
  current_.reset();
}

BufferPoolHelper::BufferPoolHelper(BufferPoolHelper&& other) noexcept
    : current_(std::move(other.current_)), retained_(std::move(other.retained_)) {
  other.retained_.clear();
}

BufferPoolHelper& BufferPoolHelper::operator=(BufferPoolHelper&& other) noexcept {
  if (this == &other) return *this;
  BufferPoolHelper given(std::move(other));
  std::swap(current_, given.current_);
  retained_.swap(given.retained_);
  return *this;  // `given` goes with this helper's old pools
}

BufferPool& BufferPoolHelper::AllocatePool(std::uint32_t bufferSize, std::uint32_t bufferCount) {
  if (current_ && current_->GetBufferSize() == bufferSize) return *current_;
  FreePool();
  for (auto entry = retained_.end(); entry != retained_.begin();) {
    --entry;
    if ((*entry)->GetBufferSize() == bufferSize) {
      current_.swap(*entry);
      retained_.erase(entry);
      return *current_;
    }
  }
  current_.reset(new BufferPool(bufferSize, bufferCount));
  return *current_;
}

void BufferPoolHelper::SetPool(const boost::shared_ptr<BufferPool>& pool) {
  if (pool == current_) return;
  // `pool` may refer to an entry of the list, which the removal below overwrites.
  const boost::shared_ptr<BufferPool> given = pool;
  FreePool();
  for (auto entry = retained_.end(); entry != retained_.begin();) {
    --entry;
    if (*entry == given) entry = retained_.erase(entry);
  }
  current_ = given;
}

void BufferPoolHelper::FreePool() {
  if (!current_) return;
  if (current_->IsUsed()) retained_.push_back(current_);
  current_.reset();
}

void BufferPoolHelper::Flush() {
  for (auto entry = retained_.end(); entry != retained_.begin();) {
    --entry;
    if (!(*entry)->IsUsed()) entry = retained_.erase(entry);
  }
}

}  // namespace Tessera
