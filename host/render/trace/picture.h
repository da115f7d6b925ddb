// A rendered picture, or a window of one.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/interface/frame_rate.h"
#include "host/render/trace/path_tracer.h"

namespace host {

/// Pixels from (x0, y0) up to, but not including, (x1, y1). (0, 0) is the upper left corner of the
/// whole picture.
struct PictureWindow {
  int x0 = 0, y0 = 0, x1 = 0, y1 = 0;
  int Width() const { return x1 - x0; }
  int Height() const { return y1 - y0; }
  friend bool operator==(const PictureWindow&, const PictureWindow&) = default;
};

/// The mean of the samples of a pixel, in linear light.
struct Pixel {
  float color[3] = {};  ///< premultiplied, without the background
  float alpha = 0;
  float backdrop[3] = {};  ///< the visible part of the background
  float volume[3] = {};
  float transmittance[3] = {};
  float depth = std::numeric_limits<float>::infinity();  ///< the nearest sample
};

struct Picture {
  int width = 0, height = 0;  ///< of the whole picture
  PictureWindow window;
  std::vector<Pixel> pixels;  ///< of the window, row by row
  bool complete = false;      ///< false: interrupted; missing pixels are empty

  Pixel& At(int x, int y) { return pixels[Index(x, y)]; }
  const Pixel& At(int x, int y) const { return pixels[Index(x, y)]; }

 private:
  std::size_t Index(int x, int y) const {
    return static_cast<std::size_t>(y - window.y0) * window.Width() + (x - window.x0);
  }
};

/// Metadata of a picture file.
struct PictureMetadata {
  std::int32_t frame = 0;
  FrameRate fps = 25;
  std::string software;
  Matrix camera;                           ///< position and axes
  double half_width = 1, half_height = 1;  ///< of the picture at distance 1 from the camera
};

}  // namespace host
