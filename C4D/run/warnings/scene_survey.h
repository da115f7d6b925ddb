// What the checks know about a scene, gathered over the frames of a run.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "C4D/parameters/parameter_reader.h"
#include "C4D/run/run_times.h"
#include "C4D/run/warnings/emitter_facts.h"

namespace nbx {

struct SceneSurvey {
  host::BaseObject& volume;
  RunTimes times;                           // of the run
  ParameterReader p;                        // of the volume, at the start of the range
  std::vector<EmitterFacts> emitters = {};  // all tags of the document, also those that are off
  WorldBox domain = {};                     // of all frames
  double wind = 0;                          // fastest, units/s
  bool has_other_volumes = false;
  std::set<int> other_channels = {};  // ChannelKeys that other volumes simulate
  bool is_complete = false;           // every frame was looked at

  std::string name() const { return volume.GetName(); }
  /// "frame 0" or "frames 0 to 40".
  std::string frames() const;
  /// The domain is too small for gas to move in.
  bool has_few_voxels() const;
  bool simulates(int key) const;
  /// A run from a saved state has gas that no emitter made.
  bool starts_with_gas() const;
  /// False only if no emitter can give the channel to the volume.
  bool is_given(int key) const;
  /// The largest value that emitters can give; nothing if that isn't known.
  std::optional<double> most_given(int key) const;
  /// False only if no fuel can burn.
  bool fuel_burns() const;
  /// False if fuel_driver keeps all fuel from burning.
  bool fuel_ignites() const;
  /// Whether burning fuel can make the channel.
  bool is_burned_to(int key) const;
  /// False only if the channel stays empty.
  bool is_made(int key) const { return simulates(key) && (is_given(key) || is_burned_to(key)); }
};

/// Nothing if `breaks` stops the evaluation.
std::optional<SceneSurvey> survey_scene(host::BaseObject& volume, const host::BreakTest* breaks);

/// Whether a curve is at or below 0 from 0 to `most`, or everywhere above 0 without it.
bool is_zero(const host::CurvePoints& curve, std::optional<double> most);

}  // namespace nbx
