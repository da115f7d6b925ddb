// Simulates the particles of a document.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "host/interface/c4d_thread.h"
#include "host/scene/element.h"

namespace host {

class Document;

/// Advances all emitters of a document together, one frame at a time. Particles at a time between
/// two frames come from a shorter step from the earlier frame, whose result is not kept. The
/// particles therefore depend only on the document and the time. Particles are born at exact times,
/// at the position of the emitter at that time. Their random numbers depend on the emitter's seed
/// and the particle's number.
///
/// The run keeps its current frame and the frame before it, so that a substep or a shutter can look
/// ahead into the next frame and return. It restarts if an earlier time is requested or if the
/// parameters of an emitter change.
class ParticleRun {
 public:
  /// Computes the particles of all emitters and systems at the document's time. The document must
  /// be evaluated at that time, and is again afterwards. `breaks` may be null. False if it stops
  /// the computation.
  bool Update(Document& document, const BreakTest* breaks);

  /// The limit of particles per emitter. At the limit no more are born.
  static constexpr std::size_t kMostParticles = 10'000'000;

 private:
  /// The state of one emitter at a frame.
  struct Emitter {
    SceneObject* object = nullptr;
    BaseContainer made_from;  ///< its parameters except those with keyframes
    Particles particles;
    double born = 0;  ///< integral of the rate up to the frame
  };

  void Start(const std::vector<SceneObject*>& emitters, const Document& document);
  bool IsOutdated(const std::vector<SceneObject*>& emitters, double frame) const;
  void Advance(Document& document);
  /// Advances the emitter from frame `from` to frame `to`, at most one frame later.
  static Emitter Step(const Emitter& emitter, Document& document, double from, double to);

  std::vector<Emitter> emitters_;
  std::vector<Emitter> before_;  ///< one frame earlier; empty at the start
  double frame_ = 0;             ///< an integer
};

}  // namespace host
