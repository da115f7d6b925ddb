// The particles of a document: makes them, moves them, and lets them die.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "host/interface/c4d_thread.h"
#include "host/scene/element.h"

namespace host {

class Document;

/// Steps all emitters of a document together, from one frame to the next. The particles at a time
/// between two frames come from the earlier frame by a shorter step, which leaves no trace. So they
/// depend on the document and the time alone: births on exact times, where the emitter's keyframes
/// have it then; random numbers by the emitter's seed and the particle's number.
///
/// The run keeps the frame that it has come to and the one before it, so that a substep, or the
/// opening of a shutter, may look ahead into the next frame and go back. What starts it anew: an
/// earlier time than that, and a change of an emitter's parameters.
class ParticleRun {
 public:
  /// Fills the particles of all emitters and systems of the document for its time, at which it must
  /// stand evaluated, and does again afterwards. False if `breaks`, which may be null, wants the
  /// end.
  bool Update(Document& document, const BreakTest* breaks);

  /// No emitter holds more particles at once; further ones aren't born.
  static constexpr std::size_t kMostParticles = 10'000'000;

 private:
  /// What one emitter has come to at a frame.
  struct Emitter {
    SceneObject* object = nullptr;
    BaseContainer made_from;  ///< its parameters without those that have keyframes
    Particles particles;
    double born = 0;  ///< births up to the frame, as the integral of the rate
  };

  void Start(const std::vector<SceneObject*>& emitters, const Document& document);
  bool IsOutdated(const std::vector<SceneObject*>& emitters, double frame) const;
  void GoOn(Document& document);
  /// The emitter from the frame `from` on to the frame `to`, no later than the next.
  static Emitter Step(const Emitter& emitter, Document& document, double from, double to);

  std::vector<Emitter> emitters_;
  std::vector<Emitter> before_;  ///< a frame earlier; empty at the start
  double frame_ = 0;             ///< a whole number
};

}  // namespace host
