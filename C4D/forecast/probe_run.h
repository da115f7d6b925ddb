// Short runs that measure what a scene costs. A probe simulates a volume into a folder that is
// removed again, and leaves the volume, its cache and earlier runs as they are.
#pragma once

#include <array>
#include <functional>
#include <vector>

#include "host/interface/scene.h"
#include "math/int_box.h"
#include "util/outcome.h"

namespace nbx {

/// Bytes of a frame file, by Codec: raw, run-length, predictive.
using CodecBytes = std::array<double, 3>;

struct ProbeFrame {
  int frame = 0;
  IntBox box;              // simulated cells of the domain
  int substeps = 0;        // 0 for the first frame, which only holds the sources
  double travel = 0;       // substeps that the CFL limit asks for, not rounded
  double seconds = 0;      // since the frame before
  double of_channels = 0;  // of that, for the channels
  CodecBytes bytes{};

  double cells() const;
};

struct Probe {
  double voxel_size = 0;
  Vec3i domain;  // its cells at the start of the range
  int threads = 0;
  std::vector<ProbeFrame> frames;  // from the start of the range, without gaps
  bool complete = false;           // the last frame of the range is among them
};

/// When a probe ends before the end of the range.
struct ProbeLimit {
  double seconds = 0;
  int threads = 0;  // to compute with; 0: one for each processor
  std::function<bool()> interrupted;
};

/// Simulates from the start of the volume's range with this voxel size. A failure if the run fails,
/// or is interrupted.
Outcome run_probe(Probe& probe, host::BaseObject& volume, double voxel_size,
                  const ProbeLimit& limit);

/// The same from the finished run of the unchanged scene in the volume's cache, whose time is
/// spread over the frames by their cells. False if there is none, or if its time isn't known.
/// `of_channels` stays 0.
bool read_finished_probe(Probe& probe, host::BaseObject& volume);

}  // namespace nbx
