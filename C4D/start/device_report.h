// Logs the CUDA devices.
#pragma once

namespace nbx {

/// Logs a line for each CUDA device and the memory of the current one, or that there is none. A
/// device that doesn't answer is logged as a failed call. Doesn't throw.
void report_devices();

}  // namespace nbx
