// What a run will cost, from two probes of it: one of the whole range with larger voxels (coarse),
// one of the first frames with the real ones (fine).
//
// The model, for a frame f of the range; k is the ratio of the two voxel sizes, p the last frame
// that both probes have:
//
//   box        The faces of the coarse box, times k, moved by half of what they differ in at p, and
//              clipped by the domain. The box grows as it does in the coarse probe: gas rises and
//              spreads at the same speed in units, whatever the voxels are.
//   substeps   ceil(travel), from 1 to max_substeps. The fastest gas crosses k times as many
//              voxels; a factor makes the sum right over the frames that both probes have.
//   seconds    S (a + b cells) for S substeps, where a is mainly the sources. Least squares of the
//              relative error over the fine frames.
//   bytes      Bytes per cell of the coarse frame, times the ratio of both at p, times the cells.
//              Gas fills the same part of the box.
//   memory     That of the process before the run, and the workspace of the largest box, by the
//              formula that decides whether a run may start (workspace_bytes), with a quarter more
//              for what pools keep. The command adds it.
//
// Without a coarse probe that reaches the end, the last frames repeat the growth of those before.
// An up-resolution pass of the factor n has n^3 times the cells, and frames of as many bytes per
// cell. It has no pressure and doesn't advect its velocity, so that a substep costs what the
// channels cost, and the noise comes once a frame (kUpresNoise).
#pragma once

#include <vector>

#include "C4D/forecast/probe_run.h"

namespace nbx {

/// Time of the noise of an up-resolution pass for a cell and frame, relative to the channels' for a
/// cell and substep. Modeled, not measured: a band of noise into a field costs about half of the
/// MacCormack advection of one channel, and a factor of 2 or 3 adds one band.
inline constexpr double kUpresNoise = 0.5;

struct ForecastFrame {
  int frame = 0;
  double cells = 0;
  int substeps = 0;
  double seconds = 0;
  CodecBytes bytes{};
};

struct Forecast {
  int factor = 1;     // of the up-resolution pass; 1 for the plain run
  Vec3i largest_box;  // in cells
  std::vector<ForecastFrame> frames;

  double seconds() const;
  double longest_frame() const;  // seconds
  CodecBytes bytes() const;
};

/// What the model takes from the scene.
struct ForecastScene {
  int last = 0;  // frame of the range
  Vec3i domain;  // cells at its start
  double cfl = 1;
  int max_substeps = 1;
};

/// The plain run. `fine` may be complete: it then is the forecast.
Forecast forecast_run(const ForecastScene& scene, const Probe& coarse, const Probe& fine);

/// The up-resolution pass after that run.
Forecast forecast_upres(const ForecastScene& scene, const Forecast& plain, const Probe& coarse,
                        const Probe& fine, int factor);

}  // namespace nbx
