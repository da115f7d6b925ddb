#include "host/render/trace/render_scene.h"

#include "host/interface/camera.h"
#include "host/render/color.h"
#include "host/render/sampler.h"

namespace host {

RenderScene::RenderScene(BaseDocument& document, const RenderQuality& quality, int width,
                         int height)
    : surfaces(document, quality.shutter),
      lights(ReadLights(document)),
      camera(ReadCamera(document, quality.shutter, width, height)),
      background(document.GetActiveRenderData().GetDataInstance().GetVector(RENDER_BACKGROUND)),
      bounces(quality.bounces),
      has_shutter(quality.shutter > 0),
      time(document.GetTime().Get()),
      seed(HashOf(document.GetTime().GetFrame(document.GetFps()), 0)) {
  // From over the left shoulder of the viewer.
  if (lights.empty())
    lights.push_back(LightSource::Default(camera.Place().Turn(Normalized({0.5, -0.7, 0.6}))));
}

}  // namespace host
