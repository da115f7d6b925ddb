// The memory of large arrays.
#pragma once

#include <cstddef>

namespace nbx {

/// A block of `bytes` bytes, aligned to 64, with undefined contents; null if there is no memory.
///
/// A large block has pages of its own. They go back to the system with the block, and pages that
/// were never touched take no memory. From the heap, arrays that grow step by step would leave gaps
/// too small for the next step, which stay with the process.
void* allocate_block(std::size_t bytes);

/// Releases a block of `bytes` bytes; null is ignored.
void release_block(void* block, std::size_t bytes);

}  // namespace nbx
