// Writes frame files in the form of other programs.
#pragma once

#include <cstdint>
#include <string>

#include "cache/sim_frame.h"
#include "exchange/vdb_file.h"
#include "host/interface/command_data.h"

namespace nbx {

struct ExportOptions {
  VdbOptions vdb;
  bool raw = false;    // plain arrays instead of VDB
  bool solid = false;  // with the channel solid
};

/// For the frames of one export.
class FrameExporter {
 public:
  FrameExporter(ExportOptions options, host::CommandContext& context)
      : options_(std::move(options)), context_(context) {}

  /// Writes the frame to STEM.vdb, or to STEM.json and its arrays. False, after an error, if that
  /// isn't possible.
  bool write(const std::string& file, const std::string& stem);

  /// After the last frame: warns of what the written files lack.
  void warn(const std::string& output) const;

 private:
  void write_vdb_file(const std::string& path, SimFrame& frame);

  const ExportOptions options_;
  host::CommandContext& context_;
  int without_velocity_ = 0;   // frames
  std::uint64_t limited_ = 0;  // voxels with values beyond 16 bits
};

}  // namespace nbx
