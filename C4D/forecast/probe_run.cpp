#include "C4D/forecast/probe_run.h"

#include <QTemporaryDir>
#include <algorithm>
#include <cmath>
#include <filesystem>

#include "C4D/parameters/volume_parameters.h"
#include "C4D/run/finished_run.h"
#include "C4D/run/run_failure.h"
#include "C4D/run/silent_front_end.h"
#include "C4D/run/simulation_run.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/volume_cache.h"
#include "cache/cache_info.h"
#include "cache/cache_notes.h"
#include "cache/frame_names.h"
#include "util/stopwatch.h"

namespace nbx {

namespace {

constexpr int kFramesPacked = 8;  // frames of a probe that are stored with every codec

/// Gives the volume the parameters of a probe for as long as it lives.
class ProbeParameters {
 public:
  ProbeParameters(host::BaseObject& volume, double voxel_size, const std::string& directory)
      : volume_(volume), before_(volume.GetDataInstance()) {
    host::BaseContainer& p = volume.GetDataInstance();
    p.SetReal(OVOLUME.VOXEL_SIZE, voxel_size);
    p.SetFilename(OVOLUME.CACHE_NAME, {directory});
    p.SetBool(OVOLUME.CACHE_LOCK, false);
    p.SetBool(OVOLUME.CACHE_SYNC, false);
    p.SetBool(OVOLUME.COMPRESS_CACHE, false);
    p.SetBool(OVOLUME.LOAD_STATE, false);
    p.SetLong(OVOLUME.SAVE_STATE_EVERY, 0);
  }
  ~ProbeParameters() {
    volume_.GetDataInstance() = before_;
    evaluate(volume_.GetDocument(), time_range(volume_).start);
  }
  ProbeParameters(const ProbeParameters&) = delete;
  ProbeParameters& operator=(const ProbeParameters&) = delete;

 private:
  host::BaseObject& volume_;
  const host::BaseContainer before_;
};

class ProbeFrontEnd final : public SilentFrontEnd {
 public:
  ProbeFrontEnd(Probe& probe, const ProbeLimit& limit) : probe_(probe), limit_(limit) {}

  bool may_exceed_memory(const std::string&) override { return true; }
  int threads() const override { return limit_.threads; }
  Stop wanted_stop() const override {
    if (limit_.interrupted && limit_.interrupted()) return Stop::kNow;
    return watch_.seconds() > limit_.seconds ? Stop::kAtFrameEnd : Stop::kNo;
  }
  void started(const RunPlan& plan) override { probe_.domain = plan.voxels; }
  void frame_done(const FrameTime& time, Simulation3D& sim) override {
    const StageTimes& t = sim.stage_times();
    const double step = sim.fluid().tracer_velocity()[0]->empty() ? 0 : sim.fluid().max_step();
    ProbeFrame frame{time.frame(), sim.domain.active_box, sim.clock.step_index, 0, 0, t.pro, {}};
    if (step > 0) frame.travel = sim.clock.sim_time.length.value() / step;
    frame.seconds = t.src + t.sol + t.res + t.beg + t.pro + t.vel + t.sav + t.out;
    probe_.frames.push_back(frame);
  }

