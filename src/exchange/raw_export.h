// Exports frames as plain arrays.
#pragma once

#include <string>

#include "cache/sim_frame.h"

namespace nbx {

/// Writes each grid, ghost layer included, as 32-bit floats, little-endian, x fastest, to
/// STEM.CHANNEL.raw, and a description to STEM.json: "frame", "frames_per_second", and "grids" with
/// "channel", "file", "dims", "offset", "staggered_axis" (-1 for none), "unit" (of the values,
/// empty for none) and "matrix". The matrix, 16 numbers row by row, maps row vectors from
/// right-handed host units to domain cells. Values of the channel solid are at most kSolidBand
/// (channel_values.h). Throws Exception for a damaged grid and for a file that can't be written.
void write_raw(const std::string& stem, SimFrame& frame);

}  // namespace nbx
