#include <algorithm>
#include <cmath>
#include <type_traits>

#include <openvdb/math/Maps.h>
#include <openvdb/tools/Dense.h>

#include "exchange/channel_values.h"
#include "exchange/vdb_space.h"
#include "util/whole_file.h"

namespace nbx {

namespace {

namespace vdb = openvdb;
using Layout = vdb::tools::MemoryLayout;
constexpr Layout kOrder = vdb::tools::LayoutXYZ;

vdb::CoordBBox box_of(const Vec3i& offset, const Vec3i& dims) {
  return {to_coord(offset), to_coord(offset + dims - Vec3i(1, 1, 1))};
}

/// Cells with the value `outside` are inactive.
vdb::FloatGrid::Ptr scalars(const FrameGrid& grid, Field<float>& field, float outside) {
  auto result = vdb::FloatGrid::create(outside);
  vdb::CoordBBox box = box_of(grid.offset, field.dims());
  const vdb::tools::Dense<float, kOrder> dense(box, field.data());
  vdb::tools::copyFromDense(dense, *result, 0.0f);
  box.expand(-1);  // without the ghost layer
  result->clip(box);
  return result;
}

vdb::FloatGrid::Ptr fog(const FrameGrid& grid, Field<float>& field) {
  auto result = scalars(grid, field, 0);
  result->setGridClass(vdb::GRID_FOG_VOLUME);
  return result;
}

/// The staggered components of a frame.
struct Velocity {
  std::array<FieldHandle, 3> field;
  Vec3i offset, cells;  // ghost layer included
};

bool find_velocity(Velocity& velocity, SimFrame& frame) {
  for (int a = 0; a < 3; ++a) {
    velocity.field[a] = frame.grid(kGridVelocityX + a);
    if (!velocity.field[a]) return false;
  }
  velocity.offset = frame.grids.at(kGridVelocityX).offset;
  velocity.cells = velocity.field[0]->dims() - Vec3i(1, 0, 0);
  for (int a = 0; a < 3; ++a) {
    Vec3i expected = velocity.cells;
    ++expected[a];
    const int type = kGridVelocityX + a;
    if (frame.grids.at(type).offset != velocity.offset || velocity.field[a]->dims() != expected)
      throw Exception("the three velocity grids don't belong together");
  }
  return true;
}

// Calls set(cell, value of each component) for all cells except the ghost layer. For a staggered
// grid this includes one more cell on each axis, which holds the far face.
template <class Set>
void each_velocity(const Velocity& velocity, bool staggered, Set set) {
  const Vec3i last = velocity.cells - Vec3i(2, 2, 2);
  const int more = staggered ? 1 : 0;
  for (int k = 1; k <= last[2] + more; ++k)
    for (int j = 1; j <= last[1] + more; ++j)
      for (int i = 1; i <= last[0] + more; ++i) {
        const Vec3i c(i, j, k);
        vdb::Vec3d value(0, 0, 0);
        for (int a = 0; a < 3; ++a) {
          const Field<float>& f = *velocity.field[a];
          Vec3i next = c;
          ++next[a];
          bool inside = true;  // across the axis
          for (int b = 0; b < 3; ++b) inside = inside && (b == a || c[b] <= last[b]);
          if (inside)
            value[a] = staggered ? f(i, j, k) : 0.5 * (f(i, j, k) + f(next[0], next[1], next[2]));
        }
        set(c, value);
      }
}

vdb::Vec3SGrid::Ptr vectors(const Velocity& velocity, const vdb::Mat4d& cell_to_file,
                            const VdbOptions& options) {
  auto result = vdb::Vec3SGrid::create(vdb::Vec3s(0));
  result->setGridClass(options.staggered ? vdb::GRID_STAGGERED : vdb::GRID_UNKNOWN);
  result->setVectorType(vdb::VEC_CONTRAVARIANT_RELATIVE);
  result->setIsInWorldSpace(!options.staggered);
  const double speed = speed_scale(options);
  const auto axes = axes_of(cell_to_file);
  vdb::tools::Dense<vdb::Vec3s, kOrder> dense(
      box_of(velocity.offset, velocity.cells + Vec3i(1, 1, 1)), vdb::Vec3s(0));
  each_velocity(velocity, options.staggered, [&](const Vec3i& c, const vdb::Vec3d& v) {
    const vdb::Vec3d out =
        options.staggered ? speed * v : speed * (v[0] * axes[0] + v[1] * axes[1] + v[2] * axes[2]);
    dense.setValue(to_coord(velocity.offset + c), vdb::Vec3s(out));
  });
  vdb::tools::copyFromDense(dense, *result, vdb::Vec3s(0));
  return result;
}

/// Limits active values to what 16 bits can hold, so that none becomes infinite. Returns how many
/// voxels had others.
template <class Grid>
std::uint64_t limit_to_half(Grid& grid) {
  std::uint64_t count = 0;
  for (auto it = grid.beginValueOn(); it; ++it) {
    auto value = it.getValue();
    bool changed = false;
    const auto limit = [&](float& v) {
      constexpr float kLargest = 65504;
      changed = changed || std::abs(v) > kLargest;
      v = std::clamp(v, -kLargest, kLargest);
    };
    if constexpr (std::is_same_v<decltype(value), float>)
      limit(value);
    else
      for (int c = 0; c < 3; ++c) limit(value[c]);
    if (!changed) continue;
    it.setValue(value);
    count += it.getVoxelCount();
  }
  return count;
}

vdb::MetaMap metadata(const SimFrame& frame, const VdbOptions& options) {
  vdb::MetaMap meta;
  meta.insertMeta("frame", vdb::Int32Metadata(frame.frameTime.frame()));
  meta.insertMeta("frames_per_second", vdb::DoubleMetadata(frame.frameTime.frames_per_second()));
  const auto fraction = [](const Fraction& f) { return vdb::Vec2DMetadata({f.num, f.den}); };
  meta.insertMeta("simulation_time", fraction(frame.simTime.time));
  meta.insertMeta("simulation_frame", fraction(frame.simTime.length));
  meta.insertMeta("units", vdb::StringMetadata(options.meters ? "m" : "cm"));
  const IntBox box = frame.box();
  meta.insertMeta("box_lo", vdb::Vec3IMetadata({box.lo[0], box.lo[1], box.lo[2]}));
  meta.insertMeta("box_hi", vdb::Vec3IMetadata({box.hi[0], box.hi[1], box.hi[2]}));
  return meta;
}

FieldHandle field_of(SimFrame& frame, int type) {
  FieldHandle field = frame.grid(type);
  if (!field) throw Exception("it can't be read");
  return field;
}

/// One channel of the frame. Null for a velocity without all its components.
vdb::GridBase::Ptr convert(SimFrame& frame, int type, const vdb::Mat4d& cell_to_file,
                           const VdbOptions& options, std::uint64_t& limited) {
  const auto finish = [&](const auto& grid) -> vdb::GridBase::Ptr {
    if (options.half) limited += limit_to_half(*grid);
    return grid;
  };
  if (type == kGridVelocityX) {
    Velocity velocity;
    if (!find_velocity(velocity, frame)) return {};
    return finish(vectors(velocity, cell_to_file, options));
  }
  const FieldHandle field = field_of(frame, type);
  const FrameGrid& grid = frame.grids.at(type);
  if (type == kGridSolid) return finish(scalars(grid, *within_band(*field), kSolidBand));
  return finish(fog(grid, *field));
}

vdb::GridPtrVec convert(SimFrame& frame, const VdbOptions& options, std::uint64_t& limited) {
  vdb::GridPtrVec grids;
  const vdb::MetaMap meta = metadata(frame, options);
  for (const auto& [type, name] : options.names) {
    const auto found = frame.grids.find(type);
    if (found == frame.grids.end()) continue;
    const vdb::Mat4d cell_to_file =
        vdb::Mat4d(found->second.gridMatrix.data()).inverse() * world_to_file(options);
    const vdb::GridBase::Ptr grid = convert(frame, type, cell_to_file, options, limited);
    if (!grid) continue;
    grid->insertMeta(meta);
    if (const std::string unit = value_unit(type, options.meters); !unit.empty())
      grid->insertMeta("value_unit", vdb::StringMetadata(unit));
    grid->setName(name);
    grid->setCreator("nimbrix");
    grid->setSaveFloatAsHalf(options.half);
    const auto map = std::make_shared<vdb::math::AffineMap>(cell_to_file);
    grid->setTransform(std::make_shared<vdb::math::Transform>(vdb::math::simplify(map)));
    grids.push_back(grid);
  }
  return grids;
}

}  // namespace

std::uint64_t write_vdb(const std::string& path, SimFrame& frame, const VdbOptions& options) {
  vdb::initialize();
  std::uint64_t limited = 0;
  WholeFile whole(path, Sync::kNone);
  try {
    const vdb::GridPtrVec grids = convert(frame, options, limited);
    vdb::io::File file(whole.part());
    file.write(grids, metadata(frame, options));
    file.close();
  } catch (const vdb::Exception& e) {
    throw Exception(e.what());
  }
  if (const Outcome written = whole.commit(); !written) throw Exception(written.reason());
  return limited;
}

}  // namespace nbx
