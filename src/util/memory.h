// Memory of the machine and of this process.
#pragma once

#include <cstdint>

namespace nbx {

/// Physical memory in bytes; 0 if unknown.
std::uint64_t physical_memory();

/// Memory that the system can give to programs without swapping, in bytes; 0 if unknown.
std::uint64_t available_memory();

/// Resident memory of this process in bytes; 0 if unknown.
std::uint64_t resident_memory();

}  // namespace nbx
