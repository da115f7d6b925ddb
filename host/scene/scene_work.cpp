#include "host/scene/scene_work.h"

#include <algorithm>
#include <cmath>

#include "host/base/document_error.h"
#include "host/scene/builtin_classes.h"
#include "host/scene/document.h"
#include "host/scene/particle_run.h"
#include "host/scene/primitive_mesh.h"

namespace host {
namespace {

/// The largest value of a number at any time.
double Most(const SceneObject& object, std::int32_t id) {
  const auto track = object.State().tracks.find(id);
  if (track == object.State().tracks.end()) return object.GetDataInstance().GetReal(id);
  double most = 0;
  for (const Key& key : track->second.keys)
    if (const double* value = std::get_if<double>(&key.value)) most = std::max(most, *value);
  return most;
}

double Polygons(const SceneObject& object) {
  if (IsPrimitive(object.GetType()))
    return PrimitivePolygons(object.GetType(), object.GetDataInstance());
  return object.polygons.size();
}

/// The largest number of particles that an emitter can have at once.
double HeldParticles(const SceneObject& object) {
  if (object.GetType() != kParticleEmitter || !object.IsOn()) return 0;
  const BaseContainer& data = object.GetDataInstance();
  const double life = Most(object, kEmitterLife) * (1 + data.GetReal(kEmitterLifeVariation));
  const double births = data.GetTime(kEmitterEnd).Get() - data.GetTime(kEmitterStart).Get();
  const double held = Most(object, kEmitterRate) * std::clamp(births, 0.0, life);
  return std::min<double>(std::ceil(held), ParticleRun::kMostParticles);
}

/// The number of particle steps before the first frame. A step without particles has a cost too.
double ParticleSteps(const SceneObject& object, const Document& document) {
  if (object.GetType() != kParticleEmitter || !object.IsOn()) return 0;
  const double start =
      object.GetDataInstance().GetTime(kEmitterStart).GetFramePosition(document.GetFps());
  return std::max(document.start - start, 0.0) * (HeldParticles(object) + 100);
}

/// Throws if all objects together exceed `most`.
template <class Count>
void Check(const Document& document, Count count, double most, const std::string& what,
           const std::string& cure) {
  double all = 0, largest = 0;
  const SceneObject* where = nullptr;
  for (const SceneObject* object : document.AllObjects()) {
    const double here = count(*object);
    all += here;
    if (here > largest) where = object;
    largest = std::max(largest, here);
  }
  if (!(all > most)) return;
  throw DocumentError(document.PlaceOf(*where),
                      "the scene needs " + std::to_string(std::llround(all)) + " " + what +
                          ", more than " + std::to_string(std::llround(most)) +
                          "; most of them are here: " + cure + ", or pass --force");
}

}  // namespace

void CheckWork(const Document& document) {
  Check(document, Polygons, kMostScenePolygons, "polygons", "lower its segments and rings");
  Check(document, HeldParticles, kMostSceneParticles, "particles at once",
        "lower its rate or life");
  Check(
      document, [&](const SceneObject& object) { return ParticleSteps(object, document); },
      kMostParticleSteps, "steps of particles before its first frame",
      "let the emitter start later");
}

}  // namespace host
