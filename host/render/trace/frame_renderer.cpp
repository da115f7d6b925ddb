#include "host/render/trace/frame_renderer.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>

namespace host {
namespace {

constexpr int kTileSize = 16;

std::vector<PictureWindow> MakeTiles(const PictureWindow& window) {
  std::vector<PictureWindow> tiles;
  for (int y = window.y0; y < window.y1; y += kTileSize)
    for (int x = window.x0; x < window.x1; x += kTileSize)
      tiles.push_back(
          {x, y, std::min(x + kTileSize, window.x1), std::min(y + kTileSize, window.y1)});
  const auto far = [&window](const PictureWindow& tile) {
    const std::int64_t dx = tile.x0 + tile.x1 - window.x0 - window.x1;
    const std::int64_t dy = tile.y0 + tile.y1 - window.y0 - window.y1;
    return dx * dx + dy * dy;
  };
  std::stable_sort(tiles.begin(), tiles.end(),
                   [&far](const auto& a, const auto& b) { return far(a) < far(b); });
  return tiles;
}

/// Sums samples in double precision, so that the mean doesn't degrade with their number.
class PixelSum {
 public:
  void Add(const PathSample& sample) {
    sum_.color = sum_.color + sample.color;
    sum_.backdrop = sum_.backdrop + sample.backdrop;
    sum_.volume = sum_.volume + sample.volume;
    transmittance_ = transmittance_ + sample.transmittance;
    alpha_ += sample.alpha;
    sum_.depth = std::min(sum_.depth, sample.depth);
  }

  Pixel Mean(int samples) const {
    Pixel pixel;
    const double share = 1.0 / samples;
    const auto put = [share](float* to, const Vector& v) {
      to[0] = static_cast<float>(v.x * share);
      to[1] = static_cast<float>(v.y * share);
      to[2] = static_cast<float>(v.z * share);
    };
    put(pixel.color, sum_.color);
    put(pixel.backdrop, sum_.backdrop);
    put(pixel.volume, sum_.volume);
    put(pixel.transmittance, transmittance_);
    pixel.alpha = static_cast<float>(alpha_ * share);
    pixel.depth = static_cast<float>(sum_.depth);
    return pixel;
  }

 private:
  PathSample sum_;
  Vector transmittance_;
  double alpha_ = 0;
};

/// The tiles of a picture and the threads that render them.
class TileWork {
 public:
  TileWork(const RenderScene& scene, const FrameTask& task, Picture& picture)
      : scene_(scene), task_(task), picture_(picture), tiles_(MakeTiles(task.window)) {}

  void Run(RayCounts& counts) {
    std::vector<std::thread> threads;
    for (int i = 1; i < task_.threads; ++i)
      threads.emplace_back([this, i, &counts] { Work(i, counts); });
    Work(0, counts);
    for (std::thread& thread : threads) thread.join();
    if (error_) std::rethrow_exception(error_);
    picture_.complete = done_ == tiles_.size();
  }

 private:
  void Work(int thread, RayCounts& counts) {
    PathTracer tracer(scene_, thread);
    try {
      for (std::size_t i = next_++; i < tiles_.size() && !stopped_; i = next_++)
        if (RenderTile(tracer, tiles_[i])) CountDone();
    } catch (...) {
      const std::lock_guard lock(mutex_);
      if (!error_) error_ = std::current_exception();
      stopped_ = true;
    }
    const std::lock_guard lock(mutex_);
    counts.rays += tracer.Counts().rays;
    counts.shadow_rays += tracer.Counts().shadow_rays;
    counts.broken += tracer.Counts().broken;
  }

  /// Renders a tile. False, with the tile left empty, if the work was stopped.
  bool RenderTile(PathTracer& tracer, const PictureWindow& tile) {
    std::vector<Pixel> pixels;
    for (int y = tile.y0; y < tile.y1; ++y)
      for (int x = tile.x0; x < tile.x1; ++x) {
        if (stopped_ || task_.stop()) return stopped_ = true, false;
        PixelSum sum;
        for (int s = 0; s < task_.samples; ++s) sum.Add(tracer.Trace(x, y, s));
        pixels.push_back(sum.Mean(task_.samples));
      }
    auto from = pixels.begin();
    for (int y = tile.y0; y < tile.y1; ++y, from += tile.Width())
      std::copy_n(from, tile.Width(), &picture_.At(tile.x0, y));
    return true;
  }

  void CountDone() {
    const std::lock_guard lock(mutex_);
    ++done_;
    task_.progress(static_cast<double>(done_) / tiles_.size());
  }

  const RenderScene& scene_;
  const FrameTask& task_;
  Picture& picture_;
  const std::vector<PictureWindow> tiles_;
  std::atomic<std::size_t> next_{0};
  std::atomic<bool> stopped_{false};
  std::mutex mutex_;  ///< guards the members below and the sums of counts
  std::size_t done_ = 0;
  std::exception_ptr error_;
};

}  // namespace

Picture RenderFrame(const RenderScene& scene, const FrameTask& task, RayCounts& counts) {
  Picture picture;
  picture.width = task.width;
  picture.height = task.height;
  picture.window = task.window;
  picture.pixels.resize(static_cast<std::size_t>(task.window.Width()) * task.window.Height());
  TileWork(scene, task, picture).Run(counts);
  return picture;
}

}  // namespace host
