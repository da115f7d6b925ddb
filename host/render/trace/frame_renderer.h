// Renders the picture of one frame in tiles, with several threads.
#pragma once

#include <functional>

#include "host/render/trace/picture.h"

namespace host {

struct FrameTask {
  int width = 0, height = 0;
  PictureWindow window;
  int samples = 16;
  int threads = 1;
  /// Called before each pixel, from all threads. True stops the work.
  std::function<bool()> stop = [] { return false; };
  /// Receives the fraction of work done. Never called from two threads at once.
  std::function<void(double)> progress = [](double) {};
};

/// The pixels don't depend on the number of threads. Tiles are rendered from the center outward; an
/// interrupted picture contains the finished tiles. Adds to `counts`. Rethrows exceptions of post
/// effects.
Picture RenderFrame(const RenderScene& scene, const FrameTask& task, RayCounts& counts);

}  // namespace host
