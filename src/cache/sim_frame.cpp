#include "cache/sim_frame.h"

#include <algorithm>
#include <limits>

#include "cache/codecs/run_length_codec.h"
#include "util/log.h"

namespace nbx {

namespace {

constexpr std::int64_t kLargest = std::numeric_limits<int>::max();

FieldHandle copied(const Field<float>& field) {
  FieldHandle copy = acquire_field();
  copy->copy(field);
  return copy;
}

bool is_velocity(int gridType) { return gridType >= kGridVelocityX && gridType <= kGridVelocityZ; }

// The first and the last index are ghosts, so the box is 1 .. dims - 2 of the center grid. Sums are
// 64 bits wide, since the offsets of a damaged file may be anything.
IntBox covered_box(const FrameGrid& grid, int staggered_axis) {
  IntBox box;
  for (int a = 0; a < 3; ++a) {
    const std::int64_t offset = grid.offset[a];
    const std::int64_t cells = grid.dims[a] - (a == staggered_axis ? 1 : 0);
    if (cells < 3) return {};
    box.lo[a] = static_cast<int>(std::min<std::int64_t>(offset + 1, kLargest));
    box.hi[a] = static_cast<int>(std::min<std::int64_t>(offset + cells - 2, kLargest));
  }
  return box;
}

}  // namespace

bool SimFrame::load(const std::string& file) {
  clear();
  path = source_ = file;

  BcfFile in;
  if (!in.openRead(file)) return false;
  for (GridHead head; in.readHead(head);) {
    take_head(head);
    file_index_[head.gridType] = {head, in.position()};
  }
  valid = !grids.empty();
  return valid;
}

void SimFrame::take_head(const GridHead& head) {
  Vec3i cells = head.dims;
  for (int a = 0; a < 3; ++a) cells[a] = std::max(cells[a], 0);
  grids[head.gridType] = {head.gridType, head.offset, cells, head.gridMatrix, {}, {}};
  simTime = head.simTime;
  frameTime = head.frameTime;
}

void SimFrame::clear() {
  grids.clear();
  file_index_.clear();
  path.clear();
  source_.clear();
  saved = true;
  valid = false;
}

std::uint64_t SimFrame::write(const std::string& file, Codec codec, Sync sync) {
  BcfFile out;
  std::uint64_t size = 0;
  if (!write_loaded(size, out, file, codec, sync)) return 0;
  path = file;
  if (file == source_) file_index_.clear();  // the old file is gone, with all that wasn't loaded
  return size;
}

Outcome SimFrame::write_loaded(std::uint64_t& size, BcfFile& out, const std::string& file,
                               Codec codec, Sync sync) const {
  size = 0;
  if (Outcome made = out.create(file, sync); !made) {
    LogMessage() << "Failed to open file " << file;
    return made;
  }
  try {
    Outcome written = add_loaded(out, codec);
    const std::uint64_t length = out.position();
    if (written) written = out.close();
    if (written) {
      size = length;
    } else {
      LogMessage() << "Failed to write file " << file << ": " << written.reason();
      out.discard();
    }
    return written;
  } catch (...) {
    out.discard();
    throw;
  }
}

// Others may decode packed grids meanwhile, so their fields aren't looked at.
Outcome SimFrame::add_loaded(BcfFile& out, Codec codec) const {
  std::vector<const Field<float>*> fields;
  std::vector<GridHead> heads;
  for (const auto& [type, grid] : grids) {
    const bool packed = grid.packed.data != nullptr;
    if (!packed && !grid.field) continue;
    const GridHead head{0,
                        static_cast<std::uint8_t>(std::clamp(type, 0, 255)),
                        static_cast<std::uint8_t>(packed ? Codec::kRunLength : codec),
                        simTime,
                        frameTime,
                        grid.offset,
                        packed ? grid.dims : grid.field->dims(),
                        grid.gridMatrix};
    if (packed) {
      if (Outcome added = out.add_payload(head, grid.packed); !added) return added;
      continue;
    }
    fields.push_back(grid.field.get());
    heads.push_back(head);
  }
  return out.add_grids(heads, fields);
}

void SimFrame::pack() {
  std::vector<FrameGrid*> loaded;
  std::vector<const Field<float>*> fields;
  for (auto& [type, grid] : grids) {
    if (!grid.field) continue;
    loaded.push_back(&grid);
    fields.push_back(grid.field.get());
  }
  try {
    const std::vector<Payload> payloads = encode_grids(buffers, Codec::kRunLength, fields);
    for (std::size_t i = 0; i < loaded.size(); ++i) {
      loaded[i]->packed = payloads[i];
      loaded[i]->dims = fields[i]->dims();
      loaded[i]->field.reset();
    }
  } catch (const Exception&) {
    // Whoever writes the frame will meet the same failure, and report it.
    for (FrameGrid* grid : loaded) grid->field = copied(*grid->field);
  }
}

FieldHandle SimFrame::grid(int gridType) {
  const std::lock_guard lock(loading_);
  const auto found = grids.find(gridType);
  if (found == grids.end()) return {};
  FrameGrid& grid = found->second;
  if (grid.packed.data && !grid.field) {
    grid.field = acquire_field(grid.dims);
    rle_decode(grid.field->data(), grid.packed.data, grid.packed.size);
  }
  const auto indexed = file_index_.find(gridType);
  if (grid.field || indexed == file_index_.end()) return grid.field;

  BcfFile in;
  if (!in.openRead(source_)) return {};
  const FieldHandle field = acquire_field();
  in.readGrid(indexed->second.position, indexed->second.head, *field);
  return grid.field = field;
}

void SimFrame::add(const FieldHandle& field, int gridType, const Vec3i& offset,
                   const GridMatrix& matrix) {
  grids[gridType] = {gridType, offset, field->dims(), matrix, ownsData ? copied(*field) : field,
                     {}};
}

Vec3i SimFrame::dims() const {
  Vec3i largest;
  for (const auto& [type, grid] : grids) {
    if (is_velocity(type)) continue;
    for (int a = 0; a < 3; ++a) largest[a] = std::max(largest[a], grid.dims[a]);
  }
  return largest;
}

Vec3i SimFrame::offset() const {
  if (grids.empty()) return {};
  Vec3i lowest = grids.begin()->second.offset;
  for (const auto& [type, grid] : grids)
    for (int a = 0; a < 3; ++a) lowest[a] = std::min(lowest[a], grid.offset[a]);
  return lowest;
}

IntBox SimFrame::box() const {
  IntBox centers, faces;
  for (const auto& [type, grid] : grids) {
    const int axis = staggered_axis(type);
    IntBox& sum = axis < 0 ? centers : faces;
    sum = box_union(sum, covered_box(grid, axis));
  }
  return centers.empty() ? faces : centers;
}

}  // namespace nbx
