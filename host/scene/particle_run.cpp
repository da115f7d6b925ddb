#include "host/scene/particle_run.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "host/scene/builtin_classes.h"
#include "host/scene/document.h"

namespace host {
namespace {

/// Random numbers of one particle, with the mixing function of G. Steele, D. Lea and C. Flood, Fast
/// splittable pseudorandom number generators, OOPSLA 2014.
class Random {
 public:
  Random(std::int32_t seed, std::int64_t number)
      : state_(Mix(seed + kGamma) + 16 * kGamma * number) {}

  /// In [0, 1).
  double Next() { return (Mix(state_ += kGamma) >> 11) * 0x1p-53; }
  /// In [1 - share, 1 + share).
  double Around(double share) { return 1 + share * (2 * Next() - 1); }

 private:
  static constexpr std::uint64_t kGamma = 0x9e3779b97f4a7c15U;
  static std::uint64_t Mix(std::uint64_t z) {
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9U;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebU;
    return z ^ (z >> 31);
  }
  std::uint64_t state_;
};

/// A direction at most `degrees` away from z, distributed uniformly over the cap of the sphere.
Vector DirectionInCone(double degrees, Random& random) {
  const double z = 1 - random.Next() * (1 - std::cos(degrees * std::numbers::pi / 180));
  const double angle = 2 * std::numbers::pi * random.Next();
  const double radius = std::sqrt(std::max(1 - z * z, 0.0));
  return {radius * std::cos(angle), radius * std::sin(angle), z};
}

Particle Birth(const BaseContainer& data, const Matrix& place, std::int64_t number) {
  Random random(data.GetLong(kEmitterSeed), number);
  const Vector size = data.GetVector(kEmitterSize);
  const double x = random.Next() - 0.5, y = random.Next() - 0.5, z = random.Next() - 0.5;
  const Vector course = place.Turn(DirectionInCone(data.GetReal(kEmitterSpread), random));
  const double variation = data.GetReal(kEmitterVariation);

  Particle p;
  p.position = place * Vector{size.x * x, size.y * y, size.z * z};
  p.velocity = course * (data.GetReal(kEmitterSpeed) *
                         random.Around(data.GetReal(kEmitterSpeedVariation)) / Length(course));
  p.life = data.GetReal(kEmitterLife) * random.Around(data.GetReal(kEmitterLifeVariation));
  p.mass = data.GetReal(kEmitterMass) * random.Around(variation);
  p.size = data.GetReal(kEmitterParticleSize) * random.Around(variation);
  p.spin = DirectionInCone(180, random);
  p.spin_speed = data.GetReal(kEmitterSpin) * std::numbers::pi / 180;
  p.bits = kParticleVisible | kParticleAlive;
  p.number = static_cast<std::int32_t>(number);
  return p;
}

/// Moves the particle for dt seconds under constant acceleration.
void Fly(Particle& p, const Vector& gravity, double dt) {
  p.position = p.position + p.velocity * dt + gravity * (0.5 * dt * dt);
  p.velocity = p.velocity + gravity * dt;
  p.age += dt;
}

/// Applies the modifiers of the document to the particles.
void Modify(Particles& particles, Document& document, double step) {
  if (particles.empty()) return;
  std::vector<ParticleModification> changes(particles.size());
  for (SceneObject* object : document.AllObjects())
    if (auto* part = static_cast<ObjectData*>(object->GetNodeData()); part && object->IsOn())
      part->ModifyParticles(*object, particles, changes, step);
  for (std::size_t i = 0; i < particles.size(); ++i)
    if (changes[i].count > 0)
      particles[i].velocity = changes[i].velocity * (1.0 / changes[i].count);
}

BaseContainer Untracked(const SceneObject& object) {
  BaseContainer data = object.GetDataInstance();
  for (const auto& [id, track] : object.State().tracks) data.Remove(id);
  return data;
}

double FrameOf(const BaseTime& time, const Document& document) {
  return time.GetFramePosition(document.fps);
}

}  // namespace

void ParticleRun::Start(const std::vector<SceneObject*>& emitters, const Document& document) {
  emitters_.clear();
  before_.clear();
  frame_ = std::numeric_limits<double>::infinity();
  for (SceneObject* object : emitters) {
    emitters_.push_back({object, Untracked(*object), {}, 0});
    const BaseTime start = object->GetDataInstance().GetTime(kEmitterStart);
    frame_ = std::min(frame_, std::floor(FrameOf(start, document)));
  }
}

bool ParticleRun::IsOutdated(const std::vector<SceneObject*>& emitters, double frame) const {
  const auto same = [](const Emitter& known, const SceneObject* object) {
    return known.object == object && known.made_from == Untracked(*object);
  };
  return frame < frame_ - (before_.empty() ? 0 : 1) ||
         !std::equal(emitters_.begin(), emitters_.end(), emitters.begin(), emitters.end(), same);
}

ParticleRun::Emitter ParticleRun::Step(const Emitter& emitter, Document& document, double from,
                                       double to) {
  Emitter next = emitter;
  const BaseContainer& data = emitter.object->GetDataInstance();
  const Vector gravity = data.GetVector(kEmitterGravity);
  const double fps = document.fps.Value(), dt = (to - from) / fps;
  Modify(next.particles, document, dt);
  for (Particle& p : next.particles) Fly(p, gravity, dt);

  // Particle j is born when the integral of the rate reaches j.
  const double rate = data.GetReal(kEmitterRate) / fps;  // per frame
  const double begin = std::max(from, FrameOf(data.GetTime(kEmitterStart), document));
  const double end = std::min(to, FrameOf(data.GetTime(kEmitterEnd), document));
  if (begin < end && rate > 0) {
    next.born += rate * (end - begin);
    for (double j = std::ceil(emitter.born); j < next.born; ++j) {
      if (next.particles.size() >= kMostParticles) break;
      const double frame = begin + (j - emitter.born) / rate;
      Particle p = Birth(data, emitter.object->MatrixAt(frame), static_cast<std::int64_t>(j));
      Fly(p, gravity, (to - frame) / fps);
      next.particles.push_back(p);
    }
  }
  std::erase_if(next.particles, [](const Particle& p) { return p.age >= p.life; });
  return next;
}

/// Advances by one frame.
void ParticleRun::Advance(Document& document) {
  std::vector<Emitter> next;
  for (const Emitter& emitter : emitters_)
    next.push_back(Step(emitter, document, frame_, frame_ + 1));
  before_ = std::exchange(emitters_, std::move(next));
  ++frame_;
}

bool ParticleRun::Update(Document& document, const BreakTest* breaks) {
  std::vector<SceneObject*> emitters, systems;
  for (SceneObject* object : document.AllObjects()) {
    object->particles.clear();
    if (object->GetType() == kParticleSystem) systems.push_back(object);
    if (object->GetType() == kParticleEmitter && object->IsOn()) emitters.push_back(object);
  }
  if (emitters.empty()) return true;

  const BaseTime time = document.GetTime();
  const double target = FrameOf(time, document);
  if (IsOutdated(emitters, target)) Start(emitters, document);
  const auto stand_at = [&document](double frame) {
    document.SetTime(BaseTime::FromFrame(static_cast<std::int64_t>(frame), document.fps));
    document.Animate(FrameOf(document.GetTime(), document));
  };
  bool stopped = false;
  while (!stopped && frame_ + 1 <= target) {
    stand_at(frame_);
    Advance(document);
    stopped = breaks && breaks->TestBreak();
  }
  const bool back = target < frame_ && !before_.empty();
  const double from = back ? frame_ - 1 : frame_;
  if (!stopped && from < target) stand_at(from);
  for (const Emitter& emitter : back ? before_ : emitters_)
    emitter.object->particles =
        from < target ? Step(emitter, document, from, target).particles : emitter.particles;
  document.SetTime(time);
  document.Animate(target);
  for (SceneObject* system : systems)
    for (const SceneObject* emitter : emitters)
      if (emitter->IsUnder(*system))
        system->particles.insert(system->particles.end(), emitter->particles.begin(),
                                 emitter->particles.end());
  return !stopped;
}

}  // namespace host
