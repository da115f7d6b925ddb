// Renders the picture of one frame, in tiles on several threads.
#pragma once

#include <functional>

#include "host/render/trace/picture.h"

namespace host {

struct FrameTask {
  int width = 0, height = 0;
  PictureWindow window;
  int samples = 16;
  int threads = 1;
  /// Asked before each pixel, from all threads; true ends the work.
  std::function<bool()> stop = [] { return false; };
  /// Share of the work that is done; from one thread at a time.
  std::function<void(double)> progress = [](double) {};
};

/// The same pixels for any number of threads. Tiles come from the middle outwards, and a picture
/// that was broken off holds those that were finished. `counts` gets what was done. Throws what a
/// post effect throws.
Picture RenderFrame(const RenderScene& scene, const FrameTask& task, RayCounts& counts);

}  // namespace host
