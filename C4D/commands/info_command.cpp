#include <QFileInfo>
#include <sstream>

#include "C4D/commands/commands.h"
#include "C4D/commands/info_vdb.h"
#include "C4D/commands/register_command.h"
#include "cache/cache_info.h"
#include "cache/grid_type.h"
#include "cache/stale_frames.h"
#include "util/format_size.h"

namespace nbx {

namespace {

constexpr std::int32_t kInfoCommand = 1023995;

std::string text(const Vec3i& v) {
  return std::to_string(v[0]) + "x" + std::to_string(v[1]) + "x" + std::to_string(v[2]);
}

std::string codec_name(int codec) {
  const char* const names[] = {"raw", "run-length", "predictive"};
  return codec >= 0 && codec < 3 ? names[codec] : "codec " + std::to_string(codec);
}

std::vector<double> numbers(const Vec3i& v) {
  const Vec3d d = vector_cast<double>(v);
  return {d[0], d[1], d[2]};
}

std::string box_text(const IntBox& box) {
  if (box.empty()) return "no box";
  std::ostringstream out;
  out << "box " << text(box.size()) << " at (" << box.lo[0] << "," << box.lo[1] << "," << box.lo[2]
      << ")";
  return out.str();
}

void show_grid(const GridInfo& grid, host::CommandContext& context) {
  const GridHead& head = grid.head;
  const std::string name = grid_type_name(head.gridType);
  std::ostringstream line;
  line << "  " << name << ": " << text(head.dims) << ", " << codec_name(head.codec) << " "
       << format_size(head.dataSize, 2);
  if (grid.compression() > 0) line << " (1:" << grid.compression() << ")";
  host::EventFields fields{{"channel", name},
                           {"dims", numbers(head.dims)},
                           {"offset", numbers(head.offset)},
                           {"codec", codec_name(head.codec)},
                           {"bytes", std::int64_t{head.dataSize}}};
  if (grid.values) {
    line << ", values " << grid.values->min << " to " << grid.values->max << ", mean "
         << grid.values->mean;
    if (grid.values->nans > 0) line << ", " << grid.values->nans << " NaNs";
    fields.insert(fields.end(), {{"min", double{grid.values->min}},
                                 {"max", double{grid.values->max}},
                                 {"mean", grid.values->mean},
                                 {"nans", static_cast<std::int64_t>(grid.values->nans)}});
  }
  if (!grid.damage.empty()) {
    line << ", DAMAGED: " << grid.damage;
    fields.emplace_back("damage", grid.damage);
  }
  context.Result(line.str());
  context.Event("grid", fields);
}

/// The compression ratio: bytes of all grids as plain floats over those of the file.
std::string ratio_text(double plain, std::uint64_t bytes) {
  if (bytes == 0 || plain == 0) return "";
  std::ostringstream out;
  out.precision(3);
  out << " (1:" << plain / bytes << ")";
  return out.str();
}

double plain_bytes(const FrameFileInfo& info) {
  double bytes = 0;
  for (const GridInfo& grid : info.grids)
    bytes += sizeof(float) * static_cast<double>(cell_count(grid.head.dims).value_or(0));
  return bytes;
}

/// Shows a line about the file, then one for each grid if `grids`.
void show_file(int frame, const FrameFileInfo& info, bool grids, host::CommandContext& context) {
  std::ostringstream line;
  line << "frame " << frame << ": " << info.frameTime.time.value() << " s, "
       << format_size(info.bytes, 2) << ratio_text(plain_bytes(info), info.bytes) << ", "
       << box_text(info.box);
  std::vector<std::string> channels;
  for (const GridInfo& grid : info.grids) channels.push_back(grid_type_name(grid.head.gridType));
  if (!grids)
    for (const std::string& channel : channels)
      line << (channel == channels.front() ? ", " : " ") << channel;
  if (!info.damage.empty()) line << ", DAMAGED: " << info.damage;
  context.Result(line.str());
  host::EventFields fields{{"frame", std::int64_t{frame}},
                           {"path", info.path},
                           {"bytes", static_cast<std::int64_t>(info.bytes)},
                           {"frame_time", info.frameTime.time.value()},
                           {"sim_time", info.simTime.time.value()},
                           {"channels", channels},
                           {"box_lo", numbers(info.box.lo)},
                           {"box_hi", numbers(info.box.hi)}};
  if (!info.damage.empty()) fields.emplace_back("damage", info.damage);
  context.Event("frame", fields);
  if (!grids) return;
  for (const GridInfo& grid : info.grids) show_grid(grid, context);
}

int show_cache(const std::string& path, bool values, host::CommandContext& context) {
  const auto cache = read_cache_info(path, values);
  if (!cache) {
    context.Error(path + " can't be read");
    return host::kBadInput;
  }
  if (cache->frames.empty() && cache->others.empty()) {
    context.Error(path + " contains no frame files");
    return host::kBadInput;
  }
  bool good = true;
  double plain = 0;
  std::uint64_t bytes = 0;  // of the frames
  IntBox box;
  for (const auto& [number, info] : cache->frames) {
    show_file(number, info, values, context);
    plain += plain_bytes(info);
    bytes += info.bytes;
    box = box_union(box, info.box);
    good = good && info.good();
  }
  for (const FrameFileInfo& info : cache->others) good = good && info.good();

  std::ostringstream line;
  line << cache->frames.size() << " frames";
  if (!cache->frames.empty())
    line << ", " << cache->frames.front().first << " to " << cache->frames.back().first;
  std::vector<std::string> gaps;
  for (const auto& [first, last] : cache->gaps())
    gaps.push_back(std::to_string(first) +
                   (first == last ? std::string() : "-" + std::to_string(last)));
  for (const std::string& gap : gaps) line << ", " << gap << " missing";
  const std::string stale = frame_ranges(stale_frames(path));
  if (!stale.empty()) line << ", " << stale << " from an earlier run";
  line << ", " << format_size(cache->bytes, 2) << ratio_text(plain, bytes) << ", frames cover "
       << box_text(box);
  context.Result(line.str());
  context.Event("cache", {{"directory", cache->directory},
                          {"frames", static_cast<std::int64_t>(cache->frames.size())},
                          {"missing", gaps},
                          {"stale", stale},
                          {"bytes", static_cast<std::int64_t>(cache->bytes)},
                          {"plain_bytes", plain},
                          {"box_lo", numbers(box.lo)},
                          {"box_hi", numbers(box.hi)}});
  return good ? host::kDone : host::kFailed;
}

class InfoCommand final : public host::CommandData {
 public:
  host::CommandInfo GetInfo() const override {
    return {.verb = "info",
            .help = "Shows what a frame file, a cache folder or a VDB file contains",
            .options = {{.name = "path",
                         .value_name = "PATH",
                         .help = "A frame file, a cache folder or a .vdb file",
                         .positional = true,
                         .required = true},
                        {.name = "values",
                         .type = host::OptionType::Flag,
                         .help = "For a folder, also show every grid with its range of values"}}};
  }

  int Execute(const host::CommandArguments& arguments, host::CommandContext& context) override {
    const std::string path = arguments.GetString("path");
    if (QFileInfo(QString::fromStdString(path)).isDir())
      return show_cache(path, arguments.Has("values"), context);
    if (is_vdb_file(path)) return show_vdb(path, context);
    const FrameFileInfo info = read_frame_file_info(path, true);
    if (info.grids.empty() && !info.damage.empty()) {
      context.Error(path + ": " + info.damage);
      return host::kBadInput;
    }
    show_file(info.frameTime.frame(), info, true, context);
    return info.good() ? host::kDone : host::kFailed;
  }
};

}  // namespace

bool register_info_command(host::HostServices& services, const std::string& name) {
  return register_command<InfoCommand>(services, kInfoCommand, name);
}

}  // namespace nbx
