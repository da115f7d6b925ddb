#include <openvdb/math/Maps.h>
#include <openvdb/tools/Dense.h>

#include "cache/grid_type.h"
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

vdb::FloatGrid::Ptr fog(const FrameGrid& grid, Field<float>& field) {
  auto result = vdb::FloatGrid::create(0);
  result->setGridClass(vdb::GRID_FOG_VOLUME);
  vdb::CoordBBox box = box_of(grid.offset, field.dims());
  const vdb::tools::Dense<float, kOrder> dense(box, field.data());
  vdb::tools::copyFromDense(dense, *result, 0.0f);
  box.expand(-1);  // without the ghost layer
  result->clip(box);
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

double frames_per_second(const SimFrame& frame) {
  return frame.frameTime.length.den / frame.frameTime.length.num;
}

vdb::MetaMap metadata(const SimFrame& frame, const VdbOptions& options) {
  vdb::MetaMap meta;
  meta.insertMeta("frame", vdb::Int32Metadata(frame.frameTime.frame()));
  meta.insertMeta("frames_per_second", vdb::DoubleMetadata(frames_per_second(frame)));
  const auto fraction = [](const Fraction& f) { return vdb::Vec2DMetadata({f.num, f.den}); };
  meta.insertMeta("simulation_time", fraction(frame.simTime.time));
  meta.insertMeta("simulation_frame", fraction(frame.simTime.length));
  meta.insertMeta("units", vdb::StringMetadata(options.meters ? "m" : "cm"));
  const IntBox box = frame.box();
  meta.insertMeta("box_lo", vdb::Vec3IMetadata({box.lo[0], box.lo[1], box.lo[2]}));
  meta.insertMeta("box_hi", vdb::Vec3IMetadata({box.hi[0], box.hi[1], box.hi[2]}));
  return meta;
}

vdb::GridPtrVec convert(SimFrame& frame, const VdbOptions& options) {
  vdb::GridPtrVec grids;
  const vdb::MetaMap meta = metadata(frame, options);
  for (const auto& [type, name] : options.names) {
    const auto found = frame.grids.find(type);
    if (found == frame.grids.end()) continue;
    const vdb::Mat4d cell_to_file =
        vdb::Mat4d(found->second.gridMatrix.data()).inverse() * world_to_file(options);
    vdb::GridBase::Ptr grid;
    Velocity velocity;
    if (type != kGridVelocityX)
      grid = fog(found->second, *frame.grid(type));
    else if (find_velocity(velocity, frame))
      grid = vectors(velocity, cell_to_file, options);
    if (!grid) continue;
    grid->insertMeta(meta);
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

void write_vdb(const std::string& path, SimFrame& frame, const VdbOptions& options) {
  vdb::initialize();
  WholeFile whole(path, Sync::kNone);
  try {
    const vdb::GridPtrVec grids = convert(frame, options);
    vdb::io::File file(whole.part());
    file.write(grids, metadata(frame, options));
    file.close();
  } catch (const vdb::Exception& e) {
    throw Exception(e.what());
  }
  if (const Outcome written = whole.commit(); !written) throw Exception(written.reason());
}

}  // namespace nbx
