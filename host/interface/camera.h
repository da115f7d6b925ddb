// The camera and the render settings.
#pragma once

#include "host/interface/scene.h"

namespace host {

/// Parameters of a camera object. It looks along its z axis, with y up, in perspective.
enum CameraParameter : std::int32_t {
  CAMERA_FIELD_OF_VIEW = 1201,  ///< real, degrees: angle across the picture's width
  CAMERA_NEAR = 1202,           ///< real, units: nothing closer is visible, measured along z
};

/// Parameters of the document's render settings (BaseDocument::GetActiveRenderData).
enum RenderParameter : std::int32_t {
  RENDER_WIDTH = 5001,       ///< long, pixels
  RENDER_HEIGHT = 5002,      ///< long, pixels; they are square
  RENDER_SAMPLES = 5003,     ///< long: per pixel
  RENDER_BACKGROUND = 5004,  ///< vector: radiance of a ray that hits nothing
  RENDER_CAMERA = 5005,      ///< link to a camera; none: the first one of the document
  RENDER_SHUTTER = 5006,     ///< real, frames: how long the shutter is open for motion blur,
                             ///< starting at the frame; 0 for none
  RENDER_BOUNCES = 5007,     ///< long: number of diffuse bounces of light
  RENDER_FRAME_RATE = 5020,  ///< real, frames per second; 0: the document's
};

}  // namespace host
