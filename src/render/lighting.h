// How light comes into a volume: the lights of a render, as volumes see them, and the field that
// tells a shader the light at a point.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>

#include "math/vector.h"
#include "render/march/sample_block.h"
#include "render/ray_record.h"

namespace nbx {

struct RenderVolume;

/// The lights of a render. One object belongs to one thread at a time, but for illuminate and
/// finish during LightField::prepare: a team of OpenMP threads calls them at once, known by
/// omp_get_thread_num().
class Lighting {
 public:
  virtual ~Lighting() = default;

  virtual int lightCount() = 0;
  virtual int lightFlag(int index) = 0;
  virtual Vec3d lightPosition(int index) = 0;  // world space
  virtual Color lightColor(int index) = 0;

  /// Light that arrives from one light at a point of the world, with shadows, and the direction
  /// towards that light. It must depend on the point alone, not on who asks or in which order.
  /// False if this light doesn't reach the volume at all.
  virtual bool illuminate(int index, const RenderVolume& volume, const Vec3d& point, Color& color,
                          Vec3d& direction) = 0;
  /// Called once after all lights of a point, with their sum.
  virtual void finish(Color& color) { static_cast<void>(color); }
};

/// White light from the viewer, for previews.
class HeadLighting final : public Lighting {
 public:
  int lightCount() override { return 1; }
  int lightFlag(int) override { return 0; }
  Vec3d lightPosition(int) override { return {0, 0, std::numeric_limits<double>::max()}; }
  Color lightColor(int) override { return {0, 0, 0}; }
  bool illuminate(int, const RenderVolume&, const Vec3d&, Color& color, Vec3d& direction) override {
    color = {1, 1, 1};
    direction = {0, 0, -1};
    return true;
  }
};

/// Work done and to do, the number of the stage from 1, and how many stages there are. True breaks
/// off.
using ProgressCallback = std::function<bool(int done, int total, int stage, int stage_count)>;

/// The light within one volume, for one frame.
class LightField {
 public:
  virtual ~LightField() = default;

  /// After the fields of all volumes are prepared, on the thread that prepares the render. False
  /// if `progress` broke it off. Throws std::bad_alloc after a log line.
  [[nodiscard]] virtual bool prepare(Lighting& lighting, const RenderVolume& volume,
                                     int threadCount, const ProgressCallback& progress) = 0;

  /// The light at points of the volume, in its voxel coordinates; from all render threads.
  /// `lighting` and `ray` are those of the calling thread.
  virtual void query(Colors& light, Lighting& lighting, const RayRecord& ray,
                     const Points& points) = 0;
};

}  // namespace nbx
