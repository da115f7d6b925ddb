// How the state of a run becomes a frame of its cache.
#include "cache/bfs.h"
#include "cache/slot_handle.h"
#include "simulation/simulation3d.h"
#include "util/cuda_host_util.h"
#include "util/log.h"

namespace nbx {

namespace {

// The matrix of a frame works on row vectors in right-handed world coordinates: a flip of z, then
// the world-to-cell map of the domain.
GridMatrix grid_matrix(const Affine3d& world_to_grid) {
  GridMatrix m{};
  for (int row = 0; row < 3; ++row) {
    const double flip = row == 2 ? -1 : 1;
    for (int column = 0; column < 3; ++column)
      m[4 * row + column] = flip * world_to_grid.rows[column][row];
  }
  for (int column = 0; column < 3; ++column) m[12 + column] = world_to_grid.translation[column];
  m[15] = 1;
  return m;
}

}  // namespace

void Simulation3D::fill_frame(SimFrame& frame, const std::set<int>& channels,
                              const FrameTime& time) {
  const GridMatrix matrix = grid_matrix(domain.world_to_grid);
  for (FrameStorable* storable : storables_) storable->store(frame, channels, matrix);
  frame.simTime = clock.sim_time;
  frame.frameTime = time;
  frame.valid = true;
  frame.saved = false;
}

bool Simulation3D::store_frame(const FrameTime& time, int substep) {
  if (!sink.target_cache) {
    LogMessage() << "Failed to store simulation frame " << time.frame();
    return false;
  }
  const double before = sink.target_cache->seconds_waited();
  try {
    const bool stored = sink.cache_direct ? write_frame(time, substep) : queue_frame(time, substep);
    times_.dsk = sink.target_cache->seconds_waited() - before;
    return stored;
  } catch (const CUDAException&) {
    LogMessage() << "CUDA exception during store";
    throw;
  }
}

bool Simulation3D::write_frame(const FrameTime& time, int substep) {
  SimFrame frame;
  frame.ownsData = false;  // the frame is written before the state changes
  frame.substep = substep;
  fill_frame(frame, sink.cached_channels, time);
  return sink.target_cache->write_through(frame);
}

bool Simulation3D::queue_frame(const FrameTime& time, int substep) {
  SlotHandle slot = SlotHandle::for_storing(sink.target_cache, time.frame(), substep);
  fill_frame(*slot, sink.cached_channels, time);
  slot.stored();
  return true;
}

}  // namespace nbx
