#include "C4D/commands/info_vdb.h"

#include <QFileInfo>
#include <algorithm>
#include <sstream>

#include "exchange/vdb_file.h"
#include "exchange/vdb_info.h"
#include "util/exception.h"
#include "util/format_size.h"

namespace nbx {

namespace {

/// Text from a file for one line of a terminal.
std::string printable(const std::string& text) {
  constexpr std::size_t kLongest = 100;
  std::string line = text.size() > kLongest ? text.substr(0, kLongest) + "..." : text;
  std::replace_if(
      line.begin(), line.end(), [](unsigned char c) { return c < 0x20 || c == 0x7f; }, ' ');
  return line;
}

std::string tuple(const Vec3d& v) {
  std::ostringstream out;
  out << "(" << v[0] << ", " << v[1] << ", " << v[2] << ")";
  return out.str();
}

Vec3d count(const IntBox& box) {
  return vector_cast<double>(box.hi) - vector_cast<double>(box.lo) + Vec3d(1, 1, 1);
}

std::string voxel_text(const Vec3d& edges) {
  std::ostringstream out;
  const auto [least, most] = std::minmax({edges[0], edges[1], edges[2]});
  if (most - least <= 1e-6 * most)
    out << edges[0];
  else
    out << edges[0] << " x " << edges[1] << " x " << edges[2];
  return out.str();
}

std::string values_text(const VdbGridInfo& grid) {
  std::ostringstream out;
  const ValueSummary& values = *grid.values;
  out << (grid.type.starts_with("vec") ? ", lengths " : ", values ") << values.min << " to "
      << values.max << ", mean " << values.mean;
  if (values.nans > 0) out << ", " << values.nans << " NaNs";
  return out.str();
}

void show_metadata(const VdbMetadata& metadata, const std::string& indent,
                   host::CommandContext& context) {
  for (const auto& [name, value] : metadata)
    context.Result(indent + printable(name) + ": " + printable(value));
}

void show_grid(const VdbGridInfo& grid, host::CommandContext& context) {
  std::ostringstream line;
  line << "  " << printable(grid.name) << ": " << grid.type << (grid.half ? " (16 bits), " : ", ")
       << grid.grid_class << ", voxel size " << voxel_text(grid.voxel) << ", ";
  if (grid.active == 0) {
    line << "no active voxels";
  } else {
    const Vec3d n = count(grid.box);
    line << grid.active << " active voxels in box " << n[0] << "x" << n[1] << "x" << n[2] << " at ("
         << grid.box.lo[0] << "," << grid.box.lo[1] << "," << grid.box.lo[2] << "), from "
         << tuple(grid.low) << " to " << tuple(grid.high);
  }
  if (grid.values) line << values_text(grid);
  context.Result(line.str());
  show_metadata(grid.metadata, "    ", context);
}

std::vector<double> numbers(const Vec3d& v) { return {v[0], v[1], v[2]}; }

host::EventFields fields_of(const VdbGridInfo& grid) {
  host::EventFields fields{{"name", grid.name},
                           {"type", grid.type},
                           {"class", grid.grid_class},
                           {"half", grid.half},
                           {"voxel_size", numbers(grid.voxel)},
                           {"active_voxels", static_cast<std::int64_t>(grid.active)}};
  if (grid.active > 0)
    fields.insert(fields.end(), {{"box_lo", numbers(vector_cast<double>(grid.box.lo))},
                                 {"box_hi", numbers(vector_cast<double>(grid.box.hi))},
                                 {"world_lo", numbers(grid.low)},
                                 {"world_hi", numbers(grid.high)}});
  if (grid.values)
    fields.insert(fields.end(), {{"min", double{grid.values->min}},
                                 {"max", double{grid.values->max}},
                                 {"mean", grid.values->mean},
                                 {"nans", static_cast<std::int64_t>(grid.values->nans)}});
  return fields;
}

}  // namespace

bool is_vdb_file(const std::string& path) {
  return QFileInfo(QString::fromStdString(path)).suffix().compare("vdb", Qt::CaseInsensitive) == 0;
}

host::ExitCode show_vdb(const std::string& path, host::CommandContext& context) {
  const QFileInfo file(QString::fromStdString(path));
  if (!file.exists()) {
    context.Error(path + " doesn't exist");
    return host::kBadInput;
  }
  if (!has_vdb()) {
    context.Error("this build has no OpenVDB, so it can't read " + path);
    return host::kBadInput;
  }
  VdbFileInfo info;
  try {
    info = read_vdb_info(path);
  } catch (const std::exception& e) {
    context.Error(path + " is damaged or isn't a VDB file: " + printable(e.what()));
    return host::kBadInput;
  }
  context.Result(path + ": " + std::to_string(info.grids.size()) + " grids, " +
                 format_size(file.size(), 2));
  show_metadata(info.metadata, "  ", context);
  context.Event("vdb", {{"path", path}, {"bytes", static_cast<std::int64_t>(file.size())}});
  for (const VdbGridInfo& grid : info.grids) {
    show_grid(grid, context);
    context.Event("vdb_grid", fields_of(grid));
  }
  return host::kDone;
}

}  // namespace nbx
