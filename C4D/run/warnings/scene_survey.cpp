#include "C4D/run/warnings/scene_survey.h"

#include "C4D/run/warnings/channel_rows.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/channel_settings.h"
#include "C4D/settings/volume_grid.h"

namespace nbx {

namespace {

void add_object(SceneSurvey& survey, std::vector<host::BaseObject*>& others,
                host::BaseObject& object, bool is_on) {
  for (host::BaseTag* tag = object.GetFirstTag(); tag; tag = tag->GetNext())
    if (tag->GetType() == kVolumeTag) survey.emitters.emplace_back(*tag);
  is_on = is_on && object.GetDeformMode();
  if (is_on && object.GetType() == kVolumeObject && &object != &survey.volume)
    others.push_back(&object);
  for (host::BaseObject* child = object.GetDown(); child; child = child->GetNext())
    add_object(survey, others, *child, is_on);
}

/// The other volumes of the document.
std::vector<host::BaseObject*> walk(SceneSurvey& survey) {
  std::vector<host::BaseObject*> others;
  host::BaseObject* object = survey.volume.GetDocument().GetFirstObject();
  for (; object; object = object->GetNext()) add_object(survey, others, *object, true);
  for (const host::BaseObject* other : others)
    for (const ChannelRow& row : channel_rows())
      if (ParameterReader(*other)(row.simulate)) survey.other_channels.insert(row.key);
  survey.has_other_volumes = !others.empty();
  return others;
}

void look_at_frame(SceneSurvey& survey, const std::vector<host::BaseObject*>& others) {
  const SourceDomain domain(survey.volume);
  survey.domain.add(domain.world());
  survey.wind = std::max(survey.wind, survey.p(OVOLUME.WIND_SPEED));
  std::vector<SourceDomain> other_domains;
  for (const host::BaseObject* other : others) other_domains.emplace_back(*other);
  for (EmitterFacts& emitter : survey.emitters) look_at(emitter, domain, other_domains);
}

}  // namespace

std::optional<SceneSurvey> survey_scene(host::BaseObject& volume, const host::BreakTest* breaks) {
  SceneSurvey survey{volume, run_times(volume), ParameterReader(volume)};
  const std::vector<host::BaseObject*> others = walk(survey);
  host::BaseDocument& document = volume.GetDocument();
  FrameTime now = survey.times.start;
  bool finished = true;
  for (;;) {
    look_at_frame(survey, others);
    survey.is_complete = !fraction_less(now.time, survey.times.end.time);
    if (survey.is_complete || std::ranges::all_of(survey.emitters, &EmitterFacts::settled)) break;
    now = next_frame(now);
    document.SetTime(to_base_time(now.time));
    finished = document.ExecutePasses(breaks, true, true, true);
    if (!finished) break;
  }
  if (now != survey.times.start) evaluate(document, to_base_time(survey.times.start.time));
  return finished ? std::optional(std::move(survey)) : std::nullopt;
}

std::string SceneSurvey::frames() const {
  const std::string first = std::to_string(times.start.frame());
  const std::string last = std::to_string(times.end.frame());
  return first == last ? "frame " + first : "frames " + first + " to " + last;
}

bool SceneSurvey::has_few_voxels() const {
  constexpr double few = 1000;  // 10 x 10 x 10
  const Vec3d n = volume_grid(volume, p(OVOLUME.VOXEL_SIZE)).cells;
  return n[0] * n[1] * n[2] < few;
}

bool SceneSurvey::simulates(int key) const { return p(channel_row(key).simulate); }

bool SceneSurvey::starts_with_gas() const { return p(OVOLUME.LOAD_STATE); }

bool SceneSurvey::is_given(int key) const {
  return starts_with_gas() || std::ranges::any_of(emitters, [&](const EmitterFacts& e) {
           return e.on && e.has_shape && (e.reaches || !is_complete) &&
                  (e.amounts.at(key) > 0 || (!is_complete && e.animated.contains(key)));
         });
}

std::optional<double> SceneSurvey::most_given(int key) const {
  if (starts_with_gas()) return {};
  double most = 0;
  for (const EmitterFacts& e : emitters) {
    if (!e.on || !e.may_give(key)) continue;
    const bool adds = ParameterReader(*e.tag)(channel_row(key).mode) == TVOLUME_MODE_ADD;
    if (adds || (!is_complete && e.animated.contains(key))) return {};
    most = std::max(most, e.amounts.at(key));
  }
  return most;
}

bool SceneSurvey::fuel_ignites() const {
  const int driver = selected_channel(p, OVOLUME.FUEL_DRIVER);
  if (driver == kNoChannel || !simulates(driver)) return true;
  const std::optional<double> most = most_given(driver);
  return !most || !is_zero(p(OVOLUME.FUEL_CURVE), most);
}

bool SceneSurvey::fuel_burns() const {
  const bool decays = p(OVOLUME.DECAY_FUEL) > 0 || volume.IsAnimated(OVOLUME.DECAY_FUEL);
  return simulates(kFuel) && is_given(kFuel) && decays && fuel_ignites();
}

bool SceneSurvey::is_burned_to(int key) const {
  if (key == kFuel || !fuel_burns()) return false;
  if (key == kBurn) return true;
  const auto& amount = key == kDensity ? OVOLUME.FUEL_TO_DENSITY : OVOLUME.FUEL_TO_TEMPERATURE;
  return p(amount) > 0 || volume.IsAnimated(amount);
}

// Cubic interpolation overshoots a little.
bool is_zero(const host::CurvePoints& curve, std::optional<double> most) {
  const RationalSpline spline = to_spline(curve);
  double end = 1;
  for (const host::CurvePoint& point : curve) end = std::max(end, point.x + 1);
  if (most) end = *most * 1.05;
  constexpr int samples = 256;
  for (int i = 0; i <= samples; ++i)
    if (spline.evaluate(static_cast<float>(end * i / samples)) > 0) return false;
  return std::ranges::none_of(
      curve, [end](const host::CurvePoint& c) { return c.x >= 0 && c.x <= end && c.y > 0; });
}

}  // namespace nbx
