#include "host/scene/image_texture.h"

#include <QImage>
#include <QImageReader>
#include <cmath>
#include <filesystem>
#include <vector>

#include <assimp/scene.h>

#include "host/base/document_error.h"
#include "host/base/nearest_name.h"
#include "host/model/model_file.h"

namespace host {
namespace {

double FromSrgb(double coded) {
  return coded <= 0.04045 ? coded / 12.92 : std::pow((coded + 0.055) / 1.055, 2.4);
}

struct Rgb {
  float r, g, b;
};

class Image final : public Texture {
 public:
  Image(const QImage& image, bool linear) : width_(image.width()), height_(image.height()) {
    std::vector<float> light(65536);
    for (std::size_t i = 0; i < light.size(); ++i) {
      const double coded = static_cast<double>(i) / 65535;
      light[i] = static_cast<float>(linear ? coded : FromSrgb(coded));
    }
    pixels_.reserve(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_));
    for (int y = 0; y < height_; ++y) {
      const auto* row = reinterpret_cast<const QRgba64*>(image.constScanLine(y));
      for (int x = 0; x < width_; ++x)
        pixels_.push_back({light[row[x].red()], light[row[x].green()], light[row[x].blue()]});
    }
  }

  Vector Sample(const Vector& point, double) const override {
    // Pixel i has its center at (i + 0.5) / width.
    const double x = Wrapped(point.x) * width_ - 0.5, y = Wrapped(point.y) * height_ - 0.5;
    const double x0 = std::floor(x), y0 = std::floor(y);
    const auto row = [&](int j) {
      return Pixel(static_cast<int>(x0), j) * (1 - (x - x0)) +
             Pixel(static_cast<int>(x0) + 1, j) * (x - x0);
    };
    return row(static_cast<int>(y0)) * (1 - (y - y0)) + row(static_cast<int>(y0) + 1) * (y - y0);
  }

 private:
  static double Wrapped(double u) {
    u -= std::floor(u);
    return u < 1 ? u : 0;  // NaN and the infinities too
  }

  /// The indices may lie one pixel outside.
  Vector Pixel(int x, int y) const {
    x = (x + width_) % width_;
    y = (y + height_) % height_;
    const Rgb& c = pixels_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
                           static_cast<std::size_t>(x)];
    return {c.r, c.g, c.b};
  }

  int width_, height_;
  std::vector<Rgb> pixels_;
};

/// Picture `number`, "*0", of those that a model file holds.
QImage FromModel(const std::string& file, const std::string& number, const std::string& place) {
  try {
    const ModelFile model(file, true);
    const aiTexture* texture = model.Scene().GetEmbeddedTexture(number.c_str());
    if (!texture) throw DocumentError(Quoted(file) + " has no picture " + Quoted(number));
    // Without a height it is a picture file of so many bytes, else so many pixels.
    const auto* bytes = reinterpret_cast<const uchar*>(texture->pcData);
    const auto width = static_cast<int>(texture->mWidth),
               height = static_cast<int>(texture->mHeight);
    if (height == 0) return QImage::fromData(bytes, width);
    return QImage(bytes, width, height, QImage::Format_ARGB32).copy();
  } catch (const DocumentError& error) {
    throw DocumentError(place, error.what());
  }
}

}  // namespace

std::string PictureNumber(const std::string& path) {
  const std::size_t star = path.rfind('*');
  if (star == std::string::npos || !IsModelName(path.substr(0, star))) return {};
  return path.substr(star);
}

std::unique_ptr<Texture> ReadImage(const std::string& path, bool linear, const std::string& place) {
  const std::string file_place = place + ".parameters.file";
  if (path.empty()) throw DocumentError(file_place, "the image names no file");
  std::error_code ignored;
  const std::string number = PictureNumber(path);
  const std::string file = path.substr(0, path.size() - number.size());
  if (!std::filesystem::is_regular_file(file, ignored))
    throw DocumentError(
        file_place, "there is no file " + Quoted(file) + "; paths count from the scene's folder");
  QImageReader reader(QString::fromStdString(path));
  reader.setDecideFormatFromContent(true);
  QImage image = number.empty() ? reader.read() : FromModel(file, number, file_place);
  if (!image.isNull()) image = image.convertToFormat(QImage::Format_RGBA64);
  if (image.isNull())
    throw DocumentError(file_place, Quoted(path) + " can't be read as a picture (" +
                                        reader.errorString().toStdString() +
                                        "); give a sound PNG or JPEG file");
  return std::make_unique<Image>(image, linear);
}

}  // namespace host
