// Solids in the multigrid solver: how far the faces between the cells of each level are open.
#pragma once

#include <vector>

#include "math/field_pool.h"
#include "math/multigrid/multigrid_level.h"

namespace nbx {

/// On the finest level a face is open, 1, or has solid on either side, 0. A face of a coarser level
/// is open if the finer faces on the line between its two cells are. A coarse cell that lies on a
/// cell in solid has no open faces. Walls aren't in it: the stencil leaves them out by itself.
///
/// Interpolation from a coarser level leaves out cells in solid, so that no pressure leaks through
/// a thin wall.
class SolidLevels {
 public:
  /// Fills `open` and `inverse_weight` of all levels. `phi` is above 0 in fluid and has the natural
  /// rows of the finest level's dimensions. The levels must not outlive this. Uses x of the coarser
  /// levels as scratch.
  SolidLevels(std::vector<LevelGrid>& levels, const Field<float>& phi);

  /// With walls on all sides: takes the mean out of b of a coarse level. Injection doesn't keep the
  /// sum, and without a sum of 0 there is no solution.
  void make_solvable(const LevelGrid& g) const;

 private:
  std::vector<std::vector<char>> rows_;  // LevelGrid::near_solid
  std::vector<FieldHandle> fields_;
};

}  // namespace nbx
