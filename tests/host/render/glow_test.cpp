#include "host/render/surfaces/glow_ray.h"
#include "tests/host/render/shot.h"

namespace host::test {
namespace {

constexpr double kBox = Fog::kRadius + 5;
const std::string kFog = R"("post_effects": [{"type": "fog", "parameters": {"density": 0.02}}],)"
                         R"("render": {"parameters": {"background": [0.1, 0.1, 0.1]}},)";

/// Calls visit(direction, solid angle) for directions that cover the sphere evenly.
template <typename Visit>
void ForDirections(int rows, Visit visit) {
  for (int row = 0; row < rows; ++row)
    for (int column = 0; column < 2 * rows; ++column) {
      const double z = 1 - 2 * (row + 0.5) / rows, r = std::sqrt(1 - z * z);
      const double angle = kPi * (column + 0.5) / rows;
      visit(Vector{r * std::cos(angle), z, r * std::sin(angle)}, 2 * kPi / rows / rows);
    }
}

/// A ball that glows evenly, with an emission and an extinction of 0.02 per unit.
double Passing(const Vector& from, const Vector& direction, double length) {
  const double b = Dot(from, direction);
  const double d = b * b - Dot(from, from) + Fog::kRadius * Fog::kRadius;
  if (d <= 0) return 1;
  const double enter = std::max(0.0, -b - std::sqrt(d));
  return std::exp(-0.02 * std::max(0.0, std::min(length, -b + std::sqrt(d)) - enter));
}
GlowGrid Ball(double measured = 1) {
  return {{-kBox, -kBox, -kBox},
          {kBox, kBox, kBox},
          [measured](const Vector& from, int axis, double length) {
            const double passing = Passing(
                from, {axis == 0 ? 1. : 0., axis == 1 ? 1. : 0., axis == 2 ? 1. : 0.}, length);
            return GlowGrid::Segment{Fog::kGlow * (measured * (1 - passing)), passing};
          }};
}

TEST(RenderGlow, DirectionsHaveTheReportedDensity) {
  // The density integrates to 1, and its mean direction is that of the samples.
  const GlowGrid grid = Ball();
  ASSERT_FALSE(grid.IsEmpty());
  for (const Vector& point : {Vector{30, -70, 5}, Vector{3, 25, 2}, Vector{300, 100, 0}}) {
    const GlowView view(grid, point, {0, point.y > 50 ? -1.0 : 1.0, 0});
    double whole = 0;
    Vector mean, drawn;
    ForDirections(1000, [&](const Vector& d, double angle) {
      const double share = view.Look(d).density * angle;
      whole += share, mean = mean + d * share;
    });
    constexpr int kCount = 1 << 16;
    for (int i = 0; i < kCount; ++i) {
      Sampler sampler(1, static_cast<std::uint32_t>(i));
      const auto [a, b] = sampler.Next2D();
      const auto [c, d] = sampler.Next2D();
      drawn = drawn + view.Sample(a, b, c, d) * (1.0 / kCount);
    }
    EXPECT_NEAR(whole, 1, 0.01);
    ExpectNear(mean, drawn, 0.01);
  }
}

TEST(RenderGlow, LightOnASurfaceIsTheSumOverAllDirections) {
  const GlowGrid grid = Ball();
  SurfaceMaterial clay, dull;
  clay.color.color = {0.5, 0.4, 0.25};
  dull.color.color = {0.2, 0.2, 0.2};
  dull.reflection = {0.3, 0.5, 0.7};
  dull.roughness = 0.6;
  for (const SurfaceMaterial* material : {&clay, &dull})
    for (const Vector& point :
         {Vector{0, -400, 100}, {20, -56, 0}, {0, -49, 0}, {10, 0, 20}, {-180, -60, -60}}) {
      SCOPED_TRACE(testing::Message() << point.y << (material == &clay ? " clay" : " dull"));
      SurfaceHit hit;
      hit.point = point, hit.normal = hit.smooth = {0, 1, 0}, hit.material = material;
      const SurfaceShading shading(hit, Normalized({0.9, -0.3, 0.3}), 0);
      const GlowView view(grid, point, hit.normal);
      const auto light = [&](const Vector& d) { return Fog::kGlow * (1 - Passing(point, d, 1e9)); };
      Vector expected, mean;
      ForDirections(1500, [&](const Vector& d, double angle) {
        expected = expected + Times(shading.Share(d), light(d)) * (angle / kPi);
      });
      double squares = 0;
      constexpr int kCount = 1 << 14;
      for (int i = 0; i < kCount; ++i) {
        Sampler sampler(7, static_cast<std::uint32_t>(i));
        const GlowRay ray = ChooseGlowRay(shading, view, sampler);
        const Vector sample = Times(ray.weight, light(ray.direction));
        mean = mean + sample * (1.0 / kCount);
        squares += Mean(sample) * Mean(sample) / kCount;
      }
      const double deviation = std::sqrt(squares / (Mean(mean) * Mean(mean)) - 1);
      EXPECT_NEAR(Mean(mean) / Mean(expected), 1, 0.01);
      // Directions drawn by the cosine alone give 8 at the first point, where the ball is small.
      EXPECT_LT(deviation, 0.3);
    }
}

// The light of the grid is corrected by rays through the effects, and no light counts twice:
// neither straight light nor, in the second scene, light over a mirror at x = 70.
class RenderGlowPicture : public testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(Mirror, RenderGlowPicture, testing::Bool());
TEST_P(RenderGlowPicture, GetsTheLightOfTheEffect) {
  const bool mirrored = GetParam();
  const std::string materials =
      R"("materials": [{"name": "clay", "parameters": {"color": [0.5, 0.5, 0.5]}},)"
      R"({"name": "mirror", "parameters": {"color": [0, 0, 0], "reflection": [0.9, 0.9, 0.9]}}],)";
  const std::string mirror =
      R"(, {"type": "plane", "position": [70, 0, 0], "rotation": [0, 0, 90], "parameters": )"
      R"({"width": 1e5, "depth": 1e5}, "tags": [{"type": "texture", )"
      R"("parameters": {"material": "mirror"}}]})";
  const auto document =
      Opened(R"({"type": "light", "parameters": {"intensity": 0}},)" +
                 Camera("[0, -59, 0]", "[0, 90, 0]") +
                 R"({"type": "plane", "position": [0, -60, 0], "tags": [{"type": "texture", )"
                 R"("parameters": {"material": "clay"}}]})" +
                 (mirrored ? mirror : ""),
             kFog + materials);
  const RenderJob job{{0}, 1, 1, {0, 0, 1, 1}, {4096, 0, 1}, 1};
  OpenFrame frame(*document, job);
  Vector expected;
  ForDirections(1500, [&](const Vector& d, double angle) {
    if (d.y <= 0) return;
    double passing = Passing({0, -60, 0}, d, 1e9), share = 0.5 * d.y * angle / kPi;
    expected = expected + Fog::kGlow * ((1 - passing) * share);
    if (mirrored && d.x > 0) {
      share *= passing * (0.9 + 0.1 * std::pow(1 - d.x, 5));
      passing = Passing({140, -60, 0}, {-d.x, d.y, d.z}, 1e9);
      expected = expected + Fog::kGlow * ((1 - passing) * share);
    }
    expected = expected + Vector{0.1, 0.1, 0.1} * (passing * share);
  });
  for (const double measured : {0.5, 1.0}) {  // a grid that is wrong changes nothing
    if (measured < 1)
      frame.scene.glow = Ball(measured);
    else
      frame.scene.glow = FindGlow(frame.scene, {-kBox, -kBox, -kBox}, {kBox, kBox, kBox});
    ASSERT_FALSE(frame.scene.glow.IsEmpty());
    std::array<Vector, 2> colors;
    for (const int threads : {1, 2}) {
      RayCounts counts;
      const FrameTask task{1, 1, job.window, job.quality.samples, threads};
      const Picture picture = RenderFrame(frame.scene, task, counts);
      const float* const color = picture.pixels.front().color;
      colors[threads - 1] = {color[0], color[1], color[2]};
    }
    EXPECT_EQ(colors[0], colors[1]);
    ExpectNear(colors[0], expected, 0.02 * expected.z);
  }
}

}  // namespace
}  // namespace host::test
