// The scenes of the command `new`, and the domain that it puts around a model.
#include "host/program/starting_scenes.h"

#include "C4D/plugin_fixture.h"
#include "host/import/model_stage.h"
#include "host/interface/camera.h"

namespace nbx {
namespace {

using host::Document;
using host::SceneObject;
using host::Vector;

class StartingScenes : public test::PluginFixture {
 protected:
  std::unique_ptr<Document> read(const std::string& text) {
    auto document = host::ReadDocument(text, NBX_HOST_TEST_DATA, host_.Classes());
    document->Open();
    return document;
  }
  /// A model of one mesh, a box from (0, 0, -3) to (1, 2, 0), on the stage of that kind.
  std::unique_ptr<Document> stage(const std::string& kind, const std::string& more = "") {
    auto model = read(R"({"start": 2, "end": 12, "objects": [{"type": "mesh", "name": "box",
        "parameters": {"file": "box.obj"})" +
                      more + "}]}");
    host::SetStage(*model, *read(host::FindStartingScene(kind)->text), host_.Classes());
    return model;
  }
  static std::vector<SceneObject*> all(const Document& document, const std::string& type) {
    auto found = document.AllObjects();
    std::erase_if(found, [&](auto* o) { return o->GetDescription().name != type; });
    return found;
  }
  /// The value of a parameter of the first object of a type.
  template <class T = double>
  static T value(const Document& document, const std::string& name,
                 const std::string& type = "volume") {
    SceneObject& object = *all(document, type).at(0);
    for (const auto& info : object.GetDescription().parameters)
      if (info.Name() == name) return std::get<T>(*object.GetDataInstance().Find(info.id));
    throw host::DocumentError("no parameter " + name);
  }
  static Vector size(const Document& document) { return value<Vector>(document, "size"); }
  /// Everything that is set has an effect.
  static void expect_effect(const Document& document) {
    const auto check = [](const auto& element) {
      for (const auto& info : element.GetDescription().parameters) {
        if (!element.State().written.count(info.id) && !element.IsAnimated(info.id)) continue;
        EXPECT_TRUE(element.IsEnabled(info.id)) << element.GetName() << "." << info.Name();
      }
    };
    for (const SceneObject* object : document.AllObjects()) {
      check(*object);
      for (const auto& tag : object->Tags()) check(*tag);
    }
    EXPECT_TRUE(document.warnings.empty());
  }
};

TEST_F(StartingScenes, EveryParameterHasAnEffect) {
  for (const host::StartingScene& scene : host::StartingScenes()) {
    SCOPED_TRACE(scene.kind);
    expect_effect(*read(scene.text));
    expect_effect(*stage(scene.kind));
  }
  EXPECT_EQ(host::StartingScenes().size(), 6U);
}

TEST_F(StartingScenes, TheDomainHoldsTheModelAndTheCameraSeesTheDomain) {
  for (const host::StartingScene& scene : host::StartingScenes()) {
    SCOPED_TRACE(scene.kind);
    // The second model moves by 20 units along x.
    for (const double way : {0.0, 20.0}) {
      const auto model = stage(
          scene.kind,
          way > 0 ? R"(, "keyframes": {"position": [[2, [0, 0, 0]], [12, [20, 0, 0]]]})" : "");
      const Vector half = size(*model) * 0.5,
                   voxels = size(*model) * (1 / value(*model, "voxel_size"));
      EXPECT_NEAR(voxels.x * voxels.y * voxels.z, 9e5, 1e5);
      const Vector center = all(*model, "volume")[0]->transform.position;
      const double edge = std::max(3.0, way + 1), aside = 0.7 * edge;
      for (const double x : {-aside, 1 + way + aside}) EXPECT_LE(std::abs(x - center.x), half.x);
      for (const double z : {-3 - aside, aside}) EXPECT_LE(std::abs(z - center.z), half.z);
      EXPECT_NEAR(center.y - half.y, 0, 1e-9);
      EXPECT_GE(center.y + half.y, 2 + 1.9 * edge);
      EXPECT_EQ(model->end, way > 0 ? 12 : read(scene.text)->end);

      const SceneObject& camera = *all(*model, "camera").at(0);
      const auto& render = model->GetActiveRenderData().GetDataInstance();
      const double x = std::tan(value(*model, "field_of_view", "camera") * 3.14159265 / 360);
      const double y = x * render.GetLong(host::RENDER_HEIGHT) / render.GetLong(host::RENDER_WIDTH);
      for (int corner = 0; corner < 8; ++corner) {
        const host::Matrix view = camera.GetMg();
        const Vector seen = center +
                            Vector{corner & 1 ? half.x : -half.x, corner & 2 ? half.y : -half.y,
                                   corner & 4 ? half.z : -half.z} -
                            view.off;
        const double depth = Dot(seen, view.v3);
        EXPECT_GT(depth, value(*model, "near", "camera"));
        EXPECT_LE(std::abs(Dot(seen, view.v1)), x * depth);
        EXPECT_LE(std::abs(Dot(seen, view.v2)), y * depth);
      }
    }
  }
}

// The fire of the pattern is 160 units high; this one is 11 units high.
TEST_F(StartingScenes, GasAroundAModelMovesAndLooksAsInThePattern) {
  const auto model = stage("fire"), start = read(host::FindStartingScene("fire")->text);
  const double scale = size(*model).y / size(*start).y;
  EXPECT_NE(scale, 1);
  const auto ratio = [&](const char* name) { return value(*model, name) / value(*start, name); };
  for (const char* name : {"buoyancy_temperature", "noise_size_max", "noise_strength",
                           "fire_exposure", "fuel_driver_blur"})
    EXPECT_NEAR(ratio(name), scale, 0.005 * scale) << name;
  for (const char* name : {"smoke_density", "fire_density"})
    EXPECT_NEAR(ratio(name) * scale, 1, 0.005) << name;
  for (const char* name : {"decay_fuel", "cfl"}) EXPECT_EQ(ratio(name), 1) << name;
  // The fuel of the explosion ends three frames after the start.
  const auto bang =
      stage("explosion", R"(, "keyframes": {"scale": [[2, [1, 1, 1]], [9, [2, 1, 1]]]})");
  const auto& tracks = all(*bang, "mesh").at(0)->Tags().at(0)->State().tracks;
  ASSERT_EQ(tracks.size(), 2U);
  EXPECT_EQ(tracks.begin()->second.keys.back().frame, 5);
  // Lights leave out the copy of the volume.
  const auto links = all(*model, "light").back()->GetDataInstance().GetLinks(100000);
  EXPECT_EQ(links, host::LinkList{all(*model, "volume").at(0)});
}

TEST_F(StartingScenes, WhatTheModelHasWins) {
  const auto model = stage("smoke", R"(, "tags": [{"type": "emitter", "parameters": {"fuel": 1}}]},
      {"type": "volume", "position": [0, 9, 0], "parameters": {"size": [8, 18, 8]}},
      {"type": "camera"}, {"type": "light")");
  for (const char* type : {"volume", "camera", "light", "plane"})
    EXPECT_EQ(all(*model, type).size(), 1U) << type;
  EXPECT_EQ(all(*model, "mesh").at(0)->Tags().size(), 1U);
  EXPECT_EQ(size(*model), (Vector{8, 18, 8}));
  EXPECT_EQ(value(*model, "voxel_size"), 1);

  const auto none = read(R"({"objects": [{"type": "null"}]})");
  EXPECT_THROW(
      host::SetStage(*none, *read(host::FindStartingScene("smoke")->text), host_.Classes()),
      host::DocumentError);
}

}  // namespace
}  // namespace nbx