 private:
  Probe& probe_;
  const ProbeLimit& limit_;
  Stopwatch watch_;
};

/// Sizes of the frame with every codec.
CodecBytes packed_sizes(const std::string& path, const std::string& scratch) {
  SimFrame frame;
  CodecBytes bytes{};
  if (!frame.load(path)) return bytes;
  for (const auto& [type, grid] : frame.grids) static_cast<void>(frame.grid(type));
  for (const Codec codec : {Codec::kRaw, Codec::kRunLength, Codec::kPredictive}) {
    BcfFile out;
    std::uint64_t size = 0;
    if (frame.write_loaded(size, out, scratch, codec, Sync::kNone))
      bytes[static_cast<std::size_t>(codec)] = static_cast<double>(size);
  }
  return bytes;
}

/// Measures some of the frames, spread over the probe. The others get the bytes per cell of their
/// neighbors.
void measure_sizes(Probe& probe, const std::string& directory, const std::string& scratch) {
  const auto files = list_frames(directory);
  const int count = static_cast<int>(probe.frames.size());
  int before = -1;
  for (int i = 0; i < std::min(count, kFramesPacked); ++i) {
    const int at = count <= kFramesPacked ? i : i * (count - 1) / (kFramesPacked - 1);
    ProbeFrame& frame = probe.frames[at];
    const auto file = files.find(frame.frame);
    if (file != files.end()) frame.bytes = packed_sizes(directory + "/" + file->second, scratch);
    for (int between = before + 1; between < at; ++between)
      for (std::size_t c = 0; c < frame.bytes.size(); ++c) {
        const ProbeFrame &a = probe.frames[before], &b = frame;
        const double x = static_cast<double>(between - before) / (at - before);
        const double per_cell = (1 - x) * a.bytes[c] / std::max(a.cells(), 1.0) +
                                x * b.bytes[c] / std::max(b.cells(), 1.0);
        probe.frames[between].bytes[c] = per_cell * probe.frames[between].cells();
      }
    before = at;
  }
}

Outcome simulate(host::BaseObject& volume, ProbeFrontEnd& front_end, bool& complete) {
  SimulationRun run(&volume, RunOrigin{}, front_end);
  Outcome done = outcome_of([&] {
    Outcome prepared = run.prepare();
    while (prepared && run.has_next()) run.step();
    return prepared;
  });
  complete = run.reached_end();
  const Outcome finished = outcome_of([&] { return run.finish(); });
  return done ? finished : done;
}

}  // namespace

double ProbeFrame::cells() const {
  const Vec3i n = box.size();
  return box.empty() ? 0 : 1.0 * n[0] * n[1] * n[2];
}

Outcome run_probe(Probe& probe, host::BaseObject& volume, double voxel_size,
                  const ProbeLimit& limit) {
  const QTemporaryDir folder;
  if (!folder.isValid())
    return Outcome::failure("no folder for the probe: " + folder.errorString().toStdString());
  const std::string directory = folder.filePath("probe").toStdString();
  std::filesystem::create_directory(directory);
  probe = {};
  probe.voxel_size = voxel_size;
  const ProbeParameters parameters(volume, voxel_size, directory);
  ProbeFrontEnd front_end(probe, limit);
  if (Outcome done = simulate(volume, front_end, probe.complete); !done) return done;
  if (probe.frames.empty() || front_end.wanted_stop() == Stop::kNow)
    return Outcome::failure("the probe was interrupted");
  measure_sizes(probe, directory, directory + "/scratch");
  return Outcome::success();
}

bool read_finished_probe(Probe& probe, host::BaseObject& volume) {
  if (!find_finished_run(volume, "")) return false;
  const std::string directory = find_cache(volume);
  const std::vector<RunNote> runs = read_cache_notes(directory).runs;
  if (runs.size() != 1 || runs[0].seconds <= 0) return false;
  const RunTimes times = run_times(volume);
  Probe all;
  double cells = 0;
  for (const auto& [number, name] : list_frames(directory)) {
    ProbeFrame& frame = all.frames.emplace_back();
    frame.frame = number;
    frame.box = read_frame_file_info(directory + "/" + name, false).box;
    cells += frame.cells();
  }
  std::erase_if(all.frames, [&](const ProbeFrame& frame) {
    return frame.frame < times.start.frame() || frame.frame > times.end.frame();
  });
  const double substeps = 1.0 * runs[0].substeps / static_cast<double>(all.frames.size());
  for (ProbeFrame& frame : all.frames) {
    frame.seconds = runs[0].seconds * frame.cells() / std::max(cells, 1.0);
    frame.substeps = std::max(1, static_cast<int>(std::lround(substeps)));
  }
  const QTemporaryDir scratch;
  measure_sizes(all, directory, scratch.filePath("scratch").toStdString());
  all.complete = true;
  probe = std::move(all);
  return true;
}

}  // namespace nbx
