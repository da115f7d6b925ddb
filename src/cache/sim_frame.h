// The in-memory image of one frame file: its grids, loaded on demand, and its times.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>

#include "cache/bcf_file.h"
#include "math/field_pool.h"
#include "math/int_box.h"

namespace nbx {

/// One grid of a frame.
struct FrameGrid {
  int gridType = 0;
  Vec3i offset;  // the domain cell that grid index (0, 0, 0) stands on
  Vec3i dims;    // cells, ghost layer included
  GridMatrix gridMatrix{};
  FieldHandle field;  // empty until loaded
};

/// One thread at a time, but for `grid` and the const operations: several may call those at once.
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
  std::string error;               // why the last `write` returned 0

  /// Reads all heads, no payload. True if at least one grid was found; a file cut inside a head
  /// yields the records before it. False if the file can't be opened. Throws for a foreign file
  /// (see BcfFile::openRead).
  bool load(const std::string& file);

  /// Writes the grids whose field is loaded. Returns the file's size; 0 if the file can't be
  /// written, with a log line, the reason in `error` and no partial file left behind. A grid that
  /// can't be encoded throws what BcfFile::addGrid throws, and no file is left either.
  std::uint64_t write(const std::string& file, Codec codec, Sync sync = Sync::kNone);
  /// The same for a frame all of whose grids are loaded, and without a trace in it: others may read
  /// it meanwhile. `out` writes the file. The reason of a 0 goes to `reason`.
  std::uint64_t write_loaded(BcfFile& out, const std::string& file, Codec codec, Sync sync,
                             std::string& reason) const;

  /// Drops the grids and forgets the file.
  void clear();

  /// The field of a grid, read from the file on first use. Empty if the frame has no such grid or
  /// the file can't be opened. Throws Exception for a damaged payload.
  FieldHandle grid(int gridType);

  /// Puts a grid into the frame: a deep copy into a pooled field if `ownsData`, else the handle
  /// itself is shared.
  void add(const FieldHandle& field, int gridType, const Vec3i& offset, const GridMatrix& matrix);

  /// Per-axis maximum of the dimensions over all grids but velocity (types 5, 6, 7); 0, 0, 0 if
  /// none.
  Vec3i dims() const;
  /// Per-axis minimum of the offsets over all grids; 0, 0, 0 if none.
  Vec3i offset() const;
  /// The simulated region in domain cells: what the grids of cell centers cover without their ghost
  /// layer, or without any such grid what the staggered ones do. Empty if there is nothing.
  IntBox box() const;

 private:
  void add_loaded(BcfFile& out, Codec codec) const;

  struct FileGrid {
    GridHead head;
    std::uint64_t position = 0;  // of the payload
  };
  std::string source_;  // the file that file_index_ speaks of
  std::map<int, FileGrid> file_index_;
  std::mutex loading_;  // guards the fields of `grids` against readers that load at once
};

}  // namespace nbx
