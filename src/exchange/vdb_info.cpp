#include "exchange/vdb_info.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <openvdb/openvdb.h>

#include "exchange/vdb_load.h"
#include "util/exception.h"

namespace nbx {

namespace {

namespace vdb = openvdb;
using Measured = vdb::RealGridTypes::Append<vdb::IntegerGridTypes>::Append<vdb::Vec3GridTypes>;

template <class Value>
double magnitude(const Value& value) {
  if constexpr (vdb::VecTraits<Value>::IsVec)
    return vdb::Vec3d(value).length();
  else
    return static_cast<double>(value);
}

/// A tile counts as often as it has voxels.
template <class Grid>
ValueSummary summarize_active(const Grid& grid) {
  double low = std::numeric_limits<double>::infinity(), high = -low, sum = 0;
  std::uint64_t count = 0;
  ValueSummary s;
  for (auto it = grid.cbeginValueOn(); it; ++it) {
    const double v = magnitude(it.getValue());
    if (std::isnan(v)) {
      s.nans += it.getVoxelCount();
      continue;
    }
    low = std::min(low, v);
    high = std::max(high, v);
    sum += v * static_cast<double>(it.getVoxelCount());
    count += it.getVoxelCount();
  }
  if (count == 0) return s;
  s.min = static_cast<float>(low);
  s.max = static_cast<float>(high);
  s.mean = sum / static_cast<double>(count);
  return s;
}

void read_box(VdbGridInfo& info, const vdb::GridBase& grid) {
  const vdb::CoordBBox box = grid.evalActiveVoxelBoundingBox();
  if (box.empty()) return;
  const vdb::Vec3d lowest = box.min().asVec3d() - 0.5, highest = box.max().asVec3d() + 0.5;
  const vdb::BBoxd world = grid.transform().indexToWorld(vdb::BBoxd(lowest, highest));
  const auto rounded = [&](double v, int a) { return std::abs(v) < 1e-9 * info.voxel[a] ? 0 : v; };
  for (int a = 0; a < 3; ++a) {
    info.box.lo[a] = box.min()[a];
    info.box.hi[a] = box.max()[a];
    info.low[a] = rounded(world.min()[a], a);
    info.high[a] = rounded(world.max()[a], a);
  }
}

/// What OpenVDB keeps for itself, in grids and files.
bool is_internal(const std::string& name) {
  static const std::string own[] = {vdb::GridBase::META_GRID_NAME, vdb::GridBase::META_GRID_CLASS,
                                    vdb::GridBase::META_SAVE_HALF_FLOAT,
                                    vdb::GridBase::META_IS_LOCAL_SPACE,
                                    vdb::GridBase::META_VECTOR_TYPE};
  return name.starts_with("file_") ||
         std::find(std::begin(own), std::end(own), name) != std::end(own);
}

VdbMetadata texts(const vdb::MetaMap& meta, const VdbMetadata& known) {
  VdbMetadata result;
  for (auto it = meta.beginMeta(); it != meta.endMeta(); ++it) {
    if (!it->second || is_internal(it->first)) continue;
    const std::string text = it->second->str();
    const auto same = known.find(it->first);
    if (same == known.end() || same->second != text) result[it->first] = text;
  }
  return result;
}

VdbGridInfo describe(const vdb::GridBase& grid, const VdbMetadata& known) {
  VdbGridInfo info;
  info.name = grid.getName();
  info.type = grid.valueType();
  info.grid_class = vdb::GridBase::gridClassToString(grid.getGridClass());
  info.half = grid.saveFloatAsHalf();
  info.active = grid.activeVoxelCount();
  const vdb::Vec3d voxel = grid.voxelSize();
  info.voxel = {voxel[0], voxel[1], voxel[2]};
  read_box(info, grid);
  if (info.active > 0)
    grid.apply<Measured>([&](const auto& measured) { info.values = summarize_active(measured); });
  info.metadata = texts(grid, known);
  return info;
}

}  // namespace

VdbFileInfo read_vdb_info(const std::string& path) try {
  const LoadedVdb file = load_vdb(path);
  VdbFileInfo info;
  info.metadata = texts(*file.metadata, {});
  for (const auto& grid : *file.grids) info.grids.push_back(describe(*grid, info.metadata));
  return info;
} catch (const openvdb::Exception& e) {
  throw Exception(e.what());
}

}  // namespace nbx
