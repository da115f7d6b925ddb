#include "C4D/run/warnings/channel_rows.h"
#include "C4D/run/warnings/scene_checks.h"
#include "C4D/run/warnings/wording.h"
#include "C4D/settings/channel_settings.h"

namespace nbx {

namespace {

/// A driver that isn't simulated; `effect` is what happens then.
void check_driver(SceneWarnings& all, const SceneSurvey& survey,
                  const Parameter<VolumeChannel>& driver, const std::string& effect) {
  const int key = selected_channel(survey.p, driver);
  if (key == kNoChannel || survey.simulates(key)) return;
  const std::string& channel = channel_row(key).name;
  all.push_back({survey.name(), parameter_name(survey.volume, driver),
                 setting_text(survey.volume, driver) + ", but simulate_" + channel +
                     " is off, so " + effect + ": turn it on, or choose another channel"});
}

/// Fuel that is there but doesn't burn.
void check_burning(SceneWarnings& all, const SceneSurvey& survey) {
  if (!survey.simulates(kFuel) || survey.starts_with_gas() || !survey.is_given(kFuel)) return;
  check_driver(all, survey, OVOLUME.FUEL_DRIVER, "only decay_fuel limits how much fuel burns");
  if (survey.fuel_burns()) return;
  if (survey.fuel_ignites()) {
    all.push_back(
        {survey.name(), "decay_fuel", "decay_fuel is 0, so the fuel never burns: set it above 0"});
    return;
  }
  const std::string& driver = channel_row(selected_channel(survey.p, OVOLUME.FUEL_DRIVER)).name;
  const double most = *survey.most_given(selected_channel(survey.p, OVOLUME.FUEL_DRIVER));
  all.push_back({survey.name(), "fuel_curve",
                 "the fuel never burns: emitters give " + driver + " of at most " +
                     number_text(most) + ", where fuel_curve is 0: raise " + driver +
                     " of an emitter, or let fuel_curve begin lower"});
}

/// Channels that the user turned on for nothing. Temperature is on by default.
void check_made(SceneWarnings& all, const SceneSurvey& survey) {
  const auto is_made = [&](const ChannelRow& row) { return survey.is_made(row.key); };
  // Without any gas, the emitters' warnings say why.
  if (std::ranges::none_of(channel_rows(), is_made)) return;
  for (const ChannelRow& row : channel_rows()) {
    if (row.simulate.default_value || !survey.simulates(row.key) || is_made(row)) continue;
    if (row.key == kBurn && survey.simulates(kFuel)) continue;  // the fuel's warning says it
    const std::string cure = row.key == kBurn ? "simulate fuel and give an emitter fuel"
                                              : "set " + row.name + " of an emitter";
    all.push_back({survey.name(), "simulate_" + row.name,
                   "simulate_" + row.name + " is on, but nothing makes " + row.name + ": " + cure +
                       ", or turn simulate_" + row.name + " off"});
  }
}

}  // namespace

void check_channels(SceneWarnings& all, const SceneSurvey& survey) {
  if (std::ranges::none_of(channel_rows(),
                           [&](const ChannelRow& row) { return survey.simulates(row.key); }))
    all.push_back({survey.name(), "simulate_density",
                   "no channel is simulated: turn on simulate_density for smoke"});
  if (survey.p(OVOLUME.NOISE_STRENGTH) > 0)
    check_driver(all, survey, OVOLUME.NOISE_DRIVER, "the noise is the same everywhere");
  const std::size_t before = all.size();
  check_burning(all, survey);
  if (all.size() == before) check_made(all, survey);
}

}  // namespace nbx
