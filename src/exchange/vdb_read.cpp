#include <cmath>

#include <openvdb/tools/Dense.h>

#include "cache/grid_type.h"
#include "exchange/vdb_load.h"
#include "exchange/vdb_space.h"

namespace nbx {

namespace {

namespace vdb = openvdb;
constexpr vdb::tools::MemoryLayout kOrder = vdb::tools::LayoutXYZ;

/// A grid of the file that goes into the frame.
struct Source {
  int type;
  vdb::FloatGrid::Ptr scalar;
  vdb::Vec3SGrid::Ptr vector;
  const vdb::GridBase& base() const {
    return scalar ? static_cast<const vdb::GridBase&>(*scalar) : *vector;
  }
  bool staggered() const { return base().getGridClass() == vdb::GRID_STAGGERED; }
};

vdb::Mat4d cell_to_file(const vdb::GridBase& grid) {
  if (!grid.transform().isLinear()) throw Exception("its voxels aren't cubes");
  return grid.transform().baseMap()->getAffineMap()->getMat4();
}

void require_cubes(const vdb::Mat4d& m) {
  const vdb::Vec3d x(m.row(0)[0], m.row(0)[1], m.row(0)[2]),
      y(m.row(1)[0], m.row(1)[1], m.row(1)[2]), z(m.row(2)[0], m.row(2)[1], m.row(2)[2]);
  const double h = x.length(), least = 1e-5 * h * h;
  const bool cubes = h > 0 && std::abs(y.length() - h) < 1e-5 * h &&
                     std::abs(z.length() - h) < 1e-5 * h && std::abs(x.dot(y)) < least &&
                     std::abs(y.dot(z)) < least && std::abs(z.dot(x)) < least;
  if (!cubes || x.cross(y).dot(z) < 0) throw Exception("its voxels aren't right-handed cubes");
}

template <class Number>
bool read_meta(Number& value, const vdb::MetaMap& meta, const std::string& name) {
  const auto found = meta.getMetadata<vdb::TypedMetadata<Number>>(name);
  if (found) value = found->value();
  return found != nullptr;
}

/// The simulated region: that of the metadata, and all active voxels.
vdb::CoordBBox box_of(const std::vector<Source>& sources) {
  vdb::CoordBBox box;
  for (const Source& source : sources) {
    vdb::Vec3i lo(0), hi(0);
    if (read_meta(lo, source.base(), "box_lo") && read_meta(hi, source.base(), "box_hi"))
      if (const vdb::CoordBBox stated(vdb::Coord(lo[0], lo[1], lo[2]),
                                      vdb::Coord(hi[0], hi[1], hi[2]));
          !stated.empty())
        box.expand(stated);
    vdb::CoordBBox active = source.base().evalActiveVoxelBoundingBox();
    if (source.staggered()) active.max().offset(-1);  // the far side's faces
    if (!active.empty()) box.expand(active);
  }
  if (box.empty()) throw Exception("it contains no active voxels");
  constexpr int kMost = 1 << 30;  // its neighbors still fit an int
  for (int a = 0; a < 3; ++a)
    if (box.min()[a] < -kMost || box.max()[a] > kMost) throw Exception("its box is too large");
  return box;
}

FieldHandle sample(const vdb::FloatGrid& grid, const vdb::CoordBBox& box) {
  const vdb::Coord n = box.dim();
  FieldHandle field = acquire_field({n[0], n[1], n[2]});
  vdb::tools::Dense<float, kOrder> dense(box, field->data());
  vdb::tools::copyToDense(grid, dense);
  return field;
}

/// The component along the grid's axis `a` on the faces of `box`, in meters per second.
FieldHandle sample_faces(const vdb::tools::Dense<vdb::Vec3s, kOrder>& dense,
                         const vdb::CoordBBox& box, int a, bool staggered, const vdb::Vec3d& axis) {
  vdb::Coord n = box.dim();
  ++n[a];
  FieldHandle field = acquire_field({n[0], n[1], n[2]});
  for (int k = 0; k < n[2]; ++k)
    for (int j = 0; j < n[1]; ++j)
      for (int i = 0; i < n[0]; ++i) {
        const vdb::Coord above = box.min().offsetBy(i, j, k);
        vdb::Coord below = above;
        --below[a];
        const auto along = [&](const vdb::Coord& c) {
          return vdb::Vec3d(dense.getValue(c)).dot(axis);
        };
        const double v = staggered ? along(above) : 0.5 * (along(below) + along(above));
        (*field)(i, j, k) = static_cast<float>(v);
      }
  return field;
}

void add(SimFrame& frame, const Source& source, const vdb::CoordBBox& box, const GridMatrix& matrix,
         const VdbOptions& options) {
  const Vec3i offset(box.min()[0], box.min()[1], box.min()[2]);
  if (source.scalar) {
    frame.add(sample(*source.scalar, box), source.type, offset, matrix);
    return;
  }
  vdb::CoordBBox wider = box;
  wider.expand(1);
  vdb::tools::Dense<vdb::Vec3s, kOrder> dense(wider);
  vdb::tools::copyToDense(*source.vector, dense);
  auto axes = axes_of(cell_to_file(*source.vector));
  if (source.staggered()) axes = {vdb::Vec3d(1, 0, 0), vdb::Vec3d(0, 1, 0), vdb::Vec3d(0, 0, 1)};
  for (int a = 0; a < 3; ++a) {
    const vdb::Vec3d axis = axes[a] / speed_scale(options);
    frame.add(sample_faces(dense, box, a, source.staggered(), axis), kGridVelocityX + a, offset,
              matrix);
  }
}

std::vector<Source> choose(const vdb::GridPtrVec& grids, const std::map<std::string, int>& names,
                           VdbContent& content) {
  std::vector<Source> sources;
  for (const auto& grid : grids) {
    const auto found = names.find(grid->getName());
    Source source{found == names.end() ? 0 : found->second, {}, {}};
    if (source.type == kGridVelocityX)
      source.vector = vdb::gridPtrCast<vdb::Vec3SGrid>(grid);
    else if (source.type != 0 && grid->getGridClass() != vdb::GRID_LEVEL_SET)
      source.scalar = vdb::gridPtrCast<vdb::FloatGrid>(grid);
    if (source.scalar || source.vector)
      sources.push_back(source);
    else
      content.left_out.push_back(grid->getName());
  }
  return sources;
}

void read_metadata(VdbContent& content, SimFrame& frame, const vdb::MetaMap& meta) {
  std::int32_t number = 0;
  double rate = 0;
  if (read_meta(number, meta, "frame")) content.numbers["frame"] = number;
  if (read_meta(rate, meta, "frames_per_second") && rate > 0)
    content.numbers["frames_per_second"] = rate;
  vdb::Vec2d time(0), length(0);
  if (read_meta(time, meta, "simulation_time") && read_meta(length, meta, "simulation_frame"))
    frame.simTime = {{time[0], time[1]}, {length[0], length[1]}};
}

}  // namespace

bool has_vdb() { return true; }

VdbContent read_vdb(SimFrame& frame, const std::string& path,
                    const std::map<std::string, int>& names, const VdbOptions& options) try {
  const LoadedVdb file = load_vdb(path);
  VdbContent content;
  const std::vector<Source> sources = choose(*file.grids, names, content);
  if (sources.empty())
    throw Exception(
        "it contains no grid with a known name; use --name CHANNEL=NAME to assign a channel");
  read_metadata(content, frame, *file.metadata);

  const vdb::Mat4d to_file = cell_to_file(sources.front().base());
  require_cubes(to_file);
  for (const Source& source : sources)
    if (!cell_to_file(source.base()).eq(to_file, 1e-6 * to_file.row(0).length()))
      throw Exception("grid \"" + source.base().getName() + "\" uses other voxels than \"" +
                      sources.front().base().getName() + "\"");
  vdb::CoordBBox box = box_of(sources);
  box.expand(1);  // the ghost layer
  const vdb::Coord n = box.dim();
  if (!cell_count({n[0] + 1, n[1] + 1, n[2] + 1})) throw Exception("its box is too large");

  const vdb::Mat4d world_to_cell = world_to_file(options) * to_file.inverse();
  GridMatrix matrix{};
  std::copy_n(world_to_cell.asPointer(), matrix.size(), matrix.begin());
  for (const Source& source : sources) add(frame, source, box, matrix, options);
  return content;
} catch (const openvdb::Exception& e) {
  throw Exception(e.what());
}

}  // namespace nbx
