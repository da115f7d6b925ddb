// The unit of length of scenes.
#pragma once

namespace nbx {

/// Meters in one unit of the host's scenes.
inline constexpr double kMetersPerUnit = 0.01;

}  // namespace nbx
