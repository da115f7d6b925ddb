// Everything that rays need in one frame: surfaces, lights, camera, background, post effects.
#pragma once

#include <string>
#include <vector>

#include "host/render/surfaces/glow_mirror.h"
#include "host/render/surfaces/surface_scene.h"
#include "host/render/trace/light_source.h"
#include "host/render/trace/render_camera.h"

namespace host {

/// Quality settings of light paths.
struct RenderQuality {
  int samples = 16;    ///< per pixel
  double shutter = 0;  ///< time that it is open, in frames
  int bounces = 0;     ///< of light between diffuse surfaces
};

struct RenderScene {
  /// Reads the document at its current time. Throws std::runtime_error.
  RenderScene(BaseDocument& document, const RenderQuality& quality, int width, int height);

  SurfaceScene surfaces;
  std::vector<LightSource> lights;
  RenderCamera camera;
  Vector background;
  GlowGrid glow;  ///< glow of the effects; empty without bounces
  std::vector<GlowMirror> glow_mirrors = FindGlowMirrors(surfaces);
  int bounces = 0;
  bool has_shutter = false;
  double time = 0;                      ///< of the frame, in seconds
  std::uint64_t seed = 0;               ///< of the frame
  std::vector<VideoPostData*> effects;  ///< the open effects
};

}  // namespace host
