// A CUDA device in software, for machines and tests without a GPU. It is off at first: the device
// count is then the toolkit's, or 0. While it is on, it is the only device, number 0, and receives
// every call of cuda_runtime.h. Its memory lies on the heap; new memory is filled with bytes that
// read as NaN, and copies and fills outside of an allocation fail.
#pragma once

#include <cstddef>
#include <cstdint>

#include "util/cuda_runtime.h"

namespace nbx::software_device {

/// Turns the device on or off for all threads. Call it only while no field lies on a device.
void enable(bool on);
bool enabled();

/// The device's memory in bytes, 1 GiB at first: allocations beyond it fail as on a real device.
void set_memory(std::size_t bytes);

/// Makes the `n`th memory call from now on (1 is the next) fail once, with `error`. For tests of
/// the fallback to the CPU.
void fail_call(int n, cuda::Error error);

/// Device resets since `enable`. A reset frees all memory of the device.
std::uint64_t resets();

/// Bytes allocated and not freed.
std::size_t bytes_in_use();

}  // namespace nbx::software_device
