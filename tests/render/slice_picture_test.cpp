#include "render/slice_picture.h"

#include <unistd.h>

#include "support/support.h"
#include "util/exception.h"

namespace nbx {
namespace {

// 3 x 4 x 5 cells inside of the ghost layer, whose values would outshine everything.
Field<float> ghosted() {
  Field<float> f(5, 6, 7);
  for (std::size_t i = 0; i < f.count(); ++i) f[i] = 1e6f;
  test::each_cell(f.dims(), 1, [&](int i, int j, int k) { f(i, j, k) = 0; });
  return f;
}

std::vector<std::pair<int, int>> lit(const QImage& picture) {
  std::vector<std::pair<int, int>> pixels;
  for (int y = 0; y < picture.height(); ++y)
    for (int x = 0; x < picture.width(); ++x)
      if (qGray(picture.pixel(x, y)) > 0) pixels.emplace_back(x, y);
  return pixels;
}

int gray(const QImage& picture, int x, int y) { return qRed(picture.pixel(x, y)); }

// One cell near a corner, seen along each axis, shows the orientation of the picture.
TEST(SlicePicture, LiesTheRightWay) {
  Field<float> f = ghosted();
  f(3, 1, 2) = 1;
  const struct {
    int axis, width, height, position, x, y;
  } cases[] = {
      {0, 5, 4, 3, 3, 3},  // z 2 of 1 .. 5 from the right, y 1 at the bottom
      {1, 3, 5, 1, 2, 1},  // x 3 at the right, z 2 from the top
      {2, 3, 4, 2, 2, 3},
  };
  for (const auto& c : cases) {
    SliceOptions options;
    options.axis = c.axis;
    for (const Projection p : {Projection::kMax, Projection::kMean, Projection::kSmoke}) {
      options.projection = p;
      const QImage picture = slice_picture(f, options);
      EXPECT_EQ(picture.size(), QSize(c.width, c.height));
      EXPECT_EQ(lit(picture), (std::vector<std::pair<int, int>>{{c.x, c.y}})) << c.axis;
    }
    options.projection = Projection::kNone;
    options.position = c.position;
    EXPECT_EQ(lit(slice_picture(f, options)).size(), 1u);
    options.position = c.position == 3 ? 2 : c.position + 1;
    EXPECT_EQ(lit(slice_picture(f, options)).size(), 0u);
  }
  f(1, 2, 3) = 1;  // the middle of 5 along z, and the lower middle of 4 along y
  EXPECT_EQ(lit(slice_picture(f, {})).size(), 1u);
  EXPECT_EQ(lit(slice_picture(f, {.axis = 1, .scale = 3})).size(), 9u);
}

TEST(SlicePicture, ProjectionsFollowTheirFormulas) {
  Field<float> f = ghosted();
  for (int k = 1; k < 6; ++k) {
    f(1, 4, k) = 0.2f * static_cast<float>(k);  // top left, sum 3
    f(2, 4, k) = -0.5f;
  }
  const auto top_left = [&](Projection p, SliceOptions options) {
    options.projection = p;
    return gray(slice_picture(f, options), 0, 0);
  };
  SliceOptions options;
  options.range = {0.0f, 2.0f};
  EXPECT_EQ(top_left(Projection::kMax, options), std::lround(255 * 0.5));
  EXPECT_EQ(top_left(Projection::kMean, options), std::lround(255 * 0.3));
  EXPECT_EQ(top_left(Projection::kSmoke, options), std::lround(255 * 0.95));
  options.absorption = 0.1f;
  EXPECT_EQ(top_left(Projection::kSmoke, options), std::lround(255 * (1 - std::exp(-0.3))));
  options.gamma = 2;
  EXPECT_EQ(top_left(Projection::kMean, options), std::lround(255 * std::sqrt(0.3)));
  // Of negative values alone the largest is still found.
  options.range = {-1.0f, 0.0f};
  options.gamma = 1;
  options.projection = Projection::kMax;
  EXPECT_EQ(gray(slice_picture(f, options), 1, 0), std::lround(255 * 0.5));
}

TEST(SlicePicture, ColorsRefusalsAndFiles) {
  Field<float> f = ghosted();
  f(1, 4, 3) = -4;
  f(2, 4, 3) = 2;
  const QImage both = slice_picture(f, {.colors = ColorMap::kDiverging});
  EXPECT_EQ(both.pixel(0, 0), qRgb(0, 0, 255));
  EXPECT_EQ(both.pixel(1, 0), qRgb(255, 128, 128));
  f(1, 4, 3) = 4;
  f(3, 4, 3) = NAN;
  const QImage heat = slice_picture(f, {.colors = ColorMap::kHeat});
  EXPECT_EQ(heat.pixel(1, 0), qRgb(255, 128, 0));  // halfway: red full, green half
  EXPECT_EQ(heat.pixel(2, 0), qRgb(255, 0, 255));  // a NaN shows
  for (const SliceOptions& bad : {SliceOptions{.axis = 3}, {.position = 6}, {.scale = 65}})
    EXPECT_THROW(slice_picture(f, bad), Exception);
  EXPECT_THROW(slice_picture(Field<float>(9, 2, 9), {}), Exception);

  test::TemporaryFolder folder;
  ASSERT_TRUE(write_png(both, folder.file("p.png")));
  const Outcome failed = write_png(QImage(), folder.file("p.png"));
  EXPECT_FALSE(failed);
  EXPECT_FALSE(failed.reason().empty());
  const QImage back(QString::fromStdString(folder.file("p.png")));
  EXPECT_EQ(back.convertToFormat(both.format()), both) << "a failure leaves the file as it was";
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

}  // namespace
}  // namespace nbx
