#include "util/format_size.h"

#include <charconv>

namespace nbx {

std::string format_size(std::uint64_t bytes, int decimals) {
  int shift = 10;
  const char* unit = "KB";
  if (bytes >> 10 >= 1025) {
    shift = 20;
    unit = "MB";
  }
  if (bytes >> 20 >= 1025) {
    shift = 30;
    unit = "GB";
  }
  // Whole and fractional part are converted separately, so that no size exceeds a double's
  // mantissa.
  const std::uint64_t one = std::uint64_t{1} << shift;
  const double value = (bytes >> shift) + (bytes & (one - 1)) / static_cast<double>(one);
  // Unlike printf, to_chars writes a point in every locale.
  char text[64];
  const auto end =
      std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals).ptr;
  return std::string(text, end) + unit;
}

}  // namespace nbx
