// Scenes that equal their mirror images, and how far the gas departs from that.
#pragma once

#include "bench/physics/gas_box.h"

namespace nbx::physics {

enum class MirrorScene {
  kVortices,  // of Taylor and Green in three dimensions, between walls
  kBurst,     // gas that expands in the middle of open air
  kPlume,     // hot gas that rises from the floor of a closed room
};

struct MirrorSetup {
  MirrorScene scene = MirrorScene::kVortices;
  Vec3i cells{20, 20, 20};
  bool ball = false;        // in the middle of the box
  int interp_points = 3;    // 3 = trilinear, 4 = cubic sampling
  double vorticity = 0;     // confinement
  double tolerance = 1e-5;  // of the pressure
  int cycles = 40;          // of the pressure at most
};

class MirrorBox {
 public:
  explicit MirrorBox(const MirrorSetup& setup);

  void step() { box.step_cfl(2); }

  /// The largest difference between the velocity or the density and its mirror image, over the
  /// largest value. It is the worst of all axes across which the scene is symmetric.
  double asymmetry();

  /// Makes the gas equal to its mirror images: each pair of samples gets their mean.
  void symmetrize();

  /// The asymmetry of a symmetric gas after transport of its velocity alone, or after projection
  /// alone. The gas changes.
  double transport();
  double projection();

  GasBox box;

 private:
  void fill();

  MirrorSetup setup_;
};

}  // namespace nbx::physics
