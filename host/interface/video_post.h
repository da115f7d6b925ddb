// Post effects: plug-in contributions to the pictures of the host's renderer.
//
// The host renders surfaces. Along every ray it asks each post effect for the color that space adds
// and the fraction of light that passes. All colors are linear light.
//
// A render calls, on the thread of the command, in this order:
//     Execute(kPhaseSequence, open)
//       for each frame: Execute(kPhaseFrame, open), rays, Execute(kPhaseFrame, close)
//     Execute(kPhaseSequence, close)
// When a frame opens, the document is evaluated at the frame, and lights and surfaces are ready.
// Whatever was opened is closed, also after failures and interrupts. Within a sequence the document
// isn't replaced, and no object is added or removed.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "host/interface/node_data.h"
#include "host/interface/scene.h"

namespace host {

/// The kind of a ray: the bitwise OR of every event on the path since it left the camera. 0 is a
/// camera ray or, in CalcShadow, a shadow ray. Shadow rays are always cast with 0.
enum RayType : std::uint32_t {
  kRayCamera = 0,
  kRayReflection = 0x0001,
  kRayTransparency = 0x0002,  ///< passed straight through a surface
  kRayRefraction = 0x0004,
  kRayRoughReflection = 0x0010,
  kRayRoughTransparency = 0x0020,
  kRayRoughRefraction = 0x0040,
  kRayIndirect = 0x0400,   ///< gathers indirect light for a diffuse surface
  kRayOcclusion = 0x2000,  ///< ambient occlusion; not cast by the small host
  kRayNotCamera = 0x1980,  ///< other purposes; any of these bits: not a camera ray
};

struct VolumeRay {
  Vector origin;
  Vector direction;  ///< of unit length
  /// Distance from the origin to the end of the ray: a surface or the light. Infinite if it hits
  /// nothing.
  double surface_distance = std::numeric_limits<double>::infinity();
  std::uint32_t type = kRayCamera;
  std::int32_t thread = 0;  ///< from 0 to the render's thread count - 1
  /// Pixel of the whole picture, from its upper left corner, and index of the sample. -1 for rays
  /// that belong to no pixel.
  std::int32_t x = -1, y = -1, sample = -1;
  /// Seed for random numbers. Differs from ray to ray and doesn't depend on the number of threads.
  std::uint64_t seed = 0;
  bool light_query = false;  ///< cast by VolumeData::Illuminate
};

/// A light at the frame.
struct RayLight {
  BaseObject* object = nullptr;  ///< null for a light that the host adds to a scene without any
  Vector position;               ///< far away for a directional light
  Vector color;                  ///< with its brightness
  std::int32_t type = 0;         ///< LightType
  /// Objects that the light ignores, sorted by address.
  std::vector<const BaseObject*> excluded = {};

  bool Reaches(const BaseObject* lit) const {
    return !std::binary_search(excluded.begin(), excluded.end(), lit);
  }
};

/// One ray, its results, and queries along it. Belongs to one thread.
class VolumeData {
 public:
  virtual ~VolumeData() = default;

  VolumeRay ray;

  /// Result of CalcVolumetric: light that is added, already attenuated on its way to the ray's
  /// origin.
  Vector color;
  /// Result of CalcVolumetric and CalcShadow: the fraction of light that passes from end to end,
  /// per channel.
  Vector transparency{1, 1, 1};
  /// Result: `color` and, except for camera rays, 1 - `transparency` are sRGB encoded. The host
  /// decodes them, because it works in linear light.
  bool encoded = false;

  /// Lights of the render. The list doesn't change while a frame is open.
  virtual std::int32_t GetLightCount() const = 0;
  virtual const RayLight& GetLight(std::int32_t index) const = 0;

