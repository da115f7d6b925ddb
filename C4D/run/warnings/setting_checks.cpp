#include <map>

#include "C4D/run/warnings/channel_rows.h"
#include "C4D/run/warnings/scene_checks.h"
#include "C4D/run/warnings/wording.h"

namespace nbx {

namespace {

using Ids = Condition::Ids;

/// Parameters that an amount of 0 makes useless. The tables don't gray them, since keyframes may
/// raise the amount.
Ids amount_blockers(std::int32_t id, const host::BaseList2D& volume) {
  struct Rule {
    Condition condition;
    Ids ids;
  };
  static const std::vector<Rule> rules{
      {is_not(OVOLUME.NOISE_STRENGTH, 0.0),
       {OVOLUME.NOISE_SIZE_MIN, OVOLUME.NOISE_SIZE_MAX, OVOLUME.NOISE_PERSISTENCE,
        OVOLUME.NOISE_PERIOD, OVOLUME.NOISE_DRIVER, OVOLUME.NOISE_CURVE}},
      {is_not(OVOLUME.SMOKE_NOISE_AMOUNT, 0.0),
       {OVOLUME.SMOKE_NOISE_SCALE_A, OVOLUME.SMOKE_NOISE_SCALE_B, OVOLUME.SMOKE_NOISE_GAIN,
        OVOLUME.SMOKE_NOISE_PERIOD}},
      {is_not(OVOLUME.FIRE_NOISE_AMOUNT, 0.0),
       {OVOLUME.FIRE_NOISE_SCALE_A, OVOLUME.FIRE_NOISE_SCALE_B, OVOLUME.FIRE_NOISE_GAIN,
        OVOLUME.FIRE_NOISE_PERIOD}},
      {is_not(OVOLUME.BUOYANCY_DENSITY, 0.0), {OVOLUME.DIRECTION_DENSITY}},
      {is_not(OVOLUME.BUOYANCY_TEMPERATURE, 0.0), {OVOLUME.DIRECTION_TEMPERATURE}},
      {is_not(OVOLUME.WIND_SPEED, 0.0), {OVOLUME.WIND_DIRECTION}},
      {is_not(OVOLUME.MAX_SUBSTEPS, 1), {OVOLUME.CFL}},
      {is_not(OVOLUME.MOTION_BLUR, 0.0), {OVOLUME.MOTION_BLUR_STEP}},
      {on(OVOLUME.CACHE_VELOCITY),
       {OVOLUME.MOTION_BLUR, OVOLUME.SMOKE_DISPLACE, OVOLUME.FIRE_DISPLACE,
        OVOLUME.PARTICLE_ADVECTION}}};
  for (const Rule& rule : rules)
    if (std::ranges::count(rule.ids, id)) {
      const Ids blockers = rule.condition.blockers(ParameterReader(volume));
      if (!blockers.empty()) return blockers;
    }
  return {};
}

/// Whether a value turns something off, and so has nothing to be in the way of.
bool is_off(const host::ParameterValue& value) {
  if (const auto* b = std::get_if<bool>(&value)) return !*b;
  if (const auto* n = std::get_if<std::int32_t>(&value))
    return *n == 0 || *n == OVOLUME_CHANNEL_NONE;
  if (const auto* x = std::get_if<double>(&value)) return *x == 0;
  return false;
}

/// Whether the user chose something else than the default. Paths, links and times are notes that
/// people keep for later.
bool is_set(const host::ParameterInfo& info, const host::BaseList2D& element) {
  using enum host::ParameterType;
  if (!info.stored || !info.listed || info.type == Filename || info.type == Link ||
      info.type == Links || info.type == Time || info.type == String)
    return false;
  if (element.IsAnimated(info.id)) return true;
  const host::ParameterValue* value = element.GetDataInstance().Find(info.id);
  return value && !(*value == info.default_value) && !is_off(*value);
}

/// Parameters without effect, by the one that takes it from them.
template <class BlockersOf>
std::map<std::int32_t, std::vector<std::string>> without_effect(const host::BaseList2D& element,
                                                                const BlockersOf& blockers_of) {
  std::map<std::int32_t, std::vector<std::string>> found;
  for (const host::ParameterInfo& info : element.GetDescription().parameters) {
    if (!is_set(info, element)) continue;
    const Ids blockers = blockers_of(info.id);
    const bool varies =
        std::ranges::any_of(blockers, [&](std::int32_t id) { return element.IsAnimated(id); });
    if (!blockers.empty() && !varies) found[blockers.front()].push_back(info.Name());
  }
  return found;
}

template <class BlockersOf>
void check_element(SceneWarnings& all, const host::BaseList2D& element, const std::string& object,
                   const std::string& subject, const BlockersOf& blockers_of) {
  for (const auto& [blocker, names] : without_effect(element, blockers_of)) {
    const bool one = names.size() == 1;
    all.push_back({object, names.front(),
                   subject + list_text(names) + (one ? " has" : " have") + " no effect while " +
                       setting_text(element, blocker) + ": change " +
                       parameter_name(element, blocker) + ", or remove " + (one ? "it" : "them")});
  }
}

}  // namespace

void check_settings(SceneWarnings& all, const SceneSurvey& survey) {
  const host::BaseObject& volume = survey.volume;
  check_element(all, volume, survey.name(), "", [&](std::int32_t id) {
    const Ids blockers = OVOLUME.blockers(id, volume);
    return blockers.empty() ? amount_blockers(id, volume) : blockers;
  });
  for (const EmitterFacts& e : survey.emitters)
    if (e.on)
      check_element(all, *e.tag, e.name(), emitter_subject(e.name()),
                    [&](std::int32_t id) { return TVOLUME.blockers(id, *e.tag); });
}

}  // namespace nbx
