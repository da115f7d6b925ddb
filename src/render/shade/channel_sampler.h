// Look-up of one channel of a frame: a grid with its interpolation.
#pragma once

#include <cstdint>

#include "cache/sim_frame.h"
#include "render/march/sample_block.h"

namespace nbx {

enum class Filter : std::uint32_t { kLinear = 0, kCatmullRom = 1, kBSpline = 2 };

/// Inputs of a shader other than the grid types of frames (cache/grid_type.h).
enum Channel : int {
  kNoGrid = 0,
  kRampX = -1,  // k / (n - 2) in interior layer k of the axis, from 0 on
  kRampY = -2,
  kRampZ = -3,
};

/// Keeps its grid alive. Any number of threads may look up values.
///
///     filter        inside                          beyond or at the rim
///     kLinear       trilinear                       0 outside of [0, n-1], NaN included
///     kCatmullRom   4 x 4 x 4 points, at least 0    trilinear at the nearest point, at least 0
///     kBSpline      4 x 4 x 4 points (smooths)      trilinear at the nearest point
struct ChannelSampler {
  FieldHandle field;
  Filter filter = Filter::kLinear;

  /// Takes a grid of the frame, or makes a ramp of the frame's dimensions. False if there is no
  /// grid; one with less than 2 cells on an axis counts as missing. Throws what SimFrame::grid
  /// throws.
  bool bind(SimFrame& frame, int channel, Filter filter);

  /// Replaces the grid by a copy that is blurred with a box of this radius in voxels. Does nothing
  /// without a grid or if the radius isn't above 0.
  void blur(double radius);

  explicit operator bool() const { return field != nullptr; }

  /// out[i] = the channel at points i; 0 without a grid.
  void sample(float* out, const Points& points) const;
  /// The same with kLinear, whatever the filter.
  void sample_linear(float* out, const Points& points) const;
};

}  // namespace nbx
