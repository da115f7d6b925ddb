#include <algorithm>
#include <cmath>
#include <cstdio>

#include <omp.h>

#include "C4D/commands/commands.h"
#include "C4D/commands/register_command.h"
#include "C4D/commands/run_options.h"
#include "C4D/forecast/forecast.h"
#include "C4D/parameters/parameter_reader.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/run/domain_checks.h"
#include "C4D/run/run_times.h"
#include "C4D/settings/scene_settings.h"
#include "C4D/settings/volume_cache.h"
#include "C4D/sources/source_tags.h"
#include "simulation/workspace.h"
#include "util/format_size.h"
#include "util/memory.h"

namespace nbx {

namespace {

constexpr std::int32_t kForecastCommand = 1024011;
constexpr double kProbeSeconds = 10;  // by default, for the probe with the real voxels

/// Memory of a run over that of the fields of its largest box: pools keep fields of other shapes,
/// and a frame waits for the disk. Measured on the shipped scenes: 1 to 1.8.
constexpr double kPooled = 1.25;

/// "0.45 s", "12:34", "3:02:01".
std::string duration(double seconds) {
  char text[32];
  const long s = std::lround(seconds);
  if (seconds < 60)
    std::snprintf(text, sizeof text, "%.2f s", seconds);
  else if (s < 3600)
    std::snprintf(text, sizeof text, "%ld:%02ld", s / 60, s % 60);
  else
    std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", s / 3600, s / 60 % 60, s % 60);
  return text;
}

std::string size(double bytes) {
  return format_size(static_cast<std::uint64_t>(std::clamp(bytes, 0.0, 1e19)), 1);
}

std::string text(const Vec3i& v) {
  return std::to_string(v[0]) + " x " + std::to_string(v[1]) + " x " + std::to_string(v[2]);
}

/// How much larger the voxels of the coarse probe are: a 64th of the cells, or less where that is
/// still many, or an 8th where the domain is only a few voxels thick.
double coarse_ratio(const Vec3d& cells) {
  constexpr double kMostCells = 2e6, kFewVoxels = 12;
  double k = 4;
  while (cells[0] * cells[1] * cells[2] / (k * k * k) > kMostCells) k *= 2;
  const double thinnest = std::min({cells[0], cells[1], cells[2]});
  return thinnest / k < kFewVoxels ? 2 : k;
}

/// The forecasts of one volume.
class VolumeForecast {
 public:
  VolumeForecast(const host::CommandArguments& arguments, host::CommandContext& context,
                 host::BaseObject& volume)
      : arguments_(arguments), context_(context), volume_(volume) {}

  int run() {
    Outcome good = take_frames(arguments_, volume_);
    set_cache(arguments_, volume_);
    if (good) good = check_domain_and_range(volume_);
    if (!good) return refuse(good, host::kBadInput);
    read_scene();
    if (const Outcome probed = probe(); !probed)
      return context_.Interrupts() > 0 ? int{host::kInterrupted} : refuse(probed, host::kFailed);
    report();
    return host::kDone;
  }

 private:
  int refuse(const Outcome& why, host::ExitCode code) const {
    context_.Error(volume_subject(volume_) + why.reason());
    return code;
  }

  void read_scene() {
    const RunTimes times = run_times(volume_);
    const ParameterReader p(volume_);
    first_ = times.start.frame();
    voxel_size_ = p(OVOLUME.VOXEL_SIZE);
    read_run_settings(params_, sink_, volume_);
    const VolumeGrid grid = volume_grid(volume_, voxel_size_);
    ratio_ = coarse_ratio(grid.cells);
    scene_ = {times.end.frame(), grid.dims(), p(OVOLUME.CFL), p(OVOLUME.MAX_SUBSTEPS)};
    has_solids_ = has_solids(find_source_tags(volume_.GetDocument()));
    memory_before_ = static_cast<double>(resident_memory());
  }

  Outcome probe() {
    const double seconds = arguments_.GetReal("probe", kProbeSeconds);
    const auto interrupted = [this] { return context_.Interrupts() > 0; };
    const int threads = arguments_.GetLong("threads");
    from_cache_ = read_finished_probe(fine_, volume_);
    if (from_cache_) return share_of_channels({seconds / 5, threads, interrupted});
    context_.Progress("probing frames of the real size", false);
    if (Outcome done = run_probe(fine_, volume_, voxel_size_, {seconds, threads, interrupted});
        !done)
      return done;
    if (fine_.complete) return Outcome::success();
    context_.Progress("probing the whole range with larger voxels", false);
    constexpr double kTimesLonger = 3;
    const ProbeLimit limit{kTimesLonger * seconds, threads, interrupted};
    Outcome done = run_probe(coarse_, volume_, ratio_ * voxel_size_, limit);
    // Voxels of half that size have 8 times the cells, and tell more of the gas.
    const double finer = forecast_run(scene_, coarse_, fine_).seconds() / std::pow(ratio_ / 2, 3);
    if (!done || ratio_ <= 2 || finer > limit.seconds) return done;
    return run_probe(coarse_, volume_, ratio_ / 2 * voxel_size_, limit);
  }

