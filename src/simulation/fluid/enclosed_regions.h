// Regions of fluid that walls and solids close on all sides. Gas that expands there has nowhere to
// go: the pressure's problem has a solution only if the right-hand side sums to 0 in each of them.
#pragma once

#include <array>
#include <vector>

#include "math/field.h"

namespace nbx {

class EnclosedRegions {
 public:
  /// Finds the regions of connected cells with phi > 0 that no open face of the grid touches.
  /// Without `phi` (null) all interior cells are one region. `closed` is in order x-, x+, y-, y+,
  /// z-, z+. Takes the time of one read of phi.
  EnclosedRegions(const Vec3i& center_dims, const Field<float>* phi,
                  const std::array<int, 6>& closed);

  /// Takes the mean out of rhs in each region. Returns the sum of what it took, over all cells.
  double remove_means(Field<float>& rhs) const;

 private:
  // Neighboring cells of a row.
  struct Run {
    int j, k, first, end;
  };
  void find(const Field<float>& phi, const std::array<int, 6>& closed);

  std::vector<std::vector<Run>> regions_;
};

}  // namespace nbx
