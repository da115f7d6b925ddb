#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfIntAttribute.h>
#include <ImfMatrixAttribute.h>
#include <ImfOutputFile.h>
#include <ImfRational.h>
#include <ImfRationalAttribute.h>
#include <ImfStandardAttributes.h>
#include <ImfStringAttribute.h>
#include <half.h>

#include "host/render/color.h"
#include "host/render/files/picture_file.h"

namespace host {
namespace {

/// The name of a channel and its value in a Pixel.
struct ChannelPlace {
  const char* name;
  const float* (*of)(const Pixel&);
};

constexpr ChannelPlace kChannels[] = {
    {"R", [](const Pixel& p) { return &p.color[0]; }},
    {"G", [](const Pixel& p) { return &p.color[1]; }},
    {"B", [](const Pixel& p) { return &p.color[2]; }},
    {"A", [](const Pixel& p) { return &p.alpha; }},
    {"volume.R", [](const Pixel& p) { return &p.volume[0]; }},
    {"volume.G", [](const Pixel& p) { return &p.volume[1]; }},
    {"volume.B", [](const Pixel& p) { return &p.volume[2]; }},
    {"transmittance.R", [](const Pixel& p) { return &p.transmittance[0]; }},
    {"transmittance.G", [](const Pixel& p) { return &p.transmittance[1]; }},
    {"transmittance.B", [](const Pixel& p) { return &p.transmittance[2]; }},
};

/// For points as row vectors, like the library: p' = p M.
Imath::M44f WorldToCamera(const Matrix& camera) {
  const Vector &x = camera.v1, &y = camera.v2, &z = camera.v3, &o = camera.off;
  const auto f = [](double v) { return static_cast<float>(v); };
  return {f(x.x), f(y.x), f(z.x), 0, f(x.y),        f(y.y),        f(z.y),        0,
          f(x.z), f(y.z), f(z.z), 0, f(-Dot(o, x)), f(-Dot(o, y)), f(-Dot(o, z)), 1};
}

/// Maps the edges of the picture to -1 and 1, after the division by the distance.
Imath::M44f CameraToScreen(double half_width, double half_height) {
  return {static_cast<float>(1 / half_width),
          0,
          0,
          0,
          0,
          static_cast<float>(1 / half_height),
          0,
          0,
          0,
          0,
          1,
          1,
          0,
          0,
          0,
          0};
}

Imf::Header MakeHeader(const Picture& picture, const PictureMetadata& metadata,
                       Imf::PixelType type) {
  const PictureWindow& w = picture.window;
  const Imath::Box2i whole({0, 0}, {picture.width - 1, picture.height - 1});
  const Imath::Box2i data({w.x0, w.y0}, {w.x1 - 1, w.y1 - 1});
  Imf::Header header(whole, data);
  header.compression() = Imf::ZIP_COMPRESSION;
  for (const ChannelPlace& channel : kChannels)
    header.channels().insert(channel.name, Imf::Channel(type));
  header.channels().insert("depth.Z", Imf::Channel(Imf::FLOAT));
  const Imath::M44f to_camera = WorldToCamera(metadata.camera);
  header.insert("frame", Imf::IntAttribute(metadata.frame));
  header.insert("software", Imf::StringAttribute(metadata.software));
  header.insert("complete", Imf::IntAttribute(picture.complete ? 1 : 0));
  Imf::addFramesPerSecond(header, Imf::Rational(static_cast<int>(metadata.fps.Numerator()),
                                                static_cast<unsigned>(metadata.fps.Denominator())));
  Imf::addWorldToCamera(header, to_camera);
  Imf::addWorldToNDC(header, to_camera * CameraToScreen(metadata.half_width, metadata.half_height));
  return header;
}

/// Describes the buffer to the library. The base pointer refers to the first pixel of the whole
/// picture.
template <class T>
Imf::Slice SliceOf(const std::vector<T>& values, std::size_t stride, const PictureWindow& window,
                   Imf::PixelType type) {
  const std::size_t row = window.Width() * stride;
  return Imf::Slice::Make(type, values.data(), Imath::V2i(window.x0, window.y0), window.Width(),
                          window.Height(), stride, row);
}

template <class T>
void Write(const Picture& picture, const Imf::Header& header, Imf::PixelType type,
           const std::string& path) {
  std::vector<std::vector<T>> layers;
  for (const ChannelPlace& channel : kChannels) {
    std::vector<T>& layer = layers.emplace_back();
    layer.reserve(picture.pixels.size());
    for (const Pixel& pixel : picture.pixels) layer.push_back(T(*channel.of(pixel)));
  }
  std::vector<float> depth;
  for (const Pixel& pixel : picture.pixels) depth.push_back(pixel.depth);

  Imf::FrameBuffer buffer;
  for (std::size_t i = 0; i < layers.size(); ++i)
    buffer.insert(kChannels[i].name, SliceOf(layers[i], sizeof(T), picture.window, type));
  buffer.insert("depth.Z", SliceOf(depth, sizeof(float), picture.window, Imf::FLOAT));
  Imf::OutputFile file(path.c_str(), header);
  file.setFrameBuffer(buffer);
  file.writePixels(picture.window.Height());
}

}  // namespace

void WriteExr(const Picture& picture, const PictureMetadata& metadata, PictureDepth depth,
              const std::string& path) {
  const Imf::PixelType type = depth == PictureDepth::Half ? Imf::HALF : Imf::FLOAT;
  const Imf::Header header = MakeHeader(picture, metadata, type);
  if (depth == PictureDepth::Half)
    Write<half>(picture, header, type, path);
  else
    Write<float>(picture, header, type, path);
}

}  // namespace host
