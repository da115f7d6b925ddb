// Light in a volume: the lights of a render, as volumes see them, and the field that gives a shader
// the light at a point.
#pragma once

#include <functional>
#include <limits>

#include "math/vector.h"
#include "render/march/sample_block.h"
#include "render/ray_record.h"

namespace nbx {

struct RenderVolume;

/// The lights of a render. One thread at a time may use an object, with one exception: during
/// LightField::prepare a team of threads calls `illuminate` and `finish` at once.
class Lighting {
 public:
  virtual ~Lighting() = default;

  virtual int lightCount() = 0;
  virtual Vec3d lightPosition(int index) = 0;  // world space

  /// Light that arrives from one light at a point of the world, with shadows, and the direction
  /// towards that light. The result must depend on the point alone, not on the caller or on the
  /// order of calls. False if this light doesn't reach the volume at all. `thread` is the number of
  /// the calling thread in the render or, during LightField::prepare, in the team; from 0.
  virtual bool illuminate(int index, const RenderVolume& volume, const Vec3d& point, Color& color,
                          Vec3d& direction, int thread) = 0;
  /// Called once after all lights of a point, with their sum.
  virtual void finish(Color&) {}
};

/// White light from the viewer, for previews.
class HeadLighting final : public Lighting {
 public:
  int lightCount() override { return 1; }
  Vec3d lightPosition(int) override { return {0, 0, std::numeric_limits<double>::max()}; }
  bool illuminate(int, const RenderVolume&, const Vec3d&, Color& color, Vec3d& direction,
                  int) override {
    color = {1, 1, 1};
    direction = {0, 0, -1};
    return true;
  }
};

/// Receives the work done, the work to do, the number of the current stage (from 1), and the number
/// of stages. Returns true to cancel.
using ProgressCallback = std::function<bool(int done, int total, int stage, int stage_count)>;

/// The light within one volume, for one frame.
class LightField {
 public:
  virtual ~LightField() = default;

  /// Called after the fields of all volumes are prepared, on the thread that prepares the render.
  /// False if `progress` canceled it. Throws std::bad_alloc after a log line.
  [[nodiscard]] virtual bool prepare(Lighting& lighting, const RenderVolume& volume,
                                     int threadCount, const ProgressCallback& progress) = 0;

  /// The light at points of the volume, in its voxel coordinates. All render threads may call at
  /// once; `lighting` and `ray` belong to the calling thread.
  virtual void query(Colors& light, Lighting& lighting, const RayRecord& ray,
                     const Points& points) = 0;
};

}  // namespace nbx
