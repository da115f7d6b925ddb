#include "cache/cache_info.h"

#include <QDir>
#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

#include "cache/bcf_file.h"
#include "cache/frame_names.h"
#include "cache/grid_type.h"
#include "cache/sim_frame.h"

namespace nbx {

namespace {

// Decodes the payload of a record and checks its size at both ends.
void read_values(GridInfo& grid, BcfFile& in, Field<float>& scratch) {
  try {
    in.readGrid(grid.position, grid.head, scratch);
    grid.values = summarize(scratch);
    if (!in.trailer_matches(grid.position, grid.head))
      grid.damage = "the size behind the payload isn't the size before it";
  } catch (const Exception& e) {
    grid.damage = e.what();
  } catch (const std::bad_alloc&) {
    grid.damage = "the grid doesn't fit into memory";
  }
}

void read_heads(FrameFileInfo& info, BcfFile& in) {
  std::uint64_t end = kBcfHeaderSize;  // of the last complete record
  SimFrame frame;
  for (GridHead head; in.readHead(head);) {
    GridInfo& grid = info.grids.emplace_back();
    grid.head = head;
    grid.position = in.position();
    end = grid.position + head.dataSize + kBcfTrailerSize;
    frame.take_head(head);
  }
  info.simTime = frame.simTime;
  info.frameTime = frame.frameTime;
  info.box = frame.box();
  if (end != in.size())
    info.damage = "the file ends inside of a record";
  else if (info.grids.empty())
    info.damage = "the file holds no grid";
}

}  // namespace

ValueSummary summarize(const Field<float>& field) {
  ValueSummary s;
  float lo = std::numeric_limits<float>::infinity(), hi = -lo;
  double sum = 0;
  for (std::size_t i = 0; i < field.count(); ++i) {
    const float v = field[i];
    const bool nan = std::isnan(v);
    s.nans += nan;
    lo = v < lo ? v : lo;
    hi = v > hi ? v : hi;
    sum += nan ? 0.0 : v;
  }
  const std::uint64_t count = field.count() - s.nans;
  if (count > 0) {
    s.min = lo;
    s.max = hi;
    s.mean = sum / count;
  }
  return s;
}

double GridInfo::compression() const {
  const auto cells = cell_count(head.dims);
  if (!cells || head.dataSize == 0) return 0;
  return *cells * sizeof(float) / static_cast<double>(head.dataSize);
}

bool FrameFileInfo::good() const {
  return damage.empty() && std::all_of(grids.begin(), grids.end(),
                                       [](const GridInfo& g) { return g.damage.empty(); });
}

std::string FrameFileInfo::first_damage() const {
  for (const GridInfo& grid : grids)
    if (!grid.damage.empty()) return grid_type_name(grid.head.gridType) + ": " + grid.damage;
  return damage;
}

FrameFileInfo read_frame_file_info(const std::string& path, bool values) {
  FrameFileInfo info;
  info.path = path;
  try {
    BcfFile in;
    if (const Outcome opened = in.openRead(path); !opened) {
      info.damage = opened.reason();
      return info;
    }
    info.bytes = in.size();
    read_heads(info, in);
    Field<float> scratch;
    for (GridInfo& grid : info.grids)
      if (values) read_values(grid, in, scratch);
  } catch (const BcfFormatError& e) {
    info.damage = e.what();
  }
  return info;
}

std::vector<std::pair<int, int>> CacheInfo::gaps() const {
  std::vector<std::pair<int, int>> missing;
  for (std::size_t i = 1; i < frames.size(); ++i) {
    const int before = frames[i - 1].first, here = frames[i].first;
    if (here > before && here - 1 > before) missing.emplace_back(before + 1, here - 1);
  }
  return missing;
}

std::optional<CacheInfo> read_cache_info(const std::string& directory, bool values) {
  const QDir dir(QString::fromStdString(directory));
  if (directory.empty() || !dir.exists() || !dir.isReadable()) return {};
  CacheInfo cache;
  cache.directory = directory;
  cache.prefix = cache_prefix(directory);
  for (const QString& entry : dir.entryList({"*.bcf"}, QDir::Files, QDir::Name)) {
    FrameFileInfo info = read_frame_file_info(dir.absoluteFilePath(entry).toStdString(), values);
    cache.bytes += info.bytes;
    if (const auto frame = frame_of_name(entry.toStdString()))
      cache.frames.emplace_back(*frame, std::move(info));
    else
      cache.others.push_back(std::move(info));
  }
  std::stable_sort(cache.frames.begin(), cache.frames.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  return cache;
}

}  // namespace nbx
