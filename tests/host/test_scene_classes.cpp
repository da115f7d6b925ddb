// The host's own classes: what stands in documents comes back, primitives are closed, textures show
// what they should.
#include <QImage>
#include <map>
#include <numbers>

#include <gtest/gtest.h>

#include "host/document_writer.h"
#include "host/interface/material.h"
#include "host/json_place.h"
#include "support/support.h"
#include "tests/host/scene_support.h"

namespace host::test {
namespace {

TEST(SceneClasses, SavingWhatWasReadGivesTheSameText) {
  const std::string text = R"({"fps": 25, "start": 0, "end": 100,
    "render": {"parameters": {"width": 64, "background": [0.1, 0.2, 0.3], "camera": "Eye"}},
    "materials": [{"name": "Floor", "parameters": {"color_texture": "Tiles"},
                   "keyframes": {"parameters.roughness": [[0, 0.1], [10, 0.5]]}},
                  {"name": "Twin"}, {"name": "Twin"}],
    "textures": [{"type": "checker", "name": "Tiles", "parameters": {"scale": 2.0}}],
    "objects": [
      {"type": "camera", "name": "Eye", "keyframes": {"parameters.field_of_view": [[0, 30.0]]}},
      {"type": "light", "parameters": {"type": "spot", "intensity": 2.5, "shadow": "none"}},
      {"type": "torus", "parameters": {"tube_radius": 10.0}, "tags": [
        {"type": "texture", "parameters": {"material": "materials[2]", "tile": false}},
        {"type": "compositing", "parameters": {"cast_shadows": false, "matte": true}}]},
      {"type": "mesh", "points": [[0, 0, 0], [1, 0, 0], [0, 1, 0]], "polygons": [[0, 1, 2]],
       "uvs": [[[0, 1], [1, 1], [0, 0.5]]],
       "shapes": [{"frame": 0, "points": [[0, 0, 0], [1, 0, 0], [0, 1, 0]]},
                  {"frame": 10, "points": [[0, 0, 0], [1, 0, 0], [0, 3, 0]]}],
       "tags": [{"type": "selection", "name": "Top", "polygons": [4, [1, 2], 0]}]},
      {"type": "particle_group", "parameters": {"system": "Particle System"}},
      {"type": "particle_system", "children": [{"type": "particle_emitter"}]}]})";
  const auto document = Read(text);
  const std::string written = WriteDocument(*document, "/");
  document->Open();
  GoToFrame(*document, 5);
  EXPECT_EQ(WriteDocument(*document, "/"), written);
  EXPECT_EQ(WriteDocument(*Read(written), "/"), written);
  // The text has all that was in the first one: the same keys and values, in the writer's order.
  Json expected = Json::parse(text);
  expected["objects"][3]["tags"][0]["polygons"] = Json::parse("[[0, 2], 4]");
  using Unordered = nlohmann::json;
  EXPECT_EQ(Unordered::parse(written), Unordered::parse(expected.dump()));

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

TEST(SceneClasses, MistakesOfTheNewPartsAreToldWithTheirPlace) {
  const std::string mesh = R"({"type": "mesh", "points": [[0, 0, 0], [1, 0, 0], [0, 1, 0]],
                               "polygons": [[0, 1, 2]], )";
  ExpectMistakes(
      {{R"({"render": {"parameters": {"camera": "Eye"}}})",
        "render.parameters.camera: no object is named \"Eye\""},
       {R"({"materials": [{"parameters": {"color_texture": "T"}}]})",
        "materials[0].parameters.color_texture: no texture is named \"T\""},
       {R"({"textures": [{"type": "nose"}]})",
        "textures[0].type: unknown type \"nose\", did you mean \"noise\"?"},
       {R"({"textures": [{"type": "image", "parameters": {"file": "no.png"}}]})",
        "textures[0].parameters.file: there is no file \"/no.png\"*"},
       {R"({"objects": [)" + mesh + R"("uvs": [[[0, 0], [1, 1]]]}]})",
        "objects[0].uvs[0]: expected 3 values, found 2"},
       {R"({"objects": [)" + mesh + R"("shapes": [{"frame": 1, "points": []}]}]})",
        "objects[0].shapes: expected at least two shapes"},
       {R"({"objects": [)" + mesh + R"("tags": [{"type": "selection", "polygons": [[3, 1]]}]}]})",
        "objects[0].tags[0].polygons[0][1]: is below 3"}});
}

