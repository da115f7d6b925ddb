// Formats byte counts for memory reports and the frame writer.
#pragma once

#include <cstdint>
#include <string>

namespace nbx {

/// `bytes` in KB (below 1025 KiB), MB (below 1025 MiB) or GB, units of 1024, in fixed notation with
/// `decimals` digits behind the point, the unit without a blank: 1536 gives "1.50KB".
std::string format_size(std::uint64_t bytes, int decimals);

}  // namespace nbx
