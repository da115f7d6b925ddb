// Which parts of a field hold anything but 0. An operator that leaves zeros as they are skips the
// rest, so a channel costs what its gas costs, not what the box costs.
#pragma once

#include <cstdint>
#include <vector>

#include "math/field.h"

namespace nbx {

/// A flag for each part of the field as a flat array. A flagged part may hold zeros, any other part
/// holds nothing but +0. Until it is measured, all parts count as flagged.
class Occupancy {
 public:
  static constexpr std::ptrdiff_t kPart = 64;  // elements

  /// Flags the parts that hold anything now.
  void measure(const Field<float>& f);
  /// max(f, 0) inside and 0 in the six outer planes, then the same; in one walk, which writes only
  /// where a value changes.
  void measure_positive(Field<float>& f);

  bool operator==(const Occupancy&) const = default;

  /// The field is 0.
  bool none() const { return !any_; }
  bool known() const { return !any_ || !parts_.empty(); }
  void forget() {
    any_ = true;
    parts_.clear();
  }

  /// Calls held(begin, end) and rest(begin, end) for the stretches of begin .. end - 1 that are
  /// flagged and those that aren't. `begin` must be a multiple of kPart.
  template <class Held, class Rest>
  void for_each(std::ptrdiff_t begin, std::ptrdiff_t end, Held held, Rest rest) const {
    if (!any_) return rest(begin, end);
    if (parts_.empty()) return held(begin, end);
    while (begin < end) {
      const std::uint8_t flag = parts_[begin / kPart];
      std::ptrdiff_t stop = begin + kPart;
      while (stop < end && parts_[stop / kPart] == flag) stop += kPart;
      stop = stop < end ? stop : end;
      flag ? held(begin, stop) : rest(begin, stop);
      begin = stop;
    }
  }

  /// Calls held(begin, end) for the stretches of any begin .. end - 1 that are flagged.
  template <class Held>
  void for_held(std::ptrdiff_t begin, std::ptrdiff_t end, Held held) const {
    const std::ptrdiff_t part = begin / kPart * kPart;
    for_each(
        part, end,
        [&](std::ptrdiff_t first, std::ptrdiff_t last) {
          held(first < begin ? begin : first, last);
        },
        [](std::ptrdiff_t, std::ptrdiff_t) {});
  }

 private:
  void reset(const Field<float>& f);

  std::vector<std::uint8_t> parts_;
  bool any_ = true;
};

}  // namespace nbx
