#include "host/scene/image_texture.h"

#include <QImage>
#include <QImageReader>
#include <cmath>
#include <filesystem>
#include <vector>

#include <assimp/scene.h>

#include "host/base/document_error.h"
#include "host/base/nearest_name.h"
#include "host/base/srgb.h"
#include "host/model/model_file.h"

namespace host {
namespace {

struct Rgb {
  float r, g, b;
};

class Image final : public Texture {
 public:
  Image(const QImage& image, bool linear) : width_(image.width()), height_(image.height()) {
    std::vector<float> light(65536);
    for (std::size_t i = 0; i < light.size(); ++i) {
      const double coded = i / 65535.0;
      light[i] = static_cast<float>(linear ? coded : FromSrgb(coded));
    }
    pixels_.reserve(static_cast<std::size_t>(width_) * height_);
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
    return u < 1 ? u : 0;  // also for NaN and infinities
  }

  /// The indices may be off by one pixel; they wrap around.
  Vector Pixel(int x, int y) const {
    x = (x + width_) % width_;
    y = (y + height_) % height_;
    const Rgb& c = pixels_[static_cast<std::size_t>(y) * width_ + x];
    return {c.r, c.g, c.b};
  }

  int width_, height_;
  std::vector<Rgb> pixels_;
};

/// Picture `number` (such as "*0") inside a model file.
QImage FromModel(const std::string& file, const std::string& number, const std::string& place) {
  try {
    const ModelFile model(file, true);
    const aiTexture* texture = model.Scene().GetEmbeddedTexture(number.c_str());
    if (!texture) throw DocumentError(Quoted(file) + " has no picture " + Quoted(number));
    // If the height is 0, the data is an encoded file of `width` bytes. Otherwise it is raw pixels.
    const auto* bytes = reinterpret_cast<const uchar*>(texture->pcData);
    const int width = texture->mWidth, height = texture->mHeight;
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
  if (path.empty()) throw DocumentError(file_place, "the image has no file");
  std::error_code ignored;
  const std::string number = PictureNumber(path);
  const std::string file = path.substr(0, path.size() - number.size());
  if (!std::filesystem::is_regular_file(file, ignored))
    throw DocumentError(file_place, "there is no file " + Quoted(file) +
                                        "; paths are relative to the scene's folder");
  QImageReader reader(QString::fromStdString(path));
  reader.setDecideFormatFromContent(true);
  QImage image = number.empty() ? reader.read() : FromModel(file, number, file_place);
  if (!image.isNull()) image = image.convertToFormat(QImage::Format_RGBA64);
  if (image.isNull())
    throw DocumentError(file_place, Quoted(path) + " can't be read as a picture (" +
                                        reader.errorString().toStdString() +
                                        "); use a valid PNG or JPEG file");
  return std::make_unique<Image>(image, linear);
}

}  // namespace host
