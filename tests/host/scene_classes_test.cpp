// Built-in classes: documents round-trip, primitives are closed, textures have the expected colors.
#include <map>
#include <numbers>

#include "host/base/json_place.h"
#include "host/format/document_writer.h"
#include "host/interface/material.h"
#include "host/scene/builtin_classes.h"
#include "tests/host/scene_support.h"

namespace host::test {
namespace {

TEST(SceneClasses, MeshesMaterialsAndSelectionsFollowTheirScene) {
  Json scene = Json::parse(Data("classes.json"));
  scene["objects"][3]["tags"][0]["polygons"] = Json::parse("[4, [1, 2], 0]");
  const auto document = Read(scene.dump());
  EXPECT_EQ(WriteDocument(*document, "/"), Data("classes.json")) << "in the order of the polygons";
  document->Open();
  GoToFrame(*document, 5);
  const SceneObject& mesh = *document->Objects()[3];
  EXPECT_EQ(mesh.GetPointR()[2], (Vector{0, 2, 0}));
  EXPECT_EQ(mesh.GetUvwR()[0].c, (Vector{0, 0.5, 0}));
  const SelectionTag* top = ToSelection(mesh.GetFirstTag());
  std::string selected;
  for (std::int32_t i = -1; i < 6; ++i) selected += top->IsSelected(i) ? '1' : '0';
  EXPECT_EQ(selected, "0111010");
  EXPECT_NEAR(document->GetFirstMaterial()->GetDataInstance().GetReal(MATERIAL_ROUGHNESS), 0.3,
              1e-12);
}

TEST(Primitives, AreClosedAndLookOutwards) {
  const double pi = std::numbers::pi;
  const struct {
    const char* text;
    double volume, relative;  ///< of the exact shape
  } cases[] = {
      {R"("cube", "parameters": {"size": [1, 2, 3]})", 6, 1e-12},
      {R"("sphere", "parameters": {"radius": 2, "segments": 96, "rings": 48})", pi * 32 / 3, 4e-3},
      {R"("torus", "parameters": {"radius": 3, "tube_radius": 1, "segments": 96, "rings": 48})",
       2 * pi * pi * 3, 5e-3},
      {R"("cylinder", "parameters": {"radius": 1, "height": 5, "segments": 128, "rings": 3})",
       5 * pi, 1e-3}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const auto document = ReadObjects("{\"type\": " + std::string(c.text) + "}");
    document->Open();
    const PolygonObject& mesh = *GetPolygons(document->GetFirstObject());
    EXPECT_NEAR(SixVolumes(mesh) / 6, c.volume, c.volume * c.relative);
    std::map<std::pair<std::int32_t, std::int32_t>, int> edges;
    for (std::int32_t i = 0; i < mesh.GetPolygonCount(); ++i) {
      const CPolygon& p = mesh.GetPolygonR()[i];
      ++edges[{p.a, p.b}], ++edges[{p.b, p.c}], ++edges[{p.d, p.a}];
      if (p.c != p.d) ++edges[{p.c, p.d}];
    }
    for (const auto& [edge, count] : edges)
      EXPECT_EQ(count * edges.at(std::pair(edge.second, edge.first)), 1);
  }
  const auto plane = ReadObjects(R"({"type": "plane", "parameters": {"segments": 2}})");
  plane->Open();
  const PolygonObject& mesh = *GetPolygons(plane->GetFirstObject());
  const CPolygon& p = mesh.GetPolygonR()[3];
  const Vector* points = mesh.GetPointR();
  EXPECT_EQ(Cross(points[p.b] - points[p.a], points[p.c] - points[p.a]).y, 200.0 * 200.0);
}

TEST(Textures, ShowTheirColors) {
  const auto document = Read(Data("textures.json"), NBX_HOST_TEST_DATA);
  document->Open();
  const auto sample = [&](std::size_t i, const Vector& p, double time = 0) {
    return document->Shaders()[i]->GetTexture()->Sample(p, time);
  };
  // At pixel centers, halfway between them, and across the border.
  EXPECT_EQ(sample(0, {0.25, 0.5, 9}), (Vector{1, 0, 0}));
  EXPECT_NEAR(sample(0, {1.75, -3.5, 0}).y, 0.5029, 1e-3);  // sRGB 188
  EXPECT_NEAR(sample(0, {0.5, 0.5, 0}).x, 0.5, 1e-6);
  EXPECT_NEAR(sample(0, {0, 0.5, 0}).x, 0.5, 1e-6);
  EXPECT_EQ(sample(1, {1, 1, 1}), (Vector{1, 0, 0}));
  EXPECT_EQ(sample(1, {-1, 1, 1}), (Vector{0, 0, 1}));
  EXPECT_EQ(sample(1, {-1, -1, 1}), (Vector{1, 0, 0}));
  EXPECT_EQ(sample(2, {9, 2, 9}), (Vector{0.25, 0.25, 0.25}));
  EXPECT_EQ(sample(2, {0, 99, 0}), (Vector{1, 1, 1}));

  document->Shaders()[1]->GetDataInstance().SetVector(kShaderColorA, {0, 1, 0});
  document->ExecutePasses(nullptr, true, true, true);
  EXPECT_EQ(sample(1, {1, 1, 1}), (Vector{0, 1, 0})) << "a texture follows its parameters";

  // Noise: gray on average, with contrast, continuous in space and time.
  double sum = 0, squares = 0, step = 0;
  const int n = 20000;
  for (int i = 0; i < n; ++i) {
    const Vector p{0.37 * i, 0.011 * i, -0.23 * i};
    const double v = sample(3, p, 0.01 * i).x;
    sum += v, squares += v * v;
    step = std::max(step, std::fabs(sample(3, p + Vector{1e-4, 0, 0}, 0.01 * i).x - v));
    step = std::max(step, std::fabs(sample(3, p, 0.01 * i + 1e-4).x - v));
  }
  EXPECT_NEAR(sum / n, 0.5, 0.02);
  EXPECT_NEAR(std::sqrt(squares / n - sum / n * sum / n), 0.25, 0.15);
  EXPECT_LT(step, 4e-3);
  EXPECT_NE(sample(3, {1, 1, 1}, 0).x, sample(3, {1, 1, 1}, 0.4).x);
  EXPECT_EQ(sample(3, {3, -6, 9}, 2).x, 0.5) << "gradient noise is 0 where its cells meet";
}

}  // namespace
}  // namespace host::test
