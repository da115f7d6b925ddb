// How much memory the machine has, and how much of it this process holds.
#pragma once

#include <cstdint>

namespace nbx {

/// Bytes of memory that the machine has; 0 if unknown.
std::uint64_t physical_memory();

/// Bytes of memory that this process holds now; 0 if unknown.
std::uint64_t resident_memory();

}  // namespace nbx
