#include "C4D/run/warnings/channel_rows.h"
#include "C4D/run/warnings/scene_checks.h"
#include "C4D/run/warnings/wording.h"
#include "C4D/settings/channel_settings.h"

namespace nbx {

namespace {

using ChannelChoice = Parameter<VolumeChannel>;
using Curve = Parameter<host::CurvePoints>;

/// The parameters of smoke or fire.
struct Look {
  const ChannelChoice &channel, &density_channel;
  const Curve& density_curve;
};

bool is_chosen(const SceneSurvey& survey, const ChannelChoice& choice) {
  return survey.p(choice) != OVOLUME_CHANNEL_NONE;
}

/// Why frames don't hold what the parameter selects.
enum class Missing { kNo, kNotSimulated, kNotCached, kNotMade };

Missing what_is_missing(const SceneSurvey& survey, const ChannelChoice& choice) {
  const int key = selected_channel(survey.p, choice);
  if (key == kNoChannel) return Missing::kNo;  // a ramp
  if (!survey.simulates(key)) return Missing::kNotSimulated;
  if (!survey.p(channel_row(key).cache)) return Missing::kNotCached;
  return survey.is_made(key) ? Missing::kNo : Missing::kNotMade;
}

bool is_visible(const SceneSurvey& survey, const Look& look) {
  return is_chosen(survey, look.channel) && what_is_missing(survey, look.channel) == Missing::kNo;
}

/// Whether the user chose a channel that nothing makes, which an earlier warning is about.
bool is_explained(const SceneWarnings& all, const SceneSurvey& survey,
                  const ChannelChoice& choice) {
  return !all.empty() && survey.p(choice) != choice.default_value &&
         what_is_missing(survey, choice) == Missing::kNotMade;
}

void check_choice(SceneWarnings& all, const SceneSurvey& survey, const ChannelChoice& choice) {
  const Missing missing = what_is_missing(survey, choice);
  if (survey.p(choice) == choice.default_value || missing == Missing::kNo) return;
  if (is_explained(all, survey, choice)) return;
  const std::string& channel = channel_row(selected_channel(survey.p, choice)).name;
  const std::string switch_name =
      (missing == Missing::kNotSimulated ? "simulate_" : "cache_") + channel;
  all.push_back(
      {survey.name(), parameter_name(survey.volume, choice),
       setting_text(survey.volume, choice) + ", but " +
           (missing == Missing::kNotMade ? "nothing makes " + channel + ": choose"
                                         : switch_name + " is off: turn it on, or choose") +
           " another channel"});
}

/// A density curve that is 0 for all values that occur.
void check_density(SceneWarnings& all, const SceneSurvey& survey, const Look& look) {
  if (!is_visible(survey, look)) return;
  const int key = selected_channel(survey.p, look.density_channel);
  if (key == kNoChannel || !survey.is_made(key)) return;
  const std::optional<double> most =
      survey.is_burned_to(key) ? std::nullopt : survey.most_given(key);
  if (!is_zero(survey.p(look.density_curve), most)) return;
  const std::string curve = parameter_name(survey.volume, look.density_curve);
  const std::string range = most ? "from 0 to " + number_text(*most) + ", the largest " +
                                       channel_row(key).name + " of an emitter,"
                                 : "everywhere,";
  all.push_back({survey.name(), curve,
                 curve + " is 0 " + range + " so nothing is visible: raise the curve where " +
                     channel_row(key).name + " occurs"});
}

/// The first channel that pictures could show.
std::string cure(const SceneSurvey& survey) {
  for (const ChannelRow& row : channel_rows())
    if (survey.is_made(row.key))
      return "set " + std::string(row.key == kDensity ? "smoke" : "fire") + "_channel to " +
             row.name + (survey.p(row.cache) ? "" : " and turn on cache_" + row.name);
  return {};
}

void warn_of_nothing(SceneWarnings& all, const SceneSurvey& survey,
                     const std::array<Look, 2>& looks) {
  const auto state = [&](const Look& look) {
    const Missing missing =
        is_chosen(survey, look.channel) ? what_is_missing(survey, look.channel) : Missing::kNo;
    return setting_text(survey.volume, look.channel) +
           (missing == Missing::kNo             ? ""
            : missing == Missing::kNotSimulated ? ", which isn't simulated"
            : missing == Missing::kNotCached    ? ", which isn't cached"
                                                : ", which nothing makes");
  };
  all.push_back({survey.name(), "smoke_channel",
                 "pictures show nothing: " + state(looks[0]) + ", and " + state(looks[1]) + ": " +
                     cure(survey)});
}

}  // namespace

void check_look(SceneWarnings& all, const SceneSurvey& survey) {
  if (cure(survey).empty()) return;  // there is no gas to show
  const std::array<Look, 2> looks{
      {{OVOLUME.SMOKE_CHANNEL, OVOLUME.SMOKE_DENSITY_CHANNEL, OVOLUME.SMOKE_DENSITY_CURVE},
       {OVOLUME.FIRE_CHANNEL, OVOLUME.FIRE_DENSITY_CHANNEL, OVOLUME.FIRE_DENSITY_CURVE}}};
  const std::size_t before = all.size();
  if (is_visible(survey, looks[0]) && survey.p(OVOLUME.SMOKE_DENSITY) == 0 &&
      !survey.volume.IsAnimated(OVOLUME.SMOKE_DENSITY))
    all.push_back({survey.name(), "smoke_density",
                   "smoke_density is 0, so the smoke is invisible: set it above 0"});
  for (const Look& look : looks) {
    if (!is_chosen(survey, look.channel)) continue;
    check_choice(all, survey, look.channel);
    if (is_chosen(survey, look.density_channel)) check_choice(all, survey, look.density_channel);
    check_density(all, survey, look);
  }
  const bool is_settled =
      all.size() > before || std::ranges::any_of(looks, [&](const Look& look) {
        return is_visible(survey, look) || is_explained(all, survey, look.channel);
      });
  if (!is_settled) warn_of_nothing(all, survey, looks);
}

}  // namespace nbx