TEST(Primitives, AreClosedAndLookOutwards) {
  const double pi = std::numbers::pi;
  const struct {
    const char* text;
    double volume, relative;  ///< of the shape that the polygons stand for
  } cases[] = {{R"({"type": "cube", "parameters": {"size": [1, 2, 3]}})", 6, 1e-12},
               {R"({"type": "sphere", "parameters": {"radius": 2, "segments": 96, "rings": 48}})",
                4 * pi * 8 / 3, 4e-3},
               {R"({"type": "torus", "parameters": {"radius": 3, "tube_radius": 1, "segments": 96,
           "rings": 48}})",
                2 * pi * pi * 3, 5e-3},
               {R"({"type": "cylinder", "parameters": {"radius": 1, "height": 5, "segments": 128,
           "rings": 3}})",
                5 * pi, 1e-3}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const auto document = ReadObjects(c.text);
    document->Open();
    const PolygonObject& mesh = *GetPolygons(document->GetFirstObject());
    double six_volumes = 0;
    std::map<std::pair<std::int32_t, std::int32_t>, int> edges;
    for (std::int32_t i = 0; i < mesh.GetPolygonCount(); ++i) {
      const CPolygon& p = mesh.GetPolygonR()[i];
      const Vector* points = mesh.GetPointR();
      six_volumes += Dot(points[p.a], Cross(points[p.b], points[p.c]));
      if (p.c != p.d) six_volumes += Dot(points[p.a], Cross(points[p.c], points[p.d]));
      ++edges[{p.a, p.b}], ++edges[{p.b, p.c}], ++edges[{p.d, p.a}];
      if (p.c != p.d) ++edges[{p.c, p.d}];
    }
    EXPECT_NEAR(six_volumes / 6, c.volume, c.volume * c.relative);
    for (const auto& [edge, count] : edges)
      EXPECT_EQ(count * edges.at(std::pair(edge.second, edge.first)), 1);
    EXPECT_EQ(mesh.GetMg(), document->GetFirstObject()->GetMg());
  }
  const auto plane = ReadObjects(R"({"type": "plane", "parameters": {"segments": 2}})");
  plane->Open();
  const PolygonObject& mesh = *GetPolygons(plane->GetFirstObject());
  const CPolygon& p = mesh.GetPolygonR()[3];
  const Vector* points = mesh.GetPointR();
  EXPECT_EQ(Cross(points[p.b] - points[p.a], points[p.c] - points[p.a]).y, 200.0 * 200.0);
}

TEST(Textures, ShowTheirColors) {
  const nbx::test::TemporaryFolder folder;
  QImage image(2, 1, QImage::Format_RGB888);
  image.setPixelColor(0, 0, QColor(255, 0, 0));
  image.setPixelColor(1, 0, QColor(0, 188, 0));
  ASSERT_TRUE(image.save(QString::fromStdString(folder.file("two.png"))));
  const auto document = Read(R"({"textures": [
      {"type": "image", "parameters": {"file": "two.png"}},
      {"type": "checker", "parameters": {"scale": 2, "color_a": [1, 0, 0], "color_b": [0, 0, 1]}},
      {"type": "gradient", "parameters": {"scale": 4, "direction": [0, 5, 0], "offset": [0, 1, 0]}},
      {"type": "noise", "parameters": {"scale": 3, "speed": 1, "seed": 7}}]})",
                             folder.path());
  document->Open();
  const auto sample = [&](std::size_t i, const Vector& p, double time = 0) {
    return document->Shaders()[i]->GetTexture()->Sample(p, time);
  };
  // The middles of the pixels, then half way between them, and around the border.
  EXPECT_EQ(sample(0, {0.25, 0.5, 9}), (Vector{1, 0, 0}));
  EXPECT_NEAR(sample(0, {1.75, -3.5, 0}).y, 0.5029, 1e-3);  // sRGB 188
  EXPECT_NEAR(sample(0, {0.5, 0.5, 0}).x, 0.5, 1e-6);
  EXPECT_NEAR(sample(0, {0, 0.5, 0}).x, 0.5, 1e-6);
  EXPECT_EQ(sample(1, {1, 1, 1}), (Vector{1, 0, 0}));
  EXPECT_EQ(sample(1, {-1, 1, 1}), (Vector{0, 0, 1}));
  EXPECT_EQ(sample(1, {-1, -1, 1}), (Vector{1, 0, 0}));
  EXPECT_EQ(sample(2, {9, 2, 9}), (Vector{0.25, 0.25, 0.25}));
  EXPECT_EQ(sample(2, {0, 99, 0}), (Vector{1, 1, 1}));

  // Noise: grey in the mean, spread out, without jumps in space and time.
  double sum = 0, squares = 0, step = 0;
  const int n = 20000;
  for (int i = 0; i < n; ++i) {
    const Vector p{0.37 * i, 0.011 * i, -0.23 * i};
    const double v = sample(3, p, 0.01 * i).x;
    sum += v, squares += v * v;
    step = std::max(step, std::fabs(sample(3, p + Vector{1e-4, 0, 0}, 0.01 * i).x - v));
    step = std::max(step, std::fabs(sample(3, p, 0.01 * i + 1e-4).x - v));
  }
  const double mean = sum / n, deviation = std::sqrt(squares / n - mean * mean);
  EXPECT_NEAR(mean, 0.5, 0.02);
  EXPECT_GT(deviation, 0.1);
  EXPECT_LT(deviation, 0.4);
  EXPECT_LT(step, 4e-3);
  EXPECT_NE(sample(3, {1, 1, 1}, 0).x, sample(3, {1, 1, 1}, 0.4).x);
  EXPECT_EQ(sample(3, {3, -6, 9}, 2).x, 0.5) << "gradient noise is 0 where its cells meet";
}

}  // namespace
}  // namespace host::test
