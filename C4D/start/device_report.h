// What the log tells of the devices that can compute.
#pragma once

namespace nbx {

/// Logs a line for each CUDA device, and the memory of the current one. Without a device one line
/// says so; a device that doesn't answer is logged as a failed call. Never throws.
void report_devices();

}  // namespace nbx
