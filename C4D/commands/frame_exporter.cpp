#include "C4D/commands/frame_exporter.h"

#include <algorithm>

#include "exchange/raw_export.h"

namespace nbx {

namespace {

bool has_velocity(const SimFrame& frame) {
  return frame.grids.contains(kGridVelocityX) && frame.grids.contains(kGridVelocityY) &&
         frame.grids.contains(kGridVelocityZ);
}

std::string channels_of(const SimFrame& frame) {
  std::string names;
  for (const auto& [type, grid] : frame.grids)
    names += (names.empty() ? "" : ", ") + grid_type_name(type);
  return names;
}

}  // namespace

bool FrameExporter::write(const std::string& file, const std::string& stem) {
  try {
    SimFrame frame;
    if (!frame.load(file)) throw Exception("it contains no grid");
    if (!options_.solid && frame.grids.size() > 1) frame.grids.erase(kGridSolid);
    if (options_.raw)
      write_raw(stem, frame);
    else
      write_vdb_file(stem + ".vdb", frame);
    return true;
  } catch (const std::exception& e) {
    context_.Error(file + ": " + e.what());
  }
  return false;
}

void FrameExporter::write_vdb_file(const std::string& path, SimFrame& frame) {
  const auto& names = options_.vdb.names;
  const bool any = std::any_of(names.begin(), names.end(),
                               [&](const auto& n) { return frame.grids.contains(n.first); });
  if (!any)
    throw Exception("none of its channels (" + channels_of(frame) +
                    ") is exported; name one with --name CHANNEL=NAME");
  limited_ += write_vdb(path, frame, options_.vdb);
  if (names.contains(kGridVelocityX) && !has_velocity(frame)) ++without_velocity_;
}

void FrameExporter::warn(const std::string& output) const {
  if (without_velocity_ > 0)
    context_.Warning(output + ": " + std::to_string(without_velocity_) +
                     " frames contain no velocity, so other programs can't blur their motion; set "
                     "cache_velocity before the run");
  if (limited_ > 0)
    context_.Warning(output + ": " + std::to_string(limited_) +
                     " voxels had values above 65504, which 16 bits can't hold, and got 65504; "
                     "leave out --half to keep their values");
}

}  // namespace nbx
