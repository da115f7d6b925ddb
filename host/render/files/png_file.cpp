#include <QImage>
#include <QImageWriter>
#include <stdexcept>

#include "host/render/color.h"
#include "host/render/files/picture_file.h"
#include "host/render/sampler.h"

namespace host {
namespace {

constexpr double kShoulder = 0.7;

/// Rounds with dithering: the mean over neighboring pixels keeps the value.
uchar ToByte(double signal, std::uint64_t noise) {
  const double chance = (noise >> 11) * 0x1p-53;
  return std::clamp(static_cast<int>(signal * 255 + chance), 0, 255);
}

}  // namespace

double ToneMapped(double x) {
  if (x <= kShoulder) return std::max(x, 0.0);
  return 1 - (1 - kShoulder) * std::exp((kShoulder - x) / (1 - kShoulder));
}

void WritePng(const Picture& picture, const PictureMetadata& metadata, double exposure,
              const std::string& path) {
  const PictureWindow& window = picture.window;
  QImage image(window.Width(), window.Height(), QImage::Format_RGB888);
  if (image.isNull()) throw std::runtime_error("the picture doesn't fit into memory");
  const double gain = std::exp2(exposure);
  for (int y = window.y0; y < window.y1; ++y) {
    uchar* row = image.scanLine(y - window.y0);
    for (int x = window.x0; x < window.x1; ++x)
      for (int c = 0; c < 3; ++c) {
        const Pixel& pixel = picture.At(x, y);
        const double light = static_cast<double>(pixel.color[c]) + pixel.backdrop[c];
        const auto place = static_cast<std::uint64_t>(y) * 0x10000 + x;
        *row++ = ToByte(ToSrgb(ToneMapped(gain * light)), HashOf(place, c));
      }
  }
  image.setText("Software", QString::fromStdString(metadata.software));
  image.setText("Frame", QString::number(metadata.frame));
  QImageWriter writer(QString::fromStdString(path), "png");
  if (!writer.write(image)) throw std::runtime_error(writer.errorString().toStdString());
}

}  // namespace host
