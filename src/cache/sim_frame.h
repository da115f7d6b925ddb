// One frame in memory: its times and its grids, which are loaded from the frame file on demand.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "cache/bcf_file.h"
#include "cache/grid_type.h"
#include "math/field_pool.h"
#include "math/int_box.h"

namespace nbx {

/// One grid of a frame.
struct FrameGrid {
  int gridType = 0;
  Vec3i offset;  // domain cell of grid index (0, 0, 0)
  Vec3i dims;    // cells, ghost layer included
  GridMatrix gridMatrix{};
  FieldHandle field;  // empty until loaded
  Payload packed;     // what `field` is decoded from, by the run-length codec; else without data
};

/// For one thread at a time, except `grid` and the const operations: any number may call those.
class SimFrame {
 public:
  std::map<int, FrameGrid> grids;  // by grid type
  int substep = 0;                 // 0 for the frame itself
  std::string path;                // file that the frame was read from or written to
  FrameTime simTime;               // simulation clock
  FrameTime frameTime;             // document time at which the frame was stored
  bool saved = true;               // the frame is on disk; frames in a store don't keep it
  bool valid = false;              // the frame holds data
  bool ownsData = true;            // grids are deep copies; else they share the simulation's fields
  std::vector<ByteBuffer> buffers;  // of packed grids

  /// Reads all heads but no payload. True if at least one grid was found; from a file cut inside a
  /// head it reads the records before. False if the file can't be opened. Throws for a foreign file
  /// (see BcfFile::openRead).
  bool load(const std::string& file);

  /// Writes the grids that are loaded or packed. Returns the file's size, or 0 after a log line if
  /// the file can't be written. Throws what BcfFile::addGrid throws for a grid that can't be
  /// encoded. Neither failure leaves a partial file.
  std::uint64_t write(const std::string& file, Codec codec, Sync sync = Sync::kNone);
  /// The same through `out`, with the reason of a failure. It changes nothing in the frame, which
  /// others may read meanwhile. `size` is that of the file, 0 after a failure.
  Outcome write_loaded(std::uint64_t& size, BcfFile& out, const std::string& file, Codec codec,
                       Sync sync) const;

  /// Takes the times of a record's head, and its grid without a field.
  void take_head(const GridHead& head);

  /// Drops the grids and forgets the file; the buffers keep their memory.
  void clear();

  /// The field of a grid, decoded or read from the file on first use. Null if the frame has no such
  /// grid or the file can't be opened. Throws Exception for a damaged payload.
  FieldHandle grid(int gridType);

  /// Replaces the fields by their run-length payloads, which takes as long as copying them and
  /// needs less memory. `grid` decodes them again. Fields that can't be encoded are copied.
  void pack();

  /// Adds a grid: a deep copy in a pooled field if `ownsData`, else the handle itself.
  void add(const FieldHandle& field, int gridType, const Vec3i& offset, const GridMatrix& matrix);

  /// Per-axis maximum of the dimensions over all grids except velocity (types 5, 6, 7), or 0.
  Vec3i dims() const;
  /// Per-axis minimum of the offsets over all grids, or 0.
  Vec3i offset() const;
  /// The simulated region in domain cells: what the cell-centered grids cover without their ghost
  /// layer or, if there are none, what the staggered grids cover.
  IntBox box() const;

 private:
  Outcome add_loaded(BcfFile& out, Codec codec) const;

  struct FileGrid {
    GridHead head;
    std::uint64_t position = 0;  // of the payload
  };
  std::string source_;  // the file of file_index_
  std::map<int, FileGrid> file_index_;
  std::mutex loading_;  // guards the fields of `grids` against concurrent loads
};

}  // namespace nbx