  /// Light from one light at a point of the world, as received by a surface that faces it
  /// (irradiance over pi), with shadows of surfaces and post effects. CalcShadow is called on this
  /// thread with another VolumeData of the same ray.thread, whose ray.light_query is set. The
  /// caller must check whether the light reaches its object (RayLight::Reaches). `direction` is a
  /// unit vector from the point toward the light, or zero. The result depends only on the point,
  /// not on the number of threads. False, with black `color`: the light doesn't reach the point.
  virtual bool Illuminate(std::int32_t light, const Vector& point, Vector& color,
                          Vector& direction) = 0;
};

/// The result of Execute. The values are those of the host.
enum class RenderResult : std::int32_t {
  Ok = 0,
  OutOfMemory = 1,
  Failed = 2,
  UserBreak = 6,  ///< stopped by the user, or for a reason that the effect has reported
};

enum class RenderPhase { Sequence, Frame };

/// What the user wants to do with files of an earlier run that an effect would overwrite.
enum class OldFiles {
  Unanswered,  ///< no answer: they must stay
  Overwrite,
  MakeNew,  ///< they stay, and the effect writes elsewhere
};

/// Why an effect refuses to start.
enum class Refusal {
  BadScene,    ///< the scene must be changed
  NotAllowed,  ///< the user has not allowed it
};

/// A render, from the opening of its sequence to the closing. Main thread only, except TestBreak,
/// SetProgress and the contexts.
class BaseRender {
 public:
  virtual ~BaseRender() = default;

  virtual BaseDocument& GetDocument() const = 0;
  virtual std::int32_t GetWidth() const = 0;  ///< of the whole picture, in pixels
  virtual std::int32_t GetHeight() const = 0;
  virtual std::int32_t GetThreadCount() const = 0;
  /// Document frames: the open one, and the first and last of the sequence.
  virtual std::int32_t GetFrame() const = 0;
  virtual std::int32_t GetFirstFrame() const = 0;
  virtual std::int32_t GetLastFrame() const = 0;
  /// Position of the frame's camera, whether or not the scene has one.
  virtual Vector GetCameraPosition() const = 0;
  /// True on a machine that renders frames for another machine.
  virtual bool IsNetworkClient() const = 0;

  /// A context for queries outside of rays, for threads 0 .. thread count - 1, while a frame is
  /// open. Each thread uses its own.
  virtual VolumeData& GetVolumeData(std::int32_t thread) = 0;

  virtual void SetStatusText(const std::string& text) = 0;
  virtual void SetProgress(double share) = 0;  ///< 0 to 1, for the task in the status text
  /// True if the user wants to end the render.
  virtual bool TestBreak() const = 0;

  /// Call while the sequence opens, if the effect can't start. `why` is one line for the user, with
  /// the place and advice. The effect then returns Failed.
  virtual void Refuse(Refusal kind, const std::string& why) = 0;
  virtual OldFiles AskAboutOldFiles() = 0;

  /// Call while a frame opens, if data is missing and the effect leaves it out of the picture.
  /// `what` is one line for the user, with the place and advice. The host then ends the render,
  /// skips the frame, or renders without the data.
  virtual void ReportMissing(const std::string& what) = 0;
  /// A line for the user: about a problem (Warning), or for information only (Note).
  virtual void Warning(const std::string& text) = 0;
  virtual void Note(const std::string& text) = 0;
};

/// A post effect of a document, with its parameters.
class BaseVideoPost : public BaseList2D {};

class VideoPostData : public NodeData {
 public:
  /// Any result except Ok when opening ends the render. The result of closing is ignored. An
  /// exception ends the render too.
  virtual RenderResult Execute(BaseVideoPost& node, RenderPhase phase, bool open,
                               BaseRender& render) = 0;

  /// Called while a frame is open, from all render threads at once, and during its opening for the
  /// effect's own light queries. They must not throw. `data` starts as empty space: black and fully
  /// transparent.
  virtual void CalcVolumetric(VolumeData& data) = 0;
  virtual void CalcShadow(VolumeData& data) = 0;
};

}  // namespace host
