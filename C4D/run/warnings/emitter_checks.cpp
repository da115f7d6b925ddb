#include "C4D/parameters/volume_tag_parameters.h"
#include "C4D/run/warnings/channel_rows.h"
#include "C4D/run/warnings/scene_checks.h"
#include "C4D/run/warnings/wording.h"
#include "C4D/sources/particle_sources.h"

namespace nbx {

namespace {

struct Fault {
  std::string parameter, text;
};

/// The emitter's object or the nearest parent that is switched off.
const host::BaseObject* object_off(const host::BaseTag& tag) {
  for (const host::BaseObject* o = tag.GetObject(); o; o = o->GetUp())
    if (!o->GetDeformMode()) return o;
  return nullptr;
}

Fault switched_off(const EmitterFacts& e) {
  if (const host::BaseObject* off = object_off(*e.tag))
    return {"enabled",
            "the object \"" + off->GetName() +
                "\" is switched off, so nothing is emitted: set its \"enabled\" to true"};
  return {"enabled", "enabled is off, so nothing is emitted: turn it on"};
}

Fault no_shape(const EmitterFacts& e, const SceneSurvey& survey) {
  if (!gather_particle_objects(*e.tag->GetObject()).empty())
    return {"rate", "no particle is alive in " + survey.frames() +
                        ": check rate, life, start and end of the particle emitter"};
  if (!ParameterReader(*e.tag)(TVOLUME.SELECTIONS).empty())
    return {"selections",
            "its selections hold no polygon: select polygons, or leave selections empty to emit "
            "from the whole object"};
  return {"type",
          "the object has neither polygons nor particles: put the tag on a mesh, a primitive or a "
          "particle emitter"};
}

Fault nothing_given(const EmitterFacts& e, const SceneSurvey& survey) {
  std::vector<std::string> names, keyed;
  for (const ChannelRow& row : channel_rows()) {
    names.push_back(row.name);
    if (e.animated.contains(row.key)) keyed.push_back(row.name);
  }
  if (!keyed.empty())
    return {keyed.front(), "the keyframes of " + list_text(keyed) + " give 0 in " +
                               survey.frames() + ": move them, or simulate other frames"};
  return {"density", list_text(names) + " are 0, so nothing is emitted: set one of them above 0"};
}

Fault outside(const EmitterFacts& e, const SceneSurvey& survey) {
  return {"position", "it lies outside of the domain in " + survey.frames() + ": its box is " +
                          box_text(e.box) + ", the domain's " + box_text(survey.domain) +
                          ": move the object, or enlarge size of the volume"};
}

/// Why the emitter gives nothing to any volume; nothing if it does.
std::optional<Fault> fault_of(const EmitterFacts& e, const SceneSurvey& survey) {
  if (!e.has_shape) return no_shape(e, survey);
  if (e.solid && !e.gives_gas()) return {};
  if (!e.gives) return e.solid ? std::nullopt : std::optional(nothing_given(e, survey));
  if (e.reaches_another || e.works) return {};
  if (!e.reaches) return outside(e, survey);
  return Fault{
      "position",
      "it lies outside of the domain whenever it emits: change the keyframes so that it emits "
      "while it is inside"};
}

void check_amounts(SceneWarnings& all, const EmitterFacts& e, const SceneSurvey& survey) {
  for (const ChannelRow& row : channel_rows()) {
    if (!e.may_give(row.key) || survey.simulates(row.key)) continue;
    if (survey.other_channels.contains(row.key)) continue;
    const std::string value = e.animated.contains(row.key)
                                  ? " has keyframes"
                                  : " is " + number_text(e.amounts.at(row.key));
    all.push_back({e.name(), row.name,
                   emitter_subject(e.name()) + row.name + value + ", but simulate_" + row.name +
                       " is off: turn it on, or set " + row.name + " to 0"});
  }
}

void check_extent(SceneWarnings& all, const EmitterFacts& e, const SceneSurvey& survey) {
  if (!e.reaches || e.extent >= 1 || survey.has_few_voxels()) return;
  const double voxel_size = survey.p(OVOLUME.VOXEL_SIZE);
  all.push_back({e.name(), "voxel_size",
                 emitter_subject(e.name()) + "it is smaller than a voxel: " +
                     number_text(e.extent * voxel_size) + " units across, while voxel_size is " +
                     number_text(voxel_size) + ": make voxel_size smaller or the object larger"});
}

}  // namespace

void check_emitters(SceneWarnings& all, const SceneSurvey& survey) {
  const bool any_works = std::ranges::any_of(survey.emitters, &EmitterFacts::works);
  if (survey.emitters.empty() && !survey.starts_with_gas())
    all.push_back({survey.name(), "tags",
                   "the scene has no emitter, so the volume stays empty: give an object an emitter "
                   "tag"});
  for (const EmitterFacts& e : survey.emitters) {
    std::optional<Fault> fault;
    if (e.on)
      fault = fault_of(e, survey);
    else if (!any_works && !survey.starts_with_gas())  // else the user is trying something
      fault = switched_off(e);
    if (fault) {
      all.push_back({e.name(), fault->parameter, emitter_subject(e.name()) + fault->text});
    } else if (e.on) {
      check_amounts(all, e, survey);
      check_extent(all, e, survey);
    }
  }
  const auto only_elsewhere = [](const EmitterFacts& e) { return e.reaches_another && !e.works; };
  if (!any_works && std::ranges::any_of(survey.emitters, only_elsewhere) &&
      !survey.starts_with_gas())
    all.push_back({survey.name(), "position",
                   "no emitter lies in its domain, " + box_text(survey.domain) +
                       ": move the volume, or enlarge size"});
}

}  // namespace nbx
