// Post effects: what a plug-in adds to the pictures of the host's renderer.
//
// The host draws surfaces. Along every ray that it casts it asks each post effect for the color
// that the space adds and the share of light that passes. All colors are linear light.
//
// A render calls, on the thread of the command, in this order:
//     Execute(kPhaseSequence, open)
//       for each frame: Execute(kPhaseFrame, open), rays, Execute(kPhaseFrame, close)
//     Execute(kPhaseSequence, close)
// At the opening of a frame the document stands evaluated at the frame, and lights and surfaces are
// in place. What was opened is closed, after failures and breaks too. In a sequence the document
// isn't exchanged and no object comes or goes.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "host/interface/node_data.h"
#include "host/interface/scene.h"

namespace host {

/// What kind of ray it is: an or of all that befell the light path from the camera on. 0: a camera
/// ray, or in CalcShadow a ray to a light. Rays to lights are cast with 0 wherever they start.
enum RayType : std::uint32_t {
  kRayCamera = 0,
  kRayReflection = 0x0001,
  kRayTransparency = 0x0002,  ///< went straight through a surface
  kRayRefraction = 0x0004,
  kRayRoughReflection = 0x0010,
  kRayRoughTransparency = 0x0020,
  kRayRoughRefraction = 0x0040,
  kRayIndirect = 0x0400,   ///< gathers light for a diffuse surface
  kRayOcclusion = 0x2000,  ///< asks how open the surroundings are; not cast by the small host
  kRayNotCamera = 0x1980,  ///< other purposes; any of these bits: no camera ray
};

struct VolumeRay {
  Vector origin;
  Vector direction;  ///< of unit length
  /// Where the ray ends, from the origin: at a surface, or at the light. Infinite: nowhere.
  double surface_distance = std::numeric_limits<double>::infinity();
  std::uint32_t type = kRayCamera;
  std::int32_t thread = 0;  ///< from 0 to the render's thread count - 1
  /// Pixel of the whole picture, from its upper left corner, and number of the sample in it. -1 in
  /// rays that belong to no pixel.
  std::int32_t x = -1, y = -1, sample = -1;
  /// Where to start random numbers: differs from ray to ray, and is the same for any number of
  /// threads.
  std::uint64_t seed = 0;
  bool light_query = false;  ///< cast by VolumeData::Illuminate
};

/// A light, as it is at the frame.
struct RayLight {
  BaseObject* object = nullptr;  ///< null for a light that the host adds to a scene without any
  Vector position;               ///< far away for a light without a place
  Vector color;                  ///< with its brightness
  std::int32_t type = 0;         ///< as the light object's parameter has it
  /// Objects that the light passes by as if it weren't there, ascending by address.
  std::vector<const BaseObject*> excluded = {};

  bool Reaches(const BaseObject* lit) const {
    return !std::binary_search(excluded.begin(), excluded.end(), lit);
  }
};

/// One ray, its results, and what can be asked along it. Belongs to one thread.
class VolumeData {
 public:
  virtual ~VolumeData() = default;

  VolumeRay ray;

  /// Results of CalcVolumetric: light that is added, already dimmed on its way to the ray's origin.
  Vector color;
  /// Results of CalcVolumetric and CalcShadow: the share that passes from end to end, per channel.
  Vector transparency{1, 1, 1};
  /// A result too: `color`, and but for camera rays 1 - `transparency`, went through the sRGB
  /// curve. The host, which mixes light in linear form, takes them back through it.
  bool encoded = false;

  /// Lights of the render; the list stays the same while a frame is open.
  virtual std::int32_t GetLightCount() const = 0;
  virtual const RayLight& GetLight(std::int32_t index) const = 0;

