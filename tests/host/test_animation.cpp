// Keyframes, transforms and the world matrices that they add up to.

#include "host/track.h"
#include "host/transform.h"
#include "tests/host/scene_support.h"

namespace host::test {
namespace {

double At(const Track& track, double frame) { return std::get<double>(track.Evaluate(frame)); }

TEST(Animation, LinearTracksHoldAtTheirEndsAndWholeNumbersUntilTheNextKey) {
  const Track track{Interpolation::Linear, {{-10, 1.0}, {0, 3.0}, {5, -2.0}}};
  const double cases[][2] = {{-1e9, 1}, {-10, 1}, {-5, 2}, {0, 3}, {1, 2}, {5, -2}, {1e9, -2}};
  for (const auto& [frame, value] : cases) EXPECT_DOUBLE_EQ(At(track, frame), value) << frame;
  const Track whole{Interpolation::Linear, {{0, std::int32_t{1}}, {10, std::int32_t{5}}}};
  EXPECT_EQ(std::get<std::int32_t>(whole.Evaluate(9.99)), 1);
  EXPECT_EQ(std::get<std::int32_t>(whole.Evaluate(10)), 5);
}

TEST(Animation, SmoothTracksPassTheirKeysAndStayBetweenThem) {
  const Track two{Interpolation::Smooth, {{0, 0.0}, {10, 1.0}}};
  // With level ends the cubic is 3 t^2 - 2 t^3.
  for (int i = 0; i <= 10; ++i) EXPECT_NEAR(At(two, i), i * i * (3 - 0.2 * i) / 100, 1e-15) << i;

  const Track many{Interpolation::Smooth, {{0, 0.0}, {1, 5.0}, {4, 5.5}, {5, -1.0}, {9, -1.0}}};
  for (std::size_t i = 0; i + 1 < many.keys.size(); ++i) {
    const double p0 = std::get<double>(many.keys[i].value);
    const double p1 = std::get<double>(many.keys[i + 1].value);
    const double f0 = many.keys[i].frame, f1 = many.keys[i + 1].frame;
    EXPECT_EQ(At(many, f0), p0);
    double last = p0;
    for (int s = 1; s <= 50; ++s) {
      const double value = At(many, f0 + (f1 - f0) * s / 50);
      EXPECT_GE((value - last) * (p1 - p0), -1e-14) << "turns back between keys " << i;
      last = value;
    }
    // No kink at a key: the slopes at both sides agree.
    const double h = 1e-6;
    EXPECT_NEAR((At(many, f1 + h) - p1) / h, (p1 - At(many, f1 - h)) / h, 1e-4) << i;
  }
}

TEST(Animation, RotationsTurnAxisIntoAxis) {
  // Heading z to x, pitch y to z, bank x to y.
  EXPECT_EQ(ToMatrix({{}, {90, 0, 0}, {1, 1, 1}}).v3, (Vector{1, 0, 0}));
  EXPECT_EQ(ToMatrix({{}, {0, 90, 0}, {1, 1, 1}}).v2, (Vector{0, 0, 1}));
  EXPECT_EQ(ToMatrix({{}, {0, 0, -270}, {1, 1, 1}}).v1, (Vector{0, 1, 0}));
  // Bank first, then pitch, then heading: x goes to y, then z, then x; scaled before all that.
  const Matrix m = ToMatrix({{5, 6, 7}, {90, 90, 90}, {2, 3, 4}});
  EXPECT_EQ(m * (Vector{1, 0, 0}), (Vector{7, 6, 7}));
}

TEST(Animation, WorldMatricesFollowTheParentsKeyframes) {
  const auto document = ReadObjects(R"({"type": "null", "scale": [2, 2, 2],
    "keyframes": {"position": [[0, [0, 0, 0]], [25, [100, 0, 0]]],
                  "rotation": [[0, [0, 0, 0]], [25, [180, 0, 0]]]},
    "children": [{"type": "null", "position": [0, 0, 10],
      "children": [{"type": "box", "position": [1, 0, 0],
        "keyframes": {"parameters.edge_length": [[0, 1], [50, 3]], "parameters.active":
          [[0, false], [25, true]]},
        "tags": [{"type": "source", "keyframes": {"parameters.amount": [[0, 0], [25, 50]]}}]}]}]})");
  document->Open();
  SceneObject* box = document->GetFirstObject()->GetDown()->GetDown();
  const struct {
    int frame;
    Vector place;
    double edge, amount;
  } cases[] = {{0, {2, 0, 20}, 1, 0},
               {25, {100 - 2, 0, -20}, 2, 50},  // turned by 180 degrees: z to -z, x to -x
               {75, {100 - 2, 0, -20}, 3, 50}};
  for (const auto& c : cases) {
    GoToFrame(*document, c.frame);
    ExpectNear(box->GetMg().off, c.place);
    EXPECT_EQ(box->GetDataInstance().GetReal(test_plugin::kSize), c.edge) << c.frame;
    EXPECT_EQ(box->GetDataInstance().GetBool(test_plugin::kActive), c.frame > 0) << c.frame;
    EXPECT_EQ(box->GetFirstTag()->GetDataInstance().GetReal(test_plugin::kAmount), c.amount);
  }
  // Between frames, as substeps are: half the way, where z has gone to x, and x to -z.
  GoToFrame(*document, 12.5);
  ExpectNear(box->GetMg().off, Vector{50 + 20, 0, -2});
  box->GetFirstTag()->ScaleKeys(test_plugin::kAmount, 0.1);
  GoToFrame(*document, 25);
  EXPECT_EQ(box->GetFirstTag()->GetDataInstance().GetReal(test_plugin::kAmount), 5);
}

}  // namespace
}  // namespace host::test
