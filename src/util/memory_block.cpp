#include "util/memory_block.h"

#include <new>

#include <sys/mman.h>

namespace nbx {

namespace {

constexpr std::align_val_t kAlignment{64};
constexpr std::size_t kLarge = std::size_t{1} << 17;

}  // namespace

void* allocate_block(std::size_t bytes) {
  if (bytes < kLarge) return ::operator new(bytes, kAlignment, std::nothrow);
  void* block = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return block == MAP_FAILED ? nullptr : block;
}

void release_block(void* block, std::size_t bytes) {
  if (!block) return;
  if (bytes < kLarge)
    ::operator delete(block, kAlignment);
  else
    munmap(block, bytes);
}

}  // namespace nbx