  /// Light that arrives at a point of the world from one light, as a surface facing it would get it
  /// (irradiance over pi), with the shadows of surfaces and post effects: CalcShadow is called on
  /// this thread, with another VolumeData of the same ray.thread and with ray.light_query set. The
  /// caller checks RayLight::Reaches itself. `direction` points from the point towards the light,
  /// with unit length, or is zero. The result depends on the point alone, for any number of
  /// threads. False, with color black: the light doesn't reach the point.
  virtual bool Illuminate(std::int32_t light, const Vector& point, Vector& color,
                          Vector& direction) = 0;
};

/// What a post effect answers to Execute. The values are the host's own.
enum class RenderResult : std::int32_t {
  Ok = 0,
  OutOfMemory = 1,
  Failed = 2,
  UserBreak = 6,  ///< broken off by the user, or for a reason that the effect has told
};

enum class RenderPhase { Sequence, Frame };

/// What the user says about files of an earlier run that an effect would write over.
enum class OldFiles {
  Unanswered,  ///< nobody could be asked: they must stay as they are
  Overwrite,
  MakeNew,  ///< they stay, and the effect writes elsewhere
};

/// Why an effect doesn't begin.
enum class Refusal {
  BadScene,    ///< the scene must be changed
  NotAllowed,  ///< the user's leave is missing
};

/// A render, from the opening of its sequence to the closing. Main thread only, but for TestBreak,
/// SetProgress and the contexts.
class BaseRender {
 public:
  virtual ~BaseRender() = default;

  virtual BaseDocument& GetDocument() const = 0;
  virtual std::int32_t GetWidth() const = 0;  ///< of the whole picture, in pixels
  virtual std::int32_t GetHeight() const = 0;
  virtual std::int32_t GetThreadCount() const = 0;
  /// Document frames: the one that is open, and the ends of the sequence.
  virtual std::int32_t GetFrame() const = 0;
  virtual std::int32_t GetFirstFrame() const = 0;
  virtual std::int32_t GetLastFrame() const = 0;
  /// Where the frame's camera stands, whether the scene has one or not.
  virtual Vector GetCameraPosition() const = 0;
  /// True on a machine that renders frames for another one.
  virtual bool IsNetworkClient() const = 0;

  /// A context for queries outside of rays, from thread 0 .. thread count - 1, while a frame is
  /// open. Each thread uses its own.
  virtual VolumeData& GetVolumeData(std::int32_t thread) = 0;

  virtual void SetStatusText(const std::string& text) = 0;
  virtual void SetProgress(double share) = 0;  ///< 0 to 1 of what the status text names
  /// True once the user wants the render to end.
  virtual bool TestBreak() const = 0;

  /// While the sequence opens: the effect doesn't begin. `why` is one line for the user, with the
  /// place and the cure. The effect then returns Failed.
  virtual void Refuse(Refusal kind, const std::string& why) = 0;
  virtual OldFiles AskAboutOldFiles() = 0;

  /// While a frame opens: data that it needs can't be had, and the effect leaves it out of the
  /// picture. `what` is one line for the user, with the place and the cure. The host decides
  /// whether the render ends, the frame is passed over, or the picture is made without.
  virtual void ReportMissing(const std::string& what) = 0;
  /// A line for the user about something that isn't as it should be, and one that only tells.
  virtual void Warning(const std::string& text) = 0;
  virtual void Note(const std::string& text) = 0;
};

/// A post effect of a document, with its parameters.
class BaseVideoPost : public BaseList2D {};

class VideoPostData : public NodeData {
 public:
  /// Anything but Ok from an opening ends the render; the result of a closing is ignored. What is
  /// thrown ends it as well.
  virtual RenderResult Execute(BaseVideoPost& node, RenderPhase phase, bool open,
                               BaseRender& render) = 0;

  /// Only while a frame is open, from all render threads at once, and during its opening from the
  /// effect's own queries of light; they must not throw. `data` comes
  /// with black and full transparency, which stand for empty space.
  virtual void CalcVolumetric(VolumeData& data) = 0;
  virtual void CalcShadow(VolumeData& data) = 0;
};

}  // namespace host