  /// A run in the cache hasn't noted what its channels took: that is as in a short probe.
  Outcome share_of_channels(const ProbeLimit& limit) {
    Probe probe;
    if (Outcome done = run_probe(probe, volume_, ratio_ * voxel_size_, limit); !done) return done;
    double all = 0, channels = 0;
    for (const ProbeFrame& frame : probe.frames)
      all += frame.seconds, channels += frame.of_channels;
    for (ProbeFrame& frame : fine_.frames)
      frame.of_channels = all > 0 ? frame.seconds * channels / all : 0;
    return Outcome::success();
  }

  double memory(const Vec3i& box, bool solids) const {
    return memory_before_ +
           kPooled * workspace_bytes(params_, sink_, vector_cast<double>(box), solids);
  }

  void report() {
    const Forecast plain = forecast_run(scene_, coarse_, fine_);
    const int count = static_cast<int>(plain.frames.size());
    const std::string measured =
        from_cache_ ? "all of them in the cache " + find_cache(volume_)
                    : std::to_string(fine_.frames.size()) + " of them simulated to measure";
    context_.Result(volume_subject(volume_) + std::to_string(count) + " frames (" +
                    std::to_string(first_) + " to " + std::to_string(scene_.last) + "), " +
                    measured);
    char line[160];
    std::snprintf(line, sizeof line, "%-9s %-19s %9s %9s %10s %10s %10s %10s", "", "largest box",
                  "memory", "a frame", "all frames", "raw", "run-length", "compressed");
    context_.Result(line);
    show("plain", plain, memory(plain.largest_box, has_solids_));
    for (const int factor : {2, 3, 4, 8}) {
      const Forecast upres = forecast_upres(scene_, plain, coarse_, fine_, factor);
      show("factor " + std::to_string(factor), upres, memory(upres.largest_box, false));
    }
  }

  void show(const std::string& name, const Forecast& forecast, double bytes_of_memory) {
    const CodecBytes bytes = forecast.bytes();
    const double mean = forecast.seconds() / static_cast<double>(forecast.frames.size());
    char line[200];
    std::snprintf(line, sizeof line, "%-9s %-19s %9s %9s %10s %10s %10s %10s", name.c_str(),
                  text(forecast.largest_box).c_str(), size(bytes_of_memory).c_str(),
                  duration(mean).c_str(), duration(forecast.seconds()).c_str(),
                  size(bytes[0]).c_str(), size(bytes[1]).c_str(), size(bytes[2]).c_str());
    context_.Result(line);
    const Vec3d box = vector_cast<double>(forecast.largest_box);
    context_.Event("forecast", {{"object", volume_.GetName()},
                                {"factor", std::int64_t{forecast.factor}},
                                {"frames", static_cast<std::int64_t>(forecast.frames.size())},
                                {"from_cache", from_cache_},
                                {"frames_probed", static_cast<std::int64_t>(fine_.frames.size())},
                                {"largest_box", std::vector<double>(box.v.begin(), box.v.end())},
                                {"memory_bytes", bytes_of_memory},
                                {"seconds", forecast.seconds()},
                                {"seconds_per_frame", mean},
                                {"seconds_longest_frame", forecast.longest_frame()},
                                {"bytes_raw", bytes[0]},
                                {"bytes_run_length", bytes[1]},
                                {"bytes_compressed", bytes[2]}});
  }

  const host::CommandArguments& arguments_;
  host::CommandContext& context_;
  host::BaseObject& volume_;
  int first_ = 0;
  double voxel_size_ = 1, ratio_ = 4, memory_before_ = 0;
  SolverParams params_;
  FrameSink sink_;
  bool has_solids_ = false, from_cache_ = false;
  ForecastScene scene_;
  Probe coarse_, fine_;
};

class ForecastCommand final : public host::CommandData {
 public:
  host::CommandInfo GetInfo() const override {
    using host::CommonOption;
    return {.verb = "forecast",
            .help =
                "Says before a run how much time, memory and disk it takes, also with more detail: "
                "simulates some frames, and the whole range with larger voxels, and stores "
                "nothing. If the cache holds the finished run, its figures count. Without --object "
                "it looks at every enabled volume",
            .options = {{.name = "scene",
                         .value_name = "SCENE",
                         .help = "The scene document",
                         .positional = true,
                         .required = true},
                        {.name = "probe",
                         .type = host::OptionType::Real,
                         .value_name = "SECONDS",
                         .help = "Time for the frames of the real size, and up to three times as "
                                 "much for those with larger voxels; default: 10",
                         .minimum = 0,
                         .maximum = 86400}},
            .common = {CommonOption::Frames, CommonOption::Object, CommonOption::Cache,
                       CommonOption::Threads, CommonOption::Set, CommonOption::Fps,
                       CommonOption::Force}};
  }

  int Execute(const host::CommandArguments& arguments, host::CommandContext& context) override {
    const auto document = context.LoadDocument({arguments.GetString("scene")});
    if (!document) return host::kBadInput;
    std::vector<host::BaseObject*> volumes;
    if (!arguments.Has("object")) volumes = find_volumes(*document, true);
    if (volumes.empty()) volumes.push_back(context.FindObject(*document, kVolumeObject));
    for (host::BaseObject* volume : volumes) {
      if (!volume) return host::kBadInput;
      if (const int code = VolumeForecast(arguments, context, *volume).run(); code != host::kDone)
        return code;
    }
    return host::kDone;
  }
};

}  // namespace

bool register_forecast_command(host::HostServices& services, const std::string& name) {
  return register_command<ForecastCommand>(services, kForecastCommand, name);
}

}  // namespace nbx
