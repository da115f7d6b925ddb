// The sRGB transfer curve of IEC 61966-2-1.
#pragma once

#include <cmath>

namespace host {

/// From linear light to a display signal.
inline double ToSrgb(double x) {
  return x <= 0.0031308 ? 12.92 * x : 1.055 * std::pow(x, 1 / 2.4) - 0.055;
}

/// From a display signal to linear light.
inline double FromSrgb(double x) {
  return x <= 0.04045 ? x / 12.92 : std::pow((x + 0.055) / 1.055, 2.4);
}

}  // namespace host
